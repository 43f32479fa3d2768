// canvas.h - what is seen of an animation's frames, laid over each other.
#ifndef JTPDF_PICTURES_CANVAS_H
#define JTPDF_PICTURES_CANVAS_H

#include <cstddef>
#include <cstdint>

#include "image.h"

namespace pictures {

// Pixels of one or three colours and their opacity behind them, of 8 or 16 bits a sample; at first
// nothing is seen.
class Canvas {
 public:
  Canvas(uint32_t width, uint32_t height, int bits, int colours)
      : pixels_(width, height, bits, colours + 1) {
    Clear({0, 0, width, height});
  }

  // The part that a frame draws on; what of it is outside of the canvas is not seen.
  struct Area {
    uint32_t left = 0, top = 0, width = 0, height = 0;

    bool Covers(uint32_t canvasWidth, uint32_t canvasHeight) const {
      return left == 0 && top == 0 && width >= canvasWidth && height >= canvasHeight;
    }
  };
  // What becomes of a frame before the next one is drawn.
  enum class Disposal { kStays, kIsCleared, kUncovers };

  // Does away with the frame before, and begins the next.
  void Begin(const Area& area, Disposal disposal);

  uint32_t Width() const { return pixels_.width; }
  uint32_t Height() const { return pixels_.height; }
  int Bits() const { return pixels_.bits; }
  size_t PixelSize() const {
    return static_cast<size_t>(pixels_.channels) * static_cast<size_t>(pixels_.bits) / 8;
  }
  uint8_t* At(uint32_t x, uint32_t y) { return pixels_.Row(y) + PixelSize() * x; }
  DecodedImage Split() const;

 private:
  void Clear(const Area& area);

  Raster pixels_;
  Buffer before_;  // where the frame uncovers it again
  Area area_;      // of the frame
  Disposal disposal_ = Disposal::kStays;
};

}  // namespace pictures

#endif  // JTPDF_PICTURES_CANVAS_H
