// The clock the benchmarks time themselves with: CPU time of the calling thread, so that other
// processes sharing the machine's cores lengthen the wall time of a run but not its figures.
#pragma once

#include <time.h>

inline double OmThreadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}
