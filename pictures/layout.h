// layout.h - where a picture goes on its page: arithmetic alone, in points.
#ifndef JTPDF_PICTURES_LAYOUT_H
#define JTPDF_PICTURES_LAYOUT_H

#include <optional>

#include "image.h"
#include "jtpdf/types.h"

namespace pictures {

inline constexpr double kDefaultDpi = 96;
inline constexpr double kLeastPage = 3;  // ISO 32000-1, annex C.2
inline constexpr double kMostPage = 14400;

// A length in points, or a share of the picture's natural length.
struct Measure {
  double value = 0;
  bool percent = false;
};

struct PageSize {
  std::optional<double> width;
  std::optional<double> height;
  bool Given() const { return width || height; }
};

struct ImageSize {
  std::optional<Measure> width;
  std::optional<Measure> height;
  std::optional<double> dpi;
  bool Given() const { return width || height || dpi; }
};

// The least distance between two boxes: above and below, left and right.
struct Border {
  double vertical = 0;
  double horizontal = 0;
};

enum class Fit { kInto, kFill, kExact, kShrink, kEnlarge };

struct LayoutOptions {
  PageSize page;
  ImageSize image;
  Border border;
  std::optional<Border> cropBorder;
  Fit fit = Fit::kInto;
  bool autoOrient = false;
  std::optional<int> turn;  // degrees clockwise in place of the picture's own orientation
};

struct PageLayout {
  JTPDFRect page = {};
  JTPDFRect crop = {};
  JTPDFRect image = {};  // turned by its angle, mirrored by a negative width or height
};

// Throws an ImageError where the page would be smaller or larger than PDF allows.
PageLayout LayOut(const ImagePlan& plan, const LayoutOptions& options);

// The orientation, as EXIF counts, in which the picture will be drawn.
int DrawnOrientation(const ImagePlan& plan, const LayoutOptions& options);

// The box that draws a picture over width x height around a centre in an orientation.
JTPDFRect OrientedBox(double centreX, double centreY, double width, double height, int orientation);

}  // namespace pictures

#endif  // JTPDF_PICTURES_LAYOUT_H
