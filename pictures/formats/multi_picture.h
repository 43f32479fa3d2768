// multi_picture.h - the index of a JPEG file that holds several pictures (CIPA DC-007, "MPO").
#ifndef JTPDF_PICTURES_MULTI_PICTURE_H
#define JTPDF_PICTURES_MULTI_PICTURE_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "bytes.h"

namespace pictures {

struct PicturePlace {
  uint64_t begin;
  uint64_t size;
};

// What the segment (APP2) of the index begins with.
inline constexpr std::string_view kIndexName("MPF\0", 4);

// Where the file's pictures lie, previews of them left out, by the segment of its first picture.
// Empty where that is none, or names what is no JPEG.
std::vector<PicturePlace> FindPictures(Bytes file, Bytes segment);

}  // namespace pictures

#endif  // JTPDF_PICTURES_MULTI_PICTURE_H
