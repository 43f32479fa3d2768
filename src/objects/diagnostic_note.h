// diagnostic_note - one line on the standard error stream, if diagnostic mode is on.
#ifndef JTPDF_OBJECTS_DIAGNOSTIC_NOTE_H
#define JTPDF_OBJECTS_DIAGNOSTIC_NOTE_H

#include <string>

// Writes text and a newline to std::cerr and flushes; does nothing when diagnostic mode is off.
// errno stays as it is, so that the mode never changes a result code. An exception of the stream
// reaches the caller.
void PrintDiagnosticNote(std::string text);

#endif  // JTPDF_OBJECTS_DIAGNOSTIC_NOTE_H
