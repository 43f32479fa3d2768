#include "formats/multi_picture.h"

#include <optional>

#include "formats/tiff_numbers.h"

namespace pictures {
namespace {

// The table of the index, of 16 bytes for each picture.
struct Table {
  uint64_t begin = 0;
  uint32_t pictures = 0;
};

Table FindTable(const TiffNumbers& index) {
  constexpr uint32_t kEntries = 0xB002, kEntrySize = 16;
  const uint64_t directory = index.At32(4).value_or(0);
  const uint32_t count = index.At16(directory).value_or(0);
  for (uint32_t i = 0; i < count; ++i) {
    const uint64_t field = directory + 2 + 12 * uint64_t{i};
    if (index.At16(field) == kEntries) {
      return {index.At32(field + 8).value_or(0), index.At32(field + 4).value_or(0) / kEntrySize};
    }
  }
  return {};
}

// Smaller versions of another picture, for screens.
bool IsPreview(uint32_t attributes) {
  constexpr uint32_t kKind = 0xFFFFFF, kForVga = 0x010001, kForFullHd = 0x010002;
  return (attributes & kKind) == kForVga || (attributes & kKind) == kForFullHd;
}

}  // namespace

std::vector<PicturePlace> FindPictures(Bytes file, Bytes segment) {
  if (!StartsWith(segment, kIndexName)) return {};
  // Numbers as in TIFF, whose offsets count from their begin.
  const Bytes bytes = segment.subspan(kIndexName.size());
  const TiffNumbers index(bytes);
  const auto base = static_cast<uint64_t>(bytes.data() - file.data());
  const Table table = FindTable(index);
  std::vector<PicturePlace> places;
  for (uint32_t i = 0; i < table.pictures; ++i) {
    const uint64_t entry = table.begin + 16 * uint64_t{i};
    const auto attributes = index.At32(entry), size = index.At32(entry + 4),
               offset = index.At32(entry + 8);
    if (!offset) return {};
    // The first one's offset is 0: it begins with the file.
    const uint64_t begin = *offset == 0 ? 0 : base + *offset;
    if (!StartsWith(Slice(file, begin, *size), "\xFF\xD8\xFF")) return {};
    if (!IsPreview(*attributes)) places.push_back({begin, *size});
  }
  return places;
}

}  // namespace pictures
