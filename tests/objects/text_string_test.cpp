#include "objects/text_string.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <sstream>

#include "support/bytes.h"
#include "support/cases.h"
#include "support/diagnostics.h"

using namespace std::string_literals;

// The library's calls of malloc come here: one of that size fails.
static std::size_t refusedSize = 0;

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
  return size != 0 && size == refusedSize ? nullptr : __real_malloc(size);
}

// The bytes of the 16-bit units in memory order.
std::string BytesInMemory(const std::u16string& units) {
  std::string bytes(2 * units.size(), '\0');
  std::memcpy(bytes.data(), units.data(), bytes.size());
  return bytes;
}

std::string NoteFor(const std::wstring& text) {
  std::ostringstream note;
  note.imbue(std::locale::classic());
  note << "Error: unable to convert string to UTF-16 BE:" << static_cast<const void*>(text.c_str())
       << "\n";
  return note.str();
}

struct TextCase {
  const char* name;
  std::wstring text;
  std::string literal;
  std::string utf16;
};

class WideText : public testing::TestWithParam<TextCase> {};

TEST_P(WideText, BecomesALiteral) {
  EXPECT_BYTES(GetParam().literal, PsString(GetParam().text));
}

TEST_P(WideText, BecomesUTF16BigEndianBehindTheMark) {
  EXPECT_BYTES(GetParam().utf16, BytesInMemory(PDFUTF16FromWString(GetParam().text)));
}

TEST_P(WideText, IsNotedWhereNothingIsConverted) {
  Diagnostics diagnostics;
  PDFUTF16FromWString(GetParam().text);
  EXPECT_EQ(GetParam().utf16.empty() ? NoteFor(GetParam().text) : "", diagnostics.Take());
  Diagnostics silent(false);
  PDFUTF16FromWString(GetParam().text);
  EXPECT_EQ("", silent.Take());
}

#define MARK "\xFE\xFF"
INSTANTIATE_TEST_SUITE_P(
    PsString, WideText,
    testing::Values(
        TextCase{"Empty", L"", "()", ""},
        TextCase{"ParenthesesAreEscaped", L"A(b)", "(" MARK "\\000A\\000\\(\\000b\\000\\))",
                 MARK "\0A\0(\0b\0)"s},
        TextCase{"BackslashIsDoubled", L"a\\b", "(" MARK "\\000a\\000\\\\\\000b)",
                 MARK "\0a\0\\\0b"s},
        TextCase{"LatinByteIsUnescaped", L"\u00E9", "(" MARK "\\000\xE9)", MARK "\0\xE9"s},
        TextCase{"HighByteMayBeABlank", L"\u20AC", "(" MARK "\x20\xAC)", MARK "\x20\xAC"},
        TextCase{"ControlBytesAreOctal", L"\u010A", "(" MARK "\\001\\012)", MARK "\x01\x0A"},
        TextCase{"LastControlByte", L"\u1F1F", "(" MARK "\\037\\037)", MARK "\x1F\x1F"},
        TextCase{"DeleteIsUnescaped", L"\u007F", "(" MARK "\\000\x7F)", MARK "\0\x7F"s},
        TextCase{"HighByteMayBeAParenthesis", L"\u2829", "(" MARK "\\(\\))", MARK "()"},
        TextCase{"HighByteMayBeABackslash", L"\u5C5C", "(" MARK "\\\\\\\\)", MARK "\\\\"},
        TextCase{"LastOfTheFirstPlane", L"\uFFFF", "(" MARK "\xFF\xFF)", MARK "\xFF\xFF"},
        TextCase{"BeforeTheSurrogates", L"\uD7FF", "(" MARK "\xD7\xFF)", MARK "\xD7\xFF"},
        TextCase{"BehindTheSurrogates", L"\uE000", "(" MARK "\xE0\\000)", MARK "\xE0\0"s},
        TextCase{"LoneAstralHasNoRoom", L"\U0001F600", "()", ""},
        TextCase{"AstralAtTheEndIsDropped", L"a\U0001F600", "(" MARK "\\000a)", MARK "\0a"s},
        TextCase{"TwoAstralsHaveRoomForOne", L"\U0001F600\U0001F600", "(" MARK "\xD8=\xDE\\000)",
                 MARK "\xD8\x3D\xDE\0"s},
        TextCase{"LargestCodePoint", L"\U0010FFFFab", "(" MARK "\xDB\xFF\xDF\xFF\\000a)",
                 MARK "\xDB\xFF\xDF\xFF\0a"s},
        TextCase{"ConversionStopsForGoodAtWhatDoesNotFit", L"\U0001F600\U0001F601z",
                 "(" MARK "\xD8=\xDE\\000)", MARK "\xD8\x3D\xDE\0"s},
        TextCase{"Surrogate", std::wstring(1, 0xD800), "()", ""},
        TextCase{"LastSurrogate", std::wstring(1, 0xDFFF), "()", ""},
        TextCase{"SwappedPairIsInvalid", std::wstring{0xDE00, 0xD83D}, "()", ""},
        TextCase{"SurrogateInvalidatesTheWholeText", std::wstring(L"ab") + wchar_t(0xDC00), "()",
                 ""},
        TextCase{"SurrogateBehindTheRoomInvalidatesToo",
                 std::wstring(L"\U0001F600\U0001F600\U0001F600") + wchar_t(0xD800), "()", ""},
        TextCase{"ReadsUpToTheFirstNul", L"ab\0cd"s, "(" MARK "\\000a\\000b)", MARK "\0a\0b"s},
        TextCase{"RoomCountsTheUnitsBehindTheNul", L"\U0001F600\0"s, "(" MARK "\xD8=\xDE\\000)",
                 MARK "\xD8\x3D\xDE\0"s},
        TextCase{"SurrogateBehindTheNulIsNotRead", L"a\0"s + wchar_t(0xD800), "(" MARK "\\000a)",
                 MARK "\0a"s},
        TextCase{"OnlyANul", L"\0"s, "()", ""}),
    NameOf<TextCase>);

#if !defined(_WIN32)
INSTANTIATE_TEST_SUITE_P(
    PsStringOfUtf32, WideText,
    testing::Values(TextCase{"SurrogatePairIsInvalid", std::wstring{0xD83D, 0xDE00}, "()", ""},
                    TextCase{"AboveUnicode", std::wstring(1, 0x110000), "()", ""},
                    TextCase{"NegativeUnit", std::wstring(1, wchar_t(-1)), "()", ""}),
    NameOf<TextCase>);
#endif

TEST(PsString, EveryLatinByteIsEscapedByTheRule) {
  for (wchar_t c = 1; c < 0x100; ++c) {
    std::string expected = "(" MARK "\\000";
    char octal[8];
    std::snprintf(octal, sizeof octal, "\\%.3o", static_cast<unsigned>(c));
    if (c < 0x20) {
      expected += octal;
    } else {
      if (c == L'\\' || c == L'(' || c == L')') expected += '\\';
      expected += static_cast<char>(c);
    }
    EXPECT_BYTES(expected + ")", PsString(std::wstring(1, c)));
  }
}

TEST(PDFUTF16FromWString, AFailedAllocationGivesNothingWithoutAMessage) {
  Diagnostics diagnostics;
  const std::wstring text(1234, L'x');
  refusedSize = 2 * 1234 + 2;
  const std::u16string units = PDFUTF16FromWString(text);
  refusedSize = 0;
  EXPECT_TRUE(units.empty());
  EXPECT_EQ("", diagnostics.Take());
  EXPECT_EQ(1235u, PDFUTF16FromWString(std::wstring(1234, L'x')).size());
}

TEST(DebugRepOfWideStr, SpellsEveryUnit) {
  EXPECT_EQ("(NULL)", DebugRepOfWideStr(nullptr));
  EXPECT_EQ("", DebugRepOfWideStr(L""));
  EXPECT_EQ("0x00000041, 0x00000042", DebugRepOfWideStr(L"AB"));
  const wchar_t extremes[] = {wchar_t(-1), 0xABCD, 0};
  EXPECT_EQ(sizeof(wchar_t) == 2 ? "0x0000ffff, 0x0000abcd" : "0xffffffff, 0x0000abcd",
            DebugRepOfWideStr(extremes));
}

TEST(DebugRepOfCharStr, QuotesWithoutEscaping) {
  EXPECT_EQ("(NULL)", DebugRepOfCharStr(nullptr));
  EXPECT_EQ("\"ab\"", DebugRepOfCharStr("ab"));
  EXPECT_EQ("\"\"", DebugRepOfCharStr(""));
  EXPECT_EQ("\"a\"\\\n\xFF\"", DebugRepOfCharStr("a\"\\\n\xFF"));
}
