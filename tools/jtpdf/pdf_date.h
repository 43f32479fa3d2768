// pdf_date.h - dates as people write them, to dates as PDF does.
#ifndef JTPDF_TOOL_PDF_DATE_H
#define JTPDF_TOOL_PDF_DATE_H

#include <string>
#include <string_view>

namespace pictures::tool {

// ISO 8601 to ISO 32000-1, 7.9.4. Throws a UsageError.
std::wstring ParseDate(std::string_view text);

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_PDF_DATE_H
