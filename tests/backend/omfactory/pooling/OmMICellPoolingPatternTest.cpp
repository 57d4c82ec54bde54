#include "backend/omfactory/pooling/OmMICellPoolingPattern.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "MITableBuilder.h"
#include "backend/omfactory/pooling/OmMICellPoolingPattern0.h"
#include "backend/omfactory/pooling/OmMICellPoolingPattern2.h"
#include "platform/outputmodel/OmNumber.h"

using mitest::kNoDecimals;
using mitest::kSysMiss;
using mitest::kTwoDecimals;
using mitest::NotesAt;
using mitest::NumberAt;
using mitest::ScopedMiOutput;
using mitest::TableBuilder;

namespace {

constexpr const char* kNoVariance = "No variance among imputations.";

std::unique_ptr<OmMICellPoolingPattern> Pattern(const OmMICellPoolingPattern::Labels& labels) {
  auto pattern = std::make_unique<OmMICellPoolingPattern>("Means", "Report");
  pattern->SetLabels(labels);
  return pattern;
}

// A "Report" table: groups x statistics x imputations 0 .. m.
struct Report {
  TableBuilder t{"Report"};
  int groups;
  int stats;
  int imp;

  Report(const std::vector<std::string>& statistics, int m, bool original = true) {
    groups = t.Dim("Group", {"a", "b"});
    stats = t.Dim("Statistics", statistics);
    imp = t.Imputations(m, original);
  }
  int Pooled() { return t->Size(imp) - 1; }
};

}  // namespace

// --- Averaging

TEST(MICellAveraging, AveragesEveryImputationButNotTheOriginalData) {
  Report r({"N"}, 5);
  r.t.Number({0, 0, 0}, 100.0);  // the original data does not enter the mean
  for (int i = 1; i <= 5; ++i) r.t.Number({0, 0, i}, double(i));
  EXPECT_TRUE(Pattern({.statistics = "Statistics", .averaged = {"N"}})->Pool(*r.t, nullptr));
  const OmNumber& pooled = NumberAt(*r.t, {0, 0, r.Pooled()});
  EXPECT_EQ(pooled.Value(), 3.0);
  EXPECT_EQ(pooled.Format(), kTwoDecimals);
  EXPECT_EQ(r.t->Dimension(r.imp).Root().Child(r.Pooled())->Label()->Text(), "Pooled");
}

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

TEST(MICellAveraging, FractionalMeanOfWholeCountsGainsOneDecimal) {
  Report r({"N"}, 5);
  const double counts[] = {10, 11, 10, 11, 11};
  for (int i = 1; i <= 5; ++i) {
    r.t.Number({0, 0, i}, counts[i - 1], kNoDecimals);
    r.t.Number({1, 0, i}, 10.0, kNoDecimals);
  }
  EXPECT_TRUE(Pattern({.statistics = "Statistics", .averaged = {"N"}})->Pool(*r.t, nullptr));
  const OmNumber& fractional = NumberAt(*r.t, {0, 0, r.Pooled()});
  EXPECT_DOUBLE_EQ(fractional.Value(), 10.6);
  EXPECT_EQ(fractional.Format(), kNoDecimals | (1u << 24));
  EXPECT_EQ(NumberAt(*r.t, {1, 0, r.Pooled()}).Format(), kNoDecimals);
}

TEST(MICellAveraging, NothingToAverageWithoutImputations) {
  Report r({"N"}, 0);
  r.t.Number({0, 0, 0}, 7.0);
  EXPECT_FALSE(Pattern({.statistics = "Statistics", .averaged = {"N"}})->Pool(*r.t, nullptr));
  EXPECT_EQ(r.t->NCells(), 1u);
}

// --- Rubin pooling

TEST(MICellRubin, PairAgreesWithThePoolingComputation) {
  ScopedMiOutput output(true, true, true, false);
  Report r({"Mean", "Std. Error of Mean"}, 3);
  const std::vector<double> means{1.0, 1.4, 0.9}, errors{0.2, 0.25, 0.3};
  for (int i = 1; i <= 3; ++i) {
    r.t.Number({0, 0, i}, means[i - 1]);
    r.t.Number({0, 1, i}, errors[i - 1], 0x3050028);
  }
  const auto pattern = Pattern({.statistics = "Statistics", .pair = {"Mean", "Std. Error of Mean"}});
  EXPECT_TRUE(pattern->MatchesTable(*r.t));
  pattern->Pool(*r.t, nullptr);
  const mitest::Reference ref = mitest::Pooled({{1.0}, {1.4}, {0.9}}, {{0.2}, {0.25}, {0.3}});
  EXPECT_DOUBLE_EQ(NumberAt(*r.t, {0, 0, r.Pooled()}).Value(), ref.estimates[0]);
  EXPECT_DOUBLE_EQ(NumberAt(*r.t, {0, 1, r.Pooled()}).Value(), ref.standardErrors[0]);
  EXPECT_EQ(NumberAt(*r.t, {0, 1, r.Pooled()}).Format(), 0x3050028u);
  EXPECT_EQ(r.t->Cell({1, 0, r.Pooled()}), nullptr);  // group b has no estimates
  EXPECT_EQ(r.t->Size(r.stats), 2);                    // diagnostics off: no new statistics
}

TEST(MICellRubin, DiagnosticsOnAddTheirCategoriesWithThreeDecimals) {
  ScopedMiOutput output(true, true, true, true);
  Report r({"Mean", "Std. Error"}, 2);
  r.t.Number({0, 0, 1}, 1.0);
  r.t.Number({0, 0, 2}, 2.0);
  r.t.Number({0, 1, 1}, 0.5);
  r.t.Number({0, 1, 2}, 0.5);
  Pattern({.statistics = "Statistics", .pair = {"Mean", "Std. Error"}})->Pool(*r.t, nullptr);
  ASSERT_EQ(r.t->Size(r.stats), 5);
  const OmDimension& stats = r.t->Dimension(r.stats);
  EXPECT_EQ(stats.Root().Child(2)->Label()->Text(), "Fraction Missing Info.");
  EXPECT_EQ(stats.Root().Child(3)->Label()->Text(), "Relative Increase Variance");
  EXPECT_EQ(stats.Root().Child(4)->Label()->Text(), "Relative Efficiency");
  const mitest::Reference ref = mitest::Pooled({{1.0}, {2.0}}, {{0.5}, {0.5}});
  EXPECT_DOUBLE_EQ(NumberAt(*r.t, {0, 2, r.Pooled()}).Value(), ref.fractionMissing[0]);
  EXPECT_EQ(NumberAt(*r.t, {0, 4, r.Pooled()}).Format(), 0x3050028u);
}

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
  pattern->Pool(*r.t, nullptr);  // reports false: no averaged statistic follows
  const OmNumber& flat = NumberAt(*r.t, {0, 4, r.Pooled()});
  EXPECT_TRUE(flat.IsSysMiss());
  EXPECT_EQ(NotesAt(*r.t, {0, 4, r.Pooled()}), std::vector<std::string>{kNoVariance});

  const mitest::Reference ref = mitest::Pooled({{1.0}, {2.0}, {3.0}}, {{0.5}, {0.5}, {0.5}});
  const OmNumber& varied = NumberAt(*r.t, {1, 4, r.Pooled()});
  EXPECT_DOUBLE_EQ(varied.Value(), ref.significance[0]);
  EXPECT_EQ(varied.Format(), 0x3050028u);
  EXPECT_TRUE(NotesAt(*r.t, {1, 4, r.Pooled()}).empty());
  EXPECT_DOUBLE_EQ(NumberAt(*r.t, {1, 2, r.Pooled()}).Value(), ref.estimates[0] / ref.standardErrors[0]);
}

TEST(MICellRubin, DfCellsGiveTheCompleteDataDfOfBarnardAndRubin) {
  ScopedMiOutput output(true, true, true, true);
  // Expected: R mice 3.15, pool.scalar(Q, U, n = 74) (dfcom 73); for equal estimates the exact
  // limit dfobs = 74/76 * 73, with p = 2 pt(-1.9, dfobs).
  const double q[] = {2.1, 1.6, 2.9, 1.2, 2.4}, u[] = {1.21, 1.44, 1.10, 1.32, 1.27};
  Report r({"Value", "Std. Error", "t", "df", "Sig."}, 5);
  for (int i = 1; i <= 5; ++i) {
    r.t.Number({0, 0, i}, q[i - 1]);
    r.t.Number({0, 1, i}, std::sqrt(u[i - 1]));
    r.t.Number({0, 3, i}, 73.0, kNoDecimals);
    r.t.Number({1, 0, i}, 1.9);
    r.t.Number({1, 1, i}, 1.0);
    // The imputations' df differ a little: their mean is the complete-data df.
    r.t.Number({1, 3, i}, i % 2 ? 72.0 : 74.5, kNoDecimals);
  }
  const auto pattern = Pattern({.statistics = "Statistics",
                                .full = {.estimate = "Value", .standardError = "Std. Error", .test = "t",
                                         .df = "df", .significance = "Sig."}});
  pattern->Pool(*r.t, nullptr);
  const int fmi = 5;  // the first diagnostic, after the five statistics
  struct Case { int group, statistic; double expected; };
  for (const Case& c : {Case{0, 3, 23.933594718742654}, Case{0, 4, 0.14143888552892386},
                        Case{0, fmi, 0.3477203278795753}, Case{1, 3, 71.078947368421055},
                        Case{1, 4, 0.06148989090403098}}) {
    SCOPED_TRACE(c.statistic);
    EXPECT_NEAR(NumberAt(*r.t, {c.group, c.statistic, r.Pooled()}).Value(), c.expected, 1e-12);
  }
  EXPECT_TRUE(NotesAt(*r.t, {1, 4, r.Pooled()}).empty());
}

TEST(MICellRubin, FailedComputationLeavesItsErrorOnThatEstimateOnly) {
  ScopedMiOutput output(true, true, true, false);
  Report r({"Mean", "Std. Error"}, 2);
  r.t.Number({0, 0, 1}, 1.0);  // one imputation only: too few to combine
  for (int i = 1; i <= 2; ++i) {
    r.t.Number({1, 0, i}, 2.0 * i - 1.0);
    r.t.Number({1, 1, i}, 0.5);
  }
  Pattern({.statistics = "Statistics", .pair = {"Mean", "Std. Error"}})->Pool(*r.t, nullptr);
  const OmCellText* failed = r.t->Cell({0, 0, r.Pooled()});
  ASSERT_NE(failed, nullptr);
  EXPECT_EQ(NotesAt(*r.t, {0, 0, r.Pooled()}).size(), 1u);
  EXPECT_DOUBLE_EQ(NumberAt(*r.t, {1, 0, r.Pooled()}).Value(), 2.0);
}

// --- Matching

TEST(MICellMatching, TableNeedsTemplateStatisticsAndImputationsAndNoExcludedDimension) {
  const auto pattern = Pattern({.statistics = "Statistics", .excluded = "Stat Type", .averaged = {"N"}});
  Report r({"N"}, 2);
  EXPECT_TRUE(pattern->MatchesTable(*r.t));
  r.t.Dim("Stat Type", {"Statistic"});
  EXPECT_FALSE(pattern->MatchesTable(*r.t));

  TableBuilder other("Other");
  other.Dim("Statistics", {"N"});
  other.Imputations(2);
  EXPECT_FALSE(pattern->MatchesTable(*other));

  TableBuilder observed("Report");
  observed.Dim("Statistics", {"N"});
  EXPECT_FALSE(pattern->MatchesTable(*observed));
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
  const int var = t.Dim("Variables", {"x"});
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
  EXPECT_EQ(var, 0);
  EXPECT_EQ(t->Size(a), 5);
  EXPECT_EQ(t->Size(b), 2);
  const mitest::Reference ref = mitest::Pooled({{1.0}, {2.0}}, {{0.5}, {0.5}});
  EXPECT_DOUBLE_EQ(NumberAt(*t, {0, 1, 0, pooled}).Value(), ref.estimates[0]);
  EXPECT_DOUBLE_EQ(NumberAt(*t, {0, 1, 1, pooled}).Value(), ref.standardErrors[0]);
  EXPECT_DOUBLE_EQ(NumberAt(*t, {0, 2, 0, pooled}).Value(), ref.fractionMissing[0]);
  EXPECT_DOUBLE_EQ(NumberAt(*t, {0, 0, 0, pooled}).Value(), 11.5);
  EXPECT_EQ(NumberAt(*t, {0, 0, 0, pooled}).Format(), kNoDecimals | (1u << 24));
}
