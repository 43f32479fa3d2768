// pages - pages that paint one form each or show their own contents, and the tree above them (ISO
// 32000-1, 7.7.3).
#ifndef JTPDF_DOCUMENT_PAGES_H
#define JTPDF_DOCUMENT_PAGES_H

#include <vector>

#include "graphics/box.h"
#include "objects/entry_tree.h"
#include "output/object_writer.h"

// A page that waits for the end of the document, where its parent gets its number.
struct QueuedPage {
  int form;         // meaningless without paintsForm
  int contents;     // the content stream, which paints the form if the page has one
  int hostEntries;  // index of the host's entries for it, or kNoHostEntries
  bool paintsForm;
  JTPDFBox cropBox;
  JTPDFBox mediaBox;  // both in points
};
inline constexpr int kNoHostEntries = -1;

// The pages of a document in their order.
class PageQueue {
 public:
  // Entries of the host's for the page that is added next.
  EntryTree& NextEntries() { return nextEntries; }
  // Makes room for a page, without which Add could fail.
  void MakeRoom();
  // Adds a page, with the next entries if there are any.
  void Add(QueuedPage page);

  const std::vector<QueuedPage>& Pages() const { return pages; }
  // Null for none.
  const EntryTree* EntriesOf(const QueuedPage& page) const;

 private:
  std::vector<QueuedPage> pages;
  std::vector<EntryTree> entries;
  EntryTree nextEntries;
};

// Writes the content stream that paints form, "q 1 0 0 1 0 0 cm /Fm12 Do Q"; returns its number.
int WritePageContents(ObjectWriter& out, int form);

// Writes the page's dictionary, over entries of the host's unless that is null.
void WritePage(ObjectWriter& out, const QueuedPage& page, const EntryTree* hostEntries, int parent);

#endif  // JTPDF_DOCUMENT_PAGES_H
