// Documents of the C++ face that go to a stream or a function, and how large documents may become.

#include <gtest/gtest.h>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#endif

#include <cerrno>
#include <cstdint>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "jtpdf/jtpdf.hpp"

namespace {

using namespace jtpdf::literals;
using jtpdf::Box;
using jtpdf::Bytes;
using jtpdf::Compression;
using jtpdf::Document;
using jtpdf::Error;

constexpr Box kSheet{0_mm, 0_mm, 100_mm, 100_mm};

// Memory of a size that nobody has to have: it is never touched.
class Reserved {
 public:
#if defined(_WIN32)
  explicit Reserved(std::size_t size)
      : size_(size), data_(VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS)) {
    if (data_ == nullptr) throw std::bad_alloc();
  }
  ~Reserved() {
    VirtualFree(data_, 0, MEM_RELEASE);
  }
#else
  explicit Reserved(std::size_t size)
      : size_(size),
        data_(mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {
    if (data_ == MAP_FAILED) throw std::bad_alloc();
  }
  ~Reserved() {
    munmap(data_, size_);
  }
#endif
  Reserved(const Reserved&) = delete;
  Reserved& operator=(const Reserved&) = delete;
  Bytes bytes() const {
    return {data_, size_};
  }

 private:
  std::size_t size_;
  void* data_;
};

constexpr std::size_t kMostOfAnImage = 0xFFFFFFFF;

// Some of everything, an image with more data than fits into a piece among it.
void WriteSome(Document& doc) {
  static const std::vector<char> pixels(100000, 'p');
  doc.set_info("Title", "Some");
  doc.set_canvas_box(kSheet);
  doc.draw_image(
      doc.write_image({pixels, Compression::none, 1000, 100, 8, jtpdf::ColorSpace::gray}), kSheet);
  doc.write_page(doc.write_canvas(), kSheet);
}

const std::string& SomeInMemory() {
  static const std::string bytes = [] {
    Document doc = Document::memory(jtpdf::millimeter);
    WriteSome(doc);
    doc.finish("% end");
    return std::string(doc.bytes().begin(), doc.bytes().end());
  }();
  return bytes;
}

// What make(bytes)'s document hands on, which appends to bytes.
template <typename Make>
std::string Written(const Make& make) {
  std::string bytes;
  Document doc = make(bytes);
  WriteSome(doc);
  doc.finish("% end");
  EXPECT_TRUE(doc.bytes().empty()) << "nothing is kept";
  return bytes;
}

TEST(JtpdfOutput, OfAStreamIsTheSameAsInMemory) {
  std::ostringstream stream;
  Document doc = Document::to(stream, jtpdf::millimeter);
  EXPECT_EQ(doc.unit(), jtpdf::millimeter);
  WriteSome(doc);
  doc.finish("% end");
  EXPECT_EQ(stream.str(), SomeInMemory());
}

TEST(JtpdfOutput, OfEveryKindOfFunctionIsTheSameAsInMemory) {
  EXPECT_EQ(Written([](std::string& bytes) {
              return Document::to([&bytes](std::string_view piece) { bytes += piece; },
                                  jtpdf::millimeter);
            }),
            SomeInMemory());
  EXPECT_EQ(Written([](std::string& bytes) {
              return Document::to(
                  [&bytes](const char* data, std::size_t size) {
                    bytes.append(data, size);
                    return true;
                  },
                  jtpdf::millimeter);
            }),
            SomeInMemory());
  EXPECT_EQ(Written([](std::string& bytes) {
              return Document::to(
                  [&bytes](std::string_view piece) {
                    bytes += piece;
                    return 0;
                  },
                  jtpdf::millimeter);
            }),
            SomeInMemory());
}

struct Counter {
  std::size_t count = 0;
  std::unique_ptr<int> not_copyable = {};
  void operator()(std::string_view piece) { count += piece.size(); }
};

TEST(JtpdfOutput, MovesAFunctionInOrRefersToIt) {
  Counter outside;
  Document doc = Document::to(std::ref(outside), jtpdf::millimeter);
  WriteSome(doc);
  doc.finish("% end");
  EXPECT_EQ(outside.count, SomeInMemory().size());
  Document::to(Counter()).finish();
}

TEST(JtpdfOutput, HandsLargeDataOnWithoutACopy) {
  const std::string data(1000000, 'x');
  bool seen = false;
  Document doc =
      Document::to([&](std::string_view piece) { seen = seen || piece.data() == data.data(); });
  doc.write_image({data, Compression::flate, 1, 1});
  EXPECT_TRUE(seen);
  doc.finish();
}

TEST(JtpdfOutput, StaysWhereItIsWhenTheDocumentMoves) {
  std::ostringstream stream;
  std::vector<Document> several;
  several.push_back(Document::to(stream, jtpdf::millimeter));
  several.push_back(Document::memory());  // moves the first
  Document last = Document::memory();
  last = std::move(several[0]);
  several.clear();
  WriteSome(last);
  last.finish("% end");
  EXPECT_EQ(stream.str(), SomeInMemory());
}

// ---- Failures ----------------------------------------------------------------------------------

template <typename Body>
Error FailureOf(const Body& body) {
  try {
    body();
  } catch (const Error& error) {
    return error;
  }
  throw std::logic_error("no jtpdf::Error was thrown");
}

struct OwnError {
  int value;
};

// Throws, or says no, at its k-th call; nothing is written afterwards.
TEST(JtpdfOutput, ExceptionsComeOutOfTheCallThatCausedThem) {
  const std::vector<char> large(40000, 'x');
  for (int k = 1;; ++k) {
    int calls = 0;
    Document doc = Document::to([&](std::string_view) {
      if (++calls == k) throw OwnError{k};
    });
    try {
      for (int i = 0; i < 3; ++i) doc.write_image({large, Compression::flate, 1, 1});
      doc.finish();
      EXPECT_EQ(k, calls + 1);
      EXPECT_GT(k, 4);
      break;
    } catch (const OwnError& error) {
      EXPECT_EQ(error.value, k);
      EXPECT_EQ(calls, k);
    }
    EXPECT_EQ(FailureOf([&] { doc.finish(); }).code(), jtpdf::Errc::refused);
    EXPECT_EQ(calls, k) << "the function is not called again";
  }
}

TEST(JtpdfOutput, CodesAreThoseOfTheErrors) {
  const auto finish = [](auto write) { return FailureOf([&] { Document::to(write).finish(); }); };
  const Error full = finish([](std::string_view) { return ENOSPC; });
  EXPECT_EQ(full.code(), std::errc::no_space_on_device);
  EXPECT_STREQ(full.function(), "FinalizePdfDoc");
  EXPECT_EQ(finish([](std::string_view) { return false; }).code(), std::errc::io_error);
  EXPECT_EQ(finish([](std::string_view) { return -1; }).result(), -1);
  errno = EXDEV;
  finish([](std::string_view) { return ENOSPC; });
  EXPECT_EQ(errno, EXDEV);
}

TEST(JtpdfOutput, OfAFailedStreamSaysSo) {
  std::ostringstream stream;
  Document doc = Document::to(stream);
  stream.setstate(std::ios::badbit);
  const Error error = FailureOf([&] { doc.finish(); });
  EXPECT_EQ(std::string_view(error.what()).substr(0, 38), "FinalizePdfDoc: the stream has failed:")
      << error.what();
  EXPECT_EQ(error.code(), std::errc::io_error);
}

TEST(JtpdfOutput, OfAStreamToAFullDiskIsNoticed) {
  std::ofstream stream("/dev/full", std::ios::binary);
  Document doc = Document::to(stream);
  const Error error = FailureOf([&] { doc.finish(); });
  EXPECT_NE(std::string_view(error.what()).find("the stream has failed"), std::string_view::npos);
  EXPECT_EQ(error.code(), std::errc::no_space_on_device);
}

TEST(JtpdfOutput, OfAStreamThatThrowsThrowsTheSame) {
  std::ofstream stream("/dev/full", std::ios::binary);
  stream.exceptions(std::ios::badbit | std::ios::failbit);
  Document doc = Document::to(stream);
  EXPECT_THROW(doc.finish(), std::ios_base::failure);
  try {
    stream.close();
  } catch (const std::ios_base::failure&) {
    // Of the same bytes, which are still in its buffer.
  }
}

TEST(JtpdfOutput, IsDroppedLikeAFile) {
  testing::internal::CaptureStderr();
  {
    std::ostringstream stream;
    Document dropped = Document::to(stream);
    Document discarded = Document::to(stream);
    discarded.discard();
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "jtpdf: a file was dropped without finish() or discard() and is incomplete\n");
}

TEST(JtpdfOutput, TakesNothingThatCannotBeCalled) {
  static_assert(!jtpdf::detail::kTakesView<int> && !jtpdf::detail::kTakesPointer<std::string>);
  static_assert(std::is_nothrow_move_constructible_v<Document>);
}

// ---- Size --------------------------------------------------------------------------------------

TEST(JtpdfSize, IsBoundedForOneImage) {
  const Reserved reserved(kMostOfAnImage + 1);
  const jtpdf::ImageData huge{reserved.bytes(), Compression::jpeg, 1, 1};
  const std::string small = "small";
  const jtpdf::ImageData image{small, Compression::jpeg, 1, 1};
  Document doc = Document::file("/dev/null");
  for (const Error& error : {FailureOf([&] { doc.write_image(huge); }),
                             FailureOf([&] { doc.write_image_without_white(huge); }),
                             FailureOf([&] { doc.write_image_with_alpha(huge, image); }),
                             FailureOf([&] { doc.write_image_with_alpha(image, huge); }),
                             FailureOf([&] { doc.write_jpeg2000_image(huge); }),
                             FailureOf([&] { doc.write_icc_profile(reserved.bytes()); })}) {
    EXPECT_EQ(error.code(), std::errc::value_too_large);
    EXPECT_NE(
        std::string_view(error.what()).find("4294967296 bytes of data are more than 2^32 - 1"),
        std::string_view::npos)
        << error.what();
  }
  EXPECT_EQ(doc.write_image(image), jtpdf::Image(2)) << "nothing was written before";
  doc.finish();
}

// Two images of nearly 2^32 bytes fit into 10^10, a third one does not.
void ExpectsThirdToBeRefused(Document doc) {
  const Reserved reserved(kMostOfAnImage);
  const jtpdf::ImageData large{reserved.bytes(), Compression::flate, 1, 1};
  doc.write_image(large);
  doc.write_image(large);
  for (const Error& error : {FailureOf([&] { doc.write_image(large); }),
                             FailureOf([&] { doc.write_image_with_alpha(large, large); }),
                             FailureOf([&] { doc.write_jpeg2000_image(large); }),
                             FailureOf([&] { doc.write_icc_profile(reserved.bytes()); })}) {
    EXPECT_EQ(error.code(), std::errc::file_too_large);
    EXPECT_NE(std::string_view(error.what()).find("more than 10^10 bytes"), std::string_view::npos);
  }
  doc.finish();  // what was refused is not there, and the rest is whole
}

TEST(JtpdfSize, OfADocumentIsBoundedForFiles) {
#if defined(_WIN32)
  GTEST_SKIP() << "no device takes memory without looking at it";
#endif
  ExpectsThirdToBeRefused(Document::file("/dev/null"));
}

TEST(JtpdfSize, OfADocumentIsBoundedForFunctions) {
  std::uint64_t count = 0;
  ExpectsThirdToBeRefused(Document::to([&count](const char*, std::size_t size) { count += size; }));
  EXPECT_GT(count, std::uint64_t{2} * kMostOfAnImage);
}

TEST(JtpdfSize, OfAFileIsAskedBeforeItsEnd) {
  const std::string path = testing::TempDir() + "jtpdf_large" + std::to_string(__cplusplus);
  Document doc = Document::file(path);
  doc.write_page(doc.write_canvas(), kSheet);
  std::ofstream(path, std::ios::in | std::ios::out).seekp(9'999'000'000).put('x');  // sparse
  EXPECT_EQ(FailureOf([&] { doc.finish(); }).code(), std::errc::file_too_large);
  doc.discard();
  std::remove(path.c_str());
}

}  // namespace
