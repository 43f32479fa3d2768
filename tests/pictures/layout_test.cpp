#include "layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace pictures {
namespace {

ImagePlan Pixels(uint32_t width, uint32_t height) {
  ImagePlan plan;
  plan.width = width;
  plan.height = height;
  return plan;
}

// Where the library puts a corner of the stored picture (0 to 1, y upwards): scaled, turned
// counter-clockwise, moved to the box's centre.
struct Point {
  double x, y;
};
Point Place(const JTPDFRect& box, Point corner) {
  const double turn = box.angle * std::numbers::pi / 180;
  const double x = (corner.x - 0.5) * box.width, y = (corner.y - 0.5) * box.height;
  return {box.left + box.width / 2 + x * std::cos(turn) - y * std::sin(turn),
          box.bottom + box.height / 2 + x * std::sin(turn) + y * std::cos(turn)};
}

struct Upright {
  int orientation;
  const char* firstRow;  // where the stored picture's first row is to be seen, as EXIF words it
  const char* firstColumn;
};

void PrintTo(const Upright& row, std::ostream* to) {
  *to << row.firstRow << row.firstColumn;
}

class OrientedBoxTest : public testing::TestWithParam<Upright> {};

// The table of the EXIF standard itself, tag 274.
INSTANTIATE_TEST_SUITE_P(All, OrientedBoxTest,
                         testing::Values(Upright{1, "top", "left"}, Upright{2, "top", "right"},
                                         Upright{3, "bottom", "right"},
                                         Upright{4, "bottom", "left"}, Upright{5, "left", "top"},
                                         Upright{6, "right", "top"}, Upright{7, "right", "bottom"},
                                         Upright{8, "left", "bottom"}),
                         [](const auto& row) {
                           return "Orientation" + std::to_string(row.param.orientation);
                         });

TEST_P(OrientedBoxTest, PutsTheFirstRowAndColumnWhereExifSays) {
  const JTPDFRect box = OrientedBox(100, 50, 60, 20, GetParam().orientation);
  const auto side = [](Point from, Point to) -> std::string {
    const double x = (from.x + to.x) / 2 - 100, y = (from.y + to.y) / 2 - 50;
    if (std::abs(x) < 1e-9) return std::abs(y - 10) < 1e-9 ? "top" : "bottom";
    return std::abs(x - 30) < 1e-9 ? "right" : "left";
  };
  EXPECT_EQ(side(Place(box, {0, 1}), Place(box, {1, 1})), GetParam().firstRow);
  EXPECT_EQ(side(Place(box, {0, 0}), Place(box, {0, 1})), GetParam().firstColumn);
}

TEST(LayOut, TakesNinetySixDpiUnlessThePictureSays) {
  EXPECT_DOUBLE_EQ(LayOut(Pixels(96, 192), {}).page.width, 72);
  ImagePlan fine = Pixels(300, 600);
  fine.resolution = {300, 150};
  EXPECT_DOUBLE_EQ(LayOut(fine, {}).page.width, 72);
  EXPECT_DOUBLE_EQ(LayOut(fine, {}).page.height, 288);
}

TEST(LayOut, MeasuresTurnedPicturesTurned) {
  ImagePlan plan = Pixels(100, 300);
  plan.resolution = {100, 300};
  for (int orientation = 1; orientation <= 8; ++orientation) {
    plan.orientation = orientation;
    plan.resolution = {50, 300};  // 144 x 72
    const PageLayout layout = LayOut(plan, {});
    EXPECT_DOUBLE_EQ(layout.page.width, orientation < 5 ? 144 : 72);
    EXPECT_DOUBLE_EQ(layout.page.height, orientation < 5 ? 72 : 144);
  }
}

TEST(LayOut, RefusesPagesOutsideThreeToFourteenThousandFourHundred) {
  EXPECT_NO_THROW(LayOut(Pixels(4, 4), {}));
  EXPECT_NO_THROW(LayOut(Pixels(19200, 4), {}));
  EXPECT_THROW(LayOut(Pixels(3, 4), {}), ImageError);
  EXPECT_THROW(LayOut(Pixels(19201, 4), {}), ImageError);
  LayoutOptions tiny;
  tiny.image.dpi = std::numeric_limits<double>::infinity();
  EXPECT_THROW(LayOut(Pixels(10, 10), tiny), ImageError);
}

TEST(LayOut, LeavesAResolutionAsideThatMakesNoPage) {
  ImagePlan odd = Pixels(96, 96);
  odd.resolution = {std::numeric_limits<double>::infinity(), 1};
  EXPECT_DOUBLE_EQ(LayOut(odd, {}).page.width, 72);
  EXPECT_NE(LayOut(odd, {}).note, "");
  odd.resolution = {100, 100};
  EXPECT_EQ(LayOut(odd, {}).note, "");
  // Where the usual one makes none either, the page is what is wrong.
  odd = Pixels(1, 96);
  odd.resolution = {100, 100};
  EXPECT_THROW(LayOut(odd, {}), ImageError);
}

TEST(MoveToCell, GoesRightAndThenDown) {
  LayoutOptions options;
  options.page = {230, 340};
  options.border = {20, 10};
  options.grid = {2, 3};
  const PageLayout first = LayOut(Pixels(96, 96), options);
  EXPECT_EQ(first.cell.left, 10);
  EXPECT_DOUBLE_EQ(first.cell.width, 100);
  EXPECT_DOUBLE_EQ(first.cell.height, (340 - 80) / 3.0);
  EXPECT_DOUBLE_EQ(first.cell.bottom + first.cell.height, 320);
  PageLayout fourth = first;
  MoveToCell(3, options, &fourth);
  EXPECT_DOUBLE_EQ(fourth.cell.left, 120);
  EXPECT_DOUBLE_EQ(fourth.cell.bottom, first.cell.bottom - first.cell.height - 20);
  EXPECT_DOUBLE_EQ(fourth.image.left - first.image.left, 110);
  EXPECT_FALSE(fourth.cut);
}

std::string AdviceFor(uint32_t width, uint32_t height, int orientation = 1) {
  ImagePlan plan = Pixels(width, height);
  plan.orientation = orientation;
  try {
    LayOut(plan, {});
  } catch (const ImageError& error) {
    const std::string text = error.what();
    return text.substr(text.find("choose"));
  }
  return "";
}

TEST(LayOut, AdvisesOnlyWhatHelps) {
  EXPECT_EQ(AdviceFor(2, 2), "choose a page with page A4, or an image size with image 20cmx");
  EXPECT_EQ(AdviceFor(30'000, 20'000),
            "choose a page with page A4, or an image size with image 300dpi or image 20cmx");
  EXPECT_EQ(AdviceFor(90'000, 80'000),
            "choose a page with page A4, or an image size with image 20cmx");
  EXPECT_EQ(AdviceFor(50'000, 20),
            "choose a page with page A4, or an image size with image 300dpi");
  EXPECT_EQ(AdviceFor(90'000, 1), "choose a page with page A4");
  // Twenty centimetres of width are 5.08 m of height here, and less than that turned.
  EXPECT_EQ(AdviceFor(2, 60), "choose a page with page A4");
  EXPECT_EQ(AdviceFor(2, 60, 6), "choose a page with page A4, or an image size with image 20cmx");
}

TEST(LayOut, CentresThePictureWhateverItsSize) {
  LayoutOptions options;
  options.page = {400, 300};
  options.image.dpi = 10;
  const PageLayout layout = LayOut(Pixels(100, 100), options);
  EXPECT_DOUBLE_EQ(layout.image.left + layout.image.width / 2, 200);
  EXPECT_DOUBLE_EQ(layout.image.bottom + layout.image.height / 2, 150);
  EXPECT_DOUBLE_EQ(layout.image.width, 720);
}

TEST(LayOut, OfASizeWithOneSideTheOtherKeepsTheShape) {
  LayoutOptions options;
  for (const Fit fit : {Fit::kInto, Fit::kFill, Fit::kExact}) {
    options.fit = fit;
    options.image.width = Measure{50, true};
    options.image.height.reset();
    const PageLayout layout = LayOut(Pixels(96, 192), options);
    EXPECT_DOUBLE_EQ(layout.image.width, 36);
    EXPECT_DOUBLE_EQ(layout.image.height, 72);
  }
}

void ExpectBox(const JTPDFRect& box, const JTPDFRect& expected) {
  EXPECT_NEAR(box.left, expected.left, 1e-9);
  EXPECT_NEAR(box.bottom, expected.bottom, 1e-9);
  EXPECT_NEAR(box.width, expected.width, 1e-9);
  EXPECT_NEAR(box.height, expected.height, 1e-9);
  EXPECT_NEAR(box.angle, expected.angle, 1e-9);
}

TEST(FitIntoBox, PutsThePictureInTheMiddleAsTheFitSays) {
  const JTPDFRect room = {100, 200, 60, 20, 0};
  LayoutOptions options;
  const ImagePlan plan = Pixels(96, 48);  // 72 by 36 points
  ExpectBox(FitIntoBox(plan, room, options), {110, 200, 40, 20, 0});
  options.fit = Fit::kFill;
  ExpectBox(FitIntoBox(plan, room, options), {100, 195, 60, 30, 0});
  options.fit = Fit::kExact;
  ExpectBox(FitIntoBox(plan, room, options), room);
  options.fit = Fit::kShrink;
  ExpectBox(FitIntoBox(plan, {0, 0, 100, 100, 0}, options), {14, 32, 72, 36, 0});
}

TEST(FitIntoBox, TurnsThePictureWithinTheBoxAndWithIt) {
  const JTPDFRect room = {100, 200, 60, 20, 10};
  LayoutOptions options;
  ImagePlan plan = Pixels(48, 96);
  plan.orientation = 5;  // mirrored, and upright twice as wide as high
  ExpectBox(FitIntoBox(plan, room, options), {140, 190, -20, 40, 100});
  ExpectBox(UprightBox(FitIntoBox(plan, room, options)), {110, 200, 40, 20, 10});
  options.turn = 0;
  ExpectBox(FitIntoBox(plan, room, options), {125, 200, 10, 20, 10});
}

TEST(UprightBox, CoversTheSameArea) {
  const auto corners = [](const JTPDFRect& box) {
    std::vector<std::pair<double, double>> places;
    for (const Point corner : {Point{0, 0}, {1, 0}, {0, 1}, {1, 1}}) {
      const auto [x, y] = Place(box, corner);
      places.emplace_back(std::round(x * 1e6) / 1e6, std::round(y * 1e6) / 1e6);
    }
    std::sort(places.begin(), places.end());
    return places;
  };
  for (const double angle : {0., 30., 45., 46., 90., -90., 135., 180., 269., 270., 450., -1000.}) {
    for (const double width : {30., -30.}) {
      const JTPDFRect box = {10, 20, width, -70, angle};
      const JTPDFRect upright = UprightBox(box);
      EXPECT_EQ(corners(upright), corners(box)) << angle;
      EXPECT_GE(upright.width, 0);
      EXPECT_GE(upright.height, 0);
      EXPECT_LE(std::abs(upright.angle), 45);
    }
  }
}

TEST(DrawnOrientation, IsTheOptionsWhereOneIsGiven) {
  ImagePlan plan;
  plan.orientation = 7;
  LayoutOptions options;
  EXPECT_EQ(DrawnOrientation(plan, options), 7);
  for (const auto& [turn, orientation] : {std::pair{0, 1}, {90, 6}, {180, 3}, {270, 8}}) {
    options.turn = turn;
    EXPECT_EQ(DrawnOrientation(plan, options), orientation);
  }
}

}  // namespace
}  // namespace pictures
