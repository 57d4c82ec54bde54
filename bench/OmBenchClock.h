// The clock the benchmarks time themselves with: CPU time of the calling thread, so that other
// processes sharing the machine's cores lengthen the wall time of a run but not its figures.
#pragma once

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <limits>
#include <string>

inline double OmThreadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

// Runs state's iterations, each timing one call of timeOnce: it gives the seconds it measured,
// or a negative value when what it made is wrong, which ends the run with the text it left in
// error. Gives the best seconds seen.
template <typename TimeOnce>
double BestIterationSeconds(benchmark::State& state, TimeOnce timeOnce) {
  double best = std::numeric_limits<double>::max();
  for (auto _ : state) {
    std::string error;
    const double seconds = timeOnce(error);
    if (seconds < 0) {
      state.SkipWithError(error.c_str());
      break;
    }
    state.SetIterationTime(seconds);
    best = std::min(best, seconds);
  }
  return best;
}
