// One line on the standard error stream, if diagnostic mode is on.

#include "objects/diagnostic_note.h"

#include <cerrno>
#include <iostream>

#include "objects/diagnostic_mode.h"

void PrintDiagnosticNote(std::string text) {
  if (!GetDiagnosticMode()) return;
  const int savedErrno = errno;
  text += '\n';
  // One unformatted write: neither a locale nor a field width set on std::cerr can change it, and
  // lines of several threads do not mix.
  std::cerr.write(text.data(), static_cast<std::streamsize>(text.size()));
  std::cerr.flush();
  errno = savedErrno;
}
