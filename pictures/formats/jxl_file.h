// jxl_file.h - libjxl's view of a JPEG XL file: its facts, one of its frames, the JPEG it was made
// of.
#ifndef JTPDF_PICTURES_JXL_FILE_H
#define JTPDF_PICTURES_JXL_FILE_H

#include <jxl/codestream_header.h>

#include <cstdint>
#include <memory>

#include "bytes.h"
#include "formats/exif.h"
#include "image.h"

namespace pictures {

struct JxlFacts {
  JxlBasicInfo info = {};
  bool inks = false;  // a channel of black beside the colours
  bool jpeg = false;  // it was made of a JPEG that can be had again
  unsigned frames = 0;
};

// Reads headers alone. Throws an ImageError where the file is damaged or cut off.
JxlFacts ReadJxlFacts(Bytes file);

// Nothing where there is none, or none that can be read.
ExifFacts ReadJxlExif(Bytes file);

// The profile of the pixels that JxlFrames gives; empty for sRGB and its greys.
Buffer ReadJxlProfile(Bytes file);

class JxlEvents;

// Decodes frames, one after the other.
class JxlFrames {
 public:
  // `file` must live as long.
  explicit JxlFrames(Bytes file);
  ~JxlFrames();

  // Decodes the next frame into a raster of the picture's size, stored as it lies there, whose
  // channels are the colours and, where there is one, the opacity.
  void DecodeNext(Raster* pixels);

 private:
  std::unique_ptr<JxlEvents> events_;
};

// The JPEG, byte for byte.
Buffer ReconstructJpeg(Bytes file);

}  // namespace pictures

#endif  // JTPDF_PICTURES_JXL_FILE_H
