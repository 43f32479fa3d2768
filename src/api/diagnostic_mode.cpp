// The process-wide switch for messages on the standard error stream.

#include "jtpdf/diagnostics.h"

namespace {

bool gDiagnosticMode = false;

}  // namespace

extern "C" bool JTPDFGetDiagnosticMode() {
  return gDiagnosticMode;
}

extern "C" void JTPDFSetDiagnosticMode(bool on) {
  gDiagnosticMode = on;
}
