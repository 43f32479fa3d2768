// check_structure [--closing-text] [--unchecked-numbers] [--open-objects] FILE...
//
// Checks files that the library wrote, each in one forward pass ("-" is standard input), and tells
// for each what it holds or what is wrong first, and where. Fails when a file is not right.

#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "pdf_structure.h"

namespace {

constexpr const char* kUsage =
    "usage: check_structure [--closing-text] [--unchecked-numbers] [--open-objects] FILE...\n"
    "  --closing-text       a closing text may follow the end-of-file marker\n"
    "  --unchecked-numbers  forms and pages may name objects that are not there\n"
    "  --open-objects       the host wrote objects and entries of its own\n"
    "  FILE                 a file that the library wrote; - is standard input\n";

bool CheckFile(const std::string& name, const golden::StructureOptions& options) {
  std::ifstream file;
  if (name != "-") {
    file.open(name, std::ios::binary);
    if (!file) {
      std::cerr << name << ": cannot be opened: " << std::strerror(errno) << '\n';
      return false;
    }
  }
  const golden::StructureReport report =
      golden::CheckStructure(name == "-" ? std::cin : file, options);
  if (!report.ok()) {
    std::cerr << name << ":" << report.offset << ": " << report.error << '\n';
    return false;
  }
  std::cout << name << ": ok, " << report.size << " bytes, " << report.objects << " objects, "
            << report.pages << " pages, " << report.page_nodes << " page-tree nodes ("
            << report.generous_nodes << " generous), " << report.forms << " forms, "
            << report.images << " images, " << report.profiles << " profiles\n";
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  golden::StructureOptions options;
  std::vector<std::string> files;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--closing-text") {
      options.closing_text = true;
    } else if (argument == "--unchecked-numbers") {
      options.unchecked_numbers = true;
    } else if (argument == "--open-objects") {
      options.open_objects = true;
    } else if (argument.starts_with("--")) {
      std::cerr << "check_structure: unknown option " << argument << '\n' << kUsage;
      return 2;
    } else {
      files.push_back(argument);
    }
  }
  if (files.empty()) {
    std::cerr << kUsage;
    return 2;
  }
  bool ok = true;
  for (const std::string& file : files) ok = CheckFile(file, options) && ok;
  return ok ? 0 : 1;
}
