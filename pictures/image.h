// image.h - what the tool knows of a picture: first from its header, then as PDF will hold it.
//
//     bytes of a file -> ImagePlan (cheap, from the header alone) -> EncodedImage (ready to write)
#ifndef JTPDF_PICTURES_IMAGE_H
#define JTPDF_PICTURES_IMAGE_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "bytes.h"
#include "jtpdf/types.h"

namespace pictures {

// Why one input cannot become a page. The text says what is wrong and what to do, in plain words;
// whoever catches it puts the file's name in front.
struct ImageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Of a file that breaks off.
struct CutOff : ImageError {
  CutOff()
      : ImageError(
            "ends before its picture does; the file was cut off, copy it again from its source") {}
};

enum class Format { kJpeg, kJpeg2000, kPng, kTiff, kWebp };

enum class Colour { kGrey, kRgb, kCmyk };

inline int Channels(Colour colour) {
  return colour == Colour::kGrey ? 1 : colour == Colour::kRgb ? 3 : 4;
}

// Dots per inch; 0 where the file does not say.
struct Resolution {
  double x = 0;
  double y = 0;
  bool Known() const { return x > 0 && y > 0; }
};

enum class ProfileUse { kNone, kUsed, kLeftOut };

struct Note {
  bool always;  // printed unless -q; the others only with -v
  std::string text;
};

// What the header of a picture says, and so what will be done with it.
struct ImagePlan {
  Format format = Format::kJpeg;
  uint32_t width = 0;  // pixels as stored, before the orientation
  uint32_t height = 0;
  int depth = 8;  // bits per component as stored
  Colour colour = Colour::kRgb;
  bool palette = false;
  bool alpha = false;  // transparency is declared; the pixels may all be opaque yet
  ProfileUse profile = ProfileUse::kNone;
  size_t profileSize = 0;  // of one that is used
  int orientation = 1;     // as EXIF counts, 1 to 8
  Resolution resolution;
  unsigned page = 1;  // of `pages` in this file
  unsigned pages = 1;
  uint64_t place = 0;        // the decoder's own mark, a TIFF page's offset for one
  size_t size = 0;           // passes through: so many bytes from `place` on
  std::string decodeReason;  // empty: the bytes pass through unchanged
  uint64_t memory = 0;       // about the most bytes that decoding takes
  std::string error;         // why this page cannot be used, where others of its file can
  std::vector<Note> notes;

  bool PassesThrough() const { return decodeReason.empty(); }
};

// Pixels, decoded: rows of packed samples, each row starting at a byte, as PDF wants them.
struct Raster {
  uint32_t width = 0;
  uint32_t height = 0;
  int bits = 8;  // 1, 2, 4, 8 or 16 (big-endian)
  int channels = 1;
  Buffer bytes;

  Raster() = default;
  Raster(uint32_t w, uint32_t h, int bitsPerSample, int channelCount)
      : width(w), height(h), bits(bitsPerSample), channels(channelCount), bytes(Stride() * h) {}
  size_t Stride() const { return (size_t{width} * bits * channels + 7) / 8; }
  uint8_t* Row(uint32_t y) { return bytes.Data() + Stride() * y; }
  const uint8_t* Row(uint32_t y) const { return bytes.Data() + Stride() * y; }
};

struct DecodedImage {
  Raster pixels;
  std::optional<Raster> alpha;  // one channel; the largest value is opaque
};

// One image stream, ready for the PDF.
struct EncodedStream {
  Bytes data;    // into `owned`, or into the mapped file
  Buffer owned;  // empty for what passes through
  TPdfCompression compression = kPdfCompressionFlate;
  Colour colour = Colour::kRgb;
  uint32_t width = 0;
  uint32_t height = 0;
  int bits = 8;
};

struct EncodedImage {
  EncodedStream pixels;
  std::optional<EncodedStream> alpha;
  Buffer profile;  // the ICC profile to declare, not compressed; empty for none
  std::vector<Note> notes;
};

}  // namespace pictures

#endif  // JTPDF_PICTURES_IMAGE_H
