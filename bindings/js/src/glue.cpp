// glue.cpp - the library as JavaScript calls it: numbers in place of records by value, one kind of
// document, and the two functions that the module takes from its host.
//
// A function that makes an object returns its number, or less than 0: one of Failure. Others return
// 0 or one of Failure.

#include <jtpdf/objects.h>

#include <cerrno>
#include <string>

#include "api/guarded_call.h"
#include "document/document.h"
#include "objects/diagnostic_note.h"

#define EXPORT(name) extern "C" __attribute__((export_name(name)))
#define IMPORT(name) extern "C" __attribute__((import_module("jtpdf"), import_name(name)))

// Takes size bytes at data of the document that JavaScript knows by that number. Not 0: it cannot.
IMPORT("write") int32_t HostWrite(int number, const char* data, size_t size);

// Nobody reads a standard error stream here, and std::cerr would be most of the module: what the
// library has to say stands in the errors that JavaScript gets.
void PrintDiagnosticNote(std::string) {}

namespace {

enum Failure { kNoMemory = -1, kInvalid = -2, kRefused = -3 };

int Code(int32_t code) {
  if (code == 0) return 0;
  return code == ENOMEM ? kNoMemory : code == EINVAL ? kInvalid : kRefused;
}

// The number that make stores, or a Failure.
template <typename Make>
int Number(const Make& make) {
  errno = 0;
  int number = 0;
  const int code = Code(make(&number));
  return code == 0 ? number : code;
}

JTPDFRGBColor Color(uint32_t rgb) {
  return {static_cast<uint8_t>(rgb >> 16), static_cast<uint8_t>(rgb >> 8),
          static_cast<uint8_t>(rgb), 255};
}

constexpr int kNoColor = -1;

int NumberOf(void* context) {
  return static_cast<int>(reinterpret_cast<uintptr_t>(context));
}

int32_t Write(void* context, const char* data, size_t size) {
  return HostWrite(NumberOf(context), data, size) == 0 ? 0 : EIO;
}

}  // namespace

// ---- Documents ----------------------------------------------------------------------------------

// Null where there is no memory. number is what HostWrite is called with.
EXPORT("create") JTPDFDocument* Create(double unit, int number) {
  void* const context = reinterpret_cast<void*>(static_cast<uintptr_t>(number));
  JTPDFDocument* doc = TryCreateCallbackPdfDoc(unit, Write, context);
  if (doc != nullptr && InitPdfDoc(doc) != 0) {
    DestroyPdfDoc(doc);
    doc = nullptr;
  }
  return doc;
}

EXPORT("finish") int Finish(JTPDFDocument* doc) {
  return Code(FinalizePdfDoc(doc, nullptr));
}

EXPORT("destroy") void Destroy(JTPDFDocument* doc) {
  DestroyPdfDoc(doc);
}

EXPORT("info") void Info(JTPDFDocument* doc, const char* key, const wchar_t* value) {
  SetPdfInfoItem(doc, key, value);
}

EXPORT("mark") void Mark(JTPDFDocument* doc) {
  SetPdfMgMk(doc, true);
}

EXPORT("bookmark")
int Bookmark(JTPDFDocument* doc, int level, const wchar_t* title, int page) {
  return Code(AddPdfBookmark(doc, level, title, page));
}

EXPORT("catalog_entry") int CatalogEntry(JTPDFDocument* doc, const char* key, const char* value) {
  return Code(SetPdfCatalogEntry(doc, key, value));
}

EXPORT("open_page") int OpenPage(JTPDFDocument* doc, int page, const char* view) {
  return Code(SetPdfOpenPage(doc, page, view));
}

// ---- The canvas ---------------------------------------------------------------------------------

EXPORT("bounds")
void Bounds(JTPDFDocument* doc, double left, double bottom, double width, double height) {
  SetPdfCanvasBoundingBox(doc, {left, bottom, width, height, 0});
}

EXPORT("clear") void Clear(JTPDFDocument* doc) {
  ClearPdfCanvas(doc);
}

EXPORT("image")
void Image(JTPDFDocument* doc, int image, double left, double bottom, double width, double height,
           double angle) {
  DrawPdfImageInRect(doc, image, {left, bottom, width, height, angle});
}

// A colour is 0xRRGGBB or kNoColor; one of the two at least is a colour.
EXPORT("rectangle")
void Rectangle(JTPDFDocument* doc, double left, double bottom, double width, double height,
               double angle, int fill, int stroke, double lineWidth) {
  const JTPDFRect box = {left, bottom, width, height, angle};
  if (stroke == kNoColor) {
    FillPdfRectangle(doc, box, Color(fill));
  } else if (fill == kNoColor) {
    StrokePdfRectangle(doc, box, Color(stroke), lineWidth);
  } else {
    FillAndStrokePdfRectangle(doc, box, Color(fill), Color(stroke), lineWidth);
  }
}

EXPORT("ellipse")
void Ellipse(JTPDFDocument* doc, double left, double bottom, double width, double height, int fill,
             int stroke, double lineWidth) {
  FillAndStrokePdfCircle(doc, {left, bottom, width, height, 0}, Color(fill), Color(stroke),
                         lineWidth);
}

EXPORT("content") void Content(JTPDFDocument* doc, const char* operators) {
  DrawPdfContent(doc, operators);
}

EXPORT("canvas_entry") int CanvasEntry(JTPDFDocument* doc, const char* key, const char* value) {
  return Code(SetPdfCanvasEntry(doc, key, value));
}

EXPORT("write_canvas") int WriteCanvas(JTPDFDocument* doc) {
  return Number([&](int* form) { return WritePdfCanvas(doc, form); });
}

EXPORT("page_entry") int PageEntry(JTPDFDocument* doc, const char* key, const char* value) {
  return Code(SetPdfPageEntry(doc, key, value));
}

// boxes are the media box and the crop box.
EXPORT("write_page") int WritePage(JTPDFDocument* doc, int form, const JTPDFRect* boxes) {
  return Code(WritePdfPage(doc, form, boxes[1], boxes[0]));
}

// A page that shows contents, an object of write_reserved, in place of a form.
EXPORT("add_page") int AddPage(JTPDFDocument* doc, int contents, const JTPDFRect* boxes) {
  return Code(GuardedCall("add_page", *doc,
                          [&] { doc->AddPage(contents, JTPDFBox(boxes[1]), JTPDFBox(boxes[0])); }));
}

// ---- Objects ------------------------------------------------------------------------------------

EXPORT("write_image")
int WriteImage(JTPDFDocument* doc, const TPdfImageDescriptor* image,
               const TPdfImageDescriptor* alpha, bool maskWhite, int role, const wchar_t* name,
               unsigned itemCount, const JTPDFDictionaryItem* items) {
  const auto imageRole = static_cast<TPdfImageRole>(role);
  return Number([&](int* number) {
    if (alpha != nullptr) {
      return WritePdfImageWithAlpha(doc, image, alpha, imageRole, name, itemCount, items, number);
    }
    return WritePdfImage(doc, image, maskWhite, imageRole, name, itemCount, items, number);
  });
}

EXPORT("write_profile")
int WriteProfile(JTPDFDocument* doc, const char* data, unsigned size, int compression) {
  return Number([&](int* number) {
    return WritePdfICCProfile(doc, data, size, static_cast<TPdfCompression>(compression), number);
  });
}

EXPORT("write_object") int WriteObject(JTPDFDocument* doc, const char* value) {
  return Number([&](int* number) { return WritePdfObject(doc, value, number); });
}

EXPORT("write_stream")
int WriteStream(JTPDFDocument* doc, unsigned entryCount, const JTPDFEntry* entries,
                const char* data, size_t size) {
  return Number(
      [&](int* number) { return WritePdfStream(doc, entryCount, entries, data, size, number); });
}

// The same for entries that the package has composed itself, "/Height 2\r\n/Width 3\r\n": they are
// not looked at, which takes half the time of a small picture.
EXPORT("write_own_stream")
int WriteOwnStream(JTPDFDocument* doc, const char* entries, const char* data, size_t size) {
  return Number([&](int* number) {
    return GuardedWrite("write_own_stream", doc, number, [&] {
      const int object = doc->BeginObject();
      doc->Append("<<\r\n");
      doc->Append(entries);
      doc->BeginStream(size);
      doc->WriteRaw(data, size);
      doc->Append("\r\nendstream\r\n");
      doc->EndObject();
      return object;
    });
  });
}

EXPORT("reserve") int Reserve(JTPDFDocument* doc) {
  return Number([&](int* number) { return ReservePdfObject(doc, number); });
}

EXPORT("write_reserved")
int WriteReserved(JTPDFDocument* doc, int object, unsigned entryCount, const JTPDFEntry* entries,
                  const char* data, size_t size) {
  const JTPDFPiece piece = {data, size};
  return Code(WriteReservedPdfStream(doc, object, entryCount, entries, 1, &piece));
}
