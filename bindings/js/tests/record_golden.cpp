// record_golden: prints the calls that the golden documents make, and those of documents made by
// chance, as lines of JSON, for a test to make them again from JavaScript.
//
//     record_golden COUNT       the golden documents and COUNT others
//
// It takes the place of the library and numbers objects as the library does.

#include <jtpdf/objects.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "golden_documents.h"
#include "host.h"

class JTPDFDocument {
 public:
  int nextObject = 2;  // behind the graphics state
};

namespace {

// One line of JSON, put together a value at a time.
class Line {
 public:
  explicit Line(const char* call) : text_("[\"" + std::string(call) + "\"") {}
  ~Line() { std::puts((text_ + "]").c_str()); }

  Line& operator<<(long long number) { return Add(std::to_string(number)); }
  Line& operator<<(int number) { return *this << static_cast<long long>(number); }
  Line& operator<<(bool flag) { return Add(flag ? "true" : "false"); }
  Line& operator<<(double number) {
    char digits[40];
    std::snprintf(digits, sizeof digits, "%.17g", number);
    return Add(std::isfinite(number) ? digits : "null");
  }
  Line& operator<<(const char* text) {
    return text == nullptr ? Add("null") : Bytes(text, std::string(text).size());
  }
  Line& operator<<(const wchar_t* text) {
    if (text == nullptr) return Add("null");
    std::string points;
    for (; *text != 0; ++text)
      points += (points.empty() ? "" : ",") + std::to_string(static_cast<unsigned>(*text));
    return Add("[" + points + "]");
  }
  Line& operator<<(const JTPDFRect& box) {
    return *this << box.left << box.bottom << box.width << box.height << box.angle;
  }
  // Also what stands for none.
  Line& operator<<(const JTPDFRGBColor& color) {
    const bool none =
        color.red == 255 && color.green == 255 && color.blue == 255 && color.alpha == 0;
    return *this << (none ? -1 : color.red << 16 | color.green << 8 | color.blue);
  }
  Line& operator<<(const TPdfImageDescriptor& image) {
    Bytes(image.data, image.size);
    return *this << image.compression << image.width << image.height << image.bitsPerComponent
                 << image.colorSpace << image.colorSpaceObject;
  }
  Line& Bytes(const char* data, size_t size) {
    std::string hex = "\"";
    char digits[3];
    for (size_t i = 0; i < size; ++i) {
      std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(data[i]));
      hex += digits;
    }
    return Add(hex + "\"");
  }

 private:
  Line& Add(const std::string& value) {
    text_ += "," + value;
    return *this;
  }
  std::string text_;
};

int32_t Store(JTPDFDocument* doc, int* number, int objects = 1) {
  doc->nextObject += objects;
  if (number != nullptr) *number = doc->nextObject - 1;
  return 0;
}

void Items(Line& line, unsigned count, const JTPDFDictionaryItem* items) {
  for (unsigned i = 0; i < count; ++i) line << items[i].key << items[i].value;
}

void Entries(Line& line, unsigned count, const JTPDFEntry* entries) {
  line << static_cast<int>(count);
  for (unsigned i = 0; i < count; ++i) line << entries[i].key << entries[i].value;
}

// The canvas box is asked for, too.
JTPDFRect bounds = {};

}  // namespace

extern "C" {

const double PDFCoordinateUnitInch = 72.0;
const double PDFCoordinateUnitCentimeter = 28.346456692944;
const double PDFCoordinateUnitMillimeter = 2.8346456692944;
const double PDFCoordinateUnitPoint = 1.0;

JTPDFDocument* CreateMemoryPdfDoc(double unit) {
  bounds = {};
  Line("create") << unit;
  return new JTPDFDocument;
}
JTPDFDocument* CreateFilePdfDoc(double unit, const wchar_t*, const wchar_t*, const wchar_t*) {
  return CreateMemoryPdfDoc(unit);
}
int32_t InitPdfDoc(JTPDFDocument*) {
  return 0;
}
int32_t FinalizePdfDoc(JTPDFDocument*, const char* closing) {
  Line("finish") << closing;
  return 0;
}
const char* GetPdfData(JTPDFDocument*) {
  return nullptr;
}
size_t GetPdfDataSize(JTPDFDocument*) {
  return 0;
}
void DestroyPdfDoc(JTPDFDocument* doc) {
  delete doc;
}
void SetPdfInfoItem(JTPDFDocument*, const char* key, const wchar_t* value) {
  Line("info") << key << value;
}
bool GetPdfMgMk(JTPDFDocument*) {
  return false;
}
void SetPdfMgMk(JTPDFDocument*, bool mark) {
  Line("mark") << mark;
}

void ClearPdfCanvas(JTPDFDocument*) {
  Line("clear");
}
JTPDFRect GetPdfCanvasBoundingBox(JTPDFDocument*) {
  return bounds;
}
void SetPdfCanvasBoundingBox(JTPDFDocument*, JTPDFRect box) {
  bounds = box;
  Line("bounds") << box;
}
void DrawPdfImage(JTPDFDocument*, int image) {
  Line("image") << image << bounds;
}
void DrawPdfImageInRect(JTPDFDocument*, int image, JTPDFRect box) {
  Line("image") << image << box;
}
void FillPdfRectangle(JTPDFDocument*, JTPDFRect box, JTPDFRGBColor fill) {
  Line("fill") << box << fill;
}
void StrokePdfRectangle(JTPDFDocument*, JTPDFRect box, JTPDFRGBColor stroke, double width) {
  Line("stroke") << box << stroke << width;
}
void FillAndStrokePdfRectangle(JTPDFDocument*, JTPDFRect box, JTPDFRGBColor fill,
                               JTPDFRGBColor stroke, double width) {
  Line("rectangle") << box << fill << stroke << width;
}
void FillAndStrokePdfCircle(JTPDFDocument*, JTPDFRect box, JTPDFRGBColor fill, JTPDFRGBColor stroke,
                            double width) {
  Line("ellipse") << box << fill << stroke << width;
}
void InsetPdfRect(JTPDFRect* rect, double dx, double dy) {
  *rect = {rect->left + dx, rect->bottom + dy, rect->width - 2 * dx, rect->height - 2 * dy,
           rect->angle};
}
void DrawPdfContent(JTPDFDocument*, const char* operators) {
  Line("content") << operators;
}

int32_t WritePdfCanvas(JTPDFDocument* doc, int* form) {
  Store(doc, form);
  Line("form") << doc->nextObject - 1 << bounds;
  return 0;
}
int32_t WritePdfPage(JTPDFDocument* doc, int form, JTPDFRect crop, JTPDFRect media) {
  Line("page") << form << crop << media;
  return Store(doc, nullptr);  // the page's own content stream
}
int32_t WritePdfImage(JTPDFDocument* doc, const TPdfImageDescriptor* image, bool maskWhite,
                      TPdfImageRole role, const wchar_t* name, unsigned count,
                      const JTPDFDictionaryItem* items, int* number) {
  Store(doc, number);
  Line line("write_image");
  line << doc->nextObject - 1 << *image << maskWhite << role << name;
  Items(line, count, items);
  return 0;
}
int32_t WritePdfImageWithAlpha(JTPDFDocument* doc, const TPdfImageDescriptor* image,
                               const TPdfImageDescriptor* alpha, TPdfImageRole role,
                               const wchar_t* name, unsigned count,
                               const JTPDFDictionaryItem* items, int* number) {
  if (alpha == nullptr) return WritePdfImage(doc, image, false, role, name, count, items, number);
  Store(doc, number, 2);
  Line line("write_image_with_alpha");
  line << doc->nextObject - 1 << *image << *alpha << role << name;
  Items(line, count, items);
  return 0;
}
int32_t WritePdfImageJPEG2000(JTPDFDocument* doc, const TPdfImageDescriptor* image,
                              TPdfImageRole role, const wchar_t* name, unsigned count,
                              const JTPDFDictionaryItem* items, int* number) {
  TPdfImageDescriptor asRgb = *image;
  asRgb.colorSpace = kPdfColorSpaceRGB;
  return WritePdfImage(doc, &asRgb, false, role, name, count, items, number);
}
int32_t WritePdfICCProfile(JTPDFDocument* doc, const char* data, unsigned size,
                           TPdfCompression compression, int* number) {
  Store(doc, number, 2);
  Line("write_profile").Bytes(data, size) << compression << doc->nextObject - 1;
  return 0;
}

int32_t WritePdfObject(JTPDFDocument* doc, const char* value, int* number) {
  Store(doc, number);
  Line("write_object") << doc->nextObject - 1 << value;
  return 0;
}
int32_t WritePdfStreamPieces(JTPDFDocument* doc, unsigned count, const JTPDFEntry* entries,
                             unsigned pieceCount, const JTPDFPiece* pieces, int* number) {
  std::string data;
  for (unsigned i = 0; i < pieceCount; ++i)
    data.append(pieces[i].size != 0 ? pieces[i].data : "", pieces[i].size);
  Store(doc, number);
  Line line("write_stream");
  line << doc->nextObject - 1;
  line.Bytes(data.data(), data.size());
  Entries(line, count, entries);
  return 0;
}
int32_t WritePdfStream(JTPDFDocument* doc, unsigned count, const JTPDFEntry* entries,
                       const char* data, size_t size, int* number) {
  const JTPDFPiece piece = {data, size};
  return WritePdfStreamPieces(doc, count, entries, 1, &piece, number);
}
int32_t ReservePdfObject(JTPDFDocument* doc, int* number) {
  Line("reserve");
  return Store(doc, number);
}
int32_t WriteReservedPdfObject(JTPDFDocument*, int, const char*) {
  return 0;
}
int32_t WriteReservedPdfStream(JTPDFDocument*, int, unsigned, const JTPDFEntry*, unsigned,
                               const JTPDFPiece*) {
  return 0;
}
int32_t SetPdfCatalogEntry(JTPDFDocument*, const char* key, const char* value) {
  Line("catalog") << key << value;
  return 0;
}
int32_t SetPdfPageEntry(JTPDFDocument*, const char* key, const char* value) {
  Line("page_entry") << key << value;
  return 0;
}
int32_t SetPdfCanvasEntry(JTPDFDocument*, const char* key, const char* value) {
  Line("canvas_entry") << key << value;
  return 0;
}
int32_t SetPdfContentEncoder(JTPDFDocument*, const char*, JTPDFEncodeFunction, void*) {
  Line("encoder");
  return 0;
}
int32_t SetPdfOpenPage(JTPDFDocument*, int page, const char* view) {
  Line("open_page") << page << view;
  return 0;
}
int32_t AddPdfBookmark(JTPDFDocument*, int level, const wchar_t* title, int page) {
  Line("bookmark") << level << title << page;
  return 0;
}

}  // extern "C"

int main(int argc, char** argv) {
  for (const golden::Document& document : golden::Documents()) {
    Line("document") << document.name;
    golden::WriteToMemory(document);
  }
  for (unsigned seed = 1; argc > 1 && seed <= static_cast<unsigned>(std::atoi(argv[1])); ++seed) {
    Line("document") << ("generated_" + std::to_string(seed)).c_str();
    golden::WriteGenerated(seed, "unused");
  }
}
