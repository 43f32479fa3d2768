// Services of the platform: what is the same everywhere, then POSIX, then Windows.

#include "objects/platform_text.h"

#include <fcntl.h>
#include <string.h>

#if defined(_WIN32)
#include <io.h>
#include <sys/stat.h>
#else
#include <locale.h>
#include <sys/uio.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cwchar>
#include <string>

#if defined(__GLIBC__)
// The form of strerror_r that POSIX describes. C++ compilers define _GNU_SOURCE, under which
// glibc's <string.h> declares another function of that name.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the C library's name
extern "C" int __xpg_strerror_r(int errnum, char* buffer, size_t size) noexcept;
#endif

namespace {

bool IsSurrogate(char32_t c) {
  return c >= 0xD800 && c <= 0xDFFF;
}

#if defined(_WIN32)

bool IsHighSurrogate(char32_t c) {
  return c >= 0xD800 && c <= 0xDBFF;
}

bool IsLowSurrogate(char32_t c) {
  return c >= 0xDC00 && c <= 0xDFFF;
}

// Names of files are wide text there.
std::optional<const wchar_t*> FileName(const wchar_t* path, const PlatformString&) {
  return path;
}

// Moves a descriptor out of the standard streams' range.
int AboveStandardStreams(int descriptor) {
  if (descriptor < 0 || descriptor > 2) return descriptor;
  const int moved = AboveStandardStreams(_dup(descriptor));
  const int error = errno;
  _close(descriptor);
  errno = error;
  return moved;
}

#else

constexpr char32_t kLastCodePoint = 0x10FFFF;

// Without it a file ends at 2 GiB where a long has 32 bits.
#ifdef O_LARGEFILE
constexpr int kLargeFile = O_LARGEFILE;
#else
constexpr int kLargeFile = 0;
#endif

// Names of files are UTF-8.
std::optional<std::string> FileName(const wchar_t*, PlatformString text) {
  std::string bytes;
  for (const wchar_t unit : text) {
    const auto c = static_cast<char32_t>(unit);
    const int more = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;  // bytes behind the first
    constexpr unsigned char kLead[] = {0x00, 0xC0, 0xE0, 0xF0};
    bytes.push_back(static_cast<char>(kLead[more] | (c >> (6 * more))));
    for (int i = more - 1; i >= 0; --i) {
      bytes.push_back(static_cast<char>(0x80 | ((c >> (6 * i)) & 0x3F)));
    }
  }
  return bytes;
}

// Moves a descriptor out of the standard streams' range.
int AboveStandardStreams(int descriptor) {
  if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
  const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int error = errno;
  close(descriptor);
  errno = error;
  return moved;
}

// Drops the first count bytes of parts, and what is left of them at the front when it is empty.
void DropWritten(iovec*& first, const iovec* end, std::size_t count) {
  while (first != end && count >= first->iov_len) count -= (first++)->iov_len;
  if (first == end) return;
  first->iov_base = static_cast<char*>(first->iov_base) + count;
  first->iov_len -= count;
}

#endif

// The file system's form of path; none, with EILSEQ, if it is not valid text: nothing else would
// tell the caller why the file was not opened.
auto FileSystemPath(const wchar_t* path) {
  const std::optional<PlatformString> text = NSString_from_wchar_t(path);
  if (!text) errno = EILSEQ;
  return text ? FileName(path, *text) : std::nullopt;
}

template <typename Stream>
void OpenOnPlatformPath(Stream& stream, const wchar_t* path, unsigned int mode) {
  if (const auto name = FileSystemPath(path)) {
    stream.open(*name, static_cast<std::ios_base::openmode>(mode));
  } else {
    stream.setstate(std::ios_base::failbit);
  }
}

}  // namespace

std::size_t WriteUTF16BE(PlatformStringView text, unsigned char* out, std::size_t room) {
  std::size_t used = 0;
  const auto put = [&](char32_t unit) {
    out[used++] = static_cast<unsigned char>(unit >> 8);
    out[used++] = static_cast<unsigned char>(unit & 0xFF);
  };
  for (const auto unit : text) {
    const auto c = static_cast<char32_t>(unit);
    const bool pair = c > 0xFFFF;
    if (room - used < (pair ? 4u : 2u)) break;
    if (pair) {
      put(0xD800 + ((c - 0x10000) >> 10));
      put(0xDC00 + ((c - 0x10000) & 0x3FF));
    } else {
      put(c);
    }
  }
  return used;
}

void OpenWithUnicodePath(std::ofstream& stream, const wchar_t* path, unsigned int mode) {
  OpenOnPlatformPath(stream, path, mode);
}

void OpenWithUnicodePath(std::ifstream& stream, const wchar_t* path, unsigned int mode) {
  OpenOnPlatformPath(stream, path, mode);
}

bool PlatformFile::Close() {
  if (!IsOpen()) return true;
  const int closing = descriptor;
  descriptor = -1;
  return close(closing) == 0;
}

#if defined(_WIN32)

std::optional<PlatformString> NSString_from_wchar_t(const wchar_t* text) {
  static_assert(sizeof(wchar_t) == sizeof(char16_t));
  PlatformString points;
  points.reserve(std::wcslen(text));
  for (; *text != L'\0'; ++text) {
    char32_t c = *text;
    if (IsHighSurrogate(c) && IsLowSurrogate(text[1])) {
      c = 0x10000 + ((c - 0xD800) << 10) + (*++text - 0xDC00);
    } else if (IsSurrogate(c)) {
      return std::nullopt;
    }
    points += c;
  }
  return points;
}

std::size_t CodePointCount(std::wstring_view text) {
  std::size_t count = text.size();
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (IsHighSurrogate(text[i - 1]) && IsLowSurrogate(text[i])) --count;
  }
  return count;
}

bool PlatformFile::Open(const wchar_t* path) {
  const std::optional<const wchar_t*> name = FileSystemPath(path);
  if (!name) return false;
  constexpr int kFlags = _O_WRONLY | _O_CREAT | _O_TRUNC | _O_BINARY | _O_NOINHERIT;
  descriptor = AboveStandardStreams(_wopen(*name, kFlags, _S_IREAD | _S_IWRITE));
  return IsOpen();
}

bool PlatformFile::Write(std::initializer_list<std::string_view> parts) {
  constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;  // the count is an int
  for (std::string_view part : parts) {
    while (!part.empty()) {
      const auto size = static_cast<unsigned>(std::min(part.size(), kMostAtOnce));
      const int written = _write(descriptor, part.data(), size);
      if (written == 0) errno = ENOSPC;
      if (written <= 0) return false;
      part.remove_prefix(static_cast<std::size_t>(written));
    }
  }
  return true;
}

int JTPDFStrError(int errnum, char* buffer, unsigned long size) {
  // The C library's texts know no locale, and its buffer belongs to the thread.
  const std::string_view text = strerror(errnum);
  const std::size_t length = text.copy(buffer, size - 1);
  buffer[length] = '\0';
  return text == "Unknown error" ? EINVAL : length < text.size() ? ERANGE : 0;
}

#else

std::optional<PlatformString> NSString_from_wchar_t(const wchar_t* text) {
  static_assert(sizeof(wchar_t) == sizeof(char32_t));
  const PlatformString units(text);
  for (const wchar_t unit : units) {
    const auto c = static_cast<char32_t>(unit);
    if (IsSurrogate(c) || c > kLastCodePoint) return std::nullopt;
  }
  return units;
}

std::size_t CodePointCount(std::wstring_view text) {
  return text.size();
}

bool PlatformFile::Open(const wchar_t* path) {
  const std::optional<std::string> name = FileSystemPath(path);
  if (!name) return false;
  constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | kLargeFile;
  descriptor = AboveStandardStreams(open(name->c_str(), kFlags, 0666));
  return IsOpen();
}

bool PlatformFile::Write(std::initializer_list<std::string_view> parts) {
  constexpr std::size_t kMostParts = 4;
  assert(parts.size() <= kMostParts);
  iovec vectors[kMostParts];
  iovec* first = vectors;
  iovec* const end = std::transform(parts.begin(), parts.end(), first, [](std::string_view part) {
    return iovec{const_cast<char*>(part.data()), part.size()};
  });
  DropWritten(first, end, 0);
  while (first != end) {
    const ssize_t written = writev(descriptor, first, static_cast<int>(end - first));
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) DropWritten(first, end, static_cast<std::size_t>(written));
  }
  return true;
}

int JTPDFStrError(int errnum, char* buffer, unsigned long size) {
  // Error texts are translated; ours are the same in every locale. "C" needs no memory.
  const locale_t cLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
  const locale_t callersLocale = uselocale(cLocale);
#if defined(__GLIBC__)
  const int result = __xpg_strerror_r(errnum, buffer, size);
#else
  const int result = strerror_r(errnum, buffer, size);
#endif
  uselocale(callersLocale);
  if (cLocale != static_cast<locale_t>(nullptr)) freelocale(cLocale);
  if (result != 0) buffer[size - 1] = '\0';
  return result;
}

#endif
