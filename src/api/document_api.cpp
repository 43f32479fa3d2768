// Exports: documents created, initialised, finalised, read and destroyed.

#include "api/guarded_call.h"
#include "document/document.h"
#include "jtpdf/jtpdf.h"

extern "C" {

JTPDFDocument* CreateFilePdfDoc(double unitFactor, const wchar_t* fileName, const wchar_t* creator,
                                const wchar_t* author) {
  return new JTPDFDocument(unitFactor, fileName, creator, author);
}

JTPDFDocument* CreateMemoryPdfDoc(double unitFactor) {
  return new JTPDFDocument(unitFactor);
}

int32_t InitPdfDoc(JTPDFDocument* doc) {
  return GuardedCall("InitPdfDoc", [&] { doc->Initialize(); });
}

int32_t FinalizePdfDoc(JTPDFDocument* doc, const char* closingText) {
  return GuardedCall("FinalizePdfDoc", [&] { doc->Finalize(closingText); });
}

const char* GetPdfData(JTPDFDocument* doc) {
  return doc->GetPdfData();
}

size_t GetPdfDataSize(JTPDFDocument* doc) {
  return doc->GetPdfDataSize();
}

void SetPdfInfoItem(JTPDFDocument* doc, const char* key, const wchar_t* value) {
  doc->SetInfoItem(key, value);
}

bool GetPdfMgMk(JTPDFDocument* doc) {
  return doc->GetMgMk();
}

void SetPdfMgMk(JTPDFDocument* doc, bool mark) {
  doc->SetMgMk(mark);
}

void DestroyPdfDoc(JTPDFDocument* doc) {
  delete doc;
}

}  // extern "C"
