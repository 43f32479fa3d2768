// images - image XObjects (ISO 32000-1, 8.9.5), and names for the enumerations that describe them.
#ifndef JTPDF_DOCUMENT_IMAGES_H
#define JTPDF_DOCUMENT_IMAGES_H

#include <string>

#include "jtpdf/types.h"
#include "output/object_writer.h"

// The number that stands for no soft mask; 0 is a real one.
inline constexpr int kNoSoftMask = -1;

// The /Filter name, "/DCTDecode" and so on. An unknown value gives an empty text and a note in
// diagnostic mode.
std::string FilterValueFromCompression(TPdfCompression compression);

// "Background", "Photo" and so on; an empty text for an unknown value.
std::string GetImageRoleName(TPdfImageRole role);

// Writes the image with its data as it is and returns its number. name may be null and counts as
// empty then; softMask is an image's number or kNoSoftMask.
int WriteImage(ObjectWriter& out, const TPdfImageDescriptor& image, bool maskWhite,
               TPdfImageRole role, const wchar_t* name, unsigned int itemCount,
               const JTPDFDictionaryItem* items, int softMask);

#endif  // JTPDF_DOCUMENT_IMAGES_H
