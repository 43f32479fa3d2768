#include "support/bytes.h"

#include <algorithm>

std::string AsciiLiteral(std::string_view text) {
  if (text.empty()) return "()";
  std::string literal = "(\xFE\xFF";
  for (const char c : text) {
    literal += "\\000";
    if (c == '(' || c == ')' || c == '\\') literal += '\\';
    literal += c;
  }
  return literal + ")";
}

std::string Escaped(std::string_view bytes) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\r') {
      text += "\\r";
    } else if (c == '\n') {
      text += "\\n\n";
    } else if (c == '\\') {
      text += "\\\\";
    } else if (byte >= 0x20 && byte <= 0x7E) {
      text += c;
    } else {
      text += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
    }
  }
  return text;
}

testing::AssertionResult SameBytes(const char* expectedExpression, const char* actualExpression,
                                   const std::string& expected, const std::string& actual) {
  if (expected == actual) return testing::AssertionSuccess();
  const auto parting =
      std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
  return testing::AssertionFailure()
         << "the bytes of " << expectedExpression << " and " << actualExpression
         << " part at offset " << parting.first - expected.begin() << "\n--- expected ("
         << expected.size() << " bytes):\n"
         << Escaped(expected) << "\n--- actual (" << actual.size() << " bytes):\n"
         << Escaped(actual);
}

int Count(std::string_view text, std::string_view needle) {
  int count = 0;
  for (std::size_t at = text.find(needle); at != std::string_view::npos;
       at = text.find(needle, at + needle.size())) {
    ++count;
  }
  return count;
}
