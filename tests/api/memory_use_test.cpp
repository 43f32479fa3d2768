// What documents in memory take of it: hardly more than their bytes, while they grow and
// afterwards.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "jtpdf/jtpdf.h"
#include "support/doc.h"

#ifdef JTPDF_SANITIZED
constexpr bool kMeasures = false;  // the sanitizers' shadow counts too
#else
constexpr bool kMeasures = true;
#endif

// A line of /proc/self/status, in bytes.
long Status(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(name + ":")) return std::stol(line.substr(name.size() + 1)) * 1024;
  }
  return 0;
}

// Writes images until the document has size bytes; returns its size, or 0 if it was refused.
long WriteInMemory(long size, const std::string& data) {
  JTPDFDocument* const doc = TryCreateMemoryPdfDoc(1);
  int32_t code = InitPdfDoc(doc);
  const TPdfImageDescriptor image = Picture(data);
  for (long written = 0; code == 0 && written < size; written += static_cast<long>(data.size())) {
    code = WritePdfImage(doc, &image, false, kPdfImageRolePhoto, L"", 0, nullptr, nullptr);
  }
  if (code == 0) code = FinalizePdfDoc(doc, nullptr);
  const long result = code == 0 ? static_cast<long>(GetPdfDataSize(doc)) : 0;
  DestroyPdfDoc(doc);
  return result;
}

// Runs what in a process of its own, which says whether all went well.
template <typename What>
void InAChild(const What& what) {
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) _exit(what() ? 0 : 1);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(0, status);
}

class MemoryUse : public testing::TestWithParam<long> {};

TEST_P(MemoryUse, PeakIsTheDocument) {
  if (!kMeasures) GTEST_SKIP() << "the sanitizers take memory of their own";
  InAChild([] {
    const std::string data(GetParam() / 40 + 1, 'x');
    WriteInMemory(1, "x");  // what a process needs once
    const long before = Status("VmRSS");
    const long size = WriteInMemory(GetParam(), data);
    const long peak = Status("VmHWM") - before;
    std::printf("%ld bytes, peak %.3f of them\n", size, double(peak) / double(size));
    std::fflush(stdout);
    // The C library's own, pages that are used in part, and what the kernel has not yet counted: it
    // adds up each processor's pages in batches.
    constexpr long kPages = 700000;
    return size > 0 && peak <= size + size / 20 + kPages;
  });
}

INSTANTIATE_TEST_SUITE_P(Bytes, MemoryUse,
                         testing::Values(100000, 1000000, 4200000, 20000000, 70000000));

TEST(MemoryUseLimits, TwoAndAHalfTimesTheOutputAreEnoughAddressSpace) {
  if (!kMeasures) GTEST_SKIP() << "the sanitizers take memory of their own";
  for (const long size : {30000000L, 67200000L, 100000000L}) {
    InAChild([size] {
      const std::string data(100000, 'x');
      const auto limit = static_cast<rlim_t>(Status("VmSize") + size * 5 / 2);
      const rlimit limits = {limit, limit};
      setrlimit(RLIMIT_AS, &limits);
      return WriteInMemory(size, data) >= size;
    });
  }
}

TEST(MemoryUseLimits, ARefusedDocumentIsACodeAndTheProcessGoesOn) {
  if (!kMeasures) GTEST_SKIP() << "the sanitizers take memory of their own";
  InAChild([] {
    const std::string data(100000, 'x');
    const auto limit = static_cast<rlim_t>(Status("VmSize") + 20000000);
    const rlimit limits = {limit, limit};
    setrlimit(RLIMIT_AS, &limits);
    for (int i = 0; i < 1000; ++i) {
      if (WriteInMemory(60000000, data) != 0) return false;
    }
    return WriteInMemory(1000000, data) != 0;
  });
}

TEST(MemoryUseLimits, AFinishedDocumentGivesBackTheRoomItGrewInto) {
  if (!kMeasures) GTEST_SKIP() << "the sanitizers take memory of their own";
  InAChild([] {
    const std::string data(1000000, 'x');
    const TPdfImageDescriptor image = Picture(data);
    const long before = Status("VmSize");
    JTPDFDocument* const doc = CreateMemoryPdfDoc(1);
    bool done = InitPdfDoc(doc) == 0;
    for (int i = 0; i < 68; ++i) {  // just more than 2^26 bytes
      done = done &&
             WritePdfImage(doc, &image, false, kPdfImageRolePhoto, L"", 0, nullptr, nullptr) == 0;
    }
    done = done && FinalizePdfDoc(doc, nullptr) == 0;
    const long kept = Status("VmSize") - before;
    DestroyPdfDoc(doc);
    return done && kept < 70000000;
  });
}

TEST(MemoryUseLimits, FinishedDocumentsKeepTheirBytesAndLittleMore) {
  if (!kMeasures) GTEST_SKIP() << "the sanitizers take memory of their own";
  InAChild([] {
    std::vector<JTPDFDocument*> docs;
    docs.reserve(10000);
    const auto add = [&] {
      JTPDFDocument* const doc = CreateMemoryPdfDoc(1);
      int form = 0;
      bool done = InitPdfDoc(doc) == 0;
      FillPdfRectangle(doc, kA4, kRed);
      done = done && WritePdfCanvas(doc, &form) == 0 && WritePdfPage(doc, form, kA4, kA4) == 0 &&
             FinalizePdfDoc(doc, nullptr) == 0;
      docs.push_back(doc);
      return done ? static_cast<long>(GetPdfDataSize(doc)) : 0;
    };
    const long size = add();
    const long before = Status("VmRSS");
    for (int i = 0; i < 10000; ++i) {
      if (add() != size) return false;
    }
    const long each = (Status("VmRSS") - before) / 10000;
    std::printf("%ld bytes, %ld of memory each\n", size, each);
    std::fflush(stdout);
    for (JTPDFDocument* const doc : docs) DestroyPdfDoc(doc);
    return each < 5000;
  });
}
