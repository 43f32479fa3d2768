// png_file.h - the chunks of a PNG file: what they say, and that they are whole.
#ifndef JTPDF_PICTURES_PNG_FILE_H
#define JTPDF_PICTURES_PNG_FILE_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "bytes.h"

namespace pictures {

inline constexpr std::string_view kPngSignature("\x89PNG\r\n\x1A\n", 8);

struct PngChunk {
  std::string_view name;
  Bytes data;
};

// Walks a file's chunks, from its header to its end. Next throws an ImageError where there is none
// before that.
class PngChunks {
 public:
  explicit PngChunks(Bytes file) : file_(file) {}
  // Goes to the next chunk; false behind the last.
  bool Next();
  const PngChunk& Get() const { return chunk_; }
  // Throws an ImageError unless the chunk's checksum is right.
  void CheckSum() const;

 private:
  Bytes file_;
  uint64_t at_ = kPngSignature.size();
  uint64_t forgotten_ = 0;
  PngChunk chunk_;
};

struct PngFacts {
  uint32_t width = 0;
  uint32_t height = 0;
  int depth = 0;
  int type = 0;  // PNG's colour type
  bool interlaced = false;
  uint32_t frames = 1;
  uint64_t dataSize = 0;  // of all IDAT chunks
  Bytes palette;
  Bytes transparency;
  Bytes density;
  Bytes profile;  // the iCCP chunk
  Bytes exif;

  bool IsPalette() const { return type == 3; }
  bool HasAlpha() const { return (type & 4) != 0; }
  bool IsColour() const { return (type & 2) != 0; }
  int Channels() const { return IsPalette() ? 1 : (IsColour() ? 3 : 1) + (HasAlpha() ? 1 : 0); }
  // Bytes of a row, packed.
  size_t Stride() const {
    return (size_t{width} * static_cast<size_t>(depth * Channels()) + 7) / 8;
  }
  // Whether pixels of a colour of their own are transparent.
  bool HasKey() const {
    return !IsPalette() && !HasAlpha() &&
           transparency.size() >= 2 * static_cast<size_t>(Channels());
  }
};

// What the chunks say; pixels are not looked at. Throws an ImageError for what no PNG file says.
PngFacts ReadPngFacts(Bytes file);

// The IDAT chunks, which together are one zlib stream. Throws an ImageError unless the checksums of
// all chunks are right, and the stream begins as one does.
std::vector<Bytes> WholePngData(Bytes file);

}  // namespace pictures

#endif  // JTPDF_PICTURES_PNG_FILE_H
