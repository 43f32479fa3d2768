// usage_error.h - what is wrong with the command line.
#ifndef JTPDF_TOOL_USAGE_ERROR_H
#define JTPDF_TOOL_USAGE_ERROR_H

#include <stdexcept>
#include <string>
#include <string_view>

#include "text.h"

namespace pictures::tool {

// The program ends with status 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Says that a value is none of the wanted kind.
[[noreturn]] inline void Refuse(std::string_view text, const std::string& wanted) {
  throw UsageError("\"" + Printable(text) + "\" is no " + wanted);
}

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_USAGE_ERROR_H
