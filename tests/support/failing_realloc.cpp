#include "support/failing_realloc.h"

#include <cerrno>

#if defined(__GLIBC__) && !defined(JTPDF_SANITIZED)

// Whether the program's operator new would fail now. Asking counts as an allocation.
bool RefusesMemory();

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the C library's name
extern "C" void* __libc_realloc(void* block, std::size_t size);

extern "C" void* realloc(void* block, std::size_t size) {
  if (size == 0 || !RefusesMemory()) return __libc_realloc(block, size);
  errno = ENOMEM;
  return nullptr;
}

#endif
