// Numbers and references: "28.3465", "0000000017", "12 0 R", "[5 0 R 6 0 R]".

#include "objects/value_format.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

namespace {

// Layout of an IEEE 754 double, on which WriteNum computes.
static_assert(std::numeric_limits<double>::is_iec559);
constexpr int kMantissaBits = 52;
constexpr int kExponentBias = 1023;
constexpr std::uint64_t kMantissaMask = (std::uint64_t{1} << kMantissaBits) - 1;
constexpr int kExponentMask = 0x7FF;  // also the exponent of infinities and NaNs

// From 2^48 on, a number takes a slower way that is as exact.
constexpr int kFastExponent = kExponentBias + 48;

constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

char* WriteText(char* out, std::string_view text) {
  std::memcpy(out, text.data(), text.size());
  return out + text.size();
}

// Writes the last digits of a number in front of end, as many as stand between first and end: zeros
// where it has no more.
template <typename Unsigned>
void WriteDigits(const char* first, char* end, Unsigned value) {
  for (; end - first >= 2; value /= 100) {
    end -= 2;
    std::memcpy(end, kDigitPairs + 2 * (value % 100), 2);
  }
  if (end != first) end[-1] = static_cast<char>('0' + value % 10);
}

template <typename Unsigned>
std::size_t CountDigits(Unsigned value) {
  for (std::size_t count = 1;; count += 4, value /= 10000) {
    if (value < 10) return count;
    if (value < 100) return count + 1;
    if (value < 1000) return count + 2;
    if (value < 10000) return count + 3;
  }
}

// Writes a number with at least so many digits.
template <typename Unsigned>
char* WriteMagnitude(char* out, Unsigned value, std::size_t digits) {
  char* const end = out + std::max(digits, CountDigits(value));
  WriteDigits(out, end, value);
  return end;
}

// The magnitude x 10^4 of a number below 2^48, rounded half to even as "%.4f" rounds.
//
// A magnitude is m x 2^-s with an integer m below 2^53, and 10^4 = 625 x 2^4, so the product is
// (625 x m) x 2^-(s-4): 625 x m fits 63 bits and the bits shifted out are the exact remainder.
// Unlike snprintf it knows no locale.
std::uint64_t ScaledMagnitude(int exponent, std::uint64_t fraction) {
  const std::uint64_t m = fraction | (kMantissaMask + 1);
  const int shift = kExponentBias + kMantissaBits - exponent - 4;
  // 625 x m < 2^63: less than half of the last decimal. That takes care of subnormal numbers too,
  // which have no hidden bit.
  if (shift >= 64) return 0;

  const std::uint64_t product = 625 * m;
  const std::uint64_t quotient = product >> shift;
  const std::uint64_t remainder = product & ((std::uint64_t{1} << shift) - 1);
  const std::uint64_t half = std::uint64_t{1} << (shift - 1);
  const bool up = remainder > half || (remainder == half && (quotient & 1) != 0);
  return quotient + (up ? 1 : 0);
}

// Infinities, NaNs and numbers from 2^48 on; the limit of kNumMaxLength counts the sign.
//
// From there on s-4 is not above 0, so the magnitude x 10^4 is the integer (625 x m) x 2^(4-s). Its
// digits are made nine at a time, lowest first. Not by std::to_chars, which older libraries lack
// for doubles and of which newer ones bring tables that are larger than all of this library.
char* WriteLargeMagnitude(char* out, int exponent, std::uint64_t fraction, std::size_t room) {
  if (exponent == kExponentMask) return WriteText(out, fraction != 0 ? "nan" : "inf");

  constexpr std::uint64_t kGroup = 1000000000;
  constexpr int kMostGroups = 35;  // 309 digits and four decimals at most
  std::uint32_t groups[kMostGroups];
  int count = 0;
  std::uint64_t carry = 625 * (fraction | (kMantissaMask + 1));
  for (int shift = exponent - kExponentBias - kMantissaBits + 4;; shift -= 32) {
    for (; carry != 0; carry /= kGroup) {
      groups[count++] = static_cast<std::uint32_t>(carry % kGroup);
    }
    if (shift <= 0) break;
    for (int i = 0; i < count; ++i) {
      carry += std::uint64_t{groups[i]} << std::min(shift, 32);
      groups[i] = static_cast<std::uint32_t>(carry % kGroup);
      carry /= kGroup;
    }
  }

  char text[9 * kMostGroups + 1];
  // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage): no first carry is 0, so there is a group
  char* end = WriteInt(text, groups[count - 1], 0);
  for (int i = count - 2; i >= 0; --i) end = WriteInt(end, groups[i], 9);
  std::memmove(end - 3, end - 4, 4);
  end[-4] = '.';
  return WriteText(out, {text, std::min(static_cast<std::size_t>(end + 1 - text), room)});
}

}  // namespace

char* WriteNum(char* out, double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  const bool negative = (bits >> 63) != 0;  // also of zero and NaN, which keep their sign
  if (negative) *out++ = '-';
  const int exponent = static_cast<int>(bits >> kMantissaBits) & kExponentMask;
  if (exponent >= kFastExponent) {
    return WriteLargeMagnitude(out, exponent, bits & kMantissaMask,
                               kNumMaxLength - (negative ? 1 : 0));
  }

  const std::uint64_t scaled = ScaledMagnitude(exponent, bits & kMantissaMask);
  const auto decimals = static_cast<unsigned>(scaled % 10000);
  const std::uint64_t whole = scaled / 10000;
  out = std::to_chars(out, out + 16, whole).ptr;
  *out++ = '.';
  out = WriteText(out, {kDigitPairs + std::size_t{2} * (decimals / 100), 2});
  return WriteText(out, {kDigitPairs + std::size_t{2} * (decimals % 100), 2});
}

std::string Num(double value) {
  char text[kNumMaxLength];
  char* const end = WriteNum(text, value);
  return std::string(text, static_cast<std::size_t>(end - text));
}

char* WriteInt(char* out, long long value, unsigned int width) {
  // Unsigned negation, because the smallest number has no positive counterpart.
  const auto bits = static_cast<unsigned long long>(value);
  const unsigned long long magnitude = value < 0 ? 0 - bits : bits;
  if (value < 0) *out++ = '-';
  const std::size_t digits = std::min<std::size_t>(width, kIntMaxLength) - (value < 0 && width > 0);
  // Division takes most of the time, and most numbers are small.
  constexpr std::uint32_t kSmall = std::numeric_limits<std::uint32_t>::max();
  if (magnitude > kSmall) return WriteMagnitude(out, magnitude, digits);
  return WriteMagnitude(out, static_cast<std::uint32_t>(magnitude), digits);
}

std::string IntToStr(long long value, unsigned int width) {
  char text[kIntMaxLength];
  char* const end = WriteInt(text, value, width);
  return std::string(text, static_cast<std::size_t>(end - text));
}

std::string IntToStr(int value, unsigned int width) {
  return IntToStr(static_cast<long long>(value), width);
}

std::string AsRefString(int objectNumber) {
  return IntToStr(objectNumber, 0).append(" 0 R");
}

std::string AsRefArray(int firstObject, int count) {
  // The sum wraps around like 32-bit arithmetic does, instead of overflowing.
  const int end =
      static_cast<int>(static_cast<unsigned>(firstObject) + static_cast<unsigned>(count));
  std::string array = "[";
  for (int n = firstObject; n < end; ++n) array.append(AsRefString(n)).push_back(' ');
  // Kept: without objects this overwrites the bracket that opens, and the array is a lone "]".
  array.back() = ']';
  return array;
}
