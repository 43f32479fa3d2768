// Content streams through the host's encoder.

#include "document/content_encoder.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>

#include "objects/syntax.h"
#include "output/object_writer.h"

namespace {

// The line "/Filter /FlateDecode" takes what shorter contents would save.
constexpr std::size_t kLeastEncoded = 64;

}  // namespace

void ContentEncoder::Set(const char* name, JTPDFEncodeFunction function, void* hostsContext) {
  if (function != nullptr && (name == nullptr || !IsName(name))) {
    RefuseArgument("The encoder's filter is not a name");
  }
  filter = function == nullptr ? "" : name;
  encode = function;
  context = hostsContext;
}

ContentEncoder::Content ContentEncoder::Encode(std::string_view plain) const {
  if (encode == nullptr || plain.size() < kLeastEncoded) return {plain, {}};
  const char* encoded = nullptr;
  std::size_t size = 0;
  const std::int32_t code = encode(context, plain.data(), plain.size(), &encoded, &size);
  if (code != 0) {
    errno = code;
    Refuse("The host's encoder failed");
  }
  constexpr std::string_view kFilterLine = "/Filter \r\n";
  if (size + kFilterLine.size() + filter.size() >= plain.size()) return {plain, {}};
  return {{encoded, size}, filter};
}
