// bytes - byte strings as tests spell and compare them.
#ifndef JTPDF_TESTS_SUPPORT_BYTES_H
#define JTPDF_TESTS_SUPPORT_BYTES_H

#include <gtest/gtest.h>

#include <string>
#include <string_view>

// The lines, each ended by "\r\n".
template <typename... Texts>
std::string Lines(const Texts&... lines) {
  std::string text;
  ((text += lines, text += "\r\n"), ...);
  return text;
}

// The lines with "\r\n" between two of them.
template <typename... Texts>
std::string Joined(const Texts&... lines) {
  std::string text = Lines(lines...);
  text.resize(text.size() - 2);
  return text;
}

// The PDF string literal of a text of ASCII characters; "()" for no characters.
std::string AsciiLiteral(std::string_view text);

// The text with every byte outside 0x20 to 0x7E as an escape, one line per "\n".
std::string Escaped(std::string_view bytes);

// Compares whole byte strings; a failure shows both escaped and says where they part.
testing::AssertionResult SameBytes(const char* expectedExpression, const char* actualExpression,
                                   const std::string& expected, const std::string& actual);

#define EXPECT_BYTES(expected, actual) EXPECT_PRED_FORMAT2(SameBytes, expected, actual)

// How often needle stands in text, overlaps not counted.
int Count(std::string_view text, std::string_view needle);

#endif  // JTPDF_TESTS_SUPPORT_BYTES_H
