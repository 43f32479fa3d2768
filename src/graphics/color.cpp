// Colours as operands of "rg" and "RG".

#include "graphics/color.h"

#include "objects/text_buffer.h"

std::string JTPDFColor::AsString(bool gray) const {
  TextBuffer<96> text;
  text << red / 255.0;
  if (!gray) text << ' ' << green / 255.0 << ' ' << blue / 255.0;
  return text.Text();
}
