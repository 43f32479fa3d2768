// string_list - the lines of a content stream, joined with "\r\n":
//
//     /GS0 gs
//     q 1 0 0 1 25.0000 40.0000 cm ... /Im12 Do Q
#ifndef JTPDF_OBJECTS_STRING_LIST_H
#define JTPDF_OBJECTS_STRING_LIST_H

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>

#include "objects/byte_buffer.h"
#include "objects/text_buffer.h"

// The lines are kept as the text that they make: a string for each would take more instructions and
// memory than what is in it.
class JTPDFStringList {
 public:
  // Joins the texts into one line and appends it. One blank goes between two texts unless the line
  // so far ends in "[" or the next text is exactly "]"; blanks that a text brings along stay, so
  // lines with two blanks in a row come out as such. The line is added whole or not at all; it may
  // hold line ends of its own, so that several lines are.
  // Any number of NUL-terminated texts, none null; a count of 0 appends nothing.
  void Add(unsigned int count, ...);

  // The same for one to ten texts.
  template <typename... Texts, typename = std::enable_if_t<
                                   (std::is_convertible_v<const Texts&, std::string_view> && ...)>>
  void Add(const Texts&... texts) {
    static_assert(sizeof...(Texts) >= 1 && sizeof...(Texts) <= 10);
    AddJoined({std::string_view(texts)...});
  }

  // The same for a line of at most atMost bytes that write(TextWriter&) makes.
  template <typename Write>
  void Compose(std::size_t atMost, const Write& write) {
    TextWriter line(BeginLine(atMost), atMost);
    write(line);
    EndLine(line.End());
  }

  // All lines with "\r\n" between two of them and none behind the last; "" for no lines. The view
  // lasts until the list is changed.
  std::string_view View() const { return text; }
  std::string Text() const { return std::string(View()); }

  void Clear() {
    text.Clear();
    isEmpty = true;
  }

 private:
  void AddJoined(std::initializer_list<std::string_view> texts);
  // The place of a new line of at most size bytes, behind the line end that it takes.
  char* BeginLine(std::size_t size);
  void EndLine(const char* end);

  ByteBuffer text;
  bool isEmpty = true;  // no line at all: a list of one empty line has no text either
};

#endif  // JTPDF_OBJECTS_STRING_LIST_H
