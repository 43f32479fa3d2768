// views - of texts and arrays, what later C++ has in its library: this one is built as C++17.
#ifndef JTPDF_OBJECTS_VIEWS_H
#define JTPDF_OBJECTS_VIEWS_H

#include <cstddef>
#include <string_view>

inline bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

// The elements of an array of the caller's.
template <typename Element>
struct ArrayView {
  const Element* first;
  std::size_t size;

  const Element* begin() const { return first; }
  const Element* end() const { return first + size; }
};

#endif  // JTPDF_OBJECTS_VIEWS_H
