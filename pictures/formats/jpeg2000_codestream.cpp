#include "formats/jpeg2000_codestream.h"

#include <algorithm>
#include <string>
#include <vector>

#include "image.h"

namespace pictures {
namespace {

enum Marker : uint32_t {
  kSiz = 0xFF51,
  kCap = 0xFF50,
  kCod = 0xFF52,
  kQcd = 0xFF5C,
  kSot = 0xFF90,
  kEoc = 0xFFD9
};

void Require(bool good, const char* what) {
  if (!good) throw Damaged(std::string("its JPEG 2000 header has ") + what);
}

uint64_t CeilDivide(uint64_t a, uint64_t b) {
  return (a + b - 1) / b;
}

// The tiles that cover one direction of the picture, from its own sizes and those of the tiles.
uint64_t TilesAcross(uint32_t end, uint32_t begin, uint32_t tile, uint32_t tileBegin) {
  Require(begin < end, "a picture without pixels");
  Require(tile > 0 && tileBegin <= begin && uint64_t{tileBegin} + tile > begin,
          "tiles that are not where the picture is");
  return CeilDivide(uint64_t{end} - tileBegin, tile);
}

void ReadSize(Bytes siz, Jpeg2000Codestream* stream) {
  Require(siz.size() >= 36, "no size");
  const uint8_t* d = siz.data();
  stream->extended = (d[0] & 0xC0) != 0;
  const uint32_t right = Be32(d + 2), bottom = Be32(d + 6), left = Be32(d + 10), top = Be32(d + 14);
  const uint64_t tiles = TilesAcross(right, left, Be32(d + 18), Be32(d + 26)) *
                         TilesAcross(bottom, top, Be32(d + 22), Be32(d + 30));
  Require(tiles <= 65535, "more than 65535 tiles");
  stream->tiles = static_cast<uint32_t>(tiles);
  stream->width = right - left;
  stream->height = bottom - top;
  stream->components = static_cast<int>(Be16(d + 34));
  const Bytes list = siz.subspan(36);
  Require(stream->components > 0 && list.size() == 3 * static_cast<size_t>(stream->components),
          "other components than it counts");
  stream->precision = list[0];
  for (size_t i = 0; i < list.size(); i += 3) {
    const uint32_t across = list[i + 1], down = list[i + 2];
    const int depth = (list[i] & 0x7F) + 1;
    Require(across > 0 && down > 0 && CeilDivide(right, across) > CeilDivide(left, across) &&
                CeilDivide(bottom, down) > CeilDivide(top, down),
            "a component without samples");
    Require(depth <= 38, "samples of more than 38 bits");
    stream->uniform =
        stream->uniform && list[i] == list[0] && list[i] < 0x80 && across == 1 && down == 1;
    if (list[i] != list[0]) stream->precision = 255;
    stream->depth = std::max(stream->depth, depth);
  }
}

// The coding style; gives the number of decomposition levels.
size_t ReadStyle(Bytes cod, Jpeg2000Codestream* stream) {
  Require(cod.size() >= 10, "no whole coding style");
  const size_t levels = cod[5];
  const bool precincts = (cod[0] & 1) != 0;
  Require(cod[1] <= 4 && Be16(&cod[2]) > 0 && (cod[4] <= 1 || stream->extended) && levels <= 32 &&
              cod[6] <= 8 && cod[7] <= 8 && cod[6] + cod[7] <= 8 && cod[8] < 0x80 && cod[9] <= 1,
          "a coding style that there is not");
  Require(cod.size() == 10 + (precincts ? levels + 1 : 0), "other precincts than levels");
  stream->extended = stream->extended || (cod[8] & 0x40) != 0;
  for (size_t i = 11; i < cod.size(); ++i) {
    Require(cod[i] % 16 != 0 && cod[i] / 16 != 0, "precincts without size");
  }
  return levels;
}

void CheckQuantisation(Bytes qcd, size_t levels) {
  Require(!qcd.empty(), "no whole quantisation");
  const int style = qcd[0] & 0x1F;
  const size_t steps = style == 1 ? 1 : 3 * levels + 1;
  Require(style <= 2 && qcd.size() - 1 >= steps * (style == 0 ? 1 : 2),
          "other quantisation than levels");
}

// The marker segments up to the first tile-part; gives where that begins.
size_t ReadMainHeader(Bytes bytes, Jpeg2000Codestream* stream) {
  size_t at = 2;  // behind SOC
  Bytes size, style, quantisation;
  for (;;) {
    const Bytes head = Slice(bytes, at, 4);
    if (head.empty()) throw CutOff();
    const uint32_t marker = Be16(head.data()), length = Be16(head.data() + 2);
    if (marker == kSot) break;
    Require(marker >= 0xFF00 && length >= 2, "no marker where one must be");
    const Bytes data = Slice(bytes, at + 4, length - 2);
    if (data.size() != length - 2) throw CutOff();
    if (marker == kSiz) size = data;
    if (marker == kCod) style = data;
    if (marker == kQcd) quantisation = data;
    if (marker == kCap) stream->extended = true;
    at += 2 + length;
  }
  ReadSize(size, stream);
  CheckQuantisation(quantisation, ReadStyle(style, stream));
  return at;
}

// The length of a tile-part that goes on to the end marker, behind which there may be padding.
size_t LastLength(Bytes bytes, size_t at) {
  size_t end = bytes.size();
  while (end > at + 14 && bytes[end - 1] == 0) --end;
  return Be16(&bytes[end - 2]) == kEoc ? end - 2 - at : bytes.size() - at;
}

// Follows the tile-parts from the first one on to behind the last.
void FindEnd(Bytes bytes, size_t at, Jpeg2000Codestream* stream) {
  struct Parts {
    uint32_t found = 0;
    uint32_t promised = 1;
  };
  std::vector<Parts> tiles(stream->tiles);
  stream->ended = false;
  for (;;) {
    stream->ended = bytes.size() - at >= 2 && Be16(&bytes[at]) == kEoc;
    const Bytes part = Slice(bytes, at, 14);
    if (stream->ended || part.empty() || Be16(part.data()) != kSot) break;
    const uint32_t tile = Be16(&part[4]);
    size_t length = Be32(&part[6]);
    Require(Be16(&part[2]) == 10 && tile < stream->tiles && (length == 0 || length >= 14),
            "a tile that there is not");
    if (length == 0) length = LastLength(bytes, at);
    if (length > bytes.size() - at) throw CutOff();
    ++tiles[tile].found;
    tiles[tile].promised = std::max<uint32_t>(tiles[tile].promised, part[11]);
    at += length;
  }
  for (const Parts& tile : tiles) {
    if (tile.found < tile.promised) throw CutOff();
  }
  stream->size = at + (stream->ended ? 2 : 0);
}

}  // namespace

Jpeg2000Codestream ReadCodestream(Bytes bytes) {
  if (!StartsWith(bytes, kCodestreamMagic)) {
    throw Damaged("no codestream where one must be");
  }
  Jpeg2000Codestream stream;
  FindEnd(bytes, ReadMainHeader(bytes, &stream), &stream);
  return stream;
}

}  // namespace pictures
