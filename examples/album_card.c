/* album_card.c - makes a small card in memory, once in every unit, and writes it to a file. */
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

/* Makes the card in memory; *card is the caller's to free when this succeeded. */
static bool MakeCard(double unit, double inch, Bytes* card) {
  JTPDFDocument* doc = CreateMemoryPdfDoc(unit);
  const JTPDFRect sheet = Box(0, 0, 3.5 * inch, 2.0 * inch);
  int form = 0;
  SetPdfInfoItem(doc, "Title", L"Карточка · κάρτα · 名刺");
  bool ok = Succeeded(InitPdfDoc(doc), "InitPdfDoc", "card");
  if (ok) DrawCard(doc, inch, sheet);
  ok = ok && Succeeded(WritePdfCanvas(doc, &form), "WritePdfCanvas", "card") &&
       Succeeded(WritePdfPage(doc, form, sheet, sheet), "WritePdfPage", "card") &&
       Succeeded(FinalizePdfDoc(doc, NULL), "FinalizePdfDoc", "card");
  if (ok) { /* the bytes belong to the document: copy them before it goes */
    const Bytes nothing = {NULL, 0};
    *card = nothing;
    Append(card, GetPdfData(doc), GetPdfDataSize(doc));
  }
  DestroyPdfDoc(doc);
  return ok;
}

/* The same card, measured in centimetres, millimetres and points, has the same bytes. */
static bool SameInEveryUnit(const Bytes* card) {
  const struct {
    const char* name;
    double unit, inch;
  } units[] = {{"centimetres", PDFCoordinateUnitCentimeter, 2.54},
               {"millimetres", PDFCoordinateUnitMillimeter, 25.4},
               {"points", PDFCoordinateUnitPoint, 72}};
  for (size_t i = 0; i < COUNT(units); i++) {
    Bytes other;
    if (!MakeCard(units[i].unit, units[i].inch, &other)) return false;
    const bool same = other.size == card->size && memcmp(other.data, card->data, card->size) == 0;
    free(other.data);
    if (!same) {
      fprintf(stderr, "album: the card in %s is not the card in inches\n", units[i].name);
      return false;
    }
  }
  return true;
}

static bool WriteFile(const char* path, const Bytes* bytes) {
  FILE* file = fopen(path, "wb");
  if (file == NULL) return FileFailed(path, "");
  const bool written = fwrite(bytes->data, 1, bytes->size, file) == bytes->size;
  const bool closed = fclose(file) == 0;
  return (written && closed) || FileFailed(path, "");
}

bool MakeCardFile(const char* path) {
  Bytes card;
  if (!MakeCard(PDFCoordinateUnitInch, 1.0, &card)) return false;
  const bool ok = SameInEveryUnit(&card) && WriteFile(path, &card);
  free(card.data);
  return ok;
}
