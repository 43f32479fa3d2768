#include "formats/planes.h"

#include <cstring>
#include <utility>

namespace pictures {
namespace {

DecodedImage SplitInto(Raster colours, const uint8_t* from) {
  DecodedImage image;
  image.pixels = std::move(colours);
  Raster& pixels = image.pixels;
  image.alpha.emplace(pixels.width, pixels.height, pixels.bits, 1);
  SplitAlpha(from, size_t{pixels.width} * pixels.height, PixelOf(pixels), pixels.bytes.Data(),
             image.alpha->bytes.Data());
  return image;
}

template <size_t colourBytes, size_t alphaBytes>
void Split(const uint8_t* from, size_t count, uint8_t* colours, uint8_t* alpha) {
  for (; count > 0; --count) {
    std::memcpy(colours, from, colourBytes);
    std::memcpy(alpha, from + colourBytes, alphaBytes);
    from += colourBytes + alphaBytes;
    colours += colourBytes;
    alpha += alphaBytes;
  }
}

}  // namespace

// Sizes that are known let each pixel be moved at once.
void SplitAlpha(const uint8_t* from, size_t count, PixelBytes pixel, uint8_t* colours,
                uint8_t* alpha) {
  if (pixel.alpha == 1) {
    pixel.colours == 1 ? Split<1, 1>(from, count, colours, alpha)
                       : Split<3, 1>(from, count, colours, alpha);
  } else {
    pixel.colours == 2 ? Split<2, 2>(from, count, colours, alpha)
                       : Split<6, 2>(from, count, colours, alpha);
  }
}

DecodedImage SplitAlpha(const Raster& interleaved) {
  const Raster& all = interleaved;
  return SplitInto(Raster(all.width, all.height, all.bits, all.channels - 1), all.bytes.Data());
}

DecodedImage SplitAlpha(const uint8_t* rgba, uint32_t width, uint32_t height) {
  return SplitInto(Raster(width, height, 8, 3), rgba);
}

}  // namespace pictures
