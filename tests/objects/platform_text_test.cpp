#include "objects/platform_text.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>

#include "support/temp_dir.h"

constexpr unsigned int kWrite = std::ios_base::binary | std::ios_base::out | std::ios_base::trunc;

std::string Utf16(const std::wstring& text, std::size_t room) {
  std::string bytes(room + 1, '?');
  const std::size_t used = WriteUTF16BE(*NSString_from_wchar_t(text.c_str()),
                                        reinterpret_cast<unsigned char*>(bytes.data()), room);
  EXPECT_LE(used, room);
  EXPECT_EQ('?', bytes[room]) << "written behind the room";
  return bytes.substr(0, used);
}

std::u32string CodePoints(const wchar_t* text) {
  const std::optional<PlatformString> points = NSString_from_wchar_t(text);
  return points ? std::u32string(points->begin(), points->end()) : U"not valid";
}

TEST(NSStringFromWcharT, HoldsTheTextUpToItsNul) {
  EXPECT_EQ(U"a\u20AC\U0001F600", CodePoints(L"a\u20AC\U0001F600\0b"));
  EXPECT_EQ(U"", CodePoints(L""));
}

TEST(NSStringFromWcharT, IsNoneForInvalidText) {
  for (const unsigned unit : {0xD800u, 0xDBFFu, 0xDC00u, 0xDFFFu, 0x110000u, 0x80000000u, ~0u}) {
    if (sizeof(wchar_t) == 2 && unit > 0xFFFF) continue;
    const wchar_t text[] = {L'a', static_cast<wchar_t>(unit), 0};
    EXPECT_FALSE(NSString_from_wchar_t(text)) << unit;
  }
  for (const unsigned unit : {0xD7FFu, 0xE000u, 0xFFFEu, 0xFFFFu, 0x10000u, 0x10FFFFu}) {
    if (sizeof(wchar_t) == 2 && unit > 0xFFFF) continue;
    const wchar_t text[] = {static_cast<wchar_t>(unit), 0};
    EXPECT_TRUE(NSString_from_wchar_t(text)) << unit;
  }
}

TEST(CodePointCount, CountsCharactersAndNuls) {
  EXPECT_EQ(0u, CodePointCount(L""));
  EXPECT_EQ(4u, CodePointCount(std::wstring(L"a\u20AC\0b", 4)));
  EXPECT_EQ(3u, CodePointCount(L"\U0001F600\U0010FFFFa"));
}

TEST(WriteUTF16BE, WritesWholeCharactersOnly) {
  EXPECT_EQ(std::string("\0a", 2), Utf16(L"a\U0001F600b", 5));
  EXPECT_EQ(std::string("\0a\xD8\x3D\xDE\0", 6), Utf16(L"a\U0001F600b", 6));
  EXPECT_EQ("", Utf16(L"a", 1));
  EXPECT_EQ("", Utf16(L"a", 0));
}

TEST(OpenWithUnicodePath, FileNamesAreUTF8) {
  TempDir dir;
  const std::wstring name = L"/a\u00E9\u20AC\U0001F600.pdf";
  std::ofstream out;
  OpenWithUnicodePath(out, (dir.File("").wstring() + name).c_str(), kWrite);
  ASSERT_TRUE(out.is_open());
  out << "there";
  out.close();
  EXPECT_EQ("there", ReadFile(dir.File("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80.pdf")));

  std::ifstream in;
  OpenWithUnicodePath(in, (dir.File("").wstring() + name).c_str(), std::ios_base::binary);
  std::string word;
  in >> word;
  EXPECT_EQ("there", word);
}

TEST(OpenWithUnicodePath, AddsTheDirectionOfTheStream) {
  TempDir dir;
  std::ofstream out;
  OpenWithUnicodePath(out, dir.File("f").wstring().c_str(), 0);
  EXPECT_TRUE(out.is_open());
  std::ifstream in;
  OpenWithUnicodePath(in, dir.File("f").wstring().c_str(), 0);
  EXPECT_TRUE(in.is_open());
}

TEST(OpenWithUnicodePath, AFailedOpenShowsInTheStreamAndErrno) {
  TempDir dir;
  std::ofstream out;
  errno = 0;
  OpenWithUnicodePath(out, dir.File("missing/f").wstring().c_str(), kWrite);
  EXPECT_EQ(ENOENT, errno);
  EXPECT_TRUE(out.fail());
  EXPECT_FALSE(out.is_open());
  std::ifstream in;
  errno = 0;
  OpenWithUnicodePath(in, dir.File("missing").wstring().c_str(), std::ios_base::binary);
  EXPECT_EQ(ENOENT, errno);
  EXPECT_TRUE(in.fail());
}

TEST(OpenWithUnicodePath, AnInvalidNameGivesEILSEQ) {
  const wchar_t name[] = {L'a', 0xD800, 0};
  std::ofstream out;
  errno = 0;
  OpenWithUnicodePath(out, name, kWrite);
  EXPECT_EQ(EILSEQ, errno);
  EXPECT_TRUE(out.fail());
  EXPECT_FALSE(out.is_open());
  std::ifstream in;
  errno = 0;
  OpenWithUnicodePath(in, name, std::ios_base::binary);
  EXPECT_EQ(EILSEQ, errno);
  EXPECT_FALSE(in.is_open());
}

TEST(OpenWithUnicodePath, AnInvalidNameThrowsWhereTheStreamIsToThrow) {
  const wchar_t name[] = {0xDC00, 0};
  std::ofstream out;
  out.exceptions(std::ios_base::failbit);
  errno = 0;
  EXPECT_THROW(OpenWithUnicodePath(out, name, kWrite), std::ios_base::failure);
  EXPECT_EQ(EILSEQ, errno);
}

TEST(JTPDFStrError, GivesTheSystemsText) {
  char buffer[256];
  EXPECT_EQ(0, JTPDFStrError(ENOENT, buffer, sizeof buffer));
  EXPECT_STREQ("No such file or directory", buffer);
}

TEST(JTPDFStrError, UnknownNumbersLeaveATerminatedText) {
  for (const int number : {-1, 4242, 0x7FFFFFFF}) {
    char buffer[256];
    std::memset(buffer, 'x', sizeof buffer);
    EXPECT_NE(0, JTPDFStrError(number, buffer, sizeof buffer)) << number;
    EXPECT_NE(nullptr, std::memchr(buffer, '\0', sizeof buffer)) << number;
  }
}

TEST(JTPDFStrError, ATextThatIsTooLongIsCutAndTerminated) {
  for (unsigned long size = 1; size <= 8; ++size) {
    char buffer[16];
    std::memset(buffer, 'x', sizeof buffer);
    EXPECT_NE(0, JTPDFStrError(ENOENT, buffer, size));
    EXPECT_EQ('\0', buffer[size - 1]);
    EXPECT_EQ('x', buffer[size]) << "written behind the buffer";
  }
}
