// Entries by paths of names.

#include "objects/entry_tree.h"

#include <cstddef>
#include <utility>

#include "objects/syntax.h"
#include "objects/text_buffer.h"
#include "objects/views.h"

namespace {

bool LeadsThrough(std::string_view path, std::string_view value) {
  return path.size() > value.size() && StartsWith(path, value) && path[value.size()] == '/';
}

// How many bytes of two paths' parents are the same whole components.
std::size_t SharedParents(std::string_view a, std::string_view b) {
  std::size_t shared = 0;
  for (std::size_t i = 0; i < a.size() && i < b.size() && a[i] == b[i]; ++i) {
    const std::size_t next = i + 1;
    const bool endsA = next == a.size() || a[next] == '/';
    const bool endsB = next == b.size() || b[next] == '/';
    if (endsA && endsB) shared = next;
  }
  return shared;
}

std::string_view ParentOf(std::string_view path) {
  return path.substr(0, path.rfind('/'));
}

void Close(std::string& text, std::string_view path) {
  for (; !path.empty(); path = ParentOf(path)) text.append(">>").append(kLineEnd);
}

void Open(std::string& text, std::string_view path) {
  while (!path.empty()) {
    const std::string_view name = path.substr(0, path.find('/', 1));
    text.append(name).append(kLineEnd).append("<<").append(kLineEnd);
    path.remove_prefix(name.size());
  }
}

}  // namespace

bool EntryTree::IsInTheWay(const std::string& key) const {
  for (std::string_view parent = ParentOf(key); !parent.empty(); parent = ParentOf(parent)) {
    if (entries.count(std::string(parent)) != 0) return true;
  }
  // All that begins with key comes at once behind it.
  auto below = entries.lower_bound(key);
  if (below == entries.end() || !StartsWith(below->first, key)) return false;
  below = entries.lower_bound(key + '/');
  return below != entries.end() && LeadsThrough(below->first, key);
}

bool EntryTree::Set(std::string_view key, std::string_view value) {
  if (!IsNamePath(key) || !IsOneObject(value)) return false;
  std::string path(key);
  if (IsInTheWay(path)) return false;
  entries[std::move(path)] = value;
  return true;
}

void EntryTree::Overrule(std::string_view key, std::string_view value) {
  for (std::string_view parent = ParentOf(key); !parent.empty(); parent = ParentOf(parent)) {
    entries.erase(std::string(parent));
  }
  auto below = entries.lower_bound(std::string(key) + '/');
  while (below != entries.end() && LeadsThrough(below->first, key)) below = entries.erase(below);
  entries[std::string(key)] = value;
}

std::string EntryTree::AsString() const {
  std::string text;
  std::string_view open;  // the path of the dictionaries that are open
  for (const auto& [key, value] : entries) {
    const std::string_view parent = ParentOf(key);
    const std::size_t shared = SharedParents(open, parent);
    Close(text, open.substr(shared));
    Open(text, parent.substr(shared));
    text.append(std::string_view(key).substr(parent.size())).append(" ").append(value);
    text.append(kLineEnd);
    open = parent;
  }
  Close(text, open);
  return text;
}
