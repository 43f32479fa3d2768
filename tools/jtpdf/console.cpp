#include "console.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>

#include "text.h"

namespace pictures::tool {
namespace {

int Columns(int terminal) {
  winsize size = {};
  return ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

// Moves what standard error is to another descriptor, and puts the null device in its place.
// Sanitizers, too, write there: their reports are not to be lost.
int TakeStandardError() {
#ifdef JTPDF_SANITIZED
  return STDERR_FILENO;
#else
  const int taken = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int null = taken < 0 ? -1 : open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (null < 0) return taken < 0 ? STDERR_FILENO : taken;
  dup2(null, STDERR_FILENO);
  close(null);
  return taken;
#endif
}

std::string Duration(double seconds) {
  const auto whole = static_cast<long long>(std::ceil(seconds));
  char text[40];
  if (whole < 60) {
    std::snprintf(text, sizeof text, "%lld s", whole);
  } else {
    std::snprintf(text, sizeof text, "%lld:%02lld min", whole / 60, whole % 60);
  }
  return text;
}

}  // namespace

std::string ProgressLine(uint64_t pages, uint64_t allPages, uint64_t bytes, double seconds,
                         int columns) {
  const double share =
      allPages == 0 ? 1 : static_cast<double>(pages) / static_cast<double>(allPages);
  const double left = share > 0 ? seconds * (1 - share) / share : 0;
  char facts[128];
  std::snprintf(facts, sizeof facts, " %llu/%llu pages, %.1f MB/s, %s left",
                static_cast<unsigned long long>(pages), static_cast<unsigned long long>(allPages),
                static_cast<double>(bytes) / 1e6 / std::max(seconds, 1e-3), Duration(left).c_str());
  const std::string text = facts;
  // The last column stays free: a full line would wrap on some terminals.
  const int room = std::min(40, columns - 1 - static_cast<int>(text.size()) - 2);
  if (room < 5) return text.substr(1, static_cast<size_t>(std::max(columns - 1, 0)));
  const auto done = static_cast<size_t>(share * room);
  std::string bar = "[";
  bar.append(done, '#').append(static_cast<size_t>(room) - done, '-');
  return bar + "]" + text;
}

Console::Console(Verbosity verbosity)
    : verbosity_(verbosity),
      descriptor_(TakeStandardError()),
      bar_(verbosity != Verbosity::kQuiet && isatty(descriptor_) == 1) {}

Console::~Console() {
  if (descriptor_ == STDERR_FILENO) return;
  dup2(descriptor_, STDERR_FILENO);
  close(descriptor_);
}

void Console::Put(std::string_view text) const {
  while (!text.empty()) {
    const ssize_t written = write(descriptor_, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;  // nobody is left who could be told
    text.remove_prefix(static_cast<size_t>(written));
  }
}

void Console::Print(std::string_view about, std::string_view text) {
  EndProgress();
  std::string line = "jtpdf: ";
  if (!about.empty()) line += Printable(about) + ": ";
  line += Printable(text) + "\n";
  Put(line);
}

void Console::Error(std::string_view about, std::string_view text) {
  Print(about, text);
}

void Console::Say(std::string_view about, const Note& note) {
  if (verbosity_ == Verbosity::kQuiet || (!note.always && verbosity_ != Verbosity::kVerbose))
    return;
  Print(about, note.text);
}

void Console::Progress(uint64_t pages, uint64_t allPages, uint64_t bytes) {
  using namespace std::chrono_literals;
  if (!bar_) return;
  const Clock::time_point now = Clock::now();
  if (now - begin_ < 1s || (drawn_ && now - drawnAt_ < 100ms)) return;
  const double seconds = std::chrono::duration<double>(now - begin_).count();
  Put("\r\033[K" + ProgressLine(pages, allPages, bytes, seconds, Columns(descriptor_)));
  drawn_ = true;
  drawnAt_ = now;
}

void Console::EndProgress() {
  if (!drawn_) return;
  Put("\r\033[K");
  drawn_ = false;
}

}  // namespace pictures::tool
