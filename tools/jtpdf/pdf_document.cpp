#include "pdf_document.h"

#include <cerrno>
#include <utility>

#include "image_source.h"
#include "text.h"

namespace pictures::tool {
namespace {

int32_t WriteToOutput(void* output, const char* data, size_t size) {
  static_cast<Output*>(output)->CheckRoom(size);
  return static_cast<Output*>(output)->Write(data, size);
}

}  // namespace

PdfDocument::PdfDocument(Output& output, const Metadata& metadata, int compression)
    : output_(output),
      document_(CreateCallbackPdfDoc(PDFCoordinateUnitPoint, WriteToOutput, &output)),
      images_(document_.get(), compression) {
  const std::pair<const char*, const std::wstring&> items[] = {
      {"Title", metadata.title},     {"Author", metadata.author},
      {"Subject", metadata.subject}, {"Keywords", metadata.keywords},
      {"Creator", metadata.creator}, {"CreationDate", metadata.creationDate},
      {"ModDate", metadata.modDate}};
  for (const auto& [key, value] : items) {
    if (!value.empty()) SetPdfInfoItem(document_.get(), key, WithRoomForPairs(value).c_str());
  }
  errno = 0;
  Check(InitPdfDoc(document_.get()));
}

void PdfDocument::Check(int32_t code) {
  if (code == 0) return;
  // What was to be written is no longer there: the rest of a mapped file.
  if (code == EFAULT) throw InputChanged();
  throw OutputError(WriteProblem(code));
}

int PdfDocument::WriteImage(const EncodedImage& image, TPdfImageRole role,
                            const std::wstring& name) {
  // Before the first byte of it is written.
  output_.CheckRoom(image.pixels.Size() + (image.alpha ? image.alpha->Size() : 0));
  int number = 0;
  Check(images_.Write(image, {role, name}, &number));
  return number;
}

void PdfDocument::AddPage(int image, const PageLayout& layout) {
  SetPdfCanvasBoundingBox(document_.get(), layout.page);
  DrawPdfImageInRect(document_.get(), image, layout.image);
  int form = 0;
  errno = 0;
  Check(WritePdfCanvas(document_.get(), &form));
  errno = 0;
  Check(WritePdfPage(document_.get(), form, layout.crop, layout.page));
}

void PdfDocument::Finish() {
  errno = 0;
  Check(FinalizePdfDoc(document_.get(), nullptr));
  document_.reset();
}

}  // namespace pictures::tool
