// packing.h - decoded pixels as streams of the PDF, as small as they get without loss.
#ifndef JTPDF_PICTURES_PACKING_H
#define JTPDF_PICTURES_PACKING_H

#include <optional>

#include "image.h"
#include "reduction.h"

namespace pictures {

// Reduces and compresses (level 0 to 12) a picture of 1, 3 or 4 channels; of 4, which are inks, the
// larger a sample the less ink there is. Throws an ImageError where the result is more than a PDF
// image can hold.
EncodedStream Pack(Raster raster, int level, Purpose purpose);

// The same for an alpha; nothing where it is opaque throughout.
std::optional<EncodedStream> PackAlpha(Raster alpha, int level);

// The same for pixels and their alpha.
EncodedImage Pack(DecodedImage decoded, int level, Purpose purpose);

}  // namespace pictures

#endif  // JTPDF_PICTURES_PACKING_H
