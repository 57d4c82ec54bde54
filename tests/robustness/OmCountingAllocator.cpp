#include "tests/robustness/OmCountingAllocator.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> gAllocations{0};
std::atomic<std::size_t> gLiveBytes{0};
// The allocation count at which to throw; 0 when disarmed.
std::atomic<std::size_t> gFailAt{0};
std::atomic<bool> gFailed{false};
std::atomic<bool> gFailedQuietly{false};
// The allocation counts at which to call gHook, from the next one on.
const std::size_t* gPoints = nullptr;
const std::size_t* gPointsEnd = nullptr;
bool (*gHook)() = nullptr;

void* Allocate(std::size_t size) {
  const std::size_t n = ++gAllocations;
  std::size_t failAt = gFailAt.load();
  if (failAt != 0 && n == failAt && gFailAt.compare_exchange_strong(failAt, 0)) {
    gFailed = true;
    throw std::bad_alloc();
  }
  if (gPoints != gPointsEnd && n == *gPoints) {
    ++gPoints;
    if (gHook()) {
      gPoints = gPointsEnd = nullptr;
      gFailed = true;
      throw std::bad_alloc();
    }
  }
  void* p = std::malloc(size == 0 ? 1 : size);
  if (p == nullptr) throw std::bad_alloc();
  gLiveBytes += malloc_usable_size(p);
  return p;
}

void Free(void* p) noexcept {
  if (p == nullptr) return;
  gLiveBytes -= malloc_usable_size(p);
  std::free(p);
}

}  // namespace

namespace robustness {

void CountingAllocator::FailAt(std::size_t n) {
  gFailed = false;
  gFailedQuietly = false;
  gFailAt = n == 0 ? 0 : gAllocations.load() + n;
}
void CountingAllocator::Disarm() { gFailAt = 0; }
void CountingAllocator::CallAt(const std::size_t* points, std::size_t n, bool (*hook)()) {
  if (n > 0) {
    gFailed = false;
    gFailedQuietly = false;
  }
  gPoints = points;
  gPointsEnd = points + n;
  gHook = hook;
}
bool CountingAllocator::Failed() { return gFailed; }
bool CountingAllocator::FailedQuietly() { return gFailedQuietly; }
std::size_t CountingAllocator::Allocations() { return gAllocations; }
std::size_t CountingAllocator::LiveBytes() { return gLiveBytes; }

}  // namespace robustness

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return Allocate(size);
  } catch (const std::bad_alloc&) {
    gFailedQuietly = true;
    return nullptr;
  }
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  return operator new(size, tag);
}
void operator delete(void* p) noexcept { Free(p); }
void operator delete[](void* p) noexcept { Free(p); }
void operator delete(void* p, std::size_t) noexcept { Free(p); }
void operator delete[](void* p, std::size_t) noexcept { Free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Free(p); }
