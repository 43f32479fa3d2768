// The lines of a content stream and the rule by which their parts are joined.

#include "objects/string_list.h"

#include <cstdarg>
#include <cstring>

namespace {

// Appends text to the line that begins at line and ends at end, behind a blank where one is due.
char* PutPart(const char* line, char* end, std::string_view text) {
  if (end != line && end[-1] != '[' && text != "]") *end++ = ' ';
  return end + text.copy(end, text.size());
}

}  // namespace

char* JTPDFStringList::BeginLine(std::size_t size) {
  char* const end = text.Reserve(kLineEnd.size() + size);
  if (isEmpty) return end;
  return end + kLineEnd.copy(end, kLineEnd.size());
}

void JTPDFStringList::EndLine(const char* end) {
  text.TakeUpTo(end);
  isEmpty = false;
}

void JTPDFStringList::Add(unsigned int count, ...) {
  if (count == 0) return;
  va_list texts;
  va_start(texts, count);
  va_list measured;
  va_copy(measured, texts);
  std::size_t size = 0;
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_copy is two lines above
  for (unsigned int i = 0; i < count; ++i) size += std::strlen(va_arg(measured, const char*)) + 1;
  va_end(measured);
  try {
    char* const line = BeginLine(size);
    char* end = line;
    for (unsigned int i = 0; i < count; ++i) end = PutPart(line, end, va_arg(texts, const char*));
    EndLine(end);
  } catch (...) {
    va_end(texts);
    throw;
  }
  va_end(texts);
}

void JTPDFStringList::AddJoined(std::initializer_list<std::string_view> texts) {
  std::size_t size = 0;
  for (const std::string_view text : texts) size += text.size() + 1;
  char* const line = BeginLine(size);
  char* end = line;
  for (const std::string_view text : texts) end = PutPart(line, end, text);
  EndLine(end);
}
