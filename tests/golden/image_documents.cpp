// Every image that can be described: colour spaces by filters, depths, masks, roles, JPEG 2000,
// and values outside the enumerations.

#include <climits>

#include "drawings.h"
#include "image_data.h"

namespace golden {
namespace {

constexpr JTPDFRect kSheet = {0, 0, 300, 300, 0};

// Draws images from the top left, six to a row of the sheet, over a ground on which white and
// transparent differ.
class Gallery {
 public:
  explicit Gallery(Host& host) : host_(host) {
    SetPdfCanvasBoundingBox(host.doc, kSheet);
    FillPdfRectangle(host.doc, kSheet, {200, 220, 255, 255});
  }

  void Show(int image) {
    const double left = 10 + 48 * (shown_ % 6);
    const double bottom = 252 - 48 * (shown_ / 6);
    DrawPdfImageInRect(host_.doc, image, {left, bottom, 40, 40, 0});
    ++shown_;
  }

  void Page() { host_.Page(host_.Form(), kSheet); }

 private:
  Host& host_;
  int shown_ = 0;
};

std::string Pixels(TPdfColorSpace space) {
  switch (space) {
    case kPdfColorSpaceGray:
      return Quadrants({"\x20", "\x80", "\xC0", "\xFF"});
    case kPdfColorSpaceCMYK:
      return Quadrants({std::string("\0\xFF\xFF\xFF", 4), std::string("\xFF\0\xFF\xFF", 4),
                        std::string("\xFF\xFF\0\xFF", 4), std::string("\xFF\xFF\xFF\xFF", 4)});
    default:
      return Quadrants({std::string("\xFF\0\0", 3), std::string("\0\xFF\0", 3),
                        std::string("\0\0\xFF", 3), std::string("\xFF\xFF\xFF", 3)});
  }
}

std::string Encoded(TPdfColorSpace space, TPdfCompression compression) {
  if (compression == kPdfCompressionLZW) return Lzw(Pixels(space));
  if (compression == kPdfCompressionFlate) return Flate(Pixels(space));
  if (space == kPdfColorSpaceGray) return GrayJpeg();
  return space == kPdfColorSpaceCMYK ? CmykJpeg() : RgbJpeg();
}

constexpr TPdfColorSpace kSpaces[] = {kPdfColorSpaceGray, kPdfColorSpaceRGB, kPdfColorSpaceCMYK,
                                      kPdfColorSpaceICC};

}  // namespace

void Images(Host& host) {
  const int space = host.WriteProfile(Flate(SwappedProfile()), kPdfCompressionFlate);

  Gallery filters(host);
  for (const TPdfColorSpace colors : kSpaces) {
    for (const TPdfCompression compression :
         {kPdfCompressionJPEG, kPdfCompressionLZW, kPdfCompressionFlate}) {
      for (const bool maskWhite : {false, true}) {
        filters.Show(host.Write({.data = Encoded(colors, compression),
                                 .compression = compression,
                                 .colorSpace = colors,
                                 .colorSpaceObject = space,
                                 .maskWhite = maskWhite}));
      }
    }
  }
  filters.Page();

  Gallery kinds(host);
  for (const int bits : {1, 2, 4, 8, 16}) {
    const std::string line = std::string(static_cast<std::size_t>(bits), '\x35');
    std::string data;
    for (int y = 0; y < 8; ++y) data += line;
    kinds.Show(host.Write({.data = Flate(data),
                           .colorSpace = kPdfColorSpaceGray,
                           .bits = bits,
                           .width = 8,
                           .height = 8}));
  }
  for (int role = kPdfImageRoleBackground; role <= kPdfImageRoleOther; ++role) {
    kinds.Show(host.Write({.data = GrayJpeg(),
                           .compression = kPdfCompressionJPEG,
                           .colorSpace = kPdfColorSpaceGray,
                           .role = static_cast<TPdfImageRole>(role),
                           .name = L"role"}));
  }
  const Image alpha = {.data = Flate(Quadrants({std::string(1, '\0'), "\x55", "\xAA", "\xFF"})),
                       .colorSpace = kPdfColorSpaceGray};
  for (const TPdfColorSpace colors : kSpaces) {
    kinds.Show(host.WriteWithAlpha({.data = Flate(Pixels(colors)),
                                    .colorSpace = colors,
                                    .colorSpaceObject = space,
                                    .role = kPdfImageRoleText,
                                    .name = L"with alpha"},
                                   &alpha));
  }
  kinds.Show(host.WriteWithAlpha({.data = RgbJpeg(), .compression = kPdfCompressionJPEG}, nullptr));
  // The colour space is ignored here, and the filter is not.
  kinds.Show(host.WriteJpeg2000(
      {.data = RgbJpeg(), .compression = kPdfCompressionJPEG, .colorSpace = kPdfColorSpaceCMYK}));
  kinds.Page();
}

// The last image of each row of values has no colour space and is not drawn: no reader could know
// how. Data without a filter is plain pixels.
void UnknownEnumerations(Host& host) {
  Gallery gallery(host);
  for (const int compression : {4, -1, INT_MAX, INT_MIN}) {
    gallery.Show(host.Write({.data = Pixels(kPdfColorSpaceRGB),
                             .compression = static_cast<TPdfCompression>(compression)}));
  }
  for (const int role : {9, -1, INT_MAX, INT_MIN}) {
    gallery.Show(host.Write({.data = RgbJpeg(),
                             .compression = kPdfCompressionJPEG,
                             .role = static_cast<TPdfImageRole>(role)}));
  }
  for (const int colors : {4, -1, INT_MAX, INT_MIN}) {
    host.Write({.data = RgbJpeg(),
                .compression = kPdfCompressionJPEG,
                .colorSpace = static_cast<TPdfColorSpace>(colors),
                .maskWhite = true});
  }
  host.WriteProfile(SwappedProfile(), static_cast<TPdfCompression>(77));
  host.Write({.data = "", .width = 0, .height = 0});
  host.Write({.data = std::string("\r\nendstream\r\nendobj\r\n\0", 22),
              .bits = INT_MIN,
              .width = INT_MAX,
              .height = -1});
  gallery.Page();
}

void Jpeg2000(Host& host) {
  Gallery gallery(host);
  const Image image = {.data = RgbJp2(), .compression = kPdfCompressionJPEG2000};
  gallery.Show(host.WriteJpeg2000(image));
  Image masked = image;  // neither shows in a JPEG 2000 image
  masked.colorSpace = kPdfColorSpaceGray;
  masked.maskWhite = true;
  gallery.Show(host.Write(masked));
  gallery.Page();
}

void Jpeg2000WithAlpha(Host& host) {
  Gallery gallery(host);
  gallery.Show(host.WriteJpeg2000({.data = RgbaJp2(), .compression = kPdfCompressionJPEG2000}));
  gallery.Page();
}

}  // namespace golden
