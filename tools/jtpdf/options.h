// options.h - the command line, understood.
#ifndef JTPDF_TOOL_OPTIONS_H
#define JTPDF_TOOL_OPTIONS_H

#include <jtpdf/types.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "console.h"
#include "layout.h"
#include "pdf_document.h"
#include "readers/reader.h"

namespace tool {

// What is wrong with the command line; the program ends with status 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Options {
  std::vector<std::string> inputs;
  std::string fromFile;      // empty for none
  std::string output = "-";  // standard output
  LayoutOptions layout;
  Metadata metadata;
  TPdfImageRole role = kPdfImageRolePhoto;
  ReadLimits limits;
  uint64_t maxInput = uint64_t{4} << 30;  // bytes of what is no file
  bool recordNames = false;
  unsigned jobs = 1;
  int compression = 6;
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

// The parts, each throwing a UsageError that names the value and says what would be right.
double ParseLength(std::string_view text);        // "2.5cm" in points
PageSize ParsePageSize(std::string_view text);    // "A4", "A4^T", "10cmx15cm", "10cm", "x15cm"
ImageSize ParseImageSize(std::string_view text);  // the same, "300dpi", "50%"
Border ParseBorder(std::string_view text);        // "1cm", "1cm:2cm"
std::wstring ParseDate(std::string_view text);    // ISO 8601 to ISO 32000-1, 7.9.4

}  // namespace tool

#endif  // JTPDF_TOOL_OPTIONS_H
