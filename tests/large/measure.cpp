// measure LABEL COMMAND [ARGUMENT...]: runs the command and prints how long it took, what it used
// of the processors and how much memory it had at its peak. Exits as the command did.

#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: measure LABEL COMMAND [ARGUMENT...]\n");
    return 2;
  }
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    execvp(argv[2], argv + 2);
    std::perror(argv[2]);
    _exit(127);
  }
  int status = 0;
  rusage usage = {};
  if (child < 0 || wait4(child, &status, 0, &usage) != child) {
    std::perror("measure");
    return 1;
  }
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  std::printf("%-24s %8.1f s %8.1f s of processor %8.1f MiB at its peak\n", argv[1],
              elapsed.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime),
              static_cast<double>(usage.ru_maxrss) / 1024);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
