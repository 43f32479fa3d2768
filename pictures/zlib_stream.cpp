#include "zlib_stream.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>

namespace pictures {
namespace {

class Inflater {
 public:
  Inflater() {
    if (inflateInit(&stream_) != Z_OK) throw std::bad_alloc();
  }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater() { inflateEnd(&stream_); }

  // False once there is no going on: at the end, or at damage.
  bool Take(Bytes bytes, uint64_t most) {
    while (!bytes.empty() || stream_.avail_out == 0) {
      constexpr size_t kMost = std::numeric_limits<uInt>::max();
      stream_.next_in = const_cast<Bytef*>(bytes.data());  // zlib reads through it only
      stream_.avail_in = static_cast<uInt>(std::min(bytes.size(), kMost));
      const size_t given = stream_.avail_in;
      stream_.next_out = dropped_.data();
      stream_.avail_out = static_cast<uInt>(dropped_.size());
      status_ = inflate(&stream_, Z_NO_FLUSH);
      bytes = bytes.subspan(given - stream_.avail_in);
      size_ += dropped_.size() - stream_.avail_out;
      if (status_ == Z_BUF_ERROR) status_ = Z_OK;  // all of this piece is taken
      if (status_ != Z_OK || size_ > most) return false;
    }
    return true;
  }
  bool Ended() const { return status_ == Z_STREAM_END; }
  uint64_t Size() const { return size_; }

 private:
  z_stream stream_ = {};
  int status_ = Z_OK;
  uint64_t size_ = 0;
  std::array<Bytef, 32768> dropped_;
};

}  // namespace

std::optional<uint64_t> InflatedSize(std::span<const Bytes> pieces, uint64_t most) {
  Inflater inflater;
  for (const Bytes piece : pieces) {
    if (!inflater.Take(piece, most)) break;
  }
  if (!inflater.Ended() || inflater.Size() > most) return std::nullopt;
  return inflater.Size();
}

}  // namespace pictures
