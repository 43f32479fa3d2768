#include "graphics/canvas.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <map>
#include <type_traits>

#include "jtpdf/jtpdf.h"
#include "support/bytes.h"

const JTPDFColor red(255, 0, 0, 255);
const JTPDFColor blue(0, 0, 255, 255);
const JTPDFBox box(10, 20, 30, 40, 0);

// A canvas in points, its drawing below the line that it begins with.
class JTPDFCanvasTest : public testing::Test {
 protected:
  template <typename... Texts>
  void ExpectLines(const Texts&... lines) {
    EXPECT_BYTES(Joined("/GS0 gs", lines...), canvas.GetContents().Text());
  }

  JTPDFCanvas canvas{1};
};

using JTPDFCanvasNew = JTPDFCanvasTest;
using JTPDFCanvasImage = JTPDFCanvasTest;
using JTPDFCanvasRectangle = JTPDFCanvasTest;
using JTPDFCanvasCircle = JTPDFCanvasTest;
using JTPDFCanvasClear = JTPDFCanvasTest;

constexpr char kUpright[] =
    "1 0 0 1 25.0000 40.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm 1 0 0 1 -15.0000 -20.0000 cm";

TEST_F(JTPDFCanvasNew, SelectsTheGraphicsStateAndHoldsNothingElse) {
  EXPECT_BYTES("/GS0 gs", canvas.GetContents().Text());
  EXPECT_TRUE(canvas.empty());
  EXPECT_EQ("[0.0000 0.0000 0.0000 0.0000]", canvas.GetBoundingBox().AsArray());
  EXPECT_EQ(0, canvas.GetBoundingBox().GetAngle());
}

TEST_F(JTPDFCanvasNew, IsADictionaryThatIsNotCopied) {
  EXPECT_TRUE((std::is_base_of_v<JTPDFDict, JTPDFCanvas>));
  EXPECT_TRUE(std::has_virtual_destructor_v<JTPDFCanvas>);
  EXPECT_FALSE(std::is_copy_constructible_v<JTPDFCanvas>);
}

TEST_F(JTPDFCanvasImage, IsOneLineWithTwoBlanksBeforeItsName) {
  canvas.Image(12, box);
  ExpectLines(
      "q 1 0 0 1 25.0000 40.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm 30.0000 0 0 40.0000 "
      "-15.0000 -20.0000 cm  /Im12 Do Q");
  EXPECT_EQ((std::map<std::string, std::string>{{"/Resources/XObject/Im12", "12 0 R"}}), canvas);
}

TEST_F(JTPDFCanvasImage, WithoutABoxFillsTheBoundingBox) {
  canvas.SetBoundingBox(JTPDFBox(0, 0, 100, 50, 90));
  canvas.Image(2);
  ExpectLines(
      "q 1 0 0 1 50.0000 25.0000 cm 0.0000 1.0000 -1.0000 0.0000 0 0 cm 100.0000 0 0 50.0000 "
      "-50.0000 -25.0000 cm  /Im2 Do Q");
}

TEST_F(JTPDFCanvasImage, BeforeAnyBoundingBoxFillsAZeroBox) {
  canvas.Image(2);
  ExpectLines(
      "q 1 0 0 1 0.0000 0.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm 0.0000 0 0 0.0000 "
      "-0.0000 -0.0000 cm  /Im2 Do Q");
}

TEST_F(JTPDFCanvasImage, TheSameOneTwiceIsTwoLinesAndOneEntry) {
  canvas.Image(3, box);
  canvas.Image(3, box);
  EXPECT_EQ(2, Count(canvas.GetContents().Text(), "/Im3 Do"));
  EXPECT_EQ(1u, canvas.size());
}

TEST_F(JTPDFCanvasImage, ReplacesAnEntryOfItsName) {
  canvas["/Resources/XObject/Im3"] = "something else";
  canvas.Image(3, box);
  EXPECT_EQ("3 0 R", canvas["/Resources/XObject/Im3"]);
}

TEST_F(JTPDFCanvasImage, AnyNumberIsTaken) {
  canvas.Image(-1, box);
  EXPECT_EQ("-1 0 R", canvas["/Resources/XObject/Im-1"]);
  EXPECT_EQ(1, Count(canvas.GetContents().Text(), "  /Im-1 Do Q"));
}

TEST(JTPDFCanvasUnit, ScalesBoxesAndLineWidths) {
  JTPDFCanvas canvas(PDFCoordinateUnitMillimeter);
  canvas.Image(1, JTPDFBox(0, 0, 10, 10, 0));
  canvas.Rectangle(JTPDFBox(0, 0, 10, 20), red, 2);
  const std::string text = canvas.GetContents().Text();
  EXPECT_EQ(1, Count(text, " cm 28.3465 0 0 28.3465 -14.1732 -14.1732 cm  /Im1 Do Q")) << text;
  EXPECT_EQ(1, Count(text, "\r\n5.6693 w 1 0 0 1 14.1732 28.3465 cm ")) << text;
  EXPECT_EQ(1, Count(text, " 0 0 28.3465 56.6929 re\r\n")) << text;
  EXPECT_EQ(2.8346456692944 * 3, canvas.SizeAsPoints(3));
}

TEST(JTPDFCanvasUnit, TheBoundingBoxStaysInTheCallersUnit) {
  JTPDFCanvas canvas(72);
  canvas.SetBoundingBox(JTPDFBox(1, 2, 3, 4, 5));
  EXPECT_EQ("[1.0000 2.0000 4.0000 6.0000]", canvas.GetBoundingBox().AsArray());
  EXPECT_EQ(5, canvas.GetBoundingBox().GetAngle());
}

TEST_F(JTPDFCanvasRectangle, IsFilledAndStroked) {
  canvas.Rectangle(box, red, blue, 2);
  ExpectLines("%rectangle", "q", "1.0000 0.0000 0.0000 rg", "0.0000 0.0000 1.0000 RG",
              std::string("2.0000 w ") + kUpright + " 0 0 30.0000 40.0000 re", "B Q");
}

TEST_F(JTPDFCanvasRectangle, WithAFillOnlyHasNoLineWidthAndIsPaintedF) {
  canvas.Rectangle(box, red);
  ExpectLines("%rectangle", "q", "1.0000 0.0000 0.0000 rg",
              std::string("0.0000 w ") + kUpright + " 0 0 30.0000 40.0000 re", "F Q");
}

TEST_F(JTPDFCanvasRectangle, WithAStrokeOnlyIsPaintedS) {
  canvas.Rectangle(box, blue, 1);
  ExpectLines("%rectangle", "q", "0.0000 0.0000 1.0000 RG",
              std::string("1.0000 w ") + kUpright + " 0 0 30.0000 40.0000 re", "S Q");
}

TEST_F(JTPDFCanvasRectangle, WithoutColoursIsStrokedAllTheSame) {
  canvas.Rectangle(box, JTPDFColor::clNone, JTPDFColor::clNone, 1);
  ExpectLines("%rectangle", "q", std::string("1.0000 w ") + kUpright + " 0 0 30.0000 40.0000 re",
              "S Q");
}

TEST_F(JTPDFCanvasRectangle, OpaqueWhiteFillsAndNoneDoesNot) {
  canvas.Rectangle(box, JTPDFColor(255, 255, 255, 255));
  ExpectLines("%rectangle", "q", "1.0000 1.0000 1.0000 rg",
              std::string("0.0000 w ") + kUpright + " 0 0 30.0000 40.0000 re", "F Q");
  canvas.Clear();
  canvas.Rectangle(box, JTPDFColor(255, 255, 255, 0));
  ExpectLines("%rectangle", "q", std::string("0.0000 w ") + kUpright + " 0 0 30.0000 40.0000 re",
              "S Q");
}

TEST_F(JTPDFCanvasRectangle, TransparentColoursOtherThanNoneAreOrdinary) {
  canvas.Rectangle(box, JTPDFColor(0, 0, 0, 0), JTPDFColor(255, 255, 254, 0), 1);
  ExpectLines("%rectangle", "q", "0.0000 0.0000 0.0000 rg", "1.0000 1.0000 0.9961 RG",
              std::string("1.0000 w ") + kUpright + " 0 0 30.0000 40.0000 re", "B Q");
}

TEST_F(JTPDFCanvasRectangle, GrayIsWrittenAsRGB) {
  canvas.Rectangle(box, JTPDFColor(51, 51, 51, 255), JTPDFColor(102, 102, 102, 255), 1);
  const std::string text = canvas.GetContents().Text();
  EXPECT_EQ(1, Count(text, "0.2000 0.2000 0.2000 rg\r\n"));
  EXPECT_EQ(1, Count(text, "0.4000 0.4000 0.4000 RG\r\n"));
}

TEST_F(JTPDFCanvasRectangle, TurnsWithItsBox) {
  canvas.Rectangle(JTPDFBox(10, 20, 30, 40, 90), red);
  EXPECT_EQ(1, Count(canvas.GetContents().Text(),
                     "0.0000 w 1 0 0 1 25.0000 40.0000 cm 0.0000 1.0000 -1.0000 0.0000 0 0 cm "
                     "1 0 0 1 -15.0000 -20.0000 cm 0 0 30.0000 40.0000 re\r\n"));
}

TEST_F(JTPDFCanvasRectangle, NegativeSizesAreWrittenUnchanged) {
  canvas.Rectangle(JTPDFBox(0, 0, -2, -4), red, blue, -1);
  EXPECT_EQ(1, Count(canvas.GetContents().Text(), "\r\n-1.0000 w 1 0 0 1 -1.0000 -2.0000 cm "));
  EXPECT_EQ(1, Count(canvas.GetContents().Text(), " 1.0000 2.0000 cm 0 0 -2.0000 -4.0000 re"));
}

TEST_F(JTPDFCanvasCircle, IsFourCurvesInsideTheBox) {
  canvas.Circle(JTPDFBox(0, 0, 100, 50, 0), red, blue, 2);
  ExpectLines("2.0000 w", "1.0000 0.0000 0.0000 rg 0.0000 0.0000 1.0000 RG",
              "q 1 0 0 1  50.0000 25.0000  cm", "-49.0000 0  m",
              "-49.0000 13.2428 -27.0374 24.0000 0 24.0000 c",
              "27.0374 24.0000 49.0000 13.2428 49.0000 0 c",
              "49.0000 -13.2428 27.0374 -24.0000 0 -24.0000 c",
              "-27.0374 -24.0000 -49.0000 -13.2428 -49.0000 0 c", "b Q");
}

TEST_F(JTPDFCanvasCircle, IgnoresTheAngle) {
  canvas.Circle(JTPDFBox(0, 0, 100, 50, 0), red, blue, 2);
  JTPDFCanvas turned(1);
  turned.Circle(JTPDFBox(0, 0, 100, 50, 33), red, blue, 2);
  EXPECT_BYTES(canvas.GetContents().Text(), turned.GetContents().Text());
}

TEST_F(JTPDFCanvasCircle, WritesNoneAsWhite) {
  canvas.Circle(JTPDFBox(0, 0, 100, 50, 0), JTPDFColor::clNone, JTPDFColor::clNone, 2);
  EXPECT_EQ(1, Count(canvas.GetContents().Text(),
                     "\r\n1.0000 1.0000 1.0000 rg 1.0000 1.0000 1.0000 RG\r\n"));
}

TEST_F(JTPDFCanvasCircle, OfALineAsWideAsItsBoxHasNegativeZeros) {
  canvas.Circle(JTPDFBox(0, 0, 10, 30, 0), red, blue, 10);
  ExpectLines(
      "10.0000 w", "1.0000 0.0000 0.0000 rg 0.0000 0.0000 1.0000 RG",
      "q 1 0 0 1  5.0000 15.0000  cm", "-0.0000 0  m", "-0.0000 5.5178 -0.0000 10.0000 0 10.0000 c",
      "0.0000 10.0000 0.0000 5.5178 0.0000 0 c", "0.0000 -5.5178 0.0000 -10.0000 0 -10.0000 c",
      "-0.0000 -10.0000 -0.0000 -5.5178 -0.0000 0 c", "b Q");
}

TEST_F(JTPDFCanvasCircle, OfAWiderLineHasNegativeRadii) {
  canvas.Circle(JTPDFBox(0, 0, 10, 10, 0), red, blue, 30);
  ExpectLines("30.0000 w", "1.0000 0.0000 0.0000 rg 0.0000 0.0000 1.0000 RG",
              "q 1 0 0 1  5.0000 5.0000  cm", "10.0000 0  m",
              "10.0000 -5.5178 5.5178 -10.0000 0 -10.0000 c",
              "-5.5178 -10.0000 -10.0000 -5.5178 -10.0000 0 c",
              "-10.0000 5.5178 -5.5178 10.0000 0 10.0000 c",
              "5.5178 10.0000 10.0000 5.5178 10.0000 0 c", "b Q");
}

TEST_F(JTPDFCanvasClear, RemovesLinesAndEntriesAndKeepsTheBoundingBox) {
  canvas.SetBoundingBox(JTPDFBox(1, 2, 3, 4, 5));
  canvas.Image(2);
  canvas["/X"] = "1";
  canvas.Clear();
  EXPECT_BYTES("/GS0 gs", canvas.GetContents().Text());
  EXPECT_TRUE(canvas.empty());
  EXPECT_EQ("[1.0000 2.0000 4.0000 6.0000]", canvas.GetBoundingBox().AsArray());
  canvas.Rectangle(box, red);
  EXPECT_EQ(1, Count(canvas.GetContents().Text(), "%rectangle"));
}

TEST_F(JTPDFCanvasTest, DrawingLeavesErrnoAlone) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  errno = 4242;
  canvas.Image(1, JTPDFBox(0, 0, 1, 1, kInfinity));
  canvas.Rectangle(JTPDFBox(kInfinity, 0, 1, 1, -kInfinity), red, blue, kInfinity);
  canvas.Circle(JTPDFBox(0, 0, kInfinity, 1e300, 0), red, blue, -kInfinity);
  EXPECT_EQ(4242, errno);
}
