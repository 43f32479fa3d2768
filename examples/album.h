/* album.h - what the parts of the album share: album.c is the one to read first. */
#ifndef ALBUM_H
#define ALBUM_H

#include <jtpdf/jtpdf.h>

/* The images, by which the pages name them. */
enum {
  kDusk,
  kCoast,
  kForest,
  kTulips,
  kAurora,
  kMaplePlain,
  kMapleProfile,
  kCity,
  kFernPlain,
  kFernKeyed,
  kBalloon,
  kCloud,
  kSky,
  kShadow,
  kTitle,
  kCaptionPrints,
  kCaptionShapes,
  kCaptionTurned,
  kCaptionInks,
  kCaptionJpeg2000,
  kCaptionSoftMask,
  kCaptionColorKey,
  kCaptionProfile,
  kCaptionSheet,
  kCaptionContact,
  kImageCount
};

/* The album while it is being made. */
typedef struct Album {
  JTPDFDocument* doc;
  const wchar_t* author;
  const char* imageDir;
  int image[kImageCount]; /* object numbers, known once the images are written */
} Album;

#define COUNT(array) (sizeof(array) / sizeof((array)[0]))

static const double kPi = 3.14159265358979323846;

/* The colours of the paper and of what is on it. */
static const JTPDFRGBColor kPaper = {251, 248, 241, 255};
static const JTPDFRGBColor kInk = {38, 38, 56, 255};
static const JTPDFRGBColor kNight = {24, 22, 44, 255};
static const JTPDFRGBColor kWhite = {255, 255, 255, 255};

/* ---- album_support.c ----------------------------------------------------------------------- */

typedef struct Bytes {
  char* data; /* from Resized; the owner frees it */
  size_t size;
} Bytes;

/* realloc that ends the program when memory runs out, so that no caller needs to ask. */
void* Resized(void* memory, size_t size);

/* Adds size bytes at the end. */
void Append(Bytes* bytes, const void* data, size_t size);

/* True for the code of a call that succeeded; else says which call failed, on what and why. */
bool Succeeded(int32_t code, const char* call, const char* subject);

/* Says why, by errno, the file could not be used, and what to do; always false. */
bool FileFailed(const char* path, const char* advice);

/* The colour between two others: `from` at 0, `to` at 1. */
JTPDFRGBColor Blend(JTPDFRGBColor from, JTPDFRGBColor to, double part);

/* The colours of the rainbow for hues from 0 to 1, round and round. */
JTPDFRGBColor Rainbow(double hue);

/* A box by its corner, and one by its centre: turning leaves the centre where it is. */
JTPDFRect Box(double left, double bottom, double width, double height);
JTPDFRect Centered(double x, double y, double width, double height, double angle);

/* ---- The parts ----------------------------------------------------------------------------- */

/* Each says what went wrong when it returns false. */
bool WriteImages(Album* album);          /* album_images.c */
bool WritePages(Album* album);           /* album_pages.c */
bool MakeCardFile(const char* cardPath); /* album_card.c */

#endif /* ALBUM_H */
