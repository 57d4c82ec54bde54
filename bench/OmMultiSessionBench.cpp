// Sessions on their own threads, each replaying the same stream into its own factory: the
// throughput of two sessions against one. Sessions share nothing that changes, so with two free
// cores two sessions should do nearly twice the work of one in the same wall time; what falls
// short is shared state (a lock, a global, the allocator) or memory bandwidth.
//
// Scaling is a matter of wall time, which other processes on the machine lengthen too, and the
// host's speed drifts within a run. So one- and two-session trials are paired: each pair runs one
// session and then two right after it, the ratio is taken within the pair, and the counter is
// the median of the pairs' ratios. The thread CPU time of every replay is reported beside it:
// when the CPU time per replay stays the same with two sessions while the wall time does not, the
// missing throughput went to other load on the machine, not to contention inside the factory.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <latch>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <sys/resource.h>

#include "bench/OmBenchClock.h"
#include "bench/OmBenchSession.h"
#include "bench/OmBenchStreams.h"
#include "platform/stream/OmStreamReader.h"

namespace {

struct Trial {
  double wallSeconds = 0;
  double cpuSecondsPerReplay = 0;  // the mean over every session's replays
  bool complete = true;            // every replay built the whole table
};

// sessions threads, each making replays fresh sessions and feeding each the whole stream (the
// session made, fed and torn down inside the timing, as a server would run procedures).
Trial RunTrial(const std::vector<std::uint8_t>& bytes, int sessions, int replays,
               std::int64_t cells) {
  std::latch ready(sessions + 1);
  std::vector<double> cpu(std::size_t(sessions), 0.0);
  std::atomic<bool> complete{true};
  std::vector<std::thread> threads;
  for (int s = 0; s < sessions; ++s) {
    threads.emplace_back([&, s] {
      ready.arrive_and_wait();
      const double start = OmThreadSeconds();
      for (int r = 0; r < replays; ++r) {
        OmStreamReader reader(bytes);
        OmBenchSession session({});
        session.Feed(reader);
        if (session.TableCells() != cells) complete = false;
      }
      cpu[std::size_t(s)] = OmThreadSeconds() - start;
    });
  }
  ready.arrive_and_wait();
  const auto start = std::chrono::steady_clock::now();
  for (std::thread& thread : threads) thread.join();
  const auto stop = std::chrono::steady_clock::now();
  Trial trial;
  trial.wallSeconds = std::chrono::duration<double>(stop - start).count();
  double cpuTotal = 0;
  for (double c : cpu) cpuTotal += c;
  trial.cpuSecondsPerReplay = cpuTotal / double(sessions * replays);
  trial.complete = complete;
  return trial;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t n = values.size();
  return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

// Involuntary context switches of the process so far: how often the other load on the machine
// took a core from a session.
long Preemptions() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_nivcsw;
}

// Argument: cells of the stream's one table. Counters: the throughput of one and of two
// sessions (replays per second, best trial each), the median of the pairs' throughput ratios,
// the CPU time of a replay in each (best trial each) and its ratio, which load outside the
// process does not move much; and the preemptions per trial, which say how much it did.
void BM_SessionScaling(benchmark::State& state) {
  const std::int64_t cells = state.range(0);
  const std::vector<std::uint8_t> bytes =
      OmBenchStreams::NumericTable(OmBenchStreams::ShapeFor(cells), {});
  // About a quarter of a second a trial at 10^5 cells.
  const int replays = int(std::max<std::int64_t>(2, 2'000'000 / cells));
  constexpr int kTrials = 7;
  for (auto _ : state) {
    double bestOne = std::numeric_limits<double>::max();
    double bestTwo = std::numeric_limits<double>::max();
    double cpuOne = std::numeric_limits<double>::max();
    double cpuTwo = std::numeric_limits<double>::max();
    RunTrial(bytes, 2, 1, cells);  // warms the allocator's arenas of both threads
    std::vector<double> ratios;
    const long preempted = Preemptions();
    for (int t = 0; t < kTrials; ++t) {
      const Trial one = RunTrial(bytes, 1, replays, cells);
      const Trial two = RunTrial(bytes, 2, replays, cells);
      if (!one.complete || !two.complete) {
        state.SkipWithError("a replay did not build the whole table");
        return;
      }
      ratios.push_back(2.0 * one.wallSeconds / two.wallSeconds);
      bestOne = std::min(bestOne, one.wallSeconds);
      bestTwo = std::min(bestTwo, two.wallSeconds);
      cpuOne = std::min(cpuOne, one.cpuSecondsPerReplay);
      cpuTwo = std::min(cpuTwo, two.cpuSecondsPerReplay);
    }
    const double throughputOne = replays / bestOne;
    const double throughputTwo = 2.0 * replays / bestTwo;
    state.counters["1:replays/s"] = throughputOne;
    state.counters["2:replays/s"] = throughputTwo;
    state.counters["2/1>=1.8"] = Median(ratios);
    state.counters["2/1_best"] = throughputTwo / throughputOne;
    state.counters["cpu2/cpu1"] = cpuTwo / cpuOne;
    state.counters["preempt/trial"] = double(Preemptions() - preempted) / (2.0 * kTrials);
    state.counters["1:cpu_ms"] = cpuOne * 1e3;
    state.counters["2:cpu_ms"] = cpuTwo * 1e3;
    state.SetIterationTime(bestTwo);
  }
}

BENCHMARK(BM_SessionScaling)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
