#include "formats/jpeg_segments.h"

#include <cstring>

namespace pictures {

bool JpegSegments::Next() {
  if (marker == kSos || marker == kEoi) return false;
  FindMarker();
  marker = file_[at_++];
  if (marker == kTem || (marker >= kRst0 && marker <= kEoi)) {
    data = {};
    return true;
  }
  const Bytes length = Slice(file_, at_, 2);
  if (length.empty()) throw CutOff();
  const uint32_t size = Be16(length.data());
  if (size < 2 && IsComment()) {  // decoders take it for an empty one
    stray += 2;
    at_ += 2;
    data = {};
    return true;
  }
  if (size < 2) throw Damaged("a JPEG segment without its length");
  data = Slice(file_, at_ + 2, size - 2);
  if (data.size() != size - 2) throw CutOff();
  at_ += size;
  return true;
}

// Steps to behind the next FF of a marker, as decoders do: over what is none, and over the FFs
// that markers may be padded with.
void JpegSegments::FindMarker() {
  for (;;) {
    const size_t begin = at_;
    while (at_ < file_.size() && file_[at_] != 0xFF) ++at_;
    stray += at_ - begin;
    const size_t padding = at_;
    while (at_ < file_.size() && file_[at_] == 0xFF) ++at_;
    if (at_ == file_.size()) throw CutOff();
    if (file_[at_] != 0) return;  // FF 00 is data: an FF of the picture's own
    stray += at_ - padding;
  }
}

std::optional<size_t> FindJpegEnd(Bytes file, size_t scan) {
  const size_t size = file.size();
  size_t at = scan;
  while (at + 1 < size) {
    const void* found = std::memchr(&file[at], 0xFF, size - 1 - at);
    if (found == nullptr) break;
    at = static_cast<size_t>(static_cast<const uint8_t*>(found) - file.data()) + 1;
    const uint8_t marker = file[at];
    if (marker == kEoi) return at + 1;
    if (marker == 0xFF || marker == 0 || (marker >= kRst0 && marker <= kRst7)) continue;
    const Bytes length = Slice(file, at + 1, 2);  // tables or the next scan's header
    if (length.empty()) break;
    at += 1 + Be16(length.data());
  }
  return std::nullopt;
}

}  // namespace pictures
