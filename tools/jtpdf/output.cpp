#include "output.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <random>
#include <system_error>
#include <utility>

#include "interruption.h"

namespace pictures::tool {
namespace {

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
  return path;
}

mode_t NewFileMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// A name for a hidden file beside `target` that nobody else has.
std::string HiddenNameBeside(const std::string& target, bool brief) {
  std::random_device random;
  const size_t name = target.rfind('/') + 1;  // 0 without a slash
  std::string hidden = target.substr(0, name) + "." + (brief ? "jtpdf" : target.substr(name)) + ".";
  for (int i = 0; i < 10; ++i) hidden += "abcdefghijklmnopqrstuvwxyz012345"[random() % 32];
  return hidden;
}

// Calls make(name) with hidden names until it succeeds or fails for another reason than the name.
// Gives the name; throws OutputError. A signal removes the file from then on.
template <class Make>
std::string MakeHidden(const std::string& target, const Make& make) {
  for (bool brief = false;;) {
    std::string name = HiddenNameBeside(target, brief);
    SetLitter(name);
    if (make(name)) return name;
    const int code = errno;
    ForgetLitter();
    if (code == ENAMETOOLONG && !brief) {
      brief = true;
    } else if (code != EEXIST) {
      ThrowProblem(code);
    }
  }
}

class ReplacedFile : public Output {
 public:
  // `target` exists as `status`, or does not exist yet.
  ReplacedFile(std::string target, const std::optional<struct stat>& status, uint64_t most)
      : Output(most),
        target_(std::move(target)),
        replaces_(status.has_value()),
        // Bits that lend a program its owner's rights are not for a document of somebody else.
        mode_(status ? status->st_mode & 0777 : NewFileMode()) {
    OpenUnnamed();
    if (descriptor_ >= 0) return;
    hidden_ = MakeHidden(target_, [this](const std::string& name) {
      descriptor_ = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
      return descriptor_ >= 0;
    });
  }

  ~ReplacedFile() override {
    if (!hidden_.empty()) unlink(hidden_.c_str());
    ForgetLitter();
    close(descriptor_);
  }

  void Commit() override {
    static_cast<void>(fchmod(descriptor_, mode_));
    CheckKept();
    // A rename may reach the disk before the bytes do. That would trade a whole old file for a
    // broken new one, so where there is an old one the bytes go first.
    if (replaces_ && fsync(descriptor_) != 0 && errno != EINVAL) ThrowProblem(errno);
    if (hidden_.empty()) {
      if (!replaces_ && Link(target_)) return;
      // A link never replaces a file; a rename does.
      hidden_ = MakeHidden(target_, [this](const std::string& name) { return Link(name); });
    }
    if (std::rename(hidden_.c_str(), target_.c_str()) != 0) ThrowProblem(errno);
    hidden_.clear();
  }

 private:
  // Nothing can leave a file without a name behind, and nobody else can reach it.
  void OpenUnnamed() {
#ifdef O_TMPFILE
    const std::string folder = target_.substr(0, target_.rfind('/') + 1);
    descriptor_ =
        open(folder.empty() ? "." : folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
    if (descriptor_ < 0) return;
    link_ = "/proc/self/fd/" + std::to_string(descriptor_);
    if (access(link_.c_str(), F_OK) == 0) return;
    close(descriptor_);  // without /proc it could never be named
    descriptor_ = -1;
#endif
  }

  bool Link(const std::string& name) const {
    return linkat(AT_FDCWD, link_.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
  }

  std::string target_;
  bool replaces_;
  mode_t mode_;
  std::string link_;    // names the unnamed file
  std::string hidden_;  // the file's name, while it has one that it must not keep
};

// What is there already and is no regular file: a device, a FIFO, standard output.
class OpenFile : public Output {
 public:
  OpenFile(int descriptor, uint64_t most) : Output(most) { descriptor_ = descriptor; }
  ~OpenFile() override {
    if (descriptor_ != STDOUT_FILENO) close(descriptor_);
  }
  void Commit() override { CheckKept(); }
};

}  // namespace

void Output::CheckRoom(uint64_t size) const {
  if (size > most_ || written_ > most_ - size) {
    throw OutputError("would hold more than " + std::to_string(most_) +
                      " bytes, the most in which PDF readers find their way; make several files");
  }
}

int Output::Write(const char* data, size_t size) {
  while (size > 0) {
    const ssize_t count = write(descriptor_, data, size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) {
      // Whoever opened the descriptor does not want to wait for it; here there is nothing else to
      // do.
      pollfd ready{descriptor_, POLLOUT, 0};
      poll(&ready, 1, -1);
      continue;
    }
    if (count < 0) return errno;
    data += count;
    size -= static_cast<size_t>(count);
    written_ += static_cast<uint64_t>(count);
  }
  return 0;
}

void Output::CheckKept() const {
  // File systems of other machines may say so at the close of any descriptor of the file.
  const int copy = dup(descriptor_);
  if (copy >= 0 && close(copy) != 0 && errno != EINTR) ThrowProblem(errno);
}

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

std::unique_ptr<Output> OpenFileOutput(const std::string& file, uint64_t most) {
  struct stat status;
  if (stat(file.c_str(), &status) != 0) {
    if (errno != ENOENT) ThrowProblem(errno);
    return std::make_unique<ReplacedFile>(BehindLinks(file), std::nullopt, most);
  }
  if (S_ISDIR(status.st_mode)) ThrowProblem(EISDIR);
  if (S_ISREG(status.st_mode)) {
    return std::make_unique<ReplacedFile>(BehindLinks(file), status, most);
  }
  const int descriptor = open(file.c_str(), O_WRONLY | O_CLOEXEC);
  if (descriptor < 0) ThrowProblem(errno);
  return std::make_unique<OpenFile>(descriptor, most);
}

std::unique_ptr<Output> OpenStandardOutput() {
  return std::make_unique<OpenFile>(STDOUT_FILENO, kMostBytesOfPdf);
}

}  // namespace pictures::tool
