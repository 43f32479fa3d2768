/* album_images.c - writes the images of the album, each once, whatever the pages draw of it later.
 *
 * The library never encodes: it takes image files as they are (JPEG, JPEG 2000) and pixels as a
 * zlib stream. Most come from the image directory; a few pixels are made here.
 */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "album.h"

/* A picture in a file of its own. */
typedef struct Picture {
  int index;
  const char* file;
  TPdfCompression compression;
  int32_t width, height;
  TPdfColorSpace colorSpace;
  bool maskWhite;
  const wchar_t* name;
  const wchar_t* title; /* for the image's dictionary: any script will do */
} Picture;

/* One colour that shows where a plane of opacity lets it: clouds, shadows and the lettering. */
typedef struct Stencil {
  int index;
  const char* file;
  int32_t width, height, bits;
  const JTPDFRGBColor* ink;
  TPdfImageRole role;
  const wchar_t* name;
} Stencil;

static const JTPDFRGBColor kShade = {30, 24, 20, 255};

static const Picture kPictures[] = {
    {kDusk, "dusk.jpg", kPdfCompressionJPEG, 1440, 1080, kPdfColorSpaceRGB, false, L"dusk",
     L"Сумерки"},
    {kCoast, "coast.jpg", kPdfCompressionJPEG, 1040, 780, kPdfColorSpaceRGB, false, L"coast",
     L"Ακτή"},
    {kForest, "forest.jpg", kPdfCompressionJPEG, 1040, 780, kPdfColorSpaceGray, false, L"forest",
     L"霧の森"},
    {kTulips, "tulips.jpg", kPdfCompressionJPEG, 880, 550, kPdfColorSpaceCMYK, false, L"tulips",
     L"Τουλίπες"},
    {kMaplePlain, "maple-bgr.jpg", kPdfCompressionJPEG, 640, 760, kPdfColorSpaceRGB, false,
     L"maple", L"楓"},
    {kCity, "city.jpg", kPdfCompressionJPEG, 1800, 600, kPdfColorSpaceRGB, false, L"city",
     L"Ночной город"},
    {kFernPlain, "fern.gray.zlib", kPdfCompressionFlate, 420, 800, kPdfColorSpaceGray, false,
     L"fern", L"Φτέρη"},
    {kFernKeyed, "fern.gray.zlib", kPdfCompressionFlate, 420, 800, kPdfColorSpaceGray, true,
     L"fern, white left out", L"Φτέρη"},
};

static const Stencil kStencils[] = {
    {kCloud, "cloud.alpha.zlib", 420, 240, 8, &kWhite, kPdfImageRolePhoto, L"cloud"},
    {kShadow, "shadow.alpha.zlib", 400, 300, 8, &kShade, kPdfImageRoleShape, L"shadow"},
    {kTitle, "title.alpha.zlib", 1400, 400, 4, &kPaper, kPdfImageRoleText, L"title"},
};

/* Captions: 2000 by 160 pixels of 4 bits. */
static const struct {
  int index;
  const char* file;
  const JTPDFRGBColor* ink;
} kCaptions[] = {
    {kCaptionPrints, "caption-prints.alpha.zlib", &kInk},
    {kCaptionShapes, "caption-shapes.alpha.zlib", &kPaper},
    {kCaptionTurned, "caption-turned.alpha.zlib", &kPaper},
    {kCaptionInks, "caption-inks.alpha.zlib", &kInk},
    {kCaptionJpeg2000, "caption-jpeg2000.alpha.zlib", &kPaper},
    {kCaptionSoftMask, "caption-softmask.alpha.zlib", &kPaper},
    {kCaptionColorKey, "caption-colorkey.alpha.zlib", &kInk},
    {kCaptionProfile, "caption-profile.alpha.zlib", &kInk},
    {kCaptionSheet, "caption-sheet.alpha.zlib", &kInk},
    {kCaptionContact, "caption-contact.alpha.zlib", &kPaper},
};

/* ---- Bytes --------------------------------------------------------------------------------- */

/* Reads a file to its end. */
static bool ReadAll(FILE* file, Bytes* bytes) {
  char block[1 << 15];
  size_t got;
  while ((got = fread(block, 1, sizeof block, file)) > 0) Append(bytes, block, got);
  return !ferror(file);
}

/* Reads an image file; *bytes is the caller's to free when this succeeded. */
static bool ReadImageFile(const Album* album, const char* name, Bytes* bytes) {
  char path[FILENAME_MAX];
  const Bytes nothing = {NULL, 0};
  *bytes = nothing;
  snprintf(path, sizeof path, "%s/%s", album->imageDir, name);
  FILE* file = fopen(path, "rb");
  const bool ok = file != NULL && ReadAll(file, bytes);
  if (!ok) {
    FileFailed(path, " (the last argument is the directory of the image files)");
    free(bytes->data);
  }
  if (file != NULL) fclose(file);
  return ok;
}

/* Adler-32, the check sum at the end of a zlib stream (RFC 1950). */
static uint32_t CheckSum(const unsigned char* data, size_t size) {
  uint32_t low = 1, high = 0;
  for (size_t i = 0; i < size; i++) {
    low = (low + data[i]) % 65521;
    high = (high + low) % 65521;
  }
  return high << 16 | low;
}

/* Wraps data as a zlib stream of stored blocks, which are not compressed at all (RFC 1951, 3.2.4).
 * The library never encodes; for a few pixels of our own this is all that it takes. */
static Bytes StoredZlib(const void* data, size_t size) {
  Bytes stream = {NULL, 0};
  const unsigned char* rest = data;
  const uint32_t sum = CheckSum(data, size);
  Append(&stream, "\x78\x01", 2);
  size_t left = size;
  do {
    const unsigned length = left < 65535 ? (unsigned)left : 65535;
    const unsigned char head[] = {length == left, length & 255, length >> 8 & 255, ~length & 255,
                                  ~length >> 8 & 255};
    Append(&stream, head, sizeof head);
    Append(&stream, rest, length);
    rest += length;
    left -= length;
  } while (left > 0);
  const unsigned char tail[] = {sum >> 24 & 255, sum >> 16 & 255, sum >> 8 & 255, sum & 255};
  Append(&stream, tail, sizeof tail);
  return stream;
}

/* ---- Images: from files and from a few bytes of our own ------------------------------------ */

static TPdfImageDescriptor Described(const Bytes* bytes, TPdfCompression compression, int32_t width,
                                     int32_t height, int32_t bits, TPdfColorSpace colorSpace) {
  const TPdfImageDescriptor image = {.data = bytes->data,
                                     .size = (uint32_t)bytes->size,
                                     .compression = compression,
                                     .width = width,
                                     .height = height,
                                     .bitsPerComponent = bits,
                                     .colorSpace = colorSpace};
  return image;
}

/* A picture as its file holds it, with two entries of ours in the image's dictionary. */
static bool WritePicture(Album* album, const Picture* picture) {
  const JTPDFDictionaryItem items[] = {{"/JTAlbum/Title", picture->title},
                                       {"/JTAlbum/Photographer", album->author}};
  Bytes bytes;
  if (!ReadImageFile(album, picture->file, &bytes)) return false;
  const TPdfImageDescriptor image = Described(&bytes, picture->compression, picture->width,
                                              picture->height, 8, picture->colorSpace);
  const int32_t code =
      WritePdfImage(album->doc, &image, picture->maskWhite, kPdfImageRolePhoto, picture->name,
                    COUNT(items), items, &album->image[picture->index]);
  free(bytes.data); /* the library has written them and keeps nothing */
  return Succeeded(code, "WritePdfImage", picture->file);
}

/* A JP2 file says itself which colours it holds. */
static bool WriteAurora(Album* album) {
  Bytes bytes;
  if (!ReadImageFile(album, "aurora.jp2", &bytes)) return false;
  const TPdfImageDescriptor image =
      Described(&bytes, kPdfCompressionJPEG2000, 1080, 810, 8, kPdfColorSpaceRGB);
  const int32_t code = WritePdfImageJPEG2000(album->doc, &image, kPdfImageRoleBackground, L"aurora",
                                             0, NULL, &album->image[kAurora]);
  free(bytes.data);
  return Succeeded(code, "WritePdfImageJPEG2000", "aurora.jp2");
}

/* The profile that puts red and blue where they belong. */
static bool WriteProfile(Album* album, int* colorSpace) {
  Bytes profile;
  if (!ReadImageFile(album, "bgr.icc", &profile)) return false;
  const Bytes stream = StoredZlib(profile.data, profile.size);
  const int32_t code = WritePdfICCProfile(album->doc, stream.data, (unsigned)stream.size,
                                          kPdfCompressionFlate, colorSpace);
  free(stream.data);
  free(profile.data);
  return Succeeded(code, "WritePdfICCProfile", "bgr.icc");
}

/* The maple once more, now in the colour space of the profile. */
static bool WriteMapleWithProfile(Album* album) {
  int colorSpace = 0;
  Bytes bytes;
  if (!WriteProfile(album, &colorSpace)) return false;
  if (!ReadImageFile(album, "maple-bgr.jpg", &bytes)) return false;
  TPdfImageDescriptor image =
      Described(&bytes, kPdfCompressionJPEG, 640, 760, 8, kPdfColorSpaceICC);
  image.colorSpaceObject = colorSpace;
  const int32_t code =
      WritePdfImage(album->doc, &image, false, kPdfImageRolePhoto, L"maple with its profile", 0,
                    NULL, &album->image[kMapleProfile]);
  free(bytes.data);
  return Succeeded(code, "WritePdfImage", "maple-bgr.jpg with bgr.icc");
}

/* Raw pixels and, beside them, how opaque each of them is. */
static bool WriteBalloon(Album* album) {
  Bytes colors, opacity;
  if (!ReadImageFile(album, "balloon.rgb.zlib", &colors)) return false;
  if (!ReadImageFile(album, "balloon.alpha.zlib", &opacity)) {
    free(colors.data);
    return false;
  }
  const TPdfImageDescriptor image =
      Described(&colors, kPdfCompressionFlate, 440, 600, 8, kPdfColorSpaceRGB);
  const TPdfImageDescriptor alpha =
      Described(&opacity, kPdfCompressionFlate, 440, 600, 8, kPdfColorSpaceGray);
  const int32_t code = WritePdfImageWithAlpha(album->doc, &image, &alpha, kPdfImageRoleClipArt,
                                              L"balloon", 0, NULL, &album->image[kBalloon]);
  free(colors.data);
  free(opacity.data);
  return Succeeded(code, "WritePdfImageWithAlpha", "balloon.rgb.zlib");
}

/* One pixel of ink under a soft mask of any size. */
static bool WriteStencil(Album* album, const Stencil* stencil) {
  const unsigned char pixel[] = {stencil->ink->red, stencil->ink->green, stencil->ink->blue};
  Bytes opacity;
  if (!ReadImageFile(album, stencil->file, &opacity)) return false;
  const Bytes ink = StoredZlib(pixel, sizeof pixel);
  const TPdfImageDescriptor image =
      Described(&ink, kPdfCompressionFlate, 1, 1, 8, kPdfColorSpaceRGB);
  const TPdfImageDescriptor alpha = Described(&opacity, kPdfCompressionFlate, stencil->width,
                                              stencil->height, stencil->bits, kPdfColorSpaceGray);
  const int32_t code =
      WritePdfImageWithAlpha(album->doc, &image, &alpha, stencil->role, stencil->name, 0, NULL,
                             &album->image[stencil->index]);
  free(ink.data);
  free(opacity.data);
  return Succeeded(code, "WritePdfImageWithAlpha", stencil->file);
}

static bool WriteCaptions(Album* album) {
  for (size_t i = 0; i < COUNT(kCaptions); i++) {
    const Stencil caption = {kCaptions[i].index, kCaptions[i].file, 2000,      160, 4,
                             kCaptions[i].ink,   kPdfImageRoleText, L"caption"};
    if (!WriteStencil(album, &caption)) return false;
  }
  return true;
}

/* A gradient: one column of pixels, to be stretched over a page. */
static bool WriteSky(Album* album) {
  enum { kRows = 400 };
  const JTPDFRGBColor top = {44, 110, 190, 255}, middle = {150, 200, 236, 255};
  const JTPDFRGBColor bottom = {255, 238, 205, 255};
  unsigned char pixels[kRows][3];
  for (int row = 0; row < kRows; row++) {
    const double part = row / (kRows / 2.0);
    JTPDFRGBColor color =
        part < 1 ? Blend(top, middle, part) : Blend(middle, bottom, fmin(part - 1, 1));
    pixels[row][0] = color.red;
    pixels[row][1] = color.green;
    pixels[row][2] = color.blue;
  }
  const Bytes column = StoredZlib(pixels, sizeof pixels);
  const TPdfImageDescriptor image =
      Described(&column, kPdfCompressionFlate, 1, kRows, 8, kPdfColorSpaceRGB);
  const int32_t code = WritePdfImage(album->doc, &image, false, kPdfImageRoleBackground, L"sky", 0,
                                     NULL, &album->image[kSky]);
  free(column.data);
  return Succeeded(code, "WritePdfImage", "the sky");
}

bool WriteImages(Album* album) {
  for (size_t i = 0; i < COUNT(kPictures); i++) {
    if (!WritePicture(album, &kPictures[i])) return false;
  }
  for (size_t i = 0; i < COUNT(kStencils); i++) {
    if (!WriteStencil(album, &kStencils[i])) return false;
  }
  return WriteCaptions(album) && WriteAurora(album) && WriteMapleWithProfile(album) &&
         WriteBalloon(album) && WriteSky(album);
}
