// Exports: the process-wide switch for messages on the standard error stream.

#include "objects/diagnostic_mode.h"

#include "jtpdf/diagnostics.h"

extern "C" bool JTPDFGetDiagnosticMode() {
  return GetDiagnosticMode();
}

extern "C" void JTPDFSetDiagnosticMode(bool on) {
  SetDiagnosticMode(on);
}
