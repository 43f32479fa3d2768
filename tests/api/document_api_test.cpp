#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "jtpdf/jtpdf.h"
#include "support/bytes.h"
#include "support/diagnostics.h"
#include "support/doc.h"
#include "support/temp_dir.h"

constexpr char kInitializedTwice[] = "PDF document cannot be initialized more than once";
constexpr char kFinalized[] = "When finalized, a pdf document cannot be re-initialized";
constexpr char kNotInitialized[] = "Cannot write to a non-initialized document";

TEST(DestroyPdfDoc, IgnoresNull) {
  errno = 4242;
  DestroyPdfDoc(nullptr);
  EXPECT_EQ(4242, errno);
}

TEST(CreateFilePdfDoc, NeitherOpensNorCreatesTheFile) {
  TempDir dir;
  Doc doc(dir.File("a.pdf"));
  EXPECT_FALSE(std::filesystem::exists(dir.File("a.pdf")));
}

TEST(CreateFilePdfDoc, TakesCreatorBeforeAuthor) {
  TempDir dir;
  const std::string bytes = Doc(dir.File("a.pdf"), L"made", L"wrote").Init().Finish();
  EXPECT_EQ(1, Count(bytes, "/Author " + AsciiLiteral("wrote") + "\r\n"));
  EXPECT_EQ(1, Count(bytes, "/Creator " + AsciiLiteral("made") + "\r\n"));
}

TEST(CreateFilePdfDoc, WritesToUnicodeFileNames) {
  TempDir dir;
  const std::wstring name = dir.File("").wstring() + L"\u00FC\u4E2D\U0001F600.pdf";
  JTPDFDocument* const doc = CreateFilePdfDoc(1, name.c_str(), nullptr, nullptr);
  EXPECT_EQ(0, InitPdfDoc(doc));
  EXPECT_EQ(0, FinalizePdfDoc(doc, nullptr));
  DestroyPdfDoc(doc);
  EXPECT_BYTES(Doc().Init().Finish(),
               ReadFile(dir.File("\xC3\xBC\xE4\xB8\xAD\xF0\x9F\x98\x80.pdf")));
}

TEST(CreateFilePdfDoc, KeepsNoPointerOfTheCaller) {
  TempDir dir;
  std::wstring name = dir.File("a.pdf").wstring();
  std::wstring creator = L"creator";
  JTPDFDocument* const doc = CreateFilePdfDoc(1, name.c_str(), creator.c_str(), creator.c_str());
  name.assign(name.size(), L'x');
  creator.assign(creator.size(), L'x');
  EXPECT_EQ(0, InitPdfDoc(doc));
  EXPECT_EQ(0, FinalizePdfDoc(doc, nullptr));
  DestroyPdfDoc(doc);
  EXPECT_EQ(1, Count(ReadFile(dir.File("a.pdf")), AsciiLiteral("creator") + "\r\n/Creator"));
}

TEST(InitPdfDoc, InAMissingDirectoryGivesTheSystemsCodeAndOneLine) {
  TempDir dir;
  Doc doc(dir.File("missing/a.pdf"));
  Diagnostics diagnostics;
  for (const int before : {0, EDOM}) {
    errno = before;
    EXPECT_EQ(ENOENT, InitPdfDoc(doc));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(ErrorLine("InitPdfDoc", ENOENT), diagnostics.Take());
  }
  // A failed open may be repeated.
  std::filesystem::create_directory(dir.File("missing"));
  EXPECT_BYTES(Doc().Init().Finish(), doc.Init().Finish());
}

TEST(InitPdfDoc, OnADirectoryGivesTheSystemsCode) {
#if defined(_WIN32)
  constexpr int kCode = EACCES;
#else
  constexpr int kCode = EISDIR;
#endif
  TempDir dir;
  Doc doc(dir.File(""));
  errno = 0;
  EXPECT_EQ(kCode, InitPdfDoc(doc));
}

TEST(InitPdfDoc, WithANameThatIsNotUnicodeGivesEILSEQ) {
  for (const unsigned unit : {0xD800u, 0xDFFFu, 0x110000u, 0xFFFFFFFFu}) {
    if (sizeof(wchar_t) == 2 && unit > 0xFFFF) continue;
    const wchar_t name[] = {L'a', static_cast<wchar_t>(unit), 0};
    JTPDFDocument* const doc = CreateFilePdfDoc(1, name, nullptr, nullptr);
    Diagnostics diagnostics;
    errno = 0;
    EXPECT_EQ(EILSEQ, InitPdfDoc(doc));
    EXPECT_EQ(ErrorLine("InitPdfDoc", EILSEQ), diagnostics.Take());
    EXPECT_EQ(EILSEQ, InitPdfDoc(doc));
    DestroyPdfDoc(doc);
  }
}

TEST(InitPdfDoc, TwiceIsRefusedWithMinusOneAndTheMessage) {
  Doc doc;
  doc.Init();
  Diagnostics diagnostics;
  errno = 0;
  EXPECT_EQ(-1, InitPdfDoc(doc));
  EXPECT_EQ(RefusalLine("InitPdfDoc", kInitializedTwice), diagnostics.Take());
  EXPECT_BYTES(Doc().Init().Finish(), doc.Finish());
}

TEST(InitPdfDoc, ARefusalCarriesWhateverErrnoWasThere) {
  Doc doc;
  doc.Init();
  Diagnostics diagnostics;
  errno = ERANGE;
  EXPECT_EQ(ERANGE, InitPdfDoc(doc));
  EXPECT_EQ(ErrorLine("InitPdfDoc", ERANGE), diagnostics.Take());
  errno = 4242;
  EXPECT_EQ(4242, InitPdfDoc(doc));
  EXPECT_EQ(ErrorLine("InitPdfDoc", 4242), diagnostics.Take());
  EXPECT_EQ(4242, errno) << "a report leaves errno alone";
  errno = -1;
  EXPECT_EQ(-1, InitPdfDoc(doc));
}

TEST(InitPdfDoc, AfterFinalizingSaysFinalized) {
  Doc doc;
  doc.Init().Finish();
  Diagnostics diagnostics;
  errno = 0;
  EXPECT_EQ(-1, InitPdfDoc(doc));
  EXPECT_EQ(RefusalLine("InitPdfDoc", kFinalized), diagnostics.Take());
}

TEST(FinalizePdfDoc, TwiceSucceedsAndWarns) {
  Doc doc;
  const std::string bytes = doc.Init().Form().Page().Finish("once");
  Diagnostics diagnostics;
  EXPECT_BYTES(bytes, doc.Finish("twice"));
  EXPECT_EQ("Warning: Finalize called multiple times. Ignored.\n", diagnostics.Take());
}

TEST(FinalizePdfDoc, BeforeInitIsRefused) {
  Doc doc;
  Diagnostics diagnostics;
  errno = 0;
  EXPECT_EQ(-1, FinalizePdfDoc(doc, nullptr));
  EXPECT_EQ(RefusalLine("FinalizePdfDoc", kNotInitialized), diagnostics.Take());
  EXPECT_EQ(nullptr, GetPdfData(doc));
  EXPECT_BYTES(Doc().Init().Finish(), doc.Init().Finish());
}

TEST(FinalizePdfDoc, ClosingTextIsTheLastLine) {
  EXPECT_TRUE(Doc().Init().Finish("closing").ends_with("%%EOF\r\nclosing\r\n"));
  EXPECT_TRUE(Doc().Init().Finish("").ends_with("%%EOF\r\n"));
  EXPECT_TRUE(Doc().Init().Finish(nullptr).ends_with("%%EOF\r\n"));
}

TEST(GetPdfData, IsNullForAFileDocumentAtAnyTime) {
  TempDir dir;
  Doc doc(dir.File("a.pdf"));
  EXPECT_EQ(nullptr, GetPdfData(doc));
  doc.Init();
  EXPECT_EQ(nullptr, GetPdfData(doc));
  doc.Finish();
  EXPECT_EQ(nullptr, GetPdfData(doc));
  EXPECT_EQ(0u, GetPdfDataSize(doc));
}

TEST(GetPdfData, IsNullForAMemoryDocumentBeforeItIsFinalised) {
  Doc doc;
  EXPECT_EQ(nullptr, GetPdfData(doc));
  EXPECT_EQ(0u, GetPdfDataSize(doc));
  doc.Init();
  EXPECT_EQ(nullptr, GetPdfData(doc));
  EXPECT_EQ(0u, GetPdfDataSize(doc));
}

TEST(GetPdfDataSize, CountsTheBytesWithTheirNuls) {
  const std::string data(100, '\0');
  Doc doc;
  doc.Init().Image(Picture(data)).Finish();
  ASSERT_NE(nullptr, GetPdfData(doc));
  const std::string bytes(GetPdfData(doc), GetPdfDataSize(doc));
  EXPECT_EQ(1, Count(bytes, "stream\r\n" + data + "endstream"));
  EXPECT_TRUE(bytes.ends_with("%%EOF\r\n"));
  EXPECT_EQ('\0', GetPdfData(doc)[GetPdfDataSize(doc)]);
}

TEST(GetPdfData, StaysWhereItIs) {
  Doc doc;
  doc.Init().Finish();
  const char* const data = GetPdfData(doc);
  doc.Image(grey).Info("A", L"b").Finish();
  EXPECT_EQ(data, GetPdfData(doc));
}

TEST(SetPdfMgMk, IsReadBackInAnyState) {
  Doc doc;
  EXPECT_FALSE(GetPdfMgMk(doc));
  doc.Mark(true);
  EXPECT_TRUE(GetPdfMgMk(doc));
  doc.Init();
  EXPECT_TRUE(GetPdfMgMk(doc));
  const std::string bytes = doc.Finish();
  EXPECT_EQ(1, Count(bytes, "/MGmk " + AsciiLiteral("true") + "\r\n"));
  doc.Mark(false);
  EXPECT_FALSE(GetPdfMgMk(doc));
}

TEST(SetPdfInfoItem, WritesTheItem) {
  Doc doc;
  doc.Info("Title", L"(\u00E9)").Info("Empty", nullptr);
  const std::string bytes = doc.Init().Finish();
  EXPECT_EQ(1, Count(bytes, "/Title (\xFE\xFF\\000\\(\\000\xE9\\000\\))\r\n"));
  EXPECT_EQ(1, Count(bytes, "/Empty ()\r\n"));
}

// Every call of a whole document in a file leaves errno as it was: the vocabulary checks it.
TEST(SuccessfulCalls, LeaveErrnoAsItWas) {
  TempDir dir;
  Doc doc(dir.File("a.pdf"), L"creator", L"author");
  doc.Init().Profile("profile").ImageJPEG2000(grey).ImageWithAlpha(grey, &grey).Image(grey);
  doc.Extent(kA4).Draw(2).Draw(3, kA4).Fill(kA4, kRed).Stroke(kA4, kRed, 1);
  doc.FillAndStroke({0, 0, 1, 1, 1e308 * 10}, kRed, kBlue, 1).Circle(kA4, kRed, kBlue, 1);
  doc.Form().Page().Clear();
  doc.Finish();
  doc.Finish();
}
