/* A host in C11: every function and constant of the header, called as C, and the finished bytes
 * looked at through GetPdfData and GetPdfDataSize. */
#define _POSIX_C_SOURCE 200809L /* dup, pipe */

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
static int pipe(int ends[2]) {
  return _pipe(ends, 4096, _O_BINARY);
}
#endif

#include "jtpdf/jtpdf.h"

static int failures = 0;

#define CHECK(condition)                                                      \
  do {                                                                        \
    if (!(condition)) {                                                       \
      fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                             \
    }                                                                         \
  } while (0)

/* Whether the text stands in the bytes, which hold NULs. */
static bool Holds(const char* bytes, size_t size, const char* text) {
  const size_t length = strlen(text);
  for (size_t i = 0; i + length <= size; ++i) {
    if (memcmp(bytes + i, text, length) == 0) return true;
  }
  return false;
}

static void CheckRecords(void) {
  CHECK(sizeof(TPdfColorSpace) == 4);
  CHECK(sizeof(TPdfCompression) == 4);
  CHECK(sizeof(TPdfImageRole) == 4);
  CHECK(sizeof(JTPDFRect) == 40);
  CHECK(sizeof(JTPDFRGBColor) == 4);
  CHECK(kPdfColorSpaceGray == 0 && kPdfColorSpaceRGB == 1);
  CHECK(kPdfColorSpaceCMYK == 2 && kPdfColorSpaceICC == 3);
  CHECK(kPdfCompressionJPEG == 0 && kPdfCompressionLZW == 1);
  CHECK(kPdfCompressionFlate == 2 && kPdfCompressionJPEG2000 == 3);
  CHECK(kPdfImageRoleBackground == 0 && kPdfImageRolePhoto == 1 && kPdfImageRoleMask == 2);
  CHECK(kPdfImageRoleBorder == 3 && kPdfImageRoleClipArt == 4 && kPdfImageRoleAlpha == 5);
  CHECK(kPdfImageRoleText == 6 && kPdfImageRoleShape == 7 && kPdfImageRoleOther == 8);
  CHECK(PDFCoordinateUnitInch == 72.0 && PDFCoordinateUnitPoint == 1.0);
  CHECK(PDFCoordinateUnitCentimeter == 28.346456692944);
  CHECK(PDFCoordinateUnitMillimeter == 2.8346456692944);
}

static void CheckMemoryDocument(void) {
  const JTPDFRect page = {0, 0, 100, 200, 0};
  const JTPDFRGBColor red = {255, 0, 0, 255};
  const JTPDFRGBColor blue = {0, 0, 255, 255};
  const char data[] = {'a', 0, 'b', 0};
  const JTPDFDictionaryItem items[] = {{"Extra", L"item"}};

  JTPDFDocument* const doc = CreateMemoryPdfDoc(PDFCoordinateUnitPoint);
  CHECK(doc != NULL);
  CHECK(GetPdfData(doc) == NULL && GetPdfDataSize(doc) == 0);
  CHECK(InitPdfDoc(doc) == 0);
  SetPdfInfoItem(doc, "Title", L"C");
  CHECK(!GetPdfMgMk(doc));
  SetPdfMgMk(doc, true);
  CHECK(GetPdfMgMk(doc));

  int profile = 0;
  CHECK(WritePdfICCProfile(doc, data, sizeof data, kPdfCompressionFlate, &profile) == 0);
  CHECK(profile == 3);
  TPdfImageDescriptor image = {data, sizeof data, kPdfCompressionFlate, 2,
                               2,    8,           kPdfColorSpaceICC,    profile};
  int number = 0;
  CHECK(WritePdfImage(doc, &image, true, kPdfImageRolePhoto, L"photo", 1, items, &number) == 0);
  CHECK(number == 4);
  CHECK(WritePdfImageWithAlpha(doc, &image, &image, kPdfImageRoleText, NULL, 0, NULL, &number) ==
        0);
  CHECK(number == 6);
  image.compression = kPdfCompressionJPEG2000;
  CHECK(WritePdfImageJPEG2000(doc, &image, (TPdfImageRole)-7, L"", 0, NULL, &number) == 0);
  CHECK(number == 7);

  SetPdfCanvasBoundingBox(doc, page);
  CHECK(GetPdfCanvasBoundingBox(doc).height == 200);
  DrawPdfImage(doc, number);
  ClearPdfCanvas(doc);
  DrawPdfImage(doc, 4);
  JTPDFRect box = page;
  InsetPdfRect(&box, 10, 20);
  CHECK(box.left == 10 && box.bottom == 20 && box.width == 80 && box.height == 160);
  DrawPdfImageInRect(doc, 6, box);
  FillPdfRectangle(doc, box, red);
  StrokePdfRectangle(doc, box, blue, 1);
  FillAndStrokePdfRectangle(doc, box, red, blue, 2);
  FillAndStrokePdfCircle(doc, box, red, blue, 3);
  int form = 0;
  CHECK(WritePdfCanvas(doc, &form) == 0);
  CHECK(form == 8);
  CHECK(WritePdfPage(doc, form, box, page) == 0);
  CHECK(FinalizePdfDoc(doc, "closing") == 0);

  const char* const bytes = GetPdfData(doc);
  const size_t size = GetPdfDataSize(doc);
  CHECK(bytes != NULL && size > 1000);
  if (bytes != NULL) {
    CHECK(memcmp(bytes, "%PDF-1.5\r\n", 10) == 0);
    CHECK(memcmp(bytes + size - 16, "%%EOF\r\nclosing\r\n", 16) == 0);
    CHECK(strlen(bytes) < size); /* the image's NULs */
    CHECK(Holds(bytes, size, "/Im4 Do Q"));
    CHECK(!Holds(bytes, size, "/Im7 "));
    CHECK(Holds(bytes, size, "/CropBox [10.0000 20.0000 90.0000 180.0000]"));
  }
  DestroyPdfDoc(doc);
}

static void CheckRefusals(void) {
  JTPDFDocument* const doc = CreateFilePdfDoc(1, L"/missing/directory/a.pdf", L"c", L"a");
  int number = 77;
  errno = 0;
  CHECK(WritePdfCanvas(doc, &number) == -1);
  CHECK(number == 77);
  errno = 0;
  CHECK(InitPdfDoc(doc) == ENOENT);
  DestroyPdfDoc(doc);
  DestroyPdfDoc(NULL);
}

/* Reports go to the process's standard error stream, a line each. */
static void CheckDiagnostics(void) {
  static const char expected[] = "InitPdfDoc: JTPDF error: 2; No such file or directory\n";
  char text[256] = {0};
  ssize_t size = 0;
  int ends[2];
  CHECK(!JTPDFGetDiagnosticMode());
  JTPDFSetDiagnosticMode(true);
  CHECK(JTPDFGetDiagnosticMode());
  const int standardError = dup(STDERR_FILENO);
  CHECK(standardError >= 0 && pipe(ends) == 0);
  dup2(ends[1], STDERR_FILENO);
  JTPDFDocument* const doc = CreateFilePdfDoc(1, L"/missing/directory/a.pdf", NULL, NULL);
  const int32_t code = InitPdfDoc(doc);
  DestroyPdfDoc(doc);
  JTPDFSetDiagnosticMode(false);
  dup2(standardError, STDERR_FILENO);
  close(standardError);
  close(ends[1]);
  size = read(ends[0], text, sizeof text - 1);
  close(ends[0]);
  if (size > 1 && text[size - 2] == '\r') { /* as lines end on Windows */
    text[--size] = '\0';
    text[size - 1] = '\n';
  }
  CHECK(code == ENOENT);
  CHECK(size == (ssize_t)sizeof expected - 1);
  CHECK(strcmp(text, expected) == 0);
}

int main(void) {
  CheckRecords();
  CheckMemoryDocument();
  CheckRefusals();
  CheckDiagnostics();
  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
