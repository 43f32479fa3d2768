// Exports: any object, entries of the library's objects, bookmarks.

#include "jtpdf/objects.h"

#include "api/guarded_call.h"
#include "document/document.h"
#include "document/open_objects.h"

extern "C" {

int32_t WritePdfStream(JTPDFDocument* doc, unsigned entryCount, const JTPDFEntry* entries,
                       const char* data, size_t size, int* object) {
  const JTPDFPiece piece = {data, size};
  return GuardedWrite("WritePdfStream", doc, object, [&] {
    return doc->WriteStream(kNewObject, {entries, entryCount}, {&piece, 1});
  });
}

int32_t WritePdfStreamPieces(JTPDFDocument* doc, unsigned entryCount, const JTPDFEntry* entries,
                             unsigned pieceCount, const JTPDFPiece* pieces, int* object) {
  return GuardedWrite("WritePdfStreamPieces", doc, object, [&] {
    return doc->WriteStream(kNewObject, {entries, entryCount}, {pieces, pieceCount});
  });
}

int32_t WritePdfObject(JTPDFDocument* doc, const char* value, int* object) {
  return GuardedWrite("WritePdfObject", doc, object,
                      [&] { return doc->WriteObject(kNewObject, value); });
}

int32_t ReservePdfObject(JTPDFDocument* doc, int* object) {
  return GuardedWrite("ReservePdfObject", doc, object, [&] { return doc->ReserveObject(); });
}

int32_t WriteReservedPdfObject(JTPDFDocument* doc, int object, const char* value) {
  return GuardedCall("WriteReservedPdfObject", *doc, [&] {
    RequireReserved(*doc, object);
    doc->WriteObject(object, value);
  });
}

int32_t WriteReservedPdfStream(JTPDFDocument* doc, int object, unsigned entryCount,
                               const JTPDFEntry* entries, unsigned pieceCount,
                               const JTPDFPiece* pieces) {
  return GuardedCall("WriteReservedPdfStream", *doc, [&] {
    RequireReserved(*doc, object);
    doc->WriteStream(object, {entries, entryCount}, {pieces, pieceCount});
  });
}

int32_t SetPdfCatalogEntry(JTPDFDocument* doc, const char* key, const char* value) {
  return GuardedCall("SetPdfCatalogEntry", *doc, [&] { doc->SetCatalogEntry(key, value); });
}

int32_t SetPdfPageEntry(JTPDFDocument* doc, const char* key, const char* value) {
  return GuardedCall("SetPdfPageEntry", *doc, [&] { doc->SetPageEntry(key, value); });
}

int32_t SetPdfCanvasEntry(JTPDFDocument* doc, const char* key, const char* value) {
  return GuardedCall("SetPdfCanvasEntry", *doc, [&] { doc->SetCanvasEntry(key, value); });
}

void DrawPdfContent(JTPDFDocument* doc, const char* operators) {
  RememberingCall(*doc, [&] { doc->GetCanvas().Content(operators); });
}

int32_t SetPdfContentEncoder(JTPDFDocument* doc, const char* filterName, JTPDFEncodeFunction encode,
                             void* context) {
  return GuardedCall("SetPdfContentEncoder", *doc,
                     [&] { doc->SetContentEncoder(filterName, encode, context); });
}

int32_t AddPdfBookmark(JTPDFDocument* doc, int level, const wchar_t* title, int pageIndex) {
  return GuardedCall("AddPdfBookmark", *doc, [&] { doc->AddBookmark(level, title, pageIndex); });
}

int32_t SetPdfOpenPage(JTPDFDocument* doc, int pageIndex, const char* view) {
  return GuardedCall("SetPdfOpenPage", *doc, [&] { doc->SetOpenPage(pageIndex, view); });
}

}  // extern "C"
