// Life cycle, lines and numbering.

#include "document/document.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>
#include <streambuf>
#include <type_traits>

#include "support/bytes.h"
#include "support/cases.h"
#include "support/diagnostics.h"
#include "support/doc.h"
#include "support/pdf.h"
#include "support/temp_dir.h"

using namespace std::string_literals;

constexpr char kNotInitialized[] = "Cannot write to a non-initialized document";
constexpr char kInitializedTwice[] = "PDF document cannot be initialized more than once";
constexpr char kFinalized[] = "When finalized, a pdf document cannot be re-initialized";
constexpr char kDestroyed[] = "Warning: JTPDFDocument destroyed without being finalized.\n";
constexpr char kFinalizedTwice[] = "Warning: Finalize called multiple times. Ignored.\n";

// Everything in it is tried on a memory document and on a file document.
class JTPDFDocumentTest : public testing::TestWithParam<bool> {
 protected:
  JTPDFDocumentTest() {
    if (GetParam()) {
      doc.emplace(dir.File("out.pdf"));
    } else {
      doc.emplace();
    }
    document = *doc;
  }

  TempDir dir;
  std::optional<Doc> doc;
  JTPDFDocument* document;
};

INSTANTIATE_TEST_SUITE_P(Sink, JTPDFDocumentTest, testing::Bool(),
                         [](const auto& sink) { return sink.param ? "File" : "Memory"; });

TEST_P(JTPDFDocumentTest, BeginsWithHeaderMarkerAndObject1AtOffset17) {
  const std::string bytes = doc->Init().Finish();
  EXPECT_BYTES("%PDF-1.5\r\n%\xE2\xE3\xCD\xD3\r\n1 0 obj\r\n", bytes.substr(0, 26));
  EXPECT_EQ(17u, Pdf(bytes).Offset(1));
  EXPECT_BYTES(Head(), bytes.substr(0, Head().size()));
}

TEST_P(JTPDFDocumentTest, EmptyDocumentIsExact) {
  const std::string kids =
      Lines("2 0 obj", "<<", "/Count 0", "/Kids ]", "/Type /Pages", ">>", "endobj");
  const std::string catalog =
      Lines("3 0 obj", "<<", "/Pages 2 0 R", "/Type /Catalog", ">>", "endobj");
  const std::string info = Lines("4 0 obj", "<<", "/MGmk " + AsciiLiteral("false"),
                                 "/Producer " + AsciiLiteral("JTPDF 2.1.6"), ">>", "endobj");
  const std::size_t table = Head().size() + kids.size() + catalog.size() + info.size();
  auto entry = [](std::size_t offset) {
    const std::string digits = std::to_string(offset);
    return std::string(10 - digits.size(), '0') + digits + " 00000 n";
  };
  const std::string expected =
      Head() + kids + catalog + info +
      Lines("xref", "0 5", "0000000000 65535 f", entry(17), entry(Head().size()),
            entry(Head().size() + kids.size()), entry(Head().size() + kids.size() + catalog.size()),
            "trailer", "<<", "/Size 5", "/Root 3 0 R", "/Info 4 0 R", ">>", "startxref",
            std::to_string(table), "%%EOF");
  EXPECT_BYTES(expected, doc->Init().Finish());
}

TEST_P(JTPDFDocumentTest, EveryLineEndsInCarriageReturnAndLineFeed) {
  const std::string bytes = doc->Init().Image(grey).Draw(2).Form().Page().Finish("end");
  EXPECT_EQ(Count(bytes, "\n"), Count(bytes, "\r\n"));
  EXPECT_EQ(Count(bytes, "\r"), Count(bytes, "\r\n"));
}

TEST_P(JTPDFDocumentTest, ClosingTextIsOneMoreLine) {
  EXPECT_TRUE(doc->Init().Finish("closing\ntext").ends_with("%%EOF\r\nclosing\ntext\r\n"));
}

TEST_P(JTPDFDocumentTest, EmptyClosingTextAddsNothing) {
  EXPECT_TRUE(doc->Init().Finish("").ends_with("%%EOF\r\n"));
}

TEST_P(JTPDFDocumentTest, WriteLnReturnsThePositionOfItsLine) {
  document->Initialize();
  const std::streampos first = document->WriteLn("a");
  EXPECT_EQ(static_cast<std::streamoff>(Head().size()), std::streamoff(first));
  EXPECT_EQ(first + std::streamoff(3), document->WriteLn("\0\r\xFF"s));
  EXPECT_EQ(first + std::streamoff(8), document->WriteLn(""));
  EXPECT_EQ(first + std::streamoff(8), document->WriteLn("b"));
  const std::string bytes = doc->Finish();
  EXPECT_BYTES("a\r\n\0\r\xFF\r\nb\r\n"s, bytes.substr(Head().size(), 11));
}

TEST_P(JTPDFDocumentTest, WriteLnOfAnEmptyTextWritesNothing) {
  document->Initialize();
  document->WriteLn("");
  EXPECT_BYTES("2 0 obj\r\n", doc->Finish().substr(Head().size(), 9));
}

TEST_P(JTPDFDocumentTest, AddToXRefReturnsTheIndex) {
  document->Initialize();
  EXPECT_EQ(2, document->AddToXRef(std::streampos(77)));
  EXPECT_EQ(3, document->AddToXRef(std::streampos(12345678901)));
  const std::string bytes = doc->Finish();
  EXPECT_EQ(1, Count(bytes, "\r\n0000000077 00000 n\r\n12345678901 00000 n\r\n"));
}

// ---- Refusals ----

struct RefusedCall {
  const char* name;
  std::function<void(JTPDFDocument&)> call;
};

const RefusedCall kWriters[] = {
    {"WriteLn", [](JTPDFDocument& d) { d.WriteLn("x"); }},
    {"WriteLnOfNothing", [](JTPDFDocument& d) { d.WriteLn(""); }},
    {"WriteDict", [](JTPDFDocument& d) { d.WriteDict("/A 1"); }},
    {"WriteDictWithStream", [](JTPDFDocument& d) { d.WriteDict("", "x", true); }},
    {"InitializeGraphicsStateDict", [](JTPDFDocument& d) { d.InitializeGraphicsStateDict(); }},
    {"WriteImage",
     [](JTPDFDocument& d) { d.WriteImage(grey, false, kPdfImageRolePhoto, L"", 0, nullptr, -1); }},
    {"WriteICCProfile",
     [](JTPDFDocument& d) { d.WriteICCProfile("x", 1, kPdfCompressionFlate, nullptr); }},
    {"WriteCanvas", [](JTPDFDocument& d) { d.WriteCanvas(); }},
    {"WritePage", [](JTPDFDocument& d) { d.WritePage(2, JTPDFBox(), JTPDFBox()); }},
    {"FinalizePages", [](JTPDFDocument& d) { d.FinalizePages(); }},
    {"FinalizeTrailer", [](JTPDFDocument& d) { d.FinalizeTrailer(3, 2); }},
    {"Finalize", [](JTPDFDocument& d) { d.Finalize(nullptr); }},
};

class JTPDFDocumentWriters : public testing::TestWithParam<RefusedCall> {};

TEST_P(JTPDFDocumentWriters, AreRefusedBeforeInitialize) {
  Doc doc;
  EXPECT_EQ(kNotInitialized, Refusal([&] { GetParam().call(*doc.operator->()); }));
  // Nothing was numbered or written.
  EXPECT_BYTES(Doc().Init().Finish(), doc.Init().Finish());
}

INSTANTIATE_TEST_SUITE_P(Call, JTPDFDocumentWriters, testing::ValuesIn(kWriters),
                         NameOf<RefusedCall>);

TEST_P(JTPDFDocumentTest, InitializeTwiceIsRefusedAndChangesNothing) {
  doc->Init();
  EXPECT_EQ(kInitializedTwice, Refusal([&] { document->Initialize(); }));
  EXPECT_BYTES(Doc().Init().Finish(), doc->Finish());
}

TEST_P(JTPDFDocumentTest, FinalizedIsRefusedBeforeInitialized) {
  doc->Init().Finish();
  EXPECT_EQ(kFinalized, Refusal([&] { document->Initialize(); }));
}

TEST_P(JTPDFDocumentTest, FinalizeBeforeInitializeLeavesTheDocumentUnfinalised) {
  EXPECT_EQ(kNotInitialized, Refusal([&] { document->Finalize("x"); }));
  EXPECT_EQ(nullptr, document->GetPdfData());
  EXPECT_BYTES(Doc().Init().Finish(), doc->Init().Finish());
}

// ---- Finalising ----

TEST_P(JTPDFDocumentTest, FinalizeTwiceIsIgnoredWithAWarning) {
  const std::string bytes = doc->Init().Form().Page().Finish();
  Diagnostics diagnostics;
  EXPECT_BYTES(bytes, doc->Finish("more"));
  EXPECT_EQ(kFinalizedTwice, diagnostics.Take());
  JTPDFSetDiagnosticMode(false);
  EXPECT_BYTES(bytes, doc->Finish("more"));
  EXPECT_EQ("", diagnostics.Take());
}

TEST(JTPDFDocumentMemory, DataIsThereAfterFinalizeOnly) {
  Doc doc;
  EXPECT_EQ(nullptr, doc->GetPdfData());
  EXPECT_EQ(0u, doc->GetPdfDataSize());
  doc.Init().Form().Page();
  EXPECT_EQ(nullptr, doc->GetPdfData());
  EXPECT_EQ(0u, doc->GetPdfDataSize());
  doc.Finish();
  ASSERT_NE(nullptr, doc->GetPdfData());
  EXPECT_GT(doc->GetPdfDataSize(), Head().size());
  EXPECT_EQ('\0', doc->GetPdfData()[doc->GetPdfDataSize()]);
}

TEST(JTPDFDocumentFile, NeverHasData) {
  TempDir dir;
  Doc doc(dir.File("out.pdf"));
  EXPECT_EQ(nullptr, doc->GetPdfData());
  doc.Init();
  EXPECT_EQ(nullptr, doc->GetPdfData());
  doc.Finish();
  EXPECT_EQ(nullptr, doc->GetPdfData());
  EXPECT_EQ(0u, doc->GetPdfDataSize());
}

TEST(JTPDFDocumentMemory, WritersAfterFinalizeSucceedAndChangeNothing) {
  Doc doc;
  const std::string bytes = doc.Init().Image(grey).Draw(2).Form().Page().Finish();
  const int infoObject = Pdf(bytes).Info();
  EXPECT_EQ(infoObject + 1, doc->WriteDict("/A 1"));
  doc.Image(grey);
  EXPECT_EQ(infoObject + 2, doc.last);
  doc.Fill(kA4, kRed).Form();
  EXPECT_EQ(infoObject + 3, doc.last);
  doc.Page().Profile("x");
  EXPECT_EQ(infoObject + 6, doc.last);
  EXPECT_BYTES(bytes, BytesOf(doc));
  EXPECT_BYTES(bytes, doc.Finish("again"));
}

TEST(JTPDFDocumentMemory, PositionsStartAfreshInTheEmptiedStream) {
  Doc doc;
  doc.Init().Finish();
  EXPECT_EQ(std::streampos(0), doc->WriteLn("abc"));
  EXPECT_EQ(std::streampos(5), doc->WriteLn("abc"));
}

TEST(JTPDFDocumentFile, WritersAfterFinalizeFailOnTheClosedFile) {
  TempDir dir;
  Doc doc(dir.File("out.pdf"));
  const std::string bytes = doc.Init().Form().Page().Finish();
  for (const RefusedCall& writer : kWriters) {
    if (writer.name == "Finalize"s) continue;  // ignored instead
    if (writer.name == "WriteLnOfNothing"s) {
      EXPECT_EQ(std::streampos(-1), doc->WriteLn("")) << "nothing to write, nothing to fail";
      continue;
    }
    EXPECT_THROW(writer.call(*doc.operator->()), std::ios_base::failure) << writer.name;
  }
  EXPECT_BYTES(bytes, ReadFile(dir.File("out.pdf")));
}

TEST(JTPDFDocumentFile, HasTheBytesOfAMemoryDocument) {
  TempDir dir;
  auto script = [](Doc doc) {
    doc.Init().Info("Title", L"both").Mark(true).Image(grey).Extent(kA4).Draw(doc.last);
    doc.Fill({10, 20, 30, 40, 5}, kRed).Form();
    for (int i = 0; i < 12; ++i) doc.Page(doc.last);
    return doc.Profile("profile").Finish("closing");
  };
  EXPECT_BYTES(script(Doc()), script(Doc(dir.File("out.pdf"))));
}

TEST(JTPDFDocumentFile, IsTruncatedWhenItIsOpened) {
  TempDir dir;
  const std::string longer = Doc(dir.File("out.pdf")).Init().Image(grey).Finish();
  const std::string shorter = Doc(dir.File("out.pdf")).Init().Finish();
  EXPECT_LT(shorter.size(), longer.size());
  EXPECT_BYTES(Doc().Init().Finish(), shorter);
}

TEST(JTPDFDocumentFile, IsOpenedByInitializeAndNotBefore) {
  TempDir dir;
  Doc doc(dir.File("out.pdf"));
  EXPECT_FALSE(std::filesystem::exists(dir.File("out.pdf")));
  doc.Init();
  EXPECT_TRUE(std::filesystem::exists(dir.File("out.pdf")));
}

TEST(JTPDFDocumentFile, AFailedOpenCanBeRepeated) {
  TempDir dir;
  Doc doc(dir.File("later/out.pdf"));
  for (int i = 0; i < 3; ++i) {
    errno = 0;
    EXPECT_THROW(doc->Initialize(), std::ios_base::failure);
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(kNotInitialized, Refusal([&] { doc->WriteLn("x"); }));
  }
  std::filesystem::create_directory(dir.File("later"));
  EXPECT_BYTES(Doc().Init().Form().Page(2).Finish(), doc.Init().Form().Page(2).Finish());
}

TEST(JTPDFDocumentFile, AnInvalidNameFailsEveryTimeWithEILSEQ) {
  const wchar_t name[] = {L'x', 0xDC00, 0};
  JTPDFDocument doc(1, name, nullptr, nullptr);
  for (int i = 0; i < 2; ++i) {
    errno = 0;
    EXPECT_THROW(doc.Initialize(), std::ios_base::failure);
    EXPECT_EQ(EILSEQ, errno);
  }
}

// ---- Failing sinks ----

TEST(JTPDFDocumentFullDisk, FinalizeFailsWithENOSPCAndLeavesTheDocumentUnfinalised) {
  Doc doc(std::filesystem::path("/dev/full"));
  doc.Init();
  errno = 0;
  EXPECT_THROW(doc->Finalize(nullptr), std::ios_base::failure);
  EXPECT_EQ(ENOSPC, errno);
  EXPECT_EQ(kInitializedTwice, Refusal([&] { doc->Initialize(); })) << "initialised, not finalised";
  Diagnostics diagnostics;
  EXPECT_THROW(doc->Finalize(nullptr), std::ios_base::failure) << "it is not ignored: no success";
  EXPECT_EQ("", diagnostics.Take());
}

TEST(JTPDFDocumentFullDisk, OnAFailedStreamAnEmptyLineGivesMinusOneAndNothingElse) {
  Doc doc(std::filesystem::path("/dev/full"));
  doc.Init();
  errno = 0;
  EXPECT_THROW(doc->WriteDict("", std::string(100000, 'x'), true), std::ios_base::failure);
  EXPECT_EQ(ENOSPC, errno);
  EXPECT_EQ(std::streampos(-1), doc->WriteLn(""));
  EXPECT_THROW(doc->WriteLn("x"), std::ios_base::failure);
  EXPECT_EQ(std::streampos(-1), doc->WriteLn(""));
}

TEST(JTPDFDocumentFullDisk, AnObjectThatFailedKeepsItsNumber) {
  Doc doc(std::filesystem::path("/dev/full"));
  doc.Init();
  EXPECT_THROW(doc->WriteDict("", std::string(100000, 'x'), true), std::ios_base::failure);
  EXPECT_EQ(3, doc->AddToXRef(std::streampos(0)));
}

// ---- Destruction ----

TEST(JTPDFDocumentDestructor, WarnsOfAnOpenFileDocumentOnly) {
  TempDir dir;
  Diagnostics diagnostics;
  { Doc memory; }
  EXPECT_EQ("", diagnostics.Take()) << "memory, created";
  Doc().Init();
  EXPECT_EQ("", diagnostics.Take()) << "memory, initialised";
  Doc().Init().Finish();
  EXPECT_EQ("", diagnostics.Take()) << "memory, finalised";
  { Doc file(dir.File("a.pdf")); }
  EXPECT_EQ("", diagnostics.Take()) << "file, created";
  Doc(dir.File("a.pdf")).Init().Finish();
  EXPECT_EQ("", diagnostics.Take()) << "file, finalised";
  Doc(dir.File("a.pdf")).Init();
  EXPECT_EQ(kDestroyed, diagnostics.Take()) << "file, initialised";
  JTPDFSetDiagnosticMode(false);
  Doc(dir.File("a.pdf")).Init();
  EXPECT_EQ("", diagnostics.Take()) << "the mode is off";
}

TEST(JTPDFDocumentDestructor, LeavesWhatWasWrittenInTheFile) {
  TempDir dir;
  Doc(dir.File("a.pdf")).Init();
  EXPECT_BYTES(Head(), ReadFile(dir.File("a.pdf")));
}

TEST(JTPDFDocumentDestructor, LeavesAlsoTheLinesOfAnObjectThatWasCutShort) {
  TempDir dir;
  {
    JTPDFDocument document(1, dir.File("a.pdf").wstring().c_str(), nullptr, nullptr);
    document.Initialize();
    document.WriteLn("2 0 obj");
  }
  EXPECT_BYTES(Head() + "2 0 obj\r\n", ReadFile(dir.File("a.pdf")));
}

TEST(JTPDFDocumentDestructor, DoesNotThrowWhenClosingFails) {
  Diagnostics diagnostics;
  Doc(std::filesystem::path("/dev/full")).Init();
  EXPECT_EQ(kDestroyed, diagnostics.Take());
}

TEST(JTPDFDocumentDestructor, DoesNotThrowWhenTheWarningFails) {
  struct FailingBuffer : std::streambuf {
    int sync() override { return -1; }
  } failing;
  TempDir dir;
  auto* const doc = new JTPDFDocument(1, dir.File("a.pdf").wstring().c_str(), nullptr, nullptr);
  doc->Initialize();
  JTPDFSetDiagnosticMode(true);
  std::streambuf* const saved = std::cerr.rdbuf(&failing);
  std::cerr.exceptions(std::ios_base::badbit);
  delete doc;
  std::cerr.exceptions(std::ios_base::goodbit);
  std::cerr.rdbuf(saved);
  JTPDFSetDiagnosticMode(false);
  EXPECT_BYTES(Head(), ReadFile(dir.File("a.pdf")));
}

TEST(JTPDFDocumentClass, HasAVirtualDestructorAndIsNotCopied) {
  EXPECT_TRUE(std::has_virtual_destructor_v<JTPDFDocument>);
  EXPECT_FALSE(std::is_copy_constructible_v<JTPDFDocument>);
}
