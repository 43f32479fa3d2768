// The lines of a content stream and the rule by which their parts are joined.

#include "objects/string_list.h"

#include <cstdarg>
#include <utility>

namespace {

void AppendPart(std::string& line, std::string_view text) {
  if (!line.empty() && line.back() != '[' && text != "]") line += ' ';
  line += text;
}

}  // namespace

void JTPDFStringList::Add(unsigned int count, ...) {
  if (count == 0) return;
  std::string line;
  va_list texts;
  va_start(texts, count);
  try {
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start is three lines above
    for (unsigned int i = 0; i < count; ++i) AppendPart(line, va_arg(texts, char const*));
  } catch (...) {
    va_end(texts);
    throw;
  }
  va_end(texts);
  lines.push_back(std::move(line));
}

void JTPDFStringList::AddJoined(std::initializer_list<std::string_view> texts) {
  std::size_t size = 0;
  for (const std::string_view text : texts) size += text.size() + 1;
  std::string line;
  line.reserve(size);
  for (const std::string_view text : texts) AppendPart(line, text);
  lines.push_back(std::move(line));
}

std::size_t JTPDFStringList::TextSize() const {
  if (lines.empty()) return 0;
  std::size_t size = 2 * (lines.size() - 1);
  for (std::string const& line : lines) size += line.size();
  return size;
}

std::string JTPDFStringList::Text() const {
  std::string text;
  text.reserve(TextSize());
  for (std::string const& line : lines) {
    if (&line != &lines.front()) text += "\r\n";
    text += line;
  }
  return text;
}
