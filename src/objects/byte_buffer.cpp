// Growth of bytes in one piece.

#include "objects/byte_buffer.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <new>

void ByteBuffer::Grow(std::size_t more) {
  constexpr std::size_t kLeast = 512;
  constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max() / 2;
  if (more > kMost - size) throw std::bad_alloc();
  const int savedErrno = errno;
  std::size_t wanted = std::max({kLeast, size + more, 2 * size});
  void* larger = std::realloc(bytes, wanted);
  if (larger == nullptr) {
    // Where memory is short, what is needed may be there although twice of it is not.
    wanted = size + more;
    larger = std::realloc(bytes, wanted);
    if (larger == nullptr) throw std::bad_alloc();
    errno = savedErrno;  // nothing failed
  }
  bytes = static_cast<char*>(larger);
  capacity = wanted;
}

void ByteBuffer::Trim() noexcept {
  if (size == 0) return Release();
  if (void* const smaller = std::realloc(bytes, size); smaller != nullptr) {
    bytes = static_cast<char*>(smaller);
    capacity = size;
  }
}

void ByteBuffer::Release() noexcept {
  std::free(bytes);
  bytes = nullptr;
  size = 0;
  capacity = 0;
}
