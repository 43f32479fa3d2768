#include <gtest/gtest.h>

#include "document/document.h"
#include "support/bytes.h"
#include "support/diagnostics.h"
#include "support/doc.h"
#include "support/pdf.h"
#include "support/temp_dir.h"

// The information dictionary's lines.
std::string InfoOf(Doc& doc) {
  const Pdf pdf(doc.Init().Finish());
  return pdf.Body(pdf.Info());
}

const std::string kUnmarked = "/MGmk " + AsciiLiteral("false");
const std::string kMarked = "/MGmk " + AsciiLiteral("true");
const std::string kProducer = "/Producer " + AsciiLiteral("JTPDF 2.1.6");

TEST(JTPDFDocumentFinalizeTrailer, EntriesHaveTwentyBytesAndLeadToTheirObjects) {
  Doc doc;
  doc.Init().Image(grey).Draw(2).Form().Page();
  const Pdf pdf(doc.Finish());  // checks the table against the objects
  EXPECT_EQ(9, pdf.Size());
  EXPECT_BYTES(Lines("trailer", "<<", "/Size 9", "/Root 7 0 R", "/Info 8 0 R", ">>", "startxref",
                     std::to_string(pdf.TableOffset()), "%%EOF"),
               pdf.Tail().substr(4 + 2 + 3 + 2 + 9 * 20));
}

TEST(JTPDFDocumentFinalizeTrailer, InfoObjectZeroIsLeftOut) {
  Doc doc;
  doc.Init();
  doc->FinalizeTrailer(0, 7);
  const std::string bytes = doc.Finish();
  EXPECT_BYTES(
      Lines("xref", "0 2", "0000000000 65535 f", "0000000017 00000 n", "trailer", "<<", "/Size 2",
            "/Root 7 0 R", ">>", "startxref", std::to_string(Head().size()), "%%EOF"),
      bytes.substr(Head().size(), bytes.find("%%EOF") + 7 - Head().size()));
}

TEST(JTPDFDocumentFinalize, CatalogAndInformationFollowTheRoot) {
  Doc doc;
  const Pdf pdf(doc.Init().Form().Page().Finish());
  EXPECT_BYTES(Lines("6 0 obj", "<<", "/Pages 5 0 R", "/Type /Catalog", ">>", "endobj"),
               pdf.Object(6));
  EXPECT_EQ(6, pdf.Root());
  EXPECT_EQ(7, pdf.Info());
  EXPECT_EQ(8, pdf.Size());
}

TEST(JTPDFDocumentInfo, AlwaysHoldsMarkAndProducer) {
  Doc doc;
  EXPECT_BYTES(Lines("<<", kUnmarked, kProducer, ">>"), InfoOf(doc));
}

TEST(JTPDFDocumentInfo, MarkIsWrittenAsText) {
  Doc doc;
  EXPECT_FALSE(doc->GetMgMk());
  doc->SetMgMk(true);
  EXPECT_TRUE(doc->GetMgMk());
  EXPECT_BYTES(Lines("<<", kMarked, kProducer, ">>"), InfoOf(doc));
}

TEST(JTPDFDocumentInfo, ItemsAreAddedUnderNormalisedKeys) {
  Doc doc;
  doc.Info("Title", L"one").Info("/Sub ject", L"two").Info("Title", L"three").Info("", L"four");
  EXPECT_BYTES(Lines("<<", "/JT_DUMMY_KEY " + AsciiLiteral("four"), kUnmarked, kProducer,
                     "/Subject " + AsciiLiteral("two"), "/Title " + AsciiLiteral("three"), ">>"),
               InfoOf(doc));
}

TEST(JTPDFDocumentInfo, NullValueCountsAsEmptyAndIsNoted) {
  Doc doc;
  Diagnostics diagnostics;
  doc.Info("A", nullptr).Info("B", L"");
  EXPECT_EQ(2, Count(diagnostics.Take(), "Error: unable to convert string to UTF-16 BE:0x"));
  EXPECT_BYTES(Lines("<<", "/A ()", "/B ()", kUnmarked, kProducer, ">>"), InfoOf(doc));
  EXPECT_EQ("", diagnostics.Take()) << "empty creator and author are never converted";
}

TEST(JTPDFDocumentInfo, CreatorAndAuthorOfTheDocumentWin) {
  TempDir dir;
  Doc doc(dir.File("a.pdf"), L"creator", L"author");
  doc.Info("Creator", L"x").Info("Author", L"y");
  EXPECT_BYTES(Lines("<<", "/Author " + AsciiLiteral("author"),
                     "/Creator " + AsciiLiteral("creator"), kUnmarked, kProducer, ">>"),
               InfoOf(doc));
}

TEST(JTPDFDocumentInfo, CreatorAndAuthorItemsSurviveWhereTheDocumentsAreEmpty) {
  TempDir dir;
  for (const wchar_t* empty : {static_cast<const wchar_t*>(nullptr), L""}) {
    Doc doc(dir.File("a.pdf"), empty, empty);
    doc.Info("Creator", L"x").Info("Author", L"y");
    EXPECT_BYTES(Lines("<<", "/Author " + AsciiLiteral("y"), "/Creator " + AsciiLiteral("x"),
                       kUnmarked, kProducer, ">>"),
                 InfoOf(doc));
  }
  Doc memory;
  memory.Info("Creator", L"x");
  EXPECT_BYTES(Lines("<<", "/Creator " + AsciiLiteral("x"), kUnmarked, kProducer, ">>"),
               InfoOf(memory));
}

TEST(JTPDFDocumentInfo, ProducerAndMarkOfTheCallerNeverSurvive) {
  Doc doc;
  doc.Info("Producer", L"x").Info("MGmk", L"y");
  EXPECT_BYTES(Lines("<<", kUnmarked, kProducer, ">>"), InfoOf(doc));
}

TEST(JTPDFDocumentInfo, MayBeSetInAnyState) {
  Doc doc;
  doc.Info("A", L"created").Init().Info("B", L"initialised").Mark(true);
  const std::string bytes = doc.Finish();
  EXPECT_EQ(1, Count(bytes, "/A " + AsciiLiteral("created")));
  EXPECT_EQ(1, Count(bytes, "/B " + AsciiLiteral("initialised")));
  doc.Info("C", L"finalised").Mark(false);
  EXPECT_FALSE(doc->GetMgMk());
  EXPECT_BYTES(bytes, BytesOf(doc));
}

TEST(JTPDFDocumentMakeInfoDict, IsACopy) {
  Doc doc;
  doc.Info("Title", L"one");
  JTPDFDict info = doc->MakeInfoDict();
  EXPECT_EQ(3u, info.size());
  info["/Title"] = "changed";
  EXPECT_EQ(AsciiLiteral("one"), doc->MakeInfoDict().at("/Title"));
}
