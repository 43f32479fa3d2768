// Reads what a host has written itself: objects in any shape of ISO 32000-1, 7.3, with white space
// wherever that may stand. Dictionaries come out as dict_reader.h has them, an entry for each path,
// however deep a host nests them in a value.

#ifndef JTPDF_TESTS_GOLDEN_FREE_READER_H
#define JTPDF_TESTS_GOLDEN_FREE_READER_H

#include <string>

#include "byte_reader.h"
#include "dict_reader.h"

namespace golden {

struct FreeObject {
  Dict dict;  // of a dictionary; else one entry without a path
  bool is_dict;
  std::string keyword;  // what stands behind the object: "endobj" or "stream"
};

// Reads from behind "7 0 obj" to behind the keyword.
FreeObject ReadFreeObject(ByteReader& in);

}  // namespace golden

#endif  // JTPDF_TESTS_GOLDEN_FREE_READER_H
