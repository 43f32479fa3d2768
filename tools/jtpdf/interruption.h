// interruption.h - what signals may not leave behind.
#ifndef JTPDF_TOOL_INTERRUPTION_H
#define JTPDF_TOOL_INTERRUPTION_H

#include <string>

namespace pictures::tool {

// The temporary file that a signal removes on its way through; one at a time.
void SetLitter(const std::string& path);
void ForgetLitter();

// Makes every signal that a person, a shell or a limit ends the command with remove the litter
// first, and a closed pipe and a file grown too large errors like any other.
void InstallSignalHandlers();

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_INTERRUPTION_H
