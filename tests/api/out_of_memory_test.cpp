// A failed allocation reaches the caller as std::bad_alloc, from every call and at any point of it,
// and leaves a document that can be destroyed.

#include <gtest/gtest.h>

#include <functional>

#include "jtpdf/jtpdf.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/doc.h"
#include "support/failing_new.h"
#include "support/temp_dir.h"

struct Call {
  char const* name;
  bool initialized;
  std::function<int32_t(JTPDFDocument*)> call;
};

// Names and texts are longer than what a string holds without the heap.
constexpr char kKey[] = "AKeyThatIsLongerThanAStringHoldsByItself";
constexpr wchar_t kText[] = L"a text that is longer than a string holds by itself";
const JTPDFDictionaryItem kItem = {kKey, kText};

const Call kCalls[] = {
    {"InitPdfDoc", false, [](JTPDFDocument* doc) { return InitPdfDoc(doc); }},
    {"FinalizePdfDoc", true, [](JTPDFDocument* doc) { return FinalizePdfDoc(doc, "closing"); }},
    {"SetPdfInfoItem", true,
     [](JTPDFDocument* doc) {
       SetPdfInfoItem(doc, kKey, kText);
       return 0;
     }},
    {"DrawPdfImageInRect", true,
     [](JTPDFDocument* doc) {
       DrawPdfImageInRect(doc, 2, kA4);
       return 0;
     }},
    {"FillAndStrokePdfRectangle", true,
     [](JTPDFDocument* doc) {
       FillAndStrokePdfRectangle(doc, kA4, kRed, kBlue, 1);
       return 0;
     }},
    {"FillAndStrokePdfCircle", true,
     [](JTPDFDocument* doc) {
       FillAndStrokePdfCircle(doc, kA4, kRed, kBlue, 1);
       return 0;
     }},
    {"WritePdfCanvas", true, [](JTPDFDocument* doc) { return WritePdfCanvas(doc, nullptr); }},
    {"WritePdfPage", true, [](JTPDFDocument* doc) { return WritePdfPage(doc, 2, kA4, kA4); }},
    {"WritePdfImageWithAlpha", true,
     [](JTPDFDocument* doc) {
       return WritePdfImageWithAlpha(doc, &grey, &grey, kPdfImageRolePhoto, kText, 1, &kItem,
                                     nullptr);
     }},
    {"WritePdfICCProfile", true,
     [](JTPDFDocument* doc) {
       return WritePdfICCProfile(doc, "x", 1, kPdfCompressionFlate, nullptr);
     }},
};

class OutOfMemory : public testing::TestWithParam<Call> {};

INSTANTIATE_TEST_SUITE_P(Call, OutOfMemory, testing::ValuesIn(kCalls), NameOf<Call>);

// Lets the call fail at its n-th allocation.
Outcome FailAt(long n, Call const& call, JTPDFDocument* doc) {
  return WithAllocations(n, [&] { return call.call(doc) == 0; });
}

TEST_P(OutOfMemory, ReachesTheCallerOfAFileDocumentAndItCanBeDestroyed) {
  TempDir dir;
  bool failed = false;
  for (long n = 0;; ++n) {
    ASSERT_LT(n, 10000) << "never succeeds";
    Doc doc(dir.File("a.pdf"), kText, kText);
    if (GetParam().initialized) doc.Init().Draw(2).Page(2);
    const Outcome outcome = FailAt(n, GetParam(), doc);
    if (outcome == Outcome::kSuccess) break;
    EXPECT_EQ(Outcome::kBadAlloc, outcome) << "allocation " << n;
    failed = true;
  }
  EXPECT_TRUE(failed) << "the call does not allocate: the test is void";
}

TEST(OutOfMemoryCreate, ReachesTheCallerAndLeavesNothingBehind) {
  for (long n = 0;; ++n) {
    ASSERT_LT(n, 1000) << "never succeeds";
    JTPDFDocument* doc = nullptr;
    WithAllocations(n, [&] {
      doc = CreateFilePdfDoc(1, kText, kText, kText);
      return true;
    });
    if (doc == nullptr) continue;
    DestroyPdfDoc(doc);
    EXPECT_GT(n, 2);
    return;
  }
}

// A string stream writes what it can hold and answers a failed growth with badbit, which raises a
// stream failure: memory documents may report a code instead.
TEST_P(OutOfMemory, EndsInACodeOrAnExceptionInAMemoryDocument) {
  bool failed = false;
  for (long n = 0;; ++n) {
    ASSERT_LT(n, 10000) << "never succeeds";
    Doc doc;
    if (GetParam().initialized) doc.Init().Draw(2).Page(2);
    const Outcome outcome = FailAt(n, GetParam(), doc);
    if (outcome == Outcome::kSuccess) break;
    failed = true;
  }
  EXPECT_TRUE(failed);
}
