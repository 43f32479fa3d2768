#include "formats/exif.h"

#include <gtest/gtest.h>

#include <string>

#include "as_bytes.h"

namespace pictures {
namespace {

using namespace std::string_literals;

// Orientation 6 and 300 x 150 dots per centimetre.
const std::string kBig =
    "MM\0*\0\0\0\x08"
    "\0\x04"
    "\x01\x12\0\x03\0\0\0\x01\0\x06\0\0"
    "\x01\x1A\0\x05\0\0\0\x01\0\0\0\x3E"
    "\x01\x1B\0\x05\0\0\0\x01\0\0\0\x46"
    "\x01\x28\0\x03\0\0\0\x01\0\x03\0\0"
    "\0\0\0\0"
    "\0\0\x01\x2C\0\0\0\x01"
    "\0\0\x01\x2C\0\0\0\x02"s;

TEST(ReadExif, ReadsOrientationAndResolution) {
  const ExifFacts facts = ReadExif(AsBytes(kBig));
  EXPECT_EQ(facts.orientation, 6);
  EXPECT_DOUBLE_EQ(facts.resolution.x, 762);
  EXPECT_DOUBLE_EQ(facts.resolution.y, 381);
}

TEST(ReadExif, ReadsBothByteOrders) {
  const std::string little = "II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x08\0\0\0\0\0\0\0"s;
  EXPECT_EQ(ReadExif(AsBytes(little)).orientation, 8);
}

TEST(ReadExif, TakesWholeNumbersForResolutions) {
  const std::string data =
      "II*\0\x08\0\0\0\x02\0"
      "\x1A\x01\x03\0\x01\0\0\0\x2C\x01\xFF\xFF"
      "\x1B\x01\x04\0\x01\0\0\0\x58\x02\0\0"
      "\0\0\0\0"s;
  EXPECT_EQ(ReadExif(AsBytes(data)).resolution.x, 300);
  EXPECT_EQ(ReadExif(AsBytes(data)).resolution.y, 600);
}

TEST(ReadExif, TakesNoResolutionFromOtherTypes) {
  for (const char type : {1, 2, 6, 7, 9, 10, 11, 12}) {
    std::string other = kBig;
    other[10 + 12 + 3] = other[10 + 24 + 3] = type;
    EXPECT_FALSE(ReadExif(AsBytes(other)).resolution.Known()) << int{type};
  }
}

TEST(ReadExif, PassesOverEntriesThatAreNotOneNumber) {
  for (const char count : {0, 2, 3}) {
    std::string several = kBig;
    for (const size_t entry : {0, 12, 24}) several[10 + entry + 7] = count;
    EXPECT_EQ(ReadExif(AsBytes(several)).orientation, std::nullopt);
    EXPECT_EQ(ReadExif(AsBytes(several)).resolution.x, 0);
    std::string unit = kBig;  // centimetres, if it counted
    unit[10 + 36 + 7] = count;
    EXPECT_DOUBLE_EQ(ReadExif(AsBytes(unit)).resolution.x, 300);
  }
}

TEST(ReadExif, StaysInsideItsBytesWhereverTheyEnd) {
  for (size_t size = 0; size < kBig.size(); ++size) {
    const std::string cut = kBig.substr(0, size);  // on the heap: sanitizers watch its end
    const ExifFacts facts = ReadExif(AsBytes(cut));
    EXPECT_TRUE(facts.orientation == std::nullopt || facts.orientation == 6);
    EXPECT_TRUE(facts.resolution.x == 0 || size >= 70);
  }
}

TEST(ReadExif, TakesAZeroDenominatorForNoResolution) {
  std::string zero = kBig;
  zero[zero.size() - 1] = 0;
  EXPECT_FALSE(ReadExif(AsBytes(zero)).resolution.Known());
}

TEST(ReadExif, TakesNoUnitForNoResolution) {
  std::string none = kBig;
  none[10 + 36 + 9] = 1;
  EXPECT_FALSE(ReadExif(AsBytes(none)).resolution.Known());
}

TEST(ReadExif, IgnoresWhatIsNoExif) {
  EXPECT_EQ(ReadExif(AsBytes("")).orientation, std::nullopt);
  EXPECT_EQ(ReadExif(AsBytes("MM\0+\0\0\0\x08"s)).orientation, std::nullopt);
  EXPECT_EQ(ReadExif(AsBytes("XX\0*\0\0\0\x08\0\0"s)).orientation, std::nullopt);
}

TEST(ApplyExif, NotesAnOrientationThatIsNone) {
  for (const int orientation : {0, 9, 65535}) {
    ImagePlan plan;
    ApplyExif({orientation, {}}, &plan);
    EXPECT_EQ(plan.orientation, 1);
    ASSERT_EQ(plan.notes.size(), 1u);
    EXPECT_TRUE(plan.notes[0].always);
  }
}

TEST(ApplyExif, KeepsTheFormatsOwnResolution) {
  ImagePlan plan;
  plan.resolution = {72, 72};
  ApplyExif({3, {300, 300}}, &plan);
  EXPECT_EQ(plan.orientation, 3);
  EXPECT_EQ(plan.resolution.x, 72);
}

}  // namespace
}  // namespace pictures
