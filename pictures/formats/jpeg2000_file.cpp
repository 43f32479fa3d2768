#include "formats/jpeg2000_file.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "formats/boxes.h"

namespace pictures {
namespace {

using Model = Jpeg2000File::Model;

Resolution ReadResolution(Bytes box) {
  Resolution found;
  BoxWalk walk(box);
  while (walk.Next()) {
    const bool display = walk.type == "resd", capture = walk.type == "resc";
    if ((!display && !capture) || walk.data.size() < 10 || (capture && found.Known())) continue;
    const uint8_t* d = walk.data.data();  // vertical first, as fractions and exponents, per metre
    const auto perInch = [](uint32_t above, uint32_t below, uint8_t exponent) {
      if (below == 0) return 0.0;
      return 0.0254 * above / below * std::pow(10.0, static_cast<int8_t>(exponent));
    };
    found = {perInch(Be16(d + 4), Be16(d + 6), d[9]), perInch(Be16(d), Be16(d + 2), d[8])};
  }
  return found;
}

Model ModelOf(uint32_t enumerated) {
  switch (enumerated) {
    case 12:
      return Model::kCmyk;
    case 16:
      return Model::kRgb;
    case 17:
      return Model::kGrey;
    case 18:
      return Model::kYcc;
    default:
      return Model::kUnknown;
  }
}

void ReadColour(Bytes box, Jpeg2000File* file) {
  if (file->model != Model::kUnknown || box.size() < 4) return;  // the first that is known counts
  if (box[0] == 1 && box.size() >= 7) {
    file->model = ModelOf(Be32(&box[3]));
  } else if (box[0] == 2 && box.size() > 3 + 20) {
    file->profile = box.subspan(3);
    const std::string_view space(reinterpret_cast<const char*>(&box[3 + 16]), 4);
    if (space == "GRAY") file->model = Model::kGrey;
    if (space == "RGB ") file->model = Model::kRgb;
    if (space == "CMYK") file->model = Model::kCmyk;
  }
}

void ReadChannels(Bytes box, Jpeg2000File* file) {
  for (size_t at = 2; at + 6 <= box.size(); at += 6) {
    const uint32_t channel = Be16(&box[at]), kind = Be16(&box[at + 2]), use = Be16(&box[at + 4]);
    if (kind == 1 || kind == 2) file->alpha = true;
    if (kind == 0 && use != channel + 1) file->reordered = true;
  }
}

// The header's boxes; gives the one with the size again. False where they are damaged.
bool ReadHeader(Bytes box, Jpeg2000File* file, Bytes* size) {
  BoxWalk walk(box);
  while (walk.Next()) {
    if (walk.type == "ihdr") *size = walk.data;
    if (walk.type == "colr") ReadColour(walk.data, file);
    if (walk.type == "cdef") ReadChannels(walk.data, file);
    if (walk.type == "pclr") file->palette = true;
    if (walk.type == "res ") file->resolution = ReadResolution(walk.data);
  }
  return !walk.damaged && size->size() == 14;
}

// EXIF data has no box of its own, but two identities by custom, and with one of them in some
// files the prefix that it has in JPEG.
void ReadUuid(Bytes box, Jpeg2000File* file) {
  constexpr std::string_view kExif = "JpgTiffExif->JP2";
  constexpr std::string_view kAdobe(
      "\x05\x37\xCD\xAB\x9D\x0C\x44\x31\xA7\x2A\xFA\x56\x1F\x2A\x11\x3E");
  if (!StartsWith(box, kExif) && !StartsWith(box, kAdobe)) return;
  const Bytes data = box.subspan(kExif.size());
  const bool prefixed = StartsWith(data, std::string_view("Exif\0\0", 6));
  file->exif = ReadExif(prefixed ? data.subspan(6) : data);
}

void CheckSizes(const Jpeg2000Codestream& stream, Bytes size) {
  if (Be32(&size[0]) != stream.height || Be32(&size[4]) != stream.width ||
      Be16(&size[8]) != static_cast<uint32_t>(stream.components)) {
    throw Damaged("its two JPEG 2000 headers are of different pictures");
  }
}

// Where the codestream of a file with damaged boxes begins.
size_t FindCodestream(Bytes file, uint64_t from) {
  const auto begin = file.begin() + static_cast<std::ptrdiff_t>(from);
  const auto found =
      std::search(begin, file.end(), kCodestreamMagic.begin(), kCodestreamMagic.end(),
                  [](uint8_t a, char b) { return a == static_cast<uint8_t>(b); });
  if (found == file.end()) {
    throw CutOff();
  }
  return static_cast<size_t>(found - file.begin());
}

constexpr auto kWrongLength = "a box has a wrong length";

// Reads the boxes; gives where the first codestream's data lies, and the box of the header.
struct Boxes {
  size_t begin = 0;
  size_t end = 0;
  Bytes size;
};

Boxes ReadBoxes(Bytes bytes, Jpeg2000File* file) {
  Boxes boxes;
  bool header = false;
  BoxWalk walk(bytes);
  while (walk.Next()) {
    if (walk.type == "jp2h" && file->streams == 0) {
      header = ReadHeader(walk.data, file, &boxes.size);
    }
    if (walk.type == "uuid") ReadUuid(walk.data, file);
    if (walk.type != "jp2c" || file->streams++ > 0) continue;
    boxes.end = static_cast<size_t>(walk.Position());
    boxes.begin = boxes.end - walk.data.size();
  }
  if (walk.damaged) file->damage = kWrongLength;
  if (file->streams == 0) {
    boxes.begin = FindCodestream(bytes, walk.Position());
    boxes.end = bytes.size();
    file->streams = 1;
    file->damage = kWrongLength;
  }
  if (!header) {
    if (file->palette) throw Damaged("its palette cannot be read");
    file->bare = true;
    file->alpha = file->reordered = false;
    file->damage = "it has no header, or a damaged one";
    boxes.size = {};
  }
  return boxes;
}

// Reads the codestream, which may be longer than its box says.
void ReadStream(Bytes bytes, const Boxes& boxes, Jpeg2000File* file) {
  const auto read = [&](size_t end) {
    const Bytes data = bytes.subspan(boxes.begin, end - boxes.begin);
    file->stream = ReadCodestream(data);
    file->data = data.first(file->stream.size);
  };
  try {
    read(boxes.end);
  } catch (const ImageError&) {
    if (boxes.end == bytes.size()) throw;
    read(bytes.size());
    file->damage = kWrongLength;
  }
  if (!file->stream.ended) file->damage = "its codestream has no end marker";
}

}  // namespace

Jpeg2000File ReadJpeg2000File(Bytes bytes) {
  Jpeg2000File file;
  if (StartsWith(bytes, kCodestreamMagic)) {
    file.bare = true;
    file.streams = 1;
    ReadStream(bytes, {0, bytes.size(), {}}, &file);
    return file;
  }
  const Boxes boxes = ReadBoxes(bytes, &file);
  ReadStream(bytes, boxes, &file);
  if (!boxes.size.empty()) {
    CheckSizes(file.stream, boxes.size);
    if (boxes.size[10] != file.stream.precision) file.damage = "its headers differ in depth";
  }
  return file;
}

}  // namespace pictures
