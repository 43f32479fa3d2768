#include "formats/canvas.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "formats/planes.h"

namespace pictures {

void Canvas::Clear(const Area& area) {
  const uint64_t right = std::min<uint64_t>(uint64_t{area.left} + area.width, Width());
  const uint64_t bottom = std::min<uint64_t>(uint64_t{area.top} + area.height, Height());
  if (area.left >= right) return;
  for (uint32_t y = area.top; y < bottom; ++y) {
    std::memset(At(area.left, y), 0, PixelSize() * static_cast<size_t>(right - area.left));
  }
}

void Canvas::Begin(const Area& area, Disposal disposal) {
  if (disposal_ == Disposal::kUncovers) pixels_.bytes = std::move(before_);
  if (disposal_ == Disposal::kIsCleared) Clear(area_);
  if (disposal == Disposal::kUncovers) before_ = Buffer::CopyOf(pixels_.bytes.View());
  area_ = area;
  disposal_ = disposal;
}

DecodedImage Canvas::Split() const {
  return SplitAlpha(pixels_);
}

}  // namespace pictures
