#include "support/diagnostics.h"

#include <cstring>
#include <ios>
#include <utility>

#include "jtpdf/diagnostics.h"

Diagnostics::Diagnostics(bool mode) : saved(std::cerr.rdbuf(&buffer)) {
  JTPDFSetDiagnosticMode(mode);
}

Diagnostics::~Diagnostics() {
  JTPDFSetDiagnosticMode(false);
  std::cerr.rdbuf(saved);
}

std::string Diagnostics::Take() {
  return std::exchange(buffer.flushed, std::string());
}

std::string MessageOfFailure(const std::ios_base::failure& failure) {
  if (failure.code() != std::io_errc::stream) return "(another error code)";
  const std::string what = failure.what();
  const std::string suffix = ": " + failure.code().message();
  return what.ends_with(suffix) ? what.substr(0, what.size() - suffix.size()) : what;
}

std::string RefusalLine(const std::string& function, const std::string& message) {
  const std::ios_base::failure failure(message, std::io_errc::stream);
  return function + ": JTPDF error: " + failure.what() + "\n";
}

std::string ErrorLine(const std::string& function, int code) {
  return function + ": JTPDF error: " + std::to_string(code) + "; " + std::strerror(code) + "\n";
}
