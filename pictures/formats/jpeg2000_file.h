// jpeg2000_file.h - a JPEG 2000 file: the boxes around its codestream, and what they say of it.
#ifndef JTPDF_PICTURES_JPEG2000_FILE_H
#define JTPDF_PICTURES_JPEG2000_FILE_H

#include <cstdint>
#include <string>
#include <string_view>

#include "bytes.h"
#include "formats/exif.h"
#include "formats/jpeg2000_codestream.h"
#include "image.h"

namespace pictures {

inline constexpr std::string_view kJp2Magic("\0\0\0\x0CjP  \r\n\x87\n", 12);

struct Jpeg2000File {
  enum class Model { kUnknown, kGrey, kRgb, kYcc, kCmyk };

  bool bare = false;   // to be decoded without its boxes, if there are any
  std::string damage;  // what is wrong with a file that may be decoded yet
  Jpeg2000Codestream stream;
  Bytes data;            // the codestream's
  unsigned streams = 0;  // of which it is the first
  Model model = Model::kUnknown;
  bool palette = false;
  bool alpha = false;
  bool reordered = false;  // channels are not in their usual order
  Bytes profile;
  Resolution resolution;
  ExifFacts exif;
};

// Throws an ImageError where there is no picture to be had from it.
Jpeg2000File ReadJpeg2000File(Bytes file);

}  // namespace pictures

#endif  // JTPDF_PICTURES_JPEG2000_FILE_H
