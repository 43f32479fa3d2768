#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <functional>

#include "jtpdf/jtpdf.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/diagnostics.h"
#include "support/doc.h"
#include "support/pdf.h"
#include "support/temp_dir.h"

constexpr char kNotInitialized[] = "Cannot write to a non-initialized document";
constexpr char kAlphaOfJPEG2000[] = "When using JPEG2000 no separate alpha channel is allowed";
constexpr JTPDFRect kBox = {10, 20, 30, 40, 0};

// The content of the form that the drawing makes.
template <typename Drawing>
std::string Drawn(const Drawing& draw, double unit = 1) {
  Doc doc(unit);
  doc.Init();
  draw(doc);
  const std::string object = Pdf(doc.Form().Finish()).Object(2);
  const std::size_t begin = object.find("stream\r\n") + 8;
  return object.substr(begin, object.find("\r\nendstream", begin) - begin);
}

std::string Matrix(const std::string& last) {
  return "1 0 0 1 25.0000 40.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm " + last +
         " -15.0000 -20.0000 cm";
}

const std::string kPath = Matrix("1 0 0 1") + " 0 0 30.0000 40.0000 re";

TEST(ClearPdfCanvas, RemovesTheDrawingAndKeepsTheExtent) {
  Doc doc;
  doc.Init().Extent({1, 2, 3, 4, 5}).Draw(7).Clear().Form();
  const std::string form = Pdf(doc.Finish()).Object(2);
  EXPECT_EQ(0, Count(form, "Im7"));
  EXPECT_EQ(1, Count(form, "/BBox [1.0000 2.0000 4.0000 6.0000]\r\n"));
}

TEST(GetPdfCanvasBoundingBox, IsZeroUntilItIsSet) {
  Doc doc;
  const JTPDFRect zero = GetPdfCanvasBoundingBox(doc);
  for (const double field : {zero.left, zero.bottom, zero.width, zero.height, zero.angle}) {
    EXPECT_EQ(0, field);
  }
  doc.Extent({1, 2, 3, 4, 5});
  const JTPDFRect box = GetPdfCanvasBoundingBox(doc);
  EXPECT_EQ(1, box.left);
  EXPECT_EQ(2, box.bottom);
  EXPECT_EQ(3, box.width);
  EXPECT_EQ(4, box.height);
  EXPECT_EQ(5, box.angle);
}

TEST(DrawPdfImage, FillsTheExtent) {
  EXPECT_BYTES(Joined("/GS0 gs", "q " + Matrix("30.0000 0 0 40.0000") + "  /Im12 Do Q"),
               Drawn([](Doc& doc) { doc.Extent(kBox).Draw(12); }));
}

TEST(DrawPdfImageInRect, FillsItsBox) {
  EXPECT_BYTES(Joined("/GS0 gs", "q " + Matrix("30.0000 0 0 40.0000") + "  /Im12 Do Q"),
               Drawn([](Doc& doc) { doc.Draw(12, kBox); }));
}

TEST(DrawPdfImageInRect, ConvertsItsUnit) {
  EXPECT_EQ(1, Count(Drawn(
                         [](Doc& doc) {
                           doc.Draw(1, {0, 0, 10, 10, 0});
                         },
                         PDFCoordinateUnitMillimeter),
                     " 28.3465 0 0 28.3465 "));
}

TEST(FillPdfRectangle, FillsOnly) {
  EXPECT_BYTES(
      Joined("/GS0 gs", "%rectangle", "q", "1.0000 0.0000 0.0000 rg", "0.0000 w " + kPath, "F Q"),
      Drawn([](Doc& doc) { doc.Fill(kBox, kRed); }));
}

TEST(StrokePdfRectangle, StrokesOnly) {
  EXPECT_BYTES(
      Joined("/GS0 gs", "%rectangle", "q", "0.0000 0.0000 1.0000 RG", "2.0000 w " + kPath, "S Q"),
      Drawn([](Doc& doc) { doc.Stroke(kBox, kBlue, 2); }));
}

TEST(FillAndStrokePdfRectangle, DoesBoth) {
  EXPECT_BYTES(Joined("/GS0 gs", "%rectangle", "q", "1.0000 0.0000 0.0000 rg",
                      "0.0000 0.0000 1.0000 RG", "2.0000 w " + kPath, "B Q"),
               Drawn([](Doc& doc) { doc.FillAndStroke(kBox, kRed, kBlue, 2); }));
}

TEST(FillAndStrokePdfRectangle, LeavesOutTheColourNone) {
  EXPECT_BYTES(Joined("/GS0 gs", "%rectangle", "q", "2.0000 w " + kPath, "S Q"),
               Drawn([](Doc& doc) { doc.FillAndStroke(kBox, kNone, kNone, 2); }));
}

TEST(FillAndStrokePdfCircle, DrawsTheInscribedEllipse) {
  EXPECT_BYTES(Joined("/GS0 gs", "2.0000 w", "1.0000 0.0000 0.0000 rg 0.0000 0.0000 1.0000 RG",
                      "q 1 0 0 1  50.0000 25.0000  cm", "-49.0000 0  m",
                      "-49.0000 13.2428 -27.0374 24.0000 0 24.0000 c",
                      "27.0374 24.0000 49.0000 13.2428 49.0000 0 c",
                      "49.0000 -13.2428 27.0374 -24.0000 0 -24.0000 c",
                      "-27.0374 -24.0000 -49.0000 -13.2428 -49.0000 0 c", "b Q"),
               Drawn([](Doc& doc) {
                 doc.Circle({0, 0, 100, 50, 0}, kRed, kBlue, 2);
               }));
}

TEST(InsetPdfRect, MovesTheSidesAndKeepsTheAngle) {
  JTPDFRect rect = {0, 0, 8, 8, 30};
  InsetPdfRect(&rect, 5, 3);
  EXPECT_EQ(5, rect.left);
  EXPECT_EQ(3, rect.bottom);
  EXPECT_EQ(-2, rect.width);
  EXPECT_EQ(2, rect.height);
  EXPECT_EQ(30, rect.angle);
}

TEST(CanvasFunctions, WorkInAnyState) {
  Doc doc;
  doc.Extent(kBox).Draw(2).Init().Fill(kBox, kRed).Finish();
  doc.Circle(kBox, kRed, kBlue, 1).Clear().Stroke(kBox, kRed, 1);
  EXPECT_EQ(10, GetPdfCanvasBoundingBox(doc).left);
}

TEST(WritePdfPage, TakesTheCropBoxBeforeTheMediaBox) {
  Doc doc;
  doc.Init().Page(2, {1, 1, 1, 1, 0}, {0, 0, 9, 9, 0});
  const std::string page = Pdf(doc.Finish()).Object(3);
  EXPECT_EQ(1, Count(page, "/CropBox [1.0000 1.0000 2.0000 2.0000]\r\n"));
  EXPECT_EQ(1, Count(page, "/MediaBox [0.0000 0.0000 9.0000 9.0000]\r\n"));
}

TEST(WritePdfImage, PassesTheDescriptorOn) {
  const TPdfImageDescriptor image = {"data!", 4,  kPdfCompressionLZW, 3,
                                     5,       16, kPdfColorSpaceICC,  9};
  Doc doc;
  doc.Init().Image(image, {true, kPdfImageRoleShape, L"n", {{"Extra", L"x"}}});
  EXPECT_EQ(2, doc.last);
  EXPECT_BYTES(
      Lines("2 0 obj", "<<", "/BitsPerComponent 16", "/ColorSpace 9 0 R",
            "/Extra " + AsciiLiteral("x"), "/Filter /LZWDecode", "/Height 5",
            "/Intent /RelativeColorimetric", "/JTImageName " + AsciiLiteral("n"),
            "/JTImageType /Shape", "/Mask [255 255 255 255 255 255]", "/Subtype /Image",
            "/Type /XObject", "/Width 3", "/Length 4", ">>", "stream", "dataendstream", "endobj"),
      Pdf(doc.Finish()).Object(2));
}

TEST(WritePdfImage, NullNameCountsAsEmptyAndIsNoted) {
  Diagnostics diagnostics;
  Doc doc;
  doc.Init().Image(grey, {.name = nullptr});
  EXPECT_EQ(1, Count(diagnostics.Take(), "Error: unable to convert string to UTF-16 BE:0x"));
  EXPECT_EQ(1, Count(Pdf(doc.Finish()).Object(2), "/JTImageName ()\r\n"));
}

TEST(WritePdfImage, NullDataIsAllowedForNoBytes) {
  TPdfImageDescriptor empty = grey;
  empty.data = nullptr;
  empty.size = 0;
  Doc doc;
  doc.Init().Image(empty);
  EXPECT_EQ(1, Count(Pdf(doc.Finish()).Object(2), "/Length 0\r\n>>\r\nstream\r\nendstream"));
}

TEST(WritePdfImageWithAlpha, WritesTheAlphaImageFirst) {
  const TPdfImageDescriptor alpha = Picture("alpha", kPdfColorSpaceGray, kPdfCompressionFlate);
  Doc doc;
  doc.Init().ImageWithAlpha(Picture("main", kPdfColorSpaceRGB), &alpha,
                            {.role = kPdfImageRoleClipArt, .items = {{"Extra", L"x"}}});
  EXPECT_EQ(3, doc.last);
  const Pdf pdf(doc.Finish());
  EXPECT_BYTES(Lines("2 0 obj", "<<", "/BitsPerComponent 8", "/ColorSpace /DeviceGray",
                     "/Filter /FlateDecode", "/Height 480", "/Intent /RelativeColorimetric",
                     "/JTImageName " + AsciiLiteral("scan"), "/JTImageType /Alpha",
                     "/Subtype /Image", "/Type /XObject", "/Width 640", "/Length 5", ">>", "stream",
                     "alphaendstream", "endobj"),
               pdf.Object(2));
  EXPECT_BYTES(Lines("3 0 obj", "<<", "/BitsPerComponent 8", "/ColorSpace /DeviceRGB",
                     "/Extra " + AsciiLiteral("x"), "/Filter /DCTDecode", "/Height 480",
                     "/Intent /RelativeColorimetric", "/JTImageName " + AsciiLiteral("scan"),
                     "/JTImageType /ClipArt", "/SMask 2 0 R", "/Subtype /Image", "/Type /XObject",
                     "/Width 640", "/Length 4", ">>", "stream", "mainendstream", "endobj"),
               pdf.Object(3));
}

TEST(WritePdfImageWithAlpha, WithoutAlphaWritesOneObject) {
  Doc doc;
  doc.Init().ImageWithAlpha(grey, nullptr);
  EXPECT_EQ(2, doc.last);
  EXPECT_BYTES(Doc().Init().Image(grey).Finish(), doc.Finish());
}

TEST(WritePdfImageWithAlpha, AFailingAlphaImageIsReportedAsAnImageAndEndsTheCall) {
  Doc doc;
  Diagnostics diagnostics;
  int number = 77;
  errno = 0;
  EXPECT_EQ(
      -1, WritePdfImageWithAlpha(doc, &grey, &grey, kPdfImageRolePhoto, L"n", 0, nullptr, &number));
  EXPECT_EQ(77, number);
  EXPECT_EQ(RefusalLine("WritePdfImage", kNotInitialized), diagnostics.Take());
}

TEST(WritePdfImageWithAlpha, AFailingAlphaImageLeavesTheMainImageUnwritten) {
  TempDir dir;
  Doc doc(dir.File("a.pdf"));
  doc.Init().Finish();
  const std::string before = ReadFile(dir.File("a.pdf"));
  Diagnostics diagnostics;
  int number = 77;
  errno = 0;
  EXPECT_NE(
      0, WritePdfImageWithAlpha(doc, &grey, &grey, kPdfImageRolePhoto, L"n", 0, nullptr, &number));
  EXPECT_EQ(77, number);
  const std::string report = diagnostics.Take();
  EXPECT_TRUE(report.starts_with("WritePdfImage: JTPDF error: ")) << report;
  EXPECT_EQ(1, Count(report, "\n")) << report;
  EXPECT_BYTES(before, ReadFile(dir.File("a.pdf")));
}

TEST(WritePdfImageWithAlpha, JPEG2000FailsAfterTheAlphaImageWasWritten) {
  Doc doc;
  doc.Init();
  Diagnostics diagnostics;
  int number = 77;
  const TPdfImageDescriptor main = Picture("main", kPdfColorSpaceRGB, kPdfCompressionJPEG2000);
  errno = 0;
  EXPECT_EQ(
      -1, WritePdfImageWithAlpha(doc, &main, &grey, kPdfImageRolePhoto, L"n", 0, nullptr, &number));
  EXPECT_EQ(77, number);
  EXPECT_EQ(RefusalLine("WritePdfImageWithAlpha", kAlphaOfJPEG2000), diagnostics.Take());
  doc.Image(grey);
  EXPECT_EQ(3, doc.last) << "the alpha image has number 2";
  EXPECT_EQ(1, Count(Pdf(doc.Finish()).Object(2), "/JTImageType /Alpha\r\n"));
}

TEST(WritePdfImageWithAlpha, JPEG2000WithoutAlphaSucceeds) {
  Doc doc;
  doc.Init().ImageWithAlpha(Picture("main", kPdfColorSpaceRGB, kPdfCompressionJPEG2000), nullptr);
  EXPECT_EQ(1, Count(Pdf(doc.Finish()).Object(2), "/SMaskInData 1\r\n"));
}

TEST(WritePdfImageJPEG2000, FixesTheColourSpaceAndNotTheCompression) {
  for (const int colorSpace : {0, 1, 2, 3, 99, INT_MIN}) {
    Diagnostics diagnostics;
    Doc doc;
    doc.Init().ImageJPEG2000(
        Picture("x", static_cast<TPdfColorSpace>(colorSpace), kPdfCompressionFlate, 9));
    const std::string object = Pdf(doc.Finish()).Object(2);
    EXPECT_EQ(1, Count(object, "/ColorSpace /DeviceRGB\r\n")) << object;
    EXPECT_EQ(1, Count(object, "/Filter /FlateDecode\r\n")) << object;
    EXPECT_EQ(0, Count(object, "/Decode ")) << object;
    EXPECT_EQ("", diagnostics.Take());
  }
}

TEST(WritePdfImageJPEG2000, WritesNoColourSpaceForJPEG2000Data) {
  Doc doc;
  doc.Init().ImageJPEG2000(Picture("x", kPdfColorSpaceGray, kPdfCompressionJPEG2000),
                           {.items = {{"ColorSpace", L"mine"}}});
  const std::string object = Pdf(doc.Finish()).Object(2);
  EXPECT_EQ(1, Count(object, "/ColorSpace " + AsciiLiteral("mine") + "\r\n")) << object;
  EXPECT_EQ(1, Count(object, "/Filter /JPXDecode\r\n")) << object;
  EXPECT_EQ(1, Count(object, "/SMaskInData 1\r\n")) << object;
}

TEST(WritePdfICCProfile, GivesTheNumberOfTheColourSpace) {
  Doc doc;
  doc.Init().Profile("profile");
  EXPECT_EQ(3, doc.last);
  EXPECT_BYTES(Lines("3 0 obj", "[ /ICCBased 2 0 R ]", "endobj"), Pdf(doc.Finish()).Object(3));
}

// ---- What all writers share ----

struct Writer {
  const char* name;
  std::function<int32_t(JTPDFDocument*, int*)> call;
};

const Writer kWriters[] = {
    {"WritePdfCanvas", [](JTPDFDocument* doc, int* out) { return WritePdfCanvas(doc, out); }},
    {"WritePdfPage", [](JTPDFDocument* doc, int*) { return WritePdfPage(doc, 2, kA4, kA4); }},
    {"WritePdfImage",
     [](JTPDFDocument* doc, int* out) {
       return WritePdfImage(doc, &grey, false, kPdfImageRolePhoto, L"n", 0, nullptr, out);
     }},
    {"WritePdfImageWithAlpha",
     [](JTPDFDocument* doc, int* out) {
       return WritePdfImageWithAlpha(doc, &grey, nullptr, kPdfImageRolePhoto, L"n", 0, nullptr,
                                     out);
     }},
    {"WritePdfImageJPEG2000",
     [](JTPDFDocument* doc, int* out) {
       return WritePdfImageJPEG2000(doc, &grey, kPdfImageRolePhoto, L"n", 0, nullptr, out);
     }},
    {"WritePdfICCProfile",
     [](JTPDFDocument* doc, int* out) {
       return WritePdfICCProfile(doc, "x", 1, kPdfCompressionFlate, out);
     }},
};

class Writers : public testing::TestWithParam<Writer> {};

INSTANTIATE_TEST_SUITE_P(Export, Writers, testing::ValuesIn(kWriters), NameOf<Writer>);

TEST_P(Writers, AreRefusedBeforeInitAndLeaveTheOutParameterAlone) {
  Doc doc;
  Diagnostics diagnostics;
  int out = 77;
  errno = 0;
  EXPECT_EQ(-1, GetParam().call(doc, &out));
  EXPECT_EQ(77, out);
  EXPECT_EQ(RefusalLine(GetParam().name, kNotInitialized), diagnostics.Take());
}

TEST_P(Writers, CarryAStaleErrnoInTheirRefusal) {
  Doc doc;
  Diagnostics diagnostics;
  int out = 77;
  errno = EACCES;
  EXPECT_EQ(EACCES, GetParam().call(doc, &out));
  EXPECT_EQ(77, out);
  EXPECT_EQ(ErrorLine(GetParam().name, EACCES), diagnostics.Take());
  JTPDFSetDiagnosticMode(false);
  EXPECT_EQ(EACCES, GetParam().call(doc, &out));
  EXPECT_EQ("", diagnostics.Take());
}

TEST_P(Writers, FailOnAClosedFileAndLeaveTheOutParameterAlone) {
  TempDir dir;
  Doc doc(dir.File("a.pdf"));
  doc.Init().Finish();
  Diagnostics diagnostics;
  int out = 77;
  errno = EIO;
  EXPECT_EQ(EIO, GetParam().call(doc, &out));
  EXPECT_EQ(77, out);
  EXPECT_EQ(ErrorLine(GetParam().name, EIO), diagnostics.Take());
}

TEST_P(Writers, SucceedInAFinalisedMemoryDocument) {
  Doc doc;
  const std::string bytes = doc.Init().Finish();
  errno = 4242;
  int out = 0;
  EXPECT_EQ(0, GetParam().call(doc, &out));
  EXPECT_EQ(4242, errno);
  EXPECT_BYTES(bytes, BytesOf(doc));
}

TEST_P(Writers, TakeNullWhereTheNumberIsNotWanted) {
  Doc with;
  Doc without;
  with.Init();
  without.Init();
  int out = 0;
  EXPECT_EQ(0, GetParam().call(with, &out));
  EXPECT_EQ(0, GetParam().call(without, nullptr));
  EXPECT_BYTES(with.Finish(), without.Finish());
}

TEST(WritePdfCanvas, RefusedLeavesTheDrawing) {
  Doc doc;
  doc.Draw(7);
  int out = 77;
  EXPECT_NE(0, WritePdfCanvas(doc, &out));
  doc.Init().Form();
  EXPECT_EQ(1, Count(Pdf(doc.Finish()).Object(2), "/Im7 Do Q"));
}

TEST(WritePdfPage, RefusedQueuesNoPage) {
  Doc doc;
  EXPECT_NE(0, WritePdfPage(doc, 2, kA4, kA4));
  EXPECT_BYTES(Doc().Init().Finish(), doc.Init().Finish());
}
