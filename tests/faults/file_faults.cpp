#include "file_faults.h"

#include <dlfcn.h>
#include <sys/types.h>
#include <sys/uio.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <vector>

namespace faults {

namespace {

// Of one thread at a time: the tests that watch a file have one.
struct Watch {
  bool on = false;
  std::string path;
  int descriptor = -1;
  FileFault fault{};
  int at = -1;  // -1: none
  bool failNextWrite = false;
  FileTraffic traffic;
};

Watch gWatch;

template <typename Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// Whether the fault is due in the call of this operation that has this number.
bool IsDue(Operation operation, int number) {
  if (gWatch.fault.operation != operation || gWatch.at != number) return false;
  ++gWatch.traffic.faults;
  return true;
}

int Open(const char* symbol, const char* path, int flags, mode_t mode) {
  auto* const next = Next<int(const char*, int, mode_t)>(symbol);
  if (!gWatch.on || gWatch.path != path) return next(path, flags, mode);
  if (IsDue(Operation::kOpen, gWatch.traffic.opens)) {
    gWatch.at = -1;  // a second attempt succeeds
    errno = gWatch.fault.error;
    return -1;
  }
  const int descriptor = next(path, flags, mode);
  if (descriptor >= 0) {
    ++gWatch.traffic.opens;
    gWatch.descriptor = descriptor;
  }
  return descriptor;
}

off64_t Seek(const char* symbol, int descriptor, off64_t offset, int whence) {
  auto* const next = Next<off64_t(int, off64_t, int)>(symbol);
  if (descriptor < 0 || descriptor != gWatch.descriptor) return next(descriptor, offset, whence);
  if (IsDue(Operation::kSeek, gWatch.traffic.seeks++)) {
    errno = gWatch.fault.error;
    return -1;
  }
  return next(descriptor, offset, whence);
}

ssize_t Count(ssize_t written) {
  gWatch.traffic.bytes += std::max<ssize_t>(written, 0);
  return written;
}

// Runs write(limit), which writes as many bytes as that at most.
template <typename Write>
ssize_t FaultyWrite(std::size_t size, const Write& write) {
  if (gWatch.failNextWrite) {
    gWatch.failNextWrite = false;
    errno = gWatch.fault.error;
    return -1;
  }
  if (!IsDue(Operation::kWrite, gWatch.traffic.writes++)) return Count(write(size));
  if (gWatch.fault.effect == Effect::kError) {
    errno = gWatch.fault.error;
    return -1;
  }
  gWatch.failNextWrite = gWatch.fault.effect == Effect::kShortThenError;
  return Count(write((size + 1) / 2));
}

}  // namespace

void WatchFile(const std::string& path) {
  gWatch = Watch();
  gWatch.path = path;
  gWatch.on = true;
}

void WatchFile(const std::string& path, const FileFault& fault, int at) {
  WatchFile(path);
  gWatch.fault = fault;
  gWatch.at = at;
}

FileTraffic UnwatchFile() {
  const FileTraffic traffic = gWatch.traffic;
  gWatch = Watch();
  return traffic;
}

}  // namespace faults

using faults::gWatch;

extern "C" {

// The mode is read even where it was not passed: what stands there then is not looked at.
int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const auto mode = static_cast<mode_t>(va_arg(rest, int));
  va_end(rest);
  return faults::Open("open", path, flags, mode);
}

int close(int descriptor) {
  auto* const next = faults::Next<int(int)>("close");
  if (descriptor < 0 || descriptor != gWatch.descriptor) return next(descriptor);
  gWatch.descriptor = -1;
  const int result = next(descriptor);
  if (gWatch.traffic.faults > 0 && gWatch.fault.closeError != 0) {
    errno = gWatch.fault.closeError;
    return -1;
  }
  if (!faults::IsDue(faults::Operation::kClose, gWatch.traffic.closes++)) return result;
  errno = gWatch.fault.error;
  return -1;
}

ssize_t write(int descriptor, const void* data, std::size_t size) {
  auto* const next = faults::Next<ssize_t(int, const void*, std::size_t)>("write");
  if (descriptor < 0 || descriptor != gWatch.descriptor) return next(descriptor, data, size);
  return faults::FaultyWrite(size,
                             [&](std::size_t limit) { return next(descriptor, data, limit); });
}

ssize_t writev(int descriptor, const iovec* parts, int count) {
  auto* const next = faults::Next<ssize_t(int, const iovec*, int)>("writev");
  if (descriptor < 0 || descriptor != gWatch.descriptor) return next(descriptor, parts, count);
  std::vector<iovec> some(parts, parts + count);
  std::size_t size = 0;
  for (const iovec& part : some) size += part.iov_len;
  return faults::FaultyWrite(size, [&](std::size_t limit) {
    for (iovec& part : some) {
      part.iov_len = std::min(part.iov_len, limit);
      limit -= part.iov_len;
    }
    return next(descriptor, some.data(), count);
  });
}

off_t lseek(int descriptor, off_t offset, int whence) noexcept {
  return faults::Seek("lseek", descriptor, offset, whence);
}

off64_t lseek64(int descriptor, off64_t offset, int whence) noexcept {
  return faults::Seek("lseek64", descriptor, offset, whence);
}

}  // extern "C"
