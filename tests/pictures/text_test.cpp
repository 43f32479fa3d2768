#include "text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace pictures {
namespace {

TEST(FromUtf8, DecodesEveryLength) {
  EXPECT_EQ(FromUtf8("a\xC3\xA4\xE5\x86\x99\xF0\x9F\x98\x80"), L"a\u00E4\u5199\U0001F600");
  EXPECT_EQ(FromUtf8(""), L"");
}

TEST(FromUtf8, RefusesWhatIsNotUtf8) {
  for (const char* text : {"\xFF", "\xC3", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80",
                           "\xF4\x90\x80\x80", "\x80", "a\xE5\x86", "\xF5\x80\x80\x80"}) {
    EXPECT_EQ(FromUtf8(text), std::nullopt) << text;
  }
  EXPECT_EQ(FromUtf8("\xED\xBF\xBF"), std::nullopt);
  EXPECT_EQ(FromUtf8(std::string_view("\xE5\x86\x99", 2)), std::nullopt);  // more behind its end
}

TEST(FromUtf8, TakesTheFirstAndTheLastOfEachLength) {
  EXPECT_EQ(FromUtf8("\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"),
            std::wstring({0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFF}));
  EXPECT_EQ(FromUtf8("\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"), std::wstring({0x10000, 0x10FFFF}));
}

TEST(FromUtf8Lenient, PutsAReplacementForEachBadByte) {
  EXPECT_EQ(FromUtf8Lenient("a\xFF\xC3\xA4\xE5z"), L"a\uFFFD\u00E4\uFFFDz");
}

TEST(WithRoomForPairs, AddsOneCharacterForEachAboveFFFF) {
  EXPECT_EQ(WithRoomForPairs(L"a\U0001F600b\U0001F3BE"), L"a\U0001F600b\U0001F3BE  ");
  EXPECT_EQ(WithRoomForPairs(L"plain"), L"plain");
}

TEST(NaturalLess, SortsNumbersByValueAndLettersWithoutCase) {
  const std::vector<std::string> sorted{"1.png",
                                        "Scan.png",
                                        "scan1.png",
                                        "scan2.png",
                                        "Scan3.png",
                                        "scan10.png",
                                        "scan10a",
                                        "scan99999999999999999999",
                                        "scan100000000000000000000",
                                        "x"};
  std::vector<std::string> shuffled(sorted.rbegin(), sorted.rend());
  std::sort(shuffled.begin(), shuffled.end(), NaturalLess);
  EXPECT_EQ(shuffled, sorted);
}

TEST(NaturalLess, IsAStrictOrderEvenForEqualNumbers) {
  EXPECT_NE(NaturalLess("a01", "a1"), NaturalLess("a1", "a01"));
  EXPECT_NE(NaturalLess("A1", "a1"), NaturalLess("a1", "A1"));
  EXPECT_FALSE(NaturalLess("a1", "a1"));
}

TEST(BaseName, IsTheLastPart) {
  EXPECT_EQ(BaseName("/a/b c.png"), "b c.png");
  EXPECT_EQ(BaseName("b.png"), "b.png");
  EXPECT_EQ(BaseName("a/b/"), "b");
  EXPECT_EQ(BaseName("/"), "/");
}

TEST(Printable, HidesControlCharacters) {
  EXPECT_EQ(Printable("a\x1B[1m\n\x7Fä"), "a?[1m??ä");
  EXPECT_EQ(Printable("\x1F \x01"), "? ?");
}

TEST(LowerAscii, LeavesEverythingButCapitals) {
  EXPECT_EQ(LowerAscii("@AZ[`az{\xC4"), "@az[`az{\xC4");
}

TEST(Decimal, RoundsToFourPlaces) {
  EXPECT_EQ(Decimal(0), "0.0000");
  EXPECT_EQ(Decimal(1.00006), "1.0001");
  EXPECT_EQ(Decimal(14400.5), "14400.5000");
}

}  // namespace
}  // namespace pictures
