#include "ccitt.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include <cstring>
#include <random>

#include "formats/decoder.h"

namespace pictures {
namespace {

void Put16(std::vector<uint8_t>* to, unsigned value) {
  to->push_back(static_cast<uint8_t>(value));
  to->push_back(static_cast<uint8_t>(value >> 8));
}
void Put32(std::vector<uint8_t>* to, size_t value) {
  Put16(to, value & 0xFFFF);
  Put16(to, static_cast<unsigned>(value >> 16));
}

// A TIFF file around the data, for the decoder that people use.
std::vector<uint8_t> AsTiff(Bytes data, uint32_t width, uint32_t height) {
  std::vector<uint8_t> file{'I', 'I', 42, 0};
  Put32(&file, 8 + data.size() + data.size() % 2);
  file.insert(file.end(), data.begin(), data.end());
  if (data.size() % 2 != 0) file.push_back(0);
  const size_t tags[][2] = {{TIFFTAG_IMAGEWIDTH, width},
                            {TIFFTAG_IMAGELENGTH, height},
                            {TIFFTAG_BITSPERSAMPLE, 1},
                            {TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4},
                            {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE},
                            {TIFFTAG_STRIPOFFSETS, 8},
                            {TIFFTAG_SAMPLESPERPIXEL, 1},
                            {TIFFTAG_ROWSPERSTRIP, height},
                            {TIFFTAG_STRIPBYTECOUNTS, data.size()}};
  Put16(&file, std::size(tags));
  for (const auto& [tag, value] : tags) {
    Put16(&file, static_cast<unsigned>(tag));
    Put16(&file, TIFF_LONG);
    Put32(&file, 1);
    Put32(&file, value);
  }
  Put32(&file, 0);
  return file;
}

Raster Decoded(Bytes data, const Raster& like) {
  const std::vector<uint8_t> file = AsTiff(data, like.width, like.height);
  const std::vector<ImagePlan> plans = kTiffDecoder.plan(file, {});
  EXPECT_EQ(plans.at(0).error, "");
  std::vector<Note> notes;
  DecodedImage image = kTiffDecoder.decode(plans.at(0), file, &notes);
  EXPECT_TRUE(notes.empty()) << notes[0].text;
  return std::move(image.pixels);
}

// Runs of black and white of about so many pixels.
Raster Picture(uint32_t width, uint32_t height, unsigned run) {
  std::mt19937 random(width + height + run);
  Raster raster(width, height, 1, 1);
  unsigned left = 0;
  bool white = false;
  std::memset(raster.bytes.Data(), 0xFF, raster.bytes.Size());
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      if (left-- == 0) {
        left = random() % run;
        white = !white;
      }
      if (!white) raster.Row(y)[x / 8] &= static_cast<uint8_t>(~(0x80 >> x % 8));
    }
  }
  return raster;
}

TEST(EncodeGroup4, IsDecodedToTheSamePixels) {
  for (const auto& [width, height] : {std::pair{1u, 1u}, {7u, 3u}, {8u, 2u}, {2561u, 40u}}) {
    for (const unsigned run : {1u, 3u, 40u, 5000u}) {
      const Raster picture = Picture(width, height, run);
      const Buffer data = EncodeGroup4(picture);
      const Raster back = Decoded(data.View(), picture);
      ASSERT_EQ(back.bytes.Size(), picture.bytes.Size());
      // The bits behind the end of a row are nobody's.
      const uint8_t last = static_cast<uint8_t>(0xFF << (8 - (width - 1) % 8 - 1));
      for (uint32_t y = 0; y < height; ++y) {
        const size_t whole = picture.Stride() - 1;
        EXPECT_EQ(std::memcmp(back.Row(y), picture.Row(y), whole), 0) << y;
        EXPECT_EQ(back.Row(y)[whole] & last, picture.Row(y)[whole] & last) << y;
      }
    }
  }
}

TEST(EncodeGroup4, EndsWithTheCodeForIt) {
  Raster white(16, 1, 1, 1);
  std::memset(white.bytes.Data(), 0xFF, 2);
  const Buffer data = EncodeGroup4(white);
  const uint8_t expected[] = {0x80, 0x08, 0x00, 0x80};  // 1, 000000000001, 000000000001
  ASSERT_EQ(data.Size(), sizeof expected);
  EXPECT_EQ(std::memcmp(data.Data(), expected, sizeof expected), 0);
}

}  // namespace
}  // namespace pictures
