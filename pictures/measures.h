// measures.h - lengths and sizes as people write them.
#ifndef JTPDF_PICTURES_MEASURES_H
#define JTPDF_PICTURES_MEASURES_H

#include <optional>
#include <stdexcept>
#include <string_view>

#include "layout.h"

namespace pictures {

// Of a text that is no such measure: which it is, and what would be right.
struct MeasureError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Each throws a MeasureError that names the value and says what would be right.
double ParseLength(std::string_view text);        // "2.5cm" in points
PageSize ParsePageSize(std::string_view text);    // "A4", "A4^T", "10cmx15cm", "10cm", "x15cm"
ImageSize ParseImageSize(std::string_view text);  // the same, "300dpi", "50%"
Border ParseBorder(std::string_view text);        // "1cm", "1cm:2cm"
// A factor ("1.5") or a percentage ("150%"); nothing where it is neither.
std::optional<Measure> ParseZoom(std::string_view text);
Grid ParseGrid(std::string_view text);  // "2x3"

}  // namespace pictures

#endif  // JTPDF_PICTURES_MEASURES_H
