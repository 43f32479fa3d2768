// The page tree (ISO 32000-1, 7.7.3), built from the leaves up with ten kids to a node:
//
//     /Count 10
//     /Kids [8 0 R 9 0 R ... 17 0 R]
//     /Parent 20 0 R
//     /Type /Pages

#include "document/document.h"
#include "objects/value_format.h"

namespace {

constexpr int kFanOut = 10;

JTPDFDict PagesNode(int count, int firstKid, int kids) {
  JTPDFDict node;
  node["/Type"] = "/Pages";
  node["/Count"] = IntToStr(count, 0);
  node["/Kids"] = AsRefArray(firstKid, kids);
  return node;
}

}  // namespace

void JTPDFDocument::FinalizePages() {
  const int pageCount = static_cast<int>(pages.size());
  const int firstParent = NextObject() + pageCount;
  for (int i = 0; i < pageCount; ++i) {
    JTPDFDict& page = pages[static_cast<std::size_t>(i)];
    page["/Parent"] = AsRefString(firstParent + i / kFanOut);
    WriteDict(page.AsString());
  }

  int count = pageCount;  // nodes of the level written last
  int perNode = kFanOut;  // pages below a full node of the next level
  while (count > kFanOut) {
    const int base = NextObject();
    const int full = count / kFanOut;
    const int rest = count % kFanOut;
    const int nodes = full + (rest != 0 ? 1 : 0);
    const int nextBase = base + nodes;
    for (int j = 0; j < full; ++j) {
      // Kept: a full node claims all the pages it could hold, even if its last kid is a node that
      // is not full itself.
      JTPDFDict node = PagesNode(perNode, base - count + kFanOut * j, kFanOut);
      node["/Parent"] = AsRefString(nextBase + j / kFanOut);
      WriteDict(node.AsString());
    }
    if (rest != 0) {
      JTPDFDict node = PagesNode(pageCount % perNode, base - rest, rest);
      node["/Parent"] = AsRefString(nextBase + (nodes + kFanOut - 1) / kFanOut - 1);
      WriteDict(node.AsString());
    }
    perNode *= kFanOut;
    count = nodes;
  }
  WriteDict(PagesNode(pageCount, NextObject() - count, count).AsString());
}
