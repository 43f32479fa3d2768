// The documents whose bytes are kept in files/: each is a host's calls through the public header.

#ifndef JTPDF_TESTS_GOLDEN_GOLDEN_DOCUMENTS_H
#define JTPDF_TESTS_GOLDEN_GOLDEN_DOCUMENTS_H

#include <jtpdf/jtpdf.h>

#include <string>
#include <vector>

namespace golden {

// What a host knows of the document that it wrote, to be compared with what readers find.
struct Facts {
  struct Page {
    JTPDFRect crop;  // in points
    JTPDFRect media;
  };
  std::vector<Page> pages;
  int images = 0;  // soft masks included
  int forms = 0;
};

class Host;

struct Document {
  const char* name = nullptr;
  void (*draw)(Host&) = nullptr;
  double unit = 1.0;
  const wchar_t* creator = nullptr;
  const wchar_t* author = nullptr;
  const char* closing = nullptr;
  bool finished = true;
  // What the structure checker has to say of it; null for a sound file.
  const char* damage = nullptr;
  bool open = false;  // with objects of the host's
};

// All of them, in the order in which they build on one another.
const std::vector<Document>& Documents();
// Throws std::runtime_error for a name that is not there.
const Document& FindDocument(const std::string& name);

// Write the document through a memory or a file document; any failing call throws
// std::runtime_error. A document that is not finished has no bytes in memory. Paths are ASCII.
std::string WriteToMemory(const Document& document, Facts* facts = nullptr);
void WriteToFile(const Document& document, const std::string& path, Facts* facts = nullptr);

// Writes the file document number seed of those that are made by chance and kept nowhere.
void WriteGenerated(unsigned seed, const std::string& path);

}  // namespace golden

#endif  // JTPDF_TESTS_GOLDEN_GOLDEN_DOCUMENTS_H
