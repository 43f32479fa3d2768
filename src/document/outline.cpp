// The outline and its items:
//
//     /Count 3                /Count 1
//     /First 13 0 R           /Dest [8 0 R /Fit]
//     /Last 15 0 R            /First 14 0 R
//     /Type /Outlines         /Last 14 0 R
//                             /Next 15 0 R
//                             /Parent 12 0 R
//                             /Title (...)

#include "document/outline.h"

#include <algorithm>

#include "objects/text_string.h"

namespace {

void WriteReference(ObjectWriter& out, const char* key, int object) {
  out.Compose() << key << ' ' << object << " 0 R\r\n";
}

}  // namespace

void Outline::WriteKids(ObjectWriter& out, const Links& links, int root) {
  if (links.count == 0) return;
  WriteReference(out, "/First", root + links.first);
  WriteReference(out, "/Last", root + links.last);
}

void Outline::Add(int level, const wchar_t* title, int page) {
  const int deepest = bookmarks.empty() ? 0 : bookmarks.back().level + 1;
  if (level < 0 || level > deepest) RefuseArgument("A bookmark's level skips one above it");
  if (page < 0) RefuseArgument("A bookmark's page is negative");
  bookmarks.push_back({level, page, PsString(TextOrEmpty(title))});
  lastPage = std::max(lastPage, static_cast<std::size_t>(page));
}

std::vector<Outline::Links> Outline::LinkItems() const {
  std::vector<Links> links(bookmarks.size() + 1);
  std::vector<int> open = {0};  // the item of each level that the next one may be below
  for (std::size_t i = 0; i < bookmarks.size(); ++i) {
    const int item = static_cast<int>(i) + 1;
    open.resize(static_cast<std::size_t>(bookmarks[i].level) + 1);
    Links& parent = links[static_cast<std::size_t>(open.back())];
    Links& own = links[i + 1];
    own.parent = open.back();
    own.previous = parent.last;
    if (parent.last != 0) links[static_cast<std::size_t>(parent.last)].next = item;
    if (parent.first == 0) parent.first = item;
    parent.last = item;
    for (const int above : open) ++links[static_cast<std::size_t>(above)].count;
    open.push_back(item);
  }
  return links;
}

int Outline::Write(ObjectWriter& out, int firstPage) const {
  const std::vector<Links> links = LinkItems();
  const int root = out.BeginObject();
  out.Compose() << "<<\r\n/Count " << links[0].count << "\r\n";
  WriteKids(out, links[0], root);
  out.Append("/Type /Outlines\r\n>>\r\n");
  out.EndObject();
  for (std::size_t i = 0; i < bookmarks.size(); ++i) {
    const Links& own = links[i + 1];
    out.BeginObject();
    out.Append("<<\r\n");
    if (own.count != 0) out.Compose() << "/Count " << own.count << "\r\n";
    out.Compose() << "/Dest [" << firstPage + bookmarks[i].page << " 0 R /Fit]\r\n";
    WriteKids(out, own, root);
    if (own.next != 0) WriteReference(out, "/Next", root + own.next);
    WriteReference(out, "/Parent", root + own.parent);
    if (own.previous != 0) WriteReference(out, "/Prev", root + own.previous);
    out.Append("/Title ");
    out.Append(bookmarks[i].title);
    out.Append("\r\n>>\r\n");
    out.EndObject();
  }
  return root;
}
