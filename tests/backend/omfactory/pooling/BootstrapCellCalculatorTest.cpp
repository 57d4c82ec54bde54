// The results of one bootstrapped cell: the result group a writer adds, the footnotes and
// formats it writes, the replicates the collector gathers and what the calculator makes of them.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "PoolingTables.h"
#include "backend/omfactory/pooling/BootstrapCellCalculator.h"
#include "backend/omfactory/pooling/BootstrapResultWriter.h"
#include "backend/omfactory/pooling/OmBootCalculator.h"
#include "backend/omfactory/pooling/ReplicateCollector.h"
#include "backend/omfactory/pooling/ReplicateValues.h"

namespace {

using namespace pooltest;
using Texts = std::vector<std::string>;

// "Statistics" (Mean, Std. Error: dimension 0) x "Var" (a, b) x split 0 .. samples.
struct StatTable : TableBuilder {
  explicit StatTable(int samples) : TableBuilder("Descriptive Statistics") {
    Dim("Statistics", {"Mean", "Std. Error"});
    Dim("Var", {"a", "b"});
    split = SplitDim(samples);
  }
  // A writer of results into the statistics dimension.
  std::unique_ptr<BootstrapResultWriter> Writer(unsigned samples, double level = 95.0, bool hasStdError = false,
                                                bool hasJackknife = false, bool sigOnly = false) {
    return std::make_unique<BootstrapResultWriter>(level, **this, 0, OmStringCell("Bootstrap", true),
                                                   "bootstrap samples", samples, hasStdError, hasJackknife, sigOnly);
  }
  int split = 0;
};

TEST(BootstrapResultWriterTest, SignificanceOnlyAddsOneCategoryAndWritesEvenAnUncomputableValue) {
  StatTable t(3);
  const auto writer = t.Writer(3, 95.0, true, false, true);
  EXPECT_EQ(Labels(t->Dimension(0)), (Texts{"Mean", "Std. Error", "Bootstrap", "Sig. (2-tailed)"}));
  EXPECT_EQ(writer->SignificanceCategory(), 2);
  writer->Write({0, 1, 0}, 3, false, 0.5, 0.5, -1.0, 0.0, 1.0);
  EXPECT_EQ(NumberAt(*t, {2, 1, 0}).Value(), -1.0);
  EXPECT_EQ(NumberAt(*t, {2, 1, 0}).Format(), BootstrapResultWriter::kSignificanceFormat);
  EXPECT_EQ(t->NCells(), 1u);
}

TEST(BootstrapResultWriterTest, FootnotesQualifyOnlyTheCellsTheyConcern) {
  StatTable t(3);
  t.Number({0, 0, 0}, 1.5, 0x3050008);
  const auto writer = t.Writer(1000, 97.5, true, true);
  // 10 replicates, no interval, no jackknife range for this cell.
  writer->Write({0, 0, 0}, 10, false, 0.1, 0.2, 0.3, kSysMiss, kSysMiss);
  const std::string based = "Based on 10 samples", coverage = "97.5% coverage needs 79 samples...";
  const std::pair<int, Texts> notes[] = {
      {writer->BiasCategory(), {based}},
      {writer->StandardErrorCategory(), {based}},
      {writer->LowerCategory(), {based, coverage, "Not all jackknife results available, so..."}},
      {writer->UpperCategory(), {based, coverage}},
      {writer->SignificanceCategory(), {based}}};
  for (const auto& [category, texts] : notes) EXPECT_EQ(NotesAt(*t, {category, 0, 0}), texts) << category;
  // A BCa interval without its jackknife is left empty, and the table says results are missing.
  writer->Write({0, 1, 0}, 1000, false, 0.1, 0.2, 0.0, 0.5, 0.9);
  EXPECT_EQ(NumberAt(*t, {writer->UpperCategory(), 1, 0}).Value(), kSysMiss);
  EXPECT_EQ(NumberAt(*t, {writer->SignificanceCategory(), 1, 0}).Value(), 0.0);  // no sample crossed
  EXPECT_EQ(NotesOf(*t, t->Label()), Texts{"Not all bootstrap results available..."});
  // Results take the statistic's format, the significance its own.
  EXPECT_EQ(NumberAt(*t, {writer->BiasCategory(), 0, 0}).Format(), 0x3050008u);
  EXPECT_EQ(NumberAt(*t, {writer->LowerCategory(), 0, 0}).Value(), kSysMiss);
  EXPECT_EQ(NumberAt(*t, {writer->SignificanceCategory(), 0, 0}).Format(), BootstrapResultWriter::kSignificanceFormat);
}

TEST(OmBootCalculatorTest, InconsistentListsAreSizeMismatches) {
  const std::vector<double> replicates{1.0, 2.0, 3.0}, errors{1.0}, none;
  const OmBootCalculator::JackknifeList jackknife(2);
  struct Case { const std::vector<double>& errors; std::uint32_t start, end; int v1, v2; };
  const Case cases[] = {{errors, 0, 0, 1, 3}, {none, 3, 3, 3, 2}, {none, 0, 5, 5, 2}};
  for (const Case& c : cases) {
    EXPECT_EQ(ErrorOf([&] { OmBootCalculator(replicates, c.errors, none, jackknife, c.start, c.end, 2.0, kSysMiss); }),
              "OmBootCalculator::OmBootCalculator -- size mismatch, value 1 == " + std::to_string(c.v1) +
                  ", value 2 == " + std::to_string(c.v2));
  }
}

TEST(OmBootCalculatorTest, AMissingReplicateLeavesEveryResultUncomputable) {
  const std::vector<double> replicates{1.0, kSysMiss, 3.0}, errors{0.5, 0.5, 0.5}, none;
  const OmBootCalculator::JackknifeList jackknife;  // borrowed: outlives the calculator
  const OmBootCalculator calc(replicates, errors, none, jackknife, 0, 0, 2.0, 0.5);
  EXPECT_EQ(calc.Bias(), kSysMiss);
  EXPECT_EQ(calc.StandardError(), kSysMiss);
  EXPECT_EQ(calc.ConfidenceInterval(95.0), std::make_pair(kSysMiss, kSysMiss));
  EXPECT_EQ(calc.Significance(2, 0.0), -1.0);
}

TEST(BootstrapCellCalculatorTest, ZeroFillCountsMissingReplicatesAsZero) {
  StatTable t(1000);
  t.Replicates({0, 0, 0}, t.split, 990, [](int k) { return double(k); });  // 991 .. 1000 missing
  const SvrBootstrapSpecs specs = Specs(1000);
  BootstrapCellCalculator calc(specs, *t, t.Writer(1000), t.split, {});
  calc.ComputeCell({0, 0, 0}, {}, true);
  const OmPivotTable::Coordinates bias{calc.Writer().BiasCategory(), 0, 0};
  EXPECT_TRUE(NotesAt(*t, bias).empty());
  // (1 + ... + 990) / 1000 - 0
  EXPECT_DOUBLE_EQ(NumberAt(*t, bias).Value(), 990.0 * 991.0 / 2.0 / 1000.0);
}

TEST(ReplicateCollectorTest, AReplicateThatLacksARequiredCellIsLeftOutForTheWholeBlock) {
  TableBuilder b("Coefficients");
  b.Dim("Statistics", {"B"});
  const int params = b.Dim("Parameter", {"p1", "p2"});
  const int split = b.SplitDim(3);
  for (int p = 0; p < 2; ++p) {
    b.Replicates({0, p, 0}, split, 3, [p](int k) { return p == 1 && k == 2 ? kSysMiss : 1.0 + k; });
  }
  ReplicateCollector masked(*b, split, 3, 0, {}, {params});
  ASSERT_TRUE(masked.Collect({0, 0, 0}, {}));
  EXPECT_EQ(masked.Replicates(), (std::vector<double>{2.0, 4.0}));
  ReplicateCollector unmasked(*b, split, 3, 0, {}, {});
  ASSERT_TRUE(unmasked.Collect({0, 0, 0}, {}));
  EXPECT_EQ(unmasked.Replicates(), (std::vector<double>{2.0, 3.0, 4.0}));
  // A system-missing original makes the replicates that hold a value there unusable.
  b.Number({0, 1, 0}, kSysMiss);
  b.Number({0, 1, 2}, 9.0);
  ReplicateCollector fresh(*b, split, 3, 0, {}, {params});
  ASSERT_TRUE(fresh.Collect({0, 0, 0}, {}));
  EXPECT_TRUE(fresh.Replicates().empty());
}

TEST(ReplicateValuesTest, EverySampleReadsAsTheTableHoldsIt) {
  // The split dimension first, so that storage order interleaves the statistics' samples; gaps,
  // a text, a system-missing number and a sample beyond the split dimension's categories.
  TableBuilder b("Descriptive Statistics");
  const int split = b.SplitDim(4);
  b.Dim("Statistics", {"Mean", "Median"});
  b.Dim("Var", {"a", "b", "c"});
  for (int k = 0; k <= 4; ++k) {
    for (int s = 0; s < 2; ++s) {
      for (int v = 0; v < 3; ++v) {
        if ((k + s + v) % 4 != 0) b.Number({k, s, v}, k * 10.0 + s + v * 0.5);
      }
    }
  }
  b->Cell({2, 1, 1}, OmStringCell("n/a"));
  b.Number({3, 0, 2}, kSysMiss);
  b.Number({6, 0, 0}, 6.5);
  const ReplicateValues values(*b, split);
  // A dimension added after gathering holds every earlier cell at coordinate 0.
  b->AddDimension(OmStringCell("Added"));
  for (int k = 0; k <= 7; ++k) {
    for (int s = 0; s < 2; ++s) {
      for (int v = 0; v < 3; ++v) {
        for (int added = 0; added < 2; ++added) {
          SCOPED_TRACE(testing::Message() << k << " " << s << " " << v << " " << added);
          // The original sample (split 0) stays in the table and is not gathered.
          const OmCellText* cell = k > 0 ? b->Cell({k, s, v, added}) : nullptr;
          const auto* number = dynamic_cast<const OmNumber*>(cell);
          double value = 0.0;
          const ReplicateValues::Held held = values.At({k, s, v, added}, k, &value);
          EXPECT_EQ(held, !cell     ? ReplicateValues::Held::kNothing
                          : number ? ReplicateValues::Held::kNumber
                                   : ReplicateValues::Held::kText);
          if (number) {
            EXPECT_EQ(value, number->Value());
          }
        }
      }
    }
  }
}

TEST(ReplicateCollectorTest, JackknifeValuesComeFromTheSamplesAfterTheBootstrapSamples) {
  // 3 bootstrap samples (split 1 .. 3), then 4 jackknife samples (split 4 .. 7) in two ranges.
  struct Case {
    const char* name;
    std::vector<std::uint32_t> boundaries;
    std::vector<int> emptySplits;  // splits without a cell for the statistic
    bool complete;
    std::uint32_t start, end;
    std::vector<double> values;
  };
  const Case cases[] = {
      {"one range of all", {}, {}, true, 0, 4, {14, 15, 16, 17}},
      {"first range", {2, 4}, {}, true, 0, 2, {14, 15}},
      {"second range when the first has no cell", {2, 4}, {4}, true, 2, 4, {16, 17}},
      {"a gap inside the range", {4}, {6}, false, 0, 0, {}},
      {"a boundary past the jackknife list", {5}, {}, false, 0, 0, {}},
      {"boundaries going backwards", {2, 1}, {4}, false, 0, 0, {}},
      {"no range with a cell", {2, 4}, {4, 6}, false, 0, 0, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    StatTable t(7);
    t.Replicates({0, 0, 0}, t.split, 7, [](int k) { return 10.0 + k; });
    for (int k : c.emptySplits) t->TakeCell({0, 0, k});
    ReplicateCollector collector(*t, t.split, 3, 4, c.boundaries, {});
    ASSERT_TRUE(collector.Collect({0, 0, 0}, {}));
    EXPECT_EQ(collector.Replicates(), (std::vector<double>{11, 12, 13}));
    EXPECT_EQ(collector.JackknifeComplete(), c.complete);
    EXPECT_EQ(collector.JackknifeStart(), c.start);
    EXPECT_EQ(collector.JackknifeEnd(), c.end);
    EXPECT_EQ(collector.JackknifeValues(), c.values);
  }
}

}  // namespace
