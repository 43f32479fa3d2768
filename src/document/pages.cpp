// Page dictionaries and their content streams.

#include "document/pages.h"

#include <utility>

#include "objects/value_format.h"

int WritePageContents(ObjectWriter& out, int form) {
  TextBuffer<128> paint;
  paint << "q 1 0 0 1 0 0 cm /Fm" << form << " Do Q";
  return out.WriteDict({}, paint, true);
}

void PageQueue::MakeRoom() {
  if (pages.size() == pages.capacity()) pages.reserve(2 * pages.size() + 8);
  if (!nextEntries.IsEmpty() && entries.size() == entries.capacity()) {
    entries.reserve(2 * entries.size() + 8);
  }
}

void PageQueue::Add(QueuedPage page) {
  if (!nextEntries.IsEmpty()) {
    page.hostEntries = static_cast<int>(entries.size());
    entries.push_back(std::exchange(nextEntries, {}));
  }
  pages.push_back(page);
}

const EntryTree* PageQueue::EntriesOf(const QueuedPage& page) const {
  if (page.hostEntries == kNoHostEntries) return nullptr;
  return &entries[static_cast<std::size_t>(page.hostEntries)];
}

namespace {

void WriteEntries(ObjectWriter& out, const QueuedPage& page, int parent) {
  TextWriter& text = out.Compose();
  text << "/Contents " << page.contents << " 0 R\r\n/CropBox ";
  page.cropBox.WriteArray(text) << "\r\n/MediaBox ";
  page.mediaBox.WriteArray(text) << "\r\n/Parent " << parent << " 0 R\r\n";
  text << "/Resources\r\n<<\r\n/ProcSet [/PDF /ImageB /ImageC]\r\n";
  if (page.paintsForm) {
    text << "/XObject\r\n<<\r\n/Fm" << page.form << ' ' << page.form << " 0 R\r\n>>\r\n";
  }
  text << ">>\r\n/Type /Page\r\n";
  // Kept: the transparency group stands on one line, behind all other entries.
  text << "/Group\r\n<<\r\n/CS /DeviceRGB /I false /K false /S /Transparency\r\n>>\r\n";
}

// The same entries over those of the host.
std::string EntriesWithHosts(const QueuedPage& page, EntryTree tree, int parent) {
  tree.Overrule("/Contents", AsRefString(page.contents));
  tree.Overrule("/CropBox", page.cropBox.AsArray());
  tree.Overrule("/Group/CS", "/DeviceRGB");
  tree.Overrule("/Group/I", "false");
  tree.Overrule("/Group/K", "false");
  tree.Overrule("/Group/S", "/Transparency");
  tree.Overrule("/MediaBox", page.mediaBox.AsArray());
  tree.Overrule("/Parent", AsRefString(parent));
  tree.Overrule("/Resources/ProcSet", "[/PDF /ImageB /ImageC]");
  if (page.paintsForm) {
    tree.Overrule("/Resources/XObject/Fm" + IntToStr(page.form, 0), AsRefString(page.form));
  }
  tree.Overrule("/Type", "/Page");
  return tree.AsString();
}

}  // namespace

void WritePage(ObjectWriter& out, const QueuedPage& page, const EntryTree* hostEntries,
               int parent) {
  std::string entries;
  if (hostEntries != nullptr) entries = EntriesWithHosts(page, *hostEntries, parent);
  out.BeginObject();
  out.Compose() << "<<\r\n";
  if (hostEntries != nullptr) {
    out.Append(entries);
  } else {
    WriteEntries(out, page, parent);
  }
  out.Compose() << ">>\r\n";
  out.EndObject();
}
