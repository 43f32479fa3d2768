// The page tree, built from the leaves up with ten kids to a node:
//
//     /Count 10
//     /Kids [8 0 R 9 0 R ... 17 0 R]
//     /Parent 20 0 R
//     /Type /Pages

#include "document/page_tree.h"

#include "objects/value_format.h"

namespace {

constexpr int kFanOut = 10;
constexpr int kNoParent = 0;

int WriteNode(ObjectWriter& out, int pageCount, int firstKid, int kids, int parent) {
  const std::string references = AsRefArray(firstKid, kids);
  const int number = out.BeginObject();
  out.Compose() << "<<\r\n/Count " << pageCount << "\r\n/Kids " << references << "\r\n";
  if (parent != kNoParent) out.Compose() << "/Parent " << parent << " 0 R\r\n";
  out.Append("/Type /Pages\r\n>>\r\n");
  out.EndObject();
  return number;
}

// Writes the level above the count nodes written last and returns how many nodes it has. A full
// node has perNode pages.
int WriteLevel(ObjectWriter& out, int pageCount, int count, int perNode) {
  const int base = out.NextObject();
  const int full = count / kFanOut;
  const int rest = count % kFanOut;
  const int nodes = full + (rest != 0 ? 1 : 0);
  const int nextBase = base + nodes;
  for (int j = 0; j < full; ++j) {
    // Kept: a full node claims all the pages it could hold, even if its last kid is a node that is
    // not full itself.
    WriteNode(out, perNode, base - count + kFanOut * j, kFanOut, nextBase + j / kFanOut);
  }
  if (rest != 0) {
    WriteNode(out, pageCount % perNode, base - rest, rest,
              nextBase + (nodes + kFanOut - 1) / kFanOut - 1);
  }
  return nodes;
}

}  // namespace

int WritePageTree(ObjectWriter& out, const PageQueue& queue) {
  const int pageCount = static_cast<int>(queue.Pages().size());
  const int firstParent = out.NextObject() + pageCount;
  for (int i = 0; i < pageCount; ++i) {
    const QueuedPage& page = queue.Pages()[static_cast<std::size_t>(i)];
    WritePage(out, page, queue.EntriesOf(page), firstParent + i / kFanOut);
  }
  int count = pageCount;
  for (int perNode = kFanOut; count > kFanOut; perNode *= kFanOut) {
    count = WriteLevel(out, pageCount, count, perNode);
  }
  return WriteNode(out, pageCount, out.NextObject() - count, count, kNoParent);
}
