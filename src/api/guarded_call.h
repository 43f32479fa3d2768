// guarded_call - the one place where a failure inside the library becomes a result code.
#ifndef JTPDF_API_GUARDED_CALL_H
#define JTPDF_API_GUARDED_CALL_H

#include <cerrno>
#include <cstdint>
#include <ios>
#include <new>

#include "document/document.h"

// Says on standard error, in diagnostic mode, which export failed and why:
// "InitPdfDoc: JTPDF error: 2; No such file or directory", or the failure's own message behind
// "error: " if the code is -1. errno stays as it is.
void HandleDiagnostics(const char* functionName, std::ios_base::failure failure, int code);

// Sets errno to ENOMEM, says the same of it in diagnostic mode as far as there is memory for that,
// and returns it.
std::int32_t ReportMemoryError(const char* functionName) noexcept;

// Runs body for the export exportName. Returns 0, with errno as it was before the call, or the
// errno of the failure that was caught (-1 for 0), whatever set it. Only stream failures are
// caught; every other exception reaches the caller, with errno as it was before the call.
template <typename Body>
std::int32_t GuardedCall(const char* exportName, const Body& body) {
  const int callersErrno = errno;
  try {
    body();
  } catch (const std::ios_base::failure& failure) {
    const int error = errno;  // before anything else runs
    const int code = error == 0 ? -1 : error;
    HandleDiagnostics(exportName, failure, code);
    return code;
  } catch (...) {
    errno = callersErrno;
    throw;
  }
  // Closing a file resets errno although nothing failed.
  errno = callersErrno;
  return 0;
}

// The same for a call on doc, for which memory that runs out, now or in a drawing call before, may
// be a code as well.
template <typename Body>
std::int32_t GuardedCall(const char* exportName, JTPDFDocument& doc, const Body& body) {
  if (!doc.HasMemoryErrors()) return GuardedCall(exportName, body);
  if (doc.TakeMemoryError()) return ReportMemoryError(exportName);
  try {
    return GuardedCall(exportName, body);
  } catch (const std::bad_alloc&) {
    return ReportMemoryError(exportName);
  }
}

// Runs a writer that gives an object number; stores it on success only.
template <typename Writer>
std::int32_t GuardedWrite(const char* exportName, JTPDFDocument* doc, int* out,
                          const Writer& write) {
  int number = 0;
  const std::int32_t code = GuardedCall(exportName, *doc, [&] { number = write(); });
  if (code == 0 && out != nullptr) *out = number;
  return code;
}

// Runs body for an export that has no code: where memory errors are codes, doc remembers one for
// the next call that has.
template <typename Body>
void RememberingCall(JTPDFDocument& doc, const Body& body) {
  const int callersErrno = errno;
  try {
    body();
  } catch (const std::bad_alloc&) {
    errno = callersErrno;
    if (!doc.HasMemoryErrors()) throw;
    doc.RememberMemoryError();
  }
}

#endif  // JTPDF_API_GUARDED_CALL_H
