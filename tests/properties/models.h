// models - what the library is to write, said again in the plainest way, for properties and fuzz
// targets to compare with. Nothing here knows the library's sources, and nothing is clever: the C
// library formats every number, and every text is built up piece by piece.
#ifndef JTPDF_TESTS_PROPERTIES_MODELS_H
#define JTPDF_TESTS_PROPERTIES_MODELS_H

#include <jtpdf/types.h>

#include <map>
#include <string>
#include <vector>

namespace model {

// Numbers and references.
std::string Number(double value);  // printf's "%.4f", cut to 29 characters
std::string Integer(long long value, unsigned width);
std::string Reference(int object);
std::string ReferenceArray(int first, int count);

// The parts of one content-stream line, joined.
std::string Line(const std::vector<std::string>& parts);
// The lines of a content stream, joined.
std::string Lines(const std::vector<std::string>& lines);

// Text up to its first NUL as a PDF text string.
std::string TextString(const std::wstring& text);
// Valid text as UTF-8, as it stands in a file's name.
std::string Utf8(const std::wstring& text);

// Dictionaries.
std::string Key(const std::string& key);
std::string FirstComponent(std::string path);
std::string TakeFirstComponent(std::string& path);
std::string Item(const std::string& key, const std::string& value, std::string previousParent);
std::string Body(const std::map<std::string, std::string>& entries);

// The tree above the pages, which are the objects from firstPage on: every page and node in the
// order of the file, the root last.
struct TreeObject {
  int number;
  int parent;             // 0 in the root
  int count;              // 0 for a page
  std::vector<int> kids;  // none for a page
};
std::vector<TreeObject> PageTree(int pages, int firstPage);

// A drawing, line by line.
class Canvas {
 public:
  explicit Canvas(double unit) : unit_(unit) {}

  void Image(int image, const JTPDFRect& box);
  void Rectangle(const JTPDFRect& box, const JTPDFRGBColor& fill, const JTPDFRGBColor& stroke,
                 double lineWidth);
  void Circle(const JTPDFRect& box, const JTPDFRGBColor& fill, const JTPDFRGBColor& stroke,
              double lineWidth);

  std::vector<std::string> lines = {"/GS0 gs"};
  std::map<std::string, std::string> entries;

 private:
  JTPDFRect Points(const JTPDFRect& box) const;

  double unit_;
};

std::string BoxArray(const JTPDFRect& points);

}  // namespace model

#endif  // JTPDF_TESTS_PROPERTIES_MODELS_H
