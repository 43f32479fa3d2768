// Wide text as PDF text strings, and two renderings for debugging.

#include "objects/text_string.h"

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <optional>

#include "objects/diagnostic_note.h"
#include "objects/platform_text.h"

namespace {

struct FreeDeleter {
  void operator()(unsigned char* memory) const { std::free(memory); }
};

std::string Hexadecimal(std::uintptr_t value) {
  char digits[2 * sizeof value];
  char* const end = std::to_chars(digits, std::end(digits), value, 16).ptr;
  return std::string(digits, static_cast<std::size_t>(end - digits));
}

}  // namespace

std::u16string PDFUTF16FromWString(const std::wstring& text) {
  std::u16string result;
  const std::optional<PlatformString> valid = NSString_from_wchar_t(text.c_str());
  const std::size_t room = 2 * CodePointCount(text);
  const std::unique_ptr<unsigned char, FreeDeleter> buffer(
      static_cast<unsigned char*>(std::malloc(room + 2)));
  if (!buffer) return result;

  buffer.get()[0] = 0xFE;
  buffer.get()[1] = 0xFF;
  const std::size_t used = valid ? WriteUTF16BE(*valid, buffer.get() + 2, room) : 0;
  if (used == 0) {
    // The address and not the text, which may be anything.
    PrintDiagnosticNote("Error: unable to convert string to UTF-16 BE:0x" +
                        Hexadecimal(reinterpret_cast<std::uintptr_t>(text.c_str())));
    return result;
  }
  result.resize(used / 2 + 1);
  std::memcpy(result.data(), buffer.get(), used + 2);
  return result;
}

std::string PsString(const std::wstring& text) {
  const std::u16string units = PDFUTF16FromWString(text);
  const auto* const bytes = reinterpret_cast<const unsigned char*>(units.data());
  const std::size_t size = units.size() * sizeof(char16_t);

  std::string literal = "(";
  literal.reserve(2 + 3 * size);
  for (std::size_t i = 0; i < size; ++i) {
    const unsigned char b = bytes[i];
    if (b < 0x20) {
      const char octal[] = {'\\', '0', static_cast<char>('0' + (b >> 3)),
                            static_cast<char>('0' + (b & 7))};
      literal.append(octal, sizeof octal);
    } else {
      if (b == '\\' || b == '(' || b == ')') literal += '\\';
      literal += static_cast<char>(b);
    }
  }
  literal += ')';
  return literal;
}

std::wstring TextOrEmpty(const wchar_t* text) {
  return text == nullptr ? L"" : text;
}

std::string DebugRepOfWideStr(const wchar_t* text) {
  if (text == nullptr) return "(NULL)";
  std::string representation;
  for (; *text != L'\0'; ++text) {
    if (!representation.empty()) representation += ", ";
    const std::string digits = Hexadecimal(static_cast<std::uint32_t>(*text));
    representation += "0x" + std::string(8 - digits.size(), '0') + digits;
  }
  return representation;
}

std::string DebugRepOfCharStr(const char* text) {
  if (text == nullptr) return "(NULL)";
  return '"' + std::string(text) + '"';
}
