// Reads the body of a dictionary as this library lays it out: an entry a line, "/Key value"; a
// dictionary inside as the line "/Key", the line "<<", its entries and the line ">>". The one line
// with several entries is that of a page's transparency group.

#ifndef JTPDF_TESTS_GOLDEN_DICT_READER_H
#define JTPDF_TESTS_GOLDEN_DICT_READER_H

#include <cstdint>
#include <string>
#include <vector>

#include "byte_reader.h"

namespace golden {

struct DictEntry {
  enum Kind { kName, kString, kNumber, kBoolean, kReference, kArray };

  std::string path;  // "/Resources/XObject/Im12"
  Kind kind;
  std::string text;                      // as it stands in the file
  std::vector<std::int64_t> references;  // of a reference or an array
  std::size_t items;                     // of an array
  std::uint64_t offset;                  // of the line
};

struct Dict {
  std::vector<DictEntry> entries;

  // The first entry with that path, null without one.
  const DictEntry* Find(const std::string& path) const;
  // The text of the entry; empty without one or when it is of another kind.
  std::string Text(const std::string& path, DictEntry::Kind kind) const;
};

// Reads from behind the first "<<" line to behind the matching ">>" line.
Dict ReadDict(ByteReader& in);

}  // namespace golden

#endif  // JTPDF_TESTS_GOLDEN_DICT_READER_H
