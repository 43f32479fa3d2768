// viewer.h - how a document shows itself when it is opened (ISO 32000-1, 7.7.2 and 12.2).
#ifndef JTPDF_TOOL_VIEWER_H
#define JTPDF_TOOL_VIEWER_H

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pictures::tool {

// The values of the options as they were given.
struct ViewerWords {
  std::optional<std::string> panes, initialPage, magnification, pageLayout;
  bool fitWindow = false, centerWindow = false, fullScreen = false;
};

struct Viewer {
  std::vector<std::pair<std::string, std::string>> catalogEntries;
  std::optional<size_t> firstPage;  // 0 is the first page
  std::string view;                 // of that page: "/Fit"

  bool Given() const { return firstPage || !catalogEntries.empty(); }
};

// Throws a UsageError.
Viewer InterpretViewer(const ViewerWords& words);

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_VIEWER_H
