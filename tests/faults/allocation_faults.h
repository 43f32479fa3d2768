// The program that links this has an operator new of its own, which counts the blocks that live and
// fails once when it is told to; with it fails realloc, whose blocks are not counted.
#ifndef JTPDF_TESTS_FAULTS_ALLOCATION_FAULTS_H
#define JTPDF_TESTS_FAULTS_ALLOCATION_FAULTS_H

namespace faults {

// The blocks that operator new gave and operator delete did not take back.
long LiveBlocks();

// From now on fails the allocation number `at`, counted from 0, of those made while `counts` is
// true (null: of all).
void FailAllocation(long at, bool (*counts)() = nullptr);

struct AllocationTraffic {
  long allocations = 0;  // that counted
  bool failed = false;   // the fault was raised
};

AllocationTraffic StopFailingAllocations();

}  // namespace faults

#endif  // JTPDF_TESTS_FAULTS_ALLOCATION_FAULTS_H
