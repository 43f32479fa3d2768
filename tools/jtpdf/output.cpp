#include "output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "bytes.h"
#include "text.h"

namespace tool {
namespace {

// The temporary file's path for the signal handlers, which can neither lock nor allocate: set
// before `gHasLitter`, read after it.
std::array<char, PATH_MAX> gLitter{};
std::atomic<bool> gHasLitter{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void CleanUpAndDie(int signal) {
  if (gHasLitter.exchange(false)) unlink(gLitter.data());
  std::signal(signal, SIG_DFL);
  raise(signal);  // the parent sees what ended the tool
}

std::wstring DescriptorPath(int number) {
  return L"/dev/fd/" + std::to_wstring(number);
}

// A path for the library, whose file names are Unicode. Names that are not UTF-8 are reached
// through their open descriptor.
std::wstring WidePath(const std::string& path, int descriptor) {
  const std::optional<std::wstring> wide = FromUtf8(path);
  return wide ? *wide : DescriptorPath(descriptor);
}

[[noreturn]] void ThrowProblem(int code) {
  throw OutputError(WriteProblem(code));
}

// The file that symbolic links lead to, which may not exist yet: it is what is replaced, and the
// links stay.
std::string BehindLinks(std::string path) {
  constexpr int kMostLinks = 40;  // as many as the system follows
  for (int i = 0; i < kMostLinks; ++i) {
    std::error_code error;
    const std::filesystem::path to = std::filesystem::read_symlink(path, error);
    if (error) return path;
    path = (std::filesystem::path(path).parent_path() / to).string();
  }
  ThrowProblem(ELOOP);
}

mode_t NewFileMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

class RenamedFile : public Output {
 public:
  // `target` exists as `status`, or does not exist yet.
  RenamedFile(std::string target, const std::optional<struct stat>& status)
      : target_(std::move(target)), replaces_(status.has_value()) {
    const size_t name = target_.rfind('/') + 1;  // 0 without a slash
    temporary_ = target_.substr(0, name) + "." + target_.substr(name) + ".XXXXXX";
    descriptor_ = mkostemp(temporary_.data(), O_CLOEXEC);
    if (descriptor_ < 0 && errno == ENAMETOOLONG) {
      temporary_ = target_.substr(0, name) + ".jtpdf.XXXXXX";
      descriptor_ = mkostemp(temporary_.data(), O_CLOEXEC);
    }
    if (descriptor_ < 0) ThrowProblem(errno);
    if (temporary_.size() < gLitter.size()) {
      std::memcpy(gLitter.data(), temporary_.c_str(), temporary_.size() + 1);
      gHasLitter = true;
    }
    // mkostemp gives the file to its owner alone; a document is for whom the target was.
    static_cast<void>(fchmod(descriptor_, status ? status->st_mode & 07777 : NewFileMode()));
    path_ = WidePath(temporary_, descriptor_);
  }

  ~RenamedFile() override {
    if (!committed_) Remove();
    close(descriptor_);
  }

  const std::wstring& Path() const override { return path_; }

  void Commit() override {
    // A rename may reach the disk before the bytes do. That would trade a whole old file for a
    // broken new one, so where there is an old one the bytes go first.
    if (replaces_ && fsync(descriptor_) != 0 && errno != EINVAL) ThrowProblem(errno);
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) ThrowProblem(errno);
    gHasLitter = false;
    committed_ = true;
  }

 private:
  void Remove() {
    gHasLitter = false;
    unlink(temporary_.c_str());
  }

  std::string target_;
  std::string temporary_;
  std::wstring path_;
  bool replaces_;
  bool committed_ = false;
  int descriptor_ = -1;
};

class DirectFile : public Output {
 public:
  explicit DirectFile(const std::string& path)
      : descriptor_(open(path.c_str(), O_WRONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) ThrowProblem(errno);
    path_ = WidePath(path, descriptor_);
  }
  ~DirectFile() override { close(descriptor_); }
  const std::wstring& Path() const override { return path_; }
  void Commit() override {}

 private:
  int descriptor_;
  std::wstring path_;
};

// The library opens outputs by name, and standard output has none that always works: a socket
// cannot be opened again, another user's pipe may not be, and a file would be truncated and begun
// anew. So the library writes into a pipe of our own, which a thread empties.
class StandardOutput : public Output {
 public:
  StandardOutput() {
    if (pipe2(pipe_.data(), O_CLOEXEC) != 0) ThrowProblem(errno);
#ifdef F_SETPIPE_SZ
    fcntl(pipe_[0], F_SETPIPE_SZ, 1 << 20);  // fewer switches between the two threads
#endif
    path_ = DescriptorPath(pipe_[1]);
    pump_ = std::thread([this] { Pump(); });
  }

  ~StandardOutput() override {
    Finish();
  }

  const std::wstring& Path() const override {
    return path_;
  }

  void Commit() override {
    Finish();
    if (problem_ != 0) ThrowProblem(problem_);
  }

  int Problem() override {
    Finish();
    return problem_;
  }

 private:
  // The library has closed its own end by now; with ours the pump sees the end.
  void Finish() {
    if (pump_.joinable()) {
      close(pipe_[1]);
      pump_.join();
    }
  }

  void Pump() {
    problem_ = MoveAll();
    close(pipe_[0]);  // after a failure the library's writes fail too
  }

  int MoveAll() {
    Buffer buffer(size_t{128} << 10);
    for (;;) {
#ifdef __linux__
      if (splice_) {
        const ssize_t moved =
            splice(pipe_[0], nullptr, STDOUT_FILENO, nullptr, size_t{1} << 20, SPLICE_F_MOVE);
        if (moved == 0) return 0;
        if (moved > 0 || errno == EINTR) continue;
        if (errno != EINVAL) return errno;
        splice_ = false;  // not between these two: copy
      }
#endif
      ssize_t size = read(pipe_[0], buffer.Data(), buffer.Size());
      if (size == 0) return 0;
      if (size < 0 && errno != EINTR) return errno;
      for (const uint8_t* at = buffer.Data(); size > 0;) {
        const ssize_t written = write(STDOUT_FILENO, at, static_cast<size_t>(size));
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return errno;
        at += written;
        size -= written;
      }
    }
  }

  std::array<int, 2> pipe_{};
  std::wstring path_;
  std::thread pump_;
  std::atomic<int> problem_ = 0;
  bool splice_ = true;
};

}  // namespace

std::string WriteProblem(int code) {
  const char* advice = "";
  switch (code) {
    case ENOSPC:
    case EDQUOT:
      advice = "; make room or choose another place with -o";
      break;
    case EPIPE:
      advice = "; the program that reads it ended early";
      break;
    case ENOENT:
    case ENOTDIR:
      advice = "; make its folder first";
      break;
    case EACCES:
    case EPERM:
    case EROFS:
      advice = "; choose another place with -o";
      break;
    case EFBIG:
      advice = "; raise the limit (ulimit -f) or choose another file system with -o";
      break;
    case EISDIR:
      advice = "; name a file in it";
      break;
    default:
      break;
  }
  // The library gives -1 where the system gave no reason.
  return "cannot be written: " +
         (code > 0 ? std::generic_category().message(code) : std::string("the write failed")) +
         advice;
}

std::unique_ptr<Output> OpenFileOutput(const std::string& file) {
  struct stat status;
  if (stat(file.c_str(), &status) != 0) {
    if (errno != ENOENT) ThrowProblem(errno);
    return std::make_unique<RenamedFile>(BehindLinks(file), std::nullopt);
  }
  if (S_ISDIR(status.st_mode)) ThrowProblem(EISDIR);
  if (!S_ISREG(status.st_mode)) return std::make_unique<DirectFile>(file);
  return std::make_unique<RenamedFile>(BehindLinks(file), status);
}

std::unique_ptr<Output> OpenStandardOutput() {
  return std::make_unique<StandardOutput>();
}

void InstallSignalHandlers() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before;
    // A signal that the parent wants ignored (nohup) stays ignored.
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) continue;
    std::signal(signal, CleanUpAndDie);
  }
}

}  // namespace tool
