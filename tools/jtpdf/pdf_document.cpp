#include "pdf_document.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

#include "flate.h"
#include "image_source.h"
#include "mapped_file.h"
#include "text.h"

namespace pictures::tool {
namespace {

std::string AsArray(const JTPDFRect& box) {
  std::string text = "[";
  for (const double edge : {box.left, box.bottom, box.left + box.width, box.bottom + box.height}) {
    if (text.size() > 1) text += ' ';
    text += Decimal(edge);
  }
  return text + ']';
}

// Saves the graphics state and draws only inside the box from there on.
std::string ClipTo(const JTPDFRect& box) {
  return "q " + Decimal(box.left) + " " + Decimal(box.bottom) + " " + Decimal(box.width) + " " +
         Decimal(box.height) + " re W n";
}

}  // namespace

// What was written of large files that are mapped is forgotten, again and again.
int32_t PdfDocument::WriteToOutput(void* context, const char* data, size_t size) {
  constexpr size_t kAtOnce = size_t{8} << 20;
  auto& sink = *static_cast<Sink*>(context);
  sink.output.CheckRoom(size);
  while (size > 0) {
    const size_t part = std::min(size, kAtOnce - sink.remembered);
    if (const int code = sink.output.Write(data, part); code != 0) return code;
    data += part;
    size -= part;
    sink.remembered += part;
    if (sink.remembered < kAtOnce) continue;
    MappedFile::ForgetLarge();
    sink.remembered = 0;
  }
  return 0;
}

PdfDocument::PdfDocument(Output& output, const Metadata& metadata, int compression)
    : sink_{output, 0},
      compression_(compression),
      document_(CreateCallbackPdfDoc(PDFCoordinateUnitPoint, WriteToOutput, &sink_)),
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
  sink_.output.CheckRoom(image.pixels.Size() + (image.alpha ? image.alpha->Size() : 0));
  int number = 0;
  Check(images_.Write(image, {role, name}, &number));
  return number;
}

void PdfDocument::Draw(int image, const PageLayout& layout) {
  SetPdfCanvasBoundingBox(document_.get(), layout.page);
  if (layout.cut) DrawPdfContent(document_.get(), ClipTo(layout.cell).c_str());
  DrawPdfImageInRect(document_.get(), image, layout.image);
  if (layout.cut) DrawPdfContent(document_.get(), "Q");
}

void PdfDocument::AddPage(const PageLayout& layout) {
  int form = 0;
  errno = 0;
  Check(WritePdfCanvas(document_.get(), &form));
  for (const auto& [key, box] :
       {std::pair("/BleedBox", layout.bleed), {"/TrimBox", layout.trim}, {"/ArtBox", layout.art}}) {
    if (box) Check(SetPdfPageEntry(document_.get(), key, AsArray(*box).c_str()));
  }
  errno = 0;
  Check(WritePdfPage(document_.get(), form, layout.crop, layout.page));
  ++pages_;
}

void PdfDocument::AddBookmark(int level, std::string_view title) {
  const std::wstring text = WithRoomForPairs(FromUtf8Lenient(title));
  Check(AddPdfBookmark(document_.get(), level, text.c_str(), pages_));
}

void PdfDocument::SetViewer(const Viewer& viewer) {
  for (const auto& [key, value] : viewer.catalogEntries) {
    Check(SetPdfCatalogEntry(document_.get(), key.c_str(), value.c_str()));
  }
  viewer_ = viewer;
}

int32_t PdfDocument::EncodeContent(void* document, const char* data, size_t size,
                                   const char** encoded, size_t* encodedSize) {
  auto* own = static_cast<PdfDocument*>(document);
  try {
    own->content_ = Deflate({reinterpret_cast<const uint8_t*>(data), size}, own->compression_);
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
  *encoded = reinterpret_cast<const char*>(own->content_.Data());
  *encodedSize = own->content_.Size();
  return 0;
}

void PdfDocument::CompressContents() {
  Check(SetPdfContentEncoder(document_.get(), "/FlateDecode", EncodeContent, this));
}

void PdfDocument::Finish() {
  if (viewer_.firstPage) {
    const int page = std::min(static_cast<int>(*viewer_.firstPage), pages_ - 1);  // some may fail
    Check(SetPdfOpenPage(document_.get(), page, viewer_.view.c_str()));
  }
  errno = 0;
  Check(FinalizePdfDoc(document_.get(), nullptr));
  document_.reset();
}

}  // namespace pictures::tool
