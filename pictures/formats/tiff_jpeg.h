// tiff_jpeg.h - the strips of a TIFF page in JPEG as one JPEG, no pixel touched.
//
// Each strip is a JPEG of its own whose tables may stand apart, once for the page. One behind the
// other they are the intervals of a single scan, for a decoder starts anew at every restart marker:
//
//     SOI | Adobe | tables | SOF of the page | DRI | SOS | strip | RST0 | strip | RST1 | ... | EOI
#ifndef JTPDF_PICTURES_TIFF_JPEG_H
#define JTPDF_PICTURES_TIFF_JPEG_H

#include <cstdint>
#include <optional>
#include <vector>

#include "bytes.h"

namespace pictures {

struct JpegStrips {
  uint32_t width = 0;
  uint32_t height = 0;        // of the page
  uint32_t rowsPerStrip = 0;  // of all but the last
  int components = 0;
  bool ycc = false;  // of three components: YCbCr rather than RGB
  Bytes tables;      // empty where the strips have their own
  std::vector<Bytes> strips;
};

struct JoinedJpeg {
  Buffer head;  // up to the first strip's data
  std::vector<Bytes> pieces;
};

// Nothing where the strips are no intervals of one scan: other tables or sampling, sizes that
// don't fit, restart markers of their own, or anything odd.
std::optional<JoinedJpeg> JoinJpegStrips(const JpegStrips& page);

}  // namespace pictures

#endif  // JTPDF_PICTURES_TIFF_JPEG_H
