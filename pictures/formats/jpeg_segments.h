// jpeg_segments.h - the marker segments of a JPEG file, up to its first scan and behind it.
//
//     FF D8 | FF DB, length, tables | FF C0, length, frame | FF DA, length, scan | data | FF D9
#ifndef JTPDF_PICTURES_JPEG_SEGMENTS_H
#define JTPDF_PICTURES_JPEG_SEGMENTS_H

#include <cstdint>
#include <optional>

#include "bytes.h"
#include "image.h"

namespace pictures {

enum JpegMarker : uint8_t {
  kSof0 = 0xC0,
  kSof1 = 0xC1,
  kSof2 = 0xC2,
  kSof9 = 0xC9,
  kSof10 = 0xCA,
  kDht = 0xC4,
  kJpg = 0xC8,
  kDac = 0xCC,
  kRst0 = 0xD0,
  kRst7 = 0xD7,
  kSoi = 0xD8,
  kEoi = 0xD9,
  kSos = 0xDA,
  kDqt = 0xDB,
  kDri = 0xDD,
  kApp0 = 0xE0,
  kApp1 = 0xE1,
  kApp2 = 0xE2,
  kApp14 = 0xEE,
  kApp15 = 0xEF,
  kCom = 0xFE,
  kTem = 0x01
};

// Whether a segment is the frame header, SOFn.
inline bool IsFrame(uint8_t marker) {
  return marker >= kSof0 && marker <= 0xCF && marker != kDht && marker != kJpg && marker != kDac;
}

// The segments up to the first scan, one after the other.
class JpegSegments {
 public:
  explicit JpegSegments(Bytes file) : file_(file) {}

  // Steps to the next segment; false behind the first scan's header or the picture's end. Throws an
  // ImageError where there is none.
  bool Next();
  // Behind the segment.
  size_t Position() const { return at_; }

  uint8_t marker = kSoi;
  Bytes data;
  size_t stray = 0;  // bytes that belong to no segment

 private:
  void FindMarker();
  bool IsComment() const { return (marker >= kApp0 && marker <= kApp15) || marker == kCom; }

  Bytes file_;
  size_t at_ = 2;  // behind SOI
};

// Behind the picture's end marker, looked for from a place in its first scan on.
std::optional<size_t> FindJpegEnd(Bytes file, size_t scan);

}  // namespace pictures

#endif  // JTPDF_PICTURES_JPEG_SEGMENTS_H
