// Key paths rendered as nested dictionaries.

#include "objects/dict.h"

#include <algorithm>

#include "objects/text_string.h"

namespace {

// Room to reserve for the blank, the line end, and the opening and closing of two dictionaries.
constexpr std::size_t kRoomForNesting = 24;

// "/A/B" for "/A/B/C"; "" where the only solidus is the first byte or there is none.
std::string_view ParentPath(std::string_view key) {
  const std::size_t last = key.rfind('/');
  return last == std::string_view::npos ? std::string_view() : key.substr(0, last);
}

// Behind the last line end of text from start on, or start if there is none.
std::size_t BehindLastLineEnd(std::string_view text, std::size_t start) {
  std::size_t position = text.size();
  while (position > start && text[position - 1] != '\n' && text[position - 1] != '\r') --position;
  return position;
}

// Appends what ItemsAsString returns.
void AppendItem(std::string& body, std::string_view key, std::string_view value,
                std::string_view previousParent) {
  const std::size_t last = key.rfind('/');
  const bool isPath = last != std::string_view::npos;
  const std::string_view leaf = isPath ? key.substr(last) : key;
  // Kept: a key without any solidus is its own parent and opens a dictionary of its name.
  std::string_view parent = isPath ? key.substr(0, last) : key;

  // An equal parent is the same dictionary going on: nothing to close, nothing to open.
  if (parent == previousParent) {
    body.append(leaf).append(1, ' ').append(value);
    return;
  }

  // Kept: after a mismatch the loop still compares with the same component of previousParent, so a
  // parent that diverges and then meets that name again takes it for open already.
  std::string openings;
  for (std::string component = MovePart(parent); !component.empty(); component = MovePart(parent)) {
    if (component == CopyPart(previousParent)) {
      MovePart(previousParent);
    } else {
      openings.append(component).append("\r\n<<\r\n");
    }
  }
  // Whatever was not consumed is closed in front of the openings.
  while (!MovePart(previousParent).empty()) body += ">>\r\n";

  // Openings stand behind the last line end of the entry, which only a value (or a name) that
  // holds line ends itself can have.
  const std::size_t start = body.size();
  body.append(leaf).append(1, ' ').append(value);
  body.insert(BehindLastLineEnd(body, start), openings);
}

bool IsRendered(std::string const& key) {
  return !key.empty() && key != "/Length" && key != "/Stream";
}

}  // namespace

JTPDFDict::JTPDFDict(unsigned int count, JTPDFDictionaryItem const* items) {
  for (unsigned int i = 0; i < count; ++i) {
    wchar_t const* const value = items[i].value;
    std::string literal = PsString(value == nullptr ? L"" : value);
    (*this)[ValidKey(items[i].key)] = std::move(literal);
  }
}

std::string JTPDFDict::ValidKey(std::string const& key) {
  std::string valid;
  for (const char c : key) {
    // Bytes from 0x80 on are dropped whatever the sign of char: key text is 7-bit name text.
    if (c >= '!' && c <= '~') valid += c;
  }
  if (valid.empty()) return "/JT_DUMMY_KEY";
  if (valid.front() != '/') valid.insert(valid.begin(), '/');
  return valid;
}

std::string JTPDFDict::AsString() const {
  std::size_t size = 1;
  for (auto const& [key, value] : *this) size += key.size() + value.size() + kRoomForNesting;
  std::string body;
  body.reserve(size);
  std::string_view previousParent;
  for (auto const& [key, value] : *this) {
    if (IsRendered(key)) {
      AppendItem(body, key, value, previousParent);
      body += "\r\n";
    }
    // The keys that are never rendered move the open path on all the same (kept).
    previousParent = ParentPath(key);
  }
  AppendItem(body, "", "", previousParent);
  return TrimDictionary(std::move(body));
}

std::string ItemsAsString(std::string_view key, std::string_view value,
                          std::string_view previousParent) {
  std::string text;
  AppendItem(text, key, value, previousParent);
  return text;
}

std::string CopyPart(std::string_view path) {
  if (path.starts_with('/')) path.remove_prefix(1);
  const std::string_view name = path.substr(0, path.find('/'));
  return name.empty() ? std::string() : '/' + std::string(name);
}

std::string MovePart(std::string_view& path) {
  std::string component = CopyPart(path);
  path.remove_prefix(std::min(component.size(), path.size()));
  return component;
}

std::string TrimDictionary(std::string text) {
  static const std::string gTrimChars = [] {
    std::string bytes;
    for (char byte = 0x01; byte <= 0x20; ++byte) bytes += byte;
    return bytes;
  }();
  const std::size_t first = text.find_first_not_of(gTrimChars);
  if (first == std::string::npos) return std::string();
  text.resize(text.find_last_not_of(gTrimChars) + 1);
  text.erase(0, first);
  return text;
}
