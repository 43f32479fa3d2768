#include "graphics/box.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <limits>
#include <type_traits>

#include "jtpdf/jtpdf.h"
#include "support/cases.h"

constexpr double kInfinity = std::numeric_limits<double>::infinity();

void ExpectBox(const JTPDFRect& expected, const JTPDFBox& box) {
  EXPECT_EQ(expected.left, box.GetLeft());
  EXPECT_EQ(expected.bottom, box.GetBottom());
  EXPECT_EQ(expected.width, box.GetWidth());
  EXPECT_EQ(expected.height, box.GetHeight());
  EXPECT_EQ(expected.angle, box.GetAngle());
}

TEST(JTPDFBoxConstructors, FillTheFieldsInOrder) {
  ExpectBox({0, 0, 0, 0, 0}, JTPDFBox());
  ExpectBox({0, 0, 3, 4, 0}, JTPDFBox(3, 4));
  ExpectBox({1, 2, 3, 4, 0}, JTPDFBox(1, 2, 3, 4));
  ExpectBox({1, 2, 3, 4, 5}, JTPDFBox(1, 2, 3, 4, 5));
  ExpectBox({1, 2, 3, 4, 5}, JTPDFBox(JTPDFRect{1, 2, 3, 4, 5}));
}

TEST(JTPDFBoxLayout, IsThatOfTheRecord) {
  EXPECT_EQ(sizeof(JTPDFRect), sizeof(JTPDFBox));
  EXPECT_TRUE(std::is_trivially_copyable_v<JTPDFBox>);
  EXPECT_TRUE(std::is_standard_layout_v<JTPDFBox>);
  EXPECT_FALSE(std::is_polymorphic_v<JTPDFBox>);
}

TEST(JTPDFBoxAsPdfRect, CopiesTheFieldsInOrder) {
  const JTPDFRect rect = JTPDFBox(1, 2, 3, 4, 5).AsPdfRect();
  ExpectBox({1, 2, 3, 4, 5}, JTPDFBox(rect));
  EXPECT_EQ(1, rect.left);
  EXPECT_EQ(2, rect.bottom);
  EXPECT_EQ(3, rect.width);
  EXPECT_EQ(4, rect.height);
  EXPECT_EQ(5, rect.angle);
}

TEST(JTPDFBoxSetters, WriteTheirField) {
  JTPDFBox box;
  box.SetLeft(1);
  box.SetBottom(2);
  box.SetWidth(3);
  box.SetHeight(4);
  box.SetAngle(5);
  ExpectBox({1, 2, 3, 4, 5}, box);
}

TEST(JTPDFBoxEdges, RightAndTopAreDerived) {
  const JTPDFBox box(1, 2, 3, 4, 5);
  EXPECT_EQ(4, box.GetRight());
  EXPECT_EQ(6, box.GetTop());
  EXPECT_EQ(1.5, box.GetHalfWidth());
  EXPECT_EQ(2, box.GetHalfHeight());
  EXPECT_EQ(2.5, box.GetHorizontalCenter());
  EXPECT_EQ(4, box.GetVerticalCenter());
}

TEST(JTPDFBoxEdges, SettingOneLeavesTheOppositeOne) {
  JTPDFBox box(1, 2, 3, 4, 5);
  box.SetRight(11);
  box.SetTop(22);
  ExpectBox({1, 2, 10, 20, 5}, box);
}

TEST(JTPDFBoxEdges, RightLeftOfLeftKeepsANegativeWidth) {
  JTPDFBox box(10, 20, 3, 4, 0);
  box.SetRight(4);
  box.SetTop(5);
  ExpectBox({10, 20, -6, -15, 0}, box);
  EXPECT_EQ("[10.0000 20.0000 4.0000 5.0000]", box.AsArray());
}

TEST(JTPDFBoxInset, MovesEverySideInwards) {
  JTPDFBox box(0, 0, 8, 8, 0);
  box.Inset(5, 5);
  ExpectBox({5, 5, -2, -2, 0}, box);
}

TEST(JTPDFBoxInset, NegativeValuesGrowTheBoxAndTheAngleStays) {
  JTPDFBox box(1, 2, 3, 4, 30);
  box.Inset(-1, -2);
  ExpectBox({0, 0, 5, 8, 30}, box);
}

TEST(JTPDFBoxAsPoints, ScalesTheLengthsAndNotTheAngle) {
  const JTPDFBox box(10, 10, 100, 50, 30);
  const JTPDFBox points = box.AsPoints(PDFCoordinateUnitMillimeter);
  EXPECT_DOUBLE_EQ(28.346456692944, points.GetLeft());
  EXPECT_DOUBLE_EQ(28.346456692944, points.GetBottom());
  EXPECT_DOUBLE_EQ(283.46456692944, points.GetWidth());
  EXPECT_DOUBLE_EQ(141.73228346472, points.GetHeight());
  EXPECT_EQ(30, points.GetAngle());
  ExpectBox({10, 10, 100, 50, 30}, box);
}

struct MatrixCase {
  const char* name;
  JTPDFRect box;
  bool scale;
  const char* text;
};

class BoxMatrix : public testing::TestWithParam<MatrixCase> {};

TEST_P(BoxMatrix, IsExact) {
  EXPECT_EQ(GetParam().text, JTPDFBox(GetParam().box).AsMatrix(GetParam().scale));
}

INSTANTIATE_TEST_SUITE_P(
    JTPDFBoxAsMatrix, BoxMatrix,
    testing::Values(MatrixCase{"ScaledToTheBox",
                               {10, 20, 30, 40, 0},
                               true,
                               "1 0 0 1 25.0000 40.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm "
                               "30.0000 0 0 40.0000 -15.0000 -20.0000 cm"},
                    MatrixCase{"ShiftedOnly",
                               {10, 20, 30, 40, 0},
                               false,
                               "1 0 0 1 25.0000 40.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm "
                               "1 0 0 1 -15.0000 -20.0000 cm"},
                    MatrixCase{"ZeroBoxHasNegativeZeroOffsets",
                               {0, 0, 0, 0, 0},
                               true,
                               "1 0 0 1 0.0000 0.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm "
                               "0.0000 0 0 0.0000 -0.0000 -0.0000 cm"},
                    MatrixCase{"QuarterTurn",
                               {10, 20, 30, 40, 90},
                               true,
                               "1 0 0 1 25.0000 40.0000 cm 0.0000 1.0000 -1.0000 0.0000 0 0 cm "
                               "30.0000 0 0 40.0000 -15.0000 -20.0000 cm"},
                    MatrixCase{"QuarterTurnBack",
                               {0, 0, 2, 2, -90},
                               false,
                               "1 0 0 1 1.0000 1.0000 cm 0.0000 -1.0000 1.0000 0.0000 0 0 cm "
                               "1 0 0 1 -1.0000 -1.0000 cm"},
                    MatrixCase{"HalfTurnHasTinySines",
                               {0, 0, 2, 2, 180},
                               false,
                               "1 0 0 1 1.0000 1.0000 cm -1.0000 0.0000 -0.0000 -1.0000 0 0 cm "
                               "1 0 0 1 -1.0000 -1.0000 cm"},
                    MatrixCase{"ThirtyDegreesCounterClockwise",
                               {0, 0, 2, 2, 30},
                               false,
                               "1 0 0 1 1.0000 1.0000 cm 0.8660 0.5000 -0.5000 0.8660 0 0 cm "
                               "1 0 0 1 -1.0000 -1.0000 cm"},
                    MatrixCase{"NegativeExtents",
                               {0, 0, -2, -4, 0},
                               true,
                               "1 0 0 1 -1.0000 -2.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm "
                               "-2.0000 0 0 -4.0000 1.0000 2.0000 cm"},
                    MatrixCase{
                        "LongNumbersAreCutAndNothingElse",
                        {1e30, -1e30, 0, 0, 0},
                        false,
                        "1 0 0 1 10000000000000000198846248386 -1000000000000000019884624838 cm "
                        "1.0000 0.0000 -0.0000 1.0000 0 0 cm 1 0 0 1 -0.0000 -0.0000 cm"}),
    NameOf<MatrixCase>);

TEST(JTPDFBoxAsMatrix, TakesTheLongestNumbersThereAre) {
  const double largest = -std::numeric_limits<double>::max();
  const std::string text = JTPDFBox(largest / 4, largest / 4, largest, largest, 225).AsMatrix(true);
  EXPECT_TRUE(text.starts_with("1 0 0 1 -")) << text;
  EXPECT_NE(std::string::npos, text.find("-0.7071 -0.7071 0.7071 -0.7071 0 0 cm")) << text;
  EXPECT_TRUE(text.ends_with(" cm")) << text;
}

TEST(JTPDFBoxAsMatrix, AnInfiniteAngleIsWrittenAndLeavesErrnoAlone) {
  for (const double angle : {kInfinity, -kInfinity, std::nan("")}) {
    errno = 4242;
    const std::string text = JTPDFBox(0, 0, 2, 2, angle).AsMatrix(false);
    EXPECT_EQ(4242, errno);
    EXPECT_NE(std::string::npos, text.find("nan")) << text;
  }
}

TEST(JTPDFBoxAsArray, IsLeftBottomRightTop) {
  EXPECT_EQ("[0.0000 0.0000 595.0000 842.0000]", JTPDFBox(595, 842).AsArray());
  EXPECT_EQ("[1.0000 2.0000 4.0000 6.0000]", JTPDFBox(1, 2, 3, 4).AsArray());
  EXPECT_EQ("[0.0000 0.0000 0.0000 0.0000]", JTPDFBox().AsArray());
}

TEST(JTPDFBoxAsArray, IgnoresTheAngle) {
  EXPECT_EQ(JTPDFBox(1, 2, 3, 4).AsArray(), JTPDFBox(1, 2, 3, 4, 45).AsArray());
}

TEST(JTPDFBoxUnit, IsZeroUntilItIsSetAndNothingReadsIt) {
  EXPECT_EQ(0, static_cast<int>(JTPDFBox::GetPDFUnit()));
  EXPECT_EQ(4u, sizeof(JTPDFBox::TPDFUnit));
  JTPDFBox::SetPDFUnit(static_cast<JTPDFBox::TPDFUnit>(-7));
  EXPECT_EQ(-7, static_cast<int>(JTPDFBox::GetPDFUnit()));
  EXPECT_EQ("[0.0000 0.0000 3.0000 4.0000]", JTPDFBox(3, 4).AsPoints(1).AsArray());
  JTPDFBox::SetPDFUnit(static_cast<JTPDFBox::TPDFUnit>(0));
}
