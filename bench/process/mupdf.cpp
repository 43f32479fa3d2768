// The workloads through MuPDF: shapes by its PDF device, images as ready streams. Pages go into a
// flat tree of our own, because its own insertion counts through the pages every time.

#include <mupdf/fitz.h>
#include <mupdf/pdf.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "workload.h"

namespace bench {

namespace {

// MuPDF reports errors by longjmp, which must not cross C++ objects: they end the program here.
[[noreturn]] void Fail(fz_context* context, const char* what) {
  std::fprintf(stderr, "MuPDF: %s: %s\n", what, fz_caught_message(context));
  std::exit(1);
}

fz_context* NewContext() {
  fz_context* const context = fz_new_context(nullptr, nullptr, FZ_STORE_DEFAULT);
  if (context == nullptr) throw std::bad_alloc();
  return context;
}

struct Document {
  explicit Document(fz_context* context) : context(context), doc(pdf_create_document(context)) {
    pages = pdf_dict_getp(context, pdf_trailer(context, doc), "Root/Pages");
    kids = pdf_dict_get(context, pages, PDF_NAME(Kids));
  }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  ~Document() { pdf_drop_document(context, doc); }

  void AddPage(fz_rect box, pdf_obj* resources, fz_buffer* contents) {
    pdf_obj* const page = pdf_add_page(context, doc, box, 0, resources, contents);
    pdf_dict_put(context, page, PDF_NAME(Parent), pages);
    pdf_array_push_drop(context, kids, page);
    ++pageCount;
  }

  void Save(const char* name) {
    pdf_dict_put_int(context, pages, PDF_NAME(Count), pageCount);
    const pdf_write_options options = {};
    pdf_save_document(context, doc, name, &options);
  }

  fz_buffer* SaveToMemory() {
    pdf_dict_put_int(context, pages, PDF_NAME(Count), pageCount);
    const pdf_write_options options = {};
    fz_buffer* const bytes = fz_new_buffer(context, 8192);
    fz_output* const output = fz_new_output_with_buffer(context, bytes);
    pdf_write_document(context, doc, output, &options);
    fz_close_output(context, output);
    fz_drop_output(context, output);
    return bytes;
  }

  fz_context* const context;
  pdf_document* const doc;
  pdf_obj* pages;
  pdf_obj* kids;
  int pageCount = 0;
};

void FillAndStroke(fz_context* context, fz_device* device, fz_path* path, const Shape& s,
                   fz_matrix matrix) {
  const float fill[3] = {s.fill.red / 255.0f, s.fill.green / 255.0f, s.fill.blue / 255.0f};
  const float line[3] = {s.stroke.red / 255.0f, s.stroke.green / 255.0f, s.stroke.blue / 255.0f};
  fz_colorspace* const rgb = fz_device_rgb(context);
  // One for each shape: the device takes the same address for the same line width.
  fz_stroke_state* const stroke = fz_new_stroke_state(context);
  stroke->linewidth = static_cast<float>(s.lineWidth);
  fz_fill_path(context, device, path, 0, matrix, rgb, fill, 1, fz_default_color_params);
  fz_stroke_path(context, device, path, stroke, matrix, rgb, line, 1, fz_default_color_params);
  fz_drop_stroke_state(context, stroke);
}

float Real(double value) {
  return static_cast<float>(value);
}

void AddEllipse(fz_context* context, fz_path* path, const Shape& s) {
  const double a = s.width / 2 - s.lineWidth / 2;
  const double b = s.height / 2 - s.lineWidth / 2;
  const double x = s.left + s.width / 2;
  const double y = s.bottom + s.height / 2;
  const double ka = a * 0.552285;
  const double kb = b * 0.552285;
  const auto curve = [&](double x1, double y1, double x2, double y2, double x3, double y3) {
    fz_curveto(context, path, Real(x + x1), Real(y + y1), Real(x + x2), Real(y + y2), Real(x + x3),
               Real(y + y3));
  };
  fz_moveto(context, path, Real(x - a), Real(y));
  curve(-a, kb, -ka, b, 0, b);
  curve(ka, b, a, kb, a, 0);
  curve(a, -kb, ka, -b, 0, -b);
  curve(-ka, -b, -a, -kb, -a, 0);
  fz_closepath(context, path);
}

void DrawShape(fz_context* context, fz_device* device, Workload workload, const Shape& s) {
  fz_path* const path = fz_new_path(context);
  fz_matrix matrix = fz_identity;
  if (workload == Workload::kEllipses) {
    AddEllipse(context, path, s);
  } else if (workload == Workload::kRotated) {
    fz_rectto(context, path, Real(-s.width / 2), Real(-s.height / 2), Real(s.width / 2),
              Real(s.height / 2));
    matrix = fz_concat(fz_rotate(Real(s.angle)),
                       fz_translate(Real(s.left + s.width / 2), Real(s.bottom + s.height / 2)));
  } else {
    fz_rectto(context, path, Real(s.left), Real(s.bottom), Real(s.left + s.width),
              Real(s.bottom + s.height));
  }
  FillAndStroke(context, device, path, s, matrix);
  fz_drop_path(context, path);
}

// A page of count shapes.
void DrawPage(Document& doc, Workload workload, std::size_t count, ShapeSource& source) {
  fz_context* const context = doc.context;
  const fz_rect box = {0, 0, Real(kPageWidth), Real(kPageHeight)};
  pdf_obj* resources = nullptr;
  fz_buffer* contents = nullptr;
  fz_device* const device = pdf_page_write(context, doc.doc, box, &resources, &contents);
  for (std::size_t i = 0; i < count; ++i) DrawShape(context, device, workload, source.Next());
  fz_close_device(context, device);
  fz_drop_device(context, device);
  doc.AddPage(box, resources, contents);
  pdf_drop_obj(context, resources);
  fz_drop_buffer(context, contents);
}

void AddJpegPage(Document& doc, InputFiles& files, std::size_t page) {
  fz_context* const context = doc.context;
  const std::string_view jpeg = files.Read(page);
  fz_buffer* const data = fz_new_buffer_from_copied_data(
      context, reinterpret_cast<const unsigned char*>(jpeg.data()), jpeg.size());
  pdf_obj* const dict = pdf_new_dict(context, doc.doc, 8);
  pdf_dict_put(context, dict, PDF_NAME(Type), PDF_NAME(XObject));
  pdf_dict_put(context, dict, PDF_NAME(Subtype), PDF_NAME(Image));
  pdf_dict_put_int(context, dict, PDF_NAME(Width), files.Width());
  pdf_dict_put_int(context, dict, PDF_NAME(Height), files.Height());
  pdf_dict_put(context, dict, PDF_NAME(ColorSpace), PDF_NAME(DeviceRGB));
  pdf_dict_put_int(context, dict, PDF_NAME(BitsPerComponent), 8);
  pdf_dict_put(context, dict, PDF_NAME(Filter), PDF_NAME(DCTDecode));
  pdf_obj* const image = pdf_add_stream(context, doc.doc, data, dict, 1);

  pdf_obj* const resources = pdf_new_dict(context, doc.doc, 1);
  pdf_obj* const images = pdf_dict_put_dict(context, resources, PDF_NAME(XObject), 1);
  pdf_dict_puts_drop(context, images, "Im0", image);
  fz_buffer* const contents = fz_new_buffer(context, 64);
  fz_append_printf(context, contents, "q %d 0 0 %d 0 0 cm /Im0 Do Q", files.Width(),
                   files.Height());
  doc.AddPage({0, 0, Real(files.Width()), Real(files.Height())}, resources, contents);
  fz_drop_buffer(context, contents);
  pdf_drop_obj(context, resources);
  pdf_drop_obj(context, dict);
  fz_drop_buffer(context, data);
}

void KeepBuffer(const Job& job, fz_context* context, fz_buffer* bytes, bool keep) {
  unsigned char* data = nullptr;
  const std::size_t size = fz_buffer_storage(context, bytes, &data);
  if (keep) KeepResult(job, reinterpret_cast<const char*>(data), size);
  fz_drop_buffer(context, bytes);
}

bool Work(const Job& job, fz_context* context) {
  ShapeSource source;
  switch (job.workload) {
    case Workload::kRectangles:
    case Workload::kRotated:
    case Workload::kEllipses: {
      Document doc(context);
      DrawPage(doc, job.workload, job.count, source);
      doc.Save(job.out);
      return true;
    }
    case Workload::kJpegFile:
    case Workload::kSmallJpegs:
    case Workload::kJpegMemory: {
      InputFiles files(job);
      Document doc(context);
      for (std::size_t i = 0; i < job.count; ++i) AddJpegPage(doc, files, i);
      if (job.workload == Workload::kJpegMemory) {
        KeepBuffer(job, context, doc.SaveToMemory(), true);
      } else {
        doc.Save(job.out);
      }
      return true;
    }
    case Workload::kPages: {
      Document doc(context);
      for (std::size_t i = 0; i < job.count; ++i) DrawPage(doc, job.workload, 1, source);
      doc.Save(job.out);
      return true;
    }
    case Workload::kDocuments:
      for (std::size_t i = 0; i < job.count; ++i) {
        Document doc(context);
        DrawPage(doc, job.workload, 1, source);
        KeepBuffer(job, context, doc.SaveToMemory(), IsLast(job, i));
      }
      return true;
    default:
      return false;
  }
}

}  // namespace

bool Run(const Job& job) {
  fz_context* const context = NewContext();
  bool available = false;
  fz_var(available);
  fz_try(context) {
    available = Work(job, context);
  }
  fz_catch(context) {
    Fail(context, "a call failed");
  }
  fz_drop_context(context);
  return available;
}

}  // namespace bench
