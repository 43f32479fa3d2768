// zlib_stream.h - looks through a zlib stream and keeps nothing of it.
#ifndef JTPDF_PICTURES_ZLIB_STREAM_H
#define JTPDF_PICTURES_ZLIB_STREAM_H

#include <cstdint>
#include <optional>
#include <span>

#include "bytes.h"

namespace pictures {

// How many bytes the stream holds, which lies in pieces one behind the other; nothing where it is
// damaged (by its checksum, too) or cut off. Takes some kilobytes whatever its size; stops where it
// holds more than `most`. Bytes behind the stream are passed over.
std::optional<uint64_t> InflatedSize(std::span<const Bytes> pieces, uint64_t most);

}  // namespace pictures

#endif  // JTPDF_PICTURES_ZLIB_STREAM_H
