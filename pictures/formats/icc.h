// icc.h - the few facts of an ICC profile's 128-byte header that decide whether it can be used.
#ifndef JTPDF_PICTURES_ICC_H
#define JTPDF_PICTURES_ICC_H

#include <string>

#include "bytes.h"

namespace pictures {

// The largest profile that is kept, far beyond what pictures are given: profiles may be compressed
// a thousandfold, and those of the pictures under way are held in memory.
inline constexpr size_t kMostProfile = size_t{4} << 20;

struct ProfileFacts {
  bool valid = false;  // a whole profile of a kind that describes a picture's colours
  std::string space;   // "RGB ", "GRAY", "CMYK", ...

  std::string Describe() const;  // "grey", "CMYK", ...
};

ProfileFacts ReadProfile(Bytes profile);

}  // namespace pictures

#endif  // JTPDF_PICTURES_ICC_H
