#include "viewer.h"

#include <array>
#include <string_view>

#include "measures.h"
#include "text.h"
#include "words.h"

namespace pictures::tool {
namespace {

using Names = std::pair<std::string_view, const char*>;

constexpr std::array<Names, 3> kPanes{
    {{"none", "/UseNone"}, {"outlines", "/UseOutlines"}, {"thumbs", "/UseThumbs"}}};

constexpr std::array<Names, 6> kPageLayouts{{{"single", "/SinglePage"},
                                             {"onecolumn", "/OneColumn"},
                                             {"twocolumnleft", "/TwoColumnLeft"},
                                             {"twocolumnright", "/TwoColumnRight"},
                                             {"twopageleft", "/TwoPageLeft"},
                                             {"twopageright", "/TwoPageRight"}}};

constexpr std::array<Names, 3> kViews{
    {{"fit", "/Fit"}, {"fith", "/FitH null"}, {"fitbh", "/FitBH null"}}};

// A view for "fit" and the like, for a factor ("1.5") or a percentage ("150%").
std::string ParseMagnification(const std::string& text) {
  const std::optional<Measure> zoom = ParseZoom(text);
  if (!zoom) return Choose(kViews, text, "--viewer-magnification");
  const double factor = zoom->percent ? zoom->value / 100 : zoom->value;
  constexpr double kLeast = 0.01, kMost = 100;
  if (!(factor >= kLeast && factor <= kMost)) {
    throw UsageError("--viewer-magnification: \"" + text + "\" is not from 1% to 10000%");
  }
  return "/XYZ null null " + Decimal(factor);
}

}  // namespace

Viewer InterpretViewer(const ViewerWords& words) {
  Viewer viewer;
  const auto set = [&](const char* key, const char* value) {
    viewer.catalogEntries.emplace_back(key, value);
  };
  // A screen that is full shows no panes until it is left.
  if (words.fullScreen) set("/PageMode", "/FullScreen");
  if (words.panes) {
    set(words.fullScreen ? "/ViewerPreferences/NonFullScreenPageMode" : "/PageMode",
        Choose(kPanes, *words.panes, "--viewer-panes"));
  }
  if (words.pageLayout) {
    set("/PageLayout", Choose(kPageLayouts, *words.pageLayout, "--viewer-page-layout"));
  }
  if (words.fitWindow) set("/ViewerPreferences/FitWindow", "true");
  if (words.centerWindow) set("/ViewerPreferences/CenterWindow", "true");
  if (words.initialPage || words.magnification) {
    const std::string page = words.initialPage.value_or("1");
    viewer.firstPage = ParseNumber(page, 1u, 1u << 30, "--viewer-initial-page") - 1;
    // Without a magnification the reader keeps its own.
    viewer.view =
        words.magnification ? ParseMagnification(*words.magnification) : "/XYZ null null null";
  }
  return viewer;
}

}  // namespace pictures::tool
