// Under valgrind, which puts its own operator new in the place of this one, run such a program with
// --soname-synonyms=somalloc=nouserintercepts.

#include "support/failing_new.h"

#include <cstdlib>

long allocationsLeft = -1;
int refusalsLeft = 0;

// For realloc too.
bool RefusesMemory();

bool RefusesMemory() {
  if (refusalsLeft > 0) return refusalsLeft-- > 0;
  if (allocationsLeft == 0) return true;
  if (allocationsLeft > 0) --allocationsLeft;
  return false;
}

void* operator new(std::size_t size) {
  if (RefusesMemory()) throw std::bad_alloc();
  if (void* const memory = std::malloc(size != 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
