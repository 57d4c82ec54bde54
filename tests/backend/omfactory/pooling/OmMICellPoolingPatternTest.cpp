#include "backend/omfactory/pooling/OmMICellPoolingPattern.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MITableBuilder.h"
#include "backend/omfactory/pooling/OmMICellPoolingPattern0.h"
#include "backend/omfactory/pooling/OmMICellPoolingPattern2.h"

using mitest::kNoDecimals;
using mitest::kSysMiss;
using mitest::kTwoDecimals;
using mitest::NotesAt;
using mitest::NumberAt;
using mitest::ScopedMiOutput;
using mitest::TableBuilder;

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
