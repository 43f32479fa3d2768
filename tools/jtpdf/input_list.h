// input_list.h - the arguments as a list of files: lists read.
#ifndef JTPDF_TOOL_INPUT_LIST_H
#define JTPDF_TOOL_INPUT_LIST_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pictures::tool {

struct Input {
  std::string path;
  bool standardInput = false;
  std::string error;       // why it cannot be used; empty for one that can
  std::string title = {};  // of its bookmark; empty: made of its name
  std::string chapter =
      {};  // of the bookmark above, which all inputs of a folder share; empty for none

  std::string Name() const { return standardInput ? "standard input" : path; }
};

// The inputs of these names; "-" is standard input. Whether they can be read, and which of them are
// folders, shows when they are opened.
std::vector<Input> ListInputs(const std::vector<std::string>& names);

// The names in a list of at most `most` bytes: separated by NUL bytes where one is among the first
// 4096, which hold at least one name of any length; else one in a line, as people write them.
// Throws an ImageError where the list cannot be read or is neither.
std::vector<std::string> SplitNames(std::string_view list);
// The inputs of such a list. With `titles`, what stands behind a tab in a line is the title.
std::vector<Input> ReadInputList(const std::string& path, uint64_t most, bool titles);

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_INPUT_LIST_H
