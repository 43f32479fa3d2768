// Objects of one's own in C++: what the types of objects.hpp become in the file, and what they
// refuse.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "jtpdf/objects.hpp"

namespace {

using namespace jtpdf::literals;
using jtpdf::Box;
using jtpdf::Bytes;
using jtpdf::Colors;
using jtpdf::Document;
using jtpdf::Filter;
using jtpdf::Image;
using jtpdf::ImageObject;

constexpr Box kSmallPage{0_pt, 0_pt, 200_pt, 100_pt};

std::string Lines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\r\n";
  return text;
}

// The object of that number in the finished document, without its number and "endobj".
std::string ObjectOf(Document& doc, int number) {
  const std::string bytes(doc.bytes().begin(), doc.bytes().end());
  const std::string head = "\r\n" + std::to_string(number) + " 0 obj\r\n";
  const std::size_t start = bytes.find(head) + head.size();
  return bytes.substr(start, bytes.find("endobj", start) - start);
}

template <typename Use>
std::string FirstObjectOf(const Use& use) {
  Document doc = Document::memory();
  use(doc);
  doc.finish();
  return ObjectOf(doc, 2);
}

template <typename Body>
std::string ProblemOf(const Body& body) {
  try {
    body();
  } catch (const jtpdf::Error& error) {
    const std::string message = error.what();
    return message.substr(0, message.rfind(": "));
  }
  return "no jtpdf::Error was thrown";
}

const std::string kBytes = "data";

ImageObject Described(Filter filter) {
  ImageObject image;
  image.pieces = {kBytes};
  image.filter = filter;
  image.width = 4;
  image.height = 2;
  return image;
}

std::string Written(const ImageObject& image) {
  return FirstObjectOf([&](Document& doc) { jtpdf::write_image(doc, image); });
}

std::string ImageLines(std::vector<std::string> more) {
  more.insert(more.begin(), "<<");
  for (const char* line : {"/Length 4", ">>", "stream", "data", "endstream"})
    more.emplace_back(line);
  return Lines(more);
}

}  // namespace

// ---- Objects by their text ---------------------------------------------------------------------

TEST(JtpdfObjects, AreWrittenUnderNumbersThatKnowTheirDocument) {
  Document doc = Document::memory();
  const jtpdf::Object later = doc.reserve_object();
  const jtpdf::Object first = doc.write_object("[ " + doc.reference_to(later) + " ]");
  doc.write_object(later, "(x)");
  const jtpdf::Object streamed = doc.reserve_object();
  doc.write_stream(streamed, {{"/A", "1"}}, {Bytes(kBytes), Bytes(kBytes)});
  Document other = Document::memory();
  EXPECT_EQ(ProblemOf([&] { static_cast<void>(other.reference_to(first)); }),
            "reference_to: object belongs to another document");
  EXPECT_EQ(ProblemOf([&] { other.write_object(later, "1"); }),
            "WriteReservedPdfObject: object belongs to another document");
  doc.finish();
  EXPECT_EQ(ObjectOf(doc, 2), "(x)\r\n");
  EXPECT_EQ(ObjectOf(doc, 3), "[ 2 0 R ]\r\n");
  EXPECT_EQ(ObjectOf(doc, 4),
            Lines({"<<", "/A 1", "/Length 8", ">>", "stream", "datadata", "endstream"}));
}

TEST(JtpdfObjects, ThatAreNoneAreErrors) {
  Document doc = Document::memory();
  EXPECT_EQ(ProblemOf([&] { doc.write_object("[ 1"); }), "WritePdfObject");
  EXPECT_EQ(ProblemOf([&] { doc.write_object(std::string_view("1\0", 2)); }),
            "WritePdfObject: value has a NUL at byte 1");
  EXPECT_EQ(ProblemOf([&] {
              doc.write_stream({{"Width", "1"}}, Bytes(kBytes));
            }),
            "WritePdfStreamPieces");
  EXPECT_EQ(ProblemOf([&] { doc.set_page_entry("/Rotate", "90 0"); }), "SetPdfPageEntry");
  static_cast<void>(doc.reserve_object());
  EXPECT_EQ(ProblemOf([&] { doc.finish(); }), "FinalizePdfDoc");
}

TEST(JtpdfObjects, ReserveAndFinishAreRepairable) {
  Document doc = Document::memory();
  const jtpdf::Object object = doc.reserve_object();
  EXPECT_THROW(doc.finish(), jtpdf::Error);
  doc.write_object(object, "null");
  doc.finish();
  EXPECT_GT(doc.bytes().size(), 100U);
}

TEST(JtpdfObjects, EntriesGoToTheCatalogThePageAndTheForm) {
  Document doc = Document::memory();
  doc.set_catalog_entry("/PageLayout", "/SinglePage");
  doc.set_canvas_entry("/Resources/Font/F1", "<< /Type /Font >>");
  doc.set_page_entry("/UserUnit", "2.0");
  jtpdf::turn_page(doc, -1);
  jtpdf::set_page_box(doc, jtpdf::PageBox::trim, kSmallPage.inset(1_in, 10.25_pt));
  jtpdf::set_page_box(doc, jtpdf::PageBox::bleed, kSmallPage);
  jtpdf::set_page_box(doc, jtpdf::PageBox::art, kSmallPage);
  doc.add_page(kSmallPage);
  doc.set_open_page(0, "/FitH null");
  doc.add_bookmark("Página", 0);
  doc.add_bookmark("below", 0, 1);
  EXPECT_EQ(doc.page_count(), 1);
  doc.finish();
  const std::string file(doc.bytes().begin(), doc.bytes().end());
  for (const char* line :
       {"/PageLayout /SinglePage", "/F1 << /Type /Font >>", "/UserUnit 2.0", "/Rotate 270",
        "/TrimBox [72 10.25 128 89.75]", "/BleedBox [0 0 200 100]", "/ArtBox [0 0 200 100]",
        "/Dest [4 0 R /Fit]", "/OpenAction [4 0 R /FitH null]"}) {
    EXPECT_NE(file.find(std::string(line) + "\r\n"), std::string::npos) << line;
  }
}

// ---- The encoder -------------------------------------------------------------------------------

TEST(JtpdfCompress, EncodesContentsInOneLine) {
  Document doc = Document::memory();
  doc.compress([](std::string_view plain) { return "<" + std::to_string(plain.size()) + ">"; },
               "/ASCIIHexDecode");
  doc.draw_content(std::string(200, ' '));
  Document moved = std::move(doc);  // the encoder goes with it
  const jtpdf::Form form = moved.write_canvas();
  moved.finish();
  const std::string object = ObjectOf(moved, form.number());
  EXPECT_NE(object.find("/Filter /ASCIIHexDecode\r\n"), std::string::npos) << object;
  EXPECT_NE(object.find("stream\r\n<"), std::string::npos) << object;
}

TEST(JtpdfCompress, LetsWhatTheEncoderThrowsOut) {
  Document doc = Document::memory();
  bool fails = true;
  doc.compress([&fails](std::string_view) -> std::string {
    if (fails) throw std::runtime_error("no room");
    return "x";
  });
  doc.draw_content(std::string(200, ' '));
  EXPECT_THROW(doc.write_canvas(), std::runtime_error);
  fails = false;
  doc.write_canvas();
  EXPECT_EQ(
      ProblemOf([&] { doc.compress([](std::string_view) { return std::string(); }, "none"); }),
      "SetPdfContentEncoder");
  doc.discard();
}

// ---- Images ------------------------------------------------------------------------------------

TEST(JtpdfImageObject, HasThePredictorOfPngRows) {
  ImageObject image = Described(Filter::flate);
  image.predictor = 15;
  image.bits_per_component = 4;
  image.colors = Colors::indexed(Colors::rgb(), std::string("\xFF\0\0\0\xFF\0", 6));
  image.color_key = {1, 1};
  EXPECT_EQ(Written(image),
            ImageLines({"/BitsPerComponent 4", "/ColorSpace [/Indexed /DeviceRGB 1 <FF000000FF00>]",
                        "/DecodeParms", "<<", "/BitsPerComponent 4", "/Colors 1", "/Columns 4",
                        "/Predictor 15", ">>", "/Filter /FlateDecode", "/Height 2", "/Mask [1 1]",
                        "/Subtype /Image", "/Type /XObject", "/Width 4"}));
}

TEST(JtpdfImageObject, HasTheParametersOfCcitt) {
  ImageObject image = Described(Filter::ccitt_g4);
  image.bits_per_component = 1;
  image.colors = Colors::gray();
  EXPECT_EQ(Written(image),
            ImageLines({"/BitsPerComponent 1", "/ColorSpace /DeviceGray", "/DecodeParms", "<<",
                        "/Columns 4", "/K -1", "/Rows 2", ">>", "/Filter /CCITTFaxDecode",
                        "/Height 2", "/Subtype /Image", "/Type /XObject", "/Width 4"}));
  image.filter = Filter::ccitt_g3_2d;
  image.black_is_1 = image.byte_aligned = image.end_of_line = true;
  image.end_of_block = false;
  image.stencil = true;
  image.decode = {1, 0};
  EXPECT_EQ(Written(image),
            ImageLines({"/Decode [1 0]", "/DecodeParms", "<<", "/BlackIs1 true", "/Columns 4",
                        "/EncodedByteAlign true", "/EndOfBlock false", "/EndOfLine true", "/K 1",
                        "/Rows 2", ">>", "/Filter /CCITTFaxDecode", "/Height 2", "/ImageMask true",
                        "/Subtype /Image", "/Type /XObject", "/Width 4"}));
  image.filter = Filter::ccitt_g3;
  EXPECT_NE(Written(image).find("/K 0\r\n"), std::string::npos);
}

TEST(JtpdfImageObject, LeavesColoursToJpeg2000) {
  ImageObject image = Described(Filter::jpeg2000);
  image.interpolate = true;
  EXPECT_EQ(Written(image), ImageLines({"/Filter /JPXDecode", "/Height 2", "/Interpolate true",
                                        "/Subtype /Image", "/Type /XObject", "/Width 4"}));
}

TEST(JtpdfImageObject, TakesEveryOtherFilter) {
  const std::pair<Filter, const char*> filters[] = {{Filter::flate, "/Filter /FlateDecode"},
                                                    {Filter::lzw, "/Filter /LZWDecode"},
                                                    {Filter::jpeg, "/Filter /DCTDecode"},
                                                    {Filter::jbig2, "/Filter /JBIG2Decode"}};
  for (const auto& [filter, line] : filters) {
    EXPECT_EQ(Written(Described(filter)),
              ImageLines({"/BitsPerComponent 8", "/ColorSpace /DeviceRGB", line, "/Height 2",
                          "/Subtype /Image", "/Type /XObject", "/Width 4"}));
  }
  EXPECT_EQ(Written(Described(Filter::none)).find("/Filter"), std::string::npos);
}

TEST(JtpdfImageObject, NamesMasksGlobalsAndProfiles) {
  Document doc = Document::memory();
  ImageObject mask = Described(Filter::none);
  mask.colors = Colors::gray();
  mask.matte = {1, 0.5, 0};
  ImageObject image = Described(Filter::jpeg);
  image.soft_mask = jtpdf::write_image(doc, mask);
  image.colors = jtpdf::write_icc_colors(doc, kBytes, 4, Filter::flate);
  image.decode = {1, 0, 1, 0, 1, 0, 1, 0};
  const Image written = jtpdf::write_image(doc, image);
  ImageObject bilevel = Described(Filter::jbig2);
  bilevel.jbig2_globals = doc.write_stream({}, kBytes);
  bilevel.stencil_mask = image.soft_mask;
  const Image second = jtpdf::write_image(doc, bilevel);
  doc.draw_image(written, kSmallPage);
  doc.add_page(kSmallPage);
  doc.finish();
  EXPECT_NE(ObjectOf(doc, 2).find("/Matte [1 0.5 0]\r\n"), std::string::npos);
  EXPECT_EQ(ObjectOf(doc, 3), Lines({"<<", "/Alternate /DeviceCMYK", "/Filter /FlateDecode", "/N 4",
                                     "/Length 4", ">>", "stream", "data", "endstream"}));
  const std::string object = ObjectOf(doc, written.number());
  EXPECT_NE(object.find("/ColorSpace [/ICCBased 3 0 R]\r\n"), std::string::npos) << object;
  EXPECT_NE(object.find("/SMask 2 0 R\r\n"), std::string::npos) << object;
  EXPECT_NE(object.find("/Decode [1 0 1 0 1 0 1 0]\r\n"), std::string::npos) << object;
  const std::string other = ObjectOf(doc, second.number());
  EXPECT_NE(other.find("/JBIG2Globals 5 0 R\r\n"), std::string::npos) << other;
  EXPECT_NE(other.find("/Mask 2 0 R\r\n"), std::string::npos) << other;
}

TEST(JtpdfImageObject, RefusesByTheMembersName) {
  const auto message = [](void (*change)(ImageObject&)) {
    ImageObject image = Described(Filter::flate);
    change(image);
    return ProblemOf([&] { Written(image); });
  };
  EXPECT_EQ(message([](ImageObject& i) { i.width = 0; }), "write_image: image.width is 0");
  EXPECT_EQ(message([](ImageObject& i) { i.height = -1; }), "write_image: image.height is -1");
  EXPECT_EQ(message([](ImageObject& i) { i.bits_per_component = 3; }),
            "write_image: image.bits_per_component is 3, none of 1, 2, 4, 8 and 16");
  EXPECT_EQ(message([](ImageObject& i) { i.predictor = 9; }),
            "write_image: image.predictor is 9, none of 1, 2 and 10 to 15");
  EXPECT_EQ(message([](ImageObject& i) {
              i.filter = Filter::jpeg;
              i.predictor = 2;
            }),
            "write_image: image.predictor is one of flate and lzw only");
  EXPECT_EQ(message([](ImageObject& i) {
              i.decode = {0, 1};
            }),
            "write_image: image.decode has 2 numbers, not two for each of 3");
  EXPECT_EQ(message([](ImageObject& i) { i.color_key = {1}; }),
            "write_image: image.color_key has 1 numbers, not two for each of 3");
  EXPECT_EQ(message([](ImageObject& i) { i.soft_mask = i.stencil_mask = Image(7); }),
            "write_image: image.soft_mask stands beside another mask: an image has one");
  EXPECT_EQ(ProblemOf([] { Colors::indexed(Colors::cmyk(), kBytes + "x"); }),
            "Colors::indexed: palette has 5 bytes, not 4 for each of 1 to 256 colours");
  EXPECT_EQ(ProblemOf([] {
              Document doc = Document::memory();
              jtpdf::write_icc_colors(doc, kBytes, 2);
            }),
            "write_icc_colors: components is 2");
}

// ---- Captions ----------------------------------------------------------------------------------

TEST(JtpdfDrawText, IsTextInAFontOfTheReaders) {
  Document doc = Document::memory(jtpdf::millimeter);
  jtpdf::draw_text(doc, "Café (5 €) \\", 1_in, 10_pt, 12.5_pt, 0xff0033_rgb, "Times-Bold");
  const jtpdf::Form form = doc.add_page(kSmallPage);
  doc.finish();
  const std::string object = ObjectOf(doc, form.number());
  EXPECT_NE(object.find("/Times-Bold << /Type /Font /Subtype /Type1 /BaseFont /Times-Bold "
                        "/Encoding /WinAnsiEncoding >>\r\n"),
            std::string::npos);
  EXPECT_NE(object.find("q BT 1 0 0.2 rg /Times-Bold 12.5 Tf 72 10 Td "
                        "(Caf\xE9 \\(5 \x80\\) \\\\) Tj ET Q\r\n"),
            std::string::npos)
      << object;
}

TEST(JtpdfDrawText, RefusesWhatTheFontsLack) {
  Document doc = Document::memory();
  EXPECT_EQ(ProblemOf([&] { jtpdf::draw_text(doc, "日", 0_pt, 0_pt, 1_pt); }),
            "draw_text: text has the character 26085, which these fonts lack");
}
