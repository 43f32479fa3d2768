// image.h - what the tool knows of a picture: first from its header, then as PDF will hold it.
//
//     bytes of a file -> ImagePlan (cheap, from the header alone) -> EncodedImage (ready to write)
#ifndef JTPDF_PICTURES_IMAGE_H
#define JTPDF_PICTURES_IMAGE_H

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bytes.h"

namespace pictures {

// Why one input cannot become a page. The text says what is wrong and what to do, in plain words;
// whoever catches it puts the file's name in front.
struct ImageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Of a file that contradicts itself or its format.
struct Damaged : ImageError {
  explicit Damaged(const std::string& what)
      : ImageError("is damaged: " + what + "; save the picture again") {}
};

// Of a file that the library which decodes it refuses.
struct Undecodable : ImageError {
  explicit Undecodable(const std::string& why)
      : ImageError("cannot be decoded (" + why +
                   "); the file is damaged or cut off, save the picture again") {}
};

// Of a file that breaks off.
struct CutOff : ImageError {
  CutOff()
      : ImageError(
            "ends before its picture does; the file was cut off, copy it again from its source") {}
};

enum class Format { kJpeg, kJpeg2000, kPng, kTiff, kWebp, kBmp, kGif, kPnm, kHeif, kJxl };

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

// Parameters of fax data (ISO 32000-1, 7.4.6); its columns and rows are those of the image.
struct CcittParameters {
  int k = -1;  // -1: group 4; 0: group 3 by rows; positive: group 3 in two dimensions
  bool blackIs1 = false;
  bool byteAligned = false;  // each row begins at a byte
  bool endOfLine = false;
  bool endOfBlock = true;
};

// One strip of TIFF fax data.
struct FaxStrip {
  uint64_t offset = 0;
  uint64_t size = 0;
  bool turned = false;  // the bits of each byte are in reverse order
  CcittParameters parameters;
};

class FilmShelf;

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
  uint64_t place = 0;           // the decoder's own mark, a TIFF page's offset for one
  size_t size = 0;              // passes through: so many bytes from `place` on
  std::string decodeReason;     // empty: the bytes pass through unchanged
  uint64_t memory = 0;          // about the most bytes that decoding takes
  std::optional<FaxStrip> fax;  // passes through: a TIFF page's, which need not be opened again
  std::shared_ptr<FilmShelf> films;  // of a file's frames; null for one that stands alone
  std::string error;                 // why this page cannot be used, where others of its file can
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
  Raster Copy() const {
    Raster copy;
    copy.width = width;
    copy.height = height;
    copy.bits = bits;
    copy.channels = channels;
    copy.bytes = Buffer::CopyOf(bytes.View());
    return copy;
  }
  size_t Stride() const { return (size_t{width} * bits * channels + 7) / 8; }
  uint8_t* Row(uint32_t y) { return bytes.Data() + Stride() * y; }
  const uint8_t* Row(uint32_t y) const { return bytes.Data() + Stride() * y; }
};

inline Colour ColourOf(const Raster& raster) {
  return raster.channels == 1 ? Colour::kGrey : raster.channels == 3 ? Colour::kRgb : Colour::kCmyk;
}

struct DecodedImage {
  Raster pixels;
  std::optional<Raster> alpha;  // one channel; the largest value is opaque
};

// How the data of a stored image is encoded.
enum class Filter { kNone, kFlate, kLzw, kDct, kJpx, kCcitt };

// One image stream, ready for the PDF: its data and all that says how to read it. What is not named
// has PDF's default.
struct EncodedStream {
  // The data, written one behind the other: views into `owned`, or into the mapped file. (Moving a
  // buffer leaves its bytes where they are.)
  std::vector<Bytes> pieces;
  Buffer owned;  // empty for what passes through
  Filter filter = Filter::kFlate;
  // Of Flate and LZW: 1 for none, 2 as TIFF has it, 15 as PNG. Its columns, colours and bits are
  // those of the image.
  int predictor = 1;
  CcittParameters ccitt;  // of kCcitt alone

  uint32_t width = 0;
  uint32_t height = 0;
  int bits = 8;
  Colour colour = Colour::kRgb;  // of the samples, or of the palette; kJpx names its own
  Buffer palette;                // where there is one, samples are numbers of its colours
  std::vector<int> decode;       // a lowest and a highest value for each component
  std::vector<int> colourKey;    // ranges of samples, likewise, that are transparent throughout

  // For inks that are stored inverted, as JPEG files with an Adobe marker have them.
  void DeclareInverted() {
    for (int i = 0; i < Channels(colour); ++i) decode.insert(decode.end(), {1, 0});
  }
  void Own(Buffer data) {
    owned = std::move(data);
    pieces = {owned.View()};
  }
  size_t Size() const { return TotalSize(pieces); }
  // Components of a sample.
  int Components() const { return palette.Empty() ? Channels(colour) : 1; }
};

// The most bytes that one image of a PDF can hold.
inline constexpr uint64_t kMostStored = std::numeric_limits<uint32_t>::max();

struct EncodedImage {
  EncodedStream pixels;
  std::optional<EncodedStream> alpha;  // the soft mask: grey, of any size
  Buffer profile;  // the ICC profile of the pixels' colour, not compressed; empty for none
  std::vector<Note> notes;
};

}  // namespace pictures

#endif  // JTPDF_PICTURES_IMAGE_H
