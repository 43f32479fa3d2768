// samples.h - packed samples of 1 to 16 bits, as image rows hold them.
#ifndef JTPDF_PICTURES_SAMPLES_H
#define JTPDF_PICTURES_SAMPLES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "bytes.h"

namespace pictures {

// Sample number `i` of a row of `bits` each, the first in the highest bits; 16 are big-endian.
inline unsigned SampleAt(const uint8_t* row, size_t i, int bits) {
  if (bits == 8) return row[i];
  if (bits == 16) return Be16(row + 2 * i);
  const size_t bit = i * static_cast<size_t>(bits);
  const size_t shift = bit % 8;
  const unsigned mask = (1u << bits) - 1;
  if (shift + static_cast<size_t>(bits) <= 8) {
    return row[bit / 8] >> (8 - static_cast<size_t>(bits) - shift) & mask;
  }
  // Across two or three bytes: only those that hold a part of the sample are read.
  unsigned sample = 0;
  for (size_t b = bit; b < bit + static_cast<size_t>(bits); ++b) {
    sample = sample << 1 | (row[b / 8] >> (7 - b % 8) & 1u);
  }
  return sample;
}

// Writes samples one after the other. The rest of the last byte is filled with ones: an alpha that
// is opaque throughout then has no byte but FF.
class SampleWriter {
 public:
  SampleWriter(uint8_t* to, int bits) : to_(to), bits_(bits) {}

  void Put(unsigned sample) {
    if (bits_ == 16) {
      *to_++ = static_cast<uint8_t>(sample >> 8);
      *to_++ = static_cast<uint8_t>(sample);
      return;
    }
    pending_ = pending_ << bits_ | sample;
    filled_ += bits_;
    if (filled_ == 8) {
      *to_++ = static_cast<uint8_t>(pending_);
      filled_ = 0;
    }
  }
  void Finish() {
    while (filled_ != 0) Put((1u << bits_) - 1);
  }

 private:
  uint8_t* to_;
  int bits_;
  int filled_ = 0;
  unsigned pending_ = 0;
};

// The depth of PDF images that holds samples of `bits` without loss.
inline int PdfBits(int bits) {
  if (bits == 1 || bits == 2 || bits == 4) return bits;
  return bits <= 8 ? 8 : 16;
}

inline unsigned MaxSample(int bits) {
  return (1u << bits) - 1;
}

// From the range of one depth to that of another, so that black stays black and white white.
inline unsigned Rescale(unsigned sample, int from, int to) {
  if (from == to) return sample;
  return static_cast<unsigned>((uint64_t{sample} * MaxSample(to) + MaxSample(from) / 2) /
                               MaxSample(from));
}

// A sample of a colour that was multiplied with its opacity, as it is without that.
inline unsigned Unpremultiply(unsigned sample, int bits, unsigned alpha, int alphaBits) {
  if (alpha == 0) return sample;
  return static_cast<unsigned>(std::min<uint64_t>(
      MaxSample(bits), (uint64_t{sample} * MaxSample(alphaBits) + alpha / 2) / alpha));
}

}  // namespace pictures

#endif  // JTPDF_PICTURES_SAMPLES_H
