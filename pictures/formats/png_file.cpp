#include "formats/png_file.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <string>

#include "image.h"
#include "mapped_file.h"

namespace pictures {
namespace {

[[noreturn]] void ThrowDamaged(const std::string& what) {
  throw ImageError("is damaged: " + what + "; copy it again from its source, or save it again");
}

bool KnowsDepth(int type, int depth) {
  constexpr unsigned kDepths[] = {1 << 1 | 1 << 2 | 1 << 4 | 1 << 8 | 1 << 16,
                                  0,
                                  1 << 8 | 1 << 16,
                                  1 << 1 | 1 << 2 | 1 << 4 | 1 << 8,
                                  1 << 8 | 1 << 16,
                                  0,
                                  1 << 8 | 1 << 16};
  return type <= 6 && depth <= 16 && (kDepths[type] >> depth & 1) != 0;
}

void ReadHeader(const PngChunk& chunk, PngFacts* facts) {
  if (chunk.name != "IHDR" || chunk.data.size() != 13) {
    ThrowDamaged("a PNG file must begin with its header");
  }
  const Bytes data = chunk.data;
  facts->width = Be32(&data[0]);
  facts->height = Be32(&data[4]);
  facts->depth = data[8];
  facts->type = data[9];
  facts->interlaced = data[12] == 1;
  if (!KnowsDepth(facts->type, facts->depth) || data[10] != 0 || data[11] != 0 || data[12] > 1) {
    ThrowDamaged("its header names a kind of pixels that PNG does not have");
  }
}

}  // namespace

bool PngChunks::Next() {
  if (chunk_.name == "IEND") return false;
  const Bytes head = Slice(file_, at_, 8);
  const Bytes data = head.empty() ? Bytes{} : Slice(file_, at_ + 8, Be32(head.data()));
  if (head.empty() || data.size() != Be32(head.data()) ||
      Slice(file_, at_ + 8 + data.size(), 4).empty()) {
    throw CutOff();
  }
  chunk_ = {{reinterpret_cast<const char*>(&head[4]), 4}, data};
  at_ += 12 + data.size();
  constexpr uint64_t kAtOnce = uint64_t{8} << 20;
  if (at_ - forgotten_ > kAtOnce) {
    MappedFile::ForgetLarge();
    forgotten_ = at_;
  }
  return true;
}

void PngChunks::CheckSum() const {
  constexpr size_t kAtOnce = size_t{8} << 20;
  const Bytes sum = file_.subspan(at_ - 4, 4);
  Bytes rest = file_.subspan(at_ - 8 - chunk_.data.size(), chunk_.data.size() + 4);
  uint32_t crc = 0;
  while (!rest.empty()) {
    const Bytes part = rest.first(std::min(kAtOnce, rest.size()));
    crc = libdeflate_crc32(crc, part.data(), part.size());
    rest = rest.subspan(part.size());
    if (!rest.empty()) MappedFile::ForgetLarge();
  }
  if (crc != Be32(sum.data())) {
    std::string name(chunk_.name);
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    ThrowDamaged("the checksum of its chunk " + name + " is wrong");
  }
}

PngFacts ReadPngFacts(Bytes file) {
  PngFacts facts;
  PngChunks chunks(file);
  chunks.Next();
  ReadHeader(chunks.Get(), &facts);
  while (chunks.Next()) {
    const auto& [name, data] = chunks.Get();
    if (name == "PLTE") facts.palette = data;
    if (name == "tRNS") facts.transparency = data;
    if (name == "pHYs") facts.density = data;
    if (name == "iCCP") facts.profile = data;
    if (name == "eXIf") facts.exif = data;
    if (name == "acTL" && data.size() == 8 && facts.dataSize == 0) {
      facts.frames = Be32(data.data());
    }
    if (name == "IDAT") facts.dataSize += data.size();
  }
  if (facts.dataSize == 0)
    throw ImageError("is a PNG file without pixels; save or export it again");
  const size_t colours = facts.palette.size() / 3;
  if (facts.IsPalette() && (colours == 0 || colours > 256 || facts.palette.size() % 3 != 0)) {
    ThrowDamaged("it has no palette, or one that is none");
  }
  return facts;
}

std::vector<Bytes> WholePngData(Bytes file) {
  std::vector<Bytes> data;
  std::array<uint8_t, 2> head{};
  size_t headSize = 0;
  PngChunks chunks(file);
  while (chunks.Next()) {
    chunks.CheckSum();
    if (chunks.Get().name != "IDAT" || chunks.Get().data.empty()) continue;
    for (const uint8_t byte : chunks.Get().data) {
      if (headSize == head.size()) break;
      head[headSize++] = byte;
    }
    data.push_back(chunks.Get().data);
  }
  // RFC 1950, 2.2: deflate, a window of at most 32 KB, no dictionary, and a remainder of 0.
  const bool isZlib = (head[0] & 0x0F) == 8 && head[0] <= 0x78 && (head[1] & 0x20) == 0 &&
                      Be16(head.data()) % 31 == 0;
  if (!isZlib) ThrowDamaged("its pixels are not compressed as PNG has it");
  return data;
}

}  // namespace pictures
