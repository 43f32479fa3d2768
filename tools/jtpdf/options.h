// options.h - the command line, understood.
#ifndef JTPDF_TOOL_OPTIONS_H
#define JTPDF_TOOL_OPTIONS_H

#include <jtpdf/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "console.h"
#include "formats/decoder.h"
#include "layout.h"
#include "pdf_document.h"
#include "usage_error.h"
#include "viewer.h"

namespace pictures::tool {

struct Options {
  std::vector<std::string> inputs;
  std::string fromFile;      // empty for none
  std::string output = "-";  // standard output
  LayoutOptions layout;
  Metadata metadata;
  TPdfImageRole role = kPdfImageRolePhoto;
  ReadLimits limits;
  uint64_t maxInput = uint64_t{4} << 30;  // bytes of what is no file
  Viewer viewer;
  bool firstFrameOnly = false;
  bool bookmarks = false;
  bool recordNames = false;
  unsigned jobs = 1;
  int compression = 6;
  bool optimize = false;
  bool skipBad = false;
  bool dryRun = false;
  bool help = false;
  bool version = false;
  Verbosity verbosity = Verbosity::kNormal;

  bool ToStandardOutput() const { return output == "-"; }
};

// Throws UsageError.
Options ParseOptions(int count, const char* const* arguments);

extern const std::string_view kHelp;

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_OPTIONS_H
