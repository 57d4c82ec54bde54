// Imputation pooling of a "Means" report: groups x statistics cells for each of the original data
// and m imputations, pooled into a "Pooled" category by OmMIPooler as the end of a procedure does.
// The cost per (pooled cell x imputation) should not depend on the number of cells or of
// imputations; BM_PoolingTargets measures both ratios in one run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <memory>
#include <string>

#include "backend/omfactory/pooling/OmMIPooler.h"
#include "bench/OmBenchClock.h"
#include "platform/mipool/MiOutputSettings.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmVariable.h"

namespace {

// F, width 40: two decimals for statistics, none for counts and imputation numbers.
constexpr std::uint32_t kTwoDecimals = 0x2050028;
constexpr std::uint32_t kNoDecimals = 0x50028;
constexpr const char* kStatistics[] = {"Mean", "Std. Error of Mean", "N"};
constexpr int kNStatistics = 3;

// Groups x (Mean, Std. Error of Mean, N) x imputations 0 .. m, every cell a number.
std::unique_ptr<OmPivotTable> MeansReport(int groups, int imputations) {
  auto table = std::make_unique<OmPivotTable>(OmStringCell("Report"), OmStringCell("Report"));
  table->SetTableTitle(OmStringCell("Report"));
  const int g = table->AddDimension(OmStringCell("Group"));
  const int s = table->AddDimension(OmStringCell("Statistics"));
  const int m = table->AddDimension(OmVariable("Imputation_", "Imputation Number"));
  for (int i = 0; i < groups; ++i) {
    OmDimension& dim = table->Dimension(g);
    dim.Child(&dim.Root(), -1, OmStringCell("Group " + std::to_string(i + 1)), false);
  }
  for (const char* statistic : kStatistics) {
    OmDimension& dim = table->Dimension(s);
    dim.Child(&dim.Root(), -1, OmStringCell(statistic), false);
  }
  for (int i = 0; i <= imputations; ++i) {
    OmDimension& dim = table->Dimension(m);
    dim.Child(&dim.Root(), -1, OmNumDataValue("Imputation_", "", double(i), kNoDecimals), false);
  }
  for (int i = 0; i < groups; ++i) {
    for (int k = 0; k <= imputations; ++k) {
      const double shift = double(k % 7) * 0.125;
      table->Cell({i, 0, k}, std::make_unique<OmNumber>(10.0 + i * 0.01 + shift, kTwoDecimals));
      table->Cell({i, 1, k}, std::make_unique<OmNumber>(0.5 + shift * 0.1, kTwoDecimals));
      table->Cell({i, 2, k}, std::make_unique<OmNumber>(100.0, kNoDecimals));
    }
  }
  return table;
}

// Seconds to pool one freshly built report; the build is not timed.
double TimePooling(int groups, int imputations, std::size_t* cellsAfter) {
  std::unique_ptr<OmPivotTable> table = MeansReport(groups, imputations);
  const OmStringCell procedure("Means", true);
  OmMIPooler pooler(&procedure, nullptr, true, true, true, false);
  const double start = OmThreadSeconds();
  pooler.Visit(*table);
  const double stop = OmThreadSeconds();
  if (cellsAfter != nullptr) *cellsAfter = table->NCells();
  return stop - start;
}

// A regression's "Coefficients": terms x (B, Std. Error, t, Significance, and the two bounds of
// the "95% Confidence Interval for B" group) x imputations 0 .. m. All terms of a model pool
// together, so this is the one pattern whose work could grow faster than its cells.
std::unique_ptr<OmPivotTable> Coefficients(int terms, int imputations) {
  auto table = std::make_unique<OmPivotTable>(OmStringCell("Coefficients"),
                                              OmStringCell("Coefficients"));
  table->SetTableTitle(OmStringCell("Coefficients"));
  const int v = table->AddDimension(OmStringCell("Variables"));
  const int s = table->AddDimension(OmStringCell("Statistics"));
  const int m = table->AddDimension(OmVariable("Imputation_", "Imputation Number"));
  {
    OmDimension& dim = table->Dimension(v);
    dim.Child(&dim.Root(), -1, OmStringCell("(Constant)"), false);
    for (int t = 1; t < terms; ++t) {
      std::string name = "x";
      name += std::to_string(t);  // not "x" + ...: GCC 12 warns falsely (-Wrestrict) on that
      dim.Child(&dim.Root(), -1, OmVariable(name, ""), false);
    }
  }
  {
    OmDimension& dim = table->Dimension(s);
    for (const char* statistic : {"B", "Std. Error", "t", "Significance"}) {
      dim.Child(&dim.Root(), -1, OmStringCell(statistic), false);
    }
    OmComposite label("^1 Confidence Interval for B", false);
    label.Add(OmNumber(95.0));
    OmDimension::Node group = dim.Child(&dim.Root(), -1, label, true);
    dim.Child(group, -1, OmStringCell("Lower Bound"), false);
    dim.Child(group, -1, OmStringCell("Upper Bound"), false);
  }
  for (int i = 0; i <= imputations; ++i) {
    OmDimension& dim = table->Dimension(m);
    dim.Child(&dim.Root(), -1, OmNumDataValue("Imputation_", "", double(i), kNoDecimals), false);
  }
  for (int t = 0; t < terms; ++t) {
    for (int i = 0; i <= imputations; ++i) {
      const double b = 1.0 + t * 0.001 + double((i * 37 + t) % 11) * 0.01;
      const double se = 0.2 + double((i * 13 + t) % 7) * 0.01;
      const double values[] = {b, se, b / se, 0.01, b - 1.96 * se, b + 1.96 * se};
      for (int st = 0; st < 6; ++st) {
        table->Cell({t, st, i}, std::make_unique<OmNumber>(values[st], kTwoDecimals));
      }
    }
  }
  return table;
}

// Pooling settings of a run that shows everything, restored afterwards.
class AllOutput {
public:
  AllOutput() {
    MiOutputSettings(_pooled, _observed, _imputed, _diagnostics);
    SetMiOutputSettings(true, true, true, false);
  }
  ~AllOutput() { SetMiOutputSettings(_pooled, _observed, _imputed, _diagnostics); }

private:
  bool _pooled = true, _observed = true, _imputed = true, _diagnostics = true;
};

// Arguments: pooled cells (groups x 3 statistics), imputations.
void BM_ImputationPooling(benchmark::State& state) {
  AllOutput output;
  const int groups = int(state.range(0) / kNStatistics);
  const int imputations = int(state.range(1));
  const std::int64_t pooledCells = std::int64_t(groups) * kNStatistics;
  const std::size_t expected = std::size_t(pooledCells) * std::size_t(imputations + 2);
  const double best = BestIterationSeconds(state, [&](std::string& error) {
    std::size_t cells = 0;
    const double seconds = TimePooling(groups, imputations, &cells);
    if (cells == expected) return seconds;
    error = "pooled table holds " + std::to_string(cells) + " cells";
    return -1.0;
  });
  state.SetItemsProcessed(state.iterations() * pooledCells);
  state.counters["ns/cell/imp"] = best * 1e9 / double(pooledCells * imputations);
}

double BestOf(int rounds, int groups, int imputations) {
  double best = std::numeric_limits<double>::max();
  for (int r = 0; r < rounds; ++r) best = std::min(best, TimePooling(groups, imputations, nullptr));
  return best / (double(groups) * kNStatistics * imputations);
}

// Cost per pooled cell and imputation: 10x the cells, and 10x the imputations, against the base.
void BM_PoolingTargets(benchmark::State& state) {
  AllOutput output;
  for (auto _ : state) {
    const double base = BestOf(5, 3'333, 5);
    const double manyCells = BestOf(3, 33'333, 5);
    const double manyImputations = BestOf(3, 3'333, 50);
    state.counters["cells10x<=1.5"] = manyCells / base;
    state.counters["imps10x<=1.5"] = manyImputations / base;
    state.SetIterationTime(base * 3'333 * kNStatistics * 5);
  }
}

// The numbers of a pooling of 1,000 groups' means x 5 imputations, written for
// bench/r_reference.sh when OMF_BENCH_EXPORT names a folder: mi.txt, one group a line (the
// imputations' means Q, then their variances U, the squared standard errors), and
// factory_mi.txt, the factory's best time per group pooling the whole report.
void BM_ImputationPoolingForR(benchmark::State& state) {
  AllOutput output;
  constexpr int kGroups = 1'000;
  constexpr int kImputations = 5;
  double best = std::numeric_limits<double>::max();
  for (auto _ : state) {
    const double seconds = TimePooling(kGroups, kImputations, nullptr);
    state.SetIterationTime(seconds);
    best = std::min(best, seconds);
  }
  state.counters["ns/group"] = best * 1e9 / kGroups;
  const char* folder = std::getenv("OMF_BENCH_EXPORT");
  if (folder == nullptr) return;
  const std::unique_ptr<OmPivotTable> table = MeansReport(kGroups, kImputations);
  const auto value = [&](int group, int statistic, int imputation) {
    const auto* number = dynamic_cast<const OmNumber*>(table->Cell({group, statistic, imputation}));
    return number ? number->Value() : 0.0;
  };
  std::ofstream numbers(std::string(folder) + "/mi.txt");
  numbers.precision(17);
  for (int g = 0; g < kGroups; ++g) {
    for (int k = 1; k <= kImputations; ++k) numbers << value(g, 0, k) << ' ';
    for (int k = 1; k <= kImputations; ++k) {
      const double se = value(g, 1, k);
      numbers << se * se << (k == kImputations ? '\n' : ' ');
    }
  }
  std::ofstream factory(std::string(folder) + "/factory_mi.txt");
  factory.precision(17);
  factory << "groups " << kGroups << "\nimputations " << kImputations << "\nns_per_group "
          << best * 1e9 / kGroups << '\n';
  if (!numbers || !factory) state.SkipWithError("the numbers could not be written");
}

// Arguments: terms, imputations.
void BM_CoefficientsPooling(benchmark::State& state) {
  AllOutput output;
  const int terms = int(state.range(0));
  const int imputations = int(state.range(1));
  const double best = BestIterationSeconds(state, [&](std::string& error) {
    std::unique_ptr<OmPivotTable> table = Coefficients(terms, imputations);
    const OmStringCell procedure("Regression", true);
    OmMIPooler pooler(&procedure, nullptr, true, true, true, false);
    const double start = OmThreadSeconds();
    pooler.Visit(*table);
    const double seconds = OmThreadSeconds() - start;
    // The pooled model is one more imputation category, filled for every term.
    if (table->Size(2) == imputations + 2 && table->Cell({terms - 1, 0, imputations + 1})) {
      return seconds;
    }
    error = "the coefficients were not pooled";
    return -1.0;
  });
  state.SetItemsProcessed(state.iterations() * terms);
  state.counters["ns/term/imp"] = best * 1e9 / double(terms) / double(imputations);
}

BENCHMARK(BM_CoefficientsPooling)
    ->Args({1'000, 5})
    ->Args({1'000, 50})
    ->Args({10'000, 5})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ImputationPooling)
    ->Args({9'999, 5})
    ->Args({99'999, 5})
    ->Args({9'999, 50})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PoolingTargets)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ImputationPoolingForR)->Iterations(20)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
