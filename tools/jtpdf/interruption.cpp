#include "interruption.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <climits>
#include <csignal>
#include <cstring>

namespace pictures::tool {
namespace {

// The path for the signal handler, which can neither lock nor allocate: set before `gHasLitter`,
// read after it.
std::array<char, PATH_MAX> gLitter{};
std::atomic<bool> gHasLitter{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void CleanUpAndDie(int signal) {
  if (gHasLitter.exchange(false)) unlink(gLitter.data());
  std::signal(signal, SIG_DFL);
  raise(signal);  // the parent sees what ended the tool
}

}  // namespace

void SetLitter(const std::string& path) {
  gHasLitter = false;
  if (path.size() >= gLitter.size()) return;  // no file can be called so
  std::memcpy(gLitter.data(), path.c_str(), path.size() + 1);
  gHasLitter = true;
}

void ForgetLitter() {
  gHasLitter = false;
}

void InstallSignalHandlers() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGABRT, SIGALRM, SIGVTALRM, SIGPROF,
                           SIGXCPU, SIGUSR1, SIGUSR2}) {
    struct sigaction before;
    // A signal that the parent wants ignored (nohup) stays ignored.
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) continue;
    std::signal(signal, CleanUpAndDie);
  }
}

}  // namespace pictures::tool
