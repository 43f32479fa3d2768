// Documents of the C++ face: each call writes what its C function writes, failures throw, text is
// checked, and nothing is finished behind the caller's back.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "jtpdf/jtpdf.hpp"

namespace {

using namespace jtpdf::literals;
using jtpdf::Box;
using jtpdf::Color;
using jtpdf::ColorSpace;
using jtpdf::Compression;
using jtpdf::CropBox;
using jtpdf::Document;
using jtpdf::Entry;
using jtpdf::ImageData;
using jtpdf::ImageTags;
using jtpdf::MediaBox;
using jtpdf::Role;

const std::vector<unsigned char> kPixels = {0x78, 0x01, 0x00, 0xFF, 0x00, 0x1F};

std::string Text(jtpdf::Bytes bytes) {
  return std::string(bytes.begin(), bytes.end());
}

// The path is UTF-8.
std::string ReadFile(const std::string& path) {
#if defined(__cpp_char8_t)
  const std::filesystem::path name = std::u8string(path.begin(), path.end());
#else
  const std::filesystem::path name = std::filesystem::u8path(path);
#endif
  std::ifstream file(name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string TestPath(const char* name) {
  return testing::TempDir() + "jtpdf_cpp" + std::to_string(__cplusplus) + '_' + name;
}

// Runs body and returns the Error that it must throw.
template <typename Body>
jtpdf::Error ErrorOf(const Body& body) {
  try {
    body();
  } catch (const jtpdf::Error& error) {
    return error;
  }
  throw std::logic_error("no jtpdf::Error was thrown");
}

// What the C interface writes when use(document) gets it, in millimetres.
template <typename Use>
std::string WrittenByC(const Use& use) {
  JTPDFDocument* doc = CreateMemoryPdfDoc(PDFCoordinateUnitMillimeter);
  EXPECT_EQ(InitPdfDoc(doc), 0);
  use(doc);
  EXPECT_EQ(FinalizePdfDoc(doc, nullptr), 0);
  std::string bytes(GetPdfData(doc), GetPdfDataSize(doc));
  DestroyPdfDoc(doc);
  return bytes;
}

// The same through the face.
template <typename Use>
std::string WrittenByFace(const Use& use) {
  Document doc = Document::memory(jtpdf::millimeter);
  use(doc);
  doc.finish();
  return Text(doc.bytes());
}

constexpr JTPDFRect kRect = {10, 20, 30, 40, 15};
constexpr Box kBox{10_mm, 20_mm, 30_mm, 40_mm, 15_deg};

// ---- Every call of the C interface can be said -------------------------------------------------

TEST(JtpdfDocument, WritesInformationLikeC) {
  EXPECT_EQ(WrittenByFace([](Document& doc) {
              doc.set_info("Title", "Grüße, 世界 🌍");
              doc.set_info("/Subject", "");
              EXPECT_FALSE(doc.mark());
              doc.set_mark(true);
              EXPECT_TRUE(doc.mark());
            }),
            WrittenByC([](JTPDFDocument* doc) {
              SetPdfInfoItem(doc, "Title", L"Gr\u00FC\u00DFe, \u4E16\u754C \U0001F30D ");
              SetPdfInfoItem(doc, "/Subject", nullptr);
              SetPdfMgMk(doc, true);
            }));
}

TEST(JtpdfDocument, DrawsLikeC) {
  EXPECT_EQ(WrittenByFace([](Document& doc) {
              doc.fill_rectangle(kBox, Color::black);
              doc.clear_canvas();
              doc.set_canvas_box(kBox);
              EXPECT_EQ(doc.canvas_box(), kBox);
              doc.draw_image(jtpdf::Image(7));
              doc.draw_image(jtpdf::Image(8), kBox.inset(1_mm, 2_mm));
              doc.fill_rectangle(kBox, 0x010203_rgb);
              doc.stroke_rectangle(kBox, 0x040506_rgb, 0.5_mm);
              doc.fill_and_stroke_rectangle(kBox, 0x070809_rgb, Color::none, 0.6_mm);
              doc.fill_and_stroke_circle(kBox, 0x0a0b0c_rgb, 0x0d0e0f_rgb, 0.7_mm);
              EXPECT_EQ(doc.write_canvas(), jtpdf::Form(2));
            }),
            WrittenByC([](JTPDFDocument* doc) {
              JTPDFRect inner = kRect;
              InsetPdfRect(&inner, 1, 2);
              FillPdfRectangle(doc, kRect, {0, 0, 0, 255});
              ClearPdfCanvas(doc);
              SetPdfCanvasBoundingBox(doc, kRect);
              DrawPdfImage(doc, 7);
              DrawPdfImageInRect(doc, 8, inner);
              FillPdfRectangle(doc, kRect, {1, 2, 3, 255});
              StrokePdfRectangle(doc, kRect, {4, 5, 6, 255}, 0.5);
              FillAndStrokePdfRectangle(doc, kRect, {7, 8, 9, 255}, {255, 255, 255, 0}, 0.6);
              FillAndStrokePdfCircle(doc, kRect, {10, 11, 12, 255}, {13, 14, 15, 255}, 0.7);
              EXPECT_EQ(WritePdfCanvas(doc, nullptr), 0);
            }));
}

TEST(JtpdfDocument, WritesPagesLikeC) {
  EXPECT_EQ(WrittenByFace([](Document& doc) {
              const jtpdf::Form form = doc.write_canvas();
              doc.write_page(form, kBox);
              doc.write_page(form, CropBox(kBox.inset(1_mm, 1_mm)), MediaBox(kBox));
            }),
            WrittenByC([](JTPDFDocument* doc) {
              int form = 0;
              JTPDFRect inner = kRect;
              InsetPdfRect(&inner, 1, 1);
              EXPECT_EQ(WritePdfCanvas(doc, &form), 0);
              EXPECT_EQ(WritePdfPage(doc, form, kRect, kRect), 0);
              EXPECT_EQ(WritePdfPage(doc, form, inner, kRect), 0);
            }));
}

TEST(JtpdfDocument, WritesImagesLikeC) {
  EXPECT_EQ(
      WrittenByFace([](Document& doc) {
        const ImageData gray{kPixels, Compression::flate, 3, 2, 8, ColorSpace::gray};
        const ImageData raw{kPixels, Compression::none, 1, 2, 8, ColorSpace::cmyk};
        const jtpdf::Profile profile = doc.write_icc_profile(kPixels);
        EXPECT_EQ(profile, jtpdf::Profile(3));
        EXPECT_EQ(doc.write_icc_profile(kPixels, Compression::flate), jtpdf::Profile(5));
        EXPECT_EQ(doc.write_image(gray), jtpdf::Image(6));
        doc.write_image({kPixels, Compression::lzw, 3, 2, 4, profile},
                        {Role::photo, "Fuß", {{"/JT/Shot", "β"}, {"Lens", ""}}});
        doc.write_image_without_white(gray, {Role::border});
        EXPECT_EQ(doc.write_image_with_alpha(raw, gray, {Role::clip_art, "n", {{"K", "v"}}}),
                  jtpdf::Image(10));
        EXPECT_EQ(doc.write_jpeg2000_image({kPixels, Compression::jpeg2000, 5, 4}, {Role::text}),
                  jtpdf::Image(11));
        const ImageData odd{{}, Compression(77), 1, 1, 99, ColorSpace(TPdfColorSpace(55), 66)};
        doc.write_image(odd, {Role(44)});
      }),
      WrittenByC([](JTPDFDocument* doc) {
        const char* data = reinterpret_cast<const char*>(kPixels.data());
        const uint32_t size = static_cast<uint32_t>(kPixels.size());
        const TPdfCompression raw = static_cast<TPdfCompression>(-1);
        const TPdfImageDescriptor gray = {data, size, kPdfCompressionFlate, 3,
                                          2,    8,    kPdfColorSpaceGray,   0};
        const TPdfImageDescriptor lzw = {data, size, kPdfCompressionLZW, 3,
                                         2,    4,    kPdfColorSpaceICC,  3};
        const TPdfImageDescriptor cmyk = {data, size, raw, 1, 2, 8, kPdfColorSpaceCMYK, 0};
        const TPdfImageDescriptor jpx = {data, size, kPdfCompressionJPEG2000, 5,
                                         4,    8,    kPdfColorSpaceRGB,       0};
        const TPdfImageDescriptor odd = {nullptr, 0,  TPdfCompression(77), 1,
                                         1,       99, TPdfColorSpace(55),  66};
        const JTPDFDictionaryItem items[] = {{"/JT/Shot", L"\u03B2"}, {"Lens", L""}};
        const JTPDFDictionaryItem item = {"K", L"v"};
        int number = 0;
        EXPECT_EQ(WritePdfICCProfile(doc, data, size, raw, &number), 0);
        EXPECT_EQ(WritePdfICCProfile(doc, data, size, kPdfCompressionFlate, nullptr), 0);
        EXPECT_EQ(
            WritePdfImage(doc, &gray, false, kPdfImageRoleOther, nullptr, 0, nullptr, nullptr), 0);
        EXPECT_EQ(
            WritePdfImage(doc, &lzw, false, kPdfImageRolePhoto, L"Fu\u00DF", 2, items, nullptr), 0);
        EXPECT_EQ(
            WritePdfImage(doc, &gray, true, kPdfImageRoleBorder, nullptr, 0, nullptr, nullptr), 0);
        EXPECT_EQ(WritePdfImageWithAlpha(doc, &cmyk, &gray, kPdfImageRoleClipArt, L"n", 1, &item,
                                         nullptr),
                  0);
        EXPECT_EQ(WritePdfImageJPEG2000(doc, &jpx, kPdfImageRoleText, nullptr, 0, nullptr, nullptr),
                  0);
        EXPECT_EQ(WritePdfImage(doc, &odd, false, TPdfImageRole(44), nullptr, 0, nullptr, nullptr),
                  0);
      }));
}

TEST(JtpdfDocument, WritesFilesLikeC) {
  const std::string by_c = TestPath("c.pdf");
  const std::string by_face = TestPath("face.pdf");
  const std::wstring wide(by_c.begin(), by_c.end());
  JTPDFDocument* c_doc = CreateFilePdfDoc(PDFCoordinateUnitInch, wide.c_str(), L"me", L"\u00C6sop");
  EXPECT_EQ(InitPdfDoc(c_doc), 0);
  EXPECT_EQ(FinalizePdfDoc(c_doc, "% the end"), 0);
  DestroyPdfDoc(c_doc);

  Document doc = Document::file(by_face, jtpdf::inch, {"me", "Æsop"});
  EXPECT_EQ(doc.unit(), jtpdf::inch);
  doc.finish("% the end");
  EXPECT_TRUE(doc.bytes().empty()) << "a file document's bytes are in its file";
  EXPECT_EQ(ReadFile(by_face), ReadFile(by_c));
  EXPECT_FALSE(ReadFile(by_face).empty());
}

TEST(JtpdfDocument, OpensPathsThatAreUtf8) {
  const std::string path = TestPath("größe-世界.pdf");
  Document::file(path).finish();
  EXPECT_EQ(ReadFile(path).substr(0, 8), "%PDF-1.5");
}

TEST(JtpdfDocument, ConvertsLengthsToItsUnit) {
  Document doc = Document::memory(jtpdf::inch);
  doc.set_canvas_box({36_pt, 0_mm, 1_in, 25.4_mm});
  const JTPDFRect rect = GetPdfCanvasBoundingBox(doc.handle());
  EXPECT_EQ(rect.left, 0.5);
  EXPECT_EQ(rect.bottom, 0);
  EXPECT_EQ(rect.width, 1);
  EXPECT_NEAR(rect.height, 1, 1e-11);
}

TEST(JtpdfDocument, CanBePreparedBeforeItIsOpened) {
  Document doc = Document::unopened_memory();
  doc.set_info("Title", "early");
  doc.fill_rectangle({1_pt, 2_pt, 3_pt, 4_pt}, Color::black);
  doc.open();
  EXPECT_TRUE(doc.bytes().empty());
  doc.write_canvas();
  doc.finish();
  doc.finish();  // changes nothing
  EXPECT_NE(Text(doc.bytes()).find("%rectangle"), std::string::npos);
}

TEST(JtpdfDiagnostics, IsTheProcessesSwitch) {
  jtpdf::set_diagnostic_mode(true);
  EXPECT_TRUE(jtpdf::diagnostic_mode() && JTPDFGetDiagnosticMode());
  jtpdf::set_diagnostic_mode(false);
  EXPECT_FALSE(jtpdf::diagnostic_mode());
}

// ---- Failures ----------------------------------------------------------------------------------

TEST(JtpdfDocument, ThrowsTheSystemsReasonAndMayBeOpenedAgain) {
  const std::string path = TestPath("absent") + "/out.pdf";
  EXPECT_EQ(ErrorOf([&] { Document::file(path).finish(); }).code(),
            std::errc::no_such_file_or_directory);
  Document doc = Document::unopened_file(path);
  const jtpdf::Error error = ErrorOf([&] { doc.open(); });
  EXPECT_STREQ(error.what(), "InitPdfDoc: No such file or directory");
  EXPECT_EQ(ErrorOf([&] { doc.open(); }).result(), ENOENT);
}

TEST(JtpdfDocument, ThrowsRefusedWhateverErrnoWasBefore) {
  Document doc = Document::memory();
  errno = ENOENT;
  EXPECT_EQ(ErrorOf([&] { doc.open(); }).code(), jtpdf::Errc::refused);
  EXPECT_EQ(errno, ENOENT);
  doc.write_canvas();
  EXPECT_EQ(errno, ENOENT);
}

TEST(JtpdfDocument, RefusesEveryWriterBeforeItIsOpen) {
  Document doc = Document::unopened_memory();
  const ImageData image{kPixels, Compression::flate, 3, 2};
  EXPECT_STREQ(ErrorOf([&] { doc.write_canvas(); }).function(), "WritePdfCanvas");
  EXPECT_STREQ(ErrorOf([&] { doc.write_page(jtpdf::Form(1), kBox); }).function(), "WritePdfPage");
  EXPECT_STREQ(ErrorOf([&] { doc.write_image(image); }).function(), "WritePdfImage");
  EXPECT_STREQ(ErrorOf([&] { doc.write_image_without_white(image); }).function(), "WritePdfImage");
  EXPECT_STREQ(ErrorOf([&] { doc.write_image_with_alpha(image, image); }).function(),
               "WritePdfImageWithAlpha");
  EXPECT_STREQ(ErrorOf([&] { doc.write_jpeg2000_image(image); }).function(),
               "WritePdfImageJPEG2000");
  EXPECT_STREQ(ErrorOf([&] { doc.write_icc_profile(kPixels); }).function(), "WritePdfICCProfile");
  EXPECT_STREQ(ErrorOf([&] { doc.finish(); }).function(), "FinalizePdfDoc");
}

TEST(JtpdfDocument, ThrowsWhenTheDiskIsFull) {
  Document doc = Document::file("/dev/full");
  doc.write_page(doc.write_canvas(), kBox);
  EXPECT_EQ(ErrorOf([&] { doc.finish(); }).code(), std::errc::no_space_on_device);
  testing::internal::CaptureStderr();
  doc = Document::memory();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "the error has told it already";
}

// ---- Text --------------------------------------------------------------------------------------

struct BadText {
  const char* name;
  std::string text;
  std::size_t offset;
};

void PrintTo(const BadText& row, std::ostream* out) {
  *out << row.name;
}

class JtpdfBadText : public testing::TestWithParam<BadText> {};

TEST_P(JtpdfBadText, IsRejectedWithItsPlace) {
  Document doc = Document::memory();
  const jtpdf::Error error = ErrorOf([&] { doc.set_info("Title", GetParam().text); });
  EXPECT_EQ(error.code(), std::errc::illegal_byte_sequence);
  EXPECT_EQ(std::string(error.what())
                .find("SetPdfInfoItem: value is not UTF-8 at byte " +
                      std::to_string(GetParam().offset) + ":"),
            0u)
      << error.what();
  doc.finish();
  EXPECT_EQ(Text(doc.bytes()).find("/Title"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Utf8, JtpdfBadText,
                         testing::Values(BadText{"LoneContinuation", "ab\x80", 2},
                                         BadText{"CutOff", "\xE4\xB8", 0},
                                         BadText{"BrokenOff", "a\xC3(", 1},
                                         BadText{"Overlong2", "\xC0\xAF", 0},
                                         BadText{"Overlong3", "\xE0\x9F\xBF", 0},
                                         BadText{"Overlong4", "\xF0\x8F\xBF\xBF", 0},
                                         BadText{"Surrogate", "\xED\xA0\x80", 0},
                                         BadText{"AboveUnicode", "\xF4\x90\x80\x80", 0},
                                         BadText{"NeverALead", "x\xFF", 1},
                                         BadText{"FiveBytes", "\xF8\x88\x80\x80\x80", 0},
                                         BadText{"Latin1",
                                                 "Gr\xFC\xDF"
                                                 "e",
                                                 2}),
                         [](const testing::TestParamInfo<BadText>& row) { return row.param.name; });

struct GoodText {
  const char* name;
  std::string text;
  const wchar_t* wide;
};

void PrintTo(const GoodText& row, std::ostream* out) {
  *out << row.name;
}

class JtpdfGoodText : public testing::TestWithParam<GoodText> {};

TEST_P(JtpdfGoodText, ReachesTheLibraryAsUtf32) {
  EXPECT_EQ(WrittenByFace([](Document& doc) { doc.set_info("Title", GetParam().text); }),
            WrittenByC([](JTPDFDocument* doc) { SetPdfInfoItem(doc, "Title", GetParam().wide); }));
}

INSTANTIATE_TEST_SUITE_P(Utf8, JtpdfGoodText,
                         testing::Values(GoodText{"Empty", "", L""},
                                         GoodText{"Ascii", "\x01~\x7F", L"\x01~\x7F"},
                                         GoodText{"Least2", "\xC2\x80", L"\x80"},
                                         GoodText{"Most2", "\xDF\xBF", L"\x7FF"},
                                         GoodText{"Least3", "\xE0\xA0\x80", L"\x800"},
                                         GoodText{"BelowSurrogates", "\xED\x9F\xBF", L"\xD7FF"},
                                         GoodText{"AboveSurrogates", "\xEE\x80\x80", L"\xE000"},
                                         GoodText{"Most3", "\xEF\xBF\xBF", L"\xFFFF"},
                                         GoodText{"Least4", "a\xF0\x90\x80\x80z", L"a\U00010000z "},
                                         GoodText{"Last", "b\xF4\x8F\xBF\xBFy", L"b\U0010FFFFy "},
                                         GoodText{"Pairs", "🎉🎉", L"\U0001F389\U0001F389  "}),
                         [](const testing::TestParamInfo<GoodText>& row) {
                           return row.param.name;
                         });

// A text's literal in the file: UTF-16, most significant byte first, control characters as octal.
std::string Literal(std::u16string_view text) {
  std::string literal = "(\xFE\xFF";
  for (const char16_t unit : text) {
    for (const int byte : {unit >> 8, unit & 0xFF}) {
      if (byte >= 0x20) {
        literal += static_cast<char>(byte);
      } else {
        literal +=
            {'\\', '0', static_cast<char>('0' + (byte >> 3)), static_cast<char>('0' + (byte & 7))};
      }
    }
  }
  return literal + ')';
}

TEST(JtpdfText, ArrivesWholeWithCharactersOfTwoUnits) {
  const std::string path = TestPath("party \xF0\x9F\x8E\x89.pdf");
  Document doc = Document::file(path, jtpdf::point, {"🎉", "by 🎉 me"});
  doc.set_info("Title", "Party 🎉 2026");
  doc.write_image({kPixels, Compression::flate, 3, 2}, {Role::other, "n🎉", {{"K", "v🎉🎉w"}}});
  doc.finish();
  const std::string file = ReadFile(path);
  EXPECT_FALSE(file.empty()) << "nothing is added to a file's name";
  for (const std::u16string_view text : {u"🎉", u"by 🎉 me", u"Party 🎉 2026", u"n🎉", u"v🎉🎉w"}) {
    EXPECT_NE(file.find(Literal(text)), std::string::npos) << Literal(text);
  }
}

TEST(JtpdfText, MayBeOfAnyLength) {
  for (const std::size_t size : {98u, 99u, 100u, 101u, 5000u}) {
    const std::string text(size, 'x');
    const std::wstring wide(size, L'x');
    EXPECT_EQ(
        WrittenByFace([&](Document& doc) { doc.set_info(text, text); }),
        WrittenByC([&](JTPDFDocument* doc) { SetPdfInfoItem(doc, text.c_str(), wide.c_str()); }))
        << size;
  }
}

TEST(JtpdfText, NeedsNoNulBehindAndMayHaveNoneInside) {
  EXPECT_EQ(WrittenByFace([](Document& doc) {
              doc.set_info(std::string_view("Title!", 5), std::string_view("abc", 2));
            }),
            WrittenByC([](JTPDFDocument* doc) { SetPdfInfoItem(doc, "Title", L"ab"); }));
  Document doc = Document::memory();
  const std::string_view nul("a\0b", 3);
  EXPECT_STREQ(ErrorOf([&] { doc.set_info("Title", nul); }).what(),
               "SetPdfInfoItem: value has a NUL at byte 1: Invalid argument");
  EXPECT_STREQ(ErrorOf([&] { doc.set_info(nul, ""); }).what(),
               "SetPdfInfoItem: key has a NUL at byte 1: Invalid argument");
  EXPECT_STREQ(ErrorOf([&] { doc.finish(nul); }).what(),
               "FinalizePdfDoc: closing text has a NUL at byte 1: Invalid argument");
}

TEST(JtpdfText, OfEveryArgumentIsChecked) {
  Document doc = Document::memory();
  const ImageData image{kPixels, Compression::flate, 3, 2};
  EXPECT_STREQ(ErrorOf([&] { Document::file("\xFF").finish(); }).function(), "CreateFilePdfDoc");
  const auto credits = [](const char* creator, const char* author) {
    return ErrorOf([&] { Document::file("x", jtpdf::point, {creator, author}).discard(); });
  };
  EXPECT_NE(std::string(credits("\xFF", "").what()).find("creator"), std::string::npos);
  EXPECT_NE(std::string(credits("", "\xFF").what()).find("author"), std::string::npos);
  EXPECT_NE(std::string(ErrorOf([&] {
                          doc.write_image(image, {Role::other, "\xFF"});
                        }).what())
                .find("WritePdfImage: name"),
            std::string::npos);
  EXPECT_NE(
      std::string(ErrorOf([&] {
                    doc.write_image_with_alpha(image, image, {Role::other, "", {{"K", "\xFF"}}});
                  }).what())
          .find("WritePdfImageWithAlpha: value"),
      std::string::npos);
}

// ---- Ownership ---------------------------------------------------------------------------------

TEST(JtpdfDocument, IsMovedAndNeverCopied) {
  static_assert(!std::is_copy_constructible_v<Document> && !std::is_copy_assignable_v<Document>);
  static_assert(std::is_nothrow_move_constructible_v<Document>);
  static_assert(std::is_nothrow_move_assignable_v<Document>);
  static_assert(!std::is_default_constructible_v<Document>);

  Document first = Document::memory(jtpdf::inch);
  const JTPDFDocument* const handle = first.handle();
  Document second = std::move(first);
  EXPECT_EQ(second.handle(), handle);
  first = Document::memory();
  first = std::move(second);
  EXPECT_EQ(first.handle(), handle);
  EXPECT_EQ(first.unit(), jtpdf::inch);
  Document& alias = first;
  first = std::move(alias);
  EXPECT_EQ(first.handle(), handle) << "moving a document onto itself changes nothing";
  first.finish();
  std::vector<Document> several;
  several.push_back(std::move(first));
  several.push_back(Document::memory());
  EXPECT_EQ(Text(several[0].bytes()).substr(0, 8), "%PDF-1.5");
}

constexpr const char* kDropped =
    "jtpdf: a file was dropped without finish() or discard() and is incomplete\n";

// What body writes on the standard error stream.
template <typename Body>
std::string StandardError(const Body& body) {
  testing::internal::CaptureStderr();
  body();
  return testing::internal::GetCapturedStderr();
}

TEST(JtpdfDocument, SaysThatAFileWasDroppedUnfinished) {
  const std::string path = TestPath("dropped.pdf");
  EXPECT_EQ(StandardError([&] { Document doc = Document::file(path); }), kDropped);
  EXPECT_EQ(ReadFile(path).find("%%EOF"), std::string::npos) << "nothing is finished implicitly";
  EXPECT_EQ(StandardError([&] {
              Document doc = Document::file(path);
              doc = Document::memory();
            }),
            kDropped);
}

TEST(JtpdfDocument, IsDroppedQuietlyWhereThatIsNoMistake) {
  const std::string path = TestPath("quiet.pdf");
  EXPECT_EQ(StandardError([&] {
              Document finished = Document::file(path);
              finished.finish();
              Document moved = std::move(finished);
              Document discarded = Document::file(TestPath("discarded.pdf"));
              discarded.discard();
              Document unopened = Document::unopened_file(TestPath("never_made.pdf"));
              Document memory = Document::memory();
              Document failed = Document::file(TestPath("failed.pdf"));
              EXPECT_THROW(failed.open(), jtpdf::Error);
              try {
                Document passed = Document::file(TestPath("passed.pdf"));
                throw std::runtime_error("the caller's own");
              } catch (const std::runtime_error&) {
              }
            }),
            "");
  EXPECT_TRUE(ReadFile(TestPath("never_made.pdf")).empty());
}

}  // namespace
