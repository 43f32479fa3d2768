// golden_host list | facts NAME | file NAME PATH | memory NAME PATH | all DIRECTORY |
//             generated COUNT DIRECTORY
//
// Writes the golden documents with whatever library it is linked to, so that builds can be compared
// with each other, and tells what it wrote for the tests that ask readers.

#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "golden_documents.h"

namespace {

constexpr const char* kUsage =
    "usage: golden_host list                the names of the documents\n"
    "       golden_host facts NAME          what the document holds, a line each\n"
    "       golden_host file NAME PATH      writes it as a file document\n"
    "       golden_host memory NAME PATH    writes it as a memory document\n"
    "       golden_host all DIRECTORY       writes each as DIRECTORY/NAME.pdf\n"
    "       golden_host generated COUNT DIRECTORY\n"
    "                                       writes documents made by chance\n";

void PrintBox(const char* name, const JTPDFRect& box) {
  std::printf(" %s %.4f %.4f %.4f %.4f", name, box.left, box.bottom, box.left + box.width,
              box.bottom + box.height);
}

void PrintFacts(const golden::Document& document) {
  golden::Facts facts;
  golden::WriteToMemory(document, &facts);
  std::printf("sound %d\nclosing %d\npages %zu\nimages %d\nforms %d\n",
              document.damage == nullptr ? 1 : 0, document.closing != nullptr ? 1 : 0,
              facts.pages.size(), facts.images, facts.forms);
  for (const golden::Facts::Page& page : facts.pages) {
    std::printf("page");
    PrintBox("media", page.media);
    PrintBox("crop", page.crop);
    std::printf("\n");
  }
}

int Run(int argc, char** argv) {
  const std::string command = argc > 1 ? argv[1] : "";
  if (command == "list" && argc == 2) {
    for (const golden::Document& document : golden::Documents()) std::puts(document.name);
  } else if (command == "facts" && argc == 3) {
    PrintFacts(golden::FindDocument(argv[2]));
  } else if (command == "file" && argc == 4) {
    golden::WriteToFile(golden::FindDocument(argv[2]), argv[3]);
  } else if (command == "memory" && argc == 4) {
    const std::string bytes = golden::WriteToMemory(golden::FindDocument(argv[2]));
    std::ofstream file(argv[3], std::ios::binary);
    file << bytes << std::flush;
    if (!file) throw std::runtime_error(std::string(argv[3]) + " cannot be written");
  } else if (command == "all" && argc == 3) {
    for (const golden::Document& document : golden::Documents()) {
      golden::WriteToFile(document, std::string(argv[2]) + "/" + document.name + ".pdf");
    }
  } else if (command == "generated" && argc == 4) {
    const unsigned count = static_cast<unsigned>(std::stoul(argv[2]));
    for (unsigned seed = 1; seed <= count; ++seed) {
      golden::WriteGenerated(seed,
                             std::string(argv[3]) + "/generated_" + std::to_string(seed) + ".pdf");
    }
  } else {
    std::cerr << kUsage;
    return 2;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "golden_host: " << error.what() << '\n';
    return 1;
  }
}
