// layout.h - where a picture goes on its page: arithmetic alone, in points.
#ifndef JTPDF_PICTURES_LAYOUT_H
#define JTPDF_PICTURES_LAYOUT_H

#include <cstddef>
#include <optional>
#include <string>

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

// How many pictures stand side by side and one below the other, in rows from the top left.
struct Grid {
  unsigned columns = 1;
  unsigned rows = 1;
  size_t Cells() const { return size_t{columns} * rows; }
};

// What messages call the options.
struct LayoutNames {
  const char* page = "page";
  const char* image = "image";
  const char* border = "border";
  const char* cropBorder = "cropBorder";
  const char* bleedBorder = "bleedBorder";
  const char* trimBorder = "trimBorder";
  const char* artBorder = "artBorder";
};

struct LayoutOptions {
  PageSize page;  // both sides, where the grid has several cells
  ImageSize image;
  Border border;  // around each cell, too, where there are several
  Grid grid;
  // How much smaller than the page its boxes are (ISO 32000-1, 14.11.2).
  std::optional<Border> cropBorder, bleedBorder, trimBorder, artBorder;
  Fit fit = Fit::kInto;
  bool autoOrient = false;
  std::optional<int> turn;  // degrees clockwise in place of the picture's own orientation
  LayoutNames names;
};

struct PageLayout {
  JTPDFRect page = {};
  JTPDFRect crop = {};
  std::optional<JTPDFRect> bleed, trim, art;
  JTPDFRect image = {};  // turned by its angle, mirrored by a negative width or height
  JTPDFRect cell = {};   // of the grid
  bool cut = false;      // the image reaches out of its cell, and is to be cut off there
  std::string note;      // where the file's resolution could not be taken
};

// Throws an ImageError where the page would be smaller or larger than PDF allows. Of several cells
// the picture is put in the first. A resolution of the file's that alone would make such a page is
// left aside, and a note says so.
PageLayout LayOut(const ImagePlan& plan, const LayoutOptions& options);

// Moves the picture from the first cell to another.
void MoveToCell(size_t cell, const LayoutOptions& options, PageLayout* layout);

// The box that draws a picture in the middle of another one, scaled and turned by the options' fit
// and turn.
JTPDFRect FitIntoBox(const ImagePlan& plan, const JTPDFRect& box, const LayoutOptions& options);

// The same area as a box with sides that aren't negative and an angle from -45 to 45 degrees.
JTPDFRect UprightBox(const JTPDFRect& box);

// The orientation, as EXIF counts, in which the picture will be drawn.
int DrawnOrientation(const ImagePlan& plan, const LayoutOptions& options);

// The box that draws a picture over width x height around a centre in an orientation.
JTPDFRect OrientedBox(double centreX, double centreY, double width, double height, int orientation);

}  // namespace pictures

#endif  // JTPDF_PICTURES_LAYOUT_H
