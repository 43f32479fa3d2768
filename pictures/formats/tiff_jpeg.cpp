#include "formats/tiff_jpeg.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>
#include <utility>

#include "formats/jpeg_segments.h"

namespace pictures {
namespace {

using namespace std::string_view_literals;

// Tables one by one, for a segment may hold several: by their segment's marker and their number
// there. Equal where they say the same.
using Tables = std::map<std::pair<uint8_t, uint8_t>, std::vector<uint8_t>>;

struct Strip {
  Tables tables;
  uint8_t frame = 0;
  Bytes sof;
  Bytes scanHeader;
  Bytes data;  // up to the end marker
  uint32_t restartInterval = 0;
};

// The size of the table at the begin of a segment's rest; 0 for none.
size_t TableSize(uint8_t marker, Bytes rest) {
  if (marker == kDqt) return rest[0] < 16 ? 65 : 129;
  if (rest.size() < 17) return 0;
  size_t size = 17;
  for (size_t i = 1; i < 17; ++i) size += rest[i];
  return size;
}

bool AddTables(uint8_t marker, Bytes segment, Tables* tables) {
  while (!segment.empty()) {
    const Bytes table = Slice(segment, 0, TableSize(marker, segment));
    if (table.empty()) return false;
    const auto number = static_cast<uint8_t>(marker == kDqt ? table[0] % 16 : table[0]);
    (*tables)[{marker, number}].assign(table.begin(), table.end());
    segment = segment.subspan(table.size());
  }
  return true;
}

// Reads the segments up to the first scan, if there is one. False where they are not understood.
bool ReadSegments(Bytes jpeg, Strip* strip) {
  if (!StartsWith(jpeg, "\xFF\xD8"sv)) return false;
  JpegSegments segments(jpeg);
  while (segments.Next()) {
    const Bytes data = segments.data;
    if (segments.marker == kDqt || segments.marker == kDht) {
      if (!AddTables(segments.marker, data, &strip->tables)) return false;
    } else if (segments.marker == kDri) {
      if (data.size() != 2) return false;
      strip->restartInterval = Be16(data.data());
    } else if (segments.marker == kSos) {
      strip->scanHeader = data;
      strip->data = jpeg.subspan(segments.Position());
    } else if (IsFrame(segments.marker)) {
      if (strip->frame != 0) return false;
      strip->frame = segments.marker;
      strip->sof = data;
    }
  }
  return segments.stray == 0;
}

// The strip up to its end, which stands at the end of its bytes as a rule.
bool FindData(Bytes jpeg, Strip* strip) {
  if (strip->data.size() >= 2 && Be16(&jpeg[jpeg.size() - 2]) == 0xFFD9) {
    strip->data = strip->data.first(strip->data.size() - 2);
    return true;
  }
  const auto end = FindJpegEnd(jpeg, jpeg.size() - strip->data.size());
  if (!end) return false;
  strip->data = strip->data.first(strip->data.size() - (jpeg.size() - *end) - 2);
  return true;
}

bool ReadStrip(const JpegStrips& page, const Strip& shared, Bytes jpeg, Strip* strip) {
  strip->tables = shared.tables;
  strip->restartInterval = shared.restartInterval;
  const auto components = static_cast<size_t>(page.components);
  return ReadSegments(jpeg, strip) && FindData(jpeg, strip) && strip->frame >= kSof0 &&
         strip->frame <= kSof2 && strip->sof.size() == 6 + 3 * components && strip->sof[0] == 8 &&
         strip->sof[5] == components && Be16(&strip->sof[3]) == page.width &&
         !strip->scanHeader.empty();
}

// Blocks that are coded together: one of a single component, else as many as sampling makes.
struct McuSize {
  uint32_t width = 8;
  uint32_t height = 8;
};

McuSize McuOf(Bytes sof) {
  McuSize size;
  if (sof[5] == 1) return size;
  for (size_t at = 7; at < sof.size(); at += 3) {
    size.width = std::max(size.width, 8u * (sof[at] >> 4));
    size.height = std::max(size.height, 8u * (sof[at] & 15u));
  }
  return size;
}

uint32_t CeilDivide(uint32_t a, uint32_t b) {
  return a / b + (a % b != 0 ? 1 : 0);
}

bool SameButHeight(Bytes a, Bytes b) {
  return a.size() == b.size() && a[0] == b[0] && std::equal(a.begin() + 3, a.end(), b.begin() + 3);
}

// Whether each strip is a part of the first one's scan, with as many blocks as its rows take.
bool FitTogether(const JpegStrips& page, const std::vector<Strip>& strips) {
  const Strip& first = strips[0];
  const McuSize mcu = McuOf(first.sof);
  const bool several = strips.size() > 1;
  // A scan of all components, so that nothing is behind it.
  if (several && (first.frame == kSof2 || first.scanHeader[0] != page.components ||
                  page.rowsPerStrip % mcu.height != 0)) {
    return false;
  }
  for (size_t i = 0; i < strips.size(); ++i) {
    const Strip& strip = strips[i];
    const uint32_t above = static_cast<uint32_t>(i) * page.rowsPerStrip;
    const uint32_t rows = std::min(page.rowsPerStrip, page.height - above);
    if (!SameButHeight(strip.sof, first.sof) || strip.frame != first.frame ||
        !Equal(strip.scanHeader, first.scanHeader) || strip.tables != first.tables ||
        (several && strip.restartInterval != 0) ||
        CeilDivide(Be16(&strip.sof[1]), mcu.height) != CeilDivide(rows, mcu.height)) {
      return false;
    }
  }
  return true;
}

class HeadWriter {
 public:
  void Marker(uint8_t marker) {
    bytes_.push_back(0xFF);
    bytes_.push_back(marker);
  }
  void Segment(uint8_t marker, Bytes data) {
    Marker(marker);
    Number(static_cast<uint32_t>(data.size() + 2));
    bytes_.insert(bytes_.end(), data.begin(), data.end());
  }
  void Number(uint32_t value) {
    bytes_.push_back(static_cast<uint8_t>(value >> 8));
    bytes_.push_back(static_cast<uint8_t>(value));
  }
  Bytes View() const { return bytes_; }

 private:
  std::vector<uint8_t> bytes_;
};

Buffer MakeHead(const JpegStrips& page, const Strip& strip, uint32_t restartInterval) {
  HeadWriter head;
  head.Marker(kSoi);
  if (page.components == 3) {  // else decoders guess what the components are
    std::array<uint8_t, 12> adobe{'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, 0};
    adobe[11] = page.ycc ? 1 : 0;
    head.Segment(kApp14, adobe);
  }
  for (const auto& [key, table] : strip.tables) head.Segment(key.first, table);
  std::vector<uint8_t> sof(strip.sof.begin(), strip.sof.end());
  sof[1] = static_cast<uint8_t>(page.height >> 8);
  sof[2] = static_cast<uint8_t>(page.height);
  head.Segment(strip.frame, sof);
  if (restartInterval != 0) {
    head.Marker(kDri);
    head.Number(4);
    head.Number(restartInterval);
  }
  head.Segment(kSos, strip.scanHeader);
  return Buffer::CopyOf(head.View());
}

constexpr std::array<uint8_t, 16> kRestarts{0xFF, 0xD0, 0xFF, 0xD1, 0xFF, 0xD2, 0xFF, 0xD3,
                                            0xFF, 0xD4, 0xFF, 0xD5, 0xFF, 0xD6, 0xFF, 0xD7};
constexpr std::array<uint8_t, 2> kEnd{0xFF, kEoi};

bool ReadStrips(const JpegStrips& page, std::vector<Strip>* strips) {
  constexpr uint32_t kMost = 0xFFFF;
  if (page.height > kMost || page.width > kMost || page.rowsPerStrip == 0 || page.strips.empty() ||
      page.strips.size() != CeilDivide(page.height, page.rowsPerStrip)) {
    return false;
  }
  Strip shared;
  if (!page.tables.empty() && !ReadSegments(page.tables, &shared)) return false;
  if (shared.frame != 0 || !shared.scanHeader.empty()) return false;
  strips->resize(page.strips.size());
  for (size_t i = 0; i < strips->size(); ++i) {
    if (!ReadStrip(page, shared, page.strips[i], &(*strips)[i])) return false;
  }
  return FitTogether(page, *strips);
}

}  // namespace

std::optional<JoinedJpeg> JoinJpegStrips(const JpegStrips& page) {
  std::vector<Strip> strips;
  try {
    if (!ReadStrips(page, &strips)) return std::nullopt;
  } catch (const ImageError&) {  // a segment that is cut off
    return std::nullopt;
  }
  const McuSize mcu = McuOf(strips[0].sof);
  uint64_t interval = strips[0].restartInterval;
  if (strips.size() > 1) {
    interval = uint64_t{CeilDivide(page.width, mcu.width)} * (page.rowsPerStrip / mcu.height);
    if (interval > 0xFFFF) return std::nullopt;
  }
  JoinedJpeg joined;
  joined.head = MakeHead(page, strips[0], static_cast<uint32_t>(interval));
  joined.pieces.push_back(joined.head.View());
  for (size_t i = 0; i < strips.size(); ++i) {
    if (i > 0) joined.pieces.push_back(Bytes(kRestarts).subspan((i - 1) % 8 * 2, 2));
    joined.pieces.push_back(strips[i].data);
  }
  joined.pieces.push_back(kEnd);
  return joined;
}

}  // namespace pictures
