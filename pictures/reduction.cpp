#include "reduction.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "formats/samples.h"

namespace pictures {
namespace {

size_t SamplesOf(const Raster& raster) {
  return size_t{raster.width} * raster.height * static_cast<size_t>(raster.channels);
}

bool RepeatsBytes(const Raster& raster) {
  const Bytes bytes = raster.bytes.View();
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    if (bytes[i] != bytes[i + 1]) return false;
  }
  return true;
}

// Of samples of 16 bits, the first byte of each; their rows have no padding.
void Halve(Raster* raster) {
  uint8_t* bytes = raster->bytes.Data();
  for (size_t i = 0; i < SamplesOf(*raster); ++i) bytes[i] = bytes[2 * i];
  raster->bits = 8;
  raster->bytes.Shrink(SamplesOf(*raster));
}

template <size_t size>
bool AllGrey(const Raster& raster) {
  const Bytes bytes = raster.bytes.View();
  for (size_t i = 0; i + 3 * size <= bytes.size(); i += 3 * size) {
    const uint8_t* pixel = &bytes[i];
    if (std::memcmp(pixel, pixel + size, size) != 0 ||
        std::memcmp(pixel, pixel + 2 * size, size) != 0) {
      return false;
    }
  }
  return true;
}

bool IsGrey(const Raster& raster) {
  return raster.channels == 3 &&
         (raster.bits == 8 ? AllGrey<1>(raster) : raster.bits == 16 && AllGrey<2>(raster));
}

void KeepOneChannel(Raster* raster) {
  const auto size = static_cast<size_t>(raster->bits / 8);
  uint8_t* to = raster->bytes.Data();
  const uint8_t* from = to;
  const size_t pixels = size_t{raster->width} * raster->height;
  for (size_t i = 0; i < pixels; ++i, to += size, from += 3 * size) std::memmove(to, from, size);
  raster->channels = 1;
  raster->bytes.Shrink(pixels * size);
}

// Numbers of samples in their own place: each row becomes as short as its bits.
template <typename Number>
void Repack(Raster* raster, int bits, const Number& number) {
  Raster packed;
  packed.width = raster->width;
  packed.height = raster->height;
  packed.bits = bits;
  for (uint32_t y = 0; y < raster->height; ++y) {
    const uint8_t* row = raster->Row(y);
    SampleWriter writer(raster->bytes.Data() + packed.Stride() * y, bits);
    for (size_t x = 0; x < raster->width; ++x) writer.Put(number(row, x));
    writer.Finish();
  }
  raster->bytes.Shrink(packed.Stride() * raster->height);
  raster->bits = bits;
  raster->channels = 1;
}

int BitsFor(size_t colours) {
  return colours <= 2 ? 1 : colours <= 4 ? 2 : colours <= 16 ? 4 : 8;
}

// The fewest bits whose range has all these greys of `bits` bits: of 8 bits, 4 can say the
// multiples of 17.
int BitsOfGreys(const std::array<bool, 256>& seen, int bits) {
  for (int fewer = 1; fewer < bits; fewer *= 2) {
    const unsigned step = MaxSample(bits) / MaxSample(fewer);
    bool all = true;
    for (unsigned grey = 0; grey <= MaxSample(bits); ++grey) {
      all = all && (!seen[grey] || grey % step == 0);
    }
    if (all) return fewer;
  }
  return bits;
}

Samples AsItIs(Raster raster) {
  const Colour colour = ColourOf(raster);
  return {std::move(raster), colour, {}};
}

// Grey of at most 8 bits.
Samples ReduceGrey(Raster raster, bool mayHavePalette) {
  std::array<bool, 256> seen{};
  int bits = 1;
  size_t count = 0;
  for (uint32_t y = 0; y < raster.height; ++y) {
    const uint8_t* row = raster.Row(y);
    for (size_t x = 0; x < raster.width; ++x) seen[SampleAt(row, x, raster.bits)] = true;
    bits = BitsOfGreys(seen, raster.bits);
    count = static_cast<size_t>(std::count(seen.begin(), seen.end(), true));
    if (bits == raster.bits && (BitsFor(count) >= bits || !mayHavePalette)) {
      return AsItIs(std::move(raster));
    }
  }
  const int from = raster.bits;
  if (bits <= BitsFor(count) || !mayHavePalette) {
    const unsigned step = MaxSample(from) / MaxSample(bits);
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): samples do not get more bits than they had
    Repack(&raster, bits, [&](auto* row, size_t x) { return SampleAt(row, x, from) / step; });
    return AsItIs(std::move(raster));
  }
  Samples samples;
  samples.colour = Colour::kGrey;
  samples.palette = Buffer(count);
  std::array<uint8_t, 256> numbers{};
  for (unsigned grey = 0, number = 0; grey < seen.size(); ++grey) {
    if (!seen[grey]) continue;
    numbers[grey] = static_cast<uint8_t>(number);
    samples.palette.Data()[number++] =
        static_cast<uint8_t>(Rescale(grey, from, 8));  // exact: 255 is a multiple of each range
  }
  Repack(&raster, BitsFor(count),
         [&](const uint8_t* row, size_t x) -> unsigned { return numbers[SampleAt(row, x, from)]; });
  samples.raster = std::move(raster);
  return samples;
}

// Up to 256 colours, in the order in which they come.
class ColourTable {
 public:
  static constexpr unsigned kFull = 256;

  // The colour's number; kFull where it is one too many.
  unsigned NumberOf(uint32_t colour) {
    if (count_ != 0 && colour == last_) return lastNumber_;
    size_t slot = (colour * 0x9E37'79B1u) >> 22;
    for (; slots_[slot] != 0; slot = (slot + 1) % slots_.size()) {
      if (colours_[slots_[slot] - 1u] == colour) return Remember(colour, slots_[slot] - 1u);
    }
    if (count_ == kFull) return kFull;
    colours_[count_++] = colour;
    slots_[slot] = static_cast<uint16_t>(count_);
    return Remember(colour, count_ - 1);
  }
  size_t Count() const { return count_; }
  uint32_t Colour(size_t number) const { return colours_[number]; }

 private:
  unsigned Remember(uint32_t colour, unsigned number) {
    last_ = colour;
    return lastNumber_ = number;
  }

  std::array<uint32_t, kFull> colours_{};
  std::array<uint16_t, 1024> slots_{};  // the number of a colour and one more; 0 is free
  unsigned count_ = 0;
  uint32_t last_ = 0;
  unsigned lastNumber_ = 0;
};

uint32_t ColourAt(const uint8_t* pixel) {
  return uint32_t{pixel[0]} << 16 | Be16(pixel + 1);
}

// Three channels of 8 bits.
Samples ReduceColours(Raster raster) {
  ColourTable table;
  const Bytes bytes = raster.bytes.View();
  for (size_t i = 0; i < bytes.size(); i += 3) {
    if (table.NumberOf(ColourAt(&bytes[i])) == ColourTable::kFull) return AsItIs(std::move(raster));
  }
  Samples samples;
  samples.colour = Colour::kRgb;
  samples.palette = Buffer(3 * table.Count());
  for (size_t i = 0; i < table.Count(); ++i) {
    const uint32_t colour = table.Colour(i);
    uint8_t* const to = samples.palette.Data() + 3 * i;
    to[0] = static_cast<uint8_t>(colour >> 16);
    to[1] = static_cast<uint8_t>(colour >> 8);
    to[2] = static_cast<uint8_t>(colour);
  }
  Repack(&raster, BitsFor(table.Count()),
         [&](const uint8_t* row, size_t x) { return table.NumberOf(ColourAt(row + 3 * x)); });
  samples.raster = std::move(raster);
  return samples;
}

// Greys that have to stay colours: in a palette of all of them.
Samples WithRamp(Raster raster) {
  KeepOneChannel(&raster);
  Samples samples;
  samples.colour = Colour::kRgb;
  samples.palette = Buffer(size_t{3} * 256);
  for (size_t i = 0; i < samples.palette.Size(); ++i) {
    samples.palette.Data()[i] = static_cast<uint8_t>(i / 3);
  }
  samples.raster = std::move(raster);
  samples.ramp = true;
  return samples;
}

// How many bits numbers of the greys take, of three equal channels of 8 bits.
int BitsForGreysOf(const Raster& raster) {
  std::array<bool, 256> seen{};
  const Bytes bytes = raster.bytes.View();
  for (size_t i = 0; i < bytes.size(); i += 3) seen[bytes[i]] = true;
  return BitsFor(static_cast<size_t>(std::count(seen.begin(), seen.end(), true)));
}

}  // namespace

Samples Reduce(Raster raster, Purpose purpose) {
  if (raster.bits == 16 && RepeatsBytes(raster)) Halve(&raster);
  const bool grey = IsGrey(raster);
  if (grey && purpose != Purpose::kProfiled) KeepOneChannel(&raster);
  if (raster.channels == 1 && raster.bits <= 8) {
    return ReduceGrey(std::move(raster), purpose != Purpose::kMask);
  }
  if (raster.bits != 8 || raster.channels != 3) return AsItIs(std::move(raster));
  // Greys in their order can be filtered, which numbers in the order of their coming cannot.
  if (grey && BitsForGreysOf(raster) == 8) return WithRamp(std::move(raster));
  return ReduceColours(std::move(raster));
}

}  // namespace pictures
