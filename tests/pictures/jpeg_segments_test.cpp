#include "formats/jpeg_segments.h"

#include <gtest/gtest.h>

#include <optional>
#include <string_view>

namespace pictures {
namespace {

using namespace std::string_view_literals;

std::optional<size_t> EndOf(std::string_view scan) {
  return FindJpegEnd(Bytes(reinterpret_cast<const uint8_t*>(scan.data()), scan.size()), 0);
}

TEST(FindJpegEnd, IsBehindTheMarkerOfTheEnd) {
  EXPECT_EQ(EndOf("data\xFF\xD9"sv), 6u);
  EXPECT_EQ(EndOf("data\xFF\xD9 and what follows\xFF\xD9"sv), 6u);
}

TEST(FindJpegEnd, PassesOverWhatIsNoMarker) {
  EXPECT_EQ(EndOf("\xFF\0\xD9\xFF\xD0\xFF\xD7\xFF\xD9"sv), 9u);
  EXPECT_EQ(EndOf("\xFF\xFF\xFF\xD9"sv), 4u);      // filled up in front of a marker
  EXPECT_EQ(EndOf("\xFF\xFF\0\4\xFF\xD9"sv), 6u);  // and so is this, which has no length
}

TEST(FindJpegEnd, PassesOverSegmentsBetweenScans) {
  EXPECT_EQ(EndOf("\xFF\xC4\0\4\xFF\xD9 data\xFF\xD9"sv), 13u);
  EXPECT_EQ(EndOf("\xFF\xFE\0\6\xFF\xFF\xFF\xD9\xFF\xD9"sv), 10u);
}

TEST(FindJpegEnd, IsNowhereInDataThatIsCutOff) {
  for (const std::string_view cut :
       {""sv, "data"sv, "data\xFF"sv, "\xFF\xC4"sv, "\xFF\xC4\0"sv, "\xFF\xC4\0\x40\xFF\xD9"sv}) {
    EXPECT_EQ(EndOf(cut), std::nullopt);
  }
}

}  // namespace
}  // namespace pictures
