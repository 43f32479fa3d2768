#include "allocation_faults.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace faults {

namespace {

std::atomic<long> gLive = 0;

// Of one thread at a time.
bool gOn = false;
long gAt = 0;
bool (*gCounts)() = nullptr;
AllocationTraffic gTraffic;

bool Fails() {
  if (!gOn || (gCounts != nullptr && !gCounts())) return false;
  if (gTraffic.allocations++ != gAt) return false;
  gTraffic.failed = true;
  return true;
}

void* Allocate(std::size_t size) {
  if (Fails()) return nullptr;
  void* const block = std::malloc(size == 0 ? 1 : size);
  if (block != nullptr) ++gLive;
  return block;
}

void* AllocateOrThrow(std::size_t size) {
  void* const block = Allocate(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void Release(void* block) {
  if (block == nullptr) return;
  --gLive;
  std::free(block);
}

}  // namespace

long LiveBlocks() {
  return gLive;
}

void FailAllocation(long at, bool (*counts)()) {
  gTraffic = AllocationTraffic();
  gAt = at;
  gCounts = counts;
  gOn = true;
}

AllocationTraffic StopFailingAllocations() {
  gOn = false;
  return gTraffic;
}

}  // namespace faults

// What realloc refuses it refuses twice: the library asks for less the second time.
bool RefusesMemory();

bool RefusesMemory() {
  static bool again = false;
  if (again) return !(again = false);
  again = faults::Fails();
  return again;
}

void* operator new(std::size_t size) {
  return faults::AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return faults::AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return faults::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return faults::Allocate(size);
}
void operator delete(void* block) noexcept {
  faults::Release(block);
}
void operator delete[](void* block) noexcept {
  faults::Release(block);
}
void operator delete(void* block, std::size_t) noexcept {
  faults::Release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  faults::Release(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  faults::Release(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  faults::Release(block);
}
