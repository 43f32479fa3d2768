// multi_picture.h - the index of a JPEG file that holds several pictures (CIPA DC-007, "MPO").
#ifndef JTPDF_PICTURES_MULTI_PICTURE_H
#define JTPDF_PICTURES_MULTI_PICTURE_H

#include <cstdint>
#include <vector>

#include "bytes.h"

namespace pictures {

struct PicturePlace {
  uint64_t begin;
  uint64_t size;
};

// Where the file's pictures lie, previews of them left out. Empty where it has no such index, or
// one that names what is no JPEG.
std::vector<PicturePlace> FindPictures(Bytes file);

}  // namespace pictures

#endif  // JTPDF_PICTURES_MULTI_PICTURE_H
