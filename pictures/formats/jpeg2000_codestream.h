// jpeg2000_codestream.h - what a JPEG 2000 codestream says before its first tile, and where it
// ends.
//
// Decoders are lenient: of a codestream without its coding style, or with tiles of no size, they
// show a blank page. So every field that decoding depends on is checked here, at no cost: the
// headers are read and the tile-parts' lengths followed, but no tile is.
#ifndef JTPDF_PICTURES_JPEG2000_CODESTREAM_H
#define JTPDF_PICTURES_JPEG2000_CODESTREAM_H

#include <cstdint>
#include <string_view>

#include "bytes.h"

namespace pictures {

inline constexpr std::string_view kCodestreamMagic = "\xFF\x4F\xFF\x51";  // SOC and SIZ

struct Jpeg2000Codestream {
  uint32_t width = 0;
  uint32_t height = 0;
  int components = 0;
  int depth = 0;          // of the deepest component
  uint8_t precision = 0;  // of all, as SIZ has it: depth less one, and the sign; 255 for several
  bool uniform = true;    // one precision, unsigned, no subsampling
  bool extended = false;  // needs a decoder of more than the standard's first part
  uint32_t tiles = 0;
  size_t size = 0;    // up to behind its end
  bool ended = true;  // by the marker for that
};

// Reads the codestream at the begin of `bytes`; what follows it there is passed over. Throws an
// ImageError where it is damaged or cut off.
Jpeg2000Codestream ReadCodestream(Bytes bytes);

}  // namespace pictures

#endif  // JTPDF_PICTURES_JPEG2000_CODESTREAM_H
