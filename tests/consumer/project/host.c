/* The smallest host: a page with a rectangle, checked to be a PDF file. */
#include <jtpdf/jtpdf.h>
#include <stdio.h>
#include <string.h>

int main(void) {
  const JTPDFRect page = {0, 0, 6, 4, 0};
  const JTPDFRect box = {1, 1, 2, 1, 30};
  const JTPDFRGBColor teal = {0, 128, 128, 255};
  int form = 0;
  JTPDFDocument* doc = CreateMemoryPdfDoc(PDFCoordinateUnitInch);
  int32_t code = InitPdfDoc(doc);
  SetPdfCanvasBoundingBox(doc, page);
  FillPdfRectangle(doc, box, teal);
  if (code == 0) code = WritePdfCanvas(doc, &form);
  if (code == 0) code = WritePdfPage(doc, form, page, page);
  if (code == 0) code = FinalizePdfDoc(doc, NULL);
  if (code == 0 && memcmp(GetPdfData(doc), "%PDF-1.5\r\n", 10) != 0) code = 1;
  printf("code %d, %zu bytes\n", (int)code, GetPdfDataSize(doc));
  DestroyPdfDoc(doc);
  return code == 0 ? 0 : 1;
}
