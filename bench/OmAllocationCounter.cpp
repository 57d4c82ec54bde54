#include "bench/OmAllocationCounter.h"

#include <malloc.h>

#include <cstdlib>
#include <new>

namespace {

// One thread drives every benchmark; plain counters suffice.
bool gCounting = false;
std::int64_t gLive = 0;
std::int64_t gPeak = 0;
std::int64_t gAllocations = 0;

void* Allocate(std::size_t size) {
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  if (gCounting) {
    gLive += std::int64_t(malloc_usable_size(block));
    if (gLive > gPeak) gPeak = gLive;
    ++gAllocations;
  }
  return block;
}

void Release(void* block) {
  if (block == nullptr) return;
  if (gCounting) gLive -= std::int64_t(malloc_usable_size(block));
  std::free(block);
}

}  // namespace

void OmAllocationCounter::Start() {
  gLive = 0;
  gPeak = 0;
  gAllocations = 0;
  gCounting = true;
}

void OmAllocationCounter::Stop() { gCounting = false; }

std::int64_t OmAllocationCounter::LiveBytes() { return gLive; }
std::int64_t OmAllocationCounter::PeakBytes() { return gPeak; }
std::int64_t OmAllocationCounter::Allocations() { return gAllocations; }

// The replaceable forms that every other form of new and delete falls back on (over-aligned
// allocations excepted: nothing in the factory asks for them).
void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void operator delete(void* block) noexcept { Release(block); }
void operator delete[](void* block) noexcept { Release(block); }
void operator delete(void* block, std::size_t) noexcept { Release(block); }
void operator delete[](void* block, std::size_t) noexcept { Release(block); }
