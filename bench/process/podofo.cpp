// The workloads through PoDoFo, its streamed document: objects are written as soon as they are
// complete. It compresses content streams.

#include <podofo/podofo.h>

#include <cmath>

#include "workload.h"

namespace bench {

namespace {

using PoDoFo::PdfPage;
using PoDoFo::PdfPainter;
using PoDoFo::PdfRect;
using PoDoFo::PdfStreamedDocument;

// The page is searched for in the tree every time. Creating all pages in one call and then asking
// for each halves the cost and leaves it quadratic.
PdfPage* AddPage(PdfStreamedDocument& doc, double width, double height) {
  return doc.CreatePage(PdfRect(0, 0, width, height));
}

void SetColors(PdfPainter& painter, const Shape& s) {
  painter.SetColor(s.fill.red / 255.0, s.fill.green / 255.0, s.fill.blue / 255.0);
  painter.SetStrokingColor(s.stroke.red / 255.0, s.stroke.green / 255.0, s.stroke.blue / 255.0);
  painter.SetStrokeWidth(s.lineWidth);
}

void DrawRectangle(PdfPainter& painter, const Shape& s) {
  painter.Save();
  SetColors(painter, s);
  painter.Rectangle(s.left, s.bottom, s.width, s.height);
  painter.FillAndStroke();
  painter.Restore();
}

void DrawRotated(PdfPainter& painter, const Shape& s) {
  const double radians = s.angle * 0.017453292519943295;
  const double cosine = std::cos(radians);
  const double sine = std::sin(radians);
  painter.Save();
  SetColors(painter, s);
  painter.SetTransformationMatrix(cosine, sine, -sine, cosine, s.left + s.width / 2,
                                  s.bottom + s.height / 2);
  painter.Rectangle(-s.width / 2, -s.height / 2, s.width, s.height);
  painter.FillAndStroke();
  painter.Restore();
}

void DrawEllipse(PdfPainter& painter, const Shape& s) {
  SetColors(painter, s);
  painter.Ellipse(s.left + s.lineWidth / 2, s.bottom + s.lineWidth / 2, s.width - s.lineWidth,
                  s.height - s.lineWidth);
  painter.FillAndStroke();
}

void DrawShapes(const Job& job) {
  PdfStreamedDocument doc(job.out);
  PdfPainter painter;
  painter.SetPage(AddPage(doc, kPageWidth, kPageHeight));
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) {
    const Shape shape = source.Next();
    if (job.workload == Workload::kEllipses) {
      DrawEllipse(painter, shape);
    } else if (job.workload == Workload::kRotated) {
      DrawRotated(painter, shape);
    } else {
      DrawRectangle(painter, shape);
    }
  }
  painter.FinishPage();
  doc.Close();
}

void WriteJpegs(const Job& job, PdfStreamedDocument& doc) {
  InputFiles files(job);
  for (std::size_t i = 0; i < job.count; ++i) {
    const std::string_view jpeg = files.Read(i);
    PoDoFo::PdfImage image(&doc);
    image.LoadFromJpegData(reinterpret_cast<const unsigned char*>(jpeg.data()),
                           static_cast<PoDoFo::pdf_long>(jpeg.size()));
    PdfPainter painter;
    painter.SetPage(AddPage(doc, files.Width(), files.Height()));
    painter.DrawImage(0, 0, &image);
    painter.FinishPage();
  }
  doc.Close();
}

void DrawPage(PdfStreamedDocument& doc, ShapeSource& source) {
  PdfPainter painter;
  painter.SetPage(AddPage(doc, kPageWidth, kPageHeight));
  DrawRectangle(painter, source.Next());
  painter.FinishPage();
}

void WritePages(const Job& job) {
  PdfStreamedDocument doc(job.out);
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) DrawPage(doc, source);
  doc.Close();
}

void WriteDocuments(const Job& job) {
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) {
    PoDoFo::PdfRefCountedBuffer bytes;
    PoDoFo::PdfOutputDevice device(&bytes);
    PdfStreamedDocument doc(&device);
    DrawPage(doc, source);
    doc.Close();
    if (IsLast(job, i)) KeepResult(job, bytes.GetBuffer(), bytes.GetSize());
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
      PdfStreamedDocument doc(job.out);
      WriteJpegs(job, doc);
      return true;
    }
    case Workload::kJpegMemory: {
      PoDoFo::PdfRefCountedBuffer bytes;
      PoDoFo::PdfOutputDevice device(&bytes);
      PdfStreamedDocument doc(&device);
      WriteJpegs(job, doc);
      KeepResult(job, bytes.GetBuffer(), bytes.GetSize());
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
