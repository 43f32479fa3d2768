// Arguments from bytes.

#include "byte_source.h"

#include <bit>
#include <iterator>
#include <limits>

std::uint32_t ByteSource::Word() {
  std::uint32_t word = 0;
  for (int i = 0; i < 4; ++i) word = word << 8 | Byte();
  return word;
}

std::int32_t ByteSource::Integer() {
  const std::uint8_t kind = Byte();
  return kind < 250 ? kind - 5 : static_cast<std::int32_t>(Word());
}

double ByteSource::Double() {
  constexpr double kEdges[] = {0.0,
                               -0.0,
                               0.00005,
                               0.03125,
                               1e15,
                               281474976710656.0,
                               1e24,
                               -1e25,
                               std::numeric_limits<double>::max(),
                               std::numeric_limits<double>::denorm_min(),
                               std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()};
  const std::uint8_t kind = Byte();
  if (kind < std::size(kEdges)) return kEdges[kind];
  if (kind < 32) {
    const std::uint64_t high = Word();
    return std::bit_cast<double>(high << 32 | Word());
  }
  if (kind < 64) return static_cast<std::int32_t>(Word()) / 100000.0;
  return kind - 100;
}

std::string ByteSource::Bytes(std::size_t limit) {
  std::size_t size = Byte();
  if (size >= 250) size = Word() % 4096;
  std::string bytes;
  while (bytes.size() < size && bytes.size() < limit && !Empty()) {
    bytes += static_cast<char>(Byte());
  }
  return bytes;
}

std::string ByteSource::CText(std::size_t limit) {
  const std::string bytes = Bytes(limit);
  return bytes.substr(0, bytes.find('\0'));
}

std::wstring ByteSource::WideText(std::size_t limit) {
  std::wstring text;
  const bool wide = Flag();
  for (std::size_t size = Byte(); size > 0 && text.size() < limit && !Empty(); --size) {
    const std::uint8_t kind = wide ? Byte() : 0;
    std::uint32_t unit = Byte();
    if (kind > 64) unit = unit << 8 | Byte();
    if (kind > 128) unit = (unit << 8 | Byte()) & 0x1FFFFF;
    if (kind > 250) unit = Word();
    if (unit == 0) break;
    text += static_cast<wchar_t>(unit);
  }
  return text;
}

std::string ByteSource::Key() {
  constexpr const char* kPieces[] = {"/A",      "/B",      "/Ab",   "/Type", "/Filter", "A",
                                     "Title",   "/Author", "/MGmk", "/GS0",  "/Width",  "/a.b",
                                     "/Length", "/Stream", "/",     " "};
  const std::uint8_t kind = Byte();
  if (kind >= 0xF0) return CText(40);
  std::string key;
  for (int pieces = 1 + kind % 4; pieces > 0; --pieces) {
    // Few of the last ones, with which a key does not name an entry of its own any more.
    const std::uint8_t piece = Byte();
    key += kPieces[piece < 0xF0 ? piece % 12 : piece & 0x0F];
  }
  return key;
}

JTPDFRect ByteSource::Box() {
  JTPDFRect box = {};
  for (double* field : {&box.left, &box.bottom, &box.width, &box.height, &box.angle}) {
    *field = Double();
  }
  return box;
}

JTPDFRGBColor ByteSource::Color() {
  const std::uint8_t kind = Byte();
  if (kind == 0) return {255, 255, 255, 0};
  if (kind == 1) return {255, 255, 255, 255};
  JTPDFRGBColor color = {};
  for (std::uint8_t* field : {&color.red, &color.green, &color.blue, &color.alpha}) {
    *field = Byte();
  }
  return color;
}
