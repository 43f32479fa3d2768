// text_buffer - a text of numbers and blanks, put together in memory that is there already.
#ifndef JTPDF_OBJECTS_TEXT_BUFFER_H
#define JTPDF_OBJECTS_TEXT_BUFFER_H

#include <cassert>
#include <cstddef>
#include <string>
#include <string_view>

#include "objects/value_format.h"

// The end of every line of a file.
inline constexpr std::string_view kLineEnd = "\r\n";

// A text that is written into room bytes at start. Whoever adds to it sees to it that there is
// room: a number takes kNumMaxLength bytes at most, whatever its value. A string per number and per
// part takes nearly twice the instructions of a rectangle.
class TextWriter {
 public:
  TextWriter(char* start, std::size_t room) : start(start), end(start), limit(start + room) {}
  TextWriter(const TextWriter&) = delete;
  TextWriter& operator=(const TextWriter&) = delete;

  void Clear() { end = start; }
  const char* End() const { return end; }
  std::size_t Size() const { return static_cast<std::size_t>(end - start); }
  std::size_t Room() const { return static_cast<std::size_t>(limit - end); }

  TextWriter& operator<<(std::string_view text) {
    assert(text.size() <= Room());
    end += text.copy(end, text.size());  // also of no text at all, which may be null
    return *this;
  }

  TextWriter& operator<<(char c) {
    assert(Room() >= 1);
    *end++ = c;
    return *this;
  }

  // The text of Num(value).
  TextWriter& operator<<(double value) {
    assert(Room() >= kNumMaxLength);
    end = WriteNum(end, value);
    return *this;
  }

  // The text of IntToStr(value, 0), or of IntToStr(value, width).
  TextWriter& operator<<(int value) { return PaddedInteger(value, 0); }
  TextWriter& operator<<(long long value) { return PaddedInteger(value, 0); }
  TextWriter& PaddedInteger(long long value, unsigned int width) {
    assert(Room() >= kIntMaxLength);
    end = WriteInt(end, value, width);
    return *this;
  }

  operator std::string_view() const { return {start, Size()}; }
  std::string Text() const { return std::string(std::string_view(*this)); }

 private:
  char* const start;
  char* end;
  char* const limit;
};

// A text of at most Capacity bytes with memory of its own.
template <std::size_t Capacity>
class TextBuffer : public TextWriter {
 public:
  TextBuffer() : TextWriter(bytes, Capacity) {}

 private:
  char bytes[Capacity];
};

// The longest text that is formed of numbers is a circle's: 25 numbers of 29 characters, two
// colours of 20 and some 80 characters around them.
inline constexpr std::size_t kShapeMaxLength = 1024;

#endif  // JTPDF_OBJECTS_TEXT_BUFFER_H
