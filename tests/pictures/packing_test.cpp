#include "packing.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "flate.h"
#include "row_filters.h"

namespace pictures {
namespace {

// Undoes the filters of PNG (ISO/IEC 15948, clause 9), pixel by pixel.
std::vector<uint8_t> Unfiltered(Bytes rows, size_t stride, size_t pixelSize) {
  std::vector<uint8_t> plain;
  for (size_t y = 0; y * (stride + 1) < rows.size(); ++y) {
    const uint8_t* row = &rows[y * (stride + 1)];
    for (size_t x = 0; x < stride; ++x) {
      const int left = x >= pixelSize ? plain[y * stride + x - pixelSize] : 0;
      const int above = y > 0 ? plain[(y - 1) * stride + x] : 0;
      const int corner = x >= pixelSize && y > 0 ? plain[(y - 1) * stride + x - pixelSize] : 0;
      const int estimate = left + above - corner;
      const int a = std::abs(estimate - left), b = std::abs(estimate - above),
                c = std::abs(estimate - corner);
      const int predictions[] = {0, left, above, (left + above) / 2,
                                 a <= b && a <= c ? left
                                 : b <= c         ? above
                                                  : corner};
      plain.push_back(static_cast<uint8_t>(row[1 + x] + predictions[row[0]]));
    }
  }
  return plain;
}

std::vector<uint8_t> Noise(size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<uint8_t> bytes(size);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
  return bytes;
}

TEST(FilterRows, CanBeUndone) {
  for (const size_t pixelSize : {1, 2, 3, 4, 6, 8}) {
    for (const size_t width : {1, 2, 33}) {
      const size_t stride = width * pixelSize;
      std::vector<uint8_t> bytes = Noise(stride * 20, static_cast<unsigned>(stride));
      // Rows that each filter is best for: flat, a slope along, the row above, and between.
      for (size_t i = 0; i < 4 * stride; ++i) bytes[i] = static_cast<uint8_t>(3 * (i / pixelSize));
      std::memcpy(&bytes[5 * stride], &bytes[4 * stride], stride);
      for (const BestRow best : {BestRow::kSmallest, BestRow::kMostRepetitive}) {
        const Buffer rows = FilterRows(bytes, stride, 20, pixelSize, best);
        EXPECT_EQ(Unfiltered(rows.View(), stride, pixelSize), bytes);
      }
    }
  }
}

TEST(FilterRows, TakesTheFilterOfTheSmallestDifferences) {
  std::vector<uint8_t> bytes;
  const std::vector<uint8_t> noise = Noise(64, 1);
  bytes.insert(bytes.end(), 64, 0);                                             // none
  for (int x = 0; x < 64; ++x) bytes.push_back(static_cast<uint8_t>(100 + x));  // left
  bytes.insert(bytes.end(), noise.begin(), noise.end());
  bytes.insert(bytes.end(), noise.begin(), noise.end());  // above
  for (int x = 0; x < 64; ++x) {                          // the mean of both
    const int left = x == 0 ? 0 : bytes.back();
    bytes.push_back(static_cast<uint8_t>((left + noise[static_cast<size_t>(x)]) / 2));
  }
  const Buffer rows = FilterRows(bytes, 64, 5, 1, BestRow::kSmallest);
  EXPECT_EQ(rows.Data()[0], 0);
  EXPECT_EQ(rows.Data()[65], 1);
  EXPECT_EQ(rows.Data()[3 * 65], 2);
  EXPECT_EQ(rows.Data()[4 * 65], 3);
}

TEST(FilterRows, TakesTheFilterOfTheMostRepetitions) {
  // A pattern, and above it the same with some noise: what is left of it by the filter of the row
  // above is small, and is new everywhere.
  const std::vector<uint8_t> noise = Noise(300, 2);
  std::vector<uint8_t> bytes;
  const auto pattern = [](size_t i) { return i % 3 == 0 ? 100 : i % 3 == 1 ? 156 : 40; };
  for (size_t i = 0; i < 300; ++i)
    bytes.push_back(static_cast<uint8_t>(pattern(i) + noise[i] % 16));
  for (size_t i = 0; i < 300; ++i) bytes.push_back(static_cast<uint8_t>(pattern(i)));
  bytes.insert(bytes.end(), noise.begin(), noise.end());
  bytes.insert(bytes.end(), noise.begin(), noise.end());  // above
  EXPECT_EQ(FilterRows(bytes, 300, 4, 1, BestRow::kSmallest).Data()[301], 2);
  const Buffer rows = FilterRows(bytes, 300, 4, 1, BestRow::kMostRepetitive);
  EXPECT_EQ(rows.Data()[301], 0);
  EXPECT_EQ(rows.Data()[3 * 301], 2);
}

Raster Filled(uint32_t width, uint32_t height, int bits, int channels, const auto& byteAt) {
  Raster raster(width, height, bits, channels);
  for (size_t i = 0; i < raster.bytes.Size(); ++i) raster.bytes.Data()[i] = byteAt(i);
  return raster;
}

TEST(Pack, DropsAnAlphaThatIsOpaqueThroughout) {
  for (const int bits : {1, 8, 16}) {
    EXPECT_FALSE(PackAlpha(Filled(3, 2, bits, 1, [](size_t) { return 0xFF; }), 6).has_value());
    EXPECT_TRUE(
        PackAlpha(Filled(3, 2, bits, 1, [](size_t i) { return 0xFF - (i == 0); }), 6).has_value());
  }
}

TEST(Pack, FiltersSlopesAndLeavesPatternsAlone) {
  // Large pictures are judged by a part of them, small ones in whole.
  for (const uint32_t side : {300u, 1200u}) {
    const std::vector<uint8_t> grain = Noise(side * side * 3, 5);
    const EncodedStream slope =
        Pack(Filled(side, side, 8, 3,
                    [&](size_t i) {
                      const size_t x = i % (3 * side), y = i / 3 / side;
                      return static_cast<uint8_t>((x + y) / 8 + grain[i] % 4);
                    }),
             6, Purpose::kPicture);
    EXPECT_EQ(slope.predictor, 15) << side;
    const std::vector<uint8_t> tile = Noise(3000, 2);
    const EncodedStream pattern =
        Pack(Filled(side, side, 8, 3, [&](size_t i) { return tile[i % tile.size()]; }), 6,
             Purpose::kPicture);
    EXPECT_EQ(pattern.predictor, 1) << side;
    EXPECT_EQ(pattern.filter, Filter::kFlate);
  }
}

TEST(Pack, TakesTheSmallerOfFaxAndFlate) {
  const std::vector<uint8_t> noise = Noise(125000, 3);
  const EncodedStream dithered =
      Pack(Filled(1000, 1000, 1, 1, [&](size_t i) { return noise[i]; }), 6, Purpose::kPicture);
  EXPECT_EQ(dithered.filter, Filter::kFlate);
  EXPECT_LE(dithered.Size(), 125100u);
  // A bar whose edge wavers by a pixel or two.
  const EncodedStream bar =
      Pack(Filled(1000, 200, 1, 1,
                  [&](size_t i) {
                    const size_t column = i % 125;
                    return column == 60 ? 0xFF >> noise[i] % 4 : column > 60 ? 0xFF : 0;
                  }),
           6, Purpose::kPicture);
#ifdef JTPDF_WITH_TIFF
  EXPECT_EQ(bar.filter, Filter::kCcitt);
#else
  EXPECT_EQ(bar.filter, Filter::kFlate);
#endif
  EXPECT_EQ(bar.predictor, 1);
}

TEST(Pack, DeclaresInksInverted) {
  const std::vector<uint8_t> noise = Noise(4 * 40 * 40, 4);
  const EncodedStream many =
      Pack(Filled(40, 40, 8, 4, [&](size_t i) { return noise[i]; }), 6, Purpose::kPicture);
  EXPECT_TRUE(many.palette.Empty());
  EXPECT_EQ(many.decode, (std::vector<int>{1, 0, 1, 0, 1, 0, 1, 0}));
}

}  // namespace
}  // namespace pictures
