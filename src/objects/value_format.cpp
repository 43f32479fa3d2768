// Numbers and references: "28.3465", "0000000017", "12 0 R", "[5 0 R 6 0 R]".

#include "objects/value_format.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

namespace {

constexpr unsigned int kMaxWidth = 100;

// Layout of an IEEE 754 double, on which WriteFixed4 computes.
static_assert(std::numeric_limits<double>::is_iec559);
constexpr int kMantissaBits = 52;
constexpr int kExponentBias = 1023;
constexpr std::uint64_t kMantissaMask = (std::uint64_t{1} << kMantissaBits) - 1;

// From here on a double takes the exact but slower way of std::to_chars.
constexpr double kFastLimit = 281474976710656.0;  // 2^48

char* WriteText(char* out, std::string_view text) {
  return std::copy(text.begin(), text.end(), out);
}

// |value| x 10^4, rounded half to even as "%.4f" rounds; |value| must be below kFastLimit.
//
// |value| = m x 2^-s with an integer m below 2^53, and 10^4 = 625 x 2^4, so the product is
// (625 x m) x 2^-(s-4): 625 x m fits 63 bits and the bits shifted out are the exact remainder.
std::uint64_t ScaledMagnitude(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  const int exponent = static_cast<int>((bits >> kMantissaBits) & 0x7FF);
  const std::uint64_t fraction = bits & kMantissaMask;
  // A subnormal number has no hidden bit and the exponent of the smallest normal one.
  const std::uint64_t m = exponent == 0 ? fraction : fraction | (kMantissaMask + 1);
  const int s = kExponentBias + kMantissaBits - std::max(exponent, 1);
  const int shift = s - 4;
  if (shift >= 64) return 0;  // 625 x m < 2^63: less than half of the last decimal

  const std::uint64_t product = 625 * m;
  const std::uint64_t quotient = product >> shift;
  const std::uint64_t remainder = product & ((std::uint64_t{1} << shift) - 1);
  const std::uint64_t half = std::uint64_t{1} << (shift - 1);
  const bool up = remainder > half || (remainder == half && (quotient & 1) != 0);
  return quotient + (up ? 1 : 0);
}

template <typename Integer>
std::string PaddedInteger(Integer value, unsigned int width) {
  const std::size_t minimum = std::min(width, kMaxWidth);
  char digits[24];
  const char* const end = std::to_chars(digits, std::end(digits), value).ptr;
  const std::string_view plain(digits, static_cast<std::size_t>(end - digits));
  if (plain.size() >= minimum) return std::string(plain);

  const std::size_t sign = value < 0 ? 1 : 0;
  std::string padded(plain.substr(0, sign));
  padded.append(minimum - plain.size(), '0');
  padded.append(plain.substr(sign));
  return padded;
}

}  // namespace

char* WriteNum(char* out, double value) {
  if (std::signbit(value)) *out++ = '-';
  if (std::isnan(value)) return WriteText(out, "nan");
  const double magnitude = std::fabs(value);
  if (std::isinf(magnitude)) return WriteText(out, "inf");

  if (magnitude < kFastLimit) {
    const std::uint64_t scaled = ScaledMagnitude(magnitude);
    out = std::to_chars(out, out + 16, scaled / 10000).ptr;
    const auto decimals = static_cast<unsigned>(scaled % 10000);
    *out++ = '.';
    *out++ = static_cast<char>('0' + decimals / 1000);
    *out++ = static_cast<char>('0' + decimals / 100 % 10);
    *out++ = static_cast<char>('0' + decimals / 10 % 10);
    *out++ = static_cast<char>('0' + decimals % 10);
    return out;
  }

  // 309 digits, the point and four decimals at most. The limit of 29 characters counts the sign.
  char text[320];
  const char* const end =
      std::to_chars(text, std::end(text), magnitude, std::chars_format::fixed, 4).ptr;
  const std::size_t room = kNumMaxLength - (std::signbit(value) ? 1 : 0);
  return WriteText(out, {text, std::min(static_cast<std::size_t>(end - text), room)});
}

std::string Num(double value) {
  char text[kNumMaxLength];
  char* const end = WriteNum(text, value);
  return std::string(text, static_cast<std::size_t>(end - text));
}

std::string IntToStr(int value, unsigned int width) {
  return PaddedInteger(value, width);
}

std::string IntToStr(long long value, unsigned int width) {
  return PaddedInteger(value, width);
}

std::string AsRefString(int objectNumber) {
  return IntToStr(objectNumber, 0) + " 0 R";
}

std::string AsRefArray(int firstObject, int count) {
  // The sum wraps around like 32-bit arithmetic does, instead of overflowing.
  const int end =
      static_cast<int>(static_cast<unsigned>(firstObject) + static_cast<unsigned>(count));
  std::string array = "[";
  for (int n = firstObject; n < end; ++n) {
    array += AsRefString(n);
    array += ' ';
  }
  // Kept: without objects this overwrites the bracket that opens, and the array is a lone "]".
  array.back() = ']';
  return array;
}
