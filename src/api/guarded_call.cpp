// The report of a failed call in diagnostic mode.

#include "api/guarded_call.h"

#include <string>

#include "objects/diagnostic_mode.h"
#include "objects/diagnostic_note.h"
#include "objects/platform_text.h"
#include "objects/value_format.h"

void HandleDiagnostics(const char* functionName, std::ios_base::failure failure, int code) {
  if (!GetDiagnosticMode()) return;
  std::string report = functionName;
  report += ": JTPDF error: ";
  if (code == -1) {
    report += failure.what();
  } else {
    const int savedErrno = errno;
    char text[256];
    JTPDFStrError(savedErrno, text, sizeof text);
    errno = savedErrno;
    report.append(IntToStr(code, 0)).append("; ").append(text);
  }
  PrintDiagnosticNote(std::move(report));
}

std::int32_t ReportMemoryError(const char* functionName) noexcept {
  errno = ENOMEM;
  try {
    HandleDiagnostics(functionName, std::ios_base::failure(""), ENOMEM);
  } catch (...) {
    // No memory for the report either, or a standard error stream that throws.
  }
  errno = ENOMEM;
  return ENOMEM;
}
