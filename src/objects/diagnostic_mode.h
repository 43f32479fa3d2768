// diagnostic_mode - the process-wide switch for messages on the standard error stream.
#ifndef JTPDF_OBJECTS_DIAGNOSTIC_MODE_H
#define JTPDF_OBJECTS_DIAGNOSTIC_MODE_H

// False when the library is loaded. May be set while other threads work: a report that is under
// way then is printed or not.
bool GetDiagnosticMode();
void SetDiagnosticMode(bool on);

#endif  // JTPDF_OBJECTS_DIAGNOSTIC_MODE_H
