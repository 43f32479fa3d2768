#include "row_filters.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
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

void ApplyFilter(uint8_t number, const Neighbours& n, size_t size, uint8_t* to) {
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

// Counts how often each pair of neighbouring bytes comes.
class PairCounts {
 public:
  // The more often its pairs come again, the lower it is: a pair that has come n times saves about
  // log2(n) bits of what the first one cost. In whole numbers, which every machine adds up alike.
  uint64_t CostOf(const uint8_t* bytes, size_t size) {
    uint64_t saved = 0;
    for (size_t i = 1; i < size; ++i) {
      saved += static_cast<unsigned>(std::bit_width(++counts_[Be16(bytes + i - 1)])) - 1;
    }
    for (size_t i = 1; i < size; ++i) counts_[Be16(bytes + i - 1)] = 0;
    constexpr uint64_t kMostForOne = 32;
    return kMostForOne * size - saved;
  }

 private:
  std::vector<uint32_t> counts_ = std::vector<uint32_t>(size_t{1} << 16, 0);
};

}  // namespace

Buffer FilterRows(Bytes bytes, size_t stride, size_t rows, size_t pixelSize, BestRow best) {
  std::optional<PairCounts> pairs;
  if (best == BestRow::kMostRepetitive) pairs.emplace();
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
    uint64_t lowest = std::numeric_limits<uint64_t>::max();
    for (uint8_t number = 0; number <= 4; ++number) {
      ApplyFilter(number, {here + pixelSize, here, above + pixelSize, above}, stride, tried.data());
      const uint64_t cost =
          pairs ? pairs->CostOf(tried.data(), stride) : SumOfSizes(tried.data(), stride);
      if (cost >= lowest) continue;
      lowest = cost;
      to[0] = number;
      std::memcpy(to + 1, tried.data(), stride);
    }
    std::swap(here, above);
  }
  return result;
}

}  // namespace pictures
