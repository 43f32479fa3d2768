// The lines of a dictionary, taken apart.

#include "dict_reader.h"

#include <algorithm>

namespace golden {
namespace {

bool IsRegular(char c) {
  return c > ' ' && c < 0x7F && std::string("()<>[]{}/%").find(c) == std::string::npos;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// "12", "-0.5000", and what the number format makes of the rest: "inf", "-nan", and the first 29
// characters of a number with more.
bool IsNumber(const std::string& text) {
  const std::string size = text.substr(text.starts_with('-') ? 1 : 0);
  if (size == "inf" || size == "nan") return true;
  const std::size_t point = std::min(size.find('.'), size.size());
  const auto digits = [](const std::string& part) {
    return std::all_of(part.begin(), part.end(), IsDigit);
  };
  return point > 0 && digits(size.substr(0, point)) &&
         (point == size.size() || digits(size.substr(point + 1)));
}

class LineParser {
 public:
  LineParser(const std::string& line, std::uint64_t offset) : line_(line), offset_(offset) {}

  bool AtEnd() const { return at_ == line_.size(); }
  bool At(char c) const { return at_ < line_.size() && line_[at_] == c; }

  std::string Name() {
    const std::size_t start = at_;
    if (!At('/')) Fail("expected a name");
    ++at_;
    while (at_ < line_.size() && IsRegular(line_[at_])) ++at_;
    return line_.substr(start, at_ - start);
  }

  void Blank() {
    if (!At(' ')) Fail("expected one blank");
    ++at_;
  }

  DictEntry Value(const std::string& path) {
    DictEntry entry{path, DictEntry::kName, "", {}, 0, offset_};
    const std::size_t start = at_;
    if (At('/')) {
      Name();
    } else if (At('(')) {
      entry.kind = DictEntry::kString;
      String();
    } else if (At('[') || At(']')) {
      entry.kind = DictEntry::kArray;
      Array(entry);
    } else {
      entry.kind = Plain(entry.references);
    }
    entry.text = line_.substr(start, at_ - start);
    return entry;
  }

  [[noreturn]] void Fail(const std::string& what) const {
    throw StructureError(offset_ + at_, "in a dictionary: " + what + " in \"" +
                                            Escaped(std::string_view(line_).substr(0, 120)) + "\"");
  }

 private:
  // "()" or a text behind the byte-order mark, with control bytes in octal and with parentheses
  // and backslashes escaped.
  void String() {
    std::string bytes;
    for (++at_; !At(')'); ++at_) {
      if (AtEnd()) Fail("a string without an end");
      const unsigned char c = static_cast<unsigned char>(line_[at_]);
      if (c == '(') Fail("a parenthesis without a backslash");
      if (c < 0x20) Fail("a control byte in a string");
      if (c != '\\') {
        bytes += static_cast<char>(c);
        continue;
      }
      const std::string octal = line_.substr(at_ + 1, 3);
      if (!octal.empty() && std::string("\\()").find(octal[0]) != std::string::npos) {
        bytes += octal[0];
        ++at_;
      } else if (octal.size() == 3 && octal[0] == '0' && octal[1] >= '0' && octal[1] <= '3' &&
                 octal[2] >= '0' && octal[2] <= '7') {
        bytes += static_cast<char>((octal[1] - '0') * 8 + (octal[2] - '0'));
        at_ += 3;
      } else {
        Fail("an escape that is not written");
      }
    }
    ++at_;
    if (!bytes.empty() &&
        (bytes.size() % 2 != 0 || bytes.size() < 4 || !bytes.starts_with("\xFE\xFF"))) {
      Fail("a string that is not UTF-16 behind its mark");
    }
  }

  // Items between "[" and "]" with one blank between them. An array of no references is the one
  // byte "]".
  void Array(DictEntry& entry) {
    if (At('[')) {
      ++at_;
      while (!At(']')) {
        if (entry.items > 0) Blank();
        if (At('/')) {
          Name();
        } else {
          Plain(entry.references);
        }
        ++entry.items;
      }
    }
    ++at_;
  }

  // A number, a boolean or a reference "12 0 R".
  DictEntry::Kind Plain(std::vector<std::int64_t>& references) {
    const std::string word = Word();
    if (word == "true" || word == "false") return DictEntry::kBoolean;
    if (!IsNumber(word)) Fail("\"" + Escaped(word) + "\" is no value");
    const bool reference = line_.compare(at_, 4, " 0 R") == 0 &&
                           (at_ + 4 == line_.size() || !IsRegular(line_[at_ + 4]));
    if (!reference) return DictEntry::kNumber;
    if (word.find('.') != std::string::npos || word.size() > 11) Fail("a reference to no number");
    references.push_back(std::stoll(word));
    at_ += 4;
    return DictEntry::kReference;
  }

  std::string Word() {
    const std::size_t start = at_;
    while (at_ < line_.size() && IsRegular(line_[at_])) ++at_;
    return line_.substr(start, at_ - start);
  }

  const std::string& line_;
  std::uint64_t offset_;
  std::size_t at_ = 0;
};

}  // namespace

const DictEntry* Dict::Find(const std::string& path) const {
  const auto entry = std::find_if(entries.begin(), entries.end(),
                                  [&path](const DictEntry& e) { return e.path == path; });
  return entry == entries.end() ? nullptr : &*entry;
}

std::string Dict::Text(const std::string& path, DictEntry::Kind kind) const {
  const DictEntry* entry = Find(path);
  return entry != nullptr && entry->kind == kind ? entry->text : "";
}

Dict ReadDict(ByteReader& in) {
  Dict dict;
  std::vector<std::size_t> parents;  // lengths of the paths of the dictionaries around
  std::string path;
  for (;;) {
    const std::uint64_t offset = in.Position();
    const std::string line = in.Line();
    if (line == ">>") {
      if (parents.empty()) return dict;
      path.resize(parents.back());
      parents.pop_back();
      continue;
    }
    LineParser parser(line, offset);
    if (line == "endobj" || line == "stream") parser.Fail("\"<<\" without \">>\"");
    std::string key = parser.Name();
    if (parser.AtEnd()) {
      in.Expect("<<\r\n", "the dictionary " + key);
      parents.push_back(path.size());
      path += key;
      continue;
    }
    for (;;) {
      parser.Blank();
      dict.entries.push_back(parser.Value(path + key));
      if (parser.AtEnd()) break;
      parser.Blank();
      key = parser.Name();
    }
  }
}

}  // namespace golden
