#include "graphics/color.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <type_traits>

TEST(JTPDFColorEquality, ComparesAllFourBytes) {
  const JTPDFColor color(1, 2, 3, 4);
  EXPECT_TRUE(color == JTPDFColor(1, 2, 3, 4));
  EXPECT_FALSE(color != JTPDFColor(1, 2, 3, 4));
  for (const JTPDFColor& other : {JTPDFColor(9, 2, 3, 4), JTPDFColor(1, 9, 3, 4),
                                  JTPDFColor(1, 2, 9, 4), JTPDFColor(1, 2, 3, 9)}) {
    EXPECT_FALSE(color == other);
    EXPECT_TRUE(color != other);
  }
}

TEST(JTPDFColorNone, DiffersFromOpaqueWhiteInAlphaOnly) {
  EXPECT_TRUE(JTPDFColor::clNone == JTPDFColor(255, 255, 255, 0));
  EXPECT_FALSE(JTPDFColor::clNone == JTPDFColor(255, 255, 255, 255));
  EXPECT_TRUE(JTPDFColor::clNone != JTPDFColor(255, 255, 255, 1));
}

TEST(JTPDFColorLayout, IsThatOfTheRecord) {
  const JTPDFRGBColor record = {1, 2, 3, 4};
  const JTPDFColor color(record);
  EXPECT_TRUE(color == JTPDFColor(1, 2, 3, 4));
  ASSERT_EQ(sizeof record, sizeof color);
  EXPECT_EQ(0, std::memcmp(&record, &color, sizeof record));
  EXPECT_FALSE(std::is_polymorphic_v<JTPDFColor>);
}

TEST(JTPDFColorIsGray, IgnoresAlpha) {
  EXPECT_TRUE(JTPDFColor::clNone.IsGray());
  EXPECT_TRUE(JTPDFColor(7, 7, 7, 0).IsGray());
  EXPECT_FALSE(JTPDFColor(8, 7, 7, 7).IsGray());
  EXPECT_FALSE(JTPDFColor(7, 8, 7, 7).IsGray());
  EXPECT_FALSE(JTPDFColor(7, 7, 8, 7).IsGray());
}

TEST(JTPDFColorAsString, WritesThreeComponents) {
  EXPECT_EQ("1.0000 0.0000 0.0000", JTPDFColor(255, 0, 0, 255).AsString(false));
  EXPECT_EQ("0.5020 0.5020 0.5020", JTPDFColor(128, 128, 128, 255).AsString(false));
  EXPECT_EQ("0.2000 0.4000 0.6000", JTPDFColor(51, 102, 153, 17).AsString(false));
  EXPECT_EQ("0.0000 0.0000 0.0000", JTPDFColor(0, 0, 0, 0).AsString(false));
  EXPECT_EQ("1.0000 1.0000 1.0000", JTPDFColor(255, 255, 255, 255).AsString(false));
}

TEST(JTPDFColorAsString, GrayUsesRedOnly) {
  EXPECT_EQ("0.0392", JTPDFColor(10, 200, 30, 255).AsString(true));
  EXPECT_EQ("0.5020", JTPDFColor(128, 128, 128, 255).AsString(true));
}

TEST(JTPDFColorAsString, EveryChannelValueIsItsShareOf255) {
  for (int value = 0; value < 256; ++value) {
    char expected[16];
    std::snprintf(expected, sizeof expected, "%.4f", value / 255.0);
    EXPECT_EQ(expected, JTPDFColor(static_cast<unsigned char>(value), 0, 0, 0).AsString(true));
  }
}
