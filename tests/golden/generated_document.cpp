// Documents by the hundred, for readers to be compared on: well-formed, each different, the same
// for a seed on every machine.

#include <random>

#include "drawings.h"
#include "image_data.h"

namespace golden {
namespace {

// The library's distributions are not the same everywhere; the engine is.
class Dice {
 public:
  explicit Dice(unsigned seed) : engine_(seed) {}

  int Below(int limit) { return static_cast<int>(engine_() % static_cast<unsigned>(limit)); }
  double Between(double low, double high) { return low + (high - low) * Below(10000) / 10000; }
  JTPDFRGBColor Color() {
    const auto channel = [this] { return static_cast<uint8_t>(Below(256)); };
    const uint8_t red = channel();
    const uint8_t green = channel();
    const uint8_t blue = channel();
    return {red, green, blue, 255};
  }
  std::string Bytes(int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(Below(256));
    return bytes;
  }

 private:
  std::mt19937 engine_;
};

// Grey and RGB only: what other colours look like is for each reader to decide.
int WriteImage(Host& host, Dice& dice) {
  const bool gray = dice.Below(4) == 0;
  std::array<std::string, 4> quadrants;
  for (std::string& pixels : quadrants) pixels = dice.Bytes(gray ? 1 : 3);
  Image image;
  image.colorSpace = gray ? kPdfColorSpaceGray : kPdfColorSpaceRGB;
  image.maskWhite = dice.Below(4) == 0;
  image.compression = dice.Below(2) == 0 ? kPdfCompressionLZW : kPdfCompressionFlate;
  const std::string data = Quadrants(quadrants);
  image.data = image.compression == kPdfCompressionLZW ? Lzw(data) : Flate(data);
  if (dice.Below(6) == 0) {
    image = {.data = RgbJpeg(), .compression = kPdfCompressionJPEG};
  } else if (dice.Below(6) == 0) {
    return host.WriteJpeg2000({.data = RgbJp2(), .compression = kPdfCompressionJPEG2000});
  }
  if (dice.Below(3) != 0) return host.Write(image);
  image.maskWhite = false;
  for (std::string& pixels : quadrants) pixels = dice.Bytes(1);
  const Image alpha = {.data = Flate(Quadrants(quadrants)), .colorSpace = kPdfColorSpaceGray};
  return host.WriteWithAlpha(image, &alpha);
}

}  // namespace

void Generated(Host& host, unsigned seed) {
  Dice dice(seed);
  std::vector<int> images;
  for (int i = dice.Below(5); i >= 0; --i) images.push_back(WriteImage(host, dice));
  // Whole points: readers round or stretch other sizes, and all their pixels differ a little.
  const double width = 100 + dice.Below(150);
  const double height = 100 + dice.Below(150);
  const double corner = dice.Below(40) - 20;
  const JTPDFRect sheet = {corner, -corner, width, height, 0};
  for (int pages = dice.Below(12); pages >= 0; --pages) {
    SetPdfCanvasBoundingBox(host.doc, sheet);
    for (int drawings = dice.Below(8); drawings >= 0; --drawings) {
      const double left = dice.Between(-10, width);
      const double bottom = dice.Between(-10, height);
      const double side = dice.Between(10, 80);
      const JTPDFRect box = {left, bottom, side, dice.Between(10, 80), dice.Between(0, 360)};
      const JTPDFRGBColor fill = dice.Color();
      const JTPDFRGBColor stroke = dice.Color();
      const double line = dice.Between(2, 8);
      switch (dice.Below(5)) {
        case 0:
          FillPdfRectangle(host.doc, box, fill);
          break;
        case 1:
          StrokePdfRectangle(host.doc, box, stroke, line);
          break;
        case 2:
          FillAndStrokePdfRectangle(host.doc, box, fill, stroke, line);
          break;
        case 3:
          FillAndStrokePdfCircle(host.doc, box, fill, stroke, line);
          break;
        default:
          DrawPdfImageInRect(
              host.doc,
              images[static_cast<std::size_t>(dice.Below(static_cast<int>(images.size())))], box);
      }
    }
    JTPDFRect crop = sheet;
    const double dx = dice.Below(20);
    const double dy = dice.Below(20);
    InsetPdfRect(&crop, dx, dy);
    host.Page(host.Form(), crop, sheet);
  }
}

}  // namespace golden
