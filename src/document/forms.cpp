// Forms:
//
//     /BBox [0.0000 0.0000 595.0000 842.0000]
//     /FormType 1
//     /Resources
//     <<
//     /ExtGState
//     <<
//     /GS0 1 0 R
//     >>
//     /XObject
//     <<
//     /Im2 2 0 R
//     >>
//     >>
//     /Subtype /Form
//     /Type /XObject

#include "document/forms.h"

#include "objects/value_format.h"

namespace {

// The canvas's own dictionary holds the images drawn, "/Resources/XObject/Im2" = "2 0 R".
void WriteImageResources(ObjectWriter& out, const JTPDFCanvas& canvas) {
  out.Compose() << "/XObject\r\n<<\r\n";
  for (const auto& [key, reference] : canvas) {
    out.Compose() << std::string_view(key).substr(key.rfind('/')) << ' ' << reference << "\r\n";
  }
  out.Compose() << ">>\r\n";
}

void WriteEntries(ObjectWriter& out, const JTPDFCanvas& canvas, const JTPDFBox& extent,
                  std::string_view filter, int graphicsState) {
  extent.WriteArray(out.Compose() << "<<\r\n/BBox ") << "\r\n";
  if (!filter.empty()) {
    out.Append("/Filter ");
    out.Append(filter);
    out.Append("\r\n");
  }
  out.Compose() << "/FormType 1\r\n/Resources\r\n<<\r\n/ExtGState\r\n<<\r\n/GS0 " << graphicsState
                << " 0 R\r\n>>\r\n";
  if (!canvas.empty()) WriteImageResources(out, canvas);
  out.Compose() << ">>\r\n/Subtype /Form\r\n/Type /XObject\r\n";
}

// The same entries over those of the host.
std::string EntriesWithHosts(JTPDFCanvas& canvas, const JTPDFBox& extent, std::string_view filter,
                             int graphicsState) {
  EntryTree tree = canvas.HostEntries();
  tree.Overrule("/BBox", extent.AsArray());
  if (!filter.empty()) tree.Overrule("/Filter", filter);
  tree.Overrule("/FormType", "1");
  tree.Overrule("/Resources/ExtGState/GS0", AsRefString(graphicsState));
  for (const auto& [key, reference] : canvas) tree.Overrule(key, reference);
  tree.Overrule("/Subtype", "/Form");
  tree.Overrule("/Type", "/XObject");
  return "<<\r\n" + tree.AsString();
}

}  // namespace

int WriteForm(ObjectWriter& out, JTPDFCanvas& canvas, int graphicsState,
              const ContentEncoder& encoder) {
  out.RequireWritable();
  const JTPDFBox extent = canvas.GetBoundingBox().AsPoints(canvas.UnitFactor());
  const ContentEncoder::Content content = encoder.Encode(canvas.GetContents().View());
  std::string entries;
  if (!canvas.HostEntries().IsEmpty()) {
    entries = EntriesWithHosts(canvas, extent, content.filter, graphicsState);
  }

  const int number = out.BeginObject();
  if (entries.empty()) {
    WriteEntries(out, canvas, extent, content.filter, graphicsState);
  } else {
    out.Append(entries);
  }
  out.WriteStream(content.data);
  out.EndObject();
  canvas.Clear();
  return number;
}
