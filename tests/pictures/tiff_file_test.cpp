#include "formats/tiff_file.h"

#include <gtest/gtest.h>

#include <string>

#include "as_bytes.h"
#include "image.h"

namespace pictures {
namespace {

using namespace std::string_literals;

// One grey pixel, and a field of 5000 bytes.
std::string File() {
  std::string file =
      "II*\0\x08\0\0\0"s
      "\x09\0"s;
  const auto field = [&](const char* head, const char* value) {
    file += std::string(head, 8) + std::string(value, 4);
  };
  field("\0\1\3\0\1\0\0\0", "\1\0\0\0");
  field("\1\1\3\0\1\0\0\0", "\1\0\0\0");
  field("\2\1\3\0\1\0\0\0", "\x08\0\0\0");
  field("\6\1\3\0\1\0\0\0", "\1\0\0\0");
  field("\x11\1\4\0\1\0\0\0", "\0\0\0\0");
  field("\x15\1\3\0\1\0\0\0", "\1\0\0\0");
  field("\x16\1\3\0\1\0\0\0", "\1\0\0\0");
  field("\x17\1\4\0\1\0\0\0", "\1\0\0\0");
  field("\x73\x87\7\0\x88\x13\0\0", "\x80\0\0\0");
  file.resize(128 + 5000);
  return file;
}

TEST(TiffFile, TakesNoMoreMemoryAtOnceThanItMay) {
  const std::string file = File();
  EXPECT_FALSE(TiffFile(AsBytes(file), 5000).HasError());
  TiffFile tight(AsBytes(file), 4999);
  EXPECT_NE(tight.TakeError().find("beyond the 4999 byte limit"), std::string::npos);
  EXPECT_FALSE(tight.HasError());
}

TEST(TiffFile, TellsWhichFieldsAPageHas) {
  const std::string text = File();
  const TiffFile file(AsBytes(text), 5000);
  EXPECT_TRUE(file.Declares(TIFFTAG_ICCPROFILE));
  EXPECT_TRUE(file.Declares(TIFFTAG_IMAGEWIDTH));
  EXPECT_FALSE(file.Declares(TIFFTAG_PLANARCONFIG));
}

TEST(TiffFile, OpensThePageThatLiesThere) {
  std::string two = File();
  const std::string second = two.substr(8, 2 + 9 * 12 + 4);
  const size_t place = two.size();
  two += second;
  two[place + 2 + 8] = 7;  // its width
  uint32_t width = 0;
  TIFFGetField(TiffFile(AsBytes(two), 5000, place).Get(), TIFFTAG_IMAGEWIDTH, &width);
  EXPECT_EQ(width, 7u);
  TIFFGetField(TiffFile(AsBytes(two), 5000).Get(), TIFFTAG_IMAGEWIDTH, &width);
  EXPECT_EQ(width, 1u);
}

TEST(TiffFile, SaysWhatIsDamaged) {
  const std::string none = "II*\0\xFF\0\0\0"s;
  EXPECT_THROW(TiffFile(AsBytes(none), 5000), ImageError);
}

}  // namespace
}  // namespace pictures
