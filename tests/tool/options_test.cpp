#include "options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace pictures::tool {
namespace {

Options Parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "jtpdf");
  return ParseOptions(static_cast<int>(arguments.size()), arguments.data());
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

TEST(ParseOptions, HasDefaults) {
  const Options options = Parse({"a"});
  EXPECT_EQ(options.inputs, std::vector<std::string>{"a"});
  EXPECT_EQ(options.fromFile, "");
  EXPECT_TRUE(options.ToStandardOutput());
  EXPECT_FALSE(options.layout.page.Given());
  EXPECT_FALSE(options.layout.image.Given());
  EXPECT_EQ(options.layout.turn, std::nullopt);
  EXPECT_FALSE(options.layout.autoOrient);
  EXPECT_EQ(options.layout.fit, Fit::kInto);
  EXPECT_EQ(options.metadata.title, L"");
  EXPECT_EQ(options.metadata.creationDate, L"");
  EXPECT_EQ(options.role, kPdfImageRolePhoto);
  EXPECT_EQ(options.compression, 6);
  EXPECT_EQ(options.jobs, std::clamp(std::thread::hardware_concurrency(), 1u, 256u));
  EXPECT_EQ(options.limits.maxPixels, 500'000'000u);
  EXPECT_EQ(options.verbosity, Verbosity::kNormal);
  EXPECT_FALSE(options.skipBad || options.dryRun || options.help || options.version ||
               options.recordNames);
}

TEST(ParseOptions, PutsEachValueInItsPlace) {
  const Options options = Parse({"a",
                                 "-o",
                                 "o",
                                 "--from-file",
                                 "f",
                                 "-S",
                                 "10x20",
                                 "-s",
                                 "3x4",
                                 "-b",
                                 "5:6",
                                 "-f",
                                 "fill",
                                 "-r",
                                 "270",
                                 "-a",
                                 "--role",
                                 "mask",
                                 "--crop-border",
                                 "7:8",
                                 "--title",
                                 "t",
                                 "--author",
                                 "u",
                                 "--subject",
                                 "v",
                                 "--keywords",
                                 "w",
                                 "--creator",
                                 "x",
                                 "--creationdate",
                                 "2001",
                                 "--moddate",
                                 "2002",
                                 "-j",
                                 "3",
                                 "--compression",
                                 "12",
                                 "--max-pixels",
                                 "99",
                                 "--record-names",
                                 "--skip-bad",
                                 "--dry-run",
                                 "-v"});
  EXPECT_EQ(options.output, "o");
  EXPECT_EQ(options.fromFile, "f");
  EXPECT_EQ(options.layout.page.width, 10);
  EXPECT_EQ(options.layout.page.height, 20);
  EXPECT_EQ(options.layout.image.width->value, 3);
  EXPECT_EQ(options.layout.image.height->value, 4);
  EXPECT_EQ(options.layout.border.vertical, 5);
  EXPECT_EQ(options.layout.border.horizontal, 6);
  EXPECT_EQ(options.layout.cropBorder->vertical, 7);
  EXPECT_EQ(options.layout.cropBorder->horizontal, 8);
  EXPECT_EQ(options.layout.fit, Fit::kFill);
  EXPECT_EQ(options.layout.turn, 270);
  EXPECT_TRUE(options.layout.autoOrient);
  EXPECT_EQ(options.role, kPdfImageRoleMask);
  EXPECT_EQ(options.metadata.title, L"t");
  EXPECT_EQ(options.metadata.author, L"u");
  EXPECT_EQ(options.metadata.subject, L"v");
  EXPECT_EQ(options.metadata.keywords, L"w");
  EXPECT_EQ(options.metadata.creator, L"x");
  EXPECT_EQ(options.metadata.creationDate, L"D:2001");
  EXPECT_EQ(options.metadata.modDate, L"D:2002");
  EXPECT_EQ(options.jobs, 3u);
  EXPECT_EQ(options.compression, 12);
  EXPECT_EQ(options.limits.maxPixels, 99u);
  EXPECT_TRUE(options.recordNames && options.skipBad && options.dryRun);
  EXPECT_EQ(options.verbosity, Verbosity::kVerbose);
  EXPECT_EQ(Parse({"a", "-q"}).verbosity, Verbosity::kQuiet);
  EXPECT_TRUE(Parse({"-h"}).help);
  EXPECT_TRUE(Parse({"--version"}).version);
}

TEST(ParseOptions, RefusesWhatContradictsOrIsMissing) {
  for (const std::vector<const char*>& arguments :
       std::vector<std::vector<const char*>>{{"a", "-q", "-v"},
                                             {"a", "-o", ""},
                                             {"a", "--from-file", ""},
                                             {"-", "-"},
                                             {"-", "--from-file", "-"},
                                             {"a", "-j", "0"},
                                             {"a", "-j", "257"},
                                             {"a", "-j", "3x"},
                                             {"a", "--compression", "-1"},
                                             {"a", "--compression", "13"},
                                             {"a", "--max-pixels", "0"},
                                             {"a", "--title", "\xFF"},
                                             {"a", "--role", "photos"},
                                             {"a", "-f", ""}}) {
    EXPECT_THROW(Parse(arguments), UsageError);
  }
  EXPECT_NO_THROW(Parse({"-", "--from-file", "x"}));
  EXPECT_EQ(Parse({"a", "--max-pixels", "1"}).limits.maxPixels, 1u);
  EXPECT_EQ(Parse({"a", "--max-pixels", "1099511627776"}).limits.maxPixels, uint64_t{1} << 40);
  EXPECT_THROW(Parse({"a", "--max-pixels", "1099511627777"}), UsageError);
  EXPECT_NO_THROW(Parse({"--from-file", "-", "-j", "256", "--compression", "0"}));
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
}  // namespace pictures::tool
