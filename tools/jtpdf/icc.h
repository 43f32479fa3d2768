// icc.h - the few facts of an ICC profile's 128-byte header that decide whether it can be used.
#ifndef JTPDF_TOOL_ICC_H
#define JTPDF_TOOL_ICC_H

#include <string>

#include "bytes.h"

namespace tool {

struct ProfileFacts {
  bool valid = false;  // a whole profile of a kind that describes a picture's colours
  std::string space;   // "RGB ", "GRAY", "CMYK", ...

  std::string Describe() const;  // "grey", "CMYK", ...
};

ProfileFacts ReadProfile(Bytes profile);

}  // namespace tool

#endif  // JTPDF_TOOL_ICC_H
