// planes.h - opacity apart from colours, for decoders that give them interleaved.
#ifndef JTPDF_PICTURES_PLANES_H
#define JTPDF_PICTURES_PLANES_H

#include "image.h"

namespace pictures {

// The raster (of 8 or 16 bits), with its last channel taken out where that is the opacity.
DecodedImage SplitAlpha(Raster interleaved, bool alpha);

}  // namespace pictures

#endif  // JTPDF_PICTURES_PLANES_H
