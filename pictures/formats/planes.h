// planes.h - opacity apart from colours, for decoders that give them interleaved.
#ifndef JTPDF_PICTURES_PLANES_H
#define JTPDF_PICTURES_PLANES_H

#include <cstddef>
#include <cstdint>

#include "image.h"

namespace pictures {

// The bytes of a pixel's colours, and of the opacity behind them.
struct PixelBytes {
  size_t colours;
  size_t alpha;
};

// Of a raster's pixels, of 8 or 16 bits a sample.
inline PixelBytes PixelOf(const Raster& colours) {
  const auto sample = static_cast<size_t>(colours.bits) / 8;
  return {sample * static_cast<size_t>(colours.channels), sample};
}

// Splits `count` pixels.
void SplitAlpha(const uint8_t* from, size_t count, PixelBytes pixel, uint8_t* colours,
                uint8_t* alpha);

// The raster (of 8 or 16 bits) without its last channel, which is the opacity.
DecodedImage SplitAlpha(const Raster& interleaved);

// Pixels of red, green, blue and opacity, a byte each.
DecodedImage SplitAlpha(const uint8_t* rgba, uint32_t width, uint32_t height);

}  // namespace pictures

#endif  // JTPDF_PICTURES_PLANES_H
