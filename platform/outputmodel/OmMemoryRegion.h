// Where cloned cell texts are said to live. The server's regions pool many small objects; this
// stand-in allocates every clone on the ordinary heap and only counts what each region was asked
// for, so any cell, whatever its region, is released by deleting it.
#pragma once

#include <cstdint>

class OmMemoryRegion {
public:
  OmMemoryRegion() = default;
  OmMemoryRegion(const OmMemoryRegion&) = delete;
  OmMemoryRegion& operator=(const OmMemoryRegion&) = delete;

  // The region used when a clone names none: this thread's.
  static OmMemoryRegion* DefaultHeap();

  // How many clones were made into this region.
  std::uint64_t Allocations() const { return _allocations; }
  void Count() { ++_allocations; }

private:
  std::uint64_t _allocations = 0;
};
