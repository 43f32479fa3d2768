// The lines that drawing writes:
//
//     q 1 0 0 1 25.0000 40.0000 cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm 30.0000 0 0 40.0000
//     -15.0000 -20.0000 cm  /Im12 Do Q                                          (on one line)
//
// Parts of a line stand one blank apart; where two blanks stand in a row, as in front of "/Im12",
// they are kept: the line has always been joined from parts that bring a blank of their own along.
// The lines of a shape are added as one text: it is in the canvas whole or not at all, and takes
// half the instructions of a text per line.

#include "graphics/canvas.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>

#include "objects/text_buffer.h"
#include "objects/value_format.h"

namespace {

// Length of a Bezier quarter's handles for radius 1. Kept a little below the best approximation
// of a circle, 0.552285: the ellipses of existing files have it.
constexpr double kCircleHandle = 0.551784;

// A number that occurs several times, of either sign: its digits are made once. An ellipse takes
// two thirds of the instructions so.
class RepeatedNumber {
 public:
  explicit RepeatedNumber(double value)
      : isNegative(std::signbit(value)),
        size(static_cast<std::size_t>(WriteNum(digits, std::fabs(value)) - digits)) {}

  struct Term {
    const RepeatedNumber& number;
    bool isNegative;
  };
  operator Term() const { return {*this, isNegative}; }
  Term operator-() const { return {*this, !isNegative}; }

  // Adds the text of Num(value), whose limit counts the sign.
  friend TextWriter& operator<<(TextWriter& text, const Term& term) {
    if (term.isNegative) text << '-';
    const std::size_t room = kNumMaxLength - (term.isNegative ? 1 : 0);
    return text << std::string_view(term.number.digits, std::min(term.number.size, room));
  }

 private:
  bool isNegative;
  char digits[kNumMaxLength];
  std::size_t size;
};

}  // namespace

JTPDFCanvas::JTPDFCanvas(double unitFactor) : unitFactor(unitFactor) {
  Clear();
}

void JTPDFCanvas::Clear() {
  contents.Clear();
  clear();
  hostEntries.Clear();
  contents.Add("/GS0 gs");
}

void JTPDFCanvas::Image(int image, const JTPDFBox& box) {
  const std::string number = IntToStr(image, 0);
  // The entry first: a line must not name an image that memory did not suffice to enter.
  (*this)["/Resources/XObject/Im" + number] = AsRefString(image);
  contents.Compose(kShapeMaxLength, [&](TextWriter& line) {
    line << "q ";
    box.AsPoints(unitFactor).WriteMatrix(line, true) << "  /Im" << number << " Do Q";
  });
}

void JTPDFCanvas::Rectangle(const JTPDFBox& box, const JTPDFColor& fill, const JTPDFColor& stroke,
                            double lineWidth) {
  const JTPDFBox points = box.AsPoints(unitFactor);
  const bool fills = fill != JTPDFColor::clNone;
  const bool strokes = stroke != JTPDFColor::clNone;

  contents.Compose(kShapeMaxLength, [&](TextWriter& text) {
    text << "%rectangle\r\nq\r\n";
    if (fills) text << fill << " rg\r\n";
    if (strokes) text << stroke << " RG\r\n";
    text << SizeAsPoints(lineWidth) << " w ";
    points.WriteMatrix(text, false)
        << " 0 0 " << points.GetWidth() << ' ' << points.GetHeight() << " re\r\n";
    // "F" is the older name of "f" (ISO 32000-1, table 60); our files have it and keep it. Without
    // a fill the rectangle is stroked with whatever colour is in force.
    text << (!fills ? "S Q" : strokes ? "B Q" : "F Q");
  });
}

void JTPDFCanvas::Circle(const JTPDFBox& box, const JTPDFColor& fill, const JTPDFColor& stroke,
                         double lineWidth) {
  const JTPDFBox points = box.AsPoints(unitFactor);
  const double width = SizeAsPoints(lineWidth);
  const double halfWidth = points.GetHalfWidth() - width * 0.5;
  const double halfHeight = points.GetHalfHeight() - width * 0.5;
  const RepeatedNumber a(halfWidth);
  const RepeatedNumber b(halfHeight);
  const RepeatedNumber ka(kCircleHandle * halfWidth);
  const RepeatedNumber kb(halfHeight * kCircleHandle);

  contents.Compose(kShapeMaxLength, [&](TextWriter& text) {
    // Line width and colours stand in front of "q" and stay in force behind the ellipse (kept).
    text << width << " w\r\n";
    text << fill << " rg " << stroke << " RG\r\n";
    text << "q 1 0 0 1  " << points.GetHorizontalCenter() << ' ' << points.GetVerticalCenter()
         << "  cm\r\n";
    // From the left point through the top, the right and the bottom back to the left.
    text << -a << " 0  m\r\n";
    text << -a << ' ' << kb << ' ' << -ka << ' ' << b << " 0 " << b << " c\r\n";
    text << ka << ' ' << b << ' ' << a << ' ' << kb << ' ' << a << " 0 c\r\n";
    text << a << ' ' << -kb << ' ' << ka << ' ' << -b << " 0 " << -b << " c\r\n";
    text << -ka << ' ' << -b << ' ' << -a << ' ' << -kb << ' ' << -a << " 0 c\r\n";
    text << "b Q";
  });
}
