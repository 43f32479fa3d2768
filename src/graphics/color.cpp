// Colours as operands of "rg" and "RG".

#include "graphics/color.h"

#include <array>
#include <cstddef>
#include <string_view>

#include "objects/value_format.h"

namespace {

constexpr std::size_t kComponentLength = 6;

// The 256 texts "0.0000" to "1.0000" that Num gives for a channel divided by 255.0: n x 10^4 / 255
// never lies half-way between two integers, so integers round it as the number formatting does.
constexpr auto kComponents = [] {
  std::array<std::array<char, kComponentLength>, 256> texts{};
  for (unsigned channel = 0; channel < texts.size(); ++channel) {
    unsigned rest = (channel * 20000 + 255) / 510;
    for (std::size_t i = kComponentLength - 1; i > 1; --i, rest /= 10) {
      texts[channel][i] = static_cast<char>('0' + rest % 10);
    }
    texts[channel][1] = '.';
    texts[channel][0] = static_cast<char>('0' + rest);
  }
  return texts;
}();

std::string_view Component(unsigned char channel) {
  return {kComponents[channel].data(), kComponentLength};
}

}  // namespace

TextWriter& operator<<(TextWriter& text, const JTPDFColor& color) {
  return text << Component(color.red) << ' ' << Component(color.green) << ' '
              << Component(color.blue);
}

std::string JTPDFColor::AsString(bool gray) const {
  TextBuffer<kShapeMaxLength> text;
  return gray ? Num(red / 255.0) : (text << *this).Text();
}
