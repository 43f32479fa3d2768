#include "formats/png_animation.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "formats/samples.h"

namespace pictures {
namespace {

PngFrame ReadControl(Bytes data, const PngFacts& facts) {
  constexpr size_t kSize = 26;
  if (data.size() != kSize) throw Damaged("a frame of its animation is not described");
  PngFrame frame;
  Canvas::Area& area = frame.area;
  area = {Be32(&data[12]), Be32(&data[16]), Be32(&data[4]), Be32(&data[8])};
  if (area.width == 0 || area.height == 0 || uint64_t{area.left} + area.width > facts.width ||
      uint64_t{area.top} + area.height > facts.height) {
    throw Damaged("a frame of its animation lies outside of the picture");
  }
  const uint8_t disposal = data[24];
  frame.disposal = disposal == 1   ? Canvas::Disposal::kIsCleared
                   : disposal == 2 ? Canvas::Disposal::kUncovers
                                   : Canvas::Disposal::kStays;
  frame.over = data[25] == 1;
  return frame;
}

// Appends a chunk with its checksum.
void PutChunk(std::string_view name, std::span<const Bytes> data, uint8_t** to) {
  PutBe32(static_cast<uint32_t>(TotalSize(data)), to);
  const uint8_t* const begin = *to;
  *to = std::copy(name.begin(), name.end(), *to);
  for (const Bytes piece : data) *to = std::copy(piece.begin(), piece.end(), *to);
  PutBe32(libdeflate_crc32(0, begin, static_cast<size_t>(*to - begin)), to);
}

// One or three colours, as they are without their opacity.
struct Pixel {
  size_t colours = 0;
  std::array<unsigned, 3> colour{};
  unsigned opacity = 0;
};

Pixel PixelAt(const DecodedImage& image, uint32_t x, uint32_t y, int bits) {
  const Raster& stored = image.pixels;
  Pixel pixel{static_cast<size_t>(stored.channels), {}, MaxSample(bits)};
  for (size_t c = 0; c < pixel.colours; ++c) {
    const unsigned sample = SampleAt(stored.Row(y), x * pixel.colours + c, stored.bits);
    pixel.colour[c] = Rescale(sample, stored.bits, bits);
  }
  if (image.alpha) {
    const unsigned sample = SampleAt(image.alpha->Row(y), x, image.alpha->bits);
    pixel.opacity = Rescale(sample, image.alpha->bits, bits);
  }
  return pixel;
}

// Pixels of a canvas.
Pixel LoadPixel(const uint8_t* at, size_t colours, int bits) {
  Pixel pixel{colours, {}, SampleAt(at, colours, bits)};
  for (size_t c = 0; c < colours; ++c) pixel.colour[c] = SampleAt(at, c, bits);
  return pixel;
}

void StorePixel(const Pixel& pixel, int bits, uint8_t* at) {
  SampleWriter to(at, bits);
  for (size_t c = 0; c < pixel.colours; ++c) to.Put(pixel.colour[c]);
  to.Put(pixel.opacity);
}

Pixel LayOver(const Pixel& above, Pixel below, unsigned most) {
  const uint64_t upper = uint64_t{above.opacity} * most;
  const uint64_t lower = uint64_t{below.opacity} * (most - above.opacity);
  const uint64_t both = upper + lower;
  if (both == 0) return below;
  for (size_t c = 0; c < above.colours; ++c) {
    below.colour[c] = static_cast<unsigned>(
        (above.colour[c] * upper + below.colour[c] * lower + both / 2) / both);
  }
  below.opacity = static_cast<unsigned>((both + most / 2) / most);
  return below;
}

}  // namespace

std::vector<PngFrame> ReadPngFrames(Bytes file, const PngFacts& facts) {
  constexpr size_t kSequenceNumber = 4;
  std::vector<PngFrame> frames;
  PngChunks chunks(file);
  while (chunks.Next()) {
    const auto& [name, data] = chunks.Get();
    if (name == "fcTL") frames.push_back(ReadControl(data, facts));
    if (name == "IDAT" && !frames.empty()) frames.back().data.push_back(data);
    if (name == "fdAT" && !frames.empty() && data.size() >= kSequenceNumber) {
      frames.back().data.push_back(data.subspan(kSequenceNumber));
    }
  }
  for (const PngFrame& frame : frames) {
    if (TotalSize(frame.data) == 0) throw Damaged("a frame of its animation has no pixels");
  }
  return frames;
}

Buffer MakePngFile(const PngFacts& facts, const PngFrame& frame) {
  constexpr size_t kChunk = 12, kHeader = 13;
  Buffer made(kPngSignature.size() + 5 * kChunk + kHeader + facts.palette.size() +
              facts.transparency.size() + TotalSize(frame.data));
  uint8_t* to = std::copy(kPngSignature.begin(), kPngSignature.end(), made.Data());
  uint8_t header[kHeader];
  uint8_t* field = header;
  PutBe32(frame.area.width, &field);
  PutBe32(frame.area.height, &field);
  const uint8_t kind[] = {static_cast<uint8_t>(facts.depth), static_cast<uint8_t>(facts.type), 0, 0,
                          static_cast<uint8_t>(facts.interlaced ? 1 : 0)};
  std::copy(std::begin(kind), std::end(kind), field);
  const Bytes headers[] = {Bytes(header)};
  PutChunk("IHDR", headers, &to);
  if (!facts.palette.empty()) PutChunk("PLTE", {&facts.palette, 1}, &to);
  if (!facts.transparency.empty()) PutChunk("tRNS", {&facts.transparency, 1}, &to);
  PutChunk("IDAT", frame.data, &to);
  PutChunk("IEND", {}, &to);
  made.Shrink(static_cast<size_t>(to - made.Data()));
  return made;
}

void DrawPngFrame(const PngFrame& frame, const DecodedImage& image, Canvas* canvas) {
  canvas->Begin(frame.area, frame.disposal);
  const int bits = canvas->Bits();
  for (uint32_t y = 0; y < image.pixels.height; ++y) {
    for (uint32_t x = 0; x < image.pixels.width; ++x) {
      uint8_t* const at = canvas->At(frame.area.left + x, frame.area.top + y);
      Pixel pixel = PixelAt(image, x, y, bits);
      if (frame.over) {
        pixel = LayOver(pixel, LoadPixel(at, pixel.colours, bits), MaxSample(bits));
      }
      StorePixel(pixel, bits, at);
    }
  }
}

}  // namespace pictures
