#include "backend/omfactory/pooling/OmMICellPoolingPattern.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PoolingTables.h"
#include "backend/omfactory/pooling/OmMICellPoolingPattern0.h"
#include "backend/omfactory/pooling/OmMICellPoolingPattern2.h"

using namespace pooltest;

namespace {

constexpr const char* kNoVariance = "No variance among imputations.";

std::unique_ptr<OmMICellPoolingPattern> Pattern(const OmMICellPoolingPattern::Labels& labels) {
  auto pattern = std::make_unique<OmMICellPoolingPattern>("Means", "Report");
  pattern->SetLabels(labels);
  return pattern;
}

// A "Report" table: groups (a, b) x statistics x imputations 0 .. m.
struct Report {
  TableBuilder t{"Report"};
  Report(const std::vector<std::string>& statistics, int m) {
    t.Dim("Group", {"a", "b"});
    t.Dim("Statistics", statistics);
    t.Imputations(m);
  }
  int Pooled() { return t->Size(2) - 1; }
};

}  // namespace

// --- Averaging

TEST(MICellAveraging, MissingImputationsStillDivideByTheNumberOfImputations) {
  Report r({"N"}, 5);
  r.t.Number({0, 0, 1}, 4.0);
  r.t.Number({0, 0, 3}, 5.0);
  r.t.Number({0, 0, 5}, kSysMiss);  // system-missing counts as missing
  r.t.Number({0, 0, 4}, 6.0);
  EXPECT_TRUE(Pattern({.statistics = "Statistics", .averaged = {"N"}})->Pool(*r.t, nullptr));
  EXPECT_DOUBLE_EQ(NumberAt(*r.t, {0, 0, r.Pooled()}).Value(), 15.0 / 5.0);
  // Group b has no value in any imputation: a system-missing cell with format 0.
  const OmNumber& none = NumberAt(*r.t, {1, 0, r.Pooled()});
  EXPECT_TRUE(none.IsSysMiss());
  EXPECT_EQ(none.Format(), 0u);
}

TEST(MICellAveraging, NothingToAverageWithoutImputations) {
  Report r({"N"}, 0);
  r.t.Number({0, 0, 0}, 7.0);
  EXPECT_FALSE(Pattern({.statistics = "Statistics", .averaged = {"N"}})->Pool(*r.t, nullptr));
  EXPECT_EQ(r.t->NCells(), 1u);
}

// --- Rubin pooling

TEST(MICellRubin, SignificanceWithoutAnyVarianceIsMissingWithAFootnote) {
  ScopedMiOutput output(true, true, true, false);
  Report r({"Value", "Std. Error", "t", "df", "Sig."}, 3);
  for (int i = 1; i <= 3; ++i) {
    // Group a: equal estimates and no standard error at all; group b: estimates that vary.
    r.t.Number({0, 0, i}, 2.0);
    r.t.Number({0, 1, i}, 0.0);
    r.t.Number({0, 4, i}, 0.01, 0x3050028);
    r.t.Number({1, 0, i}, double(i));
    r.t.Number({1, 1, i}, 0.5);
    r.t.Number({1, 4, i}, 0.01, 0x3050028);
  }
  const auto pattern = Pattern({.statistics = "Statistics",
                                .full = {.estimate = "Value", .standardError = "Std. Error", .test = "t",
                                         .df = "df", .significance = "Sig."}});
  EXPECT_TRUE(pattern->Pool(*r.t, nullptr));
  EXPECT_TRUE(NumberAt(*r.t, {0, 4, r.Pooled()}).IsSysMiss());
  EXPECT_EQ(NotesAt(*r.t, {0, 4, r.Pooled()}), std::vector<std::string>{kNoVariance});

  const Reference ref = Pooled({{1.0}, {2.0}, {3.0}}, {{0.5}, {0.5}, {0.5}});
  const OmNumber& varied = NumberAt(*r.t, {1, 4, r.Pooled()});
  EXPECT_DOUBLE_EQ(varied.Value(), ref.significance[0]);
  EXPECT_EQ(varied.Format(), 0x3050028u);
  EXPECT_TRUE(NotesAt(*r.t, {1, 4, r.Pooled()}).empty());
  EXPECT_DOUBLE_EQ(NumberAt(*r.t, {1, 2, r.Pooled()}).Value(), ref.estimates[0] / ref.standardErrors[0]);
}

TEST(MICellRubin, FailedComputationLeavesItsErrorOnThatEstimateOnly) {
  ScopedMiOutput output(true, true, true, false);
  Report r({"Mean", "Std. Error"}, 2);
  r.t.Number({0, 0, 1}, 1.0);  // one imputation only: too few to combine
  for (int i = 1; i <= 2; ++i) {
    r.t.Number({1, 0, i}, 2.0 * i - 1.0);
    r.t.Number({1, 1, i}, 0.5);
  }
  EXPECT_TRUE(Pattern({.statistics = "Statistics", .pair = {"Mean", "Std. Error"}})->Pool(*r.t, nullptr));
  ASSERT_NE(r.t->Cell({0, 0, r.Pooled()}), nullptr);
  EXPECT_EQ(NotesAt(*r.t, {0, 0, r.Pooled()}).size(), 1u);
  EXPECT_DOUBLE_EQ(NumberAt(*r.t, {1, 0, r.Pooled()}).Value(), 2.0);
}

// --- Every cell averaged

TEST(MICellPattern0, EveryCellIsAveragedOverTheImputationsFound) {
  TableBuilder t("CDF Coefficients");
  t.Dim("Function", {"1", "2"});
  const int imp = t.Imputations(3);
  t.Number({0, 0}, 50.0);
  t.Number({0, 1}, 1.0);
  t.Number({0, 2}, 2.0);  // the third imputation has no cell: still counted
  t.Number({1, 1}, 1.0, kNoDecimals);
  t.Number({1, 3}, 1.0, kNoDecimals);
  OmMICellPoolingPattern0 pattern("Discriminant", "CDF Coefficients");
  EXPECT_TRUE(pattern.MatchesTable(*t));
  EXPECT_TRUE(pattern.Pool(*t, nullptr));
  const int pooled = t->Size(imp) - 1;
  EXPECT_DOUBLE_EQ(NumberAt(*t, {0, pooled}).Value(), 1.0);
  EXPECT_DOUBLE_EQ(NumberAt(*t, {1, pooled}).Value(), 2.0 / 3.0);
  EXPECT_EQ(NumberAt(*t, {1, pooled}).Format(), kNoDecimals);  // the sum is whole
}

// --- Two statistics dimensions

TEST(MICellPattern2, DiagnosticsJoinTheStatisticsWhenEstimateAndErrorShareOne) {
  ScopedMiOutput output(true, true, true, true);
  TableBuilder t("Descriptive Statistics");
  t.Dim("Variables", {"x"});
  const int a = t.Dim("Statistics", {"N", "Mean"});
  const int b = t.Dim("Stat Type", {"Statistic", "Std. Error"});
  const int imp = t.Imputations(2);
  for (int i = 1; i <= 2; ++i) {
    t.Number({0, 0, 0, i}, 10.0 + i, kNoDecimals);
    t.Number({0, 1, 0, i}, double(i));
    t.Number({0, 1, 1, i}, 0.5);
  }
  OmMICellPoolingPattern2 pattern("Descriptives", "Descriptive Statistics");
  pattern.SetLabels({.dimensionA = "Statistics", .dimensionB = "Stat Type", .estimate = {"Mean", "Statistic"},
                     .standardError = {"Mean", "Std. Error"}, .averaged = {{"N", "Statistic"}}});
  EXPECT_TRUE(pattern.Pool(*t, nullptr));
  const int pooled = t->Size(imp) - 1;
  EXPECT_EQ(t->Size(a), 5);
  EXPECT_EQ(t->Size(b), 2);
  const Reference ref = Pooled({{1.0}, {2.0}}, {{0.5}, {0.5}});
  EXPECT_DOUBLE_EQ(NumberAt(*t, {0, 1, 0, pooled}).Value(), ref.estimates[0]);
  EXPECT_DOUBLE_EQ(NumberAt(*t, {0, 1, 1, pooled}).Value(), ref.standardErrors[0]);
  EXPECT_DOUBLE_EQ(NumberAt(*t, {0, 2, 0, pooled}).Value(), ref.fractionMissing[0]);
  EXPECT_DOUBLE_EQ(NumberAt(*t, {0, 0, 0, pooled}).Value(), 11.5);
  EXPECT_EQ(NumberAt(*t, {0, 0, 0, pooled}).Format(), kNoDecimals | (1u << 24));
}
