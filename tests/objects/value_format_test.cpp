// Numbers against the C library's own "%.4f", integers, references.
//
// The random comparison takes 10^6 numbers. For a deep run, some minutes on one core:
//
//     JTPDF_NUM_CASES=100000000 build/release/tests/objects/objects_value_format_test
//       --gtest_filter='Num.*Random*'

#include "objects/value_format.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>

#include "support/cases.h"

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Like std::bit_cast, which not all standard libraries have.
double FromBits(std::uint64_t bits) {
  double value = 0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

// What "%.4f" gives in a buffer of 30 bytes. Not every C library prints the sign of a NaN.
std::string Printed(double value) {
  if (std::isnan(value)) return std::signbit(value) ? "-nan" : "nan";
  char buffer[30];
  std::snprintf(buffer, sizeof buffer, "%.4f", value);
  return buffer;
}

testing::AssertionResult IsPrinted(double value) {
  const std::string expected = Printed(value);
  const std::string actual = Num(value);
  if (expected == actual) return testing::AssertionSuccess();
  char hexadecimal[40];
  std::snprintf(hexadecimal, sizeof hexadecimal, "%a", value);
  return testing::AssertionFailure()
         << "Num(" << hexadecimal << ") is " << actual << " and not " << expected;
}

// The value, its neighbours, and the negatives of them.
testing::AssertionResult IsPrintedAround(double value) {
  for (const double v :
       {value, std::nextafter(value, kInfinity), std::nextafter(value, -kInfinity)}) {
    for (const double signedValue : {v, -v}) {
      testing::AssertionResult result = IsPrinted(signedValue);
      if (!result) return result;
    }
  }
  return testing::AssertionSuccess();
}

struct NumCase {
  const char* name;
  double value;
  const char* text;
};

class NumText : public testing::TestWithParam<NumCase> {};

TEST_P(NumText, HasFourDecimals) {
  EXPECT_EQ(GetParam().text, Num(GetParam().value));
  EXPECT_TRUE(IsPrinted(GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(
    Num, NumText,
    testing::Values(
        NumCase{"One", 1, "1.0000"}, NumCase{"MinusHalf", -0.5, "-0.5000"},
        NumCase{"RoundsToZero", 0.00004, "0.0000"}, NumCase{"KeepsDecimals", 1234.5, "1234.5000"},
        NumCase{"RoundsToNegativeZero", -0.00001, "-0.0000"}, NumCase{"Zero", 0.0, "0.0000"},
        NumCase{"NegativeZero", -0.0, "-0.0000"}, NumCase{"Infinity", kInfinity, "inf"},
        NumCase{"NegativeInfinity", -kInfinity, "-inf"}, NumCase{"NaN", kNaN, "nan"},
        NumCase{"NegativeNaN", -kNaN, "-nan"}, NumCase{"TieToEvenDown", 0.03125, "0.0312"},
        NumCase{"TieToEvenUp", 0.09375, "0.0938"}, NumCase{"NegativeTie", -0.03125, "-0.0312"},
        NumCase{"CarryThroughAllDigits", 9.99996, "10.0000"},
        NumCase{"SmallestSubnormal", 5e-324, "0.0000"},
        NumCase{"NoGroupingOfThousands", 1234567.25, "1234567.2500"},
        NumCase{"LongestWhole", 1e23, "99999999999999991611392.0000"},
        NumCase{"CutInTheDecimals", 1e24, "999999999999999983222784.0000"},
        NumCase{"CutBehindThreeDecimals", 1e25, "10000000000000000905969664.00"},
        NumCase{"SignCountsInTheCut", -1e24, "-999999999999999983222784.000"},
        NumCase{"CutAtThePoint", 1e28, "9999999999999999583119736832."},
        NumCase{"CutInTheDigits", 1e30, "10000000000000000198846248386"},
        NumCase{"Largest", std::numeric_limits<double>::max(), "17976931348623157081452742373"}),
    NameOf<NumCase>);

TEST(Num, IsCutTo29Characters) {
  for (const double value : {1e24, -1e24, 1e25, -1e28, 1e100, -1e300}) {
    EXPECT_LE(Num(value).size(), 29u) << value;
  }
  EXPECT_EQ(29u, Num(1e100).size());
  EXPECT_EQ(29u, Num(-1e100).size());
}

TEST(Num, RandomBitPatternsArePrintedAsByTheCLibrary) {
  const char* const wanted = std::getenv("JTPDF_NUM_CASES");
  const long cases = wanted == nullptr ? 1000000 : std::strtol(wanted, nullptr, 10);
  ASSERT_GT(cases, 0) << "JTPDF_NUM_CASES is to be a number of cases";
  std::mt19937_64 random(cases == 1000000 ? 2026 : std::random_device()());
  for (long i = 0; i < cases; ++i) {
    std::uint64_t bits = random();
    if (i % 2 != 0) {
      // Every second one has an exponent from 2^-20 to 2^60: the numbers that documents hold.
      const std::uint64_t exponent = 1023 - 20 + bits % 81;
      bits = (random() & 0x800FFFFFFFFFFFFF) | exponent << 52;
    }
    ASSERT_TRUE(IsPrinted(FromBits(bits))) << "case " << i;
  }
}

// Exact ties at the fifth decimal are the odd multiples of 1/32.
TEST(Num, TiesRoundToEven) {
  for (int odd = 1; odd < 200001; odd += 2) ASSERT_TRUE(IsPrintedAround(odd / 32.0));
  for (double base = 1; base < 0x1p48; base *= 2) {
    ASSERT_TRUE(IsPrintedAround(base + 1 / 32.0));
    ASSERT_TRUE(IsPrintedAround(base + 3 / 32.0));
  }
}

// The decimal halves that are no ties in binary, each a little above or below one.
TEST(Num, DecimalHalvesRoundByTheirBinaryValue) {
  for (int i = 0; i < 40000; ++i) ASSERT_TRUE(IsPrintedAround((2 * i + 1) / 20000.0));
}

TEST(Num, PowersOfTwoAndTheirNeighboursArePrintedAsByTheCLibrary) {
  for (int exponent = -1074; exponent <= 1023; ++exponent) {
    ASSERT_TRUE(IsPrintedAround(std::ldexp(1.0, exponent)));
  }
}

TEST(Num, PowersOfTenAndTheirNeighboursArePrintedAsByTheCLibrary) {
  for (int exponent = -30; exponent <= 308; ++exponent) {
    const double power = std::pow(10.0, exponent);
    ASSERT_TRUE(IsPrintedAround(power));
    ASSERT_TRUE(IsPrintedAround(power - 0.00005));
    ASSERT_TRUE(IsPrintedAround(power * 9.99995));
  }
}

// From 2^48 on the digits are made in another way.
TEST(Num, NothingJumpsAt2To48) {
  for (int i = -1000; i <= 1000; ++i) ASSERT_TRUE(IsPrintedAround(0x1p48 + i / 32.0));
  EXPECT_EQ("281474976710655.9688", Num(std::nextafter(0x1p48, 0)));
  EXPECT_EQ("281474976710656.0000", Num(0x1p48));
}

TEST(Num, SubnormalNumbersAreZero) {
  for (const std::uint64_t fraction : {1ull, 2ull, 0x8000000000000ull, 0xFFFFFFFFFFFFFull}) {
    EXPECT_EQ("0.0000", Num(FromBits(fraction)));
    EXPECT_EQ("-0.0000", Num(-FromBits(fraction)));
  }
}

TEST(Num, AnyNaNIsPrintedWithItsSign) {
  for (const std::uint64_t bits :
       {0x7FF0000000000001ull, 0xFFF0000000000001ull, 0x7FFFFFFFFFFFFFFFull, 0xFFFFFFFFFFFFFFFFull,
        0x7FF8000000000000ull, 0xFFF8000000000000ull}) {
    EXPECT_EQ(bits >> 63 != 0 ? "-nan" : "nan", Num(FromBits(bits)));
  }
}

struct IntCase {
  const char* name;
  long long value;
  unsigned int width;
  const char* text;
};

class IntToStrText : public testing::TestWithParam<IntCase> {};

TEST_P(IntToStrText, IsPaddedWithZeros) {
  const IntCase& c = GetParam();
  EXPECT_EQ(c.text, IntToStr(c.value, c.width));
  if (c.value >= INT_MIN && c.value <= INT_MAX) {
    EXPECT_EQ(c.text, IntToStr(static_cast<int>(c.value), c.width));
  }
}

INSTANTIATE_TEST_SUITE_P(
    IntToStr, IntToStrText,
    testing::Values(IntCase{"PadsToTheWidth", 7, 3, "007"}, IntCase{"NeverCuts", 1234, 2, "1234"},
                    IntCase{"WidthZeroIsPlain", 12, 0, "12"}, IntCase{"ZeroAtWidthZero", 0, 0, "0"},
                    IntCase{"ZeroPadded", 0, 10, "0000000000"},
                    IntCase{"SignBeforeTheZeros", -7, 4, "-007"},
                    IntCase{"NegativeExactlyWide", -123, 4, "-123"},
                    IntCase{"NegativeTooWide", -1234, 3, "-1234"},
                    IntCase{"SmallestInt", INT_MIN, 12, "-02147483648"},
                    IntCase{"LargestInt", INT_MAX, 0, "2147483647"},
                    IntCase{"AboveInt", 4294967296, 10, "4294967296"},
                    IntCase{"MoreThanTenDigits", 12345678901, 10, "12345678901"},
                    IntCase{"LargestLong", LLONG_MAX, 0, "9223372036854775807"},
                    IntCase{"SmallestLong", LLONG_MIN, 20, "-9223372036854775808"}),
    NameOf<IntCase>);

TEST(IntToStr, WidthIsCappedAt100) {
  const std::string capped = std::string(99, '0') + "5";
  for (const unsigned int width : {100u, 101u, 500u, 0x80000000u, UINT_MAX}) {
    EXPECT_EQ(capped, IntToStr(5, width)) << width;
    EXPECT_EQ(capped, IntToStr(5ll, width)) << width;
  }
  EXPECT_EQ("-" + std::string(98, '0') + "5", IntToStr(-5, 500));
  EXPECT_EQ(std::string(98, '0') + "5", IntToStr(5, 99));
}

TEST(AsRefString, IsTheNumberWithGenerationZero) {
  EXPECT_EQ("12 0 R", AsRefString(12));
  EXPECT_EQ("0 0 R", AsRefString(0));
  EXPECT_EQ("-3 0 R", AsRefString(-3));
}

TEST(AsRefArray, HoldsConsecutiveReferences) {
  EXPECT_EQ("[5 0 R 6 0 R 7 0 R]", AsRefArray(5, 3));
  EXPECT_EQ("[4 0 R]", AsRefArray(4, 1));
  EXPECT_EQ("[-1 0 R 0 0 R 1 0 R]", AsRefArray(-1, 3));
}

TEST(AsRefArray, NoObjectsGiveALoneClosingBracket) {
  EXPECT_EQ("]", AsRefArray(1, 0));
  EXPECT_EQ("]", AsRefArray(1, -3));
  EXPECT_EQ("]", AsRefArray(0, INT_MIN));
}

TEST(AsRefArray, EndsAtTheLargestNumber) {
  EXPECT_EQ("[2147483646 0 R]", AsRefArray(INT_MAX - 1, 1));
  EXPECT_EQ("]", AsRefArray(INT_MAX, 1)) << "32-bit arithmetic: the end wraps around";
}
