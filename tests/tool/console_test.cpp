#include "console.h"

#include <gtest/gtest.h>

namespace pictures::tool {
namespace {

TEST(ProgressLine, TellsPagesSpeedAndTimeLeft) {
  EXPECT_EQ(ProgressLine(25, 100, 50'000'000, 10, 80),
            "[##########------------------------------] 25/100 pages, 5.0 MB/s, 30 s left");
  EXPECT_EQ(ProgressLine(100, 100, 1'500'000, 1, 80),
            "[########################################] 100/100 pages, 1.5 MB/s, 0 s left");
  EXPECT_EQ(ProgressLine(0, 3, 0, 2, 80),
            "[----------------------------------------] 0/3 pages, 0.0 MB/s, 0 s left");
}

TEST(ProgressLine, CountsMinutesFromSixtySecondsOn) {
  const auto left = [](double seconds) {
    const std::string line = ProgressLine(1, 2, 0, seconds, 80);
    return line.substr(line.rfind(", ") + 2);
  };
  EXPECT_EQ(left(59), "59 s left");
  EXPECT_EQ(left(58.1), "59 s left");
  EXPECT_EQ(left(60), "1:00 min left");
  EXPECT_EQ(left(3661), "61:01 min left");
}

TEST(ProgressLine, LeavesTheLastColumnFree) {
  constexpr auto kFacts = "25/100 pages, 5.0 MB/s, 30 s left";  // 33 columns
  for (int columns = 33 + 9; columns < 90; ++columns) {
    const std::string line = ProgressLine(25, 100, 50'000'000, 10, columns);
    EXPECT_LT(line.size(), static_cast<size_t>(columns));
    EXPECT_GE(line.size(), std::min<size_t>(33 + 43, static_cast<size_t>(columns) - 1)) << columns;
    EXPECT_TRUE(line.starts_with("[")) << columns;
    EXPECT_TRUE(line.ends_with(kFacts));
  }
  EXPECT_EQ(ProgressLine(25, 100, 50'000'000, 10, 41), kFacts);
  EXPECT_EQ(ProgressLine(25, 100, 50'000'000, 10, 20), std::string(kFacts).substr(0, 19));
  EXPECT_EQ(ProgressLine(25, 100, 50'000'000, 10, 1), "");
  EXPECT_EQ(ProgressLine(25, 100, 50'000'000, 10, 0), "");
}

}  // namespace
}  // namespace pictures::tool
