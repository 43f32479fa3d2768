// The tree of an outline.

#include "outline_checker.h"

namespace golden {
namespace {

std::int64_t Reference(const Dict& dict, const std::string& key) {
  const DictEntry* entry = dict.Find(key);
  return entry == nullptr || entry->references.size() != 1 ? 0 : entry->references[0];
}

}  // namespace

void OutlineChecker::Add(std::int64_t number, const Dict& dict, std::uint64_t offset) {
  items_.push_back({number, offset, Reference(dict, "/Parent"), Reference(dict, "/Prev"),
                    Reference(dict, "/Next"), Reference(dict, "/First"), Reference(dict, "/Last"),
                    Reference(dict, "/Dest"), dict.Text("/Count", DictEntry::kNumber)});
}

const OutlineChecker::Item* OutlineChecker::Find(std::int64_t number) const {
  const std::int64_t index = items_.empty() ? -1 : number - items_[0].number;
  if (index < 0 || index >= static_cast<std::int64_t>(items_.size())) return nullptr;
  return &items_[static_cast<std::size_t>(index)];
}

// Items stand behind the one that they are below, so one pass finds all that are.
std::size_t OutlineChecker::Below(std::size_t index) const {
  std::vector<bool> below(items_.size());
  std::size_t count = 0;
  for (std::size_t i = index + 1; i < items_.size(); ++i) {
    const Item* parent = Find(items_[i].parent);
    if (parent == nullptr) continue;
    const auto at = static_cast<std::size_t>(parent - items_.data());
    below[i] = at == index || below[at];
    count += below[i] ? 1 : 0;
  }
  return count;
}

void OutlineChecker::CheckLinks(const Item& item) const {
  const auto fail = [&item](const char* what) { throw StructureError(item.offset, what); };
  const Item* parent = Find(item.parent);
  if (parent == nullptr || parent->number >= item.number) fail("a bookmark without a parent");
  const Item* next = Find(item.next);
  if (item.next == 0) {
    if (parent->last != item.number) fail("the last bookmark is not its parent's /Last");
  } else if (next == nullptr || next->previous != item.number || next->parent != item.parent) {
    fail("a bookmark's /Next is not behind it");
  }
  const Item* previous = Find(item.previous);
  if (item.previous == 0) {
    if (parent->first != item.number) fail("the first bookmark is not its parent's /First");
  } else if (previous == nullptr || previous->next != item.number) {
    fail("a bookmark's /Prev is not before it");
  }
}

void OutlineChecker::Check(const std::function<bool(std::int64_t)>& is_page) const {
  for (std::size_t i = 0; i < items_.size(); ++i) {
    const Item& item = items_[i];
    if (i > 0) {
      CheckLinks(item);
      if (!is_page(item.page)) throw StructureError(item.offset, "a bookmark leads to no page");
    }
    const std::size_t below = Below(i);
    if (item.count != (below == 0 && i > 0 ? "" : std::to_string(below))) {
      throw StructureError(item.offset, "a bookmark's /Count is not what is below it");
    }
  }
}

}  // namespace golden
