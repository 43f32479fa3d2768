#include "output/callback_sink.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <ios>
#include <stdexcept>
#include <string>
#include <vector>

#include "jtpdf/jtpdf.h"
#include "support/bytes.h"
#include "support/diagnostics.h"
#include "support/doc.h"

constexpr std::size_t kPiece = 32768;

struct Host {
  std::vector<std::string> pieces;
  std::vector<const char*> addresses;
  int calls = 0;
  int failAt = -1;
  std::int32_t code = 0;

  std::string Bytes() const {
    std::string bytes;
    for (const std::string& piece : pieces) bytes += piece;
    return bytes;
  }
};

std::int32_t Take(void* context, const char* data, std::size_t size) {
  Host& host = *static_cast<Host*>(context);
  if (host.calls++ == host.failAt) return host.code;
  host.pieces.emplace_back(data, size);
  host.addresses.push_back(data);
  return 0;
}

TEST(CallbackSink, GathersSmallTexts) {
  Host host;
  CallbackSink sink(Take, &host);
  sink.Open();
  std::string expected;
  for (int i = 0; i < 5000; ++i) {
    const std::string text(static_cast<std::size_t>(i % 100), static_cast<char>('a' + i % 26));
    sink.Write(text, text);
    expected += text + text;
  }
  sink.Close();
  EXPECT_EQ(expected, host.Bytes());
  ASSERT_GT(host.pieces.size(), 5u);
  for (std::size_t i = 0; i + 1 < host.pieces.size(); ++i) {
    EXPECT_GE(host.pieces[i].size(), kPiece);
    EXPECT_LT(host.pieces[i].size(), 2 * kPiece);
  }
}

TEST(CallbackSink, HandsOnLargeDataAsItIsBehindWhatWaits) {
  Host host;
  CallbackSink sink(Take, &host);
  sink.Open();
  const std::string large(kPiece, 'x');
  sink.Write("head", large);
  sink.Write("tail", {});
  sink.Close();
  EXPECT_EQ((std::vector<std::string>{"head", large, "tail"}), host.pieces);
  EXPECT_EQ(large.data(), host.addresses[1]);
}

TEST(CallbackSink, OneByteLessIsGathered) {
  Host host;
  CallbackSink sink(Take, &host);
  sink.Open();
  sink.Write("h", std::string(kPiece - 1, 'x'));
  EXPECT_EQ(1u, host.pieces.size()) << "and is a piece with its head";
  EXPECT_EQ(kPiece, host.Bytes().size());
}

// An address where nothing is: whoever reads it crashes.
TEST(CallbackSink, NeverReadsLargeData) {
  const auto count = [](void* context, const char*, std::size_t size) {
    *static_cast<std::uint64_t*>(context) += size;
    return std::int32_t{0};
  };
  std::uint64_t size = 0;
  JTPDFDocument* const doc = CreateCallbackPdfDoc(1, count, &size);
  EXPECT_EQ(0, InitPdfDoc(doc));
  const auto* const nowhere = reinterpret_cast<const char*>(std::uintptr_t{16});
  const TPdfImageDescriptor image = {nowhere, 0xFFFFFFFF, kPdfCompressionJPEG, 1,
                                     1,       8,          kPdfColorSpaceRGB,   0};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(0, WritePdfImage(doc, &image, false, kPdfImageRolePhoto, L"", 0, nullptr, nullptr));
  }
  EXPECT_EQ(0, WritePdfICCProfile(doc, nowhere, 0xFFFFFFFF, kPdfCompressionFlate, nullptr));
  EXPECT_EQ(0, FinalizePdfDoc(doc, nullptr));
  EXPECT_GT(size, 4 * std::uint64_t{0xFFFFFFFF});
  DestroyPdfDoc(doc);
}

void Fill(JTPDFDocument* doc) {
  const std::string large(100000, 'x');
  const TPdfImageDescriptor image = Picture(large);
  int form = 0;
  EXPECT_EQ(0, InitPdfDoc(doc));
  EXPECT_EQ(0, WritePdfImage(doc, &image, false, kPdfImageRolePhoto, L"a", 0, nullptr, nullptr));
  DrawPdfImage(doc, 2);
  EXPECT_EQ(0, WritePdfCanvas(doc, &form));
  for (int i = 0; i < 500; ++i) EXPECT_EQ(0, WritePdfPage(doc, form, kA4, kA4));
  EXPECT_EQ(0, FinalizePdfDoc(doc, "end"));
}

TEST(CallbackDocument, HasTheBytesOfAMemoryDocumentAndKeepsNone) {
  Host host;
  JTPDFDocument* const doc = CreateCallbackPdfDoc(1, Take, &host);
  Fill(doc);
  JTPDFDocument* const inMemory = CreateMemoryPdfDoc(1);
  Fill(inMemory);
  EXPECT_BYTES(BytesOf(inMemory), host.Bytes());
  EXPECT_EQ(nullptr, GetPdfData(doc));
  EXPECT_EQ(0u, GetPdfDataSize(doc));
  EXPECT_NE(0, WritePdfPage(doc, 2, kA4, kA4)) << "it is closed";
  Diagnostics diagnostics;
  DestroyPdfDoc(doc);
  DestroyPdfDoc(inMemory);
  EXPECT_EQ("", diagnostics.Take());
}

TEST(CallbackDocument, CodeIsThatOfTheHostAndNoLaterCallSucceeds) {
  for (const std::int32_t code : {1, ENOSPC, -1, -5, 70000}) {
    Host host;
    host.failAt = 0;
    host.code = code;
    JTPDFDocument* const doc = CreateCallbackPdfDoc(1, Take, &host);
    EXPECT_EQ(0, InitPdfDoc(doc));
    EXPECT_EQ(code, FinalizePdfDoc(doc, nullptr));
    errno = 0;
    EXPECT_EQ(-1, WritePdfPage(doc, 2, kA4, kA4));
    errno = 0;
    EXPECT_EQ(-1, FinalizePdfDoc(doc, nullptr));
    EXPECT_EQ(1, host.calls);
    DestroyPdfDoc(doc);
  }
}

TEST(CallbackDocument, AnExceptionComesOutOfTheCallAndEndsTheDocument) {
  const auto raise = [](void*, const char*, std::size_t) -> std::int32_t {
    throw std::runtime_error("the host's");
  };
  JTPDFDocument* const doc = CreateCallbackPdfDoc(1, raise, nullptr);
  EXPECT_EQ(0, InitPdfDoc(doc));
  EXPECT_THROW(FinalizePdfDoc(doc, nullptr), std::runtime_error);
  EXPECT_NE(0, FinalizePdfDoc(doc, nullptr));
  DestroyPdfDoc(doc);
}

TEST(CallbackDocument, GivenUpCallsNobodyAndSaysSo) {
  Host host;
  Diagnostics diagnostics;
  JTPDFDocument* const doc = CreateCallbackPdfDoc(1, Take, &host);
  EXPECT_EQ(0, InitPdfDoc(doc));
  DestroyPdfDoc(doc);
  EXPECT_EQ(0, host.calls);
  EXPECT_EQ("Warning: JTPDFDocument destroyed without being finalized.\n", diagnostics.Take());
  DestroyPdfDoc(CreateCallbackPdfDoc(1, Take, &host));
  EXPECT_EQ("", diagnostics.Take()) << "it was never opened";
}
