// flate.h - zlib streams (RFC 1950) through libdeflate.
#ifndef JTPDF_PICTURES_FLATE_H
#define JTPDF_PICTURES_FLATE_H

#include "bytes.h"

namespace pictures {

// Compresses at level 0 (stored) to 12 (smallest). The result depends on the bytes and the level
// alone. Throws std::bad_alloc.
Buffer Deflate(Bytes bytes, int level);

// The level that takes longest and packs smallest.
inline constexpr int kHardestLevel = 12;

struct Inflated {
  Buffer bytes;  // empty where it is damaged or holds more than it may
  bool tooLarge = false;
};

// Decompresses a zlib stream of at most `most` bytes.
Inflated Inflate(Bytes stream, size_t most);

// Decompresses a zlib stream of exactly `size` bytes; empty where it is none.
Buffer InflateExactly(Bytes stream, size_t size);

}  // namespace pictures

#endif  // JTPDF_PICTURES_FLATE_H
