// string_list - the lines of a content stream, joined with "\r\n":
//
//     /GS0 gs
//     q 1 0 0 1 25.0000 40.0000 cm ... /Im12 Do Q
#ifndef JTPDF_OBJECTS_STRING_LIST_H
#define JTPDF_OBJECTS_STRING_LIST_H

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

class JTPDFStringList {
 public:
  // Joins the texts into one line and appends it. One blank goes between two texts unless the line
  // so far ends in "[" or the next text is exactly "]"; blanks that a text brings along stay, so
  // lines with two blanks in a row come out as such. The line is added whole or not at all; it may
  // hold line ends of its own, so that several lines are.
  // Any number of NUL-terminated texts, none null; a count of 0 appends nothing.
  void Add(unsigned int count, ...);

  // The same for one to ten texts.
  template <std::convertible_to<std::string_view>... Texts>
  requires(sizeof...(Texts) >= 1 && sizeof...(Texts) <= 10) void Add(Texts const&... texts) {
    if constexpr (sizeof...(Texts) == 1) {
      (lines.emplace_back(std::string_view(texts)), ...);
    } else {
      AddJoined({std::string_view(texts)...});
    }
  }

  // All lines with "\r\n" between two of them and none behind the last; "" for no lines.
  std::string Text() const;
  std::size_t TextSize() const;

  // The lines that Text joins, for a writer that needs no copy of them all.
  std::vector<std::string> const& Lines() const { return lines; }

  void Clear() { lines.clear(); }

 private:
  void AddJoined(std::initializer_list<std::string_view> texts);

  std::vector<std::string> lines;
};

#endif  // JTPDF_OBJECTS_STRING_LIST_H
