// Key paths rendered as nested dictionaries.

#include "objects/dict.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "objects/text_string.h"
#include "objects/views.h"

namespace {

// A key taken apart at its last solidus: "/A/B" and "/C" for "/A/B/C", "" and "/A" for "/A".
struct KeyPath {
  std::string_view parent;
  std::string_view leaf;
};

KeyPath Split(std::string_view key) {
  const std::size_t last = key.rfind('/');
  // Kept: a key without any solidus is its own parent and opens a dictionary of its name.
  return last == std::string_view::npos ? KeyPath{key, key}
                                        : KeyPath{key.substr(0, last), key.substr(last)};
}

// The name of a path's first component, without its solidus; empty if there is none.
inline std::string_view FirstName(std::string_view path) {
  if (StartsWith(path, "/")) path.remove_prefix(1);
  return path.substr(0, path.find('/'));
}

// Drops as many bytes as the first component has with its solidus, be it there or not.
void DropFirst(std::string_view& path, std::string_view name) {
  if (!name.empty()) path.remove_prefix(std::min(name.size() + 1, path.size()));
}

// Walks through the components of parent that the open path does not have, and drops those that
// both have from it.
//
// Kept: after a mismatch the walk still compares with the same component of the open path, so a
// parent that diverges and then meets that name again takes it for open already.
template <typename Open>
void WalkOpenings(std::string_view parent, std::string_view& openPath, const Open& open) {
  for (std::string_view name = FirstName(parent); !name.empty(); name = FirstName(parent)) {
    DropFirst(parent, name);
    if (name == FirstName(openPath)) {
      DropFirst(openPath, name);
    } else {
      open(name);
    }
  }
}

// How many bytes of text its last line end and all before it take; 0 if there is none.
std::size_t LengthToLastLineEnd(std::string_view text) {
  // Two searches for what is never there are faster than one for either.
  if (text.find('\n') == std::string_view::npos && text.find('\r') == std::string_view::npos) {
    return 0;
  }
  return text.find_last_of("\r\n") + 1;
}

// A bound of what PutItem writes for an entry and for closing what it opens: key (twice, if it is
// its own parent) and value, blank and line end, an opening and a closing for each component. A
// component takes two bytes of the key at least, only the last one may take one.
std::size_t ItemBound(std::string_view key, std::string_view value) {
  constexpr std::string_view kPerComponent = "/\r\n<<\r\n>>\r\n";
  return 2 * key.size() + value.size() + 3 + (key.size() / 2 + 1) * kPerComponent.size();
}

char* Put(char* out, std::string_view text) {
  std::memcpy(out, text.data(), text.size());
  return out + text.size();
}

// Writes what ItemsAsString returns for an entry in another dictionary than the one before it.
char* PutItemElsewhere(char* out, KeyPath key, std::string_view value,
                       std::string_view previousParent) {
  // Whatever of the previous path this entry does not share is closed in front of its openings.
  std::string_view stillOpen = previousParent;
  WalkOpenings(key.parent, stillOpen, [](std::string_view) {});
  for (std::string_view name = FirstName(stillOpen); !name.empty(); name = FirstName(stillOpen)) {
    DropFirst(stillOpen, name);
    out = Put(out, ">>\r\n");
  }

  // Openings stand behind the last line end of the entry, which only a value (or a name) that
  // holds line ends itself can have.
  const std::size_t leafHead = LengthToLastLineEnd(key.leaf);
  const std::size_t valueHead = LengthToLastLineEnd(value);
  if (valueHead > 0) {
    out = Put(Put(Put(out, key.leaf), " "), value.substr(0, valueHead));
  } else {
    out = Put(out, key.leaf.substr(0, leafHead));
  }
  WalkOpenings(key.parent, previousParent,
               [&](std::string_view name) { out = Put(Put(Put(out, "/"), name), "\r\n<<\r\n"); });
  if (valueHead == 0) out = Put(Put(out, key.leaf.substr(leafHead)), " ");
  return Put(out, value.substr(valueHead));
}

// Writes what ItemsAsString returns and returns its end. AsString makes room for all entries at
// once, by ItemBound.
inline char* PutItem(char* out, KeyPath key, std::string_view value,
                     std::string_view previousParent) {
  // An equal parent is the same dictionary going on: nothing to close, nothing to open.
  if (key.parent == previousParent) return Put(Put(Put(out, key.leaf), " "), value);
  return PutItemElsewhere(out, key, value, previousParent);
}

bool IsRendered(std::string_view key) {
  return !key.empty() && key != "/Length" && key != "/Stream";
}

}  // namespace

JTPDFDict::JTPDFDict(unsigned int count, const JTPDFDictionaryItem* items) {
  for (unsigned int i = 0; i < count; ++i) {
    std::string literal = PsString(TextOrEmpty(items[i].value));
    (*this)[ValidKey(items[i].key)] = std::move(literal);
  }
}

std::string JTPDFDict::ValidKey(const std::string& key) {
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
  std::size_t bound = ItemBound("", "");
  for (const auto& [key, value] : *this) bound += ItemBound(key, value);
  std::string body(bound, '\0');
  char* out = body.data();
  std::string_view previousParent;
  for (const auto& [key, value] : *this) {
    const KeyPath path = Split(key);
    if (IsRendered(key)) out = Put(PutItem(out, path, value, previousParent), "\r\n");
    // The keys that are never rendered move the open path on all the same (kept), and the
    // dictionary that a key without a solidus opens is not closed again (kept).
    previousParent = StartsWith(path.leaf, "/") ? path.parent : std::string_view();
  }
  out = PutItem(out, Split(""), "", previousParent);
  assert(out <= body.data() + body.size());
  body.resize(static_cast<std::size_t>(out - body.data()));
  return TrimDictionary(std::move(body));
}

std::string ItemsAsString(std::string_view key, std::string_view value,
                          std::string_view previousParent) {
  std::string text(ItemBound(key, value) + ItemBound(previousParent, ""), '\0');
  const char* const end = PutItem(text.data(), Split(key), value, previousParent);
  assert(end <= text.data() + text.size());
  text.resize(static_cast<std::size_t>(end - text.data()));
  return text;
}

std::string CopyPart(std::string_view path) {
  const std::string_view name = FirstName(path);
  return name.empty() ? std::string() : '/' + std::string(name);
}

std::string MovePart(std::string_view& path) {
  std::string component = CopyPart(path);
  DropFirst(path, FirstName(path));
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
