// failing_realloc - whether this build's programs can make realloc fail.
//
// What grows in place is not new's. The C library lets a program replace its realloc; the
// sanitizers have one of their own, with which it cannot fail.
#ifndef JTPDF_TESTS_SUPPORT_FAILING_REALLOC_H
#define JTPDF_TESTS_SUPPORT_FAILING_REALLOC_H

#include <cstdlib>

#if defined(__GLIBC__) && !defined(JTPDF_SANITIZED)
inline constexpr bool kReallocFails = true;
#else
inline constexpr bool kReallocFails = false;
#endif

#endif  // JTPDF_TESTS_SUPPORT_FAILING_REALLOC_H
