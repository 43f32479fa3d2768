/* pictures.h - pictures from files to pages: JPEG, JPEG 2000, PNG, TIFF, WebP and what else the
 * library was built with. Of libjtpdf-pictures; C11 and C++17.
 *
 *     JTPDFPictureError error;
 *     JTPDFPicture* picture = JTPDFOpenPictureFile("scan.tif", NULL, &error);
 *     JTPDFPictureWriter* writer = JTPDFCreatePictureWriter(doc, 1.0, 6, &error);
 *     const JTPDFPicturePage page = {.page = "A4", .border = "1cm"};
 *     if (picture == NULL ||
 *         JTPDFAddPicturePage(writer, picture, 0, &page, NULL, &error) != 0) {
 *       fprintf(stderr, "scan.tif: %s\n", error.message);
 *     }
 *     JTPDFDestroyPictureWriter(writer);
 *     JTPDFClosePicture(picture);
 *
 * Conventions
 *
 * 1. Ownership. A picture is the caller's from Open... to JTPDFClosePicture, a writer from
 *    JTPDFCreatePictureWriter to JTPDFDestroyPictureWriter; it has to be destroyed before its
 *    document. Strings that a picture gives live as long as it. Null can be closed and destroyed;
 *    what is to work with a null picture or writer fails with kJTPDFPictureArgument.
 * 2. Failures. A function that returns a handle returns null for a failure, one that returns
 *    int32_t a JTPDFPictureResult, 0 for success. error, where it is not null, says what is wrong,
 *    and is empty after a success. A message is about the picture, without its name ("ends before
 *    its picture does; ..."), so that the caller can put that in front. No exception, longjmp or
 *    abort comes out of any function, whatever the bytes of a picture are.
 * 3. After a failure of a picture the document is as it was, and other pictures can be written.
 *    After kJTPDFPictureDocument it is as the library's own failures leave it.
 * 4. Texts are UTF-8. Frames are the pictures of one file, from 0: the pages of a TIFF file, and of
 *    other files one, or with allFrames all that they have, each as it is seen.
 * 5. Threads. A picture is used by one thread at a time, and so is a writer with its document;
 *    different ones by different threads at once.
 * 6. Interface version 0: until it is 1, a new release may change these functions and records, and
 *    then has another SONAME.
 */
#ifndef JTPDF_PICTURES_H
#define JTPDF_PICTURES_H

#include "jtpdf/jtpdf.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct JTPDFPicture JTPDFPicture;
typedef struct JTPDFPictureWriter JTPDFPictureWriter;

/* What a function returns, 0 for success. */
#ifdef __cplusplus
enum JTPDFPictureResult : int32_t {
#else
typedef int32_t JTPDFPictureResult;
enum {
#endif
  kJTPDFPictureDone = 0,
  kJTPDFPictureUnusable = 1, /* the picture: unreadable, damaged, unknown, beyond the limits */
  kJTPDFPictureArgument = 2, /* what the caller asked for, such as a page size */
  kJTPDFPictureDocument = 3, /* the document refused it, or could not be written */
  kJTPDFPictureNoMemory = 4
};

/* A failure. code is the result code of the document with kJTPDFPictureDocument, and the system's
 * error number where a picture could not be read; else 0. */
typedef struct JTPDFPictureError {
  int32_t result;
  int32_t code;
  char message[1016];
} JTPDFPictureError;

/* What a picture may take, and what is taken of it; a record of zeros stands for what is usual. */
typedef struct JTPDFPictureLimits {
  uint64_t maxPixels; /* of a frame, and four bytes of memory for each; usually 500,000,000 */
  uint64_t maxBytes;  /* of a file or what a callback gives; usually 4 GiB */
  bool allFrames;     /* also the frames of animations (GIF, WebP, PNG, JPEG XL) and the further
                       * pictures of JPEG and HEIF files, of which else the first alone is taken */
} JTPDFPictureLimits;

/* ---- Opening ------------------------------------------------------------------------------- */

/* Reads up to size bytes into buffer and stores in *count how many there were, 0 at the end.
 * Returns 0, or the errno value for which opening is to fail. */
typedef int32_t (*JTPDFPictureReadFunction)(void* context, char* buffer, size_t size,
                                            size_t* count);

/* Open a picture and read the headers of its frames; no pixel is decoded yet. The bytes at data are
 * not copied, and have to stay there as long as the picture. */
JTPDF_EXPORT JTPDFPicture* JTPDFOpenPictureFile(const char* path, const JTPDFPictureLimits* limits,
                                                JTPDFPictureError* error);
JTPDF_EXPORT JTPDFPicture* JTPDFOpenPictureMemory(const void* data, size_t size,
                                                  const JTPDFPictureLimits* limits,
                                                  JTPDFPictureError* error);
JTPDF_EXPORT JTPDFPicture* JTPDFOpenPictureStream(JTPDFPictureReadFunction read, void* context,
                                                  const JTPDFPictureLimits* limits,
                                                  JTPDFPictureError* error);
JTPDF_EXPORT void JTPDFClosePicture(JTPDFPicture* picture);

/* ---- Asking -------------------------------------------------------------------------------- */

/* What is known of a frame from its header, and so how it will be stored. */
typedef struct JTPDFPictureInfo {
  const char* format;       /* "PNG" */
  const char* colors;       /* "grey", "RGB" or "CMYK" */
  int32_t width;            /* in pixels as stored, before the orientation */
  int32_t height;           /* likewise */
  int32_t bitsPerComponent; /* as stored */
  int32_t orientation;      /* as EXIF counts, 1 to 8: 1 is upright */
  double resolutionX;       /* dots per inch; 0 where the file does not say */
  double resolutionY;
  uint64_t memory;     /* about the most bytes that decoding takes */
  uint64_t size;       /* of the bytes that are stored as they are; 0 where it is decoded */
  const char* reason;  /* why it is decoded; empty where its bytes are stored as they are */
  const char* profile; /* its colour profile: "none", "used", "left out" */
  const char* problem; /* why this frame alone cannot be used; empty for a good one */
  bool hasPalette;
  bool hasAlpha; /* declares transparency, which may yet be opaque throughout */
} JTPDFPictureInfo;

JTPDF_EXPORT unsigned JTPDFCountPictureFrames(const JTPDFPicture* picture);
JTPDF_EXPORT int32_t JTPDFGetPictureInfo(const JTPDFPicture* picture, unsigned frame,
                                         JTPDFPictureInfo* info, JTPDFPictureError* error);

/* A remark on what is done with a frame ("its colour profile is damaged and was left out"), by its
 * index from 0; null behind the last, and for a frame that is not there. */
JTPDF_EXPORT const char* JTPDFGetPictureNote(const JTPDFPicture* picture, unsigned frame,
                                             unsigned index);

/* ---- Writing ------------------------------------------------------------------------------- */

/* A level of compression that makes pictures as small as they get without loss, however long that
 * takes: what could be stored as it is is coded anew, too, where that is smaller. */
#define JTPDF_PICTURE_SMALLEST 13

/* Makes a writer of pictures for a document between InitPdfDoc and FinalizePdfDoc. unitFactor is
 * that with which it was created. level, 0 to 12 or JTPDF_PICTURE_SMALLEST, says how hard decoded
 * pixels are compressed; 6 is usual. One writer for all pictures of a document writes each colour
 * profile once. */
JTPDF_EXPORT JTPDFPictureWriter* JTPDFCreatePictureWriter(JTPDFDocument* doc, double unitFactor,
                                                          int level, JTPDFPictureError* error);
JTPDF_EXPORT void JTPDFDestroyPictureWriter(JTPDFPictureWriter* writer);

/* Writes a frame as an image of the document, with its soft mask and colour profile, and stores the
 * number for DrawPdfImageInRect in *image. Bytes that can be stored as they are, are, at every
 * level but JTPDF_PICTURE_SMALLEST. */
JTPDF_EXPORT int32_t JTPDFWritePicture(JTPDFPictureWriter* writer, const JTPDFPicture* picture,
                                       unsigned frame, int* image, JTPDFPictureError* error);

/* How a picture is scaled to its size. */
#ifdef __cplusplus
enum JTPDFPictureFit : int32_t {
#else
typedef int32_t JTPDFPictureFit;
enum {
#endif
  kJTPDFPictureInto = 0,  /* as large as it can be inside */
  kJTPDFPictureFill = 1,  /* as small as it can be to leave nothing of the size free */
  kJTPDFPictureExact = 2, /* stretched to it */
  kJTPDFPictureShrink = 3,
  kJTPDFPictureEnlarge = 4 /* the one way only */
};

/* A page of one picture, in measures as people write them: "20mm", "2cm", "0.8in", "57pt". A record
 * of zeros makes a page of the picture's own size, turned as the picture says. */
typedef struct JTPDFPicturePage {
  const char* page;   /* "A4", "Letter", "A4^T" for landscape, "10cmx15cm"; null: the picture's */
  const char* image;  /* "10cmx15cm", "10cm", "x15cm", "50%", "300dpi"; null: inside of the page */
  const char* border; /* "1cm", or "1cm:2cm" above and below, left and right; null for none */
  int32_t fit;        /* a JTPDFPictureFit */
  int32_t turn; /* 0: as the picture says; else 90, 180, 270 or 360 degrees clockwise as stored */
  bool autoOrient; /* turns the page where the picture lies the other way */
} JTPDFPicturePage;

/* Where the picture goes on its page, in the unit of the writer's document. */
typedef struct JTPDFPictureLayout {
  JTPDFRect page;
  JTPDFRect image; /* for DrawPdfImageInRect */
} JTPDFPictureLayout;

JTPDF_EXPORT int32_t JTPDFLayOutPicture(const JTPDFPictureWriter* writer,
                                        const JTPDFPicture* picture, unsigned frame,
                                        const JTPDFPicturePage* page, JTPDFPictureLayout* layout,
                                        JTPDFPictureError* error);

/* Stores in *image where a picture goes in a box of the canvas, for DrawPdfImageInRect: in the
 * middle of the box and turned as that is, by fit (a JTPDFPictureFit) and turn (see
 * JTPDFPicturePage). All is in the unit of the writer's document; the box's width and height have
 * to be above 0. */
JTPDF_EXPORT int32_t JTPDFFitPicture(const JTPDFPictureWriter* writer, const JTPDFPicture* picture,
                                     unsigned frame, JTPDFRect box, int32_t fit, int32_t turn,
                                     JTPDFRect* image, JTPDFPictureError* error);

/* The area that a picture covers, of the box by which it is drawn: without what mirrors it and
 * turns it by quarters, so with a width and height that aren't negative and an angle from -45 to 45
 * degrees. For what stands around, below or beneath it: a frame, a caption, a shadow. */
JTPDF_EXPORT JTPDFRect JTPDFUprightPicture(JTPDFRect image);

/* Writes a frame and adds a page of it, drawn over what was drawn before. Stores the number of its
 * image in *image, which may be null; so may page, for a page of the picture's own size. Entries of
 * the page, such as a /TrimBox by SetPdfPageEntry of objects.h, are set before. What is to stand
 * over the picture, to show it once more or to show several on one page goes by JTPDFWritePicture
 * and JTPDFLayOutPicture or JTPDFFitPicture. */
JTPDF_EXPORT int32_t JTPDFAddPicturePage(JTPDFPictureWriter* writer, const JTPDFPicture* picture,
                                         unsigned frame, const JTPDFPicturePage* page, int* image,
                                         JTPDFPictureError* error);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* JTPDF_PICTURES_H */
