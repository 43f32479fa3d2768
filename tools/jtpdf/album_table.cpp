#include "album_table.h"

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

#include "formats/decoder.h"
#include "text.h"

namespace pictures::tool {
namespace {

using Row = std::vector<std::string>;

const char* ColourName(const ImagePlan& image) {
  if (image.palette) return image.alpha ? "palette+alpha" : "palette";
  switch (image.colour) {
    case Colour::kGrey:
      return image.alpha ? "grey+alpha" : "grey";
    case Colour::kRgb:
      return image.alpha ? "RGB+alpha" : "RGB";
    default:
      return image.alpha ? "CMYK+alpha" : "CMYK";
  }
}

const char* ProfileName(ProfileUse use) {
  switch (use) {
    case ProfileUse::kNone:
      return "none";
    case ProfileUse::kUsed:
      return "used";
    default:
      return "left out";
  }
}

Row RowOf(const AlbumPlan& plan, size_t number, const LayoutOptions& options) {
  const PagePlan& page = plan.pages[number];
  const ImagePlan& image = page.image;
  char size[64];
  std::snprintf(size, sizeof size, "%.6gx%.6g", page.layout.page.width, page.layout.page.height);
  const int orientation = DrawnOrientation(image, options);
  std::string stored = image.PassesThrough() ? "as it is" : "decoded: " + image.decodeReason;
  if (page.sameAs != number) stored = "same as page " + std::to_string(page.sameAs + 1);
  return {DecoderOf(image.format).name,
          std::to_string(image.width) + "x" + std::to_string(image.height),
          std::to_string(image.depth),
          ColourName(image),
          ProfileName(image.profile),
          orientation == 1 ? "no" : "EXIF " + std::to_string(orientation),
          size,
          stored,
          Printable(PageName(plan, page))};
}

// Columns as wide as their widest cells, two blanks apart.
std::string Aligned(const std::vector<Row>& rows) {
  std::vector<size_t> widths(rows[0].size());
  for (const Row& row : rows) {
    for (size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], row[c].size());
  }
  std::string table;
  for (const Row& row : rows) {
    for (size_t c = 0; c < row.size(); ++c) {
      table += row[c];
      if (c + 1 < row.size()) table += std::string(widths[c] - row[c].size() + 2, ' ');
    }
    table += '\n';
  }
  return table;
}

}  // namespace

std::string DescribeAlbum(const AlbumPlan& plan, const Options& options) {
  std::vector<Row> rows{
      {"FORMAT", "PIXELS", "BITS", "COLOUR", "PROFILE", "TURNED", "PAGE (PT)", "STORED", "FILE"}};
  for (size_t i = 0; i < plan.pages.size(); ++i) rows.push_back(RowOf(plan, i, options.layout));
  for (const PassedOver& file : plan.passedOver) {
    Row row(rows[0].size(), "-");
    row[row.size() - 2] = file.reason;
    row.back() = Printable(file.path);
    rows.push_back(std::move(row));
  }
  return Aligned(rows);
}

}  // namespace pictures::tool
