// Pooled results at their edges: bootstrap bounds that the replicates cannot reach are explained,
// BCa's jackknife groups are centred and scaled by their own weights, and a correlation matrix
// without N cells takes each imputation's N from its listwise-N footnote.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "PoolingTables.h"
#include "backend/omfactory/pooling/BootstrapCellCalculator.h"
#include "backend/omfactory/pooling/OmMICorrMatrixPoolingPattern.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmFootnote.h"

namespace {

using namespace pooltest;

TEST(BootEdges, BoundsTheReplicatesCannotReachCarryTheCoverageNote) {
  struct Case {
    const char* name;
    double level;
    int samples;
    int jackknife;      // jackknife samples after the bootstrap samples (BCa)
    bool lowerMissing, upperMissing;  // either gives both bounds the note
    const char* note;
  };
  const Case cases[] = {
      // At 91% the rank 22 * 0.045 = 0.99 is below the first replicate; 22 replicates reach it.
      {"percentile, one replicate short", 91.0, 21, 0, true, true, "91% coverage needs 22 samples..."},
      {"percentile, enough replicates", 91.0, 22, 0, false, false, nullptr},
      // Replicates 1 .. 200 around an estimate of 100.5 (z0 = 0); jackknife values nine 0s and a
      // 10 give a = -0.1405, lifting the lower level to 0.003414 (R: pnorm(z0 + (z0 + qnorm(.025))
      // / (1 - a (z0 + qnorm(.025))))), whose rank needs ceiling(1 / 0.003414 - 1) = 292 samples.
      {"BCa, a skew the replicates cannot cover", 95.0, 200, 10, true, false, "95% coverage needs 292 samples..."},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TableBuilder b("Descriptive Statistics");
    b.Dim("Statistics", {"Mean"});
    const int split = b.SplitDim(c.samples + c.jackknife);
    b.Replicates({0, 0}, split, c.samples + c.jackknife, [&](int k) {
      if (k == 0) return c.jackknife ? 100.5 : 11.0;
      if (k <= c.samples) return c.jackknife ? double(k) : double(k % 5) + 0.1 * k;
      return k == c.samples + c.jackknife ? 10.0 : 0.0;
    });
    SvrBootstrapSpecs specs = Specs(unsigned(c.samples), c.level);
    if (c.jackknife) {
      specs.SetJackknifeList(std::vector<SvrBootstrapSpecs::JackknifeEntry>(std::size_t(c.jackknife), {1.0, 0}));
    }
    BootstrapCellCalculator calculator(specs, *b, std::make_unique<BootstrapResultWriter>(
        c.level, *b, 0, OmStringCell("Bootstrap", true), "bootstrap samples", unsigned(c.samples),
        false, c.jackknife != 0, false), split, {});
    calculator.ComputeCell({0, 0}, {}, false);
    const OmPivotTable::Coordinates lower{calculator.Writer().LowerCategory(), 0};
    const OmPivotTable::Coordinates upper{calculator.Writer().UpperCategory(), 0};
    EXPECT_EQ(NumberAt(*b, lower).IsSysMiss(), c.lowerMissing);
    EXPECT_EQ(NumberAt(*b, upper).IsSysMiss(), c.upperMissing);
    const std::vector<std::string> notes = c.note ? std::vector<std::string>{c.note} : std::vector<std::string>{};
    EXPECT_EQ(NotesAt(*b, lower), notes);
    EXPECT_EQ(NotesAt(*b, upper), notes);
  }
}

TEST(MIEdges, ListwiseNFootnotesGiveTheNOfEachImputation) {
  // Expected: R mice 3.15, pool.scalar(atanh(r), 1 / (n - 3)) with r = .41, .37, .45 and
  // n = 120, 118, 121: tanh(qbar), and the two-tailed p of qbar / sqrt(t) on the classical df.
  const std::vector<double> r = {0.41, 0.37, 0.45}, n = {120, 118, 121};
  const char* const kListwise = "[:^1=^2,:]1\\:Listwise N=^2";
  TableBuilder t("Correlations", "Correlations");
  t.Dim("Variables", {"x", "y"});
  t.Dim("With", {"x", "y"});
  t.Dim("Statistics", {"Pearson Correlation", "Sig. (2-tailed)"});
  const int imputation = t.Imputations(3);
  for (int i = 1; i <= 3; ++i) {
    t.Number({0, 1, 0, i}, r[std::size_t(i - 1)]);
    t.Number({0, 1, 1, i}, 0.001);
    // "Imputation Number = i: Listwise N = n", as a procedure words it.
    OmComposite note{OmStringCell(kListwise)};
    note.BeginRepeatList();
    note.Add(OmVariable("Imputation_", "Imputation Number"));
    note.Add(OmNumDataValue("Imputation_", "", double(i), kNoDecimals));
    note.EndRepeatList();
    note.Add(OmNumber(n[std::size_t(i - 1)], kNoDecimals));
    t->Footnote(OmFootnote(note), false);
  }
  OmMICorrMatrixPoolingPattern pattern("Correlations", "Correlations");
  pattern.SetLabels({.statistics = "Statistics", .correlation = "Pearson Correlation", .n = "N",
                     .listwiseN = kListwise, .significanceTwoTailed = "Sig. (2-tailed)"});
  ASSERT_TRUE(pattern.Pool(*t, nullptr));
  const int pooled = t->Size(imputation) - 1;
  EXPECT_NEAR(NumberAt(*t, {0, 1, 0, pooled}).Value(), 0.41052699141945576, 1e-12);
  EXPECT_NEAR(NumberAt(*t, {0, 1, 1, pooled}).Value(), 0.00036858110252905397, 1e-12);
}

}  // namespace
