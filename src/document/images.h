// images - names for the enumerations that describe image data.
#ifndef JTPDF_DOCUMENT_IMAGES_H
#define JTPDF_DOCUMENT_IMAGES_H

#include <string>

#include "jtpdf/types.h"

// The /Filter name, "/DCTDecode" and so on. An unknown value gives an empty text and a note in
// diagnostic mode.
std::string FilterValueFromCompression(TPdfCompression compression);

// "Background", "Photo" and so on; an empty text for an unknown value.
std::string GetImageRoleName(TPdfImageRole role);

#endif  // JTPDF_DOCUMENT_IMAGES_H
