// Rectangles, circles, images and numbers of every kind on the canvas.

#include <limits>

#include "drawings.h"
#include "image_data.h"

namespace golden {
namespace {

constexpr JTPDFRect kSheet = {0, 0, 300, 300, 0};

}  // namespace

void Rectangles(Host& host) {
  SetPdfCanvasBoundingBox(host.doc, kSheet);
  for (int i = 0; i < 12; ++i) {
    const double angle = 30 * i;
    FillPdfRectangle(host.doc, {10 + 24.0 * i, 270, 16, 8, angle}, kRed);
  }
  for (const double angle : {-45.0, 0.5, 89.999, 360.0, 7200.25}) {
    StrokePdfRectangle(host.doc, {140, 140, 60, 20, angle}, kBlue, 1.5);
  }
  // Which of the two are drawn depends on "none"; opaque white is a colour.
  double left = 10;
  for (const JTPDFRGBColor fill : {kNone, kWhite, kBlack, JTPDFRGBColor{51, 102, 153, 0}}) {
    double bottom = 10;
    for (const JTPDFRGBColor stroke : {kNone, kWhite, JTPDFRGBColor{255, 255, 254, 0}, kGreen}) {
      FillAndStrokePdfRectangle(host.doc, {left, bottom, 20, 12, 0}, fill, stroke, 2);
      bottom += 18;
    }
    left += 28;
  }
  FillPdfRectangle(host.doc, {130, 10, 20, 20, 0}, kNone);
  StrokePdfRectangle(host.doc, {160, 10, 20, 20, 0}, kNone, 0);
  FillPdfRectangle(host.doc, {210, 30, -20, -20, 10}, kYellow);
  FillPdfRectangle(host.doc, {230, 10, 0, 0, 0}, kYellow);
  JTPDFRect inset = {240, 10, 40, 40, 20};
  InsetPdfRect(&inset, 5, 10);
  FillAndStrokePdfRectangle(host.doc, inset, kYellow, kBlack, 0.25);
  host.Page(host.Form(), kSheet);
}

void Circles(Host& host) {
  SetPdfCanvasBoundingBox(host.doc, kSheet);
  FillAndStrokePdfCircle(host.doc, {10, 10, 100, 50, 0}, kRed, kBlue, 2);
  FillAndStrokePdfCircle(host.doc, {120, 10, 50, 100, 45}, kYellow, kGreen, 5);  // not rotated
  FillAndStrokePdfCircle(host.doc, {180, 10, 40, 40, 0}, kNone, kNone, 1);       // plain white
  FillAndStrokePdfCircle(host.doc, {230, 10, 40, 40, 0}, kRed, kBlue, 0);
  FillAndStrokePdfCircle(host.doc, {180, 60, 20, 20, 0}, kRed, kBlue, 20);  // no radius is left
  FillAndStrokePdfCircle(host.doc, {210, 60, 20, 20, 0}, kRed, kBlue, 24);  // less than none
  // The width and the colours of the circle before stay in force.
  StrokePdfRectangle(host.doc, {10, 150, 40, 40, 0}, kNone, 3);
  FillPdfRectangle(host.doc, {60, 150, 40, 40, 0}, kNone);
  host.Page(host.Form(), kSheet);
}

// Written as they come: what does not fit the number format is cut, and there is no exponent.
void Numbers(Host& host) {
  SetPdfCanvasBoundingBox(host.doc, kSheet);
  const double infinity = std::numeric_limits<double>::infinity();
  // Of a NaN that computing has touched some machines drop the sign: a negative one is no golden's.
  const double quiet = std::numeric_limits<double>::quiet_NaN();
  for (const double value :
       {-0.0, 0.00004, -0.00001, 0.00005, 0.00015, 1234.5, 1e15, 123456789012345678.0, 1e23, 1e24,
        1e300, -1e300, std::numeric_limits<double>::denorm_min(), infinity, -infinity, quiet}) {
    FillPdfRectangle(host.doc, {value, 10, 10, 10, 0}, kRed);
    FillPdfRectangle(host.doc, {10, 10, value, 10, 0}, kRed);
    StrokePdfRectangle(host.doc, {10, 10, 10, 10, 0}, kRed, value);
    FillAndStrokePdfCircle(host.doc, {10, value, 10, 10, 0}, kRed, kBlue, 1);
  }
  // No page: these are no numbers of PDF, and no reader is to find them.
  host.Form();
  SetPdfCanvasBoundingBox(host.doc, {infinity, 1e300, -0.0, quiet, 3});
  host.Form();
}

// The canvas's own rules: the bounding box, clearing, image names, empty forms.
void Canvas(Host& host) {
  const int first = host.Write({.data = RgbJpeg(), .compression = kPdfCompressionJPEG});
  const int second = host.Write(
      {.data = GrayJpeg(), .compression = kPdfCompressionJPEG, .colorSpace = kPdfColorSpaceGray});
  const JTPDFRect sheet = {0, 0, 10, 10, 0};
  DrawPdfImage(host.doc, first);  // the bounding box is still zero
  const int zero = host.Form();
  SetPdfCanvasBoundingBox(host.doc, {1, 2, 8, 7, 30});
  DrawPdfImage(host.doc, first);
  DrawPdfImageInRect(host.doc, second, {2, 2, 2, 3, 15});
  DrawPdfImageInRect(host.doc, second, {6, 2, -2, 3, -15});
  const int both = host.Form();
  DrawPdfImage(host.doc, first);
  ClearPdfCanvas(host.doc);
  DrawPdfImageInRect(host.doc, second, {3, 3, 4, 4, 0});
  const int cleared = host.Form();
  const int empty = host.Form();
  for (const int form : {zero, both, cleared, empty}) host.Page(form, {1, 1, 8, 8, 45}, sheet);
  host.Page(both, sheet);
  host.Page(both, {-1, -1, 12, 12, 0});
}

}  // namespace golden
