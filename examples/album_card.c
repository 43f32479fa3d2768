/* album_card.c - makes a small card: in memory, once in every unit, and into an open file. */
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "album.h"

/* Draws a card of 3.5 by 2 inches in a document in which an inch has the length `inch`. */
static void DrawCard(JTPDFDocument* doc, double inch, JTPDFRect card) {
  SetPdfCanvasBoundingBox(doc, card);
  FillPdfRectangle(doc, card, kNight);
  for (int i = 0; i < 11; i++) {
    const double side = (1.375 - 0.125 * i) * inch;
    StrokePdfRectangle(doc, Centered(1.0 * inch, 1.0 * inch, side, side, 7.5 * i),
                       Rainbow(i / 11.0), inch / 64);
  }
  for (int i = 0; i < 6; i++) {
    FillAndStrokePdfCircle(doc, Centered(2.5 * inch, inch, (1.5 - 0.25 * i) * inch, 1.5 * inch, 0),
                           Rainbow(0.5 + i / 12.0), kPaper, inch / 64);
  }
}

/* Makes the card in doc, which was created with the unit in which an inch has that length. */
static bool MakeCard(JTPDFDocument* doc, double inch) {
  if (doc == NULL) return Succeeded(errno, "TryCreate...PdfDoc", "card");
  const JTPDFRect sheet = Box(0, 0, 3.5 * inch, 2.0 * inch);
  int form = 0;
  SetPdfInfoItem(doc, "Title", L"Карточка · κάρτα · 名刺");
  if (!Succeeded(InitPdfDoc(doc), "InitPdfDoc", "card")) return false;
  DrawCard(doc, inch, sheet);
  return Succeeded(WritePdfCanvas(doc, &form), "WritePdfCanvas", "card") &&
         Succeeded(WritePdfPage(doc, form, sheet, sheet), "WritePdfPage", "card") &&
         Succeeded(FinalizePdfDoc(doc, NULL), "FinalizePdfDoc", "card");
}

/* Makes the card in memory; *card is the caller's to free when this succeeded. */
static bool MakeCardInMemory(double unit, double inch, Bytes* card) {
  JTPDFDocument* doc = TryCreateMemoryPdfDoc(unit);
  const bool ok = MakeCard(doc, inch);
  if (ok) { /* the bytes belong to the document: copy them before it goes */
    const Bytes nothing = {NULL, 0};
    *card = nothing;
    Append(card, GetPdfData(doc), GetPdfDataSize(doc));
  }
  DestroyPdfDoc(doc);
  return ok;
}

/* The same card, measured in centimetres, millimetres and points, has the bytes of that in inches.
 */
static bool SameInEveryUnit(const Bytes* card) {
  const struct {
    const char* name;
    double unit, inch;
  } units[] = {{"centimetres", PDFCoordinateUnitCentimeter, 2.54},
               {"millimetres", PDFCoordinateUnitMillimeter, 25.4},
               {"points", PDFCoordinateUnitPoint, 72}};
  for (size_t i = 0; i < COUNT(units); i++) {
    Bytes other;
    if (!MakeCardInMemory(units[i].unit, units[i].inch, &other)) return false;
    const bool same = other.size == card->size && memcmp(other.data, card->data, card->size) == 0;
    free(other.data);
    if (!same) {
      fprintf(stderr, "album: the card in %s is not the card in inches\n", units[i].name);
      return false;
    }
  }
  return true;
}

/* Takes the bytes of a document as they come. */
static int32_t ToFile(void* file, const char* data, size_t size) {
  return fwrite(data, 1, size, file) == size ? 0 : errno;
}

/* Makes the card in a file that the program has opened itself, by a callback. */
static bool MakeCardInFile(const char* path) {
  FILE* file = fopen(path, "wb");
  if (file == NULL) return FileFailed(path, "");
  JTPDFDocument* doc = TryCreateCallbackPdfDoc(PDFCoordinateUnitInch, ToFile, file);
  const bool made = MakeCard(doc, 1.0);
  DestroyPdfDoc(doc);
  const bool closed = fclose(file) == 0;
  return made && (closed || FileFailed(path, ""));
}

bool MakeCardFile(const char* path) {
  Bytes card;
  if (!MakeCardInMemory(PDFCoordinateUnitInch, 1.0, &card)) return false;
  const bool same = SameInEveryUnit(&card);
  free(card.data);
  return same && MakeCardInFile(path);
}
