#include "row_filters.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

namespace pictures {
namespace {

// A row, the one above it, and both a pixel to the left; in front of the first pixel and above the
// first row are zeros. Loops over it are plain for the compiler's sake: they become vectors.
struct Neighbours {
  const uint8_t* here;
  const uint8_t* left;
  const uint8_t* above;
  const uint8_t* aboveLeft;
};

int Paeth(int left, int above, int aboveLeft) {
  const int toLeft = std::abs(above - aboveLeft);
  const int toAbove = std::abs(left - aboveLeft);
  const int toBoth = std::abs(left + above - 2 * aboveLeft);
  const int lower = toAbove <= toBoth ? above : aboveLeft;
  return toLeft <= toAbove && toLeft <= toBoth ? left : lower;
}

template <typename Predict>
void Subtract(const Neighbours& n, size_t size, uint8_t* to, const Predict& predict) {
  for (size_t i = 0; i < size; ++i) to[i] = static_cast<uint8_t>(n.here[i] - predict(i));
}

void Filter(uint8_t number, const Neighbours& n, size_t size, uint8_t* to) {
  switch (number) {
    case 0:
      return Subtract(n, size, to, [](size_t) { return 0; });
    case 1:
      return Subtract(n, size, to, [&](size_t i) { return n.left[i]; });
    case 2:
      return Subtract(n, size, to, [&](size_t i) { return n.above[i]; });
    case 3:
      return Subtract(n, size, to, [&](size_t i) { return (n.left[i] + n.above[i]) >> 1; });
    default:
      return Subtract(n, size, to,
                      [&](size_t i) { return Paeth(n.left[i], n.above[i], n.aboveLeft[i]); });
  }
}

// Of the differences, taken as numbers with a sign.
uint64_t SumOfSizes(const uint8_t* bytes, size_t size) {
  uint64_t sum = 0;
  constexpr size_t kBlock = 4096;  // whose sum fits into 32 bits
  for (size_t at = 0; at < size; at += kBlock) {
    uint32_t part = 0;
    for (size_t i = at; i < std::min(size, at + kBlock); ++i) {
      part += static_cast<uint32_t>(std::abs(static_cast<int8_t>(bytes[i])));
    }
    sum += part;
  }
  return sum;
}

}  // namespace

Buffer FilterRows(Bytes bytes, size_t stride, size_t rows, size_t pixelSize) {
  // Two rows behind a pixel of zeros each, and what the filters make of the lower one.
  const size_t room = pixelSize + stride;
  std::vector<uint8_t> lines(2 * room, 0);
  std::vector<uint8_t> tried(stride);
  uint8_t* here = lines.data();
  uint8_t* above = here + room;
  Buffer result((stride + 1) * rows);
  for (size_t y = 0; y < rows; ++y) {
    std::memcpy(here + pixelSize, &bytes[y * stride], stride);
    uint8_t* const to = result.Data() + y * (stride + 1);
    uint64_t least = std::numeric_limits<uint64_t>::max();
    for (uint8_t number = 0; number <= 4; ++number) {
      Filter(number, {here + pixelSize, here, above + pixelSize, above}, stride, tried.data());
      const uint64_t sum = SumOfSizes(tried.data(), stride);
      if (sum >= least) continue;
      least = sum;
      to[0] = number;
      std::memcpy(to + 1, tried.data(), stride);
    }
    std::swap(here, above);
  }
  return result;
}

}  // namespace pictures
