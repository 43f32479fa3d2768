// A failed allocation reaches the caller as std::bad_alloc, from every call and at any point of it,
// and leaves a document that can be destroyed.

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>

#include "jtpdf/jtpdf.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/doc.h"
#include "support/failing_new.h"
#include "support/failing_realloc.h"
#include "support/temp_dir.h"

struct Call {
  const char* name;
  bool initialized;
  std::function<int32_t(JTPDFDocument*)> call;
};

// Names and texts are longer than what a string holds without the heap.
constexpr char kKey[] = "AKeyThatIsLongerThanAStringHoldsByItself";
constexpr wchar_t kText[] = L"a text that is longer than a string holds by itself";
const JTPDFDictionaryItem kItem = {kKey, kText};

const Call kCallTable[] = {
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

INSTANTIATE_TEST_SUITE_P(Call, OutOfMemory, testing::ValuesIn(kCallTable), NameOf<Call>);

// What has room is not allocated again: some call of many needs memory.
constexpr int kCalls = 30;

// Lets the calls fail at their n-th allocation.
Outcome FailAt(long n, const Call& call, JTPDFDocument* doc) {
  return WithAllocations(n, [&] {
    for (int i = 0; i < (call.initialized ? kCalls : 1); ++i) {
      if (call.call(doc) != 0) return false;
    }
    return true;
  });
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
  EXPECT_TRUE(failed || !kReallocFails) << "the call does not allocate: the test is void";
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

TEST_P(OutOfMemory, ReachesTheCallerOfAMemoryDocument) {
  bool failed = false;
  for (long n = 0;; ++n) {
    ASSERT_LT(n, 10000) << "never succeeds";
    Doc doc;
    if (GetParam().initialized) doc.Init().Draw(2).Page(2);
    const Outcome outcome = FailAt(n, GetParam(), doc);
    if (outcome == Outcome::kSuccess) break;
    EXPECT_EQ(Outcome::kBadAlloc, outcome) << "allocation " << n;
    failed = true;
  }
  EXPECT_TRUE(failed || !kReallocFails);
}

// ---- As a code ----

TEST_P(OutOfMemory, IsACodeForADocumentThatWantsIt) {
  bool failed = false;
  for (long n = 0;; ++n) {
    ASSERT_LT(n, 10000) << "never succeeds";
    Doc doc;
    if (GetParam().initialized) doc.Init().Draw(2).Page(2);
    SetPdfMemoryErrors(doc, true);
    int32_t code = 0;
    errno = EDOM;
    const Outcome outcome = WithAllocations(n, [&] {
      for (int i = 0; code == 0 && i < (GetParam().initialized ? kCalls : 1); ++i) {
        code = GetParam().call(doc);
      }
      return true;
    });
    ASSERT_EQ(Outcome::kSuccess, outcome) << "an exception at allocation " << n;
    // A call without a code leaves its failure to the next one that has one.
    const bool reported = code != 0;
    if (!reported) code = WritePdfPage(doc, 2, kA4, kA4);
    if (code == 0) break;
    EXPECT_EQ(ENOMEM, code);
    failed = true;
    if (!reported) {
      EXPECT_EQ(0, WritePdfPage(doc, 2, kA4, kA4)) << "it is reported once";
    }
  }
  EXPECT_TRUE(failed || !kReallocFails);
}

TEST(OutOfMemoryTryCreate, GivesNullAndENOMEM) {
  const auto ignore = [](void*, const char*, size_t) { return int32_t{0}; };
  const std::function<JTPDFDocument*()> creations[] = {
      [] { return TryCreateFilePdfDoc(1, kText, kText, kText); },
      [] { return TryCreateMemoryPdfDoc(1); },
      [&] { return TryCreateCallbackPdfDoc(1, ignore, nullptr); },
  };
  for (const auto& create : creations) {
    long n = 0;
    for (;; ++n) {
      ASSERT_LT(n, 1000) << "never succeeds";
      JTPDFDocument* doc = nullptr;
      errno = 0;
      ASSERT_EQ(Outcome::kSuccess, WithAllocations(n, [&] {
                  doc = create();
                  return true;
                }));
      DestroyPdfDoc(doc);
      if (doc != nullptr) break;
      EXPECT_EQ(ENOMEM, errno);
    }
    EXPECT_GT(n, 0);
  }
}

TEST(OutOfMemoryTryCreate, ItsDocumentsGiveCodes) {
  JTPDFDocument* const doc = TryCreateMemoryPdfDoc(1);
  int32_t code = 0;
  EXPECT_EQ(Outcome::kSuccess, WithAllocations(0, [&] {
              code = InitPdfDoc(doc);
              return true;
            }));
  EXPECT_EQ(ENOMEM, code);
  DestroyPdfDoc(doc);
}
