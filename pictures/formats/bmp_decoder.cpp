// bmp_decoder.cpp - BMP: Windows' bitmaps and OS/2's, of every depth, plain and run-length coded.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string>
#include <utility>

#include "formats/decoder.h"
#include "formats/icc.h"
#include "formats/samples.h"

namespace pictures {
namespace {

uint32_t Le16(const uint8_t* at) {
  return uint32_t{at[1]} << 8 | at[0];
}
uint32_t Le32(const uint8_t* at) {
  return Le16(at + 2) << 16 | Le16(at);
}

enum class Coding { kPlain, kRle8, kRle4 };

// The bits of a pixel that hold one of its samples.
struct Mask {
  uint32_t bits = 0;

  int Size() const { return std::popcount(bits); }
  bool IsOneRun() const { return bits == 0 || std::has_single_bit((bits >> Shift()) + 1); }
  int Shift() const { return bits == 0 ? 0 : std::countr_zero(bits); }
  unsigned Of(uint32_t pixel, int depth) const {
    if (bits == 0) return 0;
    return Rescale((pixel & bits) >> Shift(), std::min(Size(), 16), depth);
  }
};

struct BmpFacts {
  uint32_t width = 0;
  uint32_t height = 0;
  bool fromTop = false;
  int bits = 0;  // of a pixel
  Coding coding = Coding::kPlain;
  std::array<Mask, 4> masks;  // red, green, blue, alpha; for pixels of 16 bits and more
  Resolution resolution;
  size_t entrySize = 4;  // of the palette
  Bytes palette;
  Bytes pixels;
  Bytes profile;

  bool HasPalette() const { return bits <= 8; }
  bool HasAlpha() const { return masks[3].bits != 0; }
  // Of a sample, when it is decoded.
  int Depth() const {
    const auto isDeep = [](const Mask& mask) { return mask.Size() > 8; };
    return std::any_of(masks.begin(), masks.end(), isDeep) ? 16 : 8;
  }
  uint64_t Stride() const { return (uint64_t{width} * static_cast<unsigned>(bits) + 31) / 32 * 4; }
};

// The masks of a header that names some, else the usual ones.
void ReadMasks(Bytes file, uint32_t headerSize, uint32_t compression, BmpFacts* facts) {
  constexpr uint32_t kBitfields = 3, kAlphaBitfields = 6;
  if (facts->bits == 16) facts->masks = {Mask{0x7C00}, {0x03E0}, {0x001F}, {}};
  if (facts->bits >= 24) facts->masks = {Mask{0xFF0000}, {0x00FF00}, {0x0000FF}, {}};
  if (compression != kBitfields && compression != kAlphaBitfields) return;
  const size_t count = headerSize >= 56 || compression == kAlphaBitfields ? 4 : 3;
  const Bytes masks = Slice(file, 14 + 40, 4 * count);
  if (masks.empty()) throw CutOff();
  for (size_t i = 0; i < count; ++i) {
    facts->masks[i] = {Le32(&masks[4 * i])};
    const bool fits = facts->bits == 32 || facts->masks[i].bits >> facts->bits == 0;
    if (!facts->masks[i].IsOneRun() || facts->masks[i].Size() > 16 || !fits) {
      throw Damaged("its header names bits of a pixel that no sample has");
    }
  }
}

void ReadCoding(uint32_t compression, bool isOs2, BmpFacts* facts) {
  constexpr uint32_t kRle8 = 1, kRle4 = 2, kBitfields = 3, kAlphaBitfields = 6;
  const int bits = facts->bits;
  const bool knownBits =
      bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
  if (!knownBits) throw Damaged("its header names a depth that BMP does not have");
  if (compression == 0) return;
  if (compression == kRle8 && bits == 8) {
    facts->coding = Coding::kRle8;
  } else if (compression == kRle4 && bits == 4) {
    facts->coding = Coding::kRle4;
  } else if ((compression != kBitfields && compression != kAlphaBitfields) || isOs2 ||
             (bits != 16 && bits != 32)) {
    throw ImageError("has a BMP compression that is not known here (" +
                     std::to_string(compression) + "); save it without, or as PNG");
  }
}

void ReadInfo(Bytes file, Bytes info, BmpFacts* facts) {
  const auto headerSize = static_cast<uint32_t>(info.size());
  const bool isOs2 = headerSize == 64;
  const uint32_t width = Le32(&info[4]), height = Le32(&info[8]);
  facts->fromTop = height >> 31 != 0;
  facts->width = width;
  facts->height = facts->fromTop ? 0 - height : height;
  facts->bits = static_cast<int>(Le16(&info[14]));
  const uint32_t compression = headerSize >= 20 ? Le32(&info[16]) : 0;
  ReadCoding(compression, isOs2, facts);
  if (headerSize >= 32) facts->resolution = PerMetre(Le32(&info[24]), Le32(&info[28]));
  ReadMasks(file, headerSize, compression, facts);
  constexpr uint32_t kV5 = 124, kEmbedded = 0x4D424544;
  if (headerSize >= kV5 && Le32(&info[56]) == kEmbedded) {
    facts->profile = Slice(file, 14 + uint64_t{Le32(&info[112])}, Le32(&info[116]));
  }
}

BmpFacts ReadBmpHeader(Bytes file) {
  constexpr size_t kFileHeader = 14, kCoreHeader = 12;
  BmpFacts facts;
  const Bytes size = Slice(file, kFileHeader, 4);
  if (size.empty()) throw CutOff();
  const uint32_t headerSize = Le32(size.data());
  if (headerSize != kCoreHeader && (headerSize < 16 || headerSize > 1024)) {
    throw Damaged("its header has no size that BMP knows");
  }
  const Bytes info = Slice(file, kFileHeader, headerSize);
  if (info.empty()) throw CutOff();
  if (headerSize == kCoreHeader) {
    facts.width = Le16(&info[4]);
    facts.height = Le16(&info[6]);
    facts.bits = static_cast<int>(Le16(&info[10]));
    facts.entrySize = 3;
    ReadCoding(0, false, &facts);
    ReadMasks(file, headerSize, 0, &facts);
  } else {
    ReadInfo(file, info, &facts);
  }
  const uint32_t pixelsAt = Le32(&file[10]);
  if (pixelsAt >= file.size()) throw CutOff();
  facts.pixels = file.subspan(pixelsAt);
  // What lies between the header and the pixels, of as many colours as pixels can name.
  const size_t paletteAt = kFileHeader + headerSize;
  if (facts.HasPalette() && pixelsAt > paletteAt) {
    const size_t most = facts.entrySize << facts.bits;
    facts.palette = file.subspan(paletteAt, std::min<size_t>(pixelsAt - paletteAt, most));
  }
  return facts;
}

std::vector<ImagePlan> PlanBmp(Bytes file, const ReadLimits& limits) {
  const BmpFacts facts = ReadBmpHeader(file);
  ImagePlan plan;
  plan.format = Format::kBmp;
  plan.width = facts.width;
  plan.height = facts.height;
  CheckSize(plan.width, plan.height, limits);
  if (facts.coding == Coding::kPlain && facts.Stride() * facts.height > facts.pixels.size()) {
    // The padding of the last row may be missing.
    const uint64_t last = (uint64_t{facts.width} * static_cast<unsigned>(facts.bits) + 7) / 8;
    if (facts.Stride() * (facts.height - 1) + last > facts.pixels.size()) throw CutOff();
  }
  plan.depth = facts.HasPalette() ? facts.bits : facts.Depth();
  plan.colour = Colour::kRgb;
  plan.palette = facts.HasPalette();
  plan.alpha = facts.HasAlpha();
  plan.resolution = facts.resolution;
  plan.decodeReason = "BMP, which PDF does not know";
  const int channels = facts.HasAlpha() ? 4 : 3;
  const int indices = facts.coding == Coding::kPlain ? 0 : 1;
  const int bytes = channels * facts.Depth() / 8 + indices;  // of a pixel
  SetMemory(static_cast<double>(plan.width) * plan.height * bytes, limits, &plan);
  JudgeProfile(&plan, facts.profile);
  return OnlyPage(std::move(plan));
}

// Undoes the run-length coding: a byte for each pixel, from the lowest row on.
class RleReader {
 public:
  explicit RleReader(const BmpFacts& facts)
      : facts_(facts), rest_(facts.pixels), indices_(size_t{facts.width} * facts.height) {
    std::memset(indices_.Data(), 0, indices_.Size());  // what is skipped has colour 0
  }

  Buffer Read() {
    while (y_ < facts_.height) {
      const uint8_t count = Take(), value = Take();
      if (count > 0) {
        for (unsigned i = 0; i < count; ++i) Put(Part(value, i));
      } else if (value == 0) {
        x_ = 0;
        ++y_;
      } else if (value == 1) {
        break;
      } else if (value == 2) {
        x_ += Take();
        y_ += Take();
      } else {
        TakeLiteral(value);
      }
    }
    return std::move(indices_);
  }

 private:
  uint8_t Take() {
    if (rest_.empty()) throw CutOff();
    const uint8_t byte = rest_.front();
    rest_ = rest_.subspan(1);
    return byte;
  }
  // Of runs of four bits the two halves of a byte take turns.
  unsigned Part(uint8_t value, unsigned i) const {
    if (facts_.coding == Coding::kRle8) return value;
    return i % 2 == 0 ? value >> 4 : value & 15;
  }
  void Put(unsigned index) {
    if (x_ >= facts_.width) throw Damaged("a run of its pixels is longer than a row");
    indices_.Data()[size_t{facts_.width} * y_ + x_++] = static_cast<uint8_t>(index);
  }
  void TakeLiteral(unsigned count) {
    const unsigned bytes = facts_.coding == Coding::kRle8 ? count : (count + 1) / 2;
    uint8_t byte = 0;
    for (unsigned i = 0; i < count; ++i) {
      if (facts_.coding == Coding::kRle8 || i % 2 == 0) byte = Take();
      Put(Part(byte, i));
    }
    if (bytes % 2 != 0) Take();
  }

  const BmpFacts& facts_;
  Bytes rest_;
  Buffer indices_;
  uint32_t x_ = 0;
  uint64_t y_ = 0;
};

class PixelConverter {
 public:
  explicit PixelConverter(const BmpFacts& facts) : facts_(facts) {
    for (size_t i = 0; (i + 1) * facts.entrySize <= facts.palette.size(); ++i) {
      const uint8_t* entry = &facts.palette[i * facts.entrySize];
      colours_[i] = {entry[2], entry[1], entry[0]};
    }
  }

  DecodedImage Convert() {
    DecodedImage image;
    const int depth = facts_.Depth();
    image.pixels = Raster(facts_.width, facts_.height, depth, 3);
    if (facts_.HasAlpha()) image.alpha.emplace(facts_.width, facts_.height, depth, 1);
    Buffer indices;
    if (facts_.coding != Coding::kPlain) indices = RleReader(facts_).Read();
    for (uint32_t y = 0; y < facts_.height; ++y) {
      const uint32_t stored = facts_.fromTop ? y : facts_.height - 1 - y;
      const uint8_t* row = indices.Empty() ? facts_.pixels.data() + facts_.Stride() * stored
                                           : indices.Data() + size_t{facts_.width} * stored;
      if (facts_.HasPalette()) {
        FromPalette(row, indices.Empty() ? facts_.bits : 8, image.pixels.Row(y));
      } else if (facts_.bits == 24) {
        FromBytes(row, image.pixels.Row(y));
      } else {
        FromMasks(row, y, &image);
      }
    }
    return image;
  }

 private:
  void FromPalette(const uint8_t* row, int bits, uint8_t* to) const {
    for (uint32_t x = 0; x < facts_.width; ++x, to += 3) {
      std::memcpy(to, colours_[SampleAt(row, x, bits)].data(), 3);
    }
  }
  void FromBytes(const uint8_t* row, uint8_t* to) const {
    for (uint32_t x = 0; x < facts_.width; ++x, row += 3, to += 3) {
      to[0] = row[2];
      to[1] = row[1];
      to[2] = row[0];
    }
  }
  void FromMasks(const uint8_t* row, uint32_t y, DecodedImage* image) const {
    const int depth = image->pixels.bits;
    SampleWriter pixels(image->pixels.Row(y), depth);
    SampleWriter alpha(image->alpha ? image->alpha->Row(y) : nullptr, depth);
    for (uint32_t x = 0; x < facts_.width; ++x, row += facts_.bits / 8) {
      const uint32_t pixel = facts_.bits == 16 ? Le16(row) : Le32(row);
      for (size_t c = 0; c < 3; ++c) pixels.Put(facts_.masks[c].Of(pixel, depth));
      if (image->alpha) alpha.Put(facts_.masks[3].Of(pixel, depth));
    }
  }

  const BmpFacts& facts_;
  std::array<std::array<uint8_t, 3>, 256> colours_{};
};

DecodedImage DecodeBmp(const ImagePlan&, Bytes file, std::vector<Note>*) {
  const BmpFacts facts = ReadBmpHeader(file);
  return PixelConverter(facts).Convert();
}

Buffer BmpProfile(const ImagePlan&, Bytes file) {
  return Buffer::CopyOf(ReadBmpHeader(file).profile);
}

// A word that begins many texts is not enough: the header's size is looked at, too.
bool IsBmp(Bytes head) {
  if (!StartsWith(head, "BM") || head.size() < 18) return false;
  const uint32_t headerSize = Le32(&head[14]);
  return headerSize >= 12 && headerSize <= 1024;
}

}  // namespace

const Decoder kBmpDecoder{Format::kBmp, "BMP", IsBmp, PlanBmp, DecodeBmp, BmpProfile, nullptr};

}  // namespace pictures
