// The values of the C++ face: lengths, boxes, colours, bytes, object numbers, errors.

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <list>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <vector>
#if __cplusplus >= 202002L
#include <span>
#endif

#include "jtpdf/jtpdf.hpp"

namespace {

using namespace jtpdf::literals;
using jtpdf::Box;
using jtpdf::Bytes;
using jtpdf::Color;
using jtpdf::Length;
using jtpdf::Unit;

TEST(JtpdfUnit, HasTheFactorsOfTheCInterface) {
  EXPECT_EQ(jtpdf::inch.points(), PDFCoordinateUnitInch);
  EXPECT_EQ(jtpdf::centimeter.points(), PDFCoordinateUnitCentimeter);
  EXPECT_EQ(jtpdf::millimeter.points(), PDFCoordinateUnitMillimeter);
  EXPECT_EQ(jtpdf::point.points(), PDFCoordinateUnitPoint);
}

TEST(JtpdfLength, IsUnchangedInItsOwnUnit) {
  // A third survives no round trip through points.
  const double third = 1.0 / 3;
  EXPECT_EQ((third * jtpdf::millimeter).in(jtpdf::millimeter), third);
  static_assert((20_mm).in(jtpdf::millimeter) == 20);
}

TEST(JtpdfLength, IsConvertedToOtherUnits) {
  EXPECT_DOUBLE_EQ((2_cm).in(jtpdf::millimeter), 20);
  EXPECT_EQ((0.5_in).in(jtpdf::point), 36);
  EXPECT_EQ((300 * Unit(72 / 300.0)).in(jtpdf::inch), 1);
}

TEST(JtpdfLength, SumsAreInTheUnitOfTheFirst) {
  const Length sum = 1_in + 36_pt;
  EXPECT_EQ(sum.unit(), jtpdf::inch);
  EXPECT_EQ(sum.in(jtpdf::inch), 1.5);
  EXPECT_EQ((72_pt - 1_in).in(jtpdf::point), 0);
  EXPECT_EQ(-(2 * 3_pt) / 4 * 2, -3.0_pt);
  EXPECT_EQ(1_in, 72_pt);
  EXPECT_NE(1_in, 1_cm);
}

TEST(JtpdfLength, IsComparedAndChangedWhateverTheUnits) {
  static_assert(1_cm < 1_in && 1_in > 1_cm && !(72_pt < 1_in));
  static_assert(72_pt <= 1_in && 72_pt >= 1_in && 1_cm <= 1_in && 1_in >= 1_cm);
  static_assert(3_in / 36_pt == 6);
  Length length = 1_in;
  length += 36_pt;
  EXPECT_EQ(length, 1.5_in);
  length -= 1_in;
  length *= 4;
  length /= 2;
  EXPECT_EQ(length, 1_in);
  EXPECT_EQ(length.unit(), jtpdf::inch);
}

TEST(JtpdfLength, IsPrintedWithItsUnit) {
  std::ostringstream stream;
  stream << 20_mm << ", " << 1.5_cm << ", " << 2_in << ", " << -3_pt << ", " << 10 * Unit(0.24);
  EXPECT_EQ(stream.str(), "20 mm, 1.5 cm, 2 in, -3 pt, 2.4 pt");
}

TEST(JtpdfVersion, IsTheProjects) {
  EXPECT_EQ(jtpdf::library_version(), JTPDF_VERSION_STRING);
  EXPECT_EQ(JTPDF_VERSION_STRING, std::to_string(JTPDF_VERSION_MAJOR) + "." +
                                      std::to_string(JTPDF_VERSION_MINOR) + "." +
                                      std::to_string(JTPDF_VERSION_PATCH));
  static_assert(JTPDF_VERSION ==
                JTPDF_VERSION_MAJOR * 10000 + JTPDF_VERSION_MINOR * 100 + JTPDF_VERSION_PATCH);
}

TEST(JtpdfBox, InsetsLikeTheCFunction) {
  JTPDFRect rect = {0.1, 0.2, 10.3, 20.4, 30};
  InsetPdfRect(&rect, 0.7, -1.1);
  const Box box = Box{0.1_mm, 0.2_mm, 10.3_mm, 20.4_mm, 30_deg}.inset(0.7_mm, -1.1_mm);
  EXPECT_EQ(box.left.in(jtpdf::millimeter), rect.left);
  EXPECT_EQ(box.bottom.in(jtpdf::millimeter), rect.bottom);
  EXPECT_EQ(box.width.in(jtpdf::millimeter), rect.width);
  EXPECT_EQ(box.height.in(jtpdf::millimeter), rect.height);
  EXPECT_EQ(box.angle.degrees, rect.angle);
}

TEST(JtpdfBox, IsUprightWithoutMirrorsAndQuarterTurns) {
  const Box upright = Box{10_mm, 20_mm, -30_mm, 40_mm, 90_deg}.upright();
  EXPECT_EQ(upright, (Box{-25_mm, 25_mm, 40_mm, 30_mm, 0_deg}));
  EXPECT_EQ(upright.upright(), upright);
  EXPECT_EQ((Box{0_mm, 0_mm, 30_mm, -40_mm, 185_deg}.upright()),
            (Box{0_mm, -40_mm, 30_mm, 40_mm, 5_deg}));
}

TEST(JtpdfBox, EqualsTheSameBoxInAnotherUnit) {
  const Box box{1_in, 2_in, 3_in, 4_in, 5_deg};
  EXPECT_EQ(box, (Box{72_pt, 144_pt, 216_pt, 288_pt, 5_deg}));
  EXPECT_NE(box, (Box{72_pt, 144_pt, 216_pt, 288_pt, 6_deg}));
}

TEST(JtpdfColor, IsReadFromSixDigits) {
  static_assert(0xff8001_rgb == Color{255, 128, 1});
  static_assert(0X00aBcD_rgb == Color{0, 0xAB, 0xCD, 255});
  static_assert(0xffffff_rgb == Color::white && Color::white != Color::none);
  EXPECT_EQ(Color::none, (Color{255, 255, 255, 0}));
  EXPECT_EQ(Color(), Color::black);
}

TEST(JtpdfBytes, ViewAnyContiguousRangeOfBytes) {
  const std::vector<unsigned char> vector = {1, 2, 3};
  const std::array<std::byte, 2> array = {};
  const std::string string("a\0b", 3);
  const unsigned char plain[] = {9, 8, 7, 6};
  EXPECT_EQ(Bytes(vector).data(), reinterpret_cast<const char*>(vector.data()));
  EXPECT_EQ(Bytes(vector).size(), 3u);
  EXPECT_EQ(Bytes(array).size(), 2u);
  EXPECT_EQ(Bytes(string).size(), 3u);
  EXPECT_EQ(Bytes(std::string_view("ab")).size(), 2u);
  EXPECT_EQ(Bytes(plain).size(), 4u);
  EXPECT_EQ(Bytes(plain, 2).end(), reinterpret_cast<const char*>(plain + 2));
#if __cplusplus >= 202002L
  EXPECT_EQ(Bytes(std::span<const unsigned char>(vector).subspan(1)).size(), 2u);
#endif
  EXPECT_TRUE(Bytes().empty());
}

TEST(JtpdfBytes, ViewNothingElse) {
  static_assert(!std::is_constructible_v<Bytes, const char(&)[4]>, "a literal's NUL");
  static_assert(!std::is_constructible_v<Bytes, std::vector<int>>, "the order of bytes is open");
  static_assert(!std::is_constructible_v<Bytes, std::vector<bool>>, "not bytes");
  static_assert(!std::is_constructible_v<Bytes, std::list<char>>, "not contiguous");
  static_assert(std::is_trivially_copyable_v<Bytes>);
}

TEST(JtpdfLastingBytes, AreNoneOfATemporary) {
  using jtpdf::LastingBytes;
  static_assert(std::is_constructible_v<LastingBytes, const std::string&>);
  static_assert(std::is_constructible_v<LastingBytes, std::string&>);
  static_assert(std::is_constructible_v<LastingBytes, std::string_view>, "a view owns nothing");
  static_assert(std::is_constructible_v<LastingBytes, Bytes>);
  static_assert(!std::is_constructible_v<LastingBytes, std::string>);
  static_assert(!std::is_constructible_v<LastingBytes, const std::vector<char>>);
  static_assert(!std::is_constructible_v<LastingBytes, std::array<char, 3>>);
  static_assert(!std::is_constructible_v<LastingBytes, const char(&)[4]>, "a literal's NUL");
  static_assert(!std::is_constructible_v<LastingBytes, const std::vector<int>&>);
#if __cplusplus >= 202002L
  static_assert(std::is_constructible_v<LastingBytes, std::span<const unsigned char>>);
#endif
}

TEST(JtpdfObjectNumber, KindsAndPlainNumbersDoNotMix) {
  using jtpdf::Form;
  using jtpdf::Image;
  using jtpdf::Profile;
  static_assert(!std::is_convertible_v<Form, Image> && !std::is_constructible_v<Image, Form>);
  static_assert(!std::is_convertible_v<Profile, Image> && !std::is_constructible_v<Image, Profile>);
  static_assert(!std::is_convertible_v<int, Image> && std::is_constructible_v<Image, int>);
  static_assert(!std::is_convertible_v<Image, int>);
  static_assert(std::is_convertible_v<Profile, jtpdf::ColorSpace>);
  static_assert(!std::is_constructible_v<jtpdf::ColorSpace, Image>);
  EXPECT_EQ(Image(7), Image(7));
  EXPECT_NE(Image(7), Image(8));
  EXPECT_EQ(Form(3).number(), 3);
}

TEST(JtpdfError, KnowsTheCallItsCodeAndAMessage) {
  const jtpdf::Error error("InitPdfDoc", ENOENT);
  EXPECT_STREQ(error.what(), "InitPdfDoc: No such file or directory");
  EXPECT_STREQ(error.function(), "InitPdfDoc");
  EXPECT_EQ(error.result(), ENOENT);
  EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
  static_assert(std::is_base_of_v<std::system_error, jtpdf::Error>);
}

TEST(JtpdfError, TellsRefusalsFromSystemErrors) {
  const jtpdf::Error error("WritePdfPage", -1);
  EXPECT_EQ(error.code(), jtpdf::Errc::refused);
  EXPECT_STREQ(error.code().category().name(), "jtpdf");
  EXPECT_EQ(error.result(), -1);
  EXPECT_EQ(std::string_view(error.what()).substr(0, 35), "WritePdfPage: the document refused ");
  EXPECT_EQ(jtpdf::Error("WritePdfPage", -7).code().message(), "unknown result code -7");
}

}  // namespace
