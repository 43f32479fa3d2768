#include "text.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace pictures {
namespace {

constexpr wchar_t kReplacement = 0xFFFD;

// The code point at the text's begin and its length in bytes; length 0 where it is not valid.
struct CodePoint {
  uint32_t value;
  size_t length;
};

CodePoint FirstCodePoint(std::string_view text) {
  const auto lead = static_cast<uint8_t>(text[0]);
  if (lead < 0x80) return {lead, 1};
  const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {0, 0};
  uint32_t value = lead & (0x7Fu >> length);
  for (size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<uint8_t>(text[i]);
    if ((byte & 0xC0) != 0x80) return {0, 0};
    value = value << 6 | (byte & 0x3F);
  }
  constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
  if (value < kLeast[length] || value > 0x10FFFF || surrogate) return {0, 0};
  return {value, length};
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string_view TakeDigits(std::string_view* text) {
  size_t count = 0;
  while (count < text->size() && IsDigit((*text)[count])) ++count;
  std::string_view digits = text->substr(0, count);
  text->remove_prefix(count);
  while (digits.size() > 1 && digits[0] == '0') digits.remove_prefix(1);
  return digits;
}

}  // namespace

std::string LowerAscii(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), Lower);
  return lower;
}

std::optional<std::wstring> FromUtf8(std::string_view text) {
  std::wstring wide;
  while (!text.empty()) {
    const CodePoint point = FirstCodePoint(text);
    if (point.length == 0) return std::nullopt;
    wide += static_cast<wchar_t>(point.value);
    text.remove_prefix(point.length);
  }
  return wide;
}

std::wstring FromUtf8Lenient(std::string_view text) {
  std::wstring wide;
  while (!text.empty()) {
    const CodePoint point = FirstCodePoint(text);
    wide += point.length == 0 ? kReplacement : static_cast<wchar_t>(point.value);
    text.remove_prefix(std::max<size_t>(point.length, 1));
  }
  return wide;
}

std::wstring WithRoomForPairs(std::wstring text) {
  const auto pairs = std::count_if(text.begin(), text.end(), [](wchar_t c) { return c > 0xFFFF; });
  return text.append(static_cast<size_t>(pairs), L' ');
}

std::string Printable(std::string_view text) {
  std::string printable(text);
  for (char& c : printable) {
    if (static_cast<uint8_t>(c) < 0x20 || c == 0x7F) c = '?';
  }
  return printable;
}

bool NaturalLess(std::string_view a, std::string_view b) {
  const std::string_view wholeA = a, wholeB = b;
  while (!a.empty() && !b.empty()) {
    if (IsDigit(a[0]) && IsDigit(b[0])) {
      const std::string_view numberA = TakeDigits(&a), numberB = TakeDigits(&b);
      if (numberA.size() != numberB.size()) return numberA.size() < numberB.size();
      if (numberA != numberB) return numberA < numberB;
    } else {
      const auto first = static_cast<uint8_t>(Lower(a[0]));
      const auto second = static_cast<uint8_t>(Lower(b[0]));
      if (first != second) return first < second;
      a.remove_prefix(1);
      b.remove_prefix(1);
    }
  }
  if (a.empty() != b.empty()) return a.empty();
  return wholeA < wholeB;  // the same but for case or leading zeros
}

std::string Decimal(double value) {
  const auto parts = static_cast<uint64_t>(std::llround(value * 10000));
  char text[32];
  std::snprintf(text, sizeof text, "%" PRIu64 ".%04u", parts / 10000,
                static_cast<unsigned>(parts % 10000));
  return text;
}

std::string_view BaseName(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  const size_t slash = path.rfind('/');
  return slash == std::string_view::npos || path.size() == 1 ? path : path.substr(slash + 1);
}

}  // namespace pictures
