#include "formats/tiff_file.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

#include "formats/tiff_numbers.h"
#include "image.h"

namespace pictures {
namespace {

bool IsBig(Bytes file) {
  return TiffNumbers(file).At16(2) == 43u;
}

// The file's first bytes, with the page's directory as the first one: libtiff finds it at once,
// where TIFFSetSubDirectory walks through all that are in front of it.
std::array<uint8_t, 16> HeadOf(Bytes file, uint64_t page) {
  std::array<uint8_t, 16> head{};
  std::memcpy(head.data(), file.data(), std::min(file.size(), head.size()));
  if (page == 0) return head;
  const size_t size = IsBig(file) ? 8 : 4;
  uint8_t* to = head.data() + size;
  for (size_t i = 0; i < size; ++i, page >>= 8) {
    to[TiffNumbers(file).IsLittleEndian() ? i : size - 1 - i] = static_cast<uint8_t>(page);
  }
  return head;
}

int Keep(std::string* to, const char* format, va_list arguments) {
  if (to->empty()) {
    char text[256];
    std::vsnprintf(text, sizeof text, format, arguments);
    *to = text;
    while (!to->empty() && (to->back() == '.' || to->back() == '\n')) to->pop_back();
  }
  return 1;  // handled: libtiff prints nothing itself
}

}  // namespace

struct TiffCallbacks {
  using Memory = TiffFile::Memory;

  static tmsize_t Read(thandle_t handle, void* to, tmsize_t size) {
    auto* memory = static_cast<Memory*>(handle);
    const uint64_t end = memory->bytes.size();
    const uint64_t left = memory->at < end ? end - memory->at : 0;
    const auto count = static_cast<size_t>(std::min<uint64_t>(left, static_cast<uint64_t>(size)));
    if (count == 0) return 0;
    std::memcpy(to, memory->bytes.data() + memory->at, count);
    if (memory->at < memory->head.size()) {
      std::memcpy(to, memory->head.data() + memory->at,
                  std::min<size_t>(count, memory->head.size() - memory->at));
    }
    memory->at += count;
    return static_cast<tmsize_t>(count);
  }

  static tmsize_t RefuseWrite(thandle_t, void*, tmsize_t) { return 0; }

  static toff_t Seek(thandle_t handle, toff_t offset, int whence) {
    auto* memory = static_cast<Memory*>(handle);
    memory->at = offset + (whence == SEEK_CUR   ? memory->at
                           : whence == SEEK_END ? memory->bytes.size()
                                                : 0);
    return memory->at;
  }

  static int Close(thandle_t) { return 0; }
  static toff_t Size(thandle_t handle) { return static_cast<Memory*>(handle)->bytes.size(); }

  static int Map(thandle_t handle, void** base, toff_t* size) {
    const Bytes bytes = static_cast<Memory*>(handle)->bytes;
    *base = const_cast<uint8_t*>(bytes.data());  // libtiff reads through it only
    *size = bytes.size();
    return 1;
  }
  static void Unmap(thandle_t, void*, toff_t) {}

  static int KeepError(TIFF*, void* data, const char*, const char* format, va_list arguments) {
    return Keep(&static_cast<Memory*>(data)->error, format, arguments);
  }
  static int KeepWarning(TIFF*, void* data, const char*, const char* format, va_list arguments) {
    return Keep(&static_cast<Memory*>(data)->warning, format, arguments);
  }
};

TiffFile::TiffFile(Bytes file, uint64_t mostAtOnce, uint64_t page)
    : memory_(new Memory{file, HeadOf(file, page), 0, {}, {}}) {
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
      TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
  if (!options) throw std::bad_alloc();
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(mostAtOnce));
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), TiffCallbacks::KeepError, memory_.get());
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), TiffCallbacks::KeepWarning, memory_.get());
  using C = TiffCallbacks;
  tiff_.reset(TIFFClientOpenExt("TIFF", "r", memory_.get(), C::Read, C::RefuseWrite, C::Seek,
                                C::Close, C::Size, C::Map, C::Unmap, options.get()));
  if (!tiff_) ThrowDamaged();
}

bool TiffFile::Declares(uint16_t tag) const {
  const TiffNumbers numbers(memory_->bytes);
  const bool big = IsBig(memory_->bytes);
  const uint64_t directory = TIFFCurrentDirOffset(tiff_.get());
  const uint64_t count =
      big ? numbers.At64(directory).value_or(0) : numbers.At16(directory).value_or(0);
  const uint64_t first = directory + (big ? 8 : 2), size = big ? 20 : 12;
  for (uint64_t i = 0; i < count; ++i) {
    const auto found = numbers.At16(first + i * size);
    if (!found) return false;
    if (*found == tag) return true;
  }
  return false;
}

void TiffFile::ThrowDamaged() {
  throw Undecodable("libtiff: " + (memory_->error.empty() ? "damaged" : memory_->error));
}

}  // namespace pictures
