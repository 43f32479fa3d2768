// What calls cost in the C interface and in the C++ face, in instructions. Runs under callgrind,
// which counts them; call_costs.sh makes the table.
//
// Each operation is measured by itself: the counters are set back before a loop of calls and dumped
// behind it, under a name: the interface, the operation, the bytes of UTF-8 text it is given. What
// is allocated is counted here: beside the work of a call in the library it would hardly show.

#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <new>
#include <string>

#include "jtpdf/jtpdf.hpp"

namespace {

long allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace {

using namespace jtpdf::literals;

constexpr int kCalls = 100;  // call_costs.sh divides by it
constexpr char kPixels[64] = {};
const std::string kTitle(40, 'x');
const std::wstring kWideTitle(40, L'x');

// Not to be seen through: the compiler must not fold the calls' arguments.
template <typename Value>
Value Opaque(Value value) {
  asm volatile("" : : "g"(&value) : "memory");
  return value;
}

// By "c" or "cpp" and the operation.
std::map<std::string, long> allocated;

#define MEASURE(name, call)                 \
  do {                                      \
    const long before = allocations;        \
    CALLGRIND_ZERO_STATS;                   \
    for (int i = 0; i < kCalls; ++i) {      \
      call;                                 \
    }                                       \
    CALLGRIND_DUMP_STATS_AT(name);          \
    const long made = allocations - before; \
    allocated[name] = made;                 \
  } while (false)

void Check(int32_t code) {
  if (code != 0) std::abort();
}

void MeasureC() {
  // Not in memory, whose growth costs now this call and now that.
  JTPDFDocument* doc =
      CreateFilePdfDoc(PDFCoordinateUnitMillimeter, L"/dev/null", nullptr, nullptr);
  Check(InitPdfDoc(doc));
  const JTPDFRect box = Opaque(JTPDFRect{10, 20, 30, 40, 15});
  const JTPDFRGBColor red = Opaque(JTPDFRGBColor{255, 0, 0, 255});
  const TPdfImageDescriptor image = {
      kPixels, sizeof kPixels, kPdfCompressionFlate, 8, 8, 8, kPdfColorSpaceGray, 0};
  const JTPDFDictionaryItem items[] = {{"/JT/A", L"one"}, {"/JT/B", L"two"}};
  int number = 0;
  MEASURE("c set_canvas_box 0", SetPdfCanvasBoundingBox(doc, box));
  MEASURE("c draw_image 0", DrawPdfImageInRect(doc, 7, box));
  MEASURE("c fill_rectangle 0", FillPdfRectangle(doc, box, red));
  MEASURE("c fill_and_stroke_circle 0", FillAndStrokePdfCircle(doc, box, red, red, 0.5));
  MEASURE("c set_info 45", SetPdfInfoItem(doc, "Title", kWideTitle.c_str()));
  MEASURE("c write_canvas 0", Check(WritePdfCanvas(doc, &number)));
  MEASURE("c write_page 0", Check(WritePdfPage(doc, number, box, box)));
  MEASURE("c write_image 5", Check(WritePdfImage(doc, &image, false, kPdfImageRolePhoto, L"photo",
                                                 0, nullptr, &number)));
  MEASURE("c write_image_2_entries 21", Check(WritePdfImage(doc, &image, false, kPdfImageRolePhoto,
                                                            L"photo", 2, items, &number)));
  MEASURE("c write_icc_profile 0",
          Check(WritePdfICCProfile(doc, kPixels, sizeof kPixels, kPdfCompressionFlate, &number)));
  CALLGRIND_ZERO_STATS;
  Check(FinalizePdfDoc(doc, nullptr));
  CALLGRIND_DUMP_STATS_AT("c finish 0");
  DestroyPdfDoc(doc);
}

void MeasureFace() {
  jtpdf::Document doc = jtpdf::Document::file("/dev/null", jtpdf::millimeter);
  const jtpdf::Box box = Opaque(jtpdf::Box{10_mm, 20_mm, 30_mm, 40_mm, 15_deg});
  const jtpdf::Color red = Opaque(0xff0000_rgb);
  const jtpdf::ImageData image{jtpdf::Bytes(kPixels, sizeof kPixels),
                               jtpdf::Compression::flate,
                               8,
                               8,
                               8,
                               jtpdf::ColorSpace::gray};
  jtpdf::Form form(0);
  MEASURE("cpp set_canvas_box 0", doc.set_canvas_box(box));
  MEASURE("cpp draw_image 0", doc.draw_image(jtpdf::Image(7), box));
  MEASURE("cpp fill_rectangle 0", doc.fill_rectangle(box, red));
  MEASURE("cpp fill_and_stroke_circle 0", doc.fill_and_stroke_circle(box, red, red, 0.5_mm));
  MEASURE("cpp set_info 45", doc.set_info("Title", kTitle));
  MEASURE("cpp write_canvas 0", form = doc.write_canvas());
  MEASURE("cpp write_page 0", doc.write_page(form, box));
  MEASURE("cpp write_image 5", doc.write_image(image, {jtpdf::Role::photo, "photo"}));
  MEASURE(
      "cpp write_image_2_entries 21",
      doc.write_image(image, {jtpdf::Role::photo, "photo", {{"/JT/A", "one"}, {"/JT/B", "two"}}}));
  MEASURE("cpp write_icc_profile 0",
          doc.write_icc_profile({kPixels, sizeof kPixels}, jtpdf::Compression::flate));
  CALLGRIND_ZERO_STATS;
  doc.finish();
  CALLGRIND_DUMP_STATS_AT("cpp finish 0");
}

// Says where the face allocates and the C interface does not.
bool AllocatesNoMore() {
  bool good = true;
  for (const auto& [name, made] : allocated) {
    if (name.rfind("cpp ", 0) != 0) continue;
    // The entries are in a vector, which is the host's.
    const long vectors = name.find("entries") != std::string::npos ? kCalls : 0;
    const long needed = allocated.at("c" + name.substr(3)) + vectors;
    if (made <= needed) continue;
    std::printf("%s: %ld allocations in %d calls, %ld in C\n", name.c_str(), made, kCalls, needed);
    good = false;
  }
  return good;
}

}  // namespace

int main() {
  MeasureC();
  MeasureFace();
  return AllocatesNoMore() ? 0 : 1;
}
