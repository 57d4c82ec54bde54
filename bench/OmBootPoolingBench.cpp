// Bootstrap pooling of a "Descriptive Statistics" table of a bootstrapped Descriptives procedure:
// variables x 7 statistics x bootstrap split 0 .. B, pooled by OmBootPooler as the end of the
// procedure does (replicate nodes pruned, the table visited). Percentile intervals without a
// jackknife list, BCa intervals with one. The cost per (statistics cell x replicate) should not
// depend on the number of cells or of replicates; BM_BootPoolingTargets measures both spreads.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "backend/omfactory/pooling/OmBootPooler.h"
#include "bench/OmBenchClock.h"
#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmOutputTree.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmVariable.h"

namespace {

constexpr std::uint32_t kTwoDecimals = 0x2050028;
constexpr std::uint32_t kNoDecimals = 0x50028;
constexpr const char* kStatistics[] = {"Mean",     "Std. Deviation", "Variance", "Median",
                                       "Skewness", "Kurtosis",       "N"};
constexpr int kNStatistics = 7;
// Jackknife samples of a BCa run: split categories B + 1 ... B + kJackknife.
constexpr int kJackknife = 100;

struct BootOutput {
  OmOutputTree list;
  OmOutputTree::Node procedure;
  OmPivotTable* table = nullptr;
  SvrBootstrapSpecs specs;
};

// The procedure "Descriptives" holding one table of variables x statistics x split 0 .. B, every
// cell a number that varies with the replicate. With bca, kJackknife more split categories and a
// jackknife list make the intervals BCa.
std::unique_ptr<BootOutput> Bootstrapped(int variables, int replicates, bool bca) {
  auto out = std::make_unique<BootOutput>();
  out->procedure = out->list.AppendUnderRoot(
      std::make_unique<OmProcedure>(OmStringCell("Descriptives"), "English", "UTF-8", "en_US"));
  auto table = std::make_unique<OmPivotTable>(OmStringCell("Descriptive Statistics"),
                                              OmStringCell("Descriptive Statistics"));
  table->SetTableTitle(OmStringCell("Descriptive Statistics"));
  const int v = table->AddDimension(OmStringCell("Variables"));
  const int s = table->AddDimension(OmStringCell("Statistics"));
  const int k = table->AddDimension(OmVariable("$bootstrap_split", ""));
  for (int i = 0; i < variables; ++i) {
    OmDimension& dim = table->Dimension(v);
    std::string name = "v";
    name += std::to_string(i + 1);  // not "v" + ...: GCC 12 warns falsely (-Wrestrict) on that
    dim.Child(&dim.Root(), -1, OmStringCell(name), false);
  }
  for (const char* statistic : kStatistics) {
    OmDimension& dim = table->Dimension(s);
    dim.Child(&dim.Root(), -1, OmStringCell(statistic), false);
  }
  const int last = replicates + (bca ? kJackknife : 0);
  for (int r = 0; r <= last; ++r) {
    OmDimension& dim = table->Dimension(k);
    dim.Child(&dim.Root(), -1, OmNumDataValue("$bootstrap_split", "", double(r), kNoDecimals),
              false);
  }
  table->Rows().push_back(short(v));
  table->Columns().push_back(short(s));
  table->Layers().push_back(short(k));
  for (int i = 0; i < variables; ++i) {
    for (int st = 0; st < kNStatistics; ++st) {
      for (int r = 0; r <= last; ++r) {
        // A spread that differs per cell, so that sorting the replicates does real work.
        const double value = 10.0 + i * 0.01 + st + double((r * 7919 + i * 31 + st) % 1000) * 1e-3;
        // Stored as IPC_CELL stores a plain number: compact, without a cell object.
        table->Number({i, st, r}, st == 6 ? 100.0 : value, st == 6 ? kNoDecimals : kTwoDecimals,
                      nullptr);
      }
    }
  }
  out->table = table.get();
  out->list.Append(out->procedure, std::move(table));
  out->specs.SetNSamples(unsigned(replicates));
  out->specs.SetCILevelPct(95.0);
  if (bca) {
    // One stratum: one range of kJackknife jackknife samples after the bootstrap samples.
    out->specs.SetJackknifeBoundaries({std::uint32_t(kJackknife)});
    std::vector<SvrBootstrapSpecs::JackknifeEntry> jackknife(static_cast<std::size_t>(kJackknife));
    for (auto& entry : jackknife) entry.value = 1.0;
    out->specs.SetJackknifeList(std::move(jackknife));
  }
  return out;
}

// Seconds to pool a freshly built procedure output; the build is not timed. Sets *pooled when
// the table came out pooled (a fourth dimension, one split category left).
double TimePooling(int variables, int replicates, bool bca, bool* pooled) {
  std::unique_ptr<BootOutput> out = Bootstrapped(variables, replicates, bca);
  const OmCellText* name = out->procedure.Value()->Label();
  const double start = OmThreadSeconds();
  OmBootPooler pooler(name, out->list, &out->specs);
  out->table->Accept(pooler);
  const double stop = OmThreadSeconds();
  if (pooled != nullptr) {
    *pooled = out->table->NDimensions() == 4 && out->table->Dimension(2).Root().NChildren() == 1;
  }
  return stop - start;
}

// Arguments: statistics cells (variables x 7), replicates B, BCa (1) or percentile (0).
void BM_BootstrapPooling(benchmark::State& state) {
  const int variables = int(state.range(0) / kNStatistics);
  const int replicates = int(state.range(1));
  const bool bca = state.range(2) != 0;
  const std::int64_t cells = std::int64_t(variables) * kNStatistics;
  const double best = BestIterationSeconds(state, [&](std::string& error) {
    bool pooled = false;
    const double seconds = TimePooling(variables, replicates, bca, &pooled);
    if (pooled) return seconds;
    error = "the table was not pooled";
    return -1.0;
  });
  state.SetItemsProcessed(state.iterations() * cells);
  state.counters["ns/cell/rep"] = best * 1e9 / double(cells * replicates);
}

double BestOf(int rounds, int variables, int replicates, bool bca = true) {
  double best = std::numeric_limits<double>::max();
  for (int r = 0; r < rounds; ++r) {
    best = std::min(best, TimePooling(variables, replicates, bca, nullptr));
  }
  return best / (double(variables) * kNStatistics * replicates);
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t n = values.size();
  return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

// Cost per statistics cell and replicate: percentile and BCa at 10^4 cells x 1,000 replicates,
// and the BCa cost at 10^5 and 10^3 cells (200 replicates) and at 5,000 and 200 replicates (10^3
// cells), as ratios that should not exceed 1.5. Fewer replicates cost more per replicate: the 100
// jackknife cells and the per-statistic work are shared by fewer of them. The host's speed drifts
// within a run, so the ratios are taken in rounds that time both sides back to back, and the
// counters give the median of the rounds' ratios.
void BM_BootPoolingTargets(benchmark::State& state) {
  constexpr int kRounds = 3;
  for (auto _ : state) {
    const double percentile = BestOf(2, 1'429, 1'000, false);
    const double bca = BestOf(2, 1'429, 1'000);
    std::vector<double> cells, reps, small, large, longer;
    for (int r = 0; r < kRounds; ++r) {
      const double cells3 = BestOf(3, 143, 200);
      const double cells5 = BestOf(1, 14'286, 200);
      const double reps5000 = BestOf(1, 143, 5'000);
      cells.push_back(cells5 / cells3);
      reps.push_back(reps5000 / cells3);
      small.push_back(cells3);
      large.push_back(cells5);
      longer.push_back(reps5000);
    }
    state.counters["perc_ns<=60"] = percentile * 1e9;
    state.counters["bca_ns<=60"] = bca * 1e9;
    state.counters["cells1e5/1e3<=1.5"] = Median(cells);
    state.counters["reps5000/200<=1.5"] = Median(reps);
    state.counters["ns_1e3x200"] = Median(small) * 1e9;
    state.counters["ns_1e5x200"] = Median(large) * 1e9;
    state.counters["ns_1e3x5000"] = Median(longer) * 1e9;
    state.SetIterationTime(bca * 1'429 * kNStatistics * 1'000);
  }
}

// The numbers of a percentile pooling of 1,001 statistics x 1,000 replicates, written for
// bench/r_reference.sh when OMF_BENCH_EXPORT names a folder: boot.txt, one statistic a line
// (its estimate, then its replicates), and factory_boot.txt, the factory's best time per
// statistic pooling them, so that R's time on the same numbers can be set beside it.
void BM_BootPoolingForR(benchmark::State& state) {
  constexpr int kVariables = 143;
  constexpr int kReplicates = 1'000;
  constexpr double kStatisticsCells = double(kVariables) * kNStatistics;
  double best = std::numeric_limits<double>::max();
  for (auto _ : state) {
    bool pooled = false;
    const double seconds = TimePooling(kVariables, kReplicates, false, &pooled);
    if (!pooled) {
      state.SkipWithError("the table was not pooled");
      return;
    }
    state.SetIterationTime(seconds);
    best = std::min(best, seconds);
  }
  state.counters["ns/statistic"] = best * 1e9 / kStatisticsCells;
  const char* folder = std::getenv("OMF_BENCH_EXPORT");
  if (folder == nullptr) return;
  std::unique_ptr<BootOutput> out = Bootstrapped(kVariables, kReplicates, false);
  std::ofstream numbers(std::string(folder) + "/boot.txt");
  numbers.precision(17);
  for (int v = 0; v < kVariables; ++v) {
    for (int st = 0; st < kNStatistics; ++st) {
      for (int r = 0; r <= kReplicates; ++r) {
        const auto* number = dynamic_cast<const OmNumber*>(out->table->Cell({v, st, r}));
        numbers << (r == 0 ? "" : " ") << (number ? number->Value() : 0.0);
      }
      numbers << '\n';
    }
  }
  std::ofstream factory(std::string(folder) + "/factory_boot.txt");
  factory.precision(17);
  factory << "statistics " << kStatisticsCells << "\nreplicates " << kReplicates
          << "\nns_per_statistic " << best * 1e9 / kStatisticsCells << '\n';
  if (!numbers || !factory) state.SkipWithError("the numbers could not be written");
}

BENCHMARK(BM_BootstrapPooling)
    ->ArgNames({"cells", "reps", "bca"})
    ->Args({10'003, 1'000, 0})
    ->Args({10'003, 1'000, 1})
    ->Iterations(2)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BootPoolingTargets)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BootPoolingForR)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
