// One page on which each kind of drawing has a place of its own, far enough from its neighbours for
// a reader's pixels to be compared. tests/readers/pixels.py lists the points and their colours; the
// two are changed together.

#include "drawings.h"
#include "image_data.h"

namespace golden {
namespace {

constexpr JTPDFRect kSheet = {0, 0, 400, 400, 0};
constexpr JTPDFRect kCrop = {20, 20, 360, 360, 0};
constexpr JTPDFRGBColor kGround = {240, 240, 240, 255};

std::string Rgb(int red, int green, int blue) {
  return {static_cast<char>(red), static_cast<char>(green), static_cast<char>(blue)};
}

Image RgbQuadrants() {
  return {.data =
              Flate(Quadrants({Rgb(255, 0, 0), Rgb(0, 255, 0), Rgb(0, 0, 255), Rgb(255, 255, 0)}))};
}

void TopRow(Host& host) {
  // Counter-clockwise: the bar runs from the lower left to the upper right.
  FillPdfRectangle(host.doc, {40, 325, 60, 10, 45}, kRed);
  const int rgb = host.Write(RgbQuadrants());
  DrawPdfImageInRect(host.doc, rgb, {120, 300, 50, 50, 90});
  DrawPdfImageInRect(host.doc, rgb, {190, 300, 50, 50, 0});

  FillPdfRectangle(host.doc, {260, 300, 50, 50, 0}, {0, 0, 128, 255});
  const std::string red = Rgb(255, 0, 0);
  const std::string clear(1, '\0');
  const Image alpha = {.data = Flate(Quadrants({clear, "\xFF", clear, "\x80"})),
                       .colorSpace = kPdfColorSpaceGray};
  DrawPdfImageInRect(host.doc,
                     host.WriteWithAlpha({.data = Flate(Quadrants({red, red, red, red}))}, &alpha),
                     {260, 300, 50, 50, 0});

  FillPdfRectangle(host.doc, {320, 300, 50, 50, 0}, kGreen);
  const int keyed = host.Write({.data = Flate(Quadrants({clear, "\x80", "\xFE", "\xFF"})),
                                .colorSpace = kPdfColorSpaceGray,
                                .maskWhite = true});
  DrawPdfImageInRect(host.doc, keyed, {320, 300, 50, 50, 0});
}

void MiddleRow(Host& host) {
  // Declared inverted: 0 is full ink, in raw data as in a JPEG file with an Adobe marker.
  const int cmyk = host.Write(
      {.data =
           Flate(Quadrants({std::string("\0\xFF\xFF\xFF", 4), std::string("\xFF\0\xFF\xFF", 4),
                            std::string("\xFF\xFF\0\xFF", 4), std::string("\xFF\xFF\xFF\0", 4)})),
       .colorSpace = kPdfColorSpaceCMYK});
  const int adobe = host.Write(
      {.data = CmykJpeg(), .compression = kPdfCompressionJPEG, .colorSpace = kPdfColorSpaceCMYK});
  Image swapped = RgbQuadrants();
  swapped.colorSpace = kPdfColorSpaceICC;
  swapped.colorSpaceObject = host.WriteProfile(Flate(SwappedProfile()), kPdfCompressionFlate);
  const int icc = host.Write(swapped);
  const int jp2 = host.WriteJpeg2000({.data = RgbJp2(), .compression = kPdfCompressionJPEG2000});
  const int jpeg = host.Write({.data = RgbJpeg(), .compression = kPdfCompressionJPEG});
  double left = 30;
  for (const int image : {cmyk, adobe, icc, jp2, jpeg}) {
    DrawPdfImageInRect(host.doc, image, {left, 220, 50, 50, 0});
    left += 70;
  }
}

void LowerRows(Host& host) {
  FillAndStrokePdfCircle(host.doc, {30, 140, 60, 60, 0}, kYellow, kBlue, 10);
  StrokePdfRectangle(host.doc, {110, 145, 50, 50, 0}, kRed, 10);
  FillAndStrokePdfRectangle(host.doc, {180, 145, 50, 50, 30}, kGreen, kBlack, 6);
  const int rgb = host.Write(RgbQuadrants());
  DrawPdfImageInRect(host.doc, rgb, {300, 140, -50, 50, 0});  // mirrored
  DrawPdfImageInRect(host.doc, rgb, {320, 190, 50, -50, 0});  // upside down

  const int gray = host.Write(
      {.data = GrayJpeg(), .compression = kPdfCompressionJPEG, .colorSpace = kPdfColorSpaceGray});
  const int lzw = host.Write({.data = Lzw(Quadrants({Rgb(10, 20, 30), Rgb(250, 128, 0),
                                                     Rgb(0, 128, 250), Rgb(128, 0, 128)})),
                              .compression = kPdfCompressionLZW});
  const int black_and_white = host.Write({.data = Flate("\xF0\xF0\xF0\xF0\x0F\x0F\x0F\x0F"),
                                          .colorSpace = kPdfColorSpaceGray,
                                          .bits = 1,
                                          .width = 8,
                                          .height = 8});
  double left = 30;
  for (const int image : {gray, lzw, black_and_white}) {
    DrawPdfImageInRect(host.doc, image, {left, 60, 50, 50, 0});
    left += 70;
  }
  // The circle's colours and its width are in force here: neither is set by this call.
  FillAndStrokePdfCircle(host.doc, {240, 60, 50, 50, 0}, kRed, kGreen, 8);
  StrokePdfRectangle(host.doc, {310, 65, 50, 40, 0}, kNone, 8);
}

}  // namespace

void Pixels(Host& host) {
  SetPdfCanvasBoundingBox(host.doc, kSheet);
  FillPdfRectangle(host.doc, kSheet, kGround);
  TopRow(host);
  MiddleRow(host);
  LowerRows(host);
  const int form = host.Form();
  host.Page(form, kCrop, kSheet);

  // Nothing shows outside the bounding box.
  SetPdfCanvasBoundingBox(host.doc, {20, 30, 60, 50, 0});
  FillPdfRectangle(host.doc, {0, 0, 100, 100, 0}, kBlue);
  host.Page(host.Form(), {0, 0, 100, 100, 0});

  // The form of the first page again, cut down to its circle.
  host.Page(form, {30, 140, 60, 60, 0}, kSheet);
}

}  // namespace golden
