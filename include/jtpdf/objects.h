/* objects.h - any object, any filter: what jtpdf.h has no function for.
 *
 *     const JTPDFEntry entries[] = {{"/Type", "/XObject"},     {"/Subtype", "/Image"},
 *                                   {"/Width", "640"},         {"/Height", "480"},
 *                                   {"/ColorSpace", "/DeviceGray"},
 *                                   {"/BitsPerComponent", "8"}, {"/Filter", "/FlateDecode"},
 *                                   {"/DecodeParms/Predictor", "15"},
 *                                   {"/DecodeParms/Columns", "640"}};
 *     int image;
 *     code = WritePdfStream(doc, 9, entries, idat, size, &image);
 *     if (code == 0) DrawPdfImage(doc, image);
 *
 * The conventions of jtpdf.h hold, and these:
 *
 * 1. A value is the text of exactly one object of PDF (ISO 32000-1, 7.3), written as it stands:
 *    "15", "[0 1]", "/DeviceGray", "12 0 R", "(text)", "<< /A 1 >>". Not taken are streams,
 *    comments, anything that leaves a bracket open, a key twice in a dictionary, more than 100
 *    arrays and dictionaries in each other, and references to another generation than 0. What a
 *    reference names is not checked.
 * 2. A key is a path of names: "/Width", "/DecodeParms/Predictor" for an entry of a dictionary in
 *    the dictionary. Setting a key again replaces its value. No key may lead through one that has a
 *    value. The library's own entries of the same key win.
 * 3. What is not so is refused with EINVAL, and nothing is written or changed.
 * 4. Null is no valid pointer except where a function says so.
 */
#ifndef JTPDF_OBJECTS_H
#define JTPDF_OBJECTS_H

#include "jtpdf/jtpdf.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Objects: between InitPdfDoc and FinalizePdfDoc ---------------------------------------- */

/* Writes a stream with those entries (null only with a count of 0) and size bytes of data (null
 * only with 0), which are neither read nor, where they are many, copied; more than 4 GiB are
 * allowed. Stores its number in *object. The entry /Length is the library's; naming it is refused.
 */
JTPDF_EXPORT int32_t WritePdfStream(JTPDFDocument* doc, unsigned entryCount,
                                    const JTPDFEntry* entries, const char* data, size_t size,
                                    int* object);

/* The same for data in pieces, which are written one behind the other: the chunks of a PNG. */
JTPDF_EXPORT int32_t WritePdfStreamPieces(JTPDFDocument* doc, unsigned entryCount,
                                          const JTPDFEntry* entries, unsigned pieceCount,
                                          const JTPDFPiece* pieces, int* object);

/* Writes the object value, which must not be a lone reference, and stores its number in *object. */
JTPDF_EXPORT int32_t WritePdfObject(JTPDFDocument* doc, const char* value, int* object);

/* Stores the number of an object that is to be written later in *object, for objects that name each
 * other. It must be written: FinalizePdfDoc refuses a document with a number that was not used, and
 * can be called again once it was. */
JTPDF_EXPORT int32_t ReservePdfObject(JTPDFDocument* doc, int* object);

/* Write an object or a stream under a number of ReservePdfObject, once. */
JTPDF_EXPORT int32_t WriteReservedPdfObject(JTPDFDocument* doc, int object, const char* value);
JTPDF_EXPORT int32_t WriteReservedPdfStream(JTPDFDocument* doc, int object, unsigned entryCount,
                                            const JTPDFEntry* entries, unsigned pieceCount,
                                            const JTPDFPiece* pieces);

/* ---- Entries of the library's objects: in any state ---------------------------------------- */

/* Sets an entry of the catalog: "/PageLayout", "/ViewerPreferences/FitWindow", "/Metadata".
 * The library's own are /Type, /Pages, /Outlines with bookmarks, and /OpenAction with
 * SetPdfOpenPage. */
JTPDF_EXPORT int32_t SetPdfCatalogEntry(JTPDFDocument* doc, const char* key, const char* value);

/* Sets an entry of the page that WritePdfPage adds next: "/Rotate", "/Annots", "/TrimBox" (in
 * points), "/UserUnit". The library's own are /Type, /Parent, /Contents, /MediaBox, /CropBox,
 * /Resources/ProcSet, the page's form in /Resources/XObject, and those of /Group. */
JTPDF_EXPORT int32_t SetPdfPageEntry(JTPDFDocument* doc, const char* key, const char* value);

/* Sets an entry of the form that WritePdfCanvas writes next, as a rule a resource of what is drawn:
 * "/Resources/Font/F1". ClearPdfCanvas removes it. The library's own are /Type, /Subtype,
 * /FormType, /BBox, /Filter, /Resources/ExtGState/GS0, and the drawn images in /Resources/XObject.
 */
JTPDF_EXPORT int32_t SetPdfCanvasEntry(JTPDFDocument* doc, const char* key, const char* value);

/* Draws lines of a content stream as they are (ISO 32000-1, 7.8.2): "BT /F1 12 Tf (text) Tj ET".
 * Lengths are in points. They are not checked: what they leave behind (an open "q", a colour) holds
 * for what is drawn afterwards, and what they get wrong a reader of the file will tell. */
JTPDF_EXPORT void DrawPdfContent(JTPDFDocument* doc, const char* operators);

/* Sets the encoder of the contents of forms from now on, and the name of the filter that decodes
 * them: "/FlateDecode" for a zlib stream. Contents that it does not make smaller are left as they
 * are. A null encode sets none, as in a new document; filterName may be null then. */
JTPDF_EXPORT int32_t SetPdfContentEncoder(JTPDFDocument* doc, const char* filterName,
                                          JTPDFEncodeFunction encode, void* context);

/* Adds a bookmark behind those that there are, which leads to the page of that index (0 is the
 * first; it may be added later). level is 0 for the outermost, and at most one more than that of
 * the bookmark before. title (null counts as empty) is subject to convention 7 of jtpdf.h.
 * FinalizePdfDoc refuses a document with a bookmark to a page that is not there, and can be called
 * again. */
JTPDF_EXPORT int32_t AddPdfBookmark(JTPDFDocument* doc, int level, const wchar_t* title,
                                    int pageIndex);

/* Says what a reader shows first: the page of that index (0 is the first; it may be added later),
 * in the way of view, the rest of a destination (ISO 32000-1, 12.3.2.2): "/Fit", "/FitH null",
 * "/XYZ null null 1.5"; null stands for "/Fit". A second call replaces the first. FinalizePdfDoc
 * refuses a document that has no such page, and can be called again. */
JTPDF_EXPORT int32_t SetPdfOpenPage(JTPDFDocument* doc, int pageIndex, const char* view);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* JTPDF_OBJECTS_H */
