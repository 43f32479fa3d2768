/* captions.c - what objects.h is for: a PNG whose data goes into the PDF as it is, a caption in
 * Helvetica, a link, a bookmark and the way a viewer opens the file.
 *
 *     captions OUT.pdf PICTURE.png "Caption" [https://where.it.leads/]
 *
 * The PNG has to have 8-bit RGB samples and no interlacing: the data of its IDAT chunks, one behind
 * the other, is what PDF calls Flate data with predictor 15.
 */
#include <errno.h>
#include <jtpdf/objects.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kMostChunks = 1000 };

typedef struct Png {
  char* file;
  size_t size;
  unsigned width, height;
  JTPDFPiece data[kMostChunks]; /* of the IDAT chunks */
  unsigned count;
} Png;

static unsigned BigEndian(const char* at) {
  const unsigned char* byte = (const unsigned char*)at;
  return (unsigned)byte[0] << 24 | (unsigned)byte[1] << 16 | (unsigned)byte[2] << 8 | byte[3];
}

static bool ReadFile(const char* path, Png* png) {
  FILE* file = fopen(path, "rb");
  if (file == NULL) return false;
  bool ok = fseek(file, 0, SEEK_END) == 0;
  const long size = ok ? ftell(file) : -1;
  png->file = size > 0 ? malloc((size_t)size) : NULL;
  png->size = (size_t)size;
  ok = png->file != NULL && fseek(file, 0, SEEK_SET) == 0 &&
       fread(png->file, 1, png->size, file) == png->size;
  fclose(file);
  return ok;
}

/* Finds the chunks: length, name, data, checksum (PNG, 5.3). */
static bool FindChunks(Png* png) {
  static const char signature[] = "\x89PNG\r\n\x1a\n";
  static const char rgb8[] = {8, 2, 0, 0, 0}; /* bits, colour type, ..., no interlacing */
  if (png->size < 33 || memcmp(png->file, signature, 8) != 0) return false;
  png->width = BigEndian(png->file + 16);
  png->height = BigEndian(png->file + 20);
  if (memcmp(png->file + 24, rgb8, sizeof rgb8) != 0) return false;
  for (size_t at = 8; png->size - at >= 12;) {
    const size_t length = BigEndian(png->file + at);
    const char* name = png->file + at + 4;
    if (length > png->size - at - 12) return false;
    if (memcmp(name, "IEND", 4) == 0) return png->count > 0;
    if (memcmp(name, "IDAT", 4) == 0) {
      if (png->count == kMostChunks) return false;
      const JTPDFPiece piece = {name + 4, length};
      png->data[png->count++] = piece;
    }
    at += length + 12;
  }
  return false;
}

static int32_t WriteImage(JTPDFDocument* doc, const Png* png, int* image) {
  char width[12], height[12];
  snprintf(width, sizeof width, "%u", png->width);
  snprintf(height, sizeof height, "%u", png->height);
  const JTPDFEntry entries[] = {{"/Type", "/XObject"},
                                {"/Subtype", "/Image"},
                                {"/Width", width},
                                {"/Height", height},
                                {"/BitsPerComponent", "8"},
                                {"/ColorSpace", "/DeviceRGB"},
                                {"/Filter", "/FlateDecode"},
                                {"/DecodeParms/Colors", "3"},
                                {"/DecodeParms/Columns", width},
                                {"/DecodeParms/Predictor", "15"}};
  return WritePdfStreamPieces(doc, sizeof entries / sizeof *entries, entries, png->count, png->data,
                              image);
}

/* Text between parentheses, with a backslash before what would end it (ISO 32000-1, 7.3.4.2). */
static void Literal(const char* text, char* out, size_t room) {
  size_t used = 0;
  out[used++] = '(';
  for (; *text != '\0' && used + 4 < room; text++) {
    if (strchr("()\\", *text) != NULL) out[used++] = '\\';
    out[used++] = *text;
  }
  out[used++] = ')';
  out[used] = '\0';
}

static int32_t DrawPage(JTPDFDocument* doc, const Png* png, const char* caption, const char* link) {
  const JTPDFRect sheet = {0, 0, 420, 340, 0};
  const double height = 340.0 * png->height / png->width;
  const JTPDFRect frame = {40, 300 - height, 340, height, 0};
  char text[400], operators[600], value[700];
  int image = 0, form = 0;
  int32_t code = WriteImage(doc, png, &image);
  Literal(caption, text, sizeof text);
  snprintf(operators, sizeof operators, "BT /F1 14 Tf 40 %.1f Td %s Tj ET", 276 - height, text);
  SetPdfCanvasBoundingBox(doc, sheet);
  DrawPdfImageInRect(doc, image, frame);
  DrawPdfContent(doc, operators);
  if (code == 0) {
    code = SetPdfCanvasEntry(doc, "/Resources/Font/F1",
                             "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica "
                             "/Encoding /WinAnsiEncoding >>");
  }
  if (code == 0) code = WritePdfCanvas(doc, &form);
  if (code == 0 && link != NULL) {
    int annotation = 0;
    Literal(link, text, sizeof text);
    snprintf(value, sizeof value,
             "<< /Type /Annot /Subtype /Link /Rect [40 %.1f 380 300] /Border [0 0 0] "
             "/A << /S /URI /URI %s >> >>",
             270 - height, text);
    code = WritePdfObject(doc, value, &annotation);
    snprintf(value, sizeof value, "[%d 0 R]", annotation);
    if (code == 0) code = SetPdfPageEntry(doc, "/Annots", value);
  }
  return code == 0 ? WritePdfPage(doc, form, sheet, sheet) : code;
}

/* What a program finds out about the file: metadata beside the catalog (ISO 32000-1, 14.3.2), in
 * which an object names one that is written behind it. */
static int32_t WriteMetadata(JTPDFDocument* doc) {
  static const char xmp[] =
      "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
      "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description rdf:about='' "
      "xmlns:dc='http://purl.org/dc/elements/1.1/' dc:format='application/pdf'/></rdf:RDF>"
      "</x:xmpmeta>";
  char reference[32];
  int metadata = 0, origin = 0;
  int32_t code = ReservePdfObject(doc, &origin);
  snprintf(reference, sizeof reference, "%d 0 R", origin);
  const JTPDFEntry entries[] = {
      {"/Type", "/Metadata"}, {"/Subtype", "/XML"}, {"/JTOrigin", reference}};
  if (code == 0) code = WritePdfStream(doc, 3, entries, xmp, sizeof xmp - 1, &metadata);
  if (code == 0) code = WriteReservedPdfObject(doc, origin, "(captions.c)");
  snprintf(reference, sizeof reference, "%d 0 R", metadata);
  return code == 0 ? SetPdfCatalogEntry(doc, "/Metadata", reference) : code;
}

static int32_t MakeFile(JTPDFDocument* doc, const Png* png, char** arguments) {
  int32_t code = InitPdfDoc(doc);
  if (code == 0) code = DrawPage(doc, png, arguments[3], arguments[4]);
  if (code == 0) code = WriteMetadata(doc);
  if (code == 0) code = AddPdfBookmark(doc, 0, L"The picture", 0);
  if (code == 0) code = SetPdfCatalogEntry(doc, "/PageMode", "/UseOutlines");
  if (code == 0) code = SetPdfCatalogEntry(doc, "/ViewerPreferences/FitWindow", "true");
  if (code == 0) code = SetPdfOpenPage(doc, 0, "/FitH null");
  return code == 0 ? FinalizePdfDoc(doc, NULL) : code;
}

static int32_t ToFile(void* file, const char* data, size_t size) {
  return fwrite(data, 1, size, file) == size ? 0 : errno;
}

int main(int argc, char** argv) {
  if (argc != 4 && argc != 5) {
    fprintf(stderr, "usage: captions OUT.pdf PICTURE.png CAPTION [LINK]\nwith libjtpdf %s\n",
            JTPDFGetVersion());
    return 2;
  }
  static Png png;
  if (!ReadFile(argv[2], &png)) {
    fprintf(stderr, "captions: %s: %s\n", argv[2], strerror(errno));
    return 1;
  }
  if (!FindChunks(&png)) {
    fprintf(stderr, "captions: %s is not a PNG with 8-bit RGB samples and no interlacing\n",
            argv[2]);
    return 1;
  }
  FILE* out = fopen(argv[1], "wb");
  if (out == NULL) {
    fprintf(stderr, "captions: %s: %s\n", argv[1], strerror(errno));
    return 1;
  }
  JTPDFDocument* doc = TryCreateCallbackPdfDoc(PDFCoordinateUnitPoint, ToFile, out);
  const int32_t code = doc == NULL ? ENOMEM : MakeFile(doc, &png, argv);
  DestroyPdfDoc(doc);
  const bool closed = fclose(out) == 0;
  free(png.file);
  if (code == 0 && closed) return 0;
  fprintf(stderr, "captions: %s was not finished: %s\n", argv[1],
          strerror(code > 0 ? code : errno));
  return 1;
}
