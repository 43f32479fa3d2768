#include "mapped_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <mutex>
#include <utility>

namespace pictures {
namespace {

// The maps that there are, for the signal handler, which can neither lock nor allocate.
struct Watch {
  std::atomic<bool> taken = false;
  std::atomic<uintptr_t> begin = 0;  // 0: the handler passes it over
  std::atomic<uintptr_t> end = 0;
  std::atomic<bool> failed = false;
};
static_assert(std::atomic<uintptr_t>::is_always_lock_free);

std::array<Watch, 1024> gWatches;

// Held while maps end or are forgotten: the addresses of one that ended may be anything's.
std::mutex gEnding;

// Puts zeros in place of the page and all that follow it in its map, then lets the read go on.
extern "C" void PutZeros(int signal, siginfo_t* info, void*) {
  const int before = errno;
  const auto place = reinterpret_cast<uintptr_t>(info->si_addr);
  for (Watch& watch : gWatches) {
    const uintptr_t begin = watch.begin, end = watch.end;
    if (begin == 0 || place < begin || place >= end) continue;
    const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    const uintptr_t from = place - place % page;
    watch.failed = true;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): an address that mmap gave
    if (mmap(reinterpret_cast<void*>(from), end - from, PROT_READ,
             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED, -1, 0) != MAP_FAILED) {
      errno = before;
      return;
    }
  }
  std::signal(signal, SIG_DFL);  // none of ours: it is raised again where it came from
}

void InstallHandler() {
  static const bool installed = [] {
    struct sigaction action = {};
    action.sa_sigaction = PutZeros;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    return sigaction(SIGBUS, &action, nullptr) == 0;
  }();
  static_cast<void>(installed);
}

std::optional<size_t> TakeWatch() {
  for (size_t i = 0; i < gWatches.size(); ++i) {
    if (!gWatches[i].taken && !gWatches[i].taken.exchange(true)) return i;
  }
  return std::nullopt;
}

}  // namespace

MappedFile::MappedFile(MappedFile&& other) noexcept
    : view_(std::exchange(other.view_, {})), watch_(other.watch_) {}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
  std::swap(view_, other.view_);
  std::swap(watch_, other.watch_);
  return *this;
}

MappedFile::~MappedFile() {
  if (view_.empty()) return;
  const std::lock_guard<std::mutex> lock(gEnding);
  gWatches[watch_].begin = 0;
  munmap(const_cast<uint8_t*>(view_.data()), view_.size());
  gWatches[watch_].taken = false;
}

std::optional<MappedFile> MappedFile::Map(int file, size_t size, bool touch) {
  InstallHandler();
  const std::optional<size_t> number = TakeWatch();
  if (!number) {
    errno = ENODEV;
    return std::nullopt;
  }
  Watch& watch = gWatches[*number];
  const int fetch = touch && size <= kMostTouched ? MAP_POPULATE : 0;
  void* at = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | fetch, file, 0);
  if (at == MAP_FAILED) {
    watch.taken = false;
    return std::nullopt;
  }
  watch.failed = false;
  watch.end = reinterpret_cast<uintptr_t>(at) + size;
  watch.begin = reinterpret_cast<uintptr_t>(at);
  MappedFile map;
  map.view_ = {static_cast<const uint8_t*>(at), size};
  map.watch_ = *number;
  return map;
}

void MappedFile::ForgetLarge() {
  const int before = errno;
  const std::lock_guard<std::mutex> lock(gEnding);
  for (const Watch& watch : gWatches) {
    const uintptr_t begin = watch.begin, end = watch.end;
    if (begin == 0 || end - begin <= kMostTouched) continue;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): an address that mmap gave
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
  }
  errno = before;
}

bool MappedFile::Failed() const {
  return !view_.empty() && gWatches[watch_].failed;
}

}  // namespace pictures
