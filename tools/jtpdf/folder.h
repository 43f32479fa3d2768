// folder.h - the pictures in a folder, and what else is in it.
#ifndef JTPDF_TOOL_FOLDER_H
#define JTPDF_TOOL_FOLDER_H

#include <string>
#include <vector>

#include "input_list.h"

namespace pictures::tool {

// What a folder holds that is not meant to become a page.
struct PassedOver {
  std::string path;
  std::string reason;  // "passed over: no picture"
};

struct Folder {
  std::vector<Input> inputs;
  std::vector<PassedOver> passedOver;
};

// What is in the folder, in natural order, but for hidden files. An input is whatever its name or
// its first bytes call a picture, readable or not, so that no page is missing without a word. Where
// there is none, one input says so.
Folder ListFolder(const std::string& folder);

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_FOLDER_H
