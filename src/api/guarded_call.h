// guarded_call - the one place where a failure inside the library becomes a result code.
#ifndef JTPDF_API_GUARDED_CALL_H
#define JTPDF_API_GUARDED_CALL_H

#include <cerrno>
#include <cstdint>
#include <ios>

// Says on standard error, in diagnostic mode, which export failed and why:
// "InitPdfDoc: JTPDF error: 2; No such file or directory", or the failure's own message behind
// "error: " if the code is -1. errno stays as it is.
void HandleDiagnostics(char const* functionName, std::ios_base::failure failure, int code);

// Runs body for the export exportName. Returns 0, with errno as it was before the call, or the
// errno of the failure that was caught (-1 for 0), whatever set it. Only stream failures are
// caught; every other exception reaches the caller.
template <typename Body>
std::int32_t GuardedCall(char const* exportName, Body const& body) {
  const int callersErrno = errno;
  try {
    body();
  } catch (std::ios_base::failure const& failure) {
    const int error = errno;  // before anything else runs
    const int code = error == 0 ? -1 : error;
    HandleDiagnostics(exportName, failure, code);
    return code;
  }
  // Closing a file resets errno although nothing failed.
  errno = callersErrno;
  return 0;
}

#endif  // JTPDF_API_GUARDED_CALL_H
