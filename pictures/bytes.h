// bytes.h - views of bytes, memory without zero-filling, and reads that stay inside their bytes.
#ifndef JTPDF_PICTURES_BYTES_H
#define JTPDF_PICTURES_BYTES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>
#include <utility>

namespace pictures {

using Bytes = std::span<const uint8_t>;

// Memory of a size known in advance. Unlike a vector it is not zeroed first: pictures fill tens of
// megabytes of it themselves, row by row.
class Buffer {
 public:
  Buffer() = default;
  // By make_unique_for_overwrite, where every standard library had it.
  explicit Buffer(size_t size) : bytes_(new uint8_t[size]), size_(size) {}
  static Buffer CopyOf(Bytes bytes) {
    Buffer copy(bytes.size());
    if (!bytes.empty()) std::memcpy(copy.Data(), bytes.data(), bytes.size());
    return copy;
  }

  uint8_t* Data() { return bytes_.get(); }
  const uint8_t* Data() const { return bytes_.get(); }
  size_t Size() const { return size_; }
  bool Empty() const { return size_ == 0; }
  Bytes View() const { return {bytes_.get(), size_}; }
  // Makes it twice as large; what is behind its bytes is not set.
  void Double() {
    Buffer larger(2 * size_);
    if (size_ > 0) std::memcpy(larger.Data(), Data(), size_);
    *this = std::move(larger);
  }
  // Forgets the bytes behind the first `size`; the memory stays.
  void Shrink(size_t size) { size_ = size < size_ ? size : size_; }

 private:
  std::unique_ptr<uint8_t[]> bytes_;
  size_t size_ = 0;
};

// Big-endian numbers at a place the caller has checked.
inline uint32_t Be16(const uint8_t* at) {
  return uint32_t{at[0]} << 8 | at[1];
}
inline uint32_t Be32(const uint8_t* at) {
  return Be16(at) << 16 | Be16(at + 2);
}

// Writes a big-endian number, and moves on.
inline void PutBe32(uint32_t number, uint8_t** to) {
  for (int shift = 24; shift >= 0; shift -= 8) *(*to)++ = static_cast<uint8_t>(number >> shift);
}

// The `size` bytes at `offset`, or nothing where they are not all there.
inline Bytes Slice(Bytes bytes, uint64_t offset, uint64_t size) {
  if (offset > bytes.size() || size > bytes.size() - offset) return {};
  return bytes.subspan(static_cast<size_t>(offset), static_cast<size_t>(size));
}

inline size_t TotalSize(std::span<const Bytes> pieces) {
  size_t size = 0;
  for (const Bytes piece : pieces) size += piece.size();
  return size;
}

// The pieces one behind the other.
inline Buffer Join(std::span<const Bytes> pieces) {
  Buffer whole(TotalSize(pieces));
  uint8_t* to = whole.Data();
  for (const Bytes piece : pieces) to = std::copy(piece.begin(), piece.end(), to);
  return whole;
}

inline bool Equal(Bytes a, Bytes b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

inline bool StartsWith(Bytes bytes, std::string_view magic) {
  return bytes.size() >= magic.size() && std::memcmp(bytes.data(), magic.data(), magic.size()) == 0;
}

}  // namespace pictures

#endif  // JTPDF_PICTURES_BYTES_H
