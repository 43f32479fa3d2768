// Exceptions of the DLL, which has a C++ runtime of its own, reach a host with another; and those
// of the host's pass through the DLL.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <new>
#include <stdexcept>

#include <jtpdf/jtpdf.h>
#include <jtpdf/objects.h>

namespace {

constexpr std::size_t kMoreThanThereIs = std::size_t{1} << 60;

std::int32_t WriteTooMuch(JTPDFDocument* doc) {
  return WritePdfStream(doc, 0, nullptr, "", kMoreThanThereIs, nullptr);
}

class MemoryDocument : public testing::Test {
 protected:
  MemoryDocument() { EXPECT_EQ(0, InitPdfDoc(doc_)); }
  ~MemoryDocument() override { DestroyPdfDoc(doc_); }

  JTPDFDocument* doc_ = CreateMemoryPdfDoc(PDFCoordinateUnitPoint);
};

TEST_F(MemoryDocument, BadAllocReachesTheHost) {
  errno = 4242;
  EXPECT_THROW(WriteTooMuch(doc_), std::bad_alloc);
  EXPECT_EQ(4242, errno);
}

TEST_F(MemoryDocument, BadAllocIsACodeWhereTheHostAskedForThat) {
  SetPdfMemoryErrors(doc_, true);
  EXPECT_EQ(ENOMEM, WriteTooMuch(doc_));
}

struct Refused : std::runtime_error {
  using runtime_error::runtime_error;
};

TEST(CallbackDocument, WhatTheFunctionThrowsComesOutOfTheCall) {
  JTPDFDocument* const doc = CreateCallbackPdfDoc(
      1, [](void*, const char*, std::size_t) -> std::int32_t { throw Refused("enough"); }, nullptr);
  EXPECT_EQ(0, InitPdfDoc(doc));
  EXPECT_THROW(FinalizePdfDoc(doc, nullptr), Refused);
  DestroyPdfDoc(doc);
}

TEST(CallbackDocument, BadAllocOfTheFunctionIsACodeWhereTheHostAskedForThat) {
  JTPDFDocument* const doc = TryCreateCallbackPdfDoc(
      1, [](void*, const char*, std::size_t) -> std::int32_t { throw std::bad_alloc(); }, nullptr);
  EXPECT_EQ(0, InitPdfDoc(doc));
  EXPECT_EQ(ENOMEM, FinalizePdfDoc(doc, nullptr));
  DestroyPdfDoc(doc);
}

}  // namespace
