// optimisation.h - pictures as small as they get without loss, whatever time that takes.
#ifndef JTPDF_PICTURES_OPTIMISATION_H
#define JTPDF_PICTURES_OPTIMISATION_H

#include "bytes.h"
#include "formats/decoder.h"
#include "image.h"

namespace pictures {

// As Encode: of a JPEG the coefficients are coded anew, all else is decoded, reduced and packed
// hard; what was given stays where it is smaller, or would be more to decode than is allowed. A
// JPEG 2000 file stays as it is. `file` must outlive the result.
EncodedImage EncodeSmallest(const ImagePlan& plan, Bytes file, const ReadLimits& limits);

}  // namespace pictures

#endif  // JTPDF_PICTURES_OPTIMISATION_H
