// timed_run TOUCH LIMIT PROGRAM ARGUMENT... - runs a program once and prints what it cost:
//
//     wall 0.260117 user 0.070312 system 0.188004 peak 199237632 status 0
//
// Seconds, bytes, and the program's exit status (-1: stopped after LIMIT seconds of CPU time).
// TOUCH bytes of memory are touched and given back just before. A virtual machine that returns free
// memory to its host pays several times more for a page that it has to fetch back, and which run
// pays would be chance.

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

// In a child of its own, so that the memory does not count as that of the program, which starts as
// a copy of this process.
bool TouchMemory(std::size_t size) {
  const pid_t child = fork();
  if (child < 0) return false;
  if (child == 0) {
    void* const memory =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) _exit(1);
    constexpr std::size_t kPage = 4096;
    auto* const bytes = static_cast<volatile char*>(memory);
    for (std::size_t at = 0; at < size; at += kPage) bytes[at] = 1;
    _exit(0);
  }
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

double Seconds(timeval time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: %s TOUCH LIMIT PROGRAM ARGUMENT...\n", argv[0]);
    return 2;
  }
  const std::size_t touch = std::strtoull(argv[1], nullptr, 10);
  if (touch > 0 && !TouchMemory(touch)) {
    std::fprintf(stderr, "%s: no %zu bytes of memory to touch\n", argv[0], touch);
    return 1;
  }

  const auto start = std::chrono::steady_clock::now();
  const pid_t program = fork();
  if (program < 0) {
    std::perror(argv[0]);
    return 1;
  }
  if (program == 0) {
    const rlim_t limit = std::strtoul(argv[2], nullptr, 10);
    const rlimit seconds = {limit, limit};
    setrlimit(RLIMIT_CPU, &seconds);
    execv(argv[3], argv + 3);
    std::perror(argv[3]);
    _exit(127);
  }
  int status = 0;
  rusage usage;
  while (wait4(program, &status, 0, &usage) < 0) {
  }
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  std::printf("wall %.6f user %.6f system %.6f peak %ld status %d\n", wall.count(),
              Seconds(usage.ru_utime), Seconds(usage.ru_stime), usage.ru_maxrss * 1024L,
              WIFEXITED(status) ? WEXITSTATUS(status) : -1);
  return 0;
}
