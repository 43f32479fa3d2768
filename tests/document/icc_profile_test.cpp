#include <gtest/gtest.h>

#include "document/document.h"
#include "support/bytes.h"
#include "support/diagnostics.h"
#include "support/doc.h"
#include "support/failing_new.h"
#include "support/pdf.h"
#include "support/temp_dir.h"

using namespace std::string_literals;

TEST(JTPDFDocumentWriteICCProfile, IsAStreamAndAnArray) {
  Doc doc;
  doc.Init();
  int untouched = 77;
  EXPECT_EQ(3, doc->WriteICCProfile("pro\0file", 8, kPdfCompressionFlate, &untouched));
  EXPECT_EQ(77, untouched);
  const Pdf pdf(doc.Finish());
  EXPECT_BYTES(Lines("2 0 obj", "<<", "/Alternate /DeviceRGB", "/N 3", "/Filter /FlateDecode",
                     "/Length 8", ">>", "stream", "pro\0fileendstream"s, "endobj"),
               pdf.Object(2));
  EXPECT_BYTES(Lines("3 0 obj", "[ /ICCBased 2 0 R ]", "endobj"), pdf.Object(3));
}

TEST(JTPDFDocumentWriteICCProfile, PointerMayBeNull) {
  Doc doc;
  doc.Init();
  EXPECT_EQ(3, doc->WriteICCProfile("x", 1, kPdfCompressionJPEG, nullptr));
  EXPECT_EQ(1, Count(Pdf(doc.Finish()).Object(2), "/Filter /DCTDecode\r\n"));
}

TEST(JTPDFDocumentWriteICCProfile, UnknownCompressionGivesNoFilterAndANote) {
  Doc doc;
  doc.Init();
  Diagnostics diagnostics;
  doc->WriteICCProfile("x", 1, static_cast<TPdfCompression>(-1), nullptr);
  EXPECT_EQ("Invalid compression type -1\n", diagnostics.Take());
  JTPDFSetDiagnosticMode(false);
  doc->WriteICCProfile("x", 1, static_cast<TPdfCompression>(0x7FFFFFFF), nullptr);
  EXPECT_EQ("", diagnostics.Take());
  const Pdf pdf(doc.Finish());
  const std::string body =
      Lines("<<", "/Alternate /DeviceRGB", "/N 3", "/Length 1", ">>", "stream", "xendstream");
  EXPECT_BYTES(body, pdf.Body(2));
  EXPECT_BYTES(body, pdf.Body(4));
}

TEST(JTPDFDocumentWriteICCProfile, FailsOnAClosedFileBeforeAnyNote) {
  TempDir dir;
  Doc doc(dir.File("out.pdf"));
  doc.Init().Finish();
  Diagnostics diagnostics;
  EXPECT_THROW(doc->WriteICCProfile("x", 1, static_cast<TPdfCompression>(-1), nullptr),
               std::ios_base::failure);
  EXPECT_EQ("", diagnostics.Take());
}

TEST(JTPDFDocumentWriteICCProfile, EmptyProfileHasAnEmptyStream) {
  Doc doc;
  doc.Init();
  doc->WriteICCProfile(nullptr, 0, kPdfCompressionFlate, nullptr);
  EXPECT_BYTES(Lines("<<", "/Alternate /DeviceRGB", "/N 3", "/Filter /FlateDecode", "/Length 0",
                     ">>", "stream", "endstream"),
               Pdf(doc.Finish()).Body(2));
}

TEST(JTPDFDocumentWriteICCProfile, TwoInARowAreTwoApartAndImagesNameTheArray) {
  Doc doc;
  doc.Init().Profile("one");
  const int first = doc.last;
  doc.Profile("two");
  const int second = doc.last;
  EXPECT_EQ(3, first);
  EXPECT_EQ(first + 2, second);
  doc.Image(Picture("x", kPdfColorSpaceICC, kPdfCompressionFlate, first));
  doc.Image(Picture("x", kPdfColorSpaceICC, kPdfCompressionFlate, second));
  const Pdf pdf(doc.Finish());
  EXPECT_EQ(1, Count(pdf.Object(6), "/ColorSpace 3 0 R\r\n"));
  EXPECT_EQ(1, Count(pdf.Object(7), "/ColorSpace 5 0 R\r\n"));
}

// Both of its objects are written or, where there is no memory, none: room for both is made first,
// however many objects there are.
TEST(JTPDFDocumentWriteICCProfile, IsWrittenWholeOrNotAtAllWithoutMemory) {
  int failed = 0;
  for (int objects = 0; objects < 70; ++objects) {
    for (long n = 0;; ++n) {
      Doc doc;
      doc.Init();
      for (int i = 0; i < objects; ++i) doc->WriteDict("");
      const int before = doc->NextObject();
      const Outcome outcome = WithAllocations(n, [&] {
        doc->WriteICCProfile("x", 1, kPdfCompressionFlate, nullptr);
        return true;
      });
      if (outcome == Outcome::kSuccess) break;
      ++failed;
      // Where the bytes themselves found no room the document is lost anyway.
      if (before != doc->NextObject()) {
        errno = 0;
        EXPECT_THROW(doc->WriteDict(""), std::ios_base::failure) << objects << " objects before";
      }
    }
  }
  EXPECT_GT(failed, 2);
}
