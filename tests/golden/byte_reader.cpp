// Buffered forward reading for the structure checker.

#include "byte_reader.h"

#include <algorithm>

namespace golden {
namespace {

constexpr std::size_t kBufferSize = 1 << 16;
// A line is a dictionary line or a line of the file's frame; this bounds the memory that a damaged
// file without line ends can ask for.
constexpr std::size_t kLongestLine = std::size_t{1} << 28;

}  // namespace

ByteReader::ByteReader(std::istream& in) : in_(in), buffer_(kBufferSize) {}

bool ByteReader::Fill() {
  in_.read(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  next_ = buffer_.data();
  end_ = next_ + in_.gcount();
  if (in_.bad()) throw StructureError(position_, "the file cannot be read");
  return next_ != end_;
}

int ByteReader::Get() {
  const int byte = Peek();
  if (byte >= 0) {
    ++next_;
    ++position_;
  }
  return byte;
}

bool ByteReader::Skip(std::uint64_t count) {
  while (count > 0) {
    if (next_ == end_ && !Fill()) return false;
    const std::uint64_t step = std::min(count, static_cast<std::uint64_t>(end_ - next_));
    next_ += step;
    position_ += step;
    count -= step;
  }
  return true;
}

std::string ByteReader::Line() {
  const std::uint64_t start = position_;
  std::string line;
  for (;;) {
    const int byte = Get();
    if (byte < 0) throw StructureError(start, "a line without an end: " + Escaped(line));
    if (byte == '\n') throw StructureError(position_ - 1, "a line feed without a carriage return");
    if (byte == '\r') {
      if (Get() != '\n')
        throw StructureError(position_ - 1, "a carriage return without a line feed");
      return line;
    }
    if (line.size() == kLongestLine) throw StructureError(start, "a line without an end");
    line += static_cast<char>(byte);
  }
}

std::uint64_t ByteReader::Number(const std::string& what) {
  const std::uint64_t start = position_;
  std::uint64_t number = 0;
  int digits = 0;
  for (int byte = Peek(); byte >= '0' && byte <= '9'; byte = Peek()) {
    if (digits > 0 && number == 0) throw StructureError(start, what + " has needless zeros");
    if (++digits > 18) throw StructureError(start, what + " is too large");
    number = number * 10 + static_cast<std::uint64_t>(byte - '0');
    Get();
  }
  if (digits == 0) throw StructureError(start, what + " is missing");
  return number;
}

void ByteReader::Expect(std::string_view expected, const std::string& what) {
  const std::uint64_t start = position_;
  std::string found;
  for (const char c : expected) {
    const int byte = Get();
    if (byte >= 0) found += static_cast<char>(byte);
    if (byte != static_cast<unsigned char>(c)) {
      throw StructureError(start, what + ": expected \"" + Escaped(expected) + "\", found \"" +
                                      Escaped(found) + (byte < 0 ? "\" and the end" : "\""));
    }
  }
}

std::string Escaped(std::string_view bytes) {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (c == '\r') {
      text += "\\r";
    } else if (c == '\n') {
      text += "\\n";
    } else if (c == '\\') {
      text += "\\\\";
    } else if (byte >= 0x20 && byte < 0x7F) {
      text += c;
    } else {
      text += "\\x";
      text += kHex[byte >> 4];
      text += kHex[byte & 15];
    }
  }
  return text;
}

}  // namespace golden
