// ccitt.h - pictures of one bit as fax data, group 4 (ITU-T T.6), through libtiff, where the
// build has it.
#ifndef JTPDF_PICTURES_CCITT_H
#define JTPDF_PICTURES_CCITT_H

#include "bytes.h"
#include "image.h"

namespace pictures {

// Encodes a picture of one channel of one bit, in which 0 is black, as CcittParameters{} describe
// it. Throws std::bad_alloc.
Buffer EncodeGroup4(const Raster& picture);

}  // namespace pictures

#endif  // JTPDF_PICTURES_CCITT_H
