// image_writer.h - pictures as images of a document, through jtpdf/objects.h.
#ifndef JTPDF_PICTURES_IMAGE_WRITER_H
#define JTPDF_PICTURES_IMAGE_WRITER_H

#include <jtpdf/jtpdf.h>

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "image.h"

namespace pictures {

// What is recorded with an image beside what it looks like.
struct ImageRecord {
  TPdfImageRole role = kPdfImageRoleOther;
  std::wstring name;  // empty for none
};

class ImageWriter {
 public:
  // Writes into the document, which must outlive this; profiles are compressed at the level.
  ImageWriter(JTPDFDocument* document, int level) : document_(document), level_(level) {}

  // Writes the image, its soft mask and its colour profile, one that was written before excepted,
  // and stores the image's number. Gives the result code of the library, 0 for success.
  int32_t Write(const EncodedImage& image, const ImageRecord& record, int* number);

 private:
  struct Profile {
    Buffer bytes;
    int stream;
  };

  int32_t WriteProfile(Bytes profile, Colour colour, int* stream);
  int32_t WriteStream(const EncodedStream& stream, const ImageRecord& record, int profile,
                      int softMask, int* number);

  JTPDFDocument* document_;
  int level_;
  std::deque<Profile> profiles_;  // the last ones, that each distinct one is written once
  size_t profileBytes_ = 0;       // of all of them
};

}  // namespace pictures

#endif  // JTPDF_PICTURES_IMAGE_WRITER_H
