/* first_document LIBRARY - prints the CPU time in microseconds from before dlopen to the end of the
 * first document: what a host pays that loads the library for one small file.
 *
 *     dlopen 612 document 41
 */
#include <dlfcn.h>
#include <jtpdf/types.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

typedef struct JTPDFDocument JTPDFDocument;

static double Microseconds(void) {
  struct timespec time;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return (double)time.tv_sec * 1e6 + (double)time.tv_nsec / 1e3;
}

/* POSIX promises what ISO C does not: that a pointer to data holds the address of a function. */
static void Find(void* library, const char* name, void* function) {
  void* const address = dlsym(library, name);
  if (address == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    exit(1);
  }
  *(void**)function = address;
}

int main(int argc, char** argv) {
  JTPDFDocument* (*create)(double);
  int32_t (*init)(JTPDFDocument*);
  void (*setBox)(JTPDFDocument*, JTPDFRect);
  void (*draw)(JTPDFDocument*, JTPDFRect, JTPDFRGBColor, JTPDFRGBColor, double);
  int32_t (*writeCanvas)(JTPDFDocument*, int*);
  int32_t (*writePage)(JTPDFDocument*, int, JTPDFRect, JTPDFRect);
  int32_t (*finalize)(JTPDFDocument*, const char*);
  void (*destroy)(JTPDFDocument*);
  const JTPDFRect page = {0, 0, 595, 842, 0};
  const JTPDFRect box = {100, 100, 200, 300, 30};
  const JTPDFRGBColor fill = {200, 100, 50, 255};
  const JTPDFRGBColor stroke = {0, 0, 0, 255};
  JTPDFDocument* doc;
  void* library;
  int form = 0;
  int32_t code;
  double start, opened;

  if (argc != 2) {
    fprintf(stderr, "usage: %s LIBRARY\n", argv[0]);
    return 2;
  }
  start = Microseconds();
  library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (library == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  opened = Microseconds();
  Find(library, "CreateMemoryPdfDoc", &create);
  Find(library, "InitPdfDoc", &init);
  Find(library, "SetPdfCanvasBoundingBox", &setBox);
  Find(library, "FillAndStrokePdfRectangle", &draw);
  Find(library, "WritePdfCanvas", &writeCanvas);
  Find(library, "WritePdfPage", &writePage);
  Find(library, "FinalizePdfDoc", &finalize);
  Find(library, "DestroyPdfDoc", &destroy);
  doc = create(1.0);
  code = init(doc);
  setBox(doc, page);
  draw(doc, box, fill, stroke, 2);
  if (code == 0) code = writeCanvas(doc, &form);
  if (code == 0) code = writePage(doc, form, page, page);
  if (code == 0) code = finalize(doc, NULL);
  destroy(doc);
  printf("dlopen %.0f document %.0f\n", opened - start, Microseconds() - opened);
  return code == 0 ? 0 : 1;
}
