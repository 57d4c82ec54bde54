// A global operator new for test programs that counts allocations and live bytes and can be armed
// to throw std::bad_alloc at the n-th allocation from now: failure injection and memory growth
// checks without a special build. Linked into a test program, it replaces new for all of it.
#pragma once

#include <cstddef>

namespace robustness {

class CountingAllocator {
 public:
  // The next n-th allocation (1 = the very next) throws std::bad_alloc, once; 0 arms nothing.
  // Either way Failed turns false.
  static void FailAt(std::size_t n);
  static void Disarm();
  // Calls hook at each allocation whose count since the program started is in points[0, n)
  // (ascending, kept by the caller until the next call); when the hook returns true that
  // allocation throws std::bad_alloc, as an armed one does, and the points after it are dropped.
  // With points, Failed turns false. The hook must not allocate. A hook that forks and returns
  // true in the child fails the allocation there: the child goes on from the failure with no
  // replay of what came before it.
  static void CallAt(const std::size_t* points, std::size_t n, bool (*hook)());
  // Whether the armed failure has happened since FailAt.
  static bool Failed();
  // Whether that failure was a nothrow allocation's, answered with a null pointer (as
  // std::stable_sort asks for its buffer, doing without one when refused).
  static bool FailedQuietly();
  // Allocations since the program started.
  static std::size_t Allocations();
  // Bytes allocated and not yet freed (as the C library sizes the blocks).
  static std::size_t LiveBytes();
};

}  // namespace robustness
