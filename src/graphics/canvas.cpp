// The lines that drawing writes:
//
//     q 1 0 0 1 25.0000 40.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm 30.0000 0 0 40.0000
//     -15.0000 -20.0000 cm  /Im12 Do Q                                          (on one line)
//
// Parts are joined with one blank each by JTPDFStringList::Add. Some literals bring their own
// blank along, which doubles it; the doubles are kept.

#include "graphics/canvas.h"

#include "objects/value_format.h"

namespace {

// Length of a Bezier quarter's handles for radius 1. Kept a little below the best approximation
// of a circle, 0.552285: the ellipses of existing files have it.
constexpr double kCircleHandle = 0.551784;

}  // namespace

JTPDFCanvas::JTPDFCanvas(double unitFactor) : unitFactor(unitFactor) {
  Clear();
}

void JTPDFCanvas::Clear() {
  contents.Clear();
  clear();
  contents.Add("/GS0 gs");
}

void JTPDFCanvas::Image(int image, JTPDFBox const& box) {
  const std::string number = IntToStr(image, 0);
  contents.Add("q", box.AsPoints(unitFactor).AsMatrix(true), " /Im" + number, "Do", "Q");
  (*this)["/Resources/XObject/Im" + number] = AsRefString(image);
}

void JTPDFCanvas::Rectangle(JTPDFBox const& box, JTPDFColor const& fill, JTPDFColor const& stroke,
                            double lineWidth) {
  const JTPDFBox points = box.AsPoints(unitFactor);
  const bool fills = fill != JTPDFColor::clNone;
  const bool strokes = stroke != JTPDFColor::clNone;

  contents.Add("%rectangle");
  contents.Add("q");
  if (fills) contents.Add(fill.AsString(false), "rg");
  if (strokes) contents.Add(stroke.AsString(false), "RG");
  contents.Add(Num(SizeAsPoints(lineWidth)), "w", points.AsMatrix(false), IntToStr(0, 0),
               IntToStr(0, 0), Num(points.GetWidth()), Num(points.GetHeight()), "re");
  // "F" is the older name of "f" (ISO 32000-1, table 60); our files have it and keep it. Without a
  // fill the rectangle is stroked with whatever colour is in force.
  contents.Add(!fills ? "S Q" : strokes ? "B Q" : "F Q");
}

void JTPDFCanvas::Circle(JTPDFBox const& box, JTPDFColor const& fill, JTPDFColor const& stroke,
                         double lineWidth) {
  const JTPDFBox points = box.AsPoints(unitFactor);
  const double width = SizeAsPoints(lineWidth);
  const double a = points.GetHalfWidth() - width * 0.5;
  const double b = points.GetHalfHeight() - width * 0.5;
  const double ka = kCircleHandle * a;
  const double kb = b * kCircleHandle;
  const std::string zero = IntToStr(0, 0);

  // Line width and colours stand in front of "q" and stay in force behind the ellipse (kept).
  contents.Add(Num(width), "w");
  contents.Add(fill.AsString(false), "rg", stroke.AsString(false), "RG");
  contents.Add("q 1 0 0 1 ", Num(points.GetHorizontalCenter()), Num(points.GetVerticalCenter()),
               " cm");
  contents.Add(Num(-a), zero, " m");
  contents.Add(Num(-a), Num(kb), Num(-ka), Num(b), zero, Num(b), "c");
  contents.Add(Num(ka), Num(b), Num(a), Num(kb), Num(a), zero, "c");
  contents.Add(Num(a), Num(-kb), Num(ka), Num(-b), zero, Num(-b), "c");
  contents.Add(Num(-ka), Num(-b), Num(-a), Num(-kb), Num(-a), zero, "c");
  contents.Add("b Q");
}
