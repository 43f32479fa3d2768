// A strict checker of the files that this library writes, in one forward pass and with some fifty
// bytes of memory an object, so that it also takes files of many gigabytes and streams that cannot
// seek. It knows nothing of the library's sources and is far stricter than a reader: every byte has
// to be a byte that the library may write at that place.

#ifndef JTPDF_TESTS_GOLDEN_PDF_STRUCTURE_H
#define JTPDF_TESTS_GOLDEN_PDF_STRUCTURE_H

#include <cstdint>
#include <istream>
#include <string>
#include <string_view>

namespace golden {

struct StructureOptions {
  // A closing text may follow the end-of-file marker. It may hold any bytes, so whatever stands
  // there is taken, as long as it ends its last line.
  bool closing_text = false;
  // The host drew images, or made pages of forms, by numbers that no writer gave it: references
  // may then name any object, or none.
  bool unchecked_numbers = false;
  // The host wrote objects and entries of its own, whose shapes are free: any object may stand
  // between those of the library, under numbers that were reserved for it, and there may be an
  // outline. What the library writes, and the frame of the file, is held to the same rules.
  bool open_objects = false;
};

struct StructureReport {
  std::string error;          // what is wrong first; empty when nothing is
  std::uint64_t offset = 0;   // where, in bytes from the start
  std::uint64_t size = 0;     // bytes read
  std::uint64_t objects = 0;  // the free-list head not counted
  std::uint64_t images = 0;
  std::uint64_t profiles = 0;
  std::uint64_t forms = 0;
  std::uint64_t pages = 0;
  std::uint64_t page_nodes = 0;
  // Page-tree nodes whose /Count is not the number of pages below them: full nodes above the first
  // level claim all that they could hold. It is no error; some readers take them at their word.
  std::uint64_t generous_nodes = 0;
  std::uint64_t closing_bytes = 0;  // of the closing text, with its line end
  std::uint64_t open_objects = 0;   // of the host's; those that are images are counted above, too
  std::uint64_t bookmarks = 0;

  bool ok() const { return error.empty(); }
};

StructureReport CheckStructure(std::istream& in, const StructureOptions& options = {});
StructureReport CheckStructure(std::string_view bytes, const StructureOptions& options = {});

}  // namespace golden

#endif  // JTPDF_TESTS_GOLDEN_PDF_STRUCTURE_H
