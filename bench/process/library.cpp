// The workloads through this project's library, by its public header.

#include <jtpdf/jtpdf.h>

#include <cstdio>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "workload.h"

namespace bench {

namespace {

void Check(int32_t code) {
  if (code != 0) throw std::runtime_error("the library returned " + std::to_string(code));
}

JTPDFRect Box(const Shape& s, double angle) {
  return {s.left, s.bottom, s.width, s.height, angle};
}

JTPDFRGBColor Color(Rgb color) {
  return {color.red, color.green, color.blue, 255};
}

constexpr JTPDFRect kPage = {0, 0, kPageWidth, kPageHeight, 0};

class Document {
 public:
  explicit Document(const Job& job)
      : doc(CreateFilePdfDoc(PDFCoordinateUnitPoint, Wide(job.out).c_str(), nullptr, nullptr)) {
    Check(InitPdfDoc(doc));
  }
  Document() : doc(CreateMemoryPdfDoc(PDFCoordinateUnitPoint)) { Check(InitPdfDoc(doc)); }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  ~Document() { DestroyPdfDoc(doc); }

  operator JTPDFDocument*() const { return doc; }

  // Turns the canvas into a page of its own.
  void AddPage(const JTPDFRect& page) {
    int form = 0;
    Check(WritePdfCanvas(doc, &form));
    Check(WritePdfPage(doc, form, page, page));
  }

  void Finalize() { Check(FinalizePdfDoc(doc, nullptr)); }

 private:
  static std::wstring Wide(const char* name) {
    std::wstring wide(std::string_view(name).size(), L'\0');
    for (wchar_t& c : wide) c = static_cast<unsigned char>(*name++);
    return wide;
  }

  JTPDFDocument* doc;
};

void DrawRectangle(JTPDFDocument* doc, const Shape& s, double angle) {
  FillAndStrokePdfRectangle(doc, Box(s, angle), Color(s.fill), Color(s.stroke), s.lineWidth);
}

void DrawShapes(const Job& job) {
  Document doc(job);
  SetPdfCanvasBoundingBox(doc, kPage);
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) {
    const Shape s = source.Next();
    if (job.workload == Workload::kEllipses) {
      FillAndStrokePdfCircle(doc, Box(s, 0), Color(s.fill), Color(s.stroke), s.lineWidth);
    } else {
      DrawRectangle(doc, s, job.workload == Workload::kRotated ? s.angle : 0);
    }
  }
  doc.AddPage(kPage);
  doc.Finalize();
}

void WriteJpegs(const Job& job, Document& doc) {
  InputFiles files(job);
  const JTPDFRect page = {0, 0, double(files.Width()), double(files.Height()), 0};
  SetPdfCanvasBoundingBox(doc, page);
  for (std::size_t i = 0; i < job.count; ++i) {
    const std::string_view jpeg = files.Read(i);
    const TPdfImageDescriptor image = {jpeg.data(),         static_cast<uint32_t>(jpeg.size()),
                                       kPdfCompressionJPEG, files.Width(),
                                       files.Height(),      8,
                                       kPdfColorSpaceRGB,   0};
    int number = 0;
    Check(WritePdfImage(doc, &image, false, kPdfImageRolePhoto, L"photo", 0, nullptr, &number));
    DrawPdfImage(doc, number);
    doc.AddPage(page);
  }
  doc.Finalize();
}

void WritePages(const Job& job) {
  Document doc(job);
  SetPdfCanvasBoundingBox(doc, kPage);
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) {
    DrawRectangle(doc, source.Next(), 0);
    doc.AddPage(kPage);
  }
  doc.Finalize();
}

void WriteDocuments(const Job& job) {
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) {
    Document doc;
    SetPdfCanvasBoundingBox(doc, kPage);
    DrawRectangle(doc, source.Next(), 0);
    doc.AddPage(kPage);
    doc.Finalize();
    if (IsLast(job, i)) KeepResult(job, GetPdfData(doc), GetPdfDataSize(doc));
  }
}

constexpr char kGreyPixel[] = "\x80";

TPdfImageDescriptor GreyPixel() {
  // Any other value of compression writes the data without a filter.
  return {kGreyPixel, 1, static_cast<TPdfCompression>(-1), 1, 1, 8, kPdfColorSpaceGray, 0};
}

void WriteImages(const Job& job) {
  Document doc(job);
  SetPdfCanvasBoundingBox(doc, kPage);
  ShapeSource source;
  const TPdfImageDescriptor pixel = GreyPixel();
  for (std::size_t i = 0; i < job.count; ++i) {
    int number = 0;
    Check(WritePdfImage(doc, &pixel, false, kPdfImageRoleShape, L"dot", 0, nullptr, &number));
    DrawPdfImageInRect(doc, number, Box(source.Next(), 0));
  }
  doc.AddPage(kPage);
  doc.Finalize();
}

void WriteKeys(const Job& job) {
  // Ten entries to a dictionary: "/PieceInfo/P0000012/K7".
  constexpr std::size_t kKeySize = 64;
  std::vector<char> keys(job.count * kKeySize);
  std::vector<JTPDFDictionaryItem> items(job.count);
  // A step that has no factor in common with the powers of ten visits each key once.
  const std::size_t step = job.workload == Workload::kShuffledKeys ? 618033 : 1;
  for (std::size_t i = 0; i < job.count; ++i) {
    const std::size_t n = i * step % job.count;
    char* const key = &keys[i * kKeySize];
    std::snprintf(key, kKeySize, "/PieceInfo/P%07zu/K%zu", n / 10, n % 10);
    items[i] = {key, L"v"};
  }
  Document doc(job);
  const TPdfImageDescriptor pixel = GreyPixel();
  int number = 0;
  Check(WritePdfImage(doc, &pixel, false, kPdfImageRoleShape, L"dot",
                      static_cast<unsigned>(items.size()), items.data(), &number));
  DrawPdfImageInRect(doc, number, kPage);
  SetPdfCanvasBoundingBox(doc, kPage);
  doc.AddPage(kPage);
  doc.Finalize();
}

}  // namespace

bool Run(const Job& job) {
  switch (job.workload) {
    case Workload::kRectangles:
    case Workload::kRotated:
    case Workload::kEllipses:
      DrawShapes(job);
      return true;
    case Workload::kJpegFile:
    case Workload::kSmallJpegs: {
      Document doc(job);
      WriteJpegs(job, doc);
      return true;
    }
    case Workload::kJpegMemory: {
      Document doc;
      WriteJpegs(job, doc);
      KeepResult(job, GetPdfData(doc), GetPdfDataSize(doc));
      return true;
    }
    case Workload::kPages:
      WritePages(job);
      return true;
    case Workload::kDocuments:
      WriteDocuments(job);
      return true;
    case Workload::kImages:
      WriteImages(job);
      return true;
    case Workload::kKeys:
    case Workload::kShuffledKeys:
      WriteKeys(job);
      return true;
  }
  return false;
}

}  // namespace bench
