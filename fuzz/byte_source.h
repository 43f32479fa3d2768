// byte_source - the fuzzer's bytes as a host's arguments. When the bytes are used up, everything
// is 0, so every input is a whole sequence of calls.
#ifndef JTPDF_FUZZ_BYTE_SOURCE_H
#define JTPDF_FUZZ_BYTE_SOURCE_H

#include <jtpdf/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

class ByteSource {
 public:
  ByteSource(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

  bool Empty() const { return next_ == end_; }
  std::uint8_t Byte() { return Empty() ? 0 : *next_++; }
  bool Flag() { return (Byte() & 1) != 0; }
  std::uint32_t Word();
  std::int32_t Integer();  // mostly small
  double Double();         // lengths, edges, or any bits
  std::string Bytes(std::size_t limit);
  std::string CText(std::size_t limit);      // without NULs
  std::wstring WideText(std::size_t limit);  // without NULs; any units
  std::string Key();                         // a path over few names, or any bytes
  JTPDFRect Box();
  JTPDFRGBColor Color();

 private:
  const std::uint8_t* next_;
  const std::uint8_t* end_;
};

#endif  // JTPDF_FUZZ_BYTE_SOURCE_H
