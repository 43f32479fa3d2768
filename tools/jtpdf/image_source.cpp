#include "image_source.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "image.h"

namespace tool {
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

// The `size` bytes of a file, or fewer where it has become shorter.
Buffer ReadAll(int file, size_t size) {
  Buffer bytes(size);
  size_t filled = 0;
  while (filled < size) {
    const ssize_t count = read(file, bytes.Data() + filled, size - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) ThrowUnreadable();
    if (count == 0) break;
    filled += static_cast<size_t>(count);
  }
  bytes.Shrink(filled);
  return bytes;
}

}  // namespace

ImageSource::ImageSource(ImageSource&& other) noexcept
    : view_(std::exchange(other.view_, {})),
      mapped_(std::exchange(other.mapped_, false)),
      reopens_(other.reopens_),
      held_(std::move(other.held_)),
      identity_(other.identity_) {}

ImageSource& ImageSource::operator=(ImageSource&& other) noexcept {
  std::swap(view_, other.view_);
  std::swap(mapped_, other.mapped_);
  std::swap(reopens_, other.reopens_);
  std::swap(held_, other.held_);
  std::swap(identity_, other.identity_);
  return *this;
}

ImageSource::~ImageSource() {
  if (mapped_) munmap(const_cast<uint8_t*>(view_.data()), view_.size());
}

ImageSource ImageSource::Open(const std::string& path, bool touch) {
  const int number = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (number < 0) ThrowUnreadable();
  const Descriptor file(number);
  struct stat status;
  if (fstat(number, &status) != 0) ThrowUnreadable();
  if (S_ISDIR(status.st_mode)) throw IsFolder();
  if (!S_ISREG(status.st_mode)) return Read(number);
  if (status.st_size == 0) throw ImageError("is empty; it holds no picture, copy or save it again");
  const auto size = static_cast<size_t>(status.st_size);
  ImageSource source;
  source.reopens_ = true;
  source.identity_ = {status.st_dev, status.st_ino, size,
                      int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec};
  // Mapping and unmapping make every thread's processor forget addresses: for thousands of small
  // files that takes longer than to copy them.
  constexpr size_t kSmall = size_t{64} << 10;
  if (size <= kSmall) {
    source.held_ = std::make_shared<const Buffer>(ReadAll(number, size));
    source.view_ = source.held_->View();
    return source;
  }
  void* at = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | (touch ? MAP_POPULATE : 0), number, 0);
  if (at == MAP_FAILED) {
    if (errno == ENODEV) return Read(number);  // file systems without maps
    ThrowUnreadable();
  }
  source.view_ = {static_cast<const uint8_t*>(at), size};
  source.mapped_ = true;
  return source;
}

ImageSource ImageSource::Read(int descriptor) {
  constexpr size_t kFirst = size_t{256} << 10;
  constexpr size_t kMost = size_t{4} << 30;  // one image of a PDF holds no more
  Buffer bytes(kFirst);
  size_t size = 0;
  for (;;) {
    if (size == bytes.Size()) {
      if (size >= kMost) throw ImageError("holds more than 4 GiB, too much for one picture");
      Buffer larger(size * 2);
      std::memcpy(larger.Data(), bytes.Data(), size);
      bytes = std::move(larger);
    }
    const ssize_t count = read(descriptor, bytes.Data() + size, bytes.Size() - size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) ThrowUnreadable();
    if (count == 0) break;
    size += static_cast<size_t>(count);
  }
  if (size == 0) throw ImageError("is empty; it holds no picture");
  bytes.Shrink(size);
  ImageSource source;
  source.held_ = std::make_shared<const Buffer>(std::move(bytes));
  source.view_ = source.held_->View();
  source.identity_.size = size;
  return source;
}

ImageSource ImageSource::Again() const {
  ImageSource source;
  source.held_ = held_;
  source.view_ = view_;
  source.identity_ = identity_;
  return source;
}

}  // namespace tool
