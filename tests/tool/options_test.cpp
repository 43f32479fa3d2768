#include "options.h"

#include <gtest/gtest.h>

#include <clocale>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tool {
namespace {

Options Parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "jtpdf");
  return ParseOptions(static_cast<int>(arguments.size()), arguments.data());
}

TEST(ParseLength, KnowsFourUnitsAndPointsWithout) {
  EXPECT_DOUBLE_EQ(ParseLength("25.4mm"), 72);
  EXPECT_DOUBLE_EQ(ParseLength("2.54CM"), 72);
  EXPECT_DOUBLE_EQ(ParseLength("1.5in"), 108);
  EXPECT_DOUBLE_EQ(ParseLength("12pt"), 12);
  EXPECT_DOUBLE_EQ(ParseLength("12"), 12);
  for (const char* text :
       {"", "mm", "1 mm", "1,5cm", "-1mm", "1e3", "nan", "inf", "1mm2", "0x10"}) {
    EXPECT_THROW(ParseLength(text), UsageError) << text;
  }
}

TEST(ParseLength, TakesAPointWhateverTheLocale) {
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << "see support/german_locale.cmake";
  EXPECT_STREQ(std::localeconv()->decimal_point, ",");
  EXPECT_DOUBLE_EQ(ParseLength("1.5in"), 108);
  std::setlocale(LC_ALL, "C");
}

TEST(ParsePageSize, KnowsNamesAndTurnsThem) {
  EXPECT_NEAR(*ParsePageSize("a4").width, 595.2756, 1e-4);
  EXPECT_NEAR(*ParsePageSize("A4^T").width, 841.8898, 1e-4);
  EXPECT_DOUBLE_EQ(*ParsePageSize("LETTER").height, 792);
  EXPECT_DOUBLE_EQ(*ParsePageSize("legal").height, 1008);
  EXPECT_DOUBLE_EQ(*ParsePageSize("72x2in^T").width, 144);
}

TEST(ParsePageSize, TakesOneSideAlone) {
  EXPECT_EQ(ParsePageSize("100").height, std::nullopt);
  EXPECT_EQ(ParsePageSize("100x").height, std::nullopt);
  EXPECT_EQ(ParsePageSize("x100").width, std::nullopt);
  EXPECT_EQ(*ParsePageSize("x100").height, 100);
}

TEST(ParsePageSize, TakesAUnitWrittenOnceForBothSides) {
  EXPECT_DOUBLE_EQ(*ParsePageSize("8.5x11in").width, 612);
  EXPECT_DOUBLE_EQ(*ParsePageSize("8.5x11in").height, 792);
  EXPECT_NEAR(*ParsePageSize("210x297MM").width, 595.2756, 1e-4);
  EXPECT_NEAR(*ParsePageSize("210x297mm^T").height, 595.2756, 1e-4);
  EXPECT_DOUBLE_EQ(*ParsePageSize("8.5inx11").height, 792);
  EXPECT_DOUBLE_EQ(*ParsePageSize("100ptx10in").width, 100);
  EXPECT_DOUBLE_EQ(*ParsePageSize("100ptx10in").height, 720);
  EXPECT_DOUBLE_EQ(*ParsePageSize("100x200").height, 200);
}

TEST(ParsePageSize, RefusesNonsense) {
  for (const char* text : {"", "x", "A4x", "10x10x10", "A4^", "0x10", "2x100", "14401x10", "^T"}) {
    EXPECT_THROW(ParsePageSize(text), UsageError) << text;
  }
}

TEST(ParseImageSize, TakesPercentAndDpi) {
  EXPECT_EQ(*ParseImageSize("300dpi").dpi, 300);
  EXPECT_TRUE(ParseImageSize("50%").width->percent);
  const ImageSize mixed = ParseImageSize("50%x10cm");
  EXPECT_TRUE(mixed.width->percent);
  EXPECT_FALSE(mixed.height->percent);
  EXPECT_TRUE(ParseImageSize("50x60%").width->percent);
  EXPECT_DOUBLE_EQ(ParseImageSize("1x2in").width->value, 72);
  EXPECT_THROW(ParseImageSize("%"), UsageError);
  EXPECT_THROW(ParseImageSize("dpi"), UsageError);
}

TEST(ParseBorder, IsVerticalThenHorizontal) {
  EXPECT_EQ(ParseBorder("1").horizontal, 1);
  EXPECT_EQ(ParseBorder("1:2").vertical, 1);
  EXPECT_EQ(ParseBorder("1:2").horizontal, 2);
  EXPECT_EQ(ParseBorder("1:2in").vertical, 72);
  EXPECT_EQ(ParseBorder("1in:2pt").horizontal, 2);
  EXPECT_THROW(ParseBorder(":2"), UsageError);
}

TEST(ParseDate, BecomesAPdfDate) {
  EXPECT_EQ(ParseDate("2026"), L"D:2026");
  EXPECT_EQ(ParseDate("2026-05-17"), L"D:20260517");
  EXPECT_EQ(ParseDate("2026-05-17T12:30"), L"D:202605171230");
  EXPECT_EQ(ParseDate("2026-05-17 12:30:01Z"), L"D:20260517123001Z");
  EXPECT_EQ(ParseDate("2026-05-17T12:30:01+02:00"), L"D:20260517123001+02'00'");
  EXPECT_EQ(ParseDate("2026-05-17T12:30:01-0330"), L"D:20260517123001-03'30'");
  EXPECT_EQ(ParseDate("2026-05-17t12:30:01z"), L"D:20260517123001Z");
  EXPECT_EQ(ParseDate("2024-02-29"), L"D:20240229");
  EXPECT_EQ(ParseDate("2000-02-29"), L"D:20000229");
}

TEST(ParseDate, RefusesDaysThatAreNone) {
  for (const char* text :
       {"", "now", "2026-13-01", "2026-00-01", "2025-02-29", "1900-02-29", "2100-02-29", "2026-5-1",
        "2026-05-17T24:00", "2026-05-17T12:30:00+25:00", "2026-05-17Z", "T"}) {
    EXPECT_THROW(ParseDate(text), UsageError) << text;
  }
}

TEST(ParseOptions, KeepsNamesInBrackets) {
  const Options options = Parse({"[a,b]", "--title", "[x]", "-o", "[o]", "--author=[y]"});
  EXPECT_EQ(options.inputs, std::vector<std::string>{"[a,b]"});
  EXPECT_EQ(options.metadata.title, L"[x]");
  EXPECT_EQ(options.metadata.author, L"[y]");
  EXPECT_EQ(options.output, "[o]");
}

TEST(ParseOptions, TakesNamesThatBeginWithADashBehindTwo) {
  EXPECT_EQ(Parse({"-q", "--", "-v.png", "-"}).inputs, (std::vector<std::string>{"-v.png", "-"}));
}

TEST(ParseOptions, TakesWordsInCapitalsAndSmallLetters) {
  EXPECT_EQ(Parse({"a", "-r", "AUTO"}).layout.turn, std::nullopt);
  EXPECT_EQ(Parse({"a", "-r", "None"}).layout.turn, 0);
  EXPECT_EQ(Parse({"a", "-f", "Exact"}).layout.fit, Fit::kExact);
  EXPECT_EQ(Parse({"a", "--role", "ClipArt"}).role, kPdfImageRoleClipArt);
  EXPECT_EQ(Parse({"a", "-s", "300DPI"}).layout.image.dpi, 300);
  EXPECT_EQ(Parse({"a", "-S", "LEGAL^t"}).layout.page.width, 1008);
  EXPECT_EQ(Parse({"a", "-b", "1IN"}).layout.border.vertical, 72);
  EXPECT_EQ(Parse({"a", "--max-input", "3k"}).maxInput, 3072u);
  for (const char* value : {"", "autos", "45", "00", "360"}) {
    EXPECT_THROW(Parse({"a", "-r", value}), UsageError) << value;
  }
}

TEST(ParseOptions, TakesTheMostBytesOfAPipeWithASuffix) {
  EXPECT_EQ(Parse({"a"}).maxInput, uint64_t{4} << 30);
  EXPECT_EQ(Parse({"a", "--max-input", "1"}).maxInput, 1u);
  EXPECT_EQ(Parse({"a", "--max-input", "20M"}).maxInput, 20u << 20);
  EXPECT_EQ(Parse({"a", "--max-input", "1024G"}).maxInput, uint64_t{1} << 40);
  for (const char* value : {"", "0", "M", "-1", "1.5G", "1T", "1MB", "1025G", "1099511627777",
                            "18446744073709551616"}) {
    EXPECT_THROW(Parse({"a", "--max-input", value}), UsageError) << value;
  }
}

TEST(ParseOptions, TakesOptionsAnywhere) {
  const Options options = Parse({"a", "-S", "A4", "b", "-ar90", "c", "-j3"});
  EXPECT_EQ(options.inputs.size(), 3u);
  EXPECT_TRUE(options.layout.autoOrient);
  EXPECT_EQ(options.layout.turn, 90);
  EXPECT_EQ(options.jobs, 3u);
}

// The manual without its markup, a paragraph an option.
std::vector<std::string> ManualParagraphs() {
  std::ifstream file(JTPDF_MANUAL);
  std::vector<std::string> paragraphs(1);
  for (std::string line; std::getline(file, line);) {
    if (line == ".TP" || line.starts_with(".SS") || line.starts_with(".SH")) {
      paragraphs.emplace_back();
      continue;
    }
    line = std::regex_replace(line, std::regex(R"(^\.[BIR]+ |\\f[BIR]|")"), "");
    line = std::regex_replace(line, std::regex(R"(\\-)"), "-");
    paragraphs.back() += std::regex_replace(line, std::regex(" +"), " ") + ' ';
  }
  return paragraphs;
}

TEST(Manual, NamesTheRealDefaults) {
  const std::regex kOption("(--[a-z-]+) [A-Z]+ ");
  const std::regex kDefault(R"((\S+) \(?(unless given|the default))");
  std::map<std::string, std::string> defaults;
  for (const std::string& paragraph : ManualParagraphs()) {
    std::smatch option, value;
    if (!std::regex_search(paragraph, value, kDefault)) continue;
    ASSERT_TRUE(std::regex_search(paragraph, option, kOption)) << paragraph;
    defaults[option[1]] = value[1];
  }
  const Options plain = Parse({"a"});
  EXPECT_EQ(defaults["--jobs"], "processors");
  EXPECT_EQ(plain.jobs, std::thread::hardware_concurrency());
  defaults.erase("--jobs");
  const auto given = [&](const char* option) {
    const std::string value = std::exchange(defaults[option], "");
    EXPECT_NE(value, "") << option << " has no default in the manual";
    return Parse({"a", option, value.c_str()});
  };
  EXPECT_EQ(given("--compression").compression, plain.compression);
  EXPECT_EQ(given("--role").role, plain.role);
  EXPECT_EQ(given("--max-pixels").limits.maxPixels, plain.limits.maxPixels);
  EXPECT_EQ(given("--max-input").maxInput, plain.maxInput);
  EXPECT_EQ(given("--fit").layout.fit, plain.layout.fit);
  EXPECT_EQ(given("--rotation").layout.turn, plain.layout.turn);
  for (const auto& [option, value] : defaults) {
    EXPECT_EQ(value, "") << option << " is not compared with its real default";
  }
}

}  // namespace
}  // namespace tool
