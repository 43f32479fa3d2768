/* hello.c - the whole way through the library: one page with a turned rectangle. */
#include <errno.h>
#include <jtpdf/jtpdf.h>
#include <stdio.h>
#include <string.h>

int main(void) {
  const JTPDFRect sheet = {0, 0, 210, 297, 0}; /* left, bottom, width, height; the angle */
  const JTPDFRGBColor red = {214, 40, 57, 255};
  JTPDFDocument* doc = TryCreateFilePdfDoc(PDFCoordinateUnitMillimeter, L"hello.pdf", NULL, NULL);
  int form = 0;
  int32_t code = doc != NULL ? InitPdfDoc(doc) : ENOMEM;
  if (code == 0) {
    SetPdfCanvasBoundingBox(doc, sheet);
    FillPdfRectangle(doc, (JTPDFRect){45, 110, 120, 80, 15}, red);
    code = WritePdfCanvas(doc, &form); /* what was drawn becomes a form, ... */
  }
  if (code == 0) code = WritePdfPage(doc, form, sheet, sheet); /* ... and the form a page */
  if (code == 0) code = FinalizePdfDoc(doc, NULL);
  DestroyPdfDoc(doc);
  if (code == 0) return 0;
  fprintf(stderr, "hello.pdf: %s\n", code > 0 ? strerror(code) : "cannot be written");
  return 1;
}
