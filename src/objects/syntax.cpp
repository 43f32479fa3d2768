// The syntax of objects, ISO 32000-1, 7.2 and 7.3.

#include "objects/syntax.h"

#include <cstddef>
#include <map>
#include <string>

#include "objects/views.h"

namespace {

constexpr int kMostNested = 100;
constexpr std::size_t kMostDigits = 18;

bool IsSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r' && c != '\v');
}

constexpr bool IsDelimiter(char c) {
  switch (c) {
    case '(':
    case ')':
    case '<':
    case '>':
    case '[':
    case ']':
    case '{':
    case '}':
    case '/':
    case '%':
      return true;
    default:
      return false;
  }
}

// Looked up, since nearly every character of what hosts give is asked this.
struct RegularCharacters {
  bool are[256] = {};

  constexpr RegularCharacters() {
    for (char c = '!'; c <= '~'; ++c) are[static_cast<unsigned char>(c)] = !IsDelimiter(c);
  }
};
constexpr RegularCharacters kRegular;

bool IsRegular(char c) {
  return kRegular.are[static_cast<unsigned char>(c)];
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsHexDigit(char c) {
  return IsDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

int HexValue(char c) {
  return IsDigit(c) ? c - '0' : (c | 0x20) - 'a' + 10;
}

// A name's characters, whichever way they are spelled.
std::string Spelled(std::string_view name) {
  std::string text;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const bool isCode = name[i] == '#';
    text.push_back(isCode ? static_cast<char>(16 * HexValue(name[i + 1]) + HexValue(name[i + 2]))
                          : name[i]);
    if (isCode) i += 2;
  }
  return text;
}

// Takes objects from the front of a text. Each member returns whether there was what it takes.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest(text) {}

  bool AtEnd() const { return rest.empty(); }

  void SkipSpace() {
    while (!rest.empty() && IsSpace(rest.front())) rest.remove_prefix(1);
  }

  bool TakeObject(int depth) {
    switch (rest.empty() ? '\0' : rest.front()) {
      case '/':
        return TakeName();
      case '(':
        return TakeString();
      case '<':
        return StartsWith(rest, "<<") ? TakeDictionary(depth) : TakeHexString();
      case '[':
        return TakeArray(depth);
      default:
        return TakeReference() || TakeWord();
    }
  }

  // Names may be empty where they are objects; those that are keys may not.
  bool TakeName() {
    if (!Take('/')) return false;
    const std::string_view name = TakeRegular();
    for (std::size_t i = name.find('#'); i != std::string_view::npos; i = name.find('#', i + 1)) {
      if (name.size() - i < 3 || !IsHexDigit(name[i + 1]) || !IsHexDigit(name[i + 2])) return false;
      if (name[i + 1] == '0' && name[i + 2] == '0') return false;
    }
    return true;
  }

  bool TakeKey() { return rest.size() > 1 && IsRegular(rest[1]) && TakeName(); }

  // A number that names an object, of at most nine digits and not 0; "0"; "R". What is none is put
  // back.
  bool TakeReference() {
    const std::string_view start = rest;
    const std::string_view number = TakeRegular();
    const bool names = AreDigits(number) && number.size() <= 9 &&
                       number.find_first_not_of('0') != std::string_view::npos;
    SkipSpace();
    const bool isFirst = names && TakeRegular() == "0";
    SkipSpace();
    if (isFirst && TakeRegular() == "R") return true;
    rest = start;
    return false;
  }

 private:
  bool Take(char token) {
    if (rest.empty() || rest.front() != token) return false;
    rest.remove_prefix(1);
    return true;
  }

  std::string_view TakeRegular() {
    std::size_t size = 0;
    while (size < rest.size() && IsRegular(rest[size])) ++size;
    const std::string_view word = rest.substr(0, size);
    rest.remove_prefix(size);
    return word;
  }

  bool TakeString() {
    int open = 0;
    for (std::size_t i = 0; i < rest.size(); ++i) {
      if (rest[i] == '\\') {
        ++i;
      } else if (rest[i] == '(') {
        ++open;
      } else if (rest[i] == ')' && --open == 0) {
        rest.remove_prefix(i + 1);
        return true;
      }
    }
    return false;
  }

  bool TakeHexString() {
    rest.remove_prefix(1);
    while (!rest.empty() && (IsHexDigit(rest.front()) || IsSpace(rest.front()))) {
      rest.remove_prefix(1);
    }
    return Take('>');
  }

  bool TakeArray(int depth) {
    rest.remove_prefix(1);
    for (SkipSpace(); !Take(']'); SkipSpace()) {
      if (depth == kMostNested || !TakeObject(depth + 1)) return false;
    }
    return true;
  }

  bool TakeDictionary(int depth) {
    rest.remove_prefix(2);
    std::map<std::string, std::string> keys;
    for (SkipSpace(); !StartsWith(rest, ">>"); SkipSpace()) {
      const std::string_view start = rest;
      if (depth == kMostNested || !TakeKey()) return false;
      const std::string key = Spelled(start.substr(0, start.size() - rest.size()));
      if (keys.count(key) != 0) return false;
      keys[key];
      SkipSpace();
      if (!TakeObject(depth + 1)) return false;
    }
    rest.remove_prefix(2);
    return true;
  }

  // Null, a boolean or a number.
  bool TakeWord() {
    const std::string_view word = TakeRegular();
    return word == "null" || word == "true" || word == "false" || IsNumber(word);
  }

  static bool IsNumber(std::string_view word) {
    if (StartsWith(word, "+") || StartsWith(word, "-")) word.remove_prefix(1);
    const std::size_t point = word.find('.');
    const std::string_view whole = word.substr(0, point);
    const std::string_view decimals =
        point == std::string_view::npos ? std::string_view() : word.substr(point + 1);
    return AreDigits(whole) && AreDigits(decimals) && whole.size() + decimals.size() > 0;
  }

  static bool AreDigits(std::string_view text) {
    for (const char c : text) {
      if (!IsDigit(c)) return false;
    }
    return text.size() <= kMostDigits;
  }

  std::string_view rest;
};

}  // namespace

bool IsName(std::string_view text) {
  Scanner scanner(text);
  return scanner.TakeKey() && scanner.AtEnd();
}

bool IsNamePath(std::string_view text) {
  Scanner scanner(text);
  while (!scanner.AtEnd()) {
    if (!scanner.TakeKey()) return false;
  }
  return !text.empty();
}

bool IsDirectObject(std::string_view text) {
  Scanner scanner(text);
  scanner.SkipSpace();
  return !scanner.TakeReference() && IsOneObject(text);
}

bool IsOneObject(std::string_view text) {
  Scanner scanner(text);
  scanner.SkipSpace();
  if (!scanner.TakeObject(1)) return false;
  scanner.SkipSpace();
  return scanner.AtEnd();
}
