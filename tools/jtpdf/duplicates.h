// duplicates.h - finds inputs with the same bytes, without holding or reading them all.
#ifndef JTPDF_TOOL_DUPLICATES_H
#define JTPDF_TOOL_DUPLICATES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

#include "image_source.h"

namespace pictures::tool {

// A number that equal bytes share and different ones nearly never do. It samples: three pieces of
// four kilobytes and the size, so that planning a large file stays a matter of its header.
uint64_t SampleHash(Bytes bytes);

class DuplicateFinder {
 public:
  // `open` gives the bytes of an input again.
  explicit DuplicateFinder(std::function<ImageSource(size_t)> open) : open_(std::move(open)) {}

  // The first input with the same bytes as `input`, itself where there is none. Called in order;
  // bytes are read only where the hashes agree.
  size_t FirstLike(size_t input, uint64_t sampleHash, const FileIdentity& identity);

 private:
  struct Known {
    size_t input;
    FileIdentity identity;
    std::optional<uint64_t> wholeHash;
  };

  std::function<ImageSource(size_t)> open_;
  std::unordered_map<uint64_t, std::vector<Known>> known_;
};

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_DUPLICATES_H
