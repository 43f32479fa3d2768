#include "support/pdf.h"

#include <stdexcept>
#include <utility>

#include "support/bytes.h"

namespace {

void Require(bool condition, const std::string& what) {
  if (!condition) throw std::runtime_error("not a whole document: " + what);
}

// The digits at the position, as a number.
std::size_t NumberAt(std::string_view text, std::size_t position) {
  std::size_t end = position;
  while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
  Require(end > position, "no number at " + std::to_string(position));
  return std::stoul(std::string(text.substr(position, end - position)));
}

}  // namespace

Pdf::Pdf(std::string file) : bytes(std::move(file)) {
  constexpr std::string_view kStart = "startxref\r\n";
  const std::size_t start = bytes.rfind(kStart);
  Require(start != std::string::npos, "no startxref");
  table = NumberAt(bytes, start + kStart.size());
  const std::string head = "xref\r\n0 ";
  Require(bytes.compare(table, head.size(), head) == 0, "startxref does not lead to the table");
  const std::size_t size = NumberAt(bytes, table + head.size());
  std::size_t at = table + head.size() + std::to_string(size).size() + 2;
  for (std::size_t i = 0; i < size; ++i, at += 20) {
    const std::string_view entry = std::string_view(bytes).substr(at, 20);
    Require(entry.substr(10) == (i == 0 ? " 65535 f\r\n" : " 00000 n\r\n"),
            "entry " + std::to_string(i) + " is " + Escaped(entry));
    offsets.push_back(NumberAt(entry, 0));
  }
  Require(bytes.compare(at, 9, "trailer\r\n") == 0, "the table has more entries than it says");
  for (int i = 1; i < Size(); ++i) {
    const std::string object = Object(i);
    Require(object.starts_with(std::to_string(i) + " 0 obj\r\n"),
            "entry " + std::to_string(i) + " leads to " + Escaped(object.substr(0, 20)));
    Require(object.ends_with("endobj\r\n"), "object " + std::to_string(i) + " does not end");
  }
  root = TrailerReference("/Root ");
  info = TrailerReference("/Info ");
}

std::string Pdf::Object(int object) const {
  const std::size_t begin = Offset(object);
  const std::size_t end = object + 1 < Size() ? Offset(object + 1) : table;
  Require(begin <= end, "objects out of order");
  return bytes.substr(begin, end - begin);
}

std::string Pdf::Body(int object) const {
  const std::string text = Object(object);
  const std::size_t begin = text.find("\r\n") + 2;
  return text.substr(begin, text.size() - begin - 8);
}

int Pdf::TrailerReference(std::string_view key) const {
  const std::size_t at = bytes.find(key, bytes.rfind("trailer\r\n"));
  Require(at != std::string::npos, "no " + std::string(key) + "in the trailer");
  return static_cast<int>(NumberAt(bytes, at + key.size()));
}
