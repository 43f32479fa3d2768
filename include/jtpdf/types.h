/* types.h - the plain records and enumerations that a caller fills.
 *
 * Everything here is a C record or a 32-bit integer, passed by value or through a pointer. The
 * library keeps no pointer that it is handed beyond the call, unless a field says otherwise.
 */
#ifndef JTPDF_TYPES_H
#define JTPDF_TYPES_H

#include <stddef.h>
#include <stdint.h>
#include <wchar.h>

#ifdef __cplusplus
#define JTPDF_STATIC_ASSERT(condition, text) static_assert(condition, text)
extern "C" {
#else
#define JTPDF_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

/* Enumerations: every 32-bit value is legal input. C has no fixed type for an enumeration before
 * C23, so there the type is the integer and the enumerators are constants that convert to it. */

/* The colour space that image data is in, and the /ColorSpace entry it is written with.
 * Any other value is legal: the image is then written without /ColorSpace and without a colour-key
 * mask, and a note is printed in diagnostic mode. */
#ifdef __cplusplus
enum TPdfColorSpace : int32_t {
#else
typedef int32_t TPdfColorSpace;
enum {
#endif
  kPdfColorSpaceGray = 0, /* /DeviceGray, one component */
  kPdfColorSpaceRGB = 1,  /* /DeviceRGB, three components */
  kPdfColorSpaceCMYK = 2, /* /DeviceCMYK, four components, always declared inverted:
                             /Decode [1 0 1 0 1 0 1 0], as JPEG files with an Adobe marker are */
  kPdfColorSpaceICC = 3   /* the colour space of WritePdfICCProfile, three components (RGB) */
};

/* How the bytes of an image or a profile are encoded, and the /Filter entry they are written with.
 * The library never encodes or decodes. Any other value is legal: the stream is then written
 * without /Filter, and a note is printed in diagnostic mode. */
#ifdef __cplusplus
enum TPdfCompression : int32_t {
#else
typedef int32_t TPdfCompression;
enum {
#endif
  kPdfCompressionJPEG = 0,    /* /DCTDecode: a whole JPEG file */
  kPdfCompressionLZW = 1,     /* /LZWDecode */
  kPdfCompressionFlate = 2,   /* /FlateDecode: a zlib stream (RFC 1950), no predictor */
  kPdfCompressionJPEG2000 = 3 /* /JPXDecode: a JP2 file; its own colour space and alpha count */
};

/* What an image is for on its page. It is only recorded, as the name in the private image entry
 * /JTImageType. Any other value is legal and records an empty name. */
#ifdef __cplusplus
enum TPdfImageRole : int32_t {
#else
typedef int32_t TPdfImageRole;
enum {
#endif
  kPdfImageRoleBackground = 0,
  kPdfImageRolePhoto = 1,
  kPdfImageRoleMask = 2,
  kPdfImageRoleBorder = 3,
  kPdfImageRoleClipArt = 4,
  kPdfImageRoleAlpha = 5,
  kPdfImageRoleText = 6,
  kPdfImageRoleShape = 7,
  kPdfImageRoleOther = 8
};

/* One image whose data is already encoded. */
typedef struct TPdfImageDescriptor {
  const char* data;            /* the encoded bytes, written unchanged; null only with size 0 */
  uint32_t size;               /* how many bytes */
  TPdfCompression compression; /* how they are encoded */
  int32_t width;               /* pixels; not checked against the data */
  int32_t height;              /* pixels; not checked against the data */
  int32_t bitsPerComponent;    /* 1, 2, 4, 8 or 16 in PDF 1.5 (ISO 32000-1, 8.9.5.1); not checked */
  TPdfColorSpace colorSpace;   /* ignored for JPEG 2000 data, which names its own */
  int32_t colorSpaceObject;    /* number from WritePdfICCProfile; read only for kPdfColorSpaceICC */
} TPdfImageDescriptor;

/* A box: lower-left corner and extent in the document's unit, y upwards, and an angle in degrees,
 * counter-clockwise about the box's centre. No value is checked or normalised. */
typedef struct JTPDFRect {
  double left;
  double bottom;
  double width;
  double height;
  double angle;
} JTPDFRect;

/* A device RGB colour. Alpha never reaches the file; it only makes (255, 255, 255, 0) the colour
 * "none", with which rectangles leave out their fill or stroke. */
typedef struct JTPDFRGBColor {
  uint8_t red;
  uint8_t green;
  uint8_t blue;
  uint8_t alpha;
} JTPDFRGBColor;

/* One extra entry for an image dictionary. It is written before the library's own entries are
 * set, so an own entry of the same key wins. Leave the keys /Length and /Stream to the library:
 * they are not written, and behind a nested key they leave its dictionary open. */
typedef struct JTPDFDictionaryItem {
  const char* key;      /* not null. "Name" or "/Name"; "/Outer/Name" nests. Bytes outside 0x21 to
                           0x7E are dropped; a key with nothing left becomes /JT_DUMMY_KEY */
  const wchar_t* value; /* NUL-terminated wide text, null counts as empty; always a text string */
} JTPDFDictionaryItem;

/* What CreateCallbackPdfDoc hands a document's bytes to: size bytes (more than 0) at data, behind
 * those of the calls before. context is the host's own. The bytes are there during the call only.
 * Returns 0 for success; any other value fails the call of the library that is under way, which
 * returns it, and the function is not called again. */
typedef int32_t (*JTPDFWriteFunction)(void* context, const char* data, size_t size);

/* One entry of a dictionary, for objects.h, which says what it may hold; both texts are UTF-8 or
 * plain ASCII as PDF has them, up to a NUL. */
typedef struct JTPDFEntry {
  const char* key;
  const char* value;
} JTPDFEntry;

/* Bytes of a stream's data; data may be null with size 0. */
typedef struct JTPDFPiece {
  const char* data;
  size_t size;
} JTPDFPiece;

/* Encodes size bytes at data. Stores where the result is and its size, and returns 0; the result
 * stays the host's and has to last until the function is called again or the document is gone. Any
 * other value fails the call of the library that is under way, which returns it and writes nothing.
 */
typedef int32_t (*JTPDFEncodeFunction)(void* context, const char* data, size_t size,
                                       const char** encoded, size_t* encodedSize);

/* The binary interface: these layouts are promised for every library of SOVERSION 2. */
#if defined(_WIN32)
JTPDF_STATIC_ASSERT(sizeof(wchar_t) == 2, "wide text is UTF-16: wchar_t must have 16 bits");
#else
JTPDF_STATIC_ASSERT(sizeof(wchar_t) == 4, "wide text is UTF-32: wchar_t must have 32 bits");
#endif
JTPDF_STATIC_ASSERT(sizeof(TPdfColorSpace) == 4, "enumerations have 32 bits");
JTPDF_STATIC_ASSERT(sizeof(TPdfCompression) == 4, "enumerations have 32 bits");
JTPDF_STATIC_ASSERT(sizeof(TPdfImageRole) == 4, "enumerations have 32 bits");
JTPDF_STATIC_ASSERT(offsetof(TPdfImageDescriptor, data) == 0, "TPdfImageDescriptor.data");
JTPDF_STATIC_ASSERT(offsetof(TPdfImageDescriptor, size) == sizeof(void*), "size");
JTPDF_STATIC_ASSERT(offsetof(TPdfImageDescriptor, compression) == sizeof(void*) + 4, "compression");
JTPDF_STATIC_ASSERT(offsetof(TPdfImageDescriptor, width) == sizeof(void*) + 8, "width");
JTPDF_STATIC_ASSERT(offsetof(TPdfImageDescriptor, height) == sizeof(void*) + 12, "height");
JTPDF_STATIC_ASSERT(offsetof(TPdfImageDescriptor, bitsPerComponent) == sizeof(void*) + 16, "bits");
JTPDF_STATIC_ASSERT(offsetof(TPdfImageDescriptor, colorSpace) == sizeof(void*) + 20, "colorSpace");
JTPDF_STATIC_ASSERT(offsetof(TPdfImageDescriptor, colorSpaceObject) == sizeof(void*) + 24,
                    "colorSpaceObject");
/* 28 bytes of numbers behind the pointer, rounded up to the pointer's alignment. */
JTPDF_STATIC_ASSERT(sizeof(TPdfImageDescriptor) == (sizeof(void*) == 8 ? 40 : 32),
                    "TPdfImageDescriptor has no packing");
JTPDF_STATIC_ASSERT(sizeof(JTPDFRect) == 40, "JTPDFRect is five doubles");
JTPDF_STATIC_ASSERT(offsetof(JTPDFRect, left) == 0, "JTPDFRect.left");
JTPDF_STATIC_ASSERT(offsetof(JTPDFRect, bottom) == 8, "JTPDFRect.bottom");
JTPDF_STATIC_ASSERT(offsetof(JTPDFRect, width) == 16, "JTPDFRect.width");
JTPDF_STATIC_ASSERT(offsetof(JTPDFRect, height) == 24, "JTPDFRect.height");
JTPDF_STATIC_ASSERT(offsetof(JTPDFRect, angle) == 32, "JTPDFRect.angle");
JTPDF_STATIC_ASSERT(sizeof(JTPDFRGBColor) == 4, "JTPDFRGBColor is four bytes");
JTPDF_STATIC_ASSERT(offsetof(JTPDFRGBColor, red) == 0, "JTPDFRGBColor.red");
JTPDF_STATIC_ASSERT(offsetof(JTPDFRGBColor, green) == 1, "JTPDFRGBColor.green");
JTPDF_STATIC_ASSERT(offsetof(JTPDFRGBColor, blue) == 2, "JTPDFRGBColor.blue");
JTPDF_STATIC_ASSERT(offsetof(JTPDFRGBColor, alpha) == 3, "JTPDFRGBColor.alpha");
JTPDF_STATIC_ASSERT(offsetof(JTPDFDictionaryItem, key) == 0, "JTPDFDictionaryItem.key");
JTPDF_STATIC_ASSERT(offsetof(JTPDFDictionaryItem, value) == sizeof(void*), "value");
JTPDF_STATIC_ASSERT(sizeof(JTPDFDictionaryItem) == 2 * sizeof(void*), "JTPDFDictionaryItem");

#ifdef __cplusplus
} /* extern "C" */
#endif

#undef JTPDF_STATIC_ASSERT

#endif /* JTPDF_TYPES_H */
