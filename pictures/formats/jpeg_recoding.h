// jpeg_recoding.h - a JPEG's coefficients in fewer bytes, by better tables or by passes of growing
// detail.
#ifndef JTPDF_PICTURES_JPEG_RECODING_H
#define JTPDF_PICTURES_JPEG_RECODING_H

#include "bytes.h"

namespace pictures {

// The smallest JPEG of the same coefficients, every one of which is compared afterwards. It says
// how its colours are to be read (JFIF, Adobe) and nothing else. Empty where that is not smaller
// than the JPEG, or the JPEG is damaged or cannot be coded anew.
Buffer RecodeJpeg(Bytes jpeg);

}  // namespace pictures

#endif  // JTPDF_PICTURES_JPEG_RECODING_H
