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

namespace {

// The canvas's own dictionary holds the images drawn, "/Resources/XObject/Im2" = "2 0 R".
void WriteImageResources(ObjectWriter& out, JTPDFCanvas const& canvas) {
  out.Append("/XObject\r\n<<\r\n");
  for (auto const& [key, reference] : canvas) {
    out.Append(std::string_view(key).substr(key.rfind('/')));
    out.Append(" ");
    out.Append(reference);
    out.Append("\r\n");
  }
  out.Append(">>\r\n");
}

}  // namespace

int WriteForm(ObjectWriter& out, JTPDFCanvas& canvas, int graphicsState) {
  const std::string_view contents = canvas.GetContents().View();
  const int number = out.BeginObject();
  out.Append("<<\r\n/BBox ");
  canvas.GetBoundingBox().AsPoints(canvas.UnitFactor()).WriteArray(out.Compose());
  out.Compose() << "\r\n/FormType 1\r\n/Resources\r\n<<\r\n/ExtGState\r\n<<\r\n/GS0 "
                << graphicsState << " 0 R\r\n>>\r\n";
  if (!canvas.empty()) WriteImageResources(out, canvas);
  out.Append(">>\r\n/Subtype /Form\r\n/Type /XObject\r\n");
  out.WriteStream(contents);
  out.EndObject();
  canvas.Clear();
  return number;
}
