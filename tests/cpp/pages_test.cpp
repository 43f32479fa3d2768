// What the C++ face adds to drawing and pages: pages in one call, a canvas that always shows, and
// the refusal of what no file should have.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "jtpdf/jtpdf.hpp"

namespace {

using namespace jtpdf::literals;
using jtpdf::Box;
using jtpdf::Color;
using jtpdf::Compression;
using jtpdf::CropBox;
using jtpdf::Document;
using jtpdf::ImageArgument;
using jtpdf::ImageData;
using jtpdf::Length;
using jtpdf::MediaBox;

constexpr Box kPage{0_mm, 0_mm, 210_mm, 297_mm};
constexpr Box kPart{10_mm, 20_mm, 30_mm, 40_mm, 15_deg};
const std::string kData = "data";

template <typename Use>
std::string FileOf(const Use& use) {
  Document doc = Document::memory(jtpdf::millimeter);
  use(doc);
  doc.finish();
  return std::string(doc.bytes().begin(), doc.bytes().end());
}

// The message of the jtpdf::Error that body must throw.
template <typename Body>
std::string MessageOf(const Body& body) {
  try {
    body();
  } catch (const jtpdf::Error& error) {
    EXPECT_EQ(error.code(), std::errc::invalid_argument);
    const std::string message = error.what();
    return message.substr(0, message.rfind(": Invalid argument"));
  }
  return "no jtpdf::Error was thrown";
}

// ---- Pages in one call -------------------------------------------------------------------------

TEST(JtpdfAddPage, IsBoxFormAndPage) {
  EXPECT_EQ(FileOf([](Document& doc) {
              doc.fill_rectangle(kPart, Color::black);
              const jtpdf::Form form = doc.add_page(kPage);
              doc.write_page(form, kPage);
              doc.fill_rectangle(kPart, Color::black);
              doc.add_page(CropBox(kPart), MediaBox(kPage));
            }),
            FileOf([](Document& doc) {
              doc.set_canvas_box(kPage);
              doc.fill_rectangle(kPart, Color::black);
              const jtpdf::Form form = doc.write_canvas();
              doc.write_page(form, kPage);
              doc.write_page(form, kPage);
              doc.fill_rectangle(kPart, Color::black);
              doc.write_page(doc.write_canvas(), CropBox(kPart), MediaBox(kPage));
            }));
}

TEST(JtpdfAddPage, OfAnImageHasNothingElse) {
  EXPECT_EQ(FileOf([](Document& doc) {
              const jtpdf::Image image = doc.write_image({kData, Compression::jpeg, 3, 2});
              doc.fill_rectangle(kPart, Color::black);
              doc.add_image_page(image, kPage);
            }),
            FileOf([](Document& doc) {
              const jtpdf::Image image = doc.write_image({kData, Compression::jpeg, 3, 2});
              doc.set_canvas_box(kPage);
              doc.draw_image(image, kPage);
              doc.write_page(doc.write_canvas(), kPage);
            }));
}

TEST(JtpdfAddPage, WritesNothingWithABoxThatIsRefused) {
  Document doc = Document::memory();
  const Box bad{0_mm, 0_mm, -1_mm, 1_mm};
  EXPECT_EQ(MessageOf([&] { doc.add_page(CropBox(bad), MediaBox(kPage)); }).substr(0, 30),
            "WritePdfPage: crop.width is -2");
  EXPECT_EQ(doc.write_canvas(), jtpdf::Form(2));
}

// ---- A canvas that always shows ----------------------------------------------------------------

TEST(JtpdfCanvas, WithoutABoxShowsWhatWasDrawn) {
  const auto drawn = [](Document& doc) { doc.fill_rectangle(kPart, Color::black); };
  const std::string unbound = FileOf([&](Document& doc) {
    drawn(doc);
    doc.write_page(doc.write_canvas(), kPage);
    EXPECT_EQ(doc.canvas_box(), Box()) << "none is set as before";
  });
  EXPECT_EQ(unbound, FileOf([&](Document& doc) {
              doc.set_canvas_box({-200_in, -200_in, 400_in, 400_in});
              drawn(doc);
              doc.write_page(doc.write_canvas(), kPage);
            }));
  EXPECT_NE(unbound.find("/BBox [-14400.0000 -14400.0000 14400.0000 14400.0000]"),
            std::string::npos);
}

TEST(JtpdfCanvas, WithoutABoxIsLeftAloneWhereNothingWasDrawn) {
  const std::string file = FileOf([](Document& doc) {
    doc.write_canvas();
    doc.fill_rectangle(kPart, Color::black);
    doc.clear_canvas();
    doc.write_canvas();
  });
  EXPECT_EQ(file.find("14400"), std::string::npos);
}

TEST(JtpdfCanvas, WithoutABoxCannotBeCovered) {
  Document doc = Document::memory();
  EXPECT_EQ(MessageOf([&] { doc.draw_image(jtpdf::Image(7)); }),
            "DrawPdfImage: no canvas box is set for the image to cover");
  doc.set_canvas_box(kPage);
  doc.draw_image(jtpdf::Image(7));
}

// ---- Sheets and boxes --------------------------------------------------------------------------

TEST(JtpdfPaper, HasTheSizesOfTheStandards) {
  namespace paper = jtpdf::paper;
  static_assert(paper::a4 == kPage && paper::a4.left.in(jtpdf::millimeter) == 0);
  static_assert(paper::a3.width == 297_mm && paper::a3.height == 420_mm);
  static_assert(paper::a5.width == 148_mm && paper::a5.height == 210_mm);
  static_assert(paper::a6.width == 105_mm && paper::a6.height == 148_mm);
  static_assert(paper::letter == Box{0_in, 0_in, 8.5_in, 11_in});
  static_assert(paper::legal.landscape() == Box{0_in, 0_in, 14_in, 8.5_in});
}

TEST(JtpdfBox, FitsAnImageIntoItsMiddle) {
  constexpr Box frame{10_mm, 20_mm, 100_mm, 50_mm, 5_deg};
  static_assert(frame.fit(400, 100) == Box{10_mm, 32.5_mm, 100_mm, 25_mm, 5_deg});
  static_assert(frame.fit(100, 100) == Box{35_mm, 20_mm, 50_mm, 50_mm, 5_deg});
  static_assert(frame.fit(2, 1) == frame);
  EXPECT_EQ((Box{0_in, 0_in, 2_in, 72_pt}.fit(1, 1)), (Box{0.5_in, 0_in, 1_in, 1_in}));
}

TEST(JtpdfBox, TurnsAnImageByQuartersWithinIt) {
  constexpr Box frame{10_mm, 20_mm, 100_mm, 50_mm, 5_deg};
  static_assert(frame.quarter_turned(0) == frame);
  static_assert(frame.quarter_turned(1) == Box{35_mm, -5_mm, 50_mm, 100_mm, 95_deg});
  static_assert(frame.quarter_turned(2) == Box{10_mm, 20_mm, 100_mm, 50_mm, 185_deg});
  static_assert(frame.quarter_turned(-1) == Box{35_mm, -5_mm, 50_mm, 100_mm, {-85}});
  static_assert(frame.quarter_turned(7).angle == frame.quarter_turned(3).angle);
}

// ---- What is refused ---------------------------------------------------------------------------

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr jtpdf::Unit mm = jtpdf::millimeter;

struct BadBox {
  const char* name;
  Box box;
  const char* message;
};

void PrintTo(const BadBox& row, std::ostream* out) {
  *out << row.name;
}

class JtpdfBadBox : public testing::TestWithParam<BadBox> {};

TEST_P(JtpdfBadBox, IsRefusedByItsName) {
  Document doc = Document::memory(mm);
  const Box& bad = GetParam().box;
  const std::string box = std::string(": box") + GetParam().message;
  const std::string sheet = std::string("WritePdfPage: sheet") + GetParam().message;
  EXPECT_EQ(MessageOf([&] { doc.fill_rectangle(bad, Color::black); }), "FillPdfRectangle" + box);
  EXPECT_EQ(MessageOf([&] { doc.stroke_rectangle(bad, Color::black, 1_mm); }),
            "StrokePdfRectangle" + box);
  EXPECT_EQ(
      MessageOf([&] { doc.fill_and_stroke_rectangle(bad, Color::black, Color::black, 1_mm); }),
      "FillAndStrokePdfRectangle" + box);
  EXPECT_EQ(MessageOf([&] { doc.fill_and_stroke_circle(bad, Color::black, Color::black, 1_mm); }),
            "FillAndStrokePdfCircle" + box);
  EXPECT_EQ(MessageOf([&] { doc.set_canvas_box(bad); }), "SetPdfCanvasBoundingBox" + box);
  EXPECT_EQ(MessageOf([&] { doc.write_page(jtpdf::Form(2), bad); }), sheet);
  EXPECT_EQ(MessageOf([&] { doc.write_page(jtpdf::Form(2), CropBox(kPage), MediaBox(bad)); }),
            std::string("WritePdfPage: media") + GetParam().message);
  doc.finish();
  EXPECT_EQ(std::string_view(doc.bytes().data(), doc.bytes().size()).find("/Page "),
            std::string_view::npos);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, JtpdfBadBox,
    testing::Values(BadBox{"Left", {kNan * mm, 0_mm, 1_mm, 1_mm}, ".left is nan"},
                    BadBox{"Bottom", {0_mm, -kInfinity* mm, 1_mm, 1_mm}, ".bottom is -inf"},
                    BadBox{"Width", {0_mm, 0_mm, kInfinity* mm, 1_mm}, ".width is inf"},
                    BadBox{"Height", {0_mm, 0_mm, 1_mm, kNan* mm}, ".height is nan"},
                    BadBox{"Angle", {0_mm, 0_mm, 1_mm, 1_mm, {kNan}}, ".angle is nan"},
                    BadBox{"NegativeWidth", {0_mm, 0_mm, -0.5_mm, 1_mm}, ".width is -0.5"},
                    BadBox{"NegativeHeight", {0_mm, 0_mm, 1_mm, -2_mm}, ".height is -2"}),
    [](const testing::TestParamInfo<BadBox>& row) { return row.param.name; });

TEST(JtpdfNumbers, ThatMirrorAnImageAreTaken) {
  Document doc = Document::memory();
  doc.draw_image(jtpdf::Image(7), {0_mm, 0_mm, -1_mm, -1_mm});
  EXPECT_EQ(MessageOf([&] {
              doc.draw_image(jtpdf::Image(7), {0_mm, 0_mm, kNan * mm, 1_mm});
            }),
            "DrawPdfImageInRect: box.width is nan");
}

TEST(JtpdfNumbers, OfLinesUnitsAndPixelsAreRefused) {
  Document doc = Document::memory(mm);
  for (const auto& [width, text] : {std::pair(kNan, "nan"), {kInfinity, "inf"}, {-0.5, "-0.5"}}) {
    const std::string message = std::string(": line_width is ") + text;
    EXPECT_EQ(MessageOf([&, w = width] { doc.stroke_rectangle(kPart, Color::black, w * mm); }),
              "StrokePdfRectangle" + message);
    EXPECT_EQ(MessageOf([&, w = width] {
                doc.fill_and_stroke_rectangle(kPart, Color::black, Color::black, w * mm);
              }),
              "FillAndStrokePdfRectangle" + message);
    EXPECT_EQ(MessageOf([&, w = width] {
                doc.fill_and_stroke_circle(kPart, Color::black, Color::black, w * mm);
              }),
              "FillAndStrokePdfCircle" + message);
  }
  for (const double points : {kNan, kInfinity, 0.0, -1.0}) {
    const jtpdf::Unit unit(points);
    EXPECT_EQ(MessageOf([&] { Document::memory(unit).finish(); }).substr(0, 27),
              "CreateMemoryPdfDoc: unit is");
    EXPECT_EQ(MessageOf([&] { Document::file("x", unit).finish(); }).substr(0, 25),
              "CreateFilePdfDoc: unit is");
    EXPECT_EQ(
        MessageOf([&] { Document::to([](std::string_view) {}, unit).finish(); }).substr(0, 29),
        "CreateCallbackPdfDoc: unit is");
  }
  const ImageData good{kData, Compression::flate, 1, 1};
  EXPECT_EQ(MessageOf([&] { doc.write_image({kData}); }), "WritePdfImage: image.width is 0");
  EXPECT_EQ(MessageOf([&] {
              doc.write_image({kData, Compression::flate, 1, -7});
            }),
            "WritePdfImage: image.height is -7");
  EXPECT_EQ(MessageOf([&] { doc.write_image_with_alpha(good, {kData}); }),
            "WritePdfImageWithAlpha: alpha.width is 0");
  EXPECT_EQ(MessageOf([&] { doc.write_jpeg2000_image({kData}); }),
            "WritePdfImageJPEG2000: image.width is 0");
}

TEST(JtpdfObjects, OfAnotherDocumentAreRefused) {
  Document doc = Document::memory();
  Document other = Document::memory();
  const jtpdf::Profile profile = other.write_icc_profile(kData);
  const jtpdf::Image image = other.write_image({kData, Compression::flate, 1, 1, 8, profile});
  const jtpdf::Form form = other.write_canvas();
  doc.set_canvas_box(kPage);
  EXPECT_EQ(MessageOf([&] { doc.draw_image(image); }),
            "DrawPdfImage: image belongs to another document");
  EXPECT_EQ(MessageOf([&] { doc.draw_image(image, kPage); }),
            "DrawPdfImageInRect: image belongs to another document");
  EXPECT_EQ(MessageOf([&] { doc.write_page(form, kPage); }),
            "WritePdfPage: form belongs to another document");
  EXPECT_EQ(MessageOf([&] {
              doc.write_image({kData, Compression::flate, 1, 1, 8, profile});
            }),
            "WritePdfImage: color_space belongs to another document");

  Document moved = std::move(other);
  moved.draw_image(image, kPage);
  doc = std::move(moved);
  doc.draw_image(image, kPage);
  doc.add_image_page(image, kPage);
}

TEST(JtpdfDocument, TakesPathsOfTheFileSystemLibrary) {
  const std::filesystem::path path = std::filesystem::path(testing::TempDir()) /
                                     ("jtpdf_path_größe" + std::to_string(__cplusplus) + ".pdf");
  Document::file(path, mm, {"me", ""}).finish();
  EXPECT_GT(std::filesystem::file_size(path), 500u);
  Document doc = Document::unopened_file(path);
  EXPECT_EQ(doc.unit(), jtpdf::point);
  std::filesystem::remove(path);
}

TEST(JtpdfDocument, IsAskedWhereItIsConstant) {
  Document doc = Document::memory(mm);
  doc.set_canvas_box(kPage);
  doc.finish();
  const Document& constant = doc;
  EXPECT_EQ(constant.canvas_box(), kPage);
  EXPECT_FALSE(constant.mark() || constant.bytes().empty());
  EXPECT_EQ(constant.unit(), mm);
  EXPECT_NE(constant.handle(), nullptr);
}

TEST(JtpdfImageData, IsTakenLikeItsMembers) {
  const ImageData kept{kData, Compression::flate, 3, 2, 4, jtpdf::ColorSpace::gray};
  EXPECT_EQ(
      FileOf([&](Document& doc) { doc.write_image(kept); }), FileOf([&](Document& doc) {
        doc.write_image({std::string(kData), Compression::flate, 3, 2, 4, jtpdf::ColorSpace::gray});
      }));
  const ImageArgument argument = kept;
  EXPECT_EQ(argument.bytes.data(), kData.data());
}

}  // namespace
