// input_list.h - the arguments as a list of files: folders opened up, lists read.
#ifndef JTPDF_TOOL_INPUT_LIST_H
#define JTPDF_TOOL_INPUT_LIST_H

#include <string>
#include <string_view>
#include <vector>

namespace tool {

struct Input {
  std::string path;
  bool standardInput = false;
  std::string error;  // why it cannot be used at all; empty for an input to read

  std::string Name() const { return standardInput ? "standard input" : path; }
};

// Opens folders up into their pictures, recognised by content, in natural order; "-" is standard
// input. Files are kept as they are given: whether they can be read shows later.
std::vector<Input> ListInputs(const std::vector<std::string>& arguments);

// The names in a NUL-separated list. Throws an ImageError where the list cannot be read.
std::vector<std::string> ReadNameList(const std::string& path);
std::vector<std::string> SplitNames(std::string_view list);

}  // namespace tool

#endif  // JTPDF_TOOL_INPUT_LIST_H
