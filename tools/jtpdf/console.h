// console.h - what the tool says on standard error: "jtpdf: FILE: what is wrong, and what to do".
#ifndef JTPDF_TOOL_CONSOLE_H
#define JTPDF_TOOL_CONSOLE_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "image.h"

namespace pictures::tool {

enum class Verbosity { kQuiet, kNormal, kVerbose };

// Used by one thread. While it lives standard error is its own: what libraries write there goes
// nowhere (libjxl and libdav1d tell their developers where in their sources a file was damaged).
class Console {
 public:
  explicit Console(Verbosity verbosity);
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;
  ~Console();

  // Errors are printed at every verbosity, notes as they say themselves.
  void Error(std::string_view about, std::string_view text);
  void Say(std::string_view about, const Note& note);

  // Redraws the progress bar, if standard error is a terminal and the work has taken a second.
  void Progress(uint64_t pages, uint64_t allPages, uint64_t bytes);
  // Removes the bar.
  void EndProgress();

 private:
  using Clock = std::chrono::steady_clock;
  void Print(std::string_view about, std::string_view text);
  void Put(std::string_view text) const;

  Verbosity verbosity_;
  int descriptor_;
  bool bar_;
  bool drawn_ = false;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point drawnAt_ = begin_;
};

// The bar's line: pages, MB/s, time left.
std::string ProgressLine(uint64_t pages, uint64_t allPages, uint64_t bytes, double seconds,
                         int columns);

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_CONSOLE_H
