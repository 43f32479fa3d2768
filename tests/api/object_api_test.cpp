#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "jtpdf/objects.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/diagnostics.h"
#include "support/doc.h"
#include "support/pdf.h"

namespace {

constexpr JTPDFEntry kEntries[] = {
    {"/Subtype", "/Image"}, {"/DecodeParms/Columns", "4"}, {"/DecodeParms/Predictor", "15"}};

std::string Object(Doc& doc, int number) {
  return Pdf(doc.Finish()).Object(number);
}

}  // namespace

TEST(WritePdfStream, HasItsEntriesItsLengthAndALineEndBehindTheData) {
  Doc doc;
  doc.Init();
  int object = 0;
  EXPECT_EQ(0, WritePdfStream(doc, 3, kEntries, "a\0b", 3, &object));
  EXPECT_EQ(2, object);
  EXPECT_BYTES(Lines("2 0 obj", "<<", "/DecodeParms", "<<", "/Columns 4", "/Predictor 15", ">>",
                     "/Subtype /Image", "/Length 3", ">>", "stream", std::string("a\0b", 3),
                     "endstream", "endobj"),
               Object(doc, 2));
}

TEST(WritePdfStream, MayHaveNeitherEntriesNorData) {
  Doc doc;
  doc.Init();
  EXPECT_EQ(0, WritePdfStream(doc, 0, nullptr, nullptr, 0, nullptr));
  EXPECT_BYTES(Lines("2 0 obj", "<<", "/Length 0", ">>", "stream", "", "endstream", "endobj"),
               Object(doc, 2));
}

TEST(WritePdfStreamPieces, WritesThemOneBehindTheOther) {
  Doc doc;
  doc.Init();
  const JTPDFPiece pieces[] = {{"ab", 2}, {nullptr, 0}, {"cde", 3}};
  int object = 0;
  EXPECT_EQ(0, WritePdfStreamPieces(doc, 0, nullptr, 3, pieces, &object));
  EXPECT_BYTES(Lines("2 0 obj", "<<", "/Length 5", ">>", "stream", "abcde", "endstream", "endobj"),
               Object(doc, 2));
}

TEST(WritePdfStream, TakesMoreThanFourGigabytesWithoutReadingThem) {
  const auto count = [](void* context, const char*, size_t size) {
    *static_cast<size_t*>(context) += size;
    return int32_t{0};
  };
  size_t written = 0;
  JTPDFDocument* const doc = CreateCallbackPdfDoc(1, count, &written);
  EXPECT_EQ(0, InitPdfDoc(doc));
  const auto* const nowhere = reinterpret_cast<const char*>(uintptr_t{16});
  EXPECT_EQ(0, WritePdfStream(doc, 0, nullptr, nowhere, 5000000000, nullptr));
  EXPECT_EQ(0, FinalizePdfDoc(doc, nullptr));
  EXPECT_GT(written, 5000000000u);
  DestroyPdfDoc(doc);
}

TEST(WritePdfObject, IsWrittenAsItStands) {
  Doc doc;
  doc.Init();
  int object = 0;
  EXPECT_EQ(0, WritePdfObject(doc, "[ 1  0 R (a\r\nb) ]", &object));
  EXPECT_BYTES(Lines("2 0 obj", "[ 1  0 R (a", "b) ]", "endobj"), Object(doc, object));
}

TEST(ReservePdfObject, IsWrittenLaterUnderItsNumber) {
  Doc doc;
  doc.Init();
  int first = 0;
  int second = 0;
  int between = 0;
  EXPECT_EQ(0, ReservePdfObject(doc, &first));
  EXPECT_EQ(0, ReservePdfObject(doc, &second));
  EXPECT_EQ(0, WritePdfObject(doc, "[2 0 R]", &between));
  const JTPDFPiece piece = {"x", 1};
  EXPECT_EQ(0, WriteReservedPdfStream(doc, second, 0, nullptr, 1, &piece));
  EXPECT_EQ(0, WriteReservedPdfObject(doc, first, "<< /Next 3 0 R >>"));
  EXPECT_EQ(4, between);
  const std::string bytes = doc.Finish();
  // In the order of writing: 4, 3, 2. The table is in the order of the numbers.
  const std::string objects[] = {
      Lines("2 0 obj", "<< /Next 3 0 R >>", "endobj"),
      Lines("3 0 obj", "<<", "/Length 1", ">>", "stream", "x", "endstream", "endobj"),
      Lines("4 0 obj", "[2 0 R]", "endobj")};
  const std::size_t start = Head().size();
  EXPECT_BYTES(objects[2] + objects[1] + objects[0],
               bytes.substr(start, objects[0].size() + objects[1].size() + objects[2].size()));
  const auto entry = [](std::size_t position) {
    const std::string digits = std::to_string(position);
    return std::string(10 - digits.size(), '0') + digits + " 00000 n";
  };
  EXPECT_EQ(1, Count(bytes, Lines(entry(start + objects[2].size() + objects[1].size()),
                                  entry(start + objects[2].size()), entry(start))));
}

TEST(ReservePdfObject, HasToBeUsedOnceBeforeTheEnd) {
  Doc doc;
  doc.Init();
  int object = 0;
  EXPECT_EQ(0, ReservePdfObject(doc, &object));
  EXPECT_EQ(EINVAL, FinalizePdfDoc(doc, nullptr));
  EXPECT_EQ(EINVAL, FinalizePdfDoc(doc, nullptr));
  EXPECT_EQ(0, WriteReservedPdfObject(doc, object, "1"));
  EXPECT_EQ(EINVAL, WriteReservedPdfObject(doc, object, "1"));
  for (const int number : {-1, 0, 1, 3, 1000000}) {
    EXPECT_EQ(EINVAL, WriteReservedPdfObject(doc, number, "1")) << number;
    EXPECT_EQ(EINVAL, WriteReservedPdfStream(doc, number, 0, nullptr, 0, nullptr)) << number;
  }
  EXPECT_BYTES(Lines("2 0 obj", "1", "endobj"), Object(doc, object));
}

struct Refused {
  const char* name;
  const char* key;
  const char* value;
};

class RefusedEntry : public testing::TestWithParam<Refused> {};

TEST_P(RefusedEntry, IsEINVALAndChangesNothing) {
  Doc doc;
  doc.Init();
  const JTPDFEntry entry = {GetParam().key, GetParam().value};
  int object = 77;
  EXPECT_EQ(EINVAL, WritePdfStream(doc, 1, &entry, "x", 1, &object));
  if (std::strncmp(entry.key, "/Length", 7) != 0) {
    EXPECT_EQ(EINVAL, SetPdfCatalogEntry(doc, entry.key, entry.value));
    EXPECT_EQ(EINVAL, SetPdfPageEntry(doc, entry.key, entry.value));
    EXPECT_EQ(EINVAL, SetPdfCanvasEntry(doc, entry.key, entry.value));
  }
  EXPECT_EQ(77, object);
  doc.Form().Page();
  EXPECT_BYTES(Doc().Init().Form().Page(2).Finish(), doc.Finish());
}

INSTANTIATE_TEST_SUITE_P(
    Entry, RefusedEntry,
    testing::Values(Refused{"KeyWithoutSolidus", "Type", "/Page"}, Refused{"EmptyKey", "", "1"},
                    Refused{"Length", "/Length", "1"}, Refused{"BelowLength", "/Length/A", "1"},
                    Refused{"NoValue", "/A", ""}, Refused{"TwoValues", "/A", "1 2"},
                    Refused{"EndOfTheDictionary", "/A", "1 >> endobj"},
                    Refused{"OpenString", "/A", "(a"}, Refused{"Comment", "/A", "1 %"}),
    NameOf<Refused>);

TEST(SetPdfCatalogEntry, StandsBesideTheLibrarysOwn) {
  Doc doc;
  EXPECT_EQ(0, SetPdfCatalogEntry(doc, "/ViewerPreferences/FitWindow", "true"));
  EXPECT_EQ(0, SetPdfCatalogEntry(doc, "/Pages", "77 0 R"));
  doc.Init();
  EXPECT_BYTES(Lines("3 0 obj", "<<", "/Pages 2 0 R", "/Type /Catalog", "/ViewerPreferences", "<<",
                     "/FitWindow true", ">>", ">>", "endobj"),
               Object(doc, 3));
}

TEST(SetPdfPageEntry, CountsForTheNextPageOnly) {
  Doc doc;
  doc.Init().Form();
  EXPECT_EQ(0, SetPdfPageEntry(doc, "/Rotate", "90"));
  EXPECT_EQ(0, SetPdfPageEntry(doc, "/MediaBox", "[0 0 1 1]"));
  EXPECT_EQ(0, SetPdfPageEntry(doc, "/Resources/Font/F1", "<< /Type /Font >>"));
  doc.Page(2, {1, 2, 3, 4, 0}, kA4).Page(2);
  const std::string bytes = doc.Finish();
  const Pdf pdf(bytes);
  const std::string box = "[0.0000 0.0000 595.0000 842.0000]";
  const std::string crop = "[1.0000 2.0000 4.0000 6.0000]";
  EXPECT_BYTES(Lines("5 0 obj", "<<", "/Contents 3 0 R", "/CropBox " + crop, "/Group", "<<",
                     "/CS /DeviceRGB", "/I false", "/K false", "/S /Transparency", ">>",
                     "/MediaBox " + box, "/Parent 7 0 R", "/Resources", "<<", "/Font", "<<",
                     "/F1 << /Type /Font >>", ">>", "/ProcSet [/PDF /ImageB /ImageC]", "/XObject",
                     "<<", "/Fm2 2 0 R", ">>", ">>", "/Rotate 90", "/Type /Page", ">>", "endobj"),
               pdf.Object(5));
  EXPECT_EQ(0, Count(pdf.Object(6), "Rotate"));
}

TEST(SetPdfCanvasEntry, CountsForTheNextFormBesideItsImages) {
  Doc doc;
  doc.Init();
  EXPECT_EQ(0, SetPdfCanvasEntry(doc, "/Resources/Font/F1", "9 0 R"));
  doc.Draw(7);
  DrawPdfContent(doc, "BT /F1 12 Tf (text) Tj ET");
  DrawPdfContent(doc, "");
  doc.Form().Form();
  const std::string bytes = doc.Finish();
  const std::string form = Pdf(bytes).Object(2);
  EXPECT_EQ(1, Count(form, Lines("/Resources", "<<", "/ExtGState", "<<", "/GS0 1 0 R", ">>",
                                 "/Font", "<<", "/F1 9 0 R", ">>", "/XObject", "<<", "/Im7 7 0 R",
                                 ">>", ">>", "/Subtype /Form", "/Type /XObject")));
  EXPECT_EQ(1, Count(form, Lines("/Im7 Do Q", "BT /F1 12 Tf (text) Tj ET", "endstream")));
  EXPECT_EQ(0, Count(Pdf(bytes).Object(3), "Font"));
}

TEST(SetPdfCanvasEntry, IsTakenBackByClearing) {
  Doc doc;
  doc.Init();
  EXPECT_EQ(0, SetPdfCanvasEntry(doc, "/Resources/Font/F1", "9 0 R"));
  doc.Clear().Form();
  EXPECT_BYTES(Doc().Init().Form().Finish(), doc.Finish());
}

// ---- The encoder ----

struct Encoder {
  std::string result;
  int32_t code = 0;
  std::vector<std::string> seen = {};
};

int32_t Encode(void* context, const char* data, size_t size, const char** encoded,
               size_t* encodedSize) {
  Encoder& encoder = *static_cast<Encoder*>(context);
  encoder.seen.emplace_back(data, size);
  *encoded = encoder.result.data();
  *encodedSize = encoder.result.size();
  return encoder.code;
}

TEST(SetPdfContentEncoder, EncodesTheContentsOfForms) {
  Encoder encoder{"short"};
  Doc doc;
  EXPECT_EQ(0, SetPdfContentEncoder(doc, "/FlateDecode", Encode, &encoder));
  doc.Init().Fill(kA4, kRed).Form().Page();
  EXPECT_EQ(0, SetPdfCanvasEntry(doc, "/Resources/Font/F1", "9 0 R"));
  doc.Fill(kA4, kRed).Form();
  const std::string bytes = doc.Finish();
  ASSERT_EQ(2u, encoder.seen.size());
  EXPECT_TRUE(encoder.seen[0].starts_with("/GS0 gs\r\n%rectangle\r\n"));
  EXPECT_EQ(
      1, Count(Pdf(bytes).Object(2), Lines("/Filter /FlateDecode", "/FormType 1", "/Resources")));
  EXPECT_EQ(1,
            Count(Pdf(bytes).Object(2), Lines("/Length 5", ">>", "stream", "short", "endstream")));
  EXPECT_EQ(1, Count(Pdf(bytes).Object(4), "/Filter /FlateDecode\r\n/FormType 1"));
}

TEST(SetPdfContentEncoder, LeavesWhatItDoesNotMakeSmaller) {
  Encoder encoder{std::string(5000, 'x')};
  Doc doc;
  doc.Init();
  EXPECT_EQ(0, SetPdfContentEncoder(doc, "/FlateDecode", Encode, &encoder));
  doc.Fill(kA4, kRed).Form().Form();
  EXPECT_BYTES(Doc().Init().Fill(kA4, kRed).Form().Form().Finish(), doc.Finish());
  EXPECT_EQ(1u, encoder.seen.size()) << "an empty form is not worth asking";
}

TEST(SetPdfContentEncoder, ItsCodeIsTheCallsAndTheCanvasStays) {
  Encoder encoder{"", 4711};
  Doc doc;
  doc.Init().Fill(kA4, kRed);
  EXPECT_EQ(0, SetPdfContentEncoder(doc, "/FlateDecode", Encode, &encoder));
  int form = 77;
  EXPECT_EQ(4711, WritePdfCanvas(doc, &form));
  EXPECT_EQ(77, form);
  EXPECT_EQ(0, SetPdfContentEncoder(doc, nullptr, nullptr, nullptr));
  doc.Form();
  EXPECT_BYTES(Doc().Init().Fill(kA4, kRed).Form().Finish(), doc.Finish());
}

TEST(SetPdfContentEncoder, LeavesWhatWouldTakeAsManyBytesWithItsFilter) {
  Encoder encoder{""};
  const auto formOf = [&encoder] {
    Doc doc;
    doc.Init();
    EXPECT_EQ(0, SetPdfContentEncoder(doc, "/FlateDecode", Encode, &encoder));
    doc.Fill(kA4, kRed).Form();
    return Object(doc, 2);
  };
  formOf();
  const std::size_t saved = std::string("/Filter /FlateDecode\r\n").size();
  encoder.result.assign(encoder.seen[0].size() - saved, 'x');
  EXPECT_EQ(0, Count(formOf(), "/Filter"));
  encoder.result.pop_back();
  EXPECT_EQ(1, Count(formOf(), "/Filter"));
}

TEST(SetPdfContentEncoder, IsNotAskedWhereNothingCanBeWritten) {
  Encoder encoder{"short"};
  Doc doc;
  EXPECT_EQ(0, SetPdfContentEncoder(doc, "/FlateDecode", Encode, &encoder));
  doc.Fill(kA4, kRed);
  EXPECT_NE(0, WritePdfCanvas(doc, nullptr));
  EXPECT_EQ(0u, encoder.seen.size());
}

TEST(SetPdfContentEncoder, WantsAName) {
  Doc doc;
  for (const char* name : {"FlateDecode", "", "/Flate Decode", "/A/B"}) {
    EXPECT_EQ(EINVAL, SetPdfContentEncoder(doc, name, Encode, nullptr)) << name;
  }
  EXPECT_EQ(EINVAL, SetPdfContentEncoder(doc, nullptr, Encode, nullptr));
}

// ---- Bookmarks ----

TEST(AddPdfBookmark, BuildsTheOutline) {
  Doc doc;
  doc.Init().Form().Page(2).Page(2);
  EXPECT_EQ(0, AddPdfBookmark(doc, 0, L"a", 0));
  EXPECT_EQ(0, AddPdfBookmark(doc, 1, L"b", 1));
  EXPECT_EQ(0, AddPdfBookmark(doc, 1, nullptr, 1));
  EXPECT_EQ(0, AddPdfBookmark(doc, 0, L"c", 0));
  const std::string bytes = doc.Finish();
  const Pdf pdf(bytes);
  EXPECT_BYTES(Lines("8 0 obj", "<<", "/Count 4", "/First 9 0 R", "/Last 12 0 R", "/Type /Outlines",
                     ">>", "endobj"),
               pdf.Object(8));
  EXPECT_BYTES(
      Lines("9 0 obj", "<<", "/Count 2", "/Dest [5 0 R /Fit]", "/First 10 0 R", "/Last 11 0 R",
            "/Next 12 0 R", "/Parent 8 0 R", "/Title " + AsciiLiteral("a"), ">>", "endobj"),
      pdf.Object(9));
  EXPECT_BYTES(Lines("10 0 obj", "<<", "/Dest [6 0 R /Fit]", "/Next 11 0 R", "/Parent 9 0 R",
                     "/Title " + AsciiLiteral("b"), ">>", "endobj"),
               pdf.Object(10));
  EXPECT_BYTES(Lines("11 0 obj", "<<", "/Dest [6 0 R /Fit]", "/Parent 9 0 R", "/Prev 10 0 R",
                     "/Title ()", ">>", "endobj"),
               pdf.Object(11));
  EXPECT_BYTES(Lines("12 0 obj", "<<", "/Dest [5 0 R /Fit]", "/Parent 8 0 R", "/Prev 9 0 R",
                     "/Title " + AsciiLiteral("c"), ">>", "endobj"),
               pdf.Object(12));
  EXPECT_EQ(1, Count(pdf.Object(13), Lines("/Outlines 8 0 R", "/Pages 7 0 R", "/Type /Catalog")));
}

TEST(AddPdfBookmark, RefusesLevelsThatSkipOneAndPagesThatAreNot) {
  Doc doc;
  doc.Init().Form();
  EXPECT_EQ(EINVAL, AddPdfBookmark(doc, 1, L"a", 0));
  EXPECT_EQ(EINVAL, AddPdfBookmark(doc, -1, L"a", 0));
  EXPECT_EQ(EINVAL, AddPdfBookmark(doc, 0, L"a", -1));
  EXPECT_EQ(0, AddPdfBookmark(doc, 0, L"a", 1));
  EXPECT_EQ(EINVAL, AddPdfBookmark(doc, 2, L"a", 0));
  doc.Page(2);
  EXPECT_EQ(EINVAL, FinalizePdfDoc(doc, nullptr));
  doc.Page(2);
  EXPECT_EQ(1, Count(doc.Finish(), "/Type /Outlines"));
}

// ---- The page to show first ----

TEST(SetPdfOpenPage, NamesThePageInTheCatalog) {
  Doc doc;
  EXPECT_EQ(0, SetPdfOpenPage(doc, 7, nullptr));
  EXPECT_EQ(0, SetPdfOpenPage(doc, 1, "/XYZ null null 1.5"));
  EXPECT_EQ(0, SetPdfCatalogEntry(doc, "/OpenAction", "[0 /Fit]"));
  doc.Init().Form().Page(2).Page(2);
  EXPECT_EQ(1, Count(doc.Finish(), Lines("/OpenAction [6 0 R /XYZ null null 1.5]", "/Pages 7 0 R",
                                         "/Type /Catalog")));
}

TEST(SetPdfOpenPage, FitsThePageUnlessToldOtherwise) {
  Doc doc;
  doc.Init().Form().Page(2);
  EXPECT_EQ(0, SetPdfOpenPage(doc, 0, nullptr));
  EXPECT_EQ(1, Count(doc.Finish(), Lines("/OpenAction [4 0 R /Fit]", "/Pages 5 0 R")));
}

TEST(SetPdfOpenPage, RefusesPagesThatAreNotAndWhatIsNoView) {
  Doc doc;
  doc.Init().Form();
  EXPECT_EQ(EINVAL, SetPdfOpenPage(doc, -1, "/Fit"));
  for (const char* view : {"", "Fit", "100", "/Fit]", "/Fit] [0", "/Fit (", "/Fit % all"}) {
    EXPECT_EQ(EINVAL, SetPdfOpenPage(doc, 0, view)) << view;
  }
  doc.Page(2);
  EXPECT_EQ(0, SetPdfOpenPage(doc, 1, "/Fit"));
  EXPECT_EQ(EINVAL, FinalizePdfDoc(doc, nullptr));
  doc.Page(2);
  EXPECT_EQ(1, Count(doc.Finish(), "/OpenAction [6 0 R /Fit]"));
}

TEST(ObjectApi, IsRefusedBeforeInitLikeEveryWriter) {
  Doc doc;
  int object = 77;
  errno = 0;
  EXPECT_EQ(-1, WritePdfObject(doc, "1", &object));
  EXPECT_EQ(-1, WritePdfStream(doc, 0, nullptr, "x", 1, &object));
  EXPECT_EQ(-1, ReservePdfObject(doc, &object));
  EXPECT_EQ(77, object);
}

TEST(ObjectApi, SaysInDiagnosticModeWhatItRefused) {
  Doc doc;
  doc.Init();
  Diagnostics diagnostics;
  EXPECT_EQ(EINVAL, WritePdfObject(doc, "2 0 R", nullptr));
  EXPECT_EQ(ErrorLine("WritePdfObject", EINVAL), diagnostics.Take());
}
