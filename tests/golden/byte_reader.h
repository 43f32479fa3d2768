// Reads a stream forward, byte by byte, and knows where it is. What is not as expected ends the
// reading with a StructureError that names the place.

#ifndef JTPDF_TESTS_GOLDEN_BYTE_READER_H
#define JTPDF_TESTS_GOLDEN_BYTE_READER_H

#include <cstdint>
#include <istream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace golden {

struct StructureError : std::runtime_error {
  StructureError(std::uint64_t where, const std::string& what)
      : std::runtime_error(what), offset(where) {}
  std::uint64_t offset;
};

class ByteReader {
 public:
  explicit ByteReader(std::istream& in);

  std::uint64_t Position() const { return position_; }
  int Peek() { return next_ != end_ || Fill() ? static_cast<unsigned char>(*next_) : -1; }
  int Get();

  // Passes over count bytes; false when the stream ends before.
  bool Skip(std::uint64_t count);
  // The bytes up to the next line end, which is passed over. A lone CR or LF is an error.
  std::string Line();
  // A decimal number without sign and without needless zeros.
  std::uint64_t Number(const std::string& what);
  void Expect(std::string_view expected, const std::string& what);

 private:
  bool Fill();

  std::istream& in_;
  std::vector<char> buffer_;
  const char* next_ = nullptr;
  const char* end_ = nullptr;
  std::uint64_t position_ = 0;
};

// The text with every byte outside printable ASCII as \xNN and line ends as \r and \n.
std::string Escaped(std::string_view bytes);

}  // namespace golden

#endif  // JTPDF_TESTS_GOLDEN_BYTE_READER_H
