// canvas - the drawing that becomes a form: content-stream lines, the images they name, an extent.
#ifndef JTPDF_GRAPHICS_CANVAS_H
#define JTPDF_GRAPHICS_CANVAS_H

#include "graphics/box.h"
#include "graphics/color.h"
#include "objects/dict.h"
#include "objects/entry_tree.h"
#include "objects/string_list.h"

// The inherited dictionary holds the resource entries ("/Resources/XObject/Im12" = "12 0 R").
// Boxes, lengths and line widths are in the caller's unit; everything is written in points.
// Drawing only appends. No argument is checked.
class JTPDFCanvas : public JTPDFDict {
 public:
  explicit JTPDFCanvas(double unitFactor);
  JTPDFCanvas(const JTPDFCanvas&) = delete;
  JTPDFCanvas& operator=(const JTPDFCanvas&) = delete;

  // Back to the one line "/GS0 gs" and no entries; the bounding box stays.
  void Clear();

  // The image XObject of that number, over box or over the bounding box.
  void Image(int image, const JTPDFBox& box);
  void Image(int image) { Image(image, boundingBox); }

  // A rectangle, turned by its box's angle. A colour clNone is left out; without a fill the
  // rectangle is stroked, be there a stroke colour or not.
  void Rectangle(const JTPDFBox& box, const JTPDFColor& fill, const JTPDFColor& stroke,
                 double lineWidth);
  void Rectangle(const JTPDFBox& box, const JTPDFColor& fill) {
    Rectangle(box, fill, JTPDFColor::clNone, 0.0);
  }
  void Rectangle(const JTPDFBox& box, const JTPDFColor& stroke, double lineWidth) {
    Rectangle(box, JTPDFColor::clNone, stroke, lineWidth);
  }

  // Lines of a content stream as they are.
  void Content(std::string_view operators) {
    if (!operators.empty()) contents.Add(operators);
  }

  // The ellipse inscribed in box, its stroke inside the box. The angle is ignored and clNone is a
  // colour like any other.
  void Circle(const JTPDFBox& box, const JTPDFColor& fill, const JTPDFColor& stroke,
              double lineWidth);

  void SetBoundingBox(const JTPDFBox& box) { boundingBox = box; }
  const JTPDFBox& GetBoundingBox() const { return boundingBox; }
  const JTPDFStringList& GetContents() const { return contents; }
  // Entries of the host's for the next form, which Clear removes too.
  EntryTree& HostEntries() { return hostEntries; }
  double UnitFactor() const { return unitFactor; }
  double SizeAsPoints(double length) const { return length * unitFactor; }

 private:
  const double unitFactor;
  JTPDFStringList contents;
  JTPDFBox boundingBox;
  EntryTree hostEntries;
};

#endif  // JTPDF_GRAPHICS_CANVAS_H
