#include "platform/outputmodel/OmMemoryRegion.h"

OmMemoryRegion* OmMemoryRegion::DefaultHeap() {
  // Each thread's own: sessions on other threads clone cells all the time, and a shared counter
  // would be a data race (or, made atomic, a cache line they fight over).
  thread_local OmMemoryRegion heap;
  return &heap;
}
