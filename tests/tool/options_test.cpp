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
