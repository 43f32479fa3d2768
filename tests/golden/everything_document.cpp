// What a host with much to do calls, in millimetres: every function of the interface.

#include "drawings.h"
#include "image_data.h"

namespace golden {

void Everything(Host& host) {
  const JTPDFRect a4 = {0, 0, 210, 297, 0};
  const JTPDFRect trimmed = {5, 5, 200, 287, 0};
  SetPdfInfoItem(host.doc, "Title", L"Everything \u2014 \u0432\u0441\u0451");
  SetPdfInfoItem(host.doc, "CreationDate", L"D:20240102030405Z");

  const int space = host.WriteProfile(Flate(SwappedProfile()), kPdfCompressionFlate);
  const int photo = host.Write({.data = RgbJpeg(),
                                .compression = kPdfCompressionJPEG,
                                .colorSpace = kPdfColorSpaceICC,
                                .colorSpaceObject = space,
                                .name = L"photo",
                                .items = {{"/JTSource/Camera", L"none"}}});
  const Image alpha = {
      .data = GrayJpeg(), .compression = kPdfCompressionJPEG, .colorSpace = kPdfColorSpaceGray};
  const int logo = host.WriteWithAlpha(
      {.data = Lzw(Quadrants({"\x10\x20\x30", "\x40\x50\x60", "\x70\x80\x90", "\xA0\xB0\xC0"})),
       .compression = kPdfCompressionLZW,
       .role = kPdfImageRoleClipArt,
       .name = L"logo"},
      &alpha);
  const int scan = host.WriteJpeg2000({.data = RgbJp2(),
                                       .compression = kPdfCompressionJPEG2000,
                                       .role = kPdfImageRoleBackground,
                                       .name = L"scan"});

  SetPdfCanvasBoundingBox(host.doc, a4);
  DrawPdfImage(host.doc, scan);
  DrawPdfImageInRect(host.doc, photo, {30, 150, 90, 60, 12.5});
  FillPdfRectangle(host.doc, {20, 20, 60, 40, 15}, kRed);
  StrokePdfRectangle(host.doc, {90, 20, 60, 40, -15}, kGreen, 0.5);
  const int front = host.Form();

  JTPDFRect frame = GetPdfCanvasBoundingBox(host.doc);
  InsetPdfRect(&frame, 10, 15);
  FillAndStrokePdfRectangle(host.doc, frame, kWhite, kBlack, 1);
  FillAndStrokePdfCircle(host.doc, {60, 100, 90, 90, 0}, kYellow, kBlue, 3);
  DrawPdfImageInRect(host.doc, logo, {90, 130, 30, 30, 0});
  const int inside = host.Form();

  FillPdfRectangle(host.doc, a4, kRed);
  ClearPdfCanvas(host.doc);
  const int blank = host.Form();

  host.Page(front, trimmed, a4);
  for (int i = 0; i < 5; ++i) {
    host.Page(inside, a4);
    host.Page(blank, {0, 0, 148, 210, 0}, {-1, -1, 150, 212, 0});
  }
  host.Page(front, {0, 0, 105, 148.5, 0}, a4);
  SetPdfMgMk(host.doc, !GetPdfMgMk(host.doc));
}

}  // namespace golden
