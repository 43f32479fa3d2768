// png_animation.h - the frames of an animated PNG (APNG), each as a PNG file of its own.
#ifndef JTPDF_PICTURES_PNG_ANIMATION_H
#define JTPDF_PICTURES_PNG_ANIMATION_H

#include <vector>

#include "bytes.h"
#include "formats/canvas.h"
#include "formats/png_file.h"

namespace pictures {

struct PngFrame {
  Canvas::Area area;
  Canvas::Disposal disposal = Canvas::Disposal::kStays;
  bool over = false;        // laid over what is there; else in place of it
  std::vector<Bytes> data;  // a zlib stream in pieces
};

// The frames of the animation; the still picture is one of them only where it says so. Throws an
// ImageError for frames that lie outside of the picture or have no data.
std::vector<PngFrame> ReadPngFrames(Bytes file, const PngFacts& facts);

// A PNG file of the frame alone, of the same kind of pixels.
Buffer MakePngFile(const PngFacts& facts, const PngFrame& frame);

// Draws the pixels of that file on the canvas, which has as many colours.
void DrawPngFrame(const PngFrame& frame, const DecodedImage& image, Canvas* canvas);

}  // namespace pictures

#endif  // JTPDF_PICTURES_PNG_ANIMATION_H
