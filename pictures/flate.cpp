#include "flate.h"

#include <libdeflate.h>

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

namespace pictures {
namespace {

struct FreeCompressor {
  void operator()(libdeflate_compressor* c) const { libdeflate_free_compressor(c); }
};
struct FreeDecompressor {
  void operator()(libdeflate_decompressor* d) const { libdeflate_free_decompressor(d); }
};

using Decompressor = std::unique_ptr<libdeflate_decompressor, FreeDecompressor>;

Decompressor MakeDecompressor() {
  Decompressor decompressor(libdeflate_alloc_decompressor());
  if (!decompressor) throw std::bad_alloc();
  return decompressor;
}

// One for each thread, kept: at the high levels it weighs megabytes.
libdeflate_compressor* CompressorOf(int level) {
  thread_local std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor;
  thread_local int itsLevel = -1;
  if (!compressor || itsLevel != level) {
    compressor.reset(libdeflate_alloc_compressor(level));
    if (!compressor) throw std::bad_alloc();
    itsLevel = level;
  }
  return compressor.get();
}

}  // namespace

Buffer Deflate(Bytes bytes, int level) {
  libdeflate_compressor* compressor = CompressorOf(level);
  Buffer out(libdeflate_zlib_compress_bound(compressor, bytes.size()));
  out.Shrink(
      libdeflate_zlib_compress(compressor, bytes.data(), bytes.size(), out.Data(), out.Size()));
  return out;
}

Inflated Inflate(Bytes stream, size_t most) {
  const Decompressor decompressor = MakeDecompressor();
  for (size_t room = std::min<size_t>(most, stream.size() * 4 + 1024);; room *= 2) {
    Buffer out(std::min(room, most));
    size_t size = 0;
    const libdeflate_result result = libdeflate_zlib_decompress(
        decompressor.get(), stream.data(), stream.size(), out.Data(), out.Size(), &size);
    if (result == LIBDEFLATE_SUCCESS) {
      out.Shrink(size);
      return {std::move(out), false};
    }
    if (result != LIBDEFLATE_INSUFFICIENT_SPACE) return {};
    if (out.Size() == most) return {{}, true};
  }
}

Buffer InflateExactly(Bytes stream, size_t size) {
  const Decompressor decompressor = MakeDecompressor();
  Buffer out(size);
  const libdeflate_result result = libdeflate_zlib_decompress(
      decompressor.get(), stream.data(), stream.size(), out.Data(), out.Size(), nullptr);
  return result == LIBDEFLATE_SUCCESS ? std::move(out) : Buffer();
}

}  // namespace pictures
