#include "formats/boxes.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace pictures {
namespace {

using namespace std::string_view_literals;

// Names and sizes of the boxes, and whether one is damaged.
std::string Boxes(std::string_view bytes) {
  BoxWalk walk(Bytes(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
  std::string found;
  while (walk.Next()) found += std::string(walk.type) + std::to_string(walk.data.size()) + ' ';
  return found + (walk.damaged ? "damaged" : "whole");
}

TEST(BoxWalk, StepsFromBoxToBox) {
  EXPECT_EQ(Boxes("\0\0\0\x0A"
                  "one.xy\0\0\0\x08"
                  "two."sv),
            "one.2 two.0 whole");
}

TEST(BoxWalk, TakesSizesOf64Bits) {
  EXPECT_EQ(Boxes("\0\0\0\1one.\0\0\0\0\0\0\0\x12"
                  "xy\0\0\0\x08"
                  "two."sv),
            "one.2 two.0 whole");
  EXPECT_EQ(Boxes("\0\0\0\1one.\0\0\0\0\0\0\0\x0F"
                  "xyzuvwabc"sv),
            "damaged");
  EXPECT_EQ(Boxes("\0\0\0\1one.\0\0"sv), "damaged");
}

TEST(BoxWalk, TakesALastBoxWithoutSize) {
  EXPECT_EQ(Boxes("\0\0\0\x08"
                  "one.\0\0\0\0two.xyz"sv),
            "one.0 two.3 whole");
}

TEST(BoxWalk, EndsAtABoxThatCannotBe) {
  EXPECT_EQ(Boxes("\0\0\0\7one."sv), "damaged");
  EXPECT_EQ(Boxes("\0\0\0\2one.xy"sv), "damaged");
  EXPECT_EQ(Boxes("\0\0\0\x0B"
                  "one.xy"sv),
            "damaged");
}

}  // namespace
}  // namespace pictures
