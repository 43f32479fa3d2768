// reduction.h - the same picture in fewer channels and bits, where these say it all.
#ifndef JTPDF_PICTURES_REDUCTION_H
#define JTPDF_PICTURES_REDUCTION_H

#include "bytes.h"
#include "image.h"

namespace pictures {

// What a picture is for, which may forbid some ways to make it smaller.
enum class Purpose {
  kPicture,
  kProfiled,  // a profile goes with it: three components stay three, if only in a palette
  kMask,      // a soft mask: it cannot have a palette
};

struct Samples {
  Raster raster;
  Colour colour;  // of the samples, or of the palette
  // Where it is not empty, the raster has numbers of its colours, which have 8 bits a component.
  Buffer palette;
  bool ramp = false;  // colour number n of the palette is (n, n, n)
};

// Colour that is grey becomes grey, 16 bits that repeat themselves become 8, few greys take fewer
// bits, and at most 256 colours a palette. Inks stay as they are.
Samples Reduce(Raster raster, Purpose purpose);

}  // namespace pictures

#endif  // JTPDF_PICTURES_REDUCTION_H
