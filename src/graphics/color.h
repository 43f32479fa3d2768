// color - a device RGB colour, written as operands: "0.2000 0.4000 0.6000".
#ifndef JTPDF_GRAPHICS_COLOR_H
#define JTPDF_GRAPHICS_COLOR_H

#include <string>

#include "jtpdf/types.h"
#include "objects/text_buffer.h"

class JTPDFColor {
 public:
  constexpr JTPDFColor(unsigned char red, unsigned char green, unsigned char blue,
                       unsigned char alpha)
      : red(red), green(green), blue(blue), alpha(alpha) {}
  explicit JTPDFColor(JTPDFRGBColor color)
      : JTPDFColor(color.red, color.green, color.blue, color.alpha) {}

  bool IsGray() const { return red == green && green == blue; }
  friend bool operator==(const JTPDFColor& a, const JTPDFColor& b) {
    return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha;
  }
  friend bool operator!=(const JTPDFColor& a, const JTPDFColor& b) { return !(a == b); }

  // One number (the red channel) if gray, else the three components; alpha is never written.
  std::string AsString(bool gray) const;
  // Adds the text of AsString(false).
  friend TextWriter& operator<<(TextWriter& text, const JTPDFColor& color);

  // No colour at all: (255, 255, 255, 0). It differs from opaque white only in its alpha (kept).
  static const JTPDFColor clNone;

 private:
  unsigned char red;
  unsigned char green;
  unsigned char blue;
  unsigned char alpha;
};

inline constexpr JTPDFColor JTPDFColor::clNone(255, 255, 255, 0);

#endif  // JTPDF_GRAPHICS_COLOR_H
