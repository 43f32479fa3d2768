// Exports: drawing on the canvas, and writing images, colour spaces, forms and pages.

#include "api/guarded_call.h"
#include "document/document.h"
#include "document/images.h"
#include "jtpdf/jtpdf.h"

namespace {

// Runs draw with the document's canvas.
template <typename Draw>
void Drawing(JTPDFDocument* doc, const Draw& draw) {
  RememberingCall(*doc, [&] { draw(doc->GetCanvas()); });
}

}  // namespace

extern "C" {

void ClearPdfCanvas(JTPDFDocument* doc) {
  Drawing(doc, [&](JTPDFCanvas& canvas) { canvas.Clear(); });
}

JTPDFRect GetPdfCanvasBoundingBox(JTPDFDocument* doc) {
  return doc->GetCanvas().GetBoundingBox().AsPdfRect();
}

void SetPdfCanvasBoundingBox(JTPDFDocument* doc, JTPDFRect box) {
  doc->GetCanvas().SetBoundingBox(JTPDFBox(box));
}

void DrawPdfImage(JTPDFDocument* doc, int image) {
  Drawing(doc, [&](JTPDFCanvas& canvas) { canvas.Image(image); });
}

void DrawPdfImageInRect(JTPDFDocument* doc, int image, JTPDFRect box) {
  Drawing(doc, [&](JTPDFCanvas& canvas) { canvas.Image(image, JTPDFBox(box)); });
}

void FillPdfRectangle(JTPDFDocument* doc, JTPDFRect box, JTPDFRGBColor fill) {
  Drawing(doc, [&](JTPDFCanvas& canvas) { canvas.Rectangle(JTPDFBox(box), JTPDFColor(fill)); });
}

void StrokePdfRectangle(JTPDFDocument* doc, JTPDFRect box, JTPDFRGBColor stroke, double lineWidth) {
  Drawing(doc, [&](JTPDFCanvas& canvas) {
    canvas.Rectangle(JTPDFBox(box), JTPDFColor(stroke), lineWidth);
  });
}

void FillAndStrokePdfRectangle(JTPDFDocument* doc, JTPDFRect box, JTPDFRGBColor fill,
                               JTPDFRGBColor stroke, double lineWidth) {
  Drawing(doc, [&](JTPDFCanvas& canvas) {
    canvas.Rectangle(JTPDFBox(box), JTPDFColor(fill), JTPDFColor(stroke), lineWidth);
  });
}

void FillAndStrokePdfCircle(JTPDFDocument* doc, JTPDFRect box, JTPDFRGBColor fill,
                            JTPDFRGBColor stroke, double lineWidth) {
  Drawing(doc, [&](JTPDFCanvas& canvas) {
    canvas.Circle(JTPDFBox(box), JTPDFColor(fill), JTPDFColor(stroke), lineWidth);
  });
}

void InsetPdfRect(JTPDFRect* rect, double dx, double dy) {
  JTPDFBox box(*rect);
  box.Inset(dx, dy);
  *rect = box.AsPdfRect();
}

int32_t WritePdfCanvas(JTPDFDocument* doc, int* form) {
  return GuardedWrite("WritePdfCanvas", doc, form, [&] { return doc->WriteCanvas(); });
}

int32_t WritePdfPage(JTPDFDocument* doc, int form, JTPDFRect cropBox, JTPDFRect mediaBox) {
  return GuardedCall("WritePdfPage", *doc,
                     [&] { doc->WritePage(form, JTPDFBox(cropBox), JTPDFBox(mediaBox)); });
}

int32_t WritePdfImage(JTPDFDocument* doc, const TPdfImageDescriptor* image, bool maskWhite,
                      TPdfImageRole role, const wchar_t* name, unsigned itemCount,
                      const JTPDFDictionaryItem* items, int* imageObject) {
  return GuardedWrite("WritePdfImage", doc, imageObject, [&] {
    return doc->WriteImage(*image, maskWhite, role, name, itemCount, items, kNoSoftMask);
  });
}

int32_t WritePdfImageWithAlpha(JTPDFDocument* doc, const TPdfImageDescriptor* image,
                               const TPdfImageDescriptor* alpha, TPdfImageRole role,
                               const wchar_t* name, unsigned itemCount,
                               const JTPDFDictionaryItem* items, int* imageObject) {
  int softMask = kNoSoftMask;
  if (alpha != nullptr) {
    // Through the export, so a failure of the alpha image is reported under its name.
    const int32_t code =
        WritePdfImage(doc, alpha, false, kPdfImageRoleAlpha, name, 0, nullptr, &softMask);
    if (code != 0) return code;
  }
  return GuardedWrite("WritePdfImageWithAlpha", doc, imageObject, [&] {
    return doc->WriteImage(*image, false, role, name, itemCount, items, softMask);
  });
}

int32_t WritePdfImageJPEG2000(JTPDFDocument* doc, const TPdfImageDescriptor* image,
                              TPdfImageRole role, const wchar_t* name, unsigned itemCount,
                              const JTPDFDictionaryItem* items, int* imageObject) {
  TPdfImageDescriptor asRGB = *image;
  asRGB.colorSpace = kPdfColorSpaceRGB;
  return GuardedWrite("WritePdfImageJPEG2000", doc, imageObject, [&] {
    return doc->WriteImage(asRGB, false, role, name, itemCount, items, kNoSoftMask);
  });
}

int32_t WritePdfICCProfile(JTPDFDocument* doc, const char* data, unsigned size,
                           TPdfCompression compression, int* colorSpaceObject) {
  return GuardedWrite("WritePdfICCProfile", doc, colorSpaceObject, [&] {
    return doc->WriteICCProfile(data, size, compression, colorSpaceObject);
  });
}

}  // extern "C"
