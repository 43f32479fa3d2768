/* diagnostics.h - the process-wide switch for messages on the standard error stream.
 *
 * The library prints nothing unless this switch is on. It never changes a result code or a byte of
 * the PDF; it only makes the library say what went wrong:
 *
 *     InitPdfDoc: JTPDF error: 2; No such file or directory
 */
#ifndef JTPDF_DIAGNOSTICS_H
#define JTPDF_DIAGNOSTICS_H

#include <stdbool.h>

/* A host of the static library defines JTPDF_STATIC on Windows; its CMake target does so. */
#if defined(_WIN32) && !defined(JTPDF_STATIC)
#define JTPDF_EXPORT __declspec(dllimport)
#elif defined(__GNUC__)
#define JTPDF_EXPORT __attribute__((visibility("default")))
#else
#define JTPDF_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Returns whether diagnostic mode is on; false when the library has just been loaded. */
JTPDF_EXPORT bool JTPDFGetDiagnosticMode(void);

/* Switches diagnostic mode on or off for every document of the process. May be called at any time,
 * by any thread, and counts from the next report on: one that is under way is printed or not. */
JTPDF_EXPORT void JTPDFSetDiagnosticMode(bool on);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* JTPDF_DIAGNOSTICS_H */
