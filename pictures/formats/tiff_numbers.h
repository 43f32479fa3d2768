// tiff_numbers.h - numbers as TIFF files and EXIF data hold them: in the byte order that they name.
#ifndef JTPDF_PICTURES_TIFF_NUMBERS_H
#define JTPDF_PICTURES_TIFF_NUMBERS_H

#include <cstdint>
#include <optional>

#include "bytes.h"

namespace pictures {

// Out of range they read as nothing.
class TiffNumbers {
 public:
  explicit TiffNumbers(Bytes bytes) : bytes_(bytes), little_(StartsWith(bytes, "II")) {}

  bool IsLittleEndian() const { return little_; }
  std::optional<uint32_t> At16(uint64_t offset) const {
    const Bytes b = Slice(bytes_, offset, 2);
    if (b.empty()) return std::nullopt;
    return little_ ? uint32_t{b[1]} << 8 | b[0] : Be16(b.data());
  }
  std::optional<uint32_t> At32(uint64_t offset) const {
    const auto first = At16(offset), second = At16(offset + 2);
    if (!first || !second) return std::nullopt;
    return little_ ? *second << 16 | *first : *first << 16 | *second;
  }
  std::optional<uint64_t> At64(uint64_t offset) const {
    const auto first = At32(offset), second = At32(offset + 4);
    if (!first || !second) return std::nullopt;
    return little_ ? uint64_t{*second} << 32 | *first : uint64_t{*first} << 32 | *second;
  }
  double Rational(uint64_t offset) const {
    const auto above = At32(offset), below = At32(offset + 4);
    return above && below && *below != 0 ? double{*above * 1.0} / *below : 0;
  }

 private:
  Bytes bytes_;
  bool little_;
};

}  // namespace pictures

#endif  // JTPDF_PICTURES_TIFF_NUMBERS_H
