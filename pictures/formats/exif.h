// exif.h - the two things that EXIF data can say about a page: which way is up, and how large.
//
// Code of our own, because the question is three tags of the first directory (IFD0): about
// eighty lines that allocate nothing and follow no pointer twice, where a full EXIF library parses
// makers' notes of untrusted files, which is where such libraries have had their holes.
#ifndef JTPDF_PICTURES_EXIF_H
#define JTPDF_PICTURES_EXIF_H

#include <optional>

#include "bytes.h"
#include "image.h"

namespace pictures {

struct ExifFacts {
  std::optional<int> orientation;  // as it stands, valid (1 to 8) or not
  Resolution resolution;
};

// Reads EXIF data from its TIFF header on ("II*\0" or "MM\0*"). Damaged data says nothing, or as
// much as could be read.
ExifFacts ReadExif(Bytes tiff);

// Takes the orientation over into the plan, with a note where it is none (0, 9, ...), and the
// resolution unless the plan has one.
void ApplyExif(const ExifFacts& facts, ImagePlan* plan);

}  // namespace pictures

#endif  // JTPDF_PICTURES_EXIF_H
