#include "objects/diagnostic_note.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <iomanip>
#include <iostream>

#include "jtpdf/diagnostics.h"
#include "support/diagnostics.h"

TEST(PrintDiagnosticNote, WritesALineAndFlushes) {
  Diagnostics diagnostics;
  std::cerr << std::nounitbuf;  // else the stream itself flushes whatever is written
  PrintDiagnosticNote("a note");
  std::cerr << std::unitbuf;
  EXPECT_EQ("a note\n", diagnostics.Take());
}

TEST(PrintDiagnosticNote, IsSilentWithoutTheMode) {
  Diagnostics diagnostics(false);
  PrintDiagnosticNote("a note");
  EXPECT_EQ("", diagnostics.Take());
}

TEST(PrintDiagnosticNote, IgnoresFormatsSetOnTheStream) {
  Diagnostics diagnostics;
  std::cerr << std::setw(20) << std::setfill('*') << std::hex;
  PrintDiagnosticNote("12");
  std::cerr << std::setw(0) << std::setfill(' ') << std::dec;
  EXPECT_EQ("12\n", diagnostics.Take());
}

TEST(PrintDiagnosticNote, LeavesErrnoAlone) {
  // A buffer that fails and says so in errno.
  struct FailingBuffer : std::streambuf {
    int_type overflow(int_type) override { return Fail(); }
    int sync() override { return Fail(); }
    static int Fail() {
      errno = EIO;
      return -1;
    }
  } failing;
  JTPDFSetDiagnosticMode(true);
  std::streambuf* const saved = std::cerr.rdbuf(&failing);
  errno = 4242;
  PrintDiagnosticNote("a note");
  const int after = errno;
  std::cerr.rdbuf(saved);
  JTPDFSetDiagnosticMode(false);
  EXPECT_EQ(4242, after);
}
