#include "api/guarded_call.h"

#include <gtest/gtest.h>

#include <iostream>
#include <new>
#include <stdexcept>
#include <streambuf>

#include "jtpdf/diagnostics.h"
#include "support/diagnostics.h"

const std::ios_base::failure kFailure("a message", std::io_errc::stream);

TEST(HandleDiagnostics, PrintsTheMessageForMinusOne) {
  Diagnostics diagnostics;
  errno = EIO;
  HandleDiagnostics("Function", kFailure, -1);
  EXPECT_EQ(RefusalLine("Function", "a message"), diagnostics.Take());
  EXPECT_EQ(EIO, errno);
}

TEST(HandleDiagnostics, PrintsTheCodeAndTheTextOfErrno) {
  Diagnostics diagnostics;
  errno = EIO;
  HandleDiagnostics("Function", kFailure, 5);
  EXPECT_EQ("Function: JTPDF error: 5; Input/output error\n", diagnostics.Take());
  HandleDiagnostics("Function", kFailure, -77);
  EXPECT_EQ("Function: JTPDF error: -77; Input/output error\n", diagnostics.Take());
  EXPECT_EQ(EIO, errno);
}

TEST(HandleDiagnostics, IsSilentWithoutTheMode) {
  Diagnostics diagnostics(false);
  HandleDiagnostics("Function", kFailure, -1);
  HandleDiagnostics("Function", kFailure, 5);
  EXPECT_EQ("", diagnostics.Take());
}

TEST(GuardedCall, SuccessIsZeroAndLeavesErrnoAsTheCallerHadIt) {
  errno = 4242;
  EXPECT_EQ(0, GuardedCall("Function", [] { errno = EIO; }));
  EXPECT_EQ(4242, errno);
}

TEST(GuardedCall, AFailureIsErrnoAsItStands) {
  Diagnostics diagnostics;
  EXPECT_EQ(EIO, GuardedCall("Function", [] {
              errno = EIO;
              throw kFailure;
            }));
  EXPECT_EQ(ErrorLine("Function", EIO), diagnostics.Take());
}

TEST(GuardedCall, AFailureWithoutErrnoIsMinusOne) {
  Diagnostics diagnostics;
  EXPECT_EQ(-1, GuardedCall("Function", [] {
    errno = 0;
    throw kFailure;
  }));
  EXPECT_EQ(RefusalLine("Function", "a message"), diagnostics.Take());
}

TEST(GuardedCall, CatchesTypesDerivedFromTheFailure) {
  struct Derived : std::ios_base::failure {
    using failure::failure;
  };
  errno = 0;
  EXPECT_EQ(-1, GuardedCall("Function", [] { throw Derived("derived"); }));
}

TEST(GuardedCall, LetsEveryOtherExceptionPass) {
  EXPECT_THROW(GuardedCall("Function", [] { throw std::bad_alloc(); }), std::bad_alloc);
  EXPECT_THROW(GuardedCall("Function", [] { throw std::system_error(std::error_code()); }),
               std::system_error);
  EXPECT_THROW(GuardedCall("Function", [] { throw 5; }), int);
}

TEST(GuardedCall, AnExceptionOfTheReportReachesTheCaller) {
  struct FailingBuffer : std::streambuf {
    int sync() override { return -1; }
  } failing;
  JTPDFSetDiagnosticMode(true);
  std::streambuf* const saved = std::cerr.rdbuf(&failing);
  std::cerr.exceptions(std::ios_base::badbit);
  EXPECT_THROW(GuardedCall("Function", [] { throw kFailure; }), std::ios_base::failure);
  std::cerr.exceptions(std::ios_base::goodbit);
  std::cerr.rdbuf(saved);
  JTPDFSetDiagnosticMode(false);
}
