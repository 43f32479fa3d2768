/* The smallest host of the library of pictures: a grey pixel becomes a page. */
#include <jtpdf/pictures.h>
#include <stdio.h>
#include <string.h>

int main(void) {
  const char pixel[] = "P5 1 1 255\n\x80";
  const JTPDFPicturePage page = {.page = "A4"};
  JTPDFPictureError error = {.message = ""};
  JTPDFDocument* doc = CreateMemoryPdfDoc(PDFCoordinateUnitPoint);
  int32_t code = InitPdfDoc(doc);
  JTPDFPicture* picture = JTPDFOpenPictureMemory(pixel, sizeof pixel - 1, NULL, &error);
  JTPDFPictureWriter* writer = JTPDFCreatePictureWriter(doc, PDFCoordinateUnitPoint, 6, &error);
  if (code == 0) code = JTPDFAddPicturePage(writer, picture, 0, &page, NULL, &error);
  if (code == 0) code = FinalizePdfDoc(doc, NULL);
  if (code == 0 && memcmp(GetPdfData(doc), "%PDF-1.5\r\n", 10) != 0) code = 1;
  printf("code %d, %zu bytes %s\n", (int)code, GetPdfDataSize(doc), error.message);
  JTPDFDestroyPictureWriter(writer);
  JTPDFClosePicture(picture);
  DestroyPdfDoc(doc);
  return code == 0 ? 0 : 1;
}
