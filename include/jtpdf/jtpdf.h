/* jtpdf.h - writes PDF 1.5 files in one forward pass. C11 and C++17.
 *
 *     JTPDFDocument* doc = CreateFilePdfDoc(PDFCoordinateUnitMillimeter, L"out.pdf", L"me", NULL);
 *     const JTPDFRect page = {0, 0, 210, 297, 0};
 *     const JTPDFRGBColor red = {255, 0, 0, 255};
 *     int form = 0;
 *     int32_t code = InitPdfDoc(doc);
 *     if (code == 0) {
 *       SetPdfCanvasBoundingBox(doc, page);
 *       FillPdfRectangle(doc, (JTPDFRect){20, 20, 60, 40, 15}, red);
 *       code = WritePdfCanvas(doc, &form);
 *     }
 *     if (code == 0) code = WritePdfPage(doc, form, page, page);
 *     if (code == 0) code = FinalizePdfDoc(doc, NULL);
 *     DestroyPdfDoc(doc);
 *
 * Conventions
 *
 * 1. Ownership. A handle belongs to the caller from Create...PdfDoc to DestroyPdfDoc. Everything
 *    that is passed in is read during the call and never kept. What GetPdfData returns belongs to
 *    the document. A handle must not be null except where a function says so, and the same goes
 *    for every other pointer.
 * 2. Result codes. A function that returns int32_t returns 0 for success. Any other value is the
 *    C library's errno as it stood when the failure was caught (ENOSPC, ENOENT, ...), or -1 where
 *    that was 0. A call that the document refuses in its present state (writing before InitPdfDoc,
 *    a second InitPdfDoc, ...) sets no errno of its own: its code is the errno that was there
 *    before, or -1, and never 0. Set errno to 0 before a call to tell the two apart. A call that
 *    succeeds leaves errno as it was.
 * 3. Out-parameters are written on success only. Null is allowed where the value is not wanted.
 * 4. After a failure nothing is rolled back: what was written stays in the file, and the document
 *    is as the failure left it. Only a FinalizePdfDoc that returned 0 makes a whole PDF file. A
 *    document can be destroyed in every state.
 * 5. Object numbers. Every object that is written gets the next number (2, 3, ... after
 *    InitPdfDoc); images, colour spaces and forms are named by it. A number is not checked when it
 *    is used.
 * 6. Units. All lengths are in the document's unit, given when it is created, as PDF points
 *    (1/72 inch) per unit. Angles are in degrees, counter-clockwise, about the centre of the box.
 *    Reals are written with four decimals; lengths, angles and colours are never checked.
 * 7. Text. Wide text is UTF-32, one code point per wchar_t, up to the terminating NUL; on Windows,
 *    where a wchar_t has 16 bits, it is UTF-16, and what is written is the same. It is written as
 *    UTF-16 in a room of two bytes per code point, so text is cut off behind the last whole
 *    character that fits when it holds characters above U+FFFF. A text with a surrogate (on
 * Windows: one without its other half) or a value above U+10FFFF is written as an empty string.
 * 8. Exceptions. Functions that return a code turn stream failures into it. Every other exception
 *    (std::bad_alloc above all) reaches the caller, who must be C++ to catch it (on Windows: of the
 *    GNU compiler, which built the library); other hosts use TryCreate...PdfDoc or
 *    SetPdfMemoryErrors. The document then
 *    is as before the call: what the call was to write or to draw is not there, not even in part,
 *    and once there is memory the call can be made again. But WritePdfImageWithAlpha may have
 *    written the alpha image; after InitPdfDoc and FinalizePdfDoc the document can only be
 *    destroyed; and a memory document whose own buffer could not grow refuses to write from then
 *    on. Whatever failed before, FinalizePdfDoc returns 0 for a whole file only.
 * 9. Threads. A document is used by one thread at a time; different documents may be used by
 *    different threads at once. There are no locks.
 * 10. The output is the same for the same calls with finite numbers, whatever the locale, the
 *    machine or the kind of document. A file document can write to what cannot seek, such as a
 *    pipe.
 */
#ifndef JTPDF_JTPDF_H
#define JTPDF_JTPDF_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <wchar.h>

#include "jtpdf/diagnostics.h"
#include "jtpdf/types.h"
#include "jtpdf/version.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A document that is being written. Its contents are the library's own. */
#ifdef __cplusplus
class JTPDFDocument;
#else
typedef struct JTPDFDocument JTPDFDocument;
#endif

/* The version of the library that runs, "2.1.6"; JTPDF_VERSION_STRING of version.h is that of the
 * headers a program was built with. */
JTPDF_EXPORT const char* JTPDFGetVersion(void);

/* Units for Create...PdfDoc: PDF points in one inch, centimetre, millimetre and point. The metric
 * factors are exactly these decimal values, for files that agree to the byte. */
JTPDF_EXPORT extern const double PDFCoordinateUnitInch;       /* 72.0 */
JTPDF_EXPORT extern const double PDFCoordinateUnitCentimeter; /* 28.346456692944 */
JTPDF_EXPORT extern const double PDFCoordinateUnitMillimeter; /* 2.8346456692944 */
JTPDF_EXPORT extern const double PDFCoordinateUnitPoint;      /* 1.0 */

/* ---- Documents: created, initialised, finalised, destroyed --------------------------------- */

/* Creates a document that will write to the file fileName (not null; UTF-8 on disk, as it is on
 * Windows). creator and author become the information items /Creator and /Author; null counts as
 * empty, and an empty text writes no item. unitFactor is the number of points per unit, normally
 * one of the constants above. Nothing is opened yet: a path that cannot be opened shows in
 * InitPdfDoc. Never returns null; std::bad_alloc reaches the caller. */
JTPDF_EXPORT JTPDFDocument* CreateFilePdfDoc(double unitFactor, const wchar_t* fileName,
                                             const wchar_t* creator, const wchar_t* author);

/* Creates a document that is kept in memory and fetched with GetPdfData. Otherwise like
 * CreateFilePdfDoc without creator and author (SetPdfInfoItem can set both). */
JTPDF_EXPORT JTPDFDocument* CreateMemoryPdfDoc(double unitFactor);

/* Creates a document whose bytes are handed to write as they come, with context: to a socket, a
 * pipe, a compressor, a buffer of the host's. write gets every byte once, in order, from InitPdfDoc
 * to FinalizePdfDoc, in pieces of 32,768 bytes and more; only a piece in front of large data (of an
 * image or a profile, 32,768 bytes and more) and the last one are smaller. Large data is handed on
 * as the pointer that the caller gave: it is neither copied nor read. The document keeps none of
 * what it wrote. A value other than 0 from write is the result of the call that was under way; from
 * then on every call that writes fails, FinalizePdfDoc included, and write is not called again.
 * An exception that write throws comes out of that call.
 *
 *     static int32_t ToStream(void* stream, const char* data, size_t size) {
 *       return fwrite(data, 1, size, stream) == size ? 0 : EIO;
 *     }
 *     JTPDFDocument* doc = CreateCallbackPdfDoc(PDFCoordinateUnitPoint, ToStream, stdout);
 */
JTPDF_EXPORT JTPDFDocument* CreateCallbackPdfDoc(double unitFactor, JTPDFWriteFunction write,
                                                 void* context);

/* The same as Create...PdfDoc for hosts that cannot catch an exception: null, with errno ENOMEM,
 * where there is no memory, and SetPdfMemoryErrors(doc, true) for the document from the start. */
JTPDF_EXPORT JTPDFDocument* TryCreateFilePdfDoc(double unitFactor, const wchar_t* fileName,
                                                const wchar_t* creator, const wchar_t* author);
JTPDF_EXPORT JTPDFDocument* TryCreateMemoryPdfDoc(double unitFactor);
JTPDF_EXPORT JTPDFDocument* TryCreateCallbackPdfDoc(double unitFactor, JTPDFWriteFunction write,
                                                    void* context);

/* Says whether memory that runs out in a call with this document is a code: with on, no call lets
 * std::bad_alloc out. A function that returns a code returns ENOMEM, under the conditions that
 * convention 8 gives for the exception. One that returns none (drawing, ClearPdfCanvas,
 * SetPdfInfoItem) does nothing, and the next function with a code returns ENOMEM for it, does
 * nothing either and can then be called again. Off in a document from Create...PdfDoc. */
JTPDF_EXPORT void SetPdfMemoryErrors(JTPDFDocument* doc, bool on);

/* Opens the file of a file document, truncating it, and writes the file's head and object 1.
 * Valid once, before any Write...: a second call, and a call after FinalizePdfDoc, is refused with
 * a code. A failed open gives the system's code (EILSEQ for a file name that is not valid text)
 * and may be repeated. */
JTPDF_EXPORT int32_t InitPdfDoc(JTPDFDocument* doc);

/* Writes the queued pages, the page tree, the catalog, the information items, the
 * cross-reference table and the trailer; then closes the file or hands the bytes to GetPdfData.
 * closingText (may be null) becomes one more line after the end-of-file marker.
 * A second call after a success changes nothing and returns 0.
 * A document without a page is written, but some readers refuse such a file. Of more than 100 pages
 * whose number ends in 91 to 99 (or of more than 1000 in 901 to 999, and so on) all are shown, but
 * Ghostscript expects more and ends with an error: one page more or less avoids it.
 * A document of more than 10^10 bytes is written, too, but positions beyond take eleven digits in
 * the cross-reference table, which has room for ten: readers repair such a file or refuse it. */
JTPDF_EXPORT int32_t FinalizePdfDoc(JTPDFDocument* doc, const char* closingText);

/* Returns the bytes of a finalised memory document; null for a file document or before
 * FinalizePdfDoc. The bytes hold NULs: GetPdfDataSize tells how many there are (one more NUL
 * follows them). They stay valid until the document is destroyed. */
JTPDF_EXPORT const char* GetPdfData(JTPDFDocument* doc);

/* Returns the number of bytes that GetPdfData gives, 0 where that gives null. */
JTPDF_EXPORT size_t GetPdfDataSize(JTPDFDocument* doc);

/* Sets the document information item key ("Title", "/Subject", ...; not null, normalised like
 * JTPDFDictionaryItem.key) to value (null counts as empty), replacing an earlier value. May be
 * called in any state and counts when the document is finalised. /Producer and /MGmk are the
 * library's own and always win; so do the creator and author of CreateFilePdfDoc unless empty.
 * ISO 32000-1, 14.3.3 lists the keys that readers know; dates are texts as in 7.9.4. */
JTPDF_EXPORT void SetPdfInfoItem(JTPDFDocument* doc, const char* key, const wchar_t* value);

/* Return and set the mark flag, written as the information item /MGmk "true" or "false"; false in
 * a new document. May be called in any state. */
JTPDF_EXPORT bool GetPdfMgMk(JTPDFDocument* doc);
JTPDF_EXPORT void SetPdfMgMk(JTPDFDocument* doc, bool mark);

/* Closes and releases the document in any state; null is ignored. A file document that was not
 * finalised leaves an incomplete file, which no reader opens without repair. */
JTPDF_EXPORT void DestroyPdfDoc(JTPDFDocument* doc);

/* ---- The canvas: drawing, in any state, never failing but for memory ------------------------
 *
 * Each document has one canvas. Drawing appends to it; WritePdfCanvas turns it into a form and
 * empties it. A rotated box turns what is drawn in it about the box's centre. */

/* Removes all that was drawn since the last WritePdfCanvas; the bounding box stays. */
JTPDF_EXPORT void ClearPdfCanvas(JTPDFDocument* doc);

/* Return and set the canvas's extent, the /BBox of the next form: nothing outside it shows. All
 * zero in a new document, in which a form shows nothing. The angle is kept but not written. */
JTPDF_EXPORT JTPDFRect GetPdfCanvasBoundingBox(JTPDFDocument* doc);
JTPDF_EXPORT void SetPdfCanvasBoundingBox(JTPDFDocument* doc, JTPDFRect box);

/* Draws image (a number from WritePdfImage...) over the whole bounding box, as it is at this
 * moment. */
JTPDF_EXPORT void DrawPdfImage(JTPDFDocument* doc, int image);

/* Draws image stretched into box and rotated with it. A negative width or height mirrors. */
JTPDF_EXPORT void DrawPdfImageInRect(JTPDFDocument* doc, int image, JTPDFRect box);

/* Fill, stroke, or fill and stroke the rectangle box, rotated by its angle. lineWidth is in the
 * document's unit; the stroke lies half inside and half outside the box. The colour
 * (255, 255, 255, 0) stands for none. A fill that is none strokes, whatever the stroke colour. */
JTPDF_EXPORT void FillPdfRectangle(JTPDFDocument* doc, JTPDFRect box, JTPDFRGBColor fill);
JTPDF_EXPORT void StrokePdfRectangle(JTPDFDocument* doc, JTPDFRect box, JTPDFRGBColor stroke,
                                     double lineWidth);
JTPDF_EXPORT void FillAndStrokePdfRectangle(JTPDFDocument* doc, JTPDFRect box, JTPDFRGBColor fill,
                                            JTPDFRGBColor stroke, double lineWidth);

/* Fills and strokes the ellipse inscribed in box, shrunk so that the stroke stays inside. The
 * box's angle is ignored and the colour (255, 255, 255, 0) is plain white here. The line width and
 * both colours stay in force for whatever is drawn on this canvas afterwards without its own. */
JTPDF_EXPORT void FillAndStrokePdfCircle(JTPDFDocument* doc, JTPDFRect box, JTPDFRGBColor fill,
                                         JTPDFRGBColor stroke, double lineWidth);

/* Moves every side of *rect inwards, by dx on the left and right and dy at the bottom and top;
 * negative values grow it. The angle stays; a width or height may become negative. */
JTPDF_EXPORT void InsetPdfRect(JTPDFRect* rect, double dx, double dy);

/* ---- Writers: between InitPdfDoc and FinalizePdfDoc ----------------------------------------
 *
 * Before InitPdfDoc they are refused with a code. After FinalizePdfDoc a file document's writers
 * fail, and a memory document's succeed but change nothing in the finished bytes. */

/* Writes the canvas as a form, empties the canvas and stores the form's number in *form. */
JTPDF_EXPORT int32_t WritePdfCanvas(JTPDFDocument* doc, int* form);

/* Adds a page that shows form (a number from WritePdfCanvas), unscaled. mediaBox is the sheet,
 * cropBox the part that readers show: mind the order of the two. Angles are ignored. One form may
 * serve any number of pages. */
JTPDF_EXPORT int32_t WritePdfPage(JTPDFDocument* doc, int form, JTPDFRect cropBox,
                                  JTPDFRect mediaBox);

/* Writes *image and stores its number in *imageObject. With maskWhite, pixels whose components are
 * all 255 become transparent (a colour key; for 8-bit grey, RGB and CMYK data that is not JPEG).
 * name (null counts as empty) is recorded in /JTImageName, role in /JTImageType, and the itemCount
 * entries at items (null only with 0) are added to the image's dictionary.
 *
 *     TPdfImageDescriptor photo = {bytes, size, kPdfCompressionJPEG, 640, 480, 8,
 *                                  kPdfColorSpaceRGB, 0};
 *     int number;
 *     code = WritePdfImage(doc, &photo, false, kPdfImageRolePhoto, L"beach", 0, NULL, &number);
 */
JTPDF_EXPORT int32_t WritePdfImage(JTPDFDocument* doc, const TPdfImageDescriptor* image,
                                   bool maskWhite, TPdfImageRole role, const wchar_t* name,
                                   unsigned itemCount, const JTPDFDictionaryItem* items,
                                   int* imageObject);

/* Writes *alpha (a grey image of any size; null for none) and then *image with it as its soft
 * mask: 0 is transparent, the largest value opaque. If the alpha image fails, its code is returned
 * and the main image is not written. A JPEG 2000 main image cannot have one: the call then fails
 * after the alpha image was written. */
JTPDF_EXPORT int32_t WritePdfImageWithAlpha(JTPDFDocument* doc, const TPdfImageDescriptor* image,
                                            const TPdfImageDescriptor* alpha, TPdfImageRole role,
                                            const wchar_t* name, unsigned itemCount,
                                            const JTPDFDictionaryItem* items, int* imageObject);

/* Writes *image, whose compression should be kPdfCompressionJPEG2000; its data names its colour
 * space and alpha. With any other compression it is written as an RGB image, whatever its
 * colorSpace says. */
JTPDF_EXPORT int32_t WritePdfImageJPEG2000(JTPDFDocument* doc, const TPdfImageDescriptor* image,
                                           TPdfImageRole role, const wchar_t* name,
                                           unsigned itemCount, const JTPDFDictionaryItem* items,
                                           int* imageObject);

/* Writes the ICC profile (size bytes at data, encoded as compression says) and a colour space made
 * of it, and stores that colour space's number in *colorSpaceObject, for the colorSpaceObject of
 * image descriptors. Only for profiles with an RGB data space: the profile is always declared to
 * have three components. A value of compression outside the enumeration stands for a profile that
 * is not compressed. */
JTPDF_EXPORT int32_t WritePdfICCProfile(JTPDFDocument* doc, const char* data, unsigned size,
                                        TPdfCompression compression, int* colorSpaceObject);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* JTPDF_JTPDF_H */
