// Page dictionaries and their content streams.

#include "document/pages.h"

int WritePageContents(ObjectWriter& out, int form) {
  TextBuffer<128> paint;
  paint << "q 1 0 0 1 0 0 cm /Fm" << form << " Do Q";
  return out.WriteDict({}, paint, true);
}

void WritePage(ObjectWriter& out, QueuedPage const& page, int parent) {
  out.BeginObject();
  TextWriter& text = out.Compose();
  text << "<<\r\n/Contents " << page.contents << " 0 R\r\n/CropBox ";
  page.cropBox.WriteArray(text) << "\r\n/MediaBox ";
  page.mediaBox.WriteArray(text) << "\r\n/Parent " << parent << " 0 R\r\n";
  text << "/Resources\r\n<<\r\n/ProcSet [/PDF /ImageB /ImageC]\r\n/XObject\r\n<<\r\n/Fm"
       << page.form << ' ' << page.form << " 0 R\r\n>>\r\n>>\r\n/Type /Page\r\n";
  // Kept: the transparency group stands on one line, behind all other entries.
  text << "/Group\r\n<<\r\n/CS /DeviceRGB /I false /K false /S /Transparency\r\n>>\r\n>>\r\n";
  out.EndObject();
}
