// The bootstrap patterns and their registry: which tables they accept, when a table holds too
// few samples, and where each kind puts its results (a group of the statistics dimension, a
// "Bootstrap" group beside "Statistic", or tables of their own after the source).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "PoolingTables.h"
#include "backend/omfactory/pooling/BootPoolingPatterns.h"
#include "backend/omfactory/pooling/OmBootPattern.h"
#include "backend/omfactory/pooling/OmBootPoolingPattern1.h"
#include "backend/omfactory/pooling/OmBootPoolingPattern3.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmOutputTree.h"

namespace {

using namespace pooltest;
using Texts = std::vector<std::string>;

void Place(OmPivotTable& table, const std::vector<short>& rows, const std::vector<short>& columns,
           const std::vector<short>& layers) {
  for (short d : rows) table.Rows().push_back(d);
  for (short d : columns) table.Columns().push_back(d);
  for (short d : layers) table.Layers().push_back(d);
}

TEST(OmBootPatternTest, TablesNeedTheirTemplateTheSplitDimensionAndEveryRequiredDimension) {
  std::vector<const OmBootPattern*> regression;
  for (const OmBootPattern* p : BootPoolingPatterns()) {
    if (p->MatchesProcedure(OmStringCell("Regression"))) regression.push_back(p);
  }
  const OmBootPattern* coefficients = regression.at(2);
  TableBuilder b("Coefficients");
  b.Dim("Statistics", {"B", "Std. Error"});
  EXPECT_FALSE(coefficients->MatchesTable(*b));  // no bootstrap split dimension
  b.SplitDim(2);
  EXPECT_FALSE(coefficients->MatchesTable(*b));  // no "Variables"
  b.Dim("Variables", {"(Constant)", "x"});
  EXPECT_TRUE(coefficients->MatchesTable(*b));
  TableBuilder other("Model Summary");
  other.Dim("Statistics", {"B"});
  other.Dim("Variables", {"x"});
  other.SplitDim(2);
  EXPECT_FALSE(coefficients->MatchesTable(*other));
}

// A "Correlations"-like table: Var (rows) x Statistics (columns) x split 0 .. samples (layers),
// the statistic at Var a having value 0.5 + k / 1000 in split k.
struct CorrTable : TableBuilder {
  explicit CorrTable(int lastSplit, bool withStatistics = true) : TableBuilder("Correlations") {
    const int vars = Dim("Var", {"a", "b"});
    if (withStatistics) stats = Dim("Statistics", {"Correlation", "N"});
    const int split = SplitDim(lastSplit);
    Place(**this, {short(vars)}, withStatistics ? std::vector<short>{short(stats)} : std::vector<short>{},
          {short(split)});
    Replicates(OmPivotTable::Coordinates(std::size_t((*this)->NDimensions()), 0), split, lastSplit,
               [](int k) { return 0.5 + k / 1000.0; });
  }
  std::vector<std::string> Notes() { return NotesOf(**this, (*this)->Label()); }
  int stats = -1;
};

std::unique_ptr<OmBootPoolingPattern1> CorrelationPattern(const char* procedure) {
  auto pattern = std::make_unique<OmBootPoolingPattern1>(procedure, "Correlations");
  pattern->SetStatisticsDimension("Statistics");
  pattern->AddStatistic("Correlation");
  return pattern;
}

TEST(OmBootPoolingPattern1Test, ATableMissingSamplesIsMarkedAndLeftUnpooled) {
  const auto pattern = CorrelationPattern("Correlations");
  OmOutputTree list;
  const SvrBootstrapSpecs specs = Specs(1000);
  CorrTable complete(1000), shortOne(999);
  pattern->Pool(*complete, list, &specs);
  EXPECT_EQ(complete->Size(complete.stats), 2 + 4);
  EXPECT_TRUE(complete.Notes().empty());

  const std::size_t cells = shortOne->NCells();
  EXPECT_FALSE(pattern->Pool(*shortOne, list, &specs));
  EXPECT_EQ(shortOne.Notes(), Texts{"Not all bootstrap results available..."});
  EXPECT_EQ(shortOne->Size(shortOne.stats), 2);
  EXPECT_EQ(shortOne->NCells(), cells);
  // Jackknife samples count towards the categories the table must have.
  SvrBootstrapSpecs withJackknife = Specs(998);
  withJackknife.SetJackknifeList({{1.0, 0}, {1.0, 0}});
  CorrTable jackknifed(1000);
  pattern->Pool(*jackknifed, list, &withJackknife);
  EXPECT_TRUE(jackknifed.Notes().empty());
  EXPECT_THAT(Labels(jackknifed->Dimension(jackknifed.stats)), ::testing::Contains("BCa 95% Confidence Interval"));
}

TEST(OmBootPoolingPattern1Test, AddsAStatisticsDimensionWhenTheTableHasNone) {
  CorrTable t(100, false);
  OmPivotTable& table = *t;
  table.Columns().push_back(short(t.Dim("Other", {"o"})));
  OmOutputTree list;
  const SvrBootstrapSpecs specs = Specs(100);
  EXPECT_FALSE(CorrelationPattern("T-Test")->Pool(table, list, &specs));
  ASSERT_EQ(table.NDimensions(), 4);
  const OmDimension& stats = table.Dimension(3);
  EXPECT_EQ(stats.Label()->Text(), "Statistics");
  EXPECT_TRUE(stats.HideLabel());
  EXPECT_EQ(Labels(stats), (Texts{"Correlation", "Bootstrap for Correlation", "Bias", "Std. Error",
                                  "95% Confidence Interval", "Lower", "Upper"}));
  // The statistics dimension is the columns; isolation moved the other column dimension.
  EXPECT_EQ(std::as_const(table).Columns(), std::vector<short>{3});
  // The original cells were in the old dimensions only: their bias is there at (a, split 0).
  EXPECT_NEAR(NumberAt(table, {0, 0, 0, CategoryLabelled(table, 3, "Bias")}).Value(), 0.0505, 1e-12);
}

// A "Parameter Estimates" table under a heading, before a later heading: Parameter (rows) x
// Statistics (columns) x split (layers).
struct ParameterTable {
  explicit ParameterTable(int lastSplit, const char* title = nullptr) {
    TableBuilder b("Parameter Estimates", "Parameter Estimates");
    if (title) b->SetTableTitle(OmStringCell(title));
    const int params = b.Dim("Parameter", {"Intercept", "x"});
    const int stats = b.Dim("Statistics", {"B", "Std. Error", "t"});
    const int split = b.SplitDim(lastSplit);
    Place(*b, {short(params)}, {short(stats)}, {short(split)});
    b->TableId(7);
    for (int p = 0; p < 2; ++p) {
      b.Replicates({p, 0, 0}, split, lastSplit, [p](int k) { return 1.0 + p + (k % 4) / 10.0; });
      b.Replicates({p, 1, 0}, split, lastSplit, [](int k) { return 0.2 + (k % 2) / 10.0; });
      b.Replicates({p, 2, 0}, split, lastSplit, [](int k) { return 2.0 + (k % 2); });
    }
    table = &*b;
    heading = list.AppendUnderRoot(std::make_unique<OmHeading>(OmStringCell("Univariate")));
    list.Append(heading, b.Release());
    list.Append(heading, std::make_unique<OmHeading>(OmStringCell("Later")));
  }
  OmPivotTable* Child(std::size_t i) { return dynamic_cast<OmPivotTable*>(heading.Children().at(i).Value()); }
  OmOutputTree list;
  OmOutputTree::Node heading;
  OmPivotTable* table = nullptr;
};

TEST(OmBootPoolingPattern3Test, MakesOneTableAfterTheSourcePerEstimate) {
  OmBootPoolingPattern3 pattern("UNIANOVA", "Parameter Estimates");
  pattern.SetStatisticsDimension("Statistics");
  pattern.AddStatistic("B", "Std. Error");
  pattern.AddStatistic("t");
  pattern.AddStatistic("Wald");  // not in the table: no table for it
  ParameterTable t(40);
  const SvrBootstrapSpecs specs = Specs(40);
  EXPECT_TRUE(pattern.Pool(*t.table, t.list, &specs));

  Texts order;
  for (const OmOutputTree::Node& n : t.heading.Children()) order.push_back(n.Value()->Label()->Text());
  EXPECT_EQ(order, (Texts{"Parameter Estimates", "Bootstrap for B", "Bootstrap for t", "Later"}));
  const OmPivotTable* boot = t.Child(1);
  ASSERT_NE(boot, nullptr);
  EXPECT_EQ(boot->TableId(), 500007);
  EXPECT_EQ(boot->TemplateName().Text(), "Bootstrap");
  EXPECT_EQ(boot->TableTitle()->Text(), "Bootstrap for B");
  ASSERT_EQ(boot->NDimensions(), 2);
  EXPECT_EQ(boot->Dimension(1).Label()->Text(), "Bootstrap Statistics");
  EXPECT_TRUE(boot->Layers().empty());
  EXPECT_EQ(Labels(boot->Dimension(1)), (Texts{"B", "Bootstrap", "Bias", "Std. Error", "Sig. (2-tailed)",
                                               "95% Confidence Interval", "Lower", "Upper"}));
  // The estimate is copied, its results beside it; the source keeps its split dimension.
  EXPECT_EQ(NumberAt(*boot, {1, 0}).Value(), 2.0);
  EXPECT_NE(boot->Cell({1, CategoryLabelled(*boot, 1, "Sig. (2-tailed)")}), nullptr);
  EXPECT_EQ(t.table->NDimensions(), 3);
  ASSERT_NE(t.Child(2), nullptr);
  EXPECT_EQ(CategoryLabelled(*t.Child(2), 1, "Sig. (2-tailed)"), -1);
}

TEST(OmBootPoolingPattern3Test, OneEstimateNamesItsTableAfterTheSourceTitle) {
  OmBootPoolingPattern3 pattern("T-Test", "Parameter Estimates");
  pattern.SetStatisticsDimension("Statistics");
  pattern.AddStatistic("B", OmBootPoolingPattern3::kTestStatistic);
  ParameterTable t(40, "Estimates");
  const SvrBootstrapSpecs specs = Specs(40);
  EXPECT_TRUE(pattern.Pool(*t.table, t.list, &specs));
  const OmPivotTable* boot = t.Child(1);
  ASSERT_NE(boot, nullptr);
  EXPECT_EQ(boot->Label()->Text(), "Bootstrap for Estimates");
  // t turned into standard errors gives a significance.
  EXPECT_NE(boot->Cell({0, CategoryLabelled(*boot, 1, "Sig. (2-tailed)")}), nullptr);
  // Too few samples: nothing is made.
  ParameterTable few(39);
  EXPECT_FALSE(pattern.Pool(*few.table, few.list, &specs));
  EXPECT_EQ(few.heading.NChildren(), 2u);
}

}  // namespace
