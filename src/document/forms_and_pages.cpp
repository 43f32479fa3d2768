// The canvas as a form XObject, and pages that paint one form each:
//
//     q 1 0 0 1 0 0 cm /Fm12 Do Q

#include <string>
#include <utility>

#include "document/document.h"
#include "objects/value_format.h"

int JTPDFDocument::WriteCanvas() {
  canvas["/Type"] = "/XObject";
  canvas["/Subtype"] = "/Form";
  canvas["/FormType"] = "1";
  canvas["/BBox"] = canvas.GetBoundingBox().AsPoints(unitFactor).AsArray();
  canvas["/Resources/ExtGState/GS0"] = AsRefString(graphicsStateObject);
  const int number = WriteDict(canvas.AsString(), canvas.GetContents());
  canvas.Clear();
  return number;
}

void JTPDFDocument::WritePage(int form, JTPDFBox const& cropBox, JTPDFBox const& mediaBox) {
  const std::string formName = "Fm" + IntToStr(form, 0);
  JTPDFDict page;
  // In the order of their keys, so that the place of none has to be searched. The contents are
  // written last, when nothing else can fail.
  page.emplace_hint(page.end(), "/Contents", AsRefString(NextObject()));
  page.emplace_hint(page.end(), "/CropBox", cropBox.AsPoints(unitFactor).AsArray());
  page.emplace_hint(page.end(), "/MediaBox", mediaBox.AsPoints(unitFactor).AsArray());
  page.emplace_hint(page.end(), "/Parent", "");  // known when all pages are
  page.emplace_hint(page.end(), "/Resources/ProcSet", "[/PDF /ImageB /ImageC]");
  page.emplace_hint(page.end(), "/Resources/XObject/" + formName, AsRefString(form));
  page.emplace_hint(page.end(), "/Type", "/Page");
  // Kept: one entry that renders as the whole transparency group dictionary. Its key has no
  // solidus in front, so it comes last on the page.
  page.emplace_hint(page.end(), "Group/CS", "/DeviceRGB /I false /K false /S /Transparency");
  MakeRoom(pages);
  WriteDict(std::string(), "q 1 0 0 1 0 0 cm /" + formName + " Do Q", true);
  pages.push_back(std::move(page));
}
