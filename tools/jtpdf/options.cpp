#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <thread>
#include <utility>

#include "text.h"

namespace tool {

// Twenty-four lines of eighty columns: the smallest terminal shows them all.
const std::string_view kHelp =
    R"(Usage: jtpdf [OPTION]... FILE|FOLDER|-...   Each image becomes a page of a PDF
 -o, --output FILE     else to standard output    --from-file FILE  more inputs
 -S, --pagesize SIZE   A4, A5, A3, Letter, Legal, WxH (mm, cm, in, pt), A4^T
 -s, --imgsize SIZE    WxH, Wx, xH, 300dpi, 50%       -b, --border V[:H]
 -f, --fit HOW         into, fill, exact, shrink, enlarge
 -a, --auto-orient     turn pages as their images     --crop-border V[:H]
 -r, --rotation HOW    auto (EXIF), none, 0, 90, 180, 270 (clockwise)
     --title, --author, --subject, --keywords, --creator TEXT
     --creationdate, --moddate DATE   2026-05-17T12:30:00Z; none unless asked
     --role ROLE       photo, text, background, mask, border, clipart, alpha,
                       shape, other: recorded; so are names with --record-names
 -j, --jobs N          images at a time (default: the processors)
     --compression N   0 to 12 (6), for images that are not stored as they are
     --max-pixels N    refuse larger images, and more than 4 N bytes (500000000)
     --max-input N     refuse more bytes (4G) from a pipe
     --skip-bad        leave out inputs that fail; else nothing is written
     --dry-run         list what would become of each input
 -q, --quiet  -v, --verbose  -h, --help  --version
Recognised by content: JPEG, JPEG 2000, PNG, TIFF, WebP. Exit: 0 done, 1 failed,
2 usage. The manual is jtpdf(1). Examples:
  jtpdf scan*.jpg photo.png map.jp2 -o album.pdf
  jtpdf -S A4 -b 1cm -a holiday/ -o holiday.pdf
  find . -name '*.tif' -print0 | jtpdf --from-file - -o plans.pdf
)";

namespace {

[[noreturn]] void Refuse(std::string_view text, const std::string& wanted) {
  throw UsageError("\"" + Printable(text) + "\" is no " + wanted);
}

// A number at the text's begin, with a point whatever the locale; what follows it is the unit.
std::optional<std::pair<double, std::string_view>> SplitNumber(std::string_view text) {
  double value = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
  if (error != std::errc{} || !(value >= 0 && value <= 1e6)) return std::nullopt;
  return std::pair(value, text.substr(static_cast<size_t>(end - text.data())));
}

std::optional<double> TryLength(std::string_view text) {
  constexpr std::pair<std::string_view, double> kUnits[] = {
      {"", 1}, {"pt", 1}, {"in", 72}, {"cm", 72 / 2.54}, {"mm", 72 / 25.4}};
  const std::string lower = LowerAscii(text);
  const auto number = SplitNumber(lower);
  if (!number) return std::nullopt;
  for (const auto& [unit, points] : kUnits) {
    if (number->second == unit) return number->first * points;
  }
  return std::nullopt;
}

constexpr char kBracketMark = '\x01';

constexpr auto kLengthHelp = "length; write it as 20mm, 2cm, 0.8in or 57pt";
constexpr auto kPageHelp =
    "page size; choose A4, A5, A3, Letter, Legal or a size such as 10cmx15cm (mm, cm, in, pt), "
    "with ^T behind it to lay it on its side";
constexpr auto kImageHelp = "image size; write it as 10cmx15cm, 10cm, x15cm, 50%, 300dpi or A4";

struct Paper {
  std::string_view name;
  double width, height;  // points
};

constexpr double kMillimetre = 72 / 25.4;
constexpr std::array<Paper, 12> kPapers{{{"a0", 841 * kMillimetre, 1189 * kMillimetre},
                                         {"a1", 594 * kMillimetre, 841 * kMillimetre},
                                         {"a2", 420 * kMillimetre, 594 * kMillimetre},
                                         {"a3", 297 * kMillimetre, 420 * kMillimetre},
                                         {"a4", 210 * kMillimetre, 297 * kMillimetre},
                                         {"a5", 148 * kMillimetre, 210 * kMillimetre},
                                         {"a6", 105 * kMillimetre, 148 * kMillimetre},
                                         {"b4", 250 * kMillimetre, 353 * kMillimetre},
                                         {"b5", 176 * kMillimetre, 250 * kMillimetre},
                                         {"letter", 612, 792},
                                         {"legal", 612, 1008},
                                         {"tabloid", 792, 1224}}};

// Two measures, as texts that may be empty: "WxH", "W", "Wx" or "xH"; "V:H" or "V".
struct Pair {
  std::string first, second;
};

std::string_view UnitOf(std::string_view measure) {
  return measure.substr(std::min(measure.find_first_not_of("0123456789."), measure.size()));
}

// A unit that is written once holds for both: 8.5x11in.
Pair SplitPair(std::string_view text, char separator) {
  const size_t at = text.find(separator);
  if (at == std::string_view::npos) return {std::string(text), {}};
  const std::string_view first = text.substr(0, at), second = text.substr(at + 1);
  const auto with = [](std::string_view measure, std::string_view unit) {
    const bool bare = !measure.empty() && UnitOf(measure).empty();
    return std::string(measure) + std::string(bare ? unit : "");
  };
  return {with(first, UnitOf(second)), with(second, UnitOf(first))};
}

// Takes "^T" off the end and tells whether it was there.
bool TakeTurned(std::string* text) {
  if (!text->ends_with("^t")) return false;
  text->resize(text->size() - 2);
  return true;
}

const Paper* FindPaper(std::string_view name) {
  const auto it = std::find_if(kPapers.begin(), kPapers.end(),
                               [&](const Paper& paper) { return paper.name == name; });
  return it == kPapers.end() ? nullptr : &*it;
}

std::wstring ParseText(const std::string& text, const char* option) {
  const std::optional<std::wstring> wide = FromUtf8(text);
  if (!wide) throw UsageError(std::string(option) + ": the text is not UTF-8; convert it first");
  return *wide;
}

constexpr std::array<std::pair<std::string_view, TPdfImageRole>, 9> kRoles{
    {{"background", kPdfImageRoleBackground},
     {"photo", kPdfImageRolePhoto},
     {"mask", kPdfImageRoleMask},
     {"border", kPdfImageRoleBorder},
     {"clipart", kPdfImageRoleClipArt},
     {"alpha", kPdfImageRoleAlpha},
     {"text", kPdfImageRoleText},
     {"shape", kPdfImageRoleShape},
     {"other", kPdfImageRoleOther}}};

// Degrees clockwise; none given: as EXIF says.
constexpr std::array<std::pair<std::string_view, std::optional<int>>, 6> kTurns{
    {{"auto", std::nullopt}, {"none", 0}, {"0", 0}, {"90", 90}, {"180", 180}, {"270", 270}}};

constexpr std::array<std::pair<std::string_view, Fit>, 5> kFits{{{"into", Fit::kInto},
                                                                 {"fill", Fit::kFill},
                                                                 {"exact", Fit::kExact},
                                                                 {"shrink", Fit::kShrink},
                                                                 {"enlarge", Fit::kEnlarge}}};

// The value for a word of a table, without regard to case.
template <class Table>
auto Choose(const Table& table, const std::string& word, const char* option) {
  std::string words;
  for (const auto& [name, value] : table) {
    if (name == LowerAscii(word)) return value;
    words += (words.empty() ? "" : ", ") + std::string(name);
  }
  throw UsageError(std::string(option) + ": \"" + Printable(word) + "\" is none of " + words);
}

template <class Number>
Number ParseNumber(const std::string& text, Number least, Number most, const char* option) {
  Number value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size() || value < least || value > most) {
    throw UsageError(std::string(option) + ": \"" + Printable(text) +
                     "\" is no whole number from " + std::to_string(least) + " to " +
                     std::to_string(most));
  }
  return value;
}

// "20M": a number of bytes.
uint64_t ParseByteCount(const std::string& text, const char* option) {
  constexpr uint64_t kMost = uint64_t{1} << 40;
  const std::string lower = LowerAscii(text);
  const size_t suffix = std::string_view("kmg").find(lower.empty() ? ' ' : lower.back());
  if (suffix == std::string_view::npos) return ParseNumber<uint64_t>(text, 1, kMost, option);
  const int shift = 10 * (static_cast<int>(suffix) + 1);
  return ParseNumber<uint64_t>(text.substr(0, text.size() - 1), 1, kMost >> shift, option) << shift;
}

bool IsLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

}  // namespace

double ParseLength(std::string_view text) {
  const std::optional<double> length = TryLength(text);
  if (!length) Refuse(text, kLengthHelp);
  return *length;
}

PageSize ParsePageSize(std::string_view text) {
  std::string rest = LowerAscii(text);
  const bool turned = TakeTurned(&rest);
  PageSize size;
  if (const Paper* paper = FindPaper(rest)) {
    size = {paper->width, paper->height};
  } else {
    const Pair sides = SplitPair(rest, 'x');
    for (const auto& [side, to] :
         {std::pair(&sides.first, &size.width), std::pair(&sides.second, &size.height)}) {
      if (side->empty()) continue;
      *to = TryLength(*side);
      if (!*to || **to <= 0) Refuse(text, kPageHelp);
    }
    if (!size.Given()) Refuse(text, kPageHelp);
  }
  if (turned) std::swap(size.width, size.height);
  for (const auto& side : {size.width, size.height}) {
    if (side && (*side < kLeastPage || *side > kMostPage)) {
      throw UsageError("-S: \"" + Printable(text) +
                       "\" is out of range: the sides of PDF pages measure 3 to 14400 pt (1.06 mm "
                       "to 5.08 m)");
    }
  }
  return size;
}

ImageSize ParseImageSize(std::string_view text) {
  std::string rest = LowerAscii(text);
  const bool turned = TakeTurned(&rest);
  ImageSize size;
  if (const Paper* paper = FindPaper(rest)) {
    size.width = Measure{paper->width, false};
    size.height = Measure{paper->height, false};
  } else if (rest.ends_with("dpi")) {
    const auto number = SplitNumber(rest);
    if (!number || number->second != "dpi" || number->first <= 0) Refuse(text, kImageHelp);
    size.dpi = number->first;
  } else {
    const Pair sides = SplitPair(rest, 'x');
    for (const auto& [side, to] :
         {std::pair(&sides.first, &size.width), std::pair(&sides.second, &size.height)}) {
      if (side->empty()) continue;
      const auto number = SplitNumber(*side);
      const bool percent = number && number->second == "%";
      const std::optional<double> length = percent ? number->first : TryLength(*side);
      if (!length || *length <= 0) Refuse(text, kImageHelp);
      *to = Measure{*length, percent};
    }
    if (!size.Given()) Refuse(text, kImageHelp);
  }
  if (turned) std::swap(size.width, size.height);
  return size;
}

Border ParseBorder(std::string_view text) {
  const Pair pair = SplitPair(text, ':');
  const double vertical = ParseLength(pair.first);
  const bool both = text.find(':') != std::string_view::npos;
  return {vertical, both ? ParseLength(pair.second) : vertical};
}

std::wstring ParseDate(std::string_view text) {
  constexpr auto kWanted =
      "date; write it as 2026-05-17, 2026-05-17T12:30:00Z or 2026-05-17T12:30:00+02:00";
  // '0' stands for a digit; the longest pattern that fits decides.
  constexpr std::string_view kPatterns[] = {"0000", "0000-00", "0000-00-00", "0000-00-00T00:00",
                                            "0000-00-00T00:00:00"};
  std::string rest(text);
  std::string zone;
  const size_t time = rest.find_first_of("Tt ");
  if (time != std::string::npos) {
    rest[time] = 'T';
    if (rest.back() == 'Z' || rest.back() == 'z') {
      zone = "Z";
      rest.pop_back();
    } else if (const size_t sign = rest.find_first_of("+-", time); sign != std::string::npos) {
      zone = rest.substr(sign);
      rest.resize(sign);
      std::erase(zone, ':');
      if (zone.size() == 3) zone += "00";
    }
  }
  const auto fits = [](std::string_view value, std::string_view pattern) {
    return std::ranges::equal(
        value, pattern, [](char v, char p) { return p == '0' ? v >= '0' && v <= '9' : v == p; });
  };
  if (std::none_of(std::begin(kPatterns), std::end(kPatterns),
                   [&](std::string_view pattern) { return fits(rest, pattern); })) {
    Refuse(text, kWanted);
  }
  std::string digits;
  for (const char c : rest) {
    if (c >= '0' && c <= '9') digits += c;
  }
  const auto part = [&](size_t at, int otherwise) {
    return digits.size() < at + 2 ? otherwise : (digits[at] - '0') * 10 + digits[at + 1] - '0';
  };
  const int month = part(4, 1);
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool realMonth = month >= 1 && month <= 12;
  const int days = realMonth ? kDays[month - 1] +
                                   (month == 2 && IsLeapYear(part(0, 0) * 100 + part(2, 0)) ? 1 : 0)
                             : 0;
  if (part(6, 1) < 1 || part(6, 1) > days || part(8, 0) > 23 || part(10, 0) > 59 ||
      part(12, 0) > 59) {
    Refuse(text, kWanted);
  }
  if (zone.size() > 1) {
    if (!fits(zone.substr(1), "0000") || zone.substr(1, 2) > "23" || zone.substr(3) > "59") {
      Refuse(text, kWanted);
    }
    zone = zone.substr(0, 3) + "'" + zone.substr(3) + "'";
  }
  const std::string date = "D:" + digits + zone;
  return {date.begin(), date.end()};
}

Options ParseOptions(int count, const char* const* arguments) {
  Options options;
  CLI::App app;
  app.set_help_flag();  // --help is ours
  // CLI11 takes "[a,b]" for a list, but names and titles may be written so: the mark that
  // ParseOptions puts behind the bracket hides it and is taken off again here.
  const auto add = [&](const char* names, auto& to) {
    return app.add_option(names, to)->transform([](std::string text) {
      if (text.ends_with(kBracketMark)) text.pop_back();
      return text;
    });
  };
  std::optional<std::string> output, pageSize, imageSize, border, cropBorder, fit, turn, role, jobs,
      compression, pixels, maxInput, creationDate, modDate;
  std::string title, author, subject, keywords, creator;
  bool quiet = false, verbose = false;
  add("inputs", options.inputs);
  add("-o,--output", output);
  add("--from-file", options.fromFile);
  add("-S,--pagesize", pageSize);
  add("-s,--imgsize", imageSize);
  add("-b,--border", border);
  add("-f,--fit", fit);
  add("-r,--rotation", turn);
  add("--crop-border", cropBorder);
  add("--role", role);
  add("--title", title);
  add("--author", author);
  add("--subject", subject);
  add("--keywords", keywords);
  add("--creator", creator);
  add("--creationdate", creationDate);
  add("--moddate", modDate);
  add("-j,--jobs", jobs);
  add("--compression", compression);
  add("--max-pixels", pixels);
  add("--max-input", maxInput);
  app.add_flag("-a,--auto-orient", options.layout.autoOrient);
  app.add_flag("--record-names", options.recordNames);
  app.add_flag("--skip-bad", options.skipBad);
  app.add_flag("--dry-run", options.dryRun);
  app.add_flag("-q,--quiet", quiet);
  app.add_flag("-v,--verbose", verbose);
  app.add_flag("-h,--help", options.help);
  app.add_flag("--version", options.version);
  try {
    std::vector<std::string> marked;  // the last first, as CLI11 wants them
    for (int i = count - 1; i > 0; --i) {
      marked.emplace_back(arguments[i]);
      if (marked.back().ends_with(']')) marked.back() += kBracketMark;
    }
    app.parse(marked);
  } catch (const CLI::ParseError& error) {
    throw UsageError(Printable(error.what()));
  }
  if (options.help || options.version) return options;

  if (pageSize) options.layout.page = ParsePageSize(*pageSize);
  if (imageSize) options.layout.image = ParseImageSize(*imageSize);
  if (border) options.layout.border = ParseBorder(*border);
  if (cropBorder) options.layout.cropBorder = ParseBorder(*cropBorder);
  if (fit) options.layout.fit = Choose(kFits, *fit, "-f");
  if (turn) options.layout.turn = Choose(kTurns, *turn, "-r");
  if (role) options.role = Choose(kRoles, *role, "--role");
  options.metadata = {
      ParseText(title, "--title"),        ParseText(author, "--author"),
      ParseText(subject, "--subject"),    ParseText(keywords, "--keywords"),
      ParseText(creator, "--creator"),    creationDate ? ParseDate(*creationDate) : L"",
      modDate ? ParseDate(*modDate) : L""};
  constexpr unsigned kMostJobs = 256;
  options.jobs = jobs ? ParseNumber(*jobs, 1u, kMostJobs, "-j")
                      : std::clamp(std::thread::hardware_concurrency(), 1u, kMostJobs);
  if (compression) options.compression = ParseNumber(*compression, 0, 12, "--compression");
  if (pixels) {
    options.limits.maxPixels = ParseNumber<uint64_t>(*pixels, 1, uint64_t{1} << 40, "--max-pixels");
  }
  if (maxInput) options.maxInput = ParseByteCount(*maxInput, "--max-input");
  if (output) {
    if (output->empty()) {
      throw UsageError("-o: the name is empty; name a file, or - for standard output");
    }
    options.output = *output;
  }
  if (quiet && verbose) throw UsageError("-q and -v contradict each other; choose one");
  if (quiet) options.verbosity = Verbosity::kQuiet;
  if (verbose) options.verbosity = Verbosity::kVerbose;

  if (options.inputs.empty() && options.fromFile.empty()) {
    throw UsageError("no input; name images or folders, or \"-\" for standard input");
  }
  const auto fromStandardInput =
      std::count(options.inputs.begin(), options.inputs.end(), "-") + (options.fromFile == "-");
  if (fromStandardInput > 1) throw UsageError("standard input can be read only once");
  return options;
}

}  // namespace tool
