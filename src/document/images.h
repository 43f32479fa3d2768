// images - names for the enumerations that describe image data, and its soft mask.
#ifndef JTPDF_DOCUMENT_IMAGES_H
#define JTPDF_DOCUMENT_IMAGES_H

#include <string>

#include "jtpdf/types.h"

// The number that stands for no soft mask; 0 is a real one.
inline constexpr int kNoSoftMask = -1;

// The /Filter name, "/DCTDecode" and so on. An unknown value gives an empty text and a note in
// diagnostic mode.
std::string FilterValueFromCompression(TPdfCompression compression);

// "Background", "Photo" and so on; an empty text for an unknown value.
std::string GetImageRoleName(TPdfImageRole role);

#endif  // JTPDF_DOCUMENT_IMAGES_H
