#include "measures.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <locale>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

#include "text.h"

namespace pictures {
namespace {

[[noreturn]] void Refuse(std::string_view text, const std::string& wanted) {
  throw MeasureError("\"" + Printable(text) + "\" is no " + wanted);
}

std::string_view UnitOf(std::string_view measure) {
  return measure.substr(std::min(measure.find_first_not_of("0123456789."), measure.size()));
}

// A number at the text's begin, with a point whatever the locale; what follows it is the unit. The
// number alone goes through a stream: some standard libraries read no double by from_chars, and
// some streams take letters behind a number for a part of it.
std::optional<std::pair<double, std::string_view>> SplitNumber(std::string_view text) {
  const std::string_view unit = UnitOf(text);
  std::istringstream number(std::string(text.substr(0, text.size() - unit.size())));
  number.imbue(std::locale::classic());
  double value = 0;
  if (!(number >> value) || !number.eof() || value > 1e6) return std::nullopt;
  return std::pair(value, unit);
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
constexpr std::array<Paper, 25> kPapers{{{"a0", 841 * kMillimetre, 1189 * kMillimetre},
                                         {"a1", 594 * kMillimetre, 841 * kMillimetre},
                                         {"a2", 420 * kMillimetre, 594 * kMillimetre},
                                         {"a3", 297 * kMillimetre, 420 * kMillimetre},
                                         {"a4", 210 * kMillimetre, 297 * kMillimetre},
                                         {"a5", 148 * kMillimetre, 210 * kMillimetre},
                                         {"a6", 105 * kMillimetre, 148 * kMillimetre},
                                         {"b0", 1000 * kMillimetre, 1414 * kMillimetre},
                                         {"b1", 707 * kMillimetre, 1000 * kMillimetre},
                                         {"b2", 500 * kMillimetre, 707 * kMillimetre},
                                         {"b3", 353 * kMillimetre, 500 * kMillimetre},
                                         {"b4", 250 * kMillimetre, 353 * kMillimetre},
                                         {"b5", 176 * kMillimetre, 250 * kMillimetre},
                                         {"b6", 125 * kMillimetre, 176 * kMillimetre},
                                         {"jb0", 1030 * kMillimetre, 1456 * kMillimetre},
                                         {"jb1", 728 * kMillimetre, 1030 * kMillimetre},
                                         {"jb2", 515 * kMillimetre, 728 * kMillimetre},
                                         {"jb3", 364 * kMillimetre, 515 * kMillimetre},
                                         {"jb4", 257 * kMillimetre, 364 * kMillimetre},
                                         {"jb5", 182 * kMillimetre, 257 * kMillimetre},
                                         {"jb6", 128 * kMillimetre, 182 * kMillimetre},
                                         {"letter", 612, 792},
                                         {"legal", 612, 1008},
                                         {"tabloid", 792, 1224},
                                         {"ledger", 1224, 792}}};

// Two measures, as texts that may be empty: "WxH", "W", "Wx" or "xH"; "V:H" or "V".
struct Pair {
  std::string first, second;
};

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
      if (!*to) Refuse(text, kPageHelp);
    }
    if (!size.Given()) Refuse(text, kPageHelp);
  }
  if (turned) std::swap(size.width, size.height);
  for (const auto& side : {size.width, size.height}) {
    if (side && (*side < kLeastPage || *side > kMostPage)) {
      throw MeasureError(
          "\"" + Printable(text) +
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

std::optional<Measure> ParseZoom(std::string_view text) {
  const auto number = SplitNumber(text);
  if (!number || (number->second != "" && number->second != "%")) return std::nullopt;
  return Measure{number->first, number->second == "%"};
}

Grid ParseGrid(std::string_view text) {
  constexpr unsigned kMost = 100;
  const Pair pair = SplitPair(LowerAscii(text), 'x');
  Grid grid;
  for (const auto& [digits, to] :
       {std::pair(&pair.first, &grid.columns), std::pair(&pair.second, &grid.rows)}) {
    const auto [end, error] = std::from_chars(digits->data(), digits->data() + digits->size(), *to);
    if (error != std::errc{} || end != digits->data() + digits->size() || *to < 1 || *to > kMost) {
      Refuse(text, "grid of pictures; write it as 2x3: columns by rows, each at most 100");
    }
  }
  return grid;
}

}  // namespace pictures
