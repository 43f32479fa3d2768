// words.h - values of options that are one of a few words, or whole numbers.
#ifndef JTPDF_TOOL_WORDS_H
#define JTPDF_TOOL_WORDS_H

#include <charconv>
#include <string>
#include <string_view>

#include "text.h"
#include "usage_error.h"

namespace pictures::tool {

// The value for a word of a table, without regard to case.
template <class Table>
auto Choose(const Table& table, const std::string& word, const char* option) {
  std::string words;
  for (const auto& [name, value] : table) {
    if (name == LowerAscii(word)) return value;
    words += (words.empty() ? "" : ", ") + std::string(name);
  }
  throw UsageError(std::string(option) + ": \"" + Printable(word) + "\" is none of " + words);
}

template <class Number>
Number ParseNumber(const std::string& text, Number least, Number most, const char* option) {
  Number value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size() || value < least || value > most) {
    throw UsageError(std::string(option) + ": \"" + Printable(text) +
                     "\" is no whole number from " + std::to_string(least) + " to " +
                     std::to_string(most));
  }
  return value;
}

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_WORDS_H
