#include "measures.h"

#include <gtest/gtest.h>

#include <clocale>

namespace pictures {
namespace {

TEST(ParseLength, KnowsFourUnitsAndPointsWithout) {
  EXPECT_DOUBLE_EQ(ParseLength("25.4mm"), 72);
  EXPECT_DOUBLE_EQ(ParseLength("2.54CM"), 72);
  EXPECT_DOUBLE_EQ(ParseLength("1.5in"), 108);
  EXPECT_DOUBLE_EQ(ParseLength("12pt"), 12);
  EXPECT_DOUBLE_EQ(ParseLength("12"), 12);
  EXPECT_DOUBLE_EQ(ParseLength("0"), 0);
  EXPECT_DOUBLE_EQ(ParseLength("1000000"), 1e6);
  EXPECT_THROW(ParseLength("1000001"), MeasureError);
  EXPECT_EQ(ParseLength(".1"), 0.1);
  EXPECT_EQ(ParseLength("0.1000000000000000055511151231257827021181583404541015625pt"), 0.1);
  EXPECT_EQ(ParseLength("5.pt"), 5);
  for (const char* text : {"", "mm", "1 mm", "1,5cm", "-1mm", "1e3", "nan", "inf", "1mm2", "0x10",
                           "1.2.3mm", ".", "1..cm"}) {
    EXPECT_THROW(ParseLength(text), MeasureError) << text;
  }
}

TEST(ParseLength, TakesAPointWhateverTheLocale) {
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << "see support/german_locale.cmake";
  EXPECT_STREQ(std::localeconv()->decimal_point, ",");
  EXPECT_DOUBLE_EQ(ParseLength("1.5in"), 108);
  std::setlocale(LC_ALL, "C");
}

TEST(ParsePageSize, KnowsNamesAndTurnsThem) {
  EXPECT_NEAR(*ParsePageSize("a4").width, 595.2756, 1e-4);
  EXPECT_NEAR(*ParsePageSize("A4^T").width, 841.8898, 1e-4);
  EXPECT_DOUBLE_EQ(*ParsePageSize("LETTER").height, 792);
  EXPECT_DOUBLE_EQ(*ParsePageSize("legal").height, 1008);
  EXPECT_DOUBLE_EQ(*ParsePageSize("72x2in^T").width, 144);
}

TEST(ParsePageSize, KnowsEveryPaper) {
  constexpr double kMillimetre = 72 / 25.4;
  const struct {
    const char* name;
    double width, height;  // millimetres
  } kPapers[] = {{"A0", 841, 1189},        {"A1", 594, 841},        {"A2", 420, 594},
                 {"A3", 297, 420},         {"A4", 210, 297},        {"A5", 148, 210},
                 {"A6", 105, 148},         {"B4", 250, 353},        {"B5", 176, 250},
                 {"Letter", 215.9, 279.4}, {"Legal", 215.9, 355.6}, {"Tabloid", 279.4, 431.8}};
  for (const auto& paper : kPapers) {
    EXPECT_NEAR(*ParsePageSize(paper.name).width, paper.width * kMillimetre, 1e-9) << paper.name;
    EXPECT_NEAR(*ParsePageSize(paper.name).height, paper.height * kMillimetre, 1e-9) << paper.name;
    EXPECT_NEAR(ParseImageSize(paper.name).height->value, paper.height * kMillimetre, 1e-9);
  }
}

TEST(ParsePageSize, TakesTheSmallestAndTheLargestPage) {
  EXPECT_EQ(*ParsePageSize("3x14400").width, 3);
  EXPECT_EQ(*ParsePageSize("3x14400").height, 14400);
  EXPECT_THROW(ParsePageSize("2.9x10"), MeasureError);
  EXPECT_THROW(ParsePageSize("10x14400.1"), MeasureError);
}

TEST(ParsePageSize, TakesOneSideAlone) {
  EXPECT_EQ(ParsePageSize("100").height, std::nullopt);
  EXPECT_EQ(ParsePageSize("100x").height, std::nullopt);
  EXPECT_EQ(ParsePageSize("x100").width, std::nullopt);
  EXPECT_EQ(*ParsePageSize("x100").height, 100);
}

TEST(ParsePageSize, TakesAUnitWrittenOnceForBothSides) {
  EXPECT_DOUBLE_EQ(*ParsePageSize("8.5x11in").width, 612);
  EXPECT_DOUBLE_EQ(*ParsePageSize("8.5x11in").height, 792);
  EXPECT_NEAR(*ParsePageSize("210x297MM").width, 595.2756, 1e-4);
  EXPECT_NEAR(*ParsePageSize("210x297mm^T").height, 595.2756, 1e-4);
  EXPECT_DOUBLE_EQ(*ParsePageSize("8.5inx11").height, 792);
  EXPECT_DOUBLE_EQ(*ParsePageSize("100ptx10in").width, 100);
  EXPECT_DOUBLE_EQ(*ParsePageSize("100ptx10in").height, 720);
  EXPECT_DOUBLE_EQ(*ParsePageSize("100x200").height, 200);
}

TEST(ParsePageSize, RefusesNonsense) {
  for (const char* text : {"", "x", "A4x", "10x10x10", "A4^", "0x10", "2x100", "14401x10", "^T"}) {
    EXPECT_THROW(ParsePageSize(text), MeasureError) << text;
  }
}

TEST(ParseImageSize, TakesPercentAndDpi) {
  EXPECT_EQ(*ParseImageSize("300dpi").dpi, 300);
  EXPECT_TRUE(ParseImageSize("50%").width->percent);
  const ImageSize mixed = ParseImageSize("50%x10cm");
  EXPECT_TRUE(mixed.width->percent);
  EXPECT_FALSE(mixed.height->percent);
  EXPECT_TRUE(ParseImageSize("50x60%").width->percent);
  EXPECT_DOUBLE_EQ(ParseImageSize("1x2in").width->value, 72);
  EXPECT_THROW(ParseImageSize("%"), MeasureError);
  EXPECT_THROW(ParseImageSize("dpi"), MeasureError);
}

TEST(ParseBorder, IsVerticalThenHorizontal) {
  EXPECT_EQ(ParseBorder("1").horizontal, 1);
  EXPECT_EQ(ParseBorder("1:2").vertical, 1);
  EXPECT_EQ(ParseBorder("1:2").horizontal, 2);
  EXPECT_EQ(ParseBorder("1:2in").vertical, 72);
  EXPECT_EQ(ParseBorder("1in:2pt").horizontal, 2);
  EXPECT_THROW(ParseBorder(":2"), MeasureError);
}

}  // namespace
}  // namespace pictures
