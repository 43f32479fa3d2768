// pdf - a finished document taken apart again, by its cross-reference table alone.
#ifndef JTPDF_TESTS_SUPPORT_PDF_H
#define JTPDF_TESTS_SUPPORT_PDF_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Throws std::runtime_error where the bytes are not what the library promises: the table stands at
// startxref, each entry has 20 bytes and leads to "N 0 obj", objects lie back to back.
class Pdf {
 public:
  explicit Pdf(std::string bytes);

  // The entries of the table, object 0 included.
  int Size() const { return static_cast<int>(offsets.size()); }
  std::size_t Offset(int object) const { return offsets.at(static_cast<std::size_t>(object)); }
  std::size_t TableOffset() const { return table; }

  // Everything from "N 0 obj" to the line end behind its "endobj".
  std::string Object(int object) const;
  // The same without its first and last line.
  std::string Body(int object) const;
  // From "xref" to the end.
  std::string Tail() const { return bytes.substr(table); }

  int Root() const { return root; }
  int Info() const { return info; }

 private:
  int TrailerReference(std::string_view key) const;

  std::string bytes;
  std::size_t table = 0;
  std::vector<std::size_t> offsets;
  int root = 0;
  int info = 0;
};

#endif  // JTPDF_TESTS_SUPPORT_PDF_H
