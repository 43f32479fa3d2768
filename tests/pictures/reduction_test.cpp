#include "reduction.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "formats/samples.h"

namespace pictures {
namespace {

Raster RasterOf(uint32_t width, int bits, int channels, const std::vector<unsigned>& samples) {
  const size_t inRow = width * static_cast<size_t>(channels);
  Raster raster(width, static_cast<uint32_t>(samples.size() / inRow), bits, channels);
  for (uint32_t y = 0; y < raster.height; ++y) {
    SampleWriter writer(raster.Row(y), bits);
    for (size_t x = 0; x < inRow; ++x) writer.Put(samples[y * inRow + x]);
    writer.Finish();
  }
  return raster;
}

std::vector<unsigned> SamplesOf(const Raster& raster) {
  std::vector<unsigned> samples;
  for (uint32_t y = 0; y < raster.height; ++y) {
    for (size_t x = 0; x < raster.width * static_cast<size_t>(raster.channels); ++x) {
      samples.push_back(SampleAt(raster.Row(y), x, raster.bits));
    }
  }
  return samples;
}

std::vector<unsigned> PaletteOf(const Samples& samples) {
  const Bytes bytes = samples.palette.View();
  return {bytes.begin(), bytes.end()};
}

// What a table of test pictures is made of: so many greys, each its own step from the last.
std::vector<unsigned> Greys(unsigned count, unsigned step, unsigned first = 0) {
  std::vector<unsigned> greys;
  for (unsigned i = 0; i < count; ++i) greys.push_back(first + i * step);
  return greys;
}

std::vector<unsigned> Tripled(const std::vector<unsigned>& greys) {
  std::vector<unsigned> samples;
  for (const unsigned grey : greys) samples.insert(samples.end(), 3, grey);
  return samples;
}

using Numbers = std::vector<unsigned>;

TEST(Reduce, GreysOfAFewBitsTakeThese) {
  const struct {
    unsigned count, step;
    int bits;
  } kCases[] = {{2, 255, 1}, {4, 85, 2}, {16, 17, 4}, {256, 1, 8}};
  for (const auto& [count, step, bits] : kCases) {
    const Samples samples = Reduce(RasterOf(count, 8, 1, Greys(count, step)), Purpose::kPicture);
    EXPECT_EQ(samples.raster.bits, bits);
    EXPECT_EQ(samples.colour, Colour::kGrey);
    EXPECT_TRUE(samples.palette.Empty());
    EXPECT_EQ(SamplesOf(samples.raster), Greys(count, 1));
  }
}

TEST(Reduce, ChangesOfOneGreyAreSeenInTheLastPixel) {
  Numbers greys(100, 0);
  greys.back() = 254;
  const Samples samples = Reduce(RasterOf(10, 8, 1, greys), Purpose::kPicture);
  EXPECT_EQ(samples.raster.bits, 1);
  EXPECT_EQ(PaletteOf(samples), (Numbers{0, 254}));
}

TEST(Reduce, AFewGreysThatFitNoRangeGetAPalette) {
  const struct {
    unsigned count;
    int bits;
  } kCases[] = {{1, 1}, {2, 1}, {3, 2}, {4, 2}, {5, 4}, {16, 4}};
  for (const auto& [count, bits] : kCases) {
    const Samples samples = Reduce(RasterOf(count, 8, 1, Greys(count, 1, 7)), Purpose::kPicture);
    EXPECT_EQ(samples.raster.bits, bits) << count;
    EXPECT_EQ(PaletteOf(samples), Greys(count, 1, 7));
    EXPECT_EQ(SamplesOf(samples.raster), Greys(count, 1));
  }
  const Samples many = Reduce(RasterOf(17, 8, 1, Greys(17, 1)), Purpose::kPicture);
  EXPECT_EQ(many.raster.bits, 8);
  EXPECT_TRUE(many.palette.Empty());
  EXPECT_EQ(SamplesOf(many.raster), Greys(17, 1));
}

TEST(Reduce, GreysOfFewBitsTakeFewerYet) {
  EXPECT_EQ(Reduce(RasterOf(2, 4, 1, {0, 15}), Purpose::kPicture).raster.bits, 1);
  EXPECT_EQ(Reduce(RasterOf(4, 4, 1, {0, 5, 10, 15}), Purpose::kPicture).raster.bits, 2);
  const Samples odd = Reduce(RasterOf(2, 4, 1, {3, 9}), Purpose::kPicture);
  EXPECT_EQ(odd.raster.bits, 1);
  EXPECT_EQ(PaletteOf(odd), (Numbers{3 * 17, 9 * 17}));
}

TEST(Reduce, AMaskHasNoPalette) {
  const Samples samples = Reduce(RasterOf(2, 8, 1, {7, 9}), Purpose::kMask);
  EXPECT_EQ(samples.raster.bits, 8);
  EXPECT_TRUE(samples.palette.Empty());
  EXPECT_EQ(SamplesOf(samples.raster), (Numbers{7, 9}));
  EXPECT_EQ(Reduce(RasterOf(2, 8, 1, {0, 255}), Purpose::kMask).raster.bits, 1);
}

TEST(Reduce, SixteenBitsThatRepeatThemselvesAreEight) {
  Numbers wide;
  for (const unsigned grey : Greys(50, 5)) wide.push_back(grey * 257);
  const Samples samples = Reduce(RasterOf(5, 16, 1, wide), Purpose::kPicture);
  EXPECT_EQ(samples.raster.bits, 8);
  EXPECT_EQ(SamplesOf(samples.raster), Greys(50, 5));
  wide.back() ^= 1;
  const Samples exact = Reduce(RasterOf(5, 16, 1, wide), Purpose::kPicture);
  EXPECT_EQ(exact.raster.bits, 16);
  EXPECT_EQ(SamplesOf(exact.raster), wide);
}

TEST(Reduce, ColourThatIsGreyBecomesGrey) {
  for (const int bits : {8, 16}) {
    const Numbers greys = bits == 8 ? Greys(20, 12) : Greys(20, 1001);
    const Samples samples = Reduce(RasterOf(4, bits, 3, Tripled(greys)), Purpose::kPicture);
    EXPECT_EQ(samples.colour, Colour::kGrey);
    EXPECT_EQ(samples.raster.channels, 1);
    EXPECT_EQ(samples.raster.bits, bits);
    EXPECT_EQ(SamplesOf(samples.raster), greys);
    for (size_t i : {0, 1, 2}) {  // any of the last pixel's components
      Numbers tinted = Tripled(greys);
      tinted[tinted.size() - 3 + i] ^= 1;
      EXPECT_EQ(Reduce(RasterOf(4, bits, 3, tinted), Purpose::kPicture).colour, Colour::kRgb);
    }
  }
}

TEST(Reduce, GreysWithAProfileStayColoursOfARamp) {
  const Numbers greys = Greys(20, 12);
  const Samples samples = Reduce(RasterOf(4, 8, 3, Tripled(greys)), Purpose::kProfiled);
  EXPECT_EQ(samples.colour, Colour::kRgb);
  EXPECT_TRUE(samples.ramp);
  EXPECT_EQ(SamplesOf(samples.raster), greys);
  EXPECT_EQ(PaletteOf(samples), Tripled(Greys(256, 1)));
  const Samples few = Reduce(RasterOf(4, 8, 3, Tripled(Greys(16, 12))), Purpose::kProfiled);
  EXPECT_FALSE(few.ramp);
  EXPECT_EQ(few.raster.bits, 4);
  EXPECT_EQ(PaletteOf(few), Tripled(Greys(16, 12)));
}

// So many distinct colours.
Numbers Colours(unsigned count) {
  Numbers samples;
  for (unsigned i = 0; i < count; ++i) {
    samples.insert(samples.end(), {200, i * 7 % 256, i / 256 + i % 3});
  }
  return samples;
}

TEST(Reduce, FewColoursGetAPaletteOfAsFewBitsAsDo) {
  const struct {
    unsigned count;
    int bits;
  } kCases[] = {{1, 1}, {2, 1}, {3, 2}, {4, 2}, {5, 4}, {16, 4}, {17, 8}, {256, 8}};
  for (const auto& [count, bits] : kCases) {
    const Numbers colours = Colours(count);
    const Samples samples = Reduce(RasterOf(count, 8, 3, colours), Purpose::kPicture);
    EXPECT_EQ(samples.raster.bits, bits) << count;
    EXPECT_EQ(samples.raster.channels, 1);
    EXPECT_EQ(samples.colour, Colour::kRgb);
    EXPECT_EQ(PaletteOf(samples), colours);
    EXPECT_EQ(SamplesOf(samples.raster), Greys(count, 1));
  }
  const Numbers colours = Colours(257);
  const Samples many = Reduce(RasterOf(257, 8, 3, colours), Purpose::kPicture);
  EXPECT_TRUE(many.palette.Empty());
  EXPECT_EQ(SamplesOf(many.raster), colours);
}

TEST(Reduce, InksStayAsTheyAre) {
  const Samples samples = Reduce(RasterOf(1, 8, 4, {1, 2, 3, 4}), Purpose::kPicture);
  EXPECT_EQ(samples.colour, Colour::kCmyk);
  EXPECT_EQ(SamplesOf(samples.raster), (Numbers{1, 2, 3, 4}));
}

TEST(Reduce, RowsOfAPaletteBeginAtBytes) {
  const Numbers row = {10, 20, 30, 40, 50, 60, 10, 20, 30};
  Numbers rows = row;
  rows.insert(rows.end(), row.begin(), row.end());
  const Samples samples = Reduce(RasterOf(3, 8, 3, rows), Purpose::kPicture);
  EXPECT_EQ(samples.raster.bytes.Size(), 2u);
  EXPECT_EQ(SamplesOf(samples.raster), (Numbers{0, 1, 0, 0, 1, 0}));
}

}  // namespace
}  // namespace pictures
