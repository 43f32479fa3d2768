// text_buffer - a short text of numbers and blanks, put together without the heap.
#ifndef JTPDF_OBJECTS_TEXT_BUFFER_H
#define JTPDF_OBJECTS_TEXT_BUFFER_H

#include <cassert>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "objects/value_format.h"

// A text of at most Capacity bytes. Whoever adds to it sees to it that there is room: a number
// takes kNumMaxLength bytes at most, whatever its value. A string per number and per part takes
// nearly twice the instructions of a rectangle.
template <std::size_t Capacity>
class TextBuffer {
 public:
  void Clear() { end = start; }
  std::size_t Size() const { return static_cast<std::size_t>(end - start); }
  std::size_t Room() const { return Capacity - Size(); }

  TextBuffer& operator<<(std::string_view text) {
    assert(text.size() <= Room());
    std::memcpy(end, text.data(), text.size());
    end += text.size();
    return *this;
  }

  TextBuffer& operator<<(char c) {
    assert(Room() >= 1);
    *end++ = c;
    return *this;
  }

  // The text of Num(value).
  TextBuffer& operator<<(double value) {
    assert(Room() >= kNumMaxLength);
    end = WriteNum(end, value);
    return *this;
  }

  // The text of IntToStr(value, 0), or of IntToStr(value, width).
  TextBuffer& operator<<(int value) { return PaddedInteger(value, 0); }
  TextBuffer& operator<<(long long value) { return PaddedInteger(value, 0); }
  TextBuffer& PaddedInteger(long long value, unsigned int width) {
    assert(Room() >= kIntMaxLength);
    end = WriteInt(end, value, width);
    return *this;
  }

  operator std::string_view() const { return {start, Size()}; }
  std::string Text() const { return std::string(std::string_view(*this)); }

 private:
  char start[Capacity];
  char* end = start;
};

// Fits the longest text that is formed of numbers, a circle: 25 numbers of 29 characters, two
// colours of 20 and some 80 characters around them.
using ShapeText = TextBuffer<1024>;

#endif  // JTPDF_OBJECTS_TEXT_BUFFER_H
