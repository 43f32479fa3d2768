/* album.c - makes a picture album, and by it shows what the library can do.
 *
 *     album [-v] OUT.pdf [IMAGE_DIR]
 *
 * The album goes straight to the file OUT.pdf: twelve pages in millimetres, a function for each.
 * A small card is made in memory, once in every unit, and handed to an open file beside it piece by
 * piece (album.pdf gives album-card.pdf). IMAGE_DIR holds the image files (examples/images when it
 * is not given). With -v the library reports what it tolerates, and this program what it wrote.
 *
 * Where to read on: album_images.c writes the pictures, album_pages.c draws the pages, album_card.c
 * makes the card.
 *
 * How a document comes about: create it, initialise it, write its images, then for each page draw
 * on the canvas, write the canvas as a form and the form as a page; finalise, destroy. Every step
 * that can fail returns a code; Succeeded() of album_support.c turns it into a message.
 */
#include <errno.h>
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "album.h"

/* What readers show as the document's properties: any text that Unicode can write. */
static void DescribeAlbum(Album* album) {
  SetPdfInfoItem(album->doc, "Title", L"Album · Альбом · Λεύκωμα · アルバム");
  SetPdfInfoItem(album->doc, "Subject", L"Εικόνες σε χαρτί, картинки на бумаге, 紙の上の絵");
  SetPdfInfoItem(album->doc, "Keywords", L"φῶς, свет, 光");
  SetPdfMgMk(album->doc, !GetPdfMgMk(album->doc));
}

static bool WriteAlbum(Album* album, const char* path) {
  DescribeAlbum(album);
  return Succeeded(InitPdfDoc(album->doc), "InitPdfDoc", path) && WriteImages(album) &&
         WritePages(album) &&
         Succeeded(FinalizePdfDoc(album->doc, "% The end of the album."), "FinalizePdfDoc", path);
}

/* The library takes file names as wide text; the C library turns the shell's bytes into it. */
static wchar_t* WideFromUtf8(const char* text) {
  if (setlocale(LC_CTYPE, "C.UTF-8") == NULL) setlocale(LC_CTYPE, "");
  const size_t room = strlen(text) + 1;
  wchar_t* wide = Resized(NULL, room * sizeof *wide);
  if (mbstowcs(wide, text, room) != (size_t)-1) return wide;
  free(wide);
  return NULL;
}

static bool MakeAlbum(const char* path, const char* imageDir) {
  wchar_t* name = WideFromUtf8(path);
  if (name == NULL) {
    errno = EILSEQ;
    return FileFailed(path, " (the name of the album must be UTF-8)");
  }
  Album album = {.imageDir = imageDir, .author = L"Ἑλένη Надежда 直子"};
  /* No exception leaves the calls with this document: want of memory is a code as well. */
  album.doc = TryCreateFilePdfDoc(PDFCoordinateUnitMillimeter, name, L"album", album.author);
  const bool ok =
      album.doc == NULL ? Succeeded(errno, "TryCreateFilePdfDoc", path) : WriteAlbum(&album, path);
  if (!ok) fprintf(stderr, "album: %s was not finished and is no album\n", path);
  DestroyPdfDoc(album.doc); /* in any state */
  free(name);
  return ok;
}

/* "there/album.pdf" gives "there/album-card.pdf", to be freed by the caller. */
static char* CardPath(const char* albumPath) {
  static const char ending[] = "-card.pdf";
  size_t length = strlen(albumPath);
  if (length > 4 && strcmp(albumPath + length - 4, ".pdf") == 0) length -= 4;
  char* path = Resized(NULL, length + sizeof ending);
  memcpy(path, albumPath, length);
  memcpy(path + length, ending, sizeof ending);
  return path;
}

int main(int argc, char** argv) {
  const bool verbose = argc > 1 && strcmp(argv[1], "-v") == 0;
  char** arguments = argv + 1 + verbose;
  const int count = argc - 1 - verbose;
  if (count < 1 || count > 2) {
    fprintf(stderr, "usage: album [-v] OUT.pdf [IMAGE_DIR]\n");
    return 2;
  }
  JTPDFSetDiagnosticMode(verbose); /* the library's own messages, on the standard error stream */
  char* cardPath = CardPath(arguments[0]);
  const bool ok = MakeAlbum(arguments[0], count == 2 ? arguments[1] : "examples/images") &&
                  MakeCardFile(cardPath);
  if (ok && JTPDFGetDiagnosticMode()) printf("album: wrote %s and %s\n", arguments[0], cardPath);
  free(cardPath);
  return ok ? EXIT_SUCCESS : EXIT_FAILURE;
}
