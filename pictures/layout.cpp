#include "layout.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <utility>

namespace pictures {
namespace {

struct Extent {
  double width;
  double height;
};

bool SwapsSides(int orientation) {
  return orientation >= 5;
}

Extent NaturalExtent(const ImagePlan& plan, int orientation, std::optional<double> dpi) {
  Resolution resolution = plan.resolution;
  if (!resolution.Known()) resolution = {kDefaultDpi, kDefaultDpi};
  if (dpi) resolution = {*dpi, *dpi};
  Extent extent{72 * plan.width / resolution.x, 72 * plan.height / resolution.y};
  if (SwapsSides(orientation)) std::swap(extent.width, extent.height);
  return extent;
}

// Scales to the box; a side that is not given is the one that keeps the picture's shape.
Extent FitInto(Extent image, std::optional<double> width, std::optional<double> height, Fit fit) {
  const double byWidth = width ? *width / image.width : 0;
  const double byHeight = height ? *height / image.height : 0;
  const bool larger = (width && image.width > *width) || (height && image.height > *height);
  switch (fit) {
    case Fit::kExact:
      if (width && height) return {*width, *height};
      break;
    case Fit::kShrink:
      if (!larger) return image;
      break;
    case Fit::kEnlarge:
      if (larger) return image;
      break;
    case Fit::kInto:
    case Fit::kFill:
      break;
  }
  double scale = width && height ? std::min(byWidth, byHeight) : byWidth + byHeight;
  if (fit == Fit::kFill && width && height) scale = std::max(byWidth, byHeight);
  return {image.width * scale, image.height * scale};
}

std::optional<double> InPoints(const std::optional<Measure>& measure, double natural) {
  if (!measure) return std::nullopt;
  return measure->percent ? natural * measure->value / 100 : measure->value;
}

std::string Sides(double width, double height) {
  char text[96];
  std::snprintf(text, sizeof text, "%.6g x %.6g pt (%.4g x %.4g mm)", width, height,
                width * 25.4 / 72, height * 25.4 / 72);
  return text;
}

// False of what is no number, too.
bool Fits(double width, double height) {
  const auto inside = [](double side) { return side >= kLeastPage && side <= kMostPage; };
  return inside(width) && inside(height);
}

// The image sizes that would help, if any does.
std::string UsefulSizes(const ImagePlan& plan, int orientation, const LayoutNames& names) {
  double width = plan.width, height = plan.height;
  if (SwapsSides(orientation)) std::swap(width, height);
  const bool dpi = Fits(width * 72 / 300, height * 72 / 300);
  constexpr double kTwentyCm = 20 * 72 / 2.54;
  const bool length = Fits(kTwentyCm, kTwentyCm * height / width);
  if (!dpi && !length) return "";
  const std::string option = std::string(names.image) + ' ';
  return ", or an image size with " + (dpi ? option + "300dpi" : "") +
         (dpi && length ? " or " : "") + (length ? option + "20cmx" : "");
}

void CheckPage(double width, double height, const ImagePlan& plan, int orientation,
               const LayoutNames& names) {
  if (Fits(width, height)) return;
  char resolution[64] = "";
  if (plan.resolution.Known()) {
    std::snprintf(resolution, sizeof resolution, " (it says %.4g x %.4g dpi)", plan.resolution.x,
                  plan.resolution.y);
  }
  throw ImageError("would need a page of " + Sides(width, height) + resolution +
                   "; PDF pages measure 3 to 14400 pt: choose a page with " + names.page + " A4" +
                   UsefulSizes(plan, orientation, names));
}

JTPDFRect Inset(JTPDFRect box, Border border) {
  return {box.left + border.horizontal, box.bottom + border.vertical,
          box.width - 2 * border.horizontal, box.height - 2 * border.vertical, 0};
}

}  // namespace

int DrawnOrientation(const ImagePlan& plan, const LayoutOptions& options) {
  if (!options.turn) return plan.orientation;
  switch (*options.turn) {
    case 90:
      return 6;
    case 180:
      return 3;
    case 270:
      return 8;
    default:
      return 1;
  }
}

JTPDFRect OrientedBox(double centreX, double centreY, double width, double height,
                      int orientation) {
  // What turns and mirrors the stored picture upright: mirrored first, then turned.
  struct Placement {
    double angle;  // counter-clockwise
    int x, y;      // -1 mirrors
  };
  constexpr Placement kPlacements[] = {{0, 1, 1},   {0, -1, 1},  {180, 1, 1},  {0, 1, -1},
                                       {90, -1, 1}, {270, 1, 1}, {270, -1, 1}, {90, 1, 1}};
  const Placement& placement = kPlacements[orientation - 1];
  if (SwapsSides(orientation)) std::swap(width, height);
  width *= placement.x;
  height *= placement.y;
  return {centreX - width / 2, centreY - height / 2, width, height, placement.angle};
}

namespace {

std::optional<double> CellSide(std::optional<double> page, double border, unsigned cells,
                               const LayoutNames& names) {
  if (!page) return std::nullopt;
  const double left = (*page - (cells + 1) * border) / cells;
  if (left > 0) return left;
  throw ImageError("has no room left on its page inside the border; choose a smaller " +
                   std::string(names.border) + " or a larger " + names.page);
}

// The picture, with its file's resolution or the usual one, on its page: how large both are.
struct Sizes {
  Extent image;
  PageSize page;
  Border border;
  bool Fit() const { return Fits(*page.width, *page.height); }
};

Sizes MeasurePage(const ImagePlan& plan, const LayoutOptions& options) {
  const int orientation = DrawnOrientation(plan, options);
  Sizes sizes{NaturalExtent(plan, orientation, options.image.dpi), options.page, options.border};
  auto& [image, page, border] = sizes;
  if (options.autoOrient && page.width && page.height &&
      (image.width - image.height) * (*page.width - *page.height) < 0) {
    std::swap(page.width, page.height);
    std::swap(border.vertical, border.horizontal);
  }
  if (options.image.width || options.image.height) {
    image = FitInto(image, InPoints(options.image.width, image.width),
                    InPoints(options.image.height, image.height), options.fit);
  } else if (page.Given() && !options.image.dpi) {
    image = FitInto(
        image, CellSide(page.width, border.horizontal, options.grid.columns, options.names),
        CellSide(page.height, border.vertical, options.grid.rows, options.names), options.fit);
  }
  if (!page.width) page.width = image.width + 2 * border.horizontal;
  if (!page.height) page.height = image.height + 2 * border.vertical;
  return sizes;
}

// The same with the usual resolution, where that of the file is what makes a page too large or
// small; a note says so.
Sizes MeasurePageSensibly(const ImagePlan& plan, const LayoutOptions& options, std::string* note) {
  const Sizes sizes = MeasurePage(plan, options);
  if (sizes.Fit() || !plan.resolution.Known()) return sizes;
  ImagePlan usual = plan;
  usual.resolution = {};
  const Sizes usualSizes = MeasurePage(usual, options);
  if (!usualSizes.Fit()) return sizes;
  char text[160];
  std::snprintf(text, sizeof text,
                "its resolution of %.4g x %.4g dpi would make a page of %.6g x %.6g pt; %g dpi "
                "were taken in its place",
                plan.resolution.x, plan.resolution.y, *sizes.page.width, *sizes.page.height,
                kDefaultDpi);
  *note = text;
  return usualSizes;
}

std::optional<JTPDFRect> InsetIfGiven(JTPDFRect page, const std::optional<Border>& border,
                                      const char* option) {
  if (!border) return std::nullopt;
  const JTPDFRect box = Inset(page, *border);
  if (box.width >= kLeastPage && box.height >= kLeastPage) return box;
  throw ImageError("would show nothing of its page of " + Sides(page.width, page.height) +
                   " inside the border; choose a smaller " + option);
}

}  // namespace

PageLayout LayOut(const ImagePlan& plan, const LayoutOptions& options) {
  PageLayout layout;
  const auto [image, page, border] = MeasurePageSensibly(plan, options, &layout.note);
  const int orientation = DrawnOrientation(plan, options);
  CheckPage(*page.width, *page.height, plan, orientation, options.names);
  layout.page.width = *page.width;
  layout.page.height = *page.height;
  layout.crop =
      InsetIfGiven(layout.page, options.cropBorder.value_or(Border{}), options.names.cropBorder)
          .value_or(layout.page);
  layout.bleed = InsetIfGiven(layout.page, options.bleedBorder, options.names.bleedBorder);
  layout.trim = InsetIfGiven(layout.page, options.trimBorder, options.names.trimBorder);
  layout.art = InsetIfGiven(layout.page, options.artBorder, options.names.artBorder);
  layout.cell = layout.page;
  if (options.grid.Cells() > 1) {
    const double width =
        *CellSide(page.width, border.horizontal, options.grid.columns, options.names);
    const double height = *CellSide(page.height, border.vertical, options.grid.rows, options.names);
    layout.cell = {border.horizontal, *page.height - border.vertical - height, width, height, 0};
    // A thousandth of a point: the picture that fills its cell doesn't.
    layout.cut = image.width > width + 0.001 || image.height > height + 0.001;
  }
  layout.image = OrientedBox(layout.cell.left + layout.cell.width / 2,
                             layout.cell.bottom + layout.cell.height / 2, image.width, image.height,
                             orientation);
  return layout;
}

void MoveToCell(size_t cell, const LayoutOptions& options, PageLayout* layout) {
  const size_t column = cell % options.grid.columns;
  const size_t row = cell / options.grid.columns;
  for (JTPDFRect* box : {&layout->cell, &layout->image}) {
    box->left += static_cast<double>(column) * (layout->cell.width + options.border.horizontal);
    box->bottom -= static_cast<double>(row) * (layout->cell.height + options.border.vertical);
  }
}

JTPDFRect FitIntoBox(const ImagePlan& plan, const JTPDFRect& box, const LayoutOptions& options) {
  const int orientation = DrawnOrientation(plan, options);
  const Extent image =
      FitInto(NaturalExtent(plan, orientation, std::nullopt), box.width, box.height, options.fit);
  JTPDFRect placed = OrientedBox(box.left + box.width / 2, box.bottom + box.height / 2, image.width,
                                 image.height, orientation);
  placed.angle += box.angle;
  return placed;
}

JTPDFRect UprightBox(const JTPDFRect& box) {
  int quarters = 0;
  const double angle = std::remquo(box.angle, 90, &quarters);
  double width = std::abs(box.width), height = std::abs(box.height);
  if (quarters % 2 != 0) std::swap(width, height);
  return {box.left + (box.width - width) / 2, box.bottom + (box.height - height) / 2, width, height,
          angle};
}

}  // namespace pictures
