// generators - random input that finds the edges: doubles by their bits and near rounding ties,
// text with every kind of code point, key paths over a small alphabet.
#ifndef JTPDF_TESTS_PROPERTIES_GENERATORS_H
#define JTPDF_TESTS_PROPERTIES_GENERATORS_H

#include <gtest/gtest.h>

#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <string>

#include <jtpdf/types.h>

namespace generators {

// Every double there is, infinities and NaNs included.
inline rc::Gen<double> AnyDouble() {
  return rc::gen::map(rc::gen::arbitrary<std::uint64_t>(),
                      [](std::uint64_t bits) { return std::bit_cast<double>(bits); });
}

// Lengths as a page has them, with decimals beyond the fourth.
inline rc::Gen<double> Length() {
  return rc::gen::map(rc::gen::inRange<std::int64_t>(-200000000, 200000001),
                      [](std::int64_t n) { return static_cast<double>(n) / 100000.0; });
}

// Exact ties of the fourth decimal (n / 32 has five) and the doubles next to n + 0.00005.
inline rc::Gen<double> NearTie() {
  return rc::gen::apply(
      [](std::int64_t n, int kind) {
        const double tie = static_cast<double>(n) / 32.0;
        const double half = static_cast<double>(n) / 10000.0 + 0.00005;
        return kind == 0   ? tie
               : kind == 1 ? half
               : kind == 2 ? std::nextafter(half, 0.0)
                           : std::nextafter(half, 1e300);
      },
      rc::gen::inRange<std::int64_t>(-100000000, 100000001), rc::gen::inRange(0, 4));
}

inline rc::Gen<double> Double() {
  return rc::gen::oneOf(AnyDouble(), Length(), NearTie());
}

// Any unit: characters of every length in UTF-8 and UTF-16, the bytes that literals escape,
// surrogates and values beyond Unicode (few, as one of them spoils the whole text).
inline rc::Gen<wchar_t> WideUnit() {
  const auto range = [](std::int64_t first, std::int64_t last) {
    return rc::gen::map(rc::gen::inRange(first, last + 1),
                        [](std::int64_t c) { return static_cast<wchar_t>(c); });
  };
  return rc::gen::weightedOneOf<wchar_t>({
      {30, range(1, 0x7F)},
      {20, rc::gen::map(rc::gen::elementOf(std::wstring(L"()\\\r\n\u010A\u5C28\u2029\uFEFF\uFFFE")),
                        [](wchar_t c) { return c; })},
      {20, range(0x80, 0xD7FF)},
      {10, range(0xE000, 0xFFFF)},
      {10, range(0x10000, 0x10FFFF)},
      {1, range(0xD7F0, 0xE00F)},
      {1, range(0x10FFF0, 0x110010)},
      {1, rc::gen::element(static_cast<wchar_t>(0x80000000u), static_cast<wchar_t>(-1))},
  });
}

inline rc::Gen<std::wstring> WideText() {
  return rc::gen::container<std::wstring>(WideUnit());
}

inline rc::Gen<std::string> Bytes() {
  return rc::gen::container<std::string>(rc::gen::arbitrary<char>());
}

// Bytes as a NUL-terminated text can hold them.
inline rc::Gen<std::string> CText() {
  return rc::gen::container<std::string>(rc::gen::nonZero<char>());
}

inline rc::Gen<JTPDFRGBColor> Color() {
  const auto byte =
      rc::gen::oneOf(rc::gen::element<std::uint8_t>(0, 255), rc::gen::arbitrary<std::uint8_t>());
  return rc::gen::oneOf(rc::gen::construct<JTPDFRGBColor>(byte, byte, byte, byte),
                        rc::gen::just(JTPDFRGBColor{255, 255, 255, 0}));
}

inline rc::Gen<JTPDFRect> Box(const rc::Gen<double>& number) {
  return rc::gen::construct<JTPDFRect>(number, number, number, number, number);
}

}  // namespace generators

// Failures print records field by field.
inline std::ostream& operator<<(std::ostream& out, const JTPDFRect& box) {
  return out << '{' << box.left << ", " << box.bottom << ", " << box.width << ", " << box.height
             << ", " << box.angle << '}';
}
inline std::ostream& operator<<(std::ostream& out, const JTPDFRGBColor& color) {
  return out << '{' << int{color.red} << ", " << int{color.green} << ", " << int{color.blue} << ", "
             << int{color.alpha} << '}';
}

#endif  // JTPDF_TESTS_PROPERTIES_GENERATORS_H
