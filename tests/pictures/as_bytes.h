// as_bytes.h - texts as the bytes of files.
#ifndef JTPDF_TESTS_PICTURES_AS_BYTES_H
#define JTPDF_TESTS_PICTURES_AS_BYTES_H

#include <string_view>

#include "bytes.h"

namespace pictures {

// A view, which must not outlive the text.
inline Bytes AsBytes(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

}  // namespace pictures

#endif  // JTPDF_TESTS_PICTURES_AS_BYTES_H
