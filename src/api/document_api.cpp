// Exports: documents created, initialised, finalised, read and destroyed.

#include "api/guarded_call.h"
#include "document/document.h"
#include "jtpdf/jtpdf.h"

namespace {

// A document whose memory errors are codes, the one of its creation included.
template <typename Create>
JTPDFDocument* TryCreate(const Create& create) {
  try {
    JTPDFDocument* const doc = create();
    doc->SetMemoryErrors(true);
    return doc;
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return nullptr;
  }
}

}  // namespace

extern "C" {

JTPDFDocument* CreateFilePdfDoc(double unitFactor, const wchar_t* fileName, const wchar_t* creator,
                                const wchar_t* author) {
  return new JTPDFDocument(unitFactor, fileName, creator, author);
}

JTPDFDocument* CreateMemoryPdfDoc(double unitFactor) {
  return new JTPDFDocument(unitFactor);
}

JTPDFDocument* CreateCallbackPdfDoc(double unitFactor, JTPDFWriteFunction write, void* context) {
  return new JTPDFDocument(unitFactor, write, context);
}

JTPDFDocument* TryCreateFilePdfDoc(double unitFactor, const wchar_t* fileName,
                                   const wchar_t* creator, const wchar_t* author) {
  return TryCreate([&] { return CreateFilePdfDoc(unitFactor, fileName, creator, author); });
}

JTPDFDocument* TryCreateMemoryPdfDoc(double unitFactor) {
  return TryCreate([&] { return CreateMemoryPdfDoc(unitFactor); });
}

JTPDFDocument* TryCreateCallbackPdfDoc(double unitFactor, JTPDFWriteFunction write, void* context) {
  return TryCreate([&] { return CreateCallbackPdfDoc(unitFactor, write, context); });
}

void SetPdfMemoryErrors(JTPDFDocument* doc, bool on) {
  doc->SetMemoryErrors(on);
}

int32_t InitPdfDoc(JTPDFDocument* doc) {
  return GuardedCall("InitPdfDoc", *doc, [&] { doc->Initialize(); });
}

int32_t FinalizePdfDoc(JTPDFDocument* doc, const char* closingText) {
  return GuardedCall("FinalizePdfDoc", *doc, [&] { doc->Finalize(closingText); });
}

const char* GetPdfData(JTPDFDocument* doc) {
  return doc->GetPdfData();
}

size_t GetPdfDataSize(JTPDFDocument* doc) {
  return doc->GetPdfDataSize();
}

void SetPdfInfoItem(JTPDFDocument* doc, const char* key, const wchar_t* value) {
  RememberingCall(*doc, [&] { doc->SetInfoItem(key, value); });
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
