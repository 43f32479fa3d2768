#include "support/doc.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <type_traits>
#include <utility>

#include "support/bytes.h"
#include "support/temp_dir.h"

namespace {

// A value of errno that nothing sets by itself.
constexpr int kErrnoOfCaller = 4242;

std::wstring Wide(const std::filesystem::path& path) {
  return path.wstring();
}

}  // namespace

TPdfImageDescriptor Picture(std::string_view data, TPdfColorSpace colorSpace,
                            TPdfCompression compression, int colorSpaceObject) {
  return {data.data(),     static_cast<uint32_t>(data.size()), compression, 640, 480, 8, colorSpace,
          colorSpaceObject};
}

const TPdfImageDescriptor grey = Picture("grey data");

template <typename Call>
void Doc::Expect(const char* function, const Call& call) {
  errno = kErrnoOfCaller;
  if constexpr (std::is_void_v<decltype(call())>) {
    call();
  } else {
    EXPECT_EQ(0, call()) << function;
  }
  EXPECT_EQ(kErrnoOfCaller, errno) << function << " changed errno although it succeeded";
}

Doc::Doc(double unitFactor) : handle(CreateMemoryPdfDoc(unitFactor)) {}

Doc::Doc(std::filesystem::path file, const wchar_t* creator, const wchar_t* author,
         double unitFactor)
    : handle(CreateFilePdfDoc(unitFactor, Wide(file).c_str(), creator, author)),
      path(std::move(file)) {}

Doc::Doc(Doc&& other) noexcept
    : last(other.last), handle(std::exchange(other.handle, nullptr)), path(std::move(other.path)) {}

Doc::~Doc() {
  Expect("DestroyPdfDoc", [&] { DestroyPdfDoc(handle); });
}

Doc& Doc::Init() {
  Expect("InitPdfDoc", [&] { return InitPdfDoc(handle); });
  return *this;
}

Doc& Doc::Info(const char* key, const wchar_t* value) {
  Expect("SetPdfInfoItem", [&] { SetPdfInfoItem(handle, key, value); });
  return *this;
}

Doc& Doc::Mark(bool mark) {
  Expect("SetPdfMgMk", [&] { SetPdfMgMk(handle, mark); });
  return *this;
}

Doc& Doc::Extent(JTPDFRect box) {
  Expect("SetPdfCanvasBoundingBox", [&] { SetPdfCanvasBoundingBox(handle, box); });
  return *this;
}

Doc& Doc::Clear() {
  Expect("ClearPdfCanvas", [&] { ClearPdfCanvas(handle); });
  return *this;
}

Doc& Doc::Draw(int image) {
  Expect("DrawPdfImage", [&] { DrawPdfImage(handle, image); });
  return *this;
}

Doc& Doc::Draw(int image, JTPDFRect box) {
  Expect("DrawPdfImageInRect", [&] { DrawPdfImageInRect(handle, image, box); });
  return *this;
}

Doc& Doc::Fill(JTPDFRect box, JTPDFRGBColor fill) {
  Expect("FillPdfRectangle", [&] { FillPdfRectangle(handle, box, fill); });
  return *this;
}

Doc& Doc::Stroke(JTPDFRect box, JTPDFRGBColor stroke, double lineWidth) {
  Expect("StrokePdfRectangle", [&] { StrokePdfRectangle(handle, box, stroke, lineWidth); });
  return *this;
}

Doc& Doc::FillAndStroke(JTPDFRect box, JTPDFRGBColor fill, JTPDFRGBColor stroke, double lineWidth) {
  Expect("FillAndStrokePdfRectangle",
         [&] { FillAndStrokePdfRectangle(handle, box, fill, stroke, lineWidth); });
  return *this;
}

Doc& Doc::Circle(JTPDFRect box, JTPDFRGBColor fill, JTPDFRGBColor stroke, double lineWidth) {
  Expect("FillAndStrokePdfCircle",
         [&] { FillAndStrokePdfCircle(handle, box, fill, stroke, lineWidth); });
  return *this;
}

Doc& Doc::Image(const TPdfImageDescriptor& image, const ImageOptions& options) {
  Expect("WritePdfImage", [&] {
    return WritePdfImage(handle, &image, options.maskWhite, options.role, options.name,
                         static_cast<unsigned>(options.items.size()), options.items.data(), &last);
  });
  return *this;
}

Doc& Doc::ImageWithAlpha(const TPdfImageDescriptor& image, const TPdfImageDescriptor* alpha,
                         const ImageOptions& options) {
  Expect("WritePdfImageWithAlpha", [&] {
    return WritePdfImageWithAlpha(handle, &image, alpha, options.role, options.name,
                                  static_cast<unsigned>(options.items.size()), options.items.data(),
                                  &last);
  });
  return *this;
}

Doc& Doc::ImageJPEG2000(const TPdfImageDescriptor& image, const ImageOptions& options) {
  Expect("WritePdfImageJPEG2000", [&] {
    return WritePdfImageJPEG2000(handle, &image, options.role, options.name,
                                 static_cast<unsigned>(options.items.size()), options.items.data(),
                                 &last);
  });
  return *this;
}

Doc& Doc::Profile(std::string_view data, TPdfCompression compression) {
  Expect("WritePdfICCProfile", [&] {
    return WritePdfICCProfile(handle, data.data(), static_cast<unsigned>(data.size()), compression,
                              &last);
  });
  return *this;
}

Doc& Doc::Form() {
  Expect("WritePdfCanvas", [&] { return WritePdfCanvas(handle, &last); });
  return *this;
}

Doc& Doc::Page(int form, JTPDFRect crop, JTPDFRect media) {
  Expect("WritePdfPage", [&] { return WritePdfPage(handle, form, crop, media); });
  return *this;
}

std::string Doc::Finish(const char* closingText) {
  Expect("FinalizePdfDoc", [&] { return FinalizePdfDoc(handle, closingText); });
  return path.empty() ? BytesOf(handle) : ReadFile(path);
}

std::string BytesOf(JTPDFDocument* doc) {
  const char* const data = GetPdfData(doc);
  return data == nullptr ? std::string() : std::string(data, GetPdfDataSize(doc));
}

std::string Head() {
  return Lines("%PDF-1.5", "%\xE2\xE3\xCD\xD3", "1 0 obj", "<<", "/AIS false", "/BM /Normal",
               "/ca 1.0", "/CA 1.0", "/OP false", "/op false", "/OPM 1", "/SA true", "/SMask /None",
               "/Type /ExtGState", ">>", "endobj");
}
