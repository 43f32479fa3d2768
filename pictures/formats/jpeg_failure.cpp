#include "formats/jpeg_failure.h"

namespace pictures {
namespace {

void FailAndJump(j_common_ptr decoder) {
  auto* failure = reinterpret_cast<JpegFailure*>(decoder->err);
  failure->manager.format_message(decoder, failure->text);
  std::longjmp(failure->back, 1);
}

void KeepWarning(j_common_ptr decoder, int level) {
  auto* failure = reinterpret_cast<JpegFailure*>(decoder->err);
  if (level < 0 && failure->manager.num_warnings++ == 0) {
    failure->manager.format_message(decoder, failure->text);
  }
}

void LimitScans(j_common_ptr decoder) {
  constexpr int kMostScans = 500;
  if (reinterpret_cast<j_decompress_ptr>(decoder)->input_scan_number > kMostScans) {
    FailWith(reinterpret_cast<JpegFailure*>(decoder->err), "too many scans");
  }
}

}  // namespace

jpeg_error_mgr* JumpOnErrors(JpegFailure* failure) {
  jpeg_std_error(&failure->manager);
  failure->manager.error_exit = FailAndJump;
  failure->manager.emit_message = KeepWarning;
  return &failure->manager;
}

void FailWith(JpegFailure* failure, const char* text) {
  std::snprintf(failure->text, sizeof failure->text, "%s", text);
  std::longjmp(failure->back, 1);
}

jpeg_progress_mgr LimitedScans() {
  jpeg_progress_mgr progress = {};
  progress.progress_monitor = LimitScans;
  return progress;
}

}  // namespace pictures
