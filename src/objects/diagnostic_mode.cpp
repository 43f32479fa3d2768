// The process-wide switch for messages on the standard error stream.

#include "objects/diagnostic_mode.h"

#include <atomic>

namespace {

// Orders nothing: what a report prints is its own thread's.
std::atomic<bool> gDiagnosticMode = false;

}  // namespace

bool GetDiagnosticMode() {
  return gDiagnosticMode.load(std::memory_order_relaxed);
}

void SetDiagnosticMode(bool on) {
  gDiagnosticMode.store(on, std::memory_order_relaxed);
}
