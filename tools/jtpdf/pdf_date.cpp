#include "pdf_date.h"

#include <algorithm>
#include <optional>

#include "usage_error.h"

namespace pictures::tool {
namespace {

constexpr auto kWanted =
    "date; write it as 2026-05-17, 2026-05-17T12:30:00Z or 2026-05-17T12:30:00+02:00";

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// '0' in the pattern stands for a digit.
bool Fits(std::string_view text, std::string_view pattern) {
  return std::equal(text.begin(), text.end(), pattern.begin(), pattern.end(),
                    [](char t, char p) { return p == '0' ? IsDigit(t) : t == p; });
}

bool IsLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int DaysIn(int year, int month) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12) return 0;
  return kDays[month - 1] + (month == 2 && IsLeapYear(year) ? 1 : 0);
}

// Whether digits such as 20260517123000, or some of the first, name a day and a time that there
// are.
bool IsReal(std::string_view digits) {
  const auto part = [&](size_t at, int otherwise) {
    return digits.size() < at + 2 ? otherwise : (digits[at] - '0') * 10 + digits[at + 1] - '0';
  };
  const int year = part(0, 0) * 100 + part(2, 0), day = part(6, 1);
  return day >= 1 && day <= DaysIn(year, part(4, 1)) && part(8, 0) <= 23 && part(10, 0) <= 59 &&
         part(12, 0) <= 59;
}

// Takes "Z", "+02", "+0200" or "+02:00" off the end of a date with a time; gives it as PDF writes
// it, empty where there is none, or nothing where it is no zone.
std::optional<std::string> TakeZone(std::string* date, size_t time) {
  if (date->back() == 'Z' || date->back() == 'z') {
    date->pop_back();
    return "Z";
  }
  const size_t sign = date->find_first_of("+-", time);
  if (sign == std::string::npos) return "";
  std::string zone = date->substr(sign);
  date->resize(sign);
  std::erase(zone, ':');
  if (zone.size() == 3) zone += "00";
  if (!Fits(zone.substr(1), "0000") || zone.substr(1, 2) > "23" || zone.substr(3) > "59") {
    return std::nullopt;
  }
  return zone.substr(0, 3) + "'" + zone.substr(3) + "'";
}

}  // namespace

std::wstring ParseDate(std::string_view text) {
  constexpr std::string_view kPatterns[] = {"0000", "0000-00", "0000-00-00", "0000-00-00T00:00",
                                            "0000-00-00T00:00:00"};
  std::string rest(text);
  std::optional<std::string> zone = "";
  const size_t time = rest.find_first_of("Tt ");
  if (time != std::string::npos) {
    rest[time] = 'T';
    zone = TakeZone(&rest, time);
  }
  const bool fits = std::any_of(std::begin(kPatterns), std::end(kPatterns),
                                [&](std::string_view pattern) { return Fits(rest, pattern); });
  std::erase_if(rest, [](char c) { return !IsDigit(c); });
  if (!zone || !fits || !IsReal(rest)) Refuse(text, kWanted);
  const std::string date = "D:" + rest + *zone;
  return {date.begin(), date.end()};
}

}  // namespace pictures::tool
