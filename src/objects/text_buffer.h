// text_buffer - a short text of numbers and blanks, put together without the heap.
#ifndef JTPDF_OBJECTS_TEXT_BUFFER_H
#define JTPDF_OBJECTS_TEXT_BUFFER_H

#include <cassert>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "objects/value_format.h"

// A buffer of Size bytes on the stack. Whoever uses it counts what can go in at most: a number is
// bounded by kNumMaxLength whatever its value.
template <std::size_t Size>
class TextBuffer {
 public:
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

  std::string Text() const { return std::string(start, static_cast<std::size_t>(end - start)); }

 private:
  std::size_t Room() const { return static_cast<std::size_t>(start + Size - end); }

  char start[Size];
  char* end = start;
};

#endif  // JTPDF_OBJECTS_TEXT_BUFFER_H
