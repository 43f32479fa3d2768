// failing_new - an operator new that fails on command. Only in the programs that link
// failing_new.cpp.
#ifndef JTPDF_TESTS_SUPPORT_FAILING_NEW_H
#define JTPDF_TESTS_SUPPORT_FAILING_NEW_H

#include <new>

// How many allocations succeed before all fail; negative: all succeed.
extern long allocationsLeft;

// How many of the next allocations fail before allocationsLeft counts.
extern int refusalsLeft;

enum class Outcome { kSuccess, kBadAlloc, kCode };

// Runs the call with n allocations; a call gives whether it succeeded.
template <typename Call>
Outcome WithAllocations(long n, const Call& call) {
  allocationsLeft = n;
  Outcome outcome = Outcome::kBadAlloc;
  try {
    outcome = call() ? Outcome::kSuccess : Outcome::kCode;
  } catch (const std::bad_alloc&) {
  }
  allocationsLeft = -1;
  return outcome;
}

#endif  // JTPDF_TESTS_SUPPORT_FAILING_NEW_H
