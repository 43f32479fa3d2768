// outline - the document's bookmarks (ISO 32000-1, 12.3.3).
#ifndef JTPDF_DOCUMENT_OUTLINE_H
#define JTPDF_DOCUMENT_OUTLINE_H

#include <cstddef>
#include <string>
#include <vector>

#include "output/object_writer.h"

class Outline {
 public:
  // Adds a bookmark behind the others. Its level is 0, or that of the one before it and one more at
  // most; anything else is refused with EINVAL. A null title counts as empty.
  void Add(int level, const wchar_t* title, int page);

  bool IsEmpty() const { return bookmarks.empty(); }
  // Whether all bookmarks lead to pages that there are.
  bool LeadsTo(std::size_t pages) const { return bookmarks.empty() || lastPage < pages; }

  // Writes the outline and its items for a document whose first page is the object firstPage;
  // returns the outline's number.
  int Write(ObjectWriter& out, int firstPage) const;

  void Clear() { bookmarks = {}; }

 private:
  struct Bookmark {
    int level;
    int page;
    std::string title;  // a string literal
  };
  // How an item, or the outline (item 0), hangs together with the others; 0 stands for none.
  struct Links {
    int parent = 0;
    int previous = 0;
    int next = 0;
    int first = 0;
    int last = 0;
    int count = 0;  // items below, all of them open
  };

  std::vector<Links> LinkItems() const;
  static void WriteKids(ObjectWriter& out, const Links& links, int root);

  std::vector<Bookmark> bookmarks;
  std::size_t lastPage = 0;
};

#endif  // JTPDF_DOCUMENT_OUTLINE_H
