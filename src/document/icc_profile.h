// icc_profile - ICC-based colour spaces (ISO 32000-1, 8.6.5.5).
#ifndef JTPDF_DOCUMENT_ICC_PROFILE_H
#define JTPDF_DOCUMENT_ICC_PROFILE_H

#include <string_view>

#include "jtpdf/types.h"
#include "output/object_writer.h"

// Writes the profile's stream and the colour space made of it, whose number is returned.
int WriteICCProfile(ObjectWriter& out, std::string_view profile, TPdfCompression compression);

#endif  // JTPDF_DOCUMENT_ICC_PROFILE_H
