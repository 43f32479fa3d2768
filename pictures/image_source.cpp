#include "image_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include "formats/decoder.h"
#include "image.h"

namespace pictures {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(number_); }
  int Number() const { return number_; }

 private:
  int number_;
};

[[noreturn]] void ThrowUnreadable() {
  const int code = errno;
  const char* advice = code == ENOENT   ? "; check the name"
                       : code == EACCES ? "; check its permissions"
                                        : "";
  throw ImageError("cannot be read: " + std::generic_category().message(code) + advice);
}

// The `size` bytes of a file.
Buffer ReadAll(int file, size_t size) {
  Buffer bytes(size);
  size_t filled = 0;
  while (filled < size) {
    const ssize_t count = read(file, bytes.Data() + filled, size - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) ThrowUnreadable();
    if (count == 0) throw InputChanged();
    filled += static_cast<size_t>(count);
  }
  return bytes;
}

FileIdentity IdentityOf(const struct stat& status) {
  return {status.st_dev, status.st_ino, static_cast<uint64_t>(status.st_size),
          int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec};
}

}  // namespace

ImageSource ImageSource::Open(const std::string& path, bool touch, const PipeRules& rules) {
  const int number = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (number < 0) ThrowUnreadable();
  const Descriptor file(number);
  struct stat status;
  if (fstat(number, &status) != 0) ThrowUnreadable();
  if (S_ISDIR(status.st_mode)) throw IsFolder();
  if (!S_ISREG(status.st_mode)) return Read(number, rules);
  if (status.st_size == 0) throw IsEmpty();
  const auto size = static_cast<size_t>(status.st_size);
  ImageSource source;
  source.reopens_ = true;
  source.path_ = path;
  source.identity_ = IdentityOf(status);
  // Mapping and unmapping make every thread's processor forget addresses: for thousands of small
  // files that takes longer than to copy them.
  constexpr size_t kSmall = size_t{64} << 10;
  if (size > kSmall) {
    if (std::optional<MappedFile> map = MappedFile::Map(number, size, touch)) {
      source.map_ = std::make_shared<const MappedFile>(std::move(*map));
      return source;
    }
    if (errno != ENODEV) ThrowUnreadable();
  }
  source.held_ = std::make_shared<const Buffer>(ReadAll(number, size));
  return source;
}

ImageSource ImageSource::Read(int descriptor, const PipeRules& rules) {
  constexpr size_t kFirst = size_t{256} << 10;
  Buffer bytes(kFirst);
  size_t size = 0;
  bool judged = false;
  for (;;) {
    if (size == bytes.Size()) bytes.Double();
    const ssize_t count = read(descriptor, bytes.Data() + size, bytes.Size() - size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) ThrowUnreadable();
    size += static_cast<size_t>(count);
    if (!judged && (count == 0 || size >= kRecognisedBytes)) {
      if (size == 0) throw IsEmpty();
      rules.judgeHead(Bytes(bytes.Data(), std::min(size, kRecognisedBytes)));
      judged = true;
    }
    if (count == 0) break;
    if (size > rules.most) {
      throw ImageError("holds more than " + std::to_string(rules.most) +
                       " bytes, the most that is read from a pipe; save it to a file and name "
                       "that, or allow more with " +
                       rules.option);
    }
  }
  bytes.Shrink(size);
  ImageSource source;
  source.held_ = std::make_shared<const Buffer>(std::move(bytes));
  source.identity_.size = size;
  return source;
}

void ImageSource::CheckUnchanged() const {
  if (!IsMapped()) return;
  struct stat status;
  if (stat(path_.c_str(), &status) == 0) {
    const FileIdentity now = IdentityOf(status);
    // A file that took the name's place leaves the one that is mapped as it was.
    const bool same = now.device == identity_.device && now.inode == identity_.inode;
    if (same && now != identity_) throw InputChanged();
    if (same && map_->Failed()) {
      errno = EIO;
      ThrowUnreadable();
    }
  }
  if (map_->Failed()) throw InputChanged();
}

}  // namespace pictures
