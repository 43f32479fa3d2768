// The workloads through cairo. It has no way to leave content streams uncompressed.

#include <cairo/cairo-pdf.h>
#include <cairo/cairo.h>

#include <stdexcept>

#include "workload.h"

namespace bench {

namespace {

constexpr double kPi = 3.141592653589793;

void Check(cairo_status_t status) {
  if (status != CAIRO_STATUS_SUCCESS) {
    throw std::runtime_error(std::string("cairo: ") + cairo_status_to_string(status));
  }
}

cairo_status_t Append(void* bytes, const unsigned char* data, unsigned size) {
  auto& all = *static_cast<std::string*>(bytes);
  all.append(reinterpret_cast<const char*>(data), size);
  return CAIRO_STATUS_SUCCESS;
}

class Document {
 public:
  Document(const char* name, double width, double height)
      : Document(cairo_pdf_surface_create(name, width, height)) {}
  Document(std::string* bytes, double width, double height)
      : Document(cairo_pdf_surface_create_for_stream(Append, bytes, width, height)) {}
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  ~Document() {
    cairo_destroy(context);
    cairo_surface_destroy(surface);
  }

  operator cairo_t*() const { return context; }

  void Finish() {
    Check(cairo_status(context));
    cairo_surface_finish(surface);
    Check(cairo_surface_status(surface));
  }

 private:
  explicit Document(cairo_surface_t* surface) : surface(surface), context(cairo_create(surface)) {
    Check(cairo_status(context));
  }

  cairo_surface_t* surface;
  cairo_t* context;
};

void FillAndStroke(cairo_t* context, const Shape& s) {
  cairo_set_source_rgb(context, s.fill.red / 255.0, s.fill.green / 255.0, s.fill.blue / 255.0);
  cairo_fill_preserve(context);
  cairo_set_source_rgb(context, s.stroke.red / 255.0, s.stroke.green / 255.0,
                       s.stroke.blue / 255.0);
  cairo_set_line_width(context, s.lineWidth);
  cairo_stroke(context);
}

void DrawRectangle(cairo_t* context, const Shape& s) {
  cairo_rectangle(context, s.left, s.bottom, s.width, s.height);
  FillAndStroke(context, s);
}

void DrawRotated(cairo_t* context, const Shape& s) {
  cairo_save(context);
  cairo_translate(context, s.left + s.width / 2, s.bottom + s.height / 2);
  cairo_rotate(context, s.angle * kPi / 180);
  cairo_rectangle(context, -s.width / 2, -s.height / 2, s.width, s.height);
  FillAndStroke(context, s);
  cairo_restore(context);
}

void DrawEllipse(cairo_t* context, const Shape& s) {
  cairo_save(context);
  cairo_translate(context, s.left + s.width / 2, s.bottom + s.height / 2);
  cairo_scale(context, s.width / 2 - s.lineWidth / 2, s.height / 2 - s.lineWidth / 2);
  cairo_new_path(context);
  cairo_arc(context, 0, 0, 1, 0, 2 * kPi);
  cairo_close_path(context);
  cairo_restore(context);
  FillAndStroke(context, s);
}

void DrawShapes(const Job& job) {
  Document doc(job.out, kPageWidth, kPageHeight);
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) {
    const Shape shape = source.Next();
    if (job.workload == Workload::kEllipses) {
      DrawEllipse(doc, shape);
    } else if (job.workload == Workload::kRotated) {
      DrawRotated(doc, shape);
    } else {
      DrawRectangle(doc, shape);
    }
  }
  cairo_show_page(doc);
  doc.Finish();
}

void Release(void* held) {
  *static_cast<bool*>(held) = false;
}

void WriteJpegs(const Job& job, InputFiles& files, Document& doc) {
  for (std::size_t i = 0; i < job.count; ++i) {
    // cairo keeps the file's bytes until their page is shown. It takes the picture from them and
    // not from the pixels, so one pixel will do, scaled to the page: more would be cleared and
    // copied.
    const std::string_view jpeg = files.Read(i);
    bool held = true;
    cairo_surface_t* const image = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1, 1);
    Check(cairo_surface_set_mime_data(image, CAIRO_MIME_TYPE_JPEG,
                                      reinterpret_cast<const unsigned char*>(jpeg.data()),
                                      jpeg.size(), Release, &held));
    cairo_save(doc);
    cairo_scale(doc, files.Width(), files.Height());
    cairo_set_source_surface(doc, image, 0, 0);
    cairo_paint(doc);
    cairo_restore(doc);
    cairo_surface_destroy(image);
    cairo_show_page(doc);
    if (held) throw std::runtime_error("cairo holds an image whose page was shown");
  }
  doc.Finish();
}

void WritePages(const Job& job) {
  Document doc(job.out, kPageWidth, kPageHeight);
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) {
    DrawRectangle(doc, source.Next());
    cairo_show_page(doc);
  }
  doc.Finish();
}

void WriteDocuments(const Job& job) {
  ShapeSource source;
  for (std::size_t i = 0; i < job.count; ++i) {
    std::string bytes;
    Document doc(&bytes, kPageWidth, kPageHeight);
    DrawRectangle(doc, source.Next());
    cairo_show_page(doc);
    doc.Finish();
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
      InputFiles files(job);
      Document doc(job.out, files.Width(), files.Height());
      WriteJpegs(job, files, doc);
      return true;
    }
    case Workload::kJpegMemory: {
      InputFiles files(job);
      std::string bytes;
      Document doc(&bytes, files.Width(), files.Height());
      WriteJpegs(job, files, doc);
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
