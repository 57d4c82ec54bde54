// The bootstrap patterns and their registry: which tables they accept, when a table holds too
// few samples, and where each kind puts its results (a group of the statistics dimension, a
// "Bootstrap" group beside "Statistic", or tables of their own after the source).
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "BootTables.h"
#include "backend/omfactory/pooling/BootPoolingPatterns.h"
#include "backend/omfactory/pooling/OmBootPattern.h"
#include "backend/omfactory/pooling/OmBootPoolingPattern1.h"
#include "backend/omfactory/pooling/OmBootPoolingPattern3.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmOutputTree.h"

namespace {

using namespace boottest;

void Place(OmPivotTable& table, const std::vector<short>& rows, const std::vector<short>& columns,
           const std::vector<short>& layers = {}) {
  for (short d : rows) table.Rows().push_back(d);
  for (short d : columns) table.Columns().push_back(d);
  for (short d : layers) table.Layers().push_back(d);
}

std::vector<short> Columns(const OmPivotTable& table) { return table.Columns(); }
std::vector<short> Layers(const OmPivotTable& table) { return table.Layers(); }

std::vector<const OmBootPattern*> ForProcedure(const std::string& procedure) {
  std::vector<const OmBootPattern*> chosen;
  for (const OmBootPattern* p : BootPoolingPatterns()) {
    if (p->MatchesProcedure(OmStringCell(procedure))) chosen.push_back(p);
  }
  return chosen;
}

TEST(OmBootPatternTest, TablesNeedTheirTemplateTheSplitDimensionAndEveryRequiredDimension) {
  const OmBootPattern* coefficients = ForProcedure("Regression")[2];
  TableBuilder b("Coefficients");
  b.Dim("Statistics", {"B", "Std. Error"});
  EXPECT_FALSE(coefficients->MatchesTable(*b));  // no bootstrap split dimension
  SplitDim(b, 2);
  EXPECT_FALSE(coefficients->MatchesTable(*b));  // no "Variables"
  b.Dim("Variables", {"(Constant)", "x"});
  EXPECT_TRUE(coefficients->MatchesTable(*b));
  TableBuilder other("Model Summary");
  other.Dim("Statistics", {"B"});
  other.Dim("Variables", {"x"});
  SplitDim(other, 2);
  EXPECT_FALSE(coefficients->MatchesTable(*other));
}

// A "Correlations"-like table: Var (rows) x Statistics (columns) x split 0 .. samples (layers),
// the statistic at Var a having value 0.5 + k / 1000 in split k.
struct CorrTable {
  CorrTable(int lastSplit, bool withStatistics = true) : builder("Correlations") {
    vars = builder.Dim("Var", {"a", "b"});
    if (withStatistics) stats = builder.Dim("Statistics", {"Correlation", "N"});
    split = SplitDim(builder, lastSplit);
    Place(*builder, {short(vars)}, withStatistics ? std::vector<short>{short(stats)} : std::vector<short>{},
          {short(split)});
    OmPivotTable::Coordinates at(std::size_t(builder->NDimensions()), 0);
    Replicates(builder, at, split, lastSplit, [](int k) { return 0.5 + k / 1000.0; });
  }
  TableBuilder builder;
  int vars = 0, stats = -1, split = 0;
};

TEST(OmBootPoolingPattern1Test, ATableMissingSamplesIsMarkedAndLeftUnpooled) {
  OmBootPoolingPattern1 pattern("Correlations", "Correlations");
  pattern.SetStatisticsDimension("Statistics");
  pattern.AddStatistic("Correlation");
  OmOutputTree list;
  const SvrBootstrapSpecs specs = Specs(1000);
  CorrTable complete(1000), shortOne(999);
  pattern.Pool(*complete.builder, list, &specs);
  EXPECT_EQ(complete.builder->Size(complete.stats), 2 + 4);
  EXPECT_TRUE(NotesOf(*complete.builder, complete.builder->Label()).empty());

  const std::size_t cells = shortOne.builder->NCells();
  EXPECT_FALSE(pattern.Pool(*shortOne.builder, list, &specs));
  EXPECT_EQ(NotesOf(*shortOne.builder, shortOne.builder->Label()),
            std::vector<std::string>{"Not all bootstrap results available..."});
  EXPECT_EQ(shortOne.builder->Size(shortOne.stats), 2);
  EXPECT_EQ(shortOne.builder->NCells(), cells);
  // Jackknife samples count towards the categories the table must have.
  SvrBootstrapSpecs withJackknife = Specs(998);
  withJackknife.SetJackknifeList({{1.0, 0}, {1.0, 0}});
  CorrTable jackknifed(1000);
  pattern.Pool(*jackknifed.builder, list, &withJackknife);
  EXPECT_TRUE(NotesOf(*jackknifed.builder, jackknifed.builder->Label()).empty());
  EXPECT_NE(NodeLabelled(jackknifed.builder->Dimension(jackknifed.stats).Root(), "BCa 95% Confidence Interval"), nullptr);
}

TEST(OmBootPoolingPattern1Test, AddsAStatisticsDimensionWhenTheTableHasNone) {
  OmBootPoolingPattern1 pattern("T-Test", "Correlations");
  pattern.SetStatisticsDimension("Statistics");
  pattern.AddStatistic("Correlation");
  CorrTable t(100, false);
  OmPivotTable& table = *t.builder;
  table.Columns().push_back(short(table.AddDimension(OmStringCell("Other"))));
  table.Dimension(2).Child(&table.Dimension(2).Root(), -1, OmStringCell("o"), false);
  OmOutputTree list;
  const SvrBootstrapSpecs specs = Specs(100);
  EXPECT_FALSE(pattern.Pool(table, list, &specs));
  ASSERT_EQ(table.NDimensions(), 4);
  const OmDimension& stats = table.Dimension(3);
  EXPECT_EQ(stats.Label()->Text(), "Statistics");
  EXPECT_TRUE(stats.HideLabel());
  EXPECT_EQ(Labels(stats), (std::vector<std::string>{"Correlation", "Bootstrap for Correlation", "Bias",
                                                     "Std. Error", "95% Confidence Interval", "Lower", "Upper"}));
  // The statistics dimension leads the columns; isolation moved the other column dimension.
  const std::vector<short> columns = Columns(table);
  ASSERT_FALSE(columns.empty());
  EXPECT_EQ(columns.front(), 3);
  EXPECT_EQ(std::count(columns.begin(), columns.end(), 2), 0);
  // The original cells were in the old dimensions only: their bias is there at (a, split 0).
  const int bias = CategoryLabelled(table, 3, "Bias");
  EXPECT_NEAR(NumberAt(table, {0, 0, 0, bias}).Value(), 0.0505, 1e-12);
}

// A "Parameter Estimates" table under a heading, before a later heading: Parameter (rows) x
// Statistics (columns) x split (layers).
struct ParameterTable {
  explicit ParameterTable(int lastSplit, const char* title = nullptr) {
    heading = list.AppendUnderRoot(std::make_unique<OmHeading>(OmStringCell("Univariate")));
    auto made = std::make_unique<OmPivotTable>(OmStringCell("Parameter Estimates"),
                                               OmStringCell("Parameter Estimates"));
    table = made.get();
    list.Append(heading, std::move(made));
    list.Append(heading, std::make_unique<OmHeading>(OmStringCell("Later")));
    if (title) table->SetTableTitle(OmStringCell(title));
    params = Dim(*table, "Parameter", {"Intercept", "x"});
    stats = Dim(*table, "Statistics", {"B", "Std. Error", "t"});
    split = SplitDim(*table, lastSplit);
    Place(*table, {short(params)}, {short(stats)}, {short(split)});
    table->TableId(7);
    for (int p = 0; p < 2; ++p) {
      Replicates(*table, {p, 0, 0}, split, lastSplit, [p](int k) { return 1.0 + p + (k % 4) / 10.0; });
      Replicates(*table, {p, 1, 0}, split, lastSplit, [](int k) { return 0.2 + (k % 2) / 10.0; });
      Replicates(*table, {p, 2, 0}, split, lastSplit, [](int k) { return 2.0 + (k % 2); });
    }
  }
  OmOutputTree list;
  OmOutputTree::Node heading;
  OmPivotTable* table = nullptr;
  int params = 0, stats = 0, split = 0;
};

TEST(OmBootPoolingPattern3Test, MakesOneTableAfterTheSourcePerEstimate) {
  OmBootPoolingPattern3 pattern("UNIANOVA", "Parameter Estimates");
  pattern.SetStatisticsDimension("Statistics");
  pattern.AddStatistic("B", "Std. Error");
  pattern.AddStatistic("t");
  pattern.AddStatistic("Wald");  // not in the table: no table for it
  ParameterTable t(40);
  OmPivotTable& source = *t.table;
  const SvrBootstrapSpecs specs = Specs(40);
  EXPECT_TRUE(pattern.Pool(source, t.list, &specs));

  std::vector<std::string> order;
  for (const OmOutputTree::Node& n : t.heading.Children()) order.push_back(n.Value()->Label()->Text());
  EXPECT_EQ(order, (std::vector<std::string>{"Parameter Estimates", "Bootstrap for B", "Bootstrap for t", "Later"}));
  auto* boot = dynamic_cast<OmPivotTable*>(t.heading.Children()[1].Value());
  ASSERT_NE(boot, nullptr);
  EXPECT_EQ(boot->TableId(), 500007);
  EXPECT_EQ(boot->TemplateName().Text(), "Bootstrap");
  EXPECT_EQ(boot->TableTitle()->Text(), "Bootstrap for B");
  ASSERT_EQ(boot->NDimensions(), 2);
  EXPECT_EQ(boot->Dimension(1).Label()->Text(), "Bootstrap Statistics");
  EXPECT_TRUE(Layers(*boot).empty());
  EXPECT_EQ(Labels(boot->Dimension(1)),
            (std::vector<std::string>{"B", "Bootstrap", "Bias", "Std. Error", "Sig. (2-tailed)",
                                      "95% Confidence Interval", "Lower", "Upper"}));
  // The estimate is copied, its results beside it; the source keeps its split dimension.
  EXPECT_EQ(NumberAt(*boot, {1, 0}).Value(), 2.0);
  EXPECT_NE(boot->Cell({1, CategoryLabelled(*boot, 1, "Sig. (2-tailed)")}), nullptr);
  EXPECT_EQ(source.NDimensions(), 3);
  auto* tTable = dynamic_cast<OmPivotTable*>(t.heading.Children()[2].Value());
  ASSERT_NE(tTable, nullptr);
  EXPECT_EQ(NodeLabelled(tTable->Dimension(1).Root(), "Sig. (2-tailed)"), nullptr);
}

TEST(OmBootPoolingPattern3Test, OneEstimateNamesItsTableAfterTheSourceTitle) {
  OmBootPoolingPattern3 pattern("T-Test", "Parameter Estimates");
  pattern.SetStatisticsDimension("Statistics");
  pattern.AddStatistic("B", OmBootPoolingPattern3::kTestStatistic);
  ParameterTable t(40, "Estimates");
  OmPivotTable& source = *t.table;
  const SvrBootstrapSpecs specs = Specs(40);
  EXPECT_TRUE(pattern.Pool(source, t.list, &specs));
  auto* boot = dynamic_cast<OmPivotTable*>(t.heading.Children()[1].Value());
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
