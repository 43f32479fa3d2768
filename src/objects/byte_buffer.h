// byte_buffer - bytes in one piece that grow at their end.
#ifndef JTPDF_OBJECTS_BYTE_BUFFER_H
#define JTPDF_OBJECTS_BYTE_BUFFER_H

#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

// Grows by realloc and twofold: the C library moves the pages of a large block to their new place
// instead of copying them, so that a buffer takes no more memory while it grows than afterwards,
// and what is not written yet is address space only. A standard string copies.
class ByteBuffer {
 public:
  ByteBuffer() = default;
  ByteBuffer(const ByteBuffer&) = delete;
  ByteBuffer(ByteBuffer&& other) noexcept { *this = std::move(other); }
  ByteBuffer& operator=(const ByteBuffer&) = delete;
  ByteBuffer& operator=(ByteBuffer&& other) noexcept {
    std::swap(bytes, other.bytes);
    std::swap(size, other.size);
    std::swap(capacity, other.capacity);
    return *this;
  }
  ~ByteBuffer() { Release(); }

  const char* Data() const { return bytes; }  // null as long as there was nothing to keep
  std::size_t Size() const { return size; }
  operator std::string_view() const { return {bytes, size}; }

  // Makes room for more bytes behind the end, which it returns. Throws std::bad_alloc, and the
  // buffer stays as it was, where there is no memory.
  char* Reserve(std::size_t more) {
    if (more > capacity - size) Grow(more);
    return bytes + size;
  }
  // Takes what was written to Reserve's room, up to end, into the buffer.
  void TakeUpTo(const char* end) { size = static_cast<std::size_t>(end - bytes); }

  // Adds text whole or, where there is no memory, not at all.
  void Append(std::string_view text) {
    if (text.empty()) return;
    std::memcpy(Reserve(text.size()), text.data(), text.size());
    size += text.size();
  }

  void Clear() { size = 0; }
  // Gives back the memory of the room behind the bytes, or all memory.
  void Trim() noexcept;
  void Release() noexcept;

 private:
  void Grow(std::size_t more);

  char* bytes = nullptr;
  std::size_t size = 0;
  std::size_t capacity = 0;
};

#endif  // JTPDF_OBJECTS_BYTE_BUFFER_H
