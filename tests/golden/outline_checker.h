// Whether the objects of an outline (ISO 32000-1, 12.3.3) name each other as a tree does.

#ifndef JTPDF_TESTS_GOLDEN_OUTLINE_CHECKER_H
#define JTPDF_TESTS_GOLDEN_OUTLINE_CHECKER_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "dict_reader.h"

namespace golden {

class OutlineChecker {
 public:
  // The outline, and then its items from the first to the last that is shown.
  void Add(std::int64_t number, const Dict& dict, std::uint64_t offset);
  bool IsEmpty() const { return items_.empty(); }
  std::int64_t Objects() const { return static_cast<std::int64_t>(items_.size()); }
  std::uint64_t Bookmarks() const { return items_.empty() ? 0 : items_.size() - 1; }

  // Throws a StructureError for the first item that is not right.
  void Check(const std::function<bool(std::int64_t)>& is_page) const;

 private:
  struct Item {
    std::int64_t number = 0;
    std::uint64_t offset = 0;
    std::int64_t parent = 0, previous = 0, next = 0, first = 0, last = 0, page = 0;  // 0: none
    std::string count;
  };

  const Item* Find(std::int64_t number) const;
  std::size_t Below(std::size_t index) const;
  void CheckLinks(const Item& item) const;

  std::vector<Item> items_;
};

}  // namespace golden

#endif  // JTPDF_TESTS_GOLDEN_OUTLINE_CHECKER_H
