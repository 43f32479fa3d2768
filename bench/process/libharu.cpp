// The workloads through libharu.

#include <hpdf.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "workload.h"

namespace bench {

namespace {

void OnError(HPDF_STATUS error, HPDF_STATUS detail, void* /*data*/) {
  throw std::runtime_error("libharu: error " + std::to_string(error) + ", " +
                           std::to_string(detail));
}

// Many small objects are faster from a pool. It never gives anything back, so documents of few
// large parts do without.
constexpr HPDF_UINT kPoolBlock = 65536;
constexpr HPDF_UINT kNoPool = 0;

class Document {
 public:
  explicit Document(std::size_t pages, HPDF_UINT pool = kNoPool)
      : doc(HPDF_NewEx(OnError, nullptr, nullptr, pool, nullptr)) {
    if (doc == nullptr) throw std::bad_alloc();
    // Without this, a single node takes all pages and is searched for each of them. A node holds
    // per-node nodes of per-node pages at most.
    const double perNode = std::ceil(std::sqrt(static_cast<double>(pages)));
    HPDF_SetPagesConfiguration(doc, static_cast<HPDF_UINT>(std::max(perNode, 1.0)));
  }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  ~Document() { HPDF_Free(doc); }

  operator HPDF_Doc() const { return doc; }

  HPDF_Page AddPage(double width, double height) {
    HPDF_Page page = HPDF_AddPage(doc);
    HPDF_Page_SetWidth(page, static_cast<HPDF_REAL>(width));
    HPDF_Page_SetHeight(page, static_cast<HPDF_REAL>(height));
    return page;
  }

 private:
  HPDF_Doc doc;
};

HPDF_REAL Real(double value) {
  return static_cast<HPDF_REAL>(value);
}

void SetColors(HPDF_Page page, const Shape& s) {
  HPDF_Page_SetRGBFill(page, s.fill.red / 255.0f, s.fill.green / 255.0f, s.fill.blue / 255.0f);
  HPDF_Page_SetRGBStroke(page, s.stroke.red / 255.0f, s.stroke.green / 255.0f,
                         s.stroke.blue / 255.0f);
  HPDF_Page_SetLineWidth(page, Real(s.lineWidth));
}

void DrawRectangle(HPDF_Page page, const Shape& s) {
  HPDF_Page_GSave(page);
  SetColors(page, s);
  HPDF_Page_Rectangle(page, Real(s.left), Real(s.bottom), Real(s.width), Real(s.height));
  HPDF_Page_FillStroke(page);
  HPDF_Page_GRestore(page);
}

void DrawRotated(HPDF_Page page, const Shape& s) {
  const double radians = s.angle * 0.017453292519943295;
  const double cosine = std::cos(radians);
  const double sine = std::sin(radians);
  HPDF_Page_GSave(page);
  SetColors(page, s);
  HPDF_Page_Concat(page, Real(cosine), Real(sine), Real(-sine), Real(cosine),
                   Real(s.left + s.width / 2), Real(s.bottom + s.height / 2));
  HPDF_Page_Rectangle(page, Real(-s.width / 2), Real(-s.height / 2), Real(s.width), Real(s.height));
  HPDF_Page_FillStroke(page);
  HPDF_Page_GRestore(page);
}

void DrawEllipse(HPDF_Page page, const Shape& s) {
  SetColors(page, s);
  HPDF_Page_Ellipse(page, Real(s.left + s.width / 2), Real(s.bottom + s.height / 2),
                    Real(s.width / 2 - s.lineWidth / 2), Real(s.height / 2 - s.lineWidth / 2));
  HPDF_Page_ClosePathFillStroke(page);
}

void DrawShapes(const Job& job) {
  Document doc(1);
  HPDF_Page page = doc.AddPage(kPageWidth, kPageHeight);
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) {
    const Shape shape = source.Next();
    if (job.workload == Workload::kEllipses) {
      DrawEllipse(page, shape);
    } else if (job.workload == Workload::kRotated) {
      DrawRotated(page, shape);
    } else {
      DrawRectangle(page, shape);
    }
  }
  HPDF_SaveToFile(doc, job.out);
}

void WriteJpegs(const Job& job, Document& doc) {
  InputFiles files(job);
  for (std::size_t i = 0; i < job.count; ++i) {
    const std::string_view jpeg = files.Read(i);
    HPDF_Image image = HPDF_LoadJpegImageFromMem(
        doc, reinterpret_cast<const HPDF_BYTE*>(jpeg.data()), static_cast<HPDF_UINT>(jpeg.size()));
    HPDF_Page page = doc.AddPage(files.Width(), files.Height());
    HPDF_Page_DrawImage(page, image, 0, 0, Real(files.Width()), Real(files.Height()));
  }
}

void WritePages(const Job& job) {
  Document doc(job.count, kPoolBlock);
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) {
    DrawRectangle(doc.AddPage(kPageWidth, kPageHeight), source.Next());
  }
  HPDF_SaveToFile(doc, job.out);
}

// The whole document in one piece.
std::vector<char> InOnePiece(HPDF_Doc doc) {
  HPDF_SaveToStream(doc);
  HPDF_ResetStream(doc);
  HPDF_UINT32 size = HPDF_GetStreamSize(doc);
  std::vector<char> bytes(size);
  HPDF_ReadFromStream(doc, reinterpret_cast<HPDF_BYTE*>(bytes.data()), &size);
  return bytes;
}

void WriteDocuments(const Job& job) {
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) {
    Document doc(1, kPoolBlock);
    DrawRectangle(doc.AddPage(kPageWidth, kPageHeight), source.Next());
    const std::vector<char> bytes = InOnePiece(doc);
    if (IsLast(job, i)) KeepResult(job, bytes.data(), bytes.size());
  }
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
      Document doc(job.count, job.workload == Workload::kSmallJpegs ? kPoolBlock : kNoPool);
      WriteJpegs(job, doc);
      HPDF_SaveToFile(doc, job.out);
      return true;
    }
    case Workload::kJpegMemory: {
      Document doc(job.count);
      WriteJpegs(job, doc);
      const std::vector<char> bytes = InOnePiece(doc);
      KeepResult(job, bytes.data(), bytes.size());
      return true;
    }
    case Workload::kPages:
      WritePages(job);
      return true;
    case Workload::kDocuments:
      WriteDocuments(job);
      return true;
    default:
      return false;
  }
}

}  // namespace bench
