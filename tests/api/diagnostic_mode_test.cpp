#include <gtest/gtest.h>

#include <cerrno>

#include "jtpdf/jtpdf.h"
#include "support/diagnostics.h"
#include "support/doc.h"

// Read while the program starts, before any test.
const bool modeAfterLoading = JTPDFGetDiagnosticMode();

TEST(JTPDFGetDiagnosticMode, IsFalseRightAfterLoading) {
  EXPECT_FALSE(modeAfterLoading);
}

TEST(JTPDFSetDiagnosticMode, IsReadBack) {
  JTPDFSetDiagnosticMode(true);
  EXPECT_TRUE(JTPDFGetDiagnosticMode());
  JTPDFSetDiagnosticMode(true);
  EXPECT_TRUE(JTPDFGetDiagnosticMode());
  JTPDFSetDiagnosticMode(false);
  EXPECT_FALSE(JTPDFGetDiagnosticMode());
}

// One run in which every report there is has its cause; the codes go to codes.
void RunIntoEveryReport(std::string& codes) {
  auto note = [&](int32_t code) { codes += std::to_string(code) + " "; };
  JTPDFDocument* const lost = CreateFilePdfDoc(1, L"/missing/directory/a.pdf", L"", L"");
  errno = 0;
  note(InitPdfDoc(lost));
  DestroyPdfDoc(lost);

  JTPDFDocument* const open = CreateFilePdfDoc(1, L"/dev/null", nullptr, nullptr);
  errno = 0;
  note(InitPdfDoc(open));
  errno = 0;
  note(InitPdfDoc(open));
  DestroyPdfDoc(open);

  JTPDFDocument* const doc = CreateMemoryPdfDoc(1);
  SetPdfInfoItem(doc, "Empty", L"");
  note(InitPdfDoc(doc));
  TPdfImageDescriptor odd =
      Picture("x", static_cast<TPdfColorSpace>(55), static_cast<TPdfCompression>(66));
  note(WritePdfImage(doc, &odd, false, kPdfImageRoleOther, L"name", 0, nullptr, nullptr));
  note(FinalizePdfDoc(doc, nullptr));
  note(FinalizePdfDoc(doc, nullptr));
  DestroyPdfDoc(doc);
}

TEST(JTPDFSetDiagnosticMode, ChangesReportsAndNoCode) {
  std::string codes[2];
  Diagnostics diagnostics(false);
  RunIntoEveryReport(codes[0]);
  EXPECT_EQ("", diagnostics.Take());

  JTPDFSetDiagnosticMode(true);
  RunIntoEveryReport(codes[1]);
  std::string reports = diagnostics.Take();
  const std::size_t address = reports.find(":0x") + 1;
  reports.erase(address, reports.find('\n', address) - address);
  EXPECT_EQ(ErrorLine("InitPdfDoc", ENOENT) +
                RefusalLine("InitPdfDoc", "PDF document cannot be initialized more than once") +
                "Warning: JTPDFDocument destroyed without being finalized.\n"
                "Error: unable to convert string to UTF-16 BE:\n"
                "Invalid compression type 66\n"
                "Invalid color space 55\n"
                "Warning: Finalize called multiple times. Ignored.\n",
            reports);

  EXPECT_EQ("2 0 -1 0 0 0 0 ", codes[0]);
  EXPECT_EQ(codes[0], codes[1]);

  JTPDFSetDiagnosticMode(false);
  RunIntoEveryReport(codes[1]);
  EXPECT_EQ("", diagnostics.Take());
}

TEST(JTPDFSetDiagnosticMode, TakesEffectAtTheNextReport) {
  Doc doc;
  doc.Init();
  Diagnostics diagnostics(false);
  errno = 0;
  EXPECT_EQ(-1, InitPdfDoc(doc));
  JTPDFSetDiagnosticMode(true);
  EXPECT_EQ("", diagnostics.Take());
  EXPECT_EQ(-1, InitPdfDoc(doc));
  EXPECT_EQ(RefusalLine("InitPdfDoc", "PDF document cannot be initialized more than once"),
            diagnostics.Take());
}
