#include "formats/planes.h"

#include <cstring>
#include <utility>

namespace pictures {

DecodedImage SplitAlpha(Raster interleaved, bool alpha) {
  DecodedImage image;
  if (!alpha) {
    image.pixels = std::move(interleaved);
    return image;
  }
  const Raster& all = interleaved;
  image.pixels = Raster(all.width, all.height, all.bits, all.channels - 1);
  image.alpha.emplace(all.width, all.height, all.bits, 1);
  const auto sample = static_cast<size_t>(all.bits) / 8;
  const size_t colours = sample * static_cast<size_t>(all.channels - 1);
  const uint8_t* from = all.bytes.Data();
  uint8_t* to = image.pixels.bytes.Data();
  uint8_t* toAlpha = image.alpha->bytes.Data();
  for (size_t i = size_t{all.width} * all.height; i > 0; --i) {
    std::memcpy(to, from, colours);
    std::memcpy(toAlpha, from + colours, sample);
    from += colours + sample;
    to += colours;
    toAlpha += sample;
  }
  return image;
}

}  // namespace pictures
