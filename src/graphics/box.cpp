// Boxes as PDF text:
//
//     1 0 0 1 25.0000 40.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm 30.0000 0 0 40.0000 -15.0000
//     -20.0000 cm
//
// (on one line).

#include "graphics/box.h"

#include <cmath>

namespace {

constexpr double kRadiansPerDegree = 0.017453292519943295;

}  // namespace

JTPDFBox::TPDFUnit JTPDFBox::unit = JTPDFBox::kUnitDefault;

void JTPDFBox::Inset(double dx, double dy) {
  left += dx;
  bottom += dy;
  width -= 2 * dx;
  height -= 2 * dy;
}

JTPDFBox JTPDFBox::AsPoints(double factor) const {
  return {left * factor, bottom * factor, width * factor, height * factor, angle};
}

TextWriter& JTPDFBox::WriteMatrix(TextWriter& text, bool scaleToBox) const {
  const double radians = angle * kRadiansPerDegree;
  // An infinite angle has neither sine nor cosine. The C library gives this quotient, a NaN, for
  // both, but sets errno, and with it the code of a later refusal; on Windows for a NaN as well.
  const bool finite = std::isfinite(radians);
  const double cosine = finite ? std::cos(radians) : radians / radians;
  const double sine = finite ? std::sin(radians) : radians / radians;

  // The halves and the sine are negated as they are, so an upright box has "-0.0000" in its
  // rotation and a box without width "-0.0000" in its offset (kept).
  text << "1 0 0 1 " << GetHorizontalCenter() << ' ' << GetVerticalCenter() << " cm " << cosine
       << ' ' << sine << ' ' << -sine << ' ' << cosine << " 0 0 cm ";
  if (scaleToBox) {
    text << width << " 0 0 " << height;
  } else {
    text << "1 0 0 1";
  }
  return text << ' ' << width * -0.5 << ' ' << height * -0.5 << " cm";
}

std::string JTPDFBox::AsMatrix(bool scaleToBox) const {
  TextBuffer<kShapeMaxLength> text;
  return WriteMatrix(text, scaleToBox).Text();
}

TextWriter& JTPDFBox::WriteArray(TextWriter& text) const {
  return text << '[' << left << ' ' << bottom << ' ' << GetRight() << ' ' << GetTop() << ']';
}

std::string JTPDFBox::AsArray() const {
  TextBuffer<kShapeMaxLength> text;
  return WriteArray(text).Text();
}
