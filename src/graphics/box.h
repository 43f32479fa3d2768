// box - a rectangle with a rotation angle, and its three forms in the file: points, the matrix
// that leads into it, and the rectangle array "[0.0000 0.0000 595.0000 842.0000]".
#ifndef JTPDF_GRAPHICS_BOX_H
#define JTPDF_GRAPHICS_BOX_H

#include <cstdint>
#include <string>

#include "jtpdf/types.h"
#include "objects/text_buffer.h"

// Lower-left corner, extent and angle (degrees, counter-clockwise about the centre). Nothing is
// normalised: negative and zero extents are kept and written.
class JTPDFBox {
 public:
  // A stored setting that nothing reads: lengths are converted with the document's unit factor.
  enum TPDFUnit : std::int32_t { kUnitDefault = 0 };

  JTPDFBox() = default;
  JTPDFBox(double width, double height) : width(width), height(height) {}
  JTPDFBox(double left, double bottom, double width, double height)
      : left(left), bottom(bottom), width(width), height(height) {}
  JTPDFBox(double left, double bottom, double width, double height, double angle)
      : left(left), bottom(bottom), width(width), height(height), angle(angle) {}
  explicit JTPDFBox(const JTPDFRect& rect)
      : JTPDFBox(rect.left, rect.bottom, rect.width, rect.height, rect.angle) {}

  double GetLeft() const { return left; }
  double GetBottom() const { return bottom; }
  double GetWidth() const { return width; }
  double GetHeight() const { return height; }
  double GetAngle() const { return angle; }
  void SetLeft(double value) { left = value; }
  void SetBottom(double value) { bottom = value; }
  void SetWidth(double value) { width = value; }
  void SetHeight(double value) { height = value; }
  void SetAngle(double value) { angle = value; }

  // Derived edges; setting one moves that edge and leaves the opposite one.
  double GetRight() const { return left + width; }
  double GetTop() const { return bottom + height; }
  void SetRight(double right) { width = right - left; }
  void SetTop(double top) { height = top - bottom; }

  double GetHalfWidth() const { return width * 0.5; }
  double GetHalfHeight() const { return height * 0.5; }
  double GetHorizontalCenter() const { return width * 0.5 + left; }
  double GetVerticalCenter() const { return height * 0.5 + bottom; }

  // Moves the left and right sides inwards by dx, the bottom and top by dy.
  void Inset(double dx, double dy);

  // All four lengths times factor (points per unit); the angle stays.
  JTPDFBox AsPoints(double factor) const;

  // Three "cm" operators, for a box in points: to the centre, rotated, and then either the unit
  // square onto the box (scaleToBox) or the origin to the box's lower-left corner.
  std::string AsMatrix(bool scaleToBox) const;
  // Adds the text of AsMatrix to a line.
  TextWriter& WriteMatrix(TextWriter& text, bool scaleToBox) const;

  // "[left bottom right top]"; the angle is ignored.
  std::string AsArray() const;
  // Adds the text of AsArray.
  TextWriter& WriteArray(TextWriter& text) const;

  JTPDFRect AsPdfRect() const { return {left, bottom, width, height, angle}; }

  static TPDFUnit GetPDFUnit() { return unit; }
  static void SetPDFUnit(TPDFUnit value) { unit = value; }

 private:
  static TPDFUnit unit;

  double left = 0;
  double bottom = 0;
  double width = 0;
  double height = 0;
  double angle = 0;
};

#endif  // JTPDF_GRAPHICS_BOX_H
