// Counts the heap bytes that the benchmark binary holds while counting is on, through its own
// global operator new and delete, so that a benchmark can report the memory a built table costs
// per cell. Counting is off by default: timed runs pay only a flag test per allocation.
#pragma once

#include <cstdint>

class OmAllocationCounter {
public:
  // Starts counting from zero: live and peak bytes are relative to this moment.
  static void Start();
  // Stops counting; the figures stay readable until the next Start.
  static void Stop();

  // Bytes allocated and not yet freed since Start (blocks freed that were allocated before Start
  // make it smaller), and the highest it reached. Sizes are the allocator's usable sizes, so
  // rounding and small-block minimums count.
  static std::int64_t LiveBytes();
  static std::int64_t PeakBytes();
  // Allocations made since Start.
  static std::int64_t Allocations();
};
