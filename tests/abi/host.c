// A C program as a user of 2.1.6 compiled it: every export and every constant, and the layout of
// every record. It keeps running against every later library of SOVERSION 2.

#include <jtpdf/jtpdf.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const char* bytes;
static size_t size;

static void Expect(int holds, const char* what) {
  if (holds) return;
  fprintf(stderr, "host: not so: %s\n", what);
  exit(1);
}

static int Holds(const char* text) {
  const size_t length = strlen(text);
  for (size_t i = 0; i + length <= size; ++i) {
    if (memcmp(bytes + i, text, length) == 0) return 1;
  }
  return 0;
}

static void Draw(JTPDFDocument* doc) {
  const JTPDFRGBColor red = {255, 0, 0, 255};
  const JTPDFRGBColor other = {51, 102, 153, 0};
  const JTPDFRect box = {1, 2, 3, 4, 90};
  FillPdfRectangle(doc, box, red);
  ClearPdfCanvas(doc);
  FillPdfRectangle(doc, box, other);
  StrokePdfRectangle(doc, box, red, 0.5);
  FillAndStrokePdfRectangle(doc, box, red, other, 0.25);
  FillAndStrokePdfCircle(doc, box, red, other, 0.125);
}

static void WriteMemory(void) {
  JTPDFDocument* const doc = CreateMemoryPdfDoc(PDFCoordinateUnitPoint);
  const JTPDFDictionaryItem items[] = {{"First", L"1"}, {"/Second", NULL}};
  TPdfImageDescriptor image = {"abc", 3, kPdfCompressionFlate, 640, 480, 4, kPdfColorSpaceICC, 3};
  const TPdfImageDescriptor alpha = {"d", 1, kPdfCompressionLZW, 5, 6, 8, kPdfColorSpaceGray, 0};
  const JTPDFRect crop = {1, 2, 30, 40, 0};
  const JTPDFRect media = {0, 0, 50, 60, 0};
  int profile = 0;
  int number = 0;
  Expect(GetPdfData(doc) == NULL && GetPdfDataSize(doc) == 0, "no data before the end");
  Expect(WritePdfCanvas(doc, &number) != 0 && number == 0, "refused before InitPdfDoc");
  Expect(InitPdfDoc(doc) == 0, "InitPdfDoc");
  Expect(WritePdfICCProfile(doc, "icc", 3, kPdfCompressionJPEG2000, &profile) == 0, "profile");
  Expect(profile == 3, "the number of the colour space");
  Expect(WritePdfImage(doc, &image, true, kPdfImageRoleText, L"n", 2, items, &number) == 0,
         "image");
  Expect(number == 4, "the number of the image");
  image.colorSpace = kPdfColorSpaceCMYK;
  Expect(
      WritePdfImageWithAlpha(doc, &image, &alpha, kPdfImageRoleOther, NULL, 0, NULL, &number) == 0,
      "image with alpha");
  Expect(number == 6, "the number of the image behind its mask");
  image.compression = kPdfCompressionJPEG2000;
  Expect(WritePdfImageJPEG2000(doc, &image, kPdfImageRoleShape, NULL, 0, NULL, &number) == 0,
         "JPEG 2000 image");
  Expect(number == 7, "the number of the JPEG 2000 image");
  Draw(doc);
  SetPdfCanvasBoundingBox(doc, media);
  const JTPDFRect kept = GetPdfCanvasBoundingBox(doc);
  Expect(kept.width == 50 && kept.height == 60, "the bounding box");
  DrawPdfImage(doc, 4);
  DrawPdfImageInRect(doc, 6, crop);
  Expect(WritePdfCanvas(doc, &number) == 0 && number == 8, "form");
  Expect(WritePdfPage(doc, number, crop, media) == 0, "page");
  SetPdfInfoItem(doc, "Title", L"T");
  Expect(!GetPdfMgMk(doc), "the mark flag is off");
  SetPdfMgMk(doc, true);
  Expect(GetPdfMgMk(doc), "the mark flag is on");
  Expect(FinalizePdfDoc(doc, "% closing") == 0, "FinalizePdfDoc");

  bytes = GetPdfData(doc);
  size = GetPdfDataSize(doc);
  Expect(bytes != NULL && size > 9 && memcmp(bytes, "%PDF-1.5\r\n", 10) == 0, "the header");
  Expect(memcmp(bytes + size - 11, "% closing\r\n", 11) == 0, "the closing text");
  Expect(Holds("/BitsPerComponent 4\r\n/ColorSpace 3 0 R\r\n"), "the ICC image");
  Expect(Holds("/Height 480\r\n") && Holds("/Width 640\r\n"), "the image's size");
  Expect(Holds("/First (\376\377\\0001)\r\n") && Holds("/Second ()\r\n"), "the image's items");
  Expect(Holds("/JTImageType /Text\r\n") && Holds("/JTImageType /Shape\r\n"), "the roles");
  Expect(Holds("/SMask 5 0 R\r\n") && Holds("/DeviceCMYK\r\n"), "the CMYK image and its mask");
  Expect(Holds("0.2000 0.4000 0.6000 rg\r\n"), "a colour's components");
  Expect(Holds("0.5000 w 1 0 0 1 2.5000 4.0000 cm 0.0000 1.0000 -1.0000 0.0000 0 0 cm"),
         "a box's fields");
  Expect(Holds("/CropBox [1.0000 2.0000 31.0000 42.0000]\r\n/MediaBox [0.0000 0.0000 50.0000"),
         "the page's boxes");
  Expect(Holds("/MGmk (\376\377\\000t\\000r\\000u\\000e)\r\n"), "the mark flag in the file");
  Expect(Holds("/Title (\376\377\\000T)\r\n"), "the title");
  DestroyPdfDoc(doc);
}

int main(int argc, char** argv) {
  Expect(argc == 2, "usage: host FILE");
  Expect(PDFCoordinateUnitInch == 72.0 && PDFCoordinateUnitPoint == 1.0, "the English units");
  Expect(PDFCoordinateUnitCentimeter == 28.346456692944 &&
             PDFCoordinateUnitMillimeter == 2.8346456692944,
         "the metric units");
  JTPDFSetDiagnosticMode(true);
  Expect(JTPDFGetDiagnosticMode(), "diagnostic mode on");
  JTPDFSetDiagnosticMode(false);
  JTPDFRect box = {10, 20, 30, 40, 50};
  InsetPdfRect(&box, 1, 2);
  Expect(
      box.left == 11 && box.bottom == 22 && box.width == 28 && box.height == 36 && box.angle == 50,
      "InsetPdfRect");
  WriteMemory();

  wchar_t name[4096];
  Expect(mbstowcs(name, argv[1], 4096) < 4096, "a short file name in ASCII");
  JTPDFDocument* const doc = CreateFilePdfDoc(PDFCoordinateUnitInch, name, L"creator", L"author");
  Expect(InitPdfDoc(doc) == 0 && FinalizePdfDoc(doc, NULL) == 0, "a file document");
  Expect(GetPdfData(doc) == NULL, "a file document gives no data");
  DestroyPdfDoc(doc);
  DestroyPdfDoc(NULL);
  FILE* const file = fopen(argv[1], "rb");
  char head[9] = "";
  Expect(file != NULL && fread(head, 1, 8, file) == 8 && strcmp(head, "%PDF-1.5") == 0, "the file");
  fclose(file);
  puts("every export keeps its promise");
  return 0;
}
