// The bytes and the reports are the same under every locale.

#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <locale>
#include <sstream>
#include <string>

#include "jtpdf/jtpdf.h"
#include "support/bytes.h"
#include "support/diagnostics.h"
#include "support/doc.h"
#include "support/temp_dir.h"

// What a locale can spoil: numbers of more than three digits before the point, decimals, offsets,
// non-ASCII bytes on their way into a file.
std::string Script(Doc doc) {
  const TPdfImageDescriptor image = {"\x80\xFFzz", 4, kPdfCompressionFlate, 123456,
                                     7654321,      8, kPdfColorSpaceICC,    1234567};
  const std::string large(5000, 'x');
  doc.Init().Info("Title", L"\u00E9 1,234.5").Image(image).Image(Picture(large));
  doc.Extent({0, 0, 123456.789, 1e25, 0}).Draw(1234567).Fill({1.5, 2.25, 3000, 4, 33}, kRed);
  doc.Circle({1000, 1000, 1234.5, 99999, 0}, {10, 20, 30, 40}, kBlue, 1234.5).Form();
  return doc.Page(1234567, {0, 0, 1234567.25, 1, 0}).Finish("1,234.5");
}

// Every kind of report.
std::string Reports() {
  Diagnostics diagnostics;
  {
    Doc lost(std::filesystem::path("/missing/a.pdf"));
    errno = 0;
    InitPdfDoc(lost);
    Doc doc;
    doc.Init();
    errno = 1234567;
    InitPdfDoc(doc);
    errno = 0;
    InitPdfDoc(doc);
    doc.Image(
        Picture("x", static_cast<TPdfColorSpace>(1234567), static_cast<TPdfCompression>(-1234567)));
    doc.Finish();
    doc.Finish();
    doc.Info("Empty", L"");
    Doc(std::filesystem::path("/dev/null")).Init();
  }
  std::string reports = diagnostics.Take();
  const std::size_t address = reports.find(":0x") + 3;
  const std::size_t end = reports.find('\n', address);
  EXPECT_EQ(end, reports.find_first_not_of("0123456789abcdef", address)) << reports;
  return reports.erase(address, end - address);
}

struct Expected {
  std::string bytes = Script(Doc());
  std::string reports = Reports();
};

const Expected& InTheClassicLocale() {
  static const Expected expected;
  return expected;
}

void ExpectTheSame() {
  TempDir dir;
  const std::string memory = Script(Doc());
  const std::string file = Script(Doc(dir.File("a.pdf")));
  const std::string reports = Reports();
  // Comparing and printing is done under the classic locale again.
  std::setlocale(LC_ALL, "C");
  std::locale::global(std::locale::classic());
  EXPECT_BYTES(InTheClassicLocale().bytes, memory);
  EXPECT_BYTES(InTheClassicLocale().bytes, file);
  EXPECT_EQ(InTheClassicLocale().reports, reports);
}

class Locales : public testing::Test {
 protected:
  void SetUp() override { InTheClassicLocale(); }
  void TearDown() override {
    std::setlocale(LC_ALL, "C");
    std::locale::global(std::locale::classic());
    std::cerr.imbue(std::locale::classic());
  }
};

// Decimal commas, every digit a group of its own.
struct OddNumbers : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\1"; }
};

// Turns every byte that leaves a file stream into another one.
struct OddBytes : std::codecvt<char, char, std::mbstate_t> {
  bool do_always_noconv() const noexcept override { return false; }
  int do_encoding() const noexcept override { return 1; }
  int do_max_length() const noexcept override { return 1; }
  result do_out(std::mbstate_t&, const char* from, const char* fromEnd, const char*& fromNext,
                char* to, char* toEnd, char*& toNext) const override {
    while (from != fromEnd && to != toEnd) *to++ = static_cast<char>(*from++ ^ 0x55);
    fromNext = from;
    toNext = to;
    return from == fromEnd ? ok : partial;
  }
};

TEST_F(Locales, GlobalCxxLocaleWithOddFacetsChangesNothing) {
  const std::locale odd(std::locale(std::locale::classic(), new OddNumbers), new OddBytes);
  std::locale::global(odd);
  std::cerr.imbue(odd);
  // The facets are at work in this very process.
  {
    TempDir dir;
    std::ofstream(dir.File("probe")) << 12345;
    std::locale::global(std::locale::classic());
    const std::string probe = ReadFile(dir.File("probe"));
    std::locale::global(odd);
    EXPECT_EQ(9u, probe.size());
    EXPECT_NE("1.2.3.4.5", probe);
  }
  ExpectTheSame();
}

// The environment says where the locale is: support/german_locale.cmake.
class RealLocale : public Locales {
 protected:
#if defined(_WIN32)
  void SetUp() override {
    GTEST_SKIP() << "Wine's C library knows no locale but \"C\"";
  }
#endif
};

TEST_F(RealLocale, SetlocaleWithADecimalCommaChangesNothing) {
  ASSERT_NE(nullptr, std::setlocale(LC_ALL, "de_DE.UTF-8"));
  char probe[16];
  std::snprintf(probe, sizeof probe, "%.1f", 0.5);
  ASSERT_STREQ("0,5", probe);
  ExpectTheSame();
}

TEST_F(RealLocale, GlobalCxxLocaleWithADecimalCommaChangesNothing) {
  const std::locale german("de_DE.UTF-8");
  std::locale::global(german);  // the C library's as well: it has a name
  std::cerr.imbue(german);
  std::ostringstream probe;
  probe << 1234.5;
  ASSERT_EQ("1.234,5", probe.str());
  ExpectTheSame();
}

TEST_F(RealLocale, ThreadLocaleChangesNothing) {
#if !defined(_WIN32)
  const locale_t german = newlocale(LC_ALL_MASK, "de_DE.UTF-8", nullptr);
  ASSERT_NE(nullptr, german);
  const locale_t saved = uselocale(german);
  const std::string memory = Script(Doc());
  const std::string reports = Reports();
  const locale_t after = uselocale(saved);
  EXPECT_EQ(german, after) << "the caller's locale is put back";
  freelocale(german);
  EXPECT_BYTES(InTheClassicLocale().bytes, memory);
  EXPECT_EQ(InTheClassicLocale().reports, reports);
#endif
}
