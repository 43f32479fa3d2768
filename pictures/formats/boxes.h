// boxes.h - the boxes that JPEG 2000, JPEG XL and HEIF files are made of: a length, a name, data.
#ifndef JTPDF_PICTURES_BOXES_H
#define JTPDF_PICTURES_BOXES_H

#include <cstdint>
#include <string_view>

#include "bytes.h"

namespace pictures {

// The boxes in a run of them, one after the other.
class BoxWalk {
 public:
  explicit BoxWalk(Bytes bytes) : bytes_(bytes) {}

  // False at the end, or where a box has no length that can be; then `damaged`.
  bool Next() {
    const Bytes head = Slice(bytes_, at_, 8);
    if (head.empty()) return false;
    uint64_t size = Be32(head.data()), headSize = 8;
    type = {reinterpret_cast<const char*>(head.data() + 4), 4};
    if (size == 1) {  // the size proper follows, in 64 bits
      const Bytes large = Slice(bytes_, at_ + 8, 8);
      size = large.empty() ? 0 : uint64_t{Be32(large.data())} << 32 | Be32(large.data() + 4);
      headSize = 16;
    } else if (size == 0) {  // up to the end
      size = bytes_.size() - at_;
    }
    damaged = size < headSize || size > bytes_.size() - at_;
    if (damaged) return false;
    data = Slice(bytes_, at_ + headSize, size - headSize);
    at_ += size;
    return true;
  }
  // Where the next box begins, or the damaged one.
  uint64_t Position() const { return at_; }

  std::string_view type;
  Bytes data;
  bool damaged = false;

 private:
  Bytes bytes_;
  uint64_t at_ = 0;
};

}  // namespace pictures

#endif  // JTPDF_PICTURES_BOXES_H
