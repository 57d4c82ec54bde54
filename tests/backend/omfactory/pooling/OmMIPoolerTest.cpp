#include "backend/omfactory/pooling/OmMIPooler.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PoolingTables.h"
#include "backend/omfactory/pooling/MIPoolingPatterns.h"
#include "backend/omfactory/pooling/OmMIPattern.h"
#include "platform/outputmodel/OmTextBlock.h"

using namespace pooltest;

namespace {

// A "Means" report of one group with a mean and an N over imputations 0 .. m.
struct Report : TableBuilder {
  explicit Report(int m) : TableBuilder("Report", "Report") {
    Dim("Group", {"a"});
    Dim("Statistics", {"Mean", "Std. Error of Mean", "N"});
    Imputations(m);
    for (int i = 0; i <= m; ++i) {
      Number({0, 0, i}, 2.0 + i);
      Number({0, 1, i}, 0.5);
      Number({0, 2, i}, 10.0, kNoDecimals);
    }
  }
};

const OmStringCell kMeans("Means", true);

}  // namespace

TEST(MIPoolerPatterns, KeepsThePatternsOfItsProcedureInRegistryOrder) {
  const OmStringCell regression("Regression", true);
  OmMIPooler pooler(&regression, nullptr, true, true, true, true);
  std::vector<const OmMIPattern*> expected;
  for (const OmMIPattern* pattern : MIPoolingPatterns()) {
    if (pattern->ProcedureName().Text() == "Regression") expected.push_back(pattern);
  }
  ASSERT_EQ(pooler.NPatterns(), expected.size());
  EXPECT_EQ(pooler.NPatterns(), 8u);
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(pooler.Pattern(i), expected[i]);
  EXPECT_THROW(pooler.Pattern(expected.size()), OMSException);
}

TEST(MIPooler, NoFlagsDiscardImputedTablesButKeepOtherTablesAndParts) {
  Report imputed(2);
  OmMIPooler pooler(&kMeans, nullptr, false, false, false, false);
  pooler.Visit(*imputed);
  EXPECT_TRUE(pooler.Discard());

  TableBuilder plain("Report");
  plain.Dim("Statistics", {"Mean"});
  plain.Number({0}, 1.0);
  pooler.Visit(*plain);
  EXPECT_FALSE(pooler.Discard());
  EXPECT_FALSE(plain->IsImputed());
  EXPECT_EQ(plain->NCells(), 1u);

  pooler.Visit(*Report(1));
  ASSERT_TRUE(pooler.Discard());
  OmTextBlock text(OmStringCell("Notes"), "UTF-8");
  pooler.Visit(text);
  EXPECT_FALSE(pooler.Discard());  // other output parts never go
}

TEST(MIPooler, PruningPassesOverLaterGroupsOnceSomethingStays) {
  TableBuilder t("Any");
  const int d = t->AddDimension(OmStringCell("Imputation Number"));
  OmDimension& dim = t->Dimension(d);
  auto group = [&dim](const std::vector<double>& values) {
    OmDimension::Node g = dim.Child(&dim.Root(), -1, OmStringCell("Group"), true);
    for (double v : values) dim.Child(g, -1, OmNumDataValue("Imputation_", "", v, kNoDecimals), false);
  };
  group({0.0, 1.0});  // imputation 1 stays
  group({0.0, 2.0});  // not looked at any more: its original data stays
  EXPECT_FALSE(OmMIPooler::PruneImputationCategories(dim, &dim.Root(), false, true, false));
  ASSERT_EQ(dim.Root().NChildren(), 2u);
  EXPECT_EQ(dim.Root().Child(0)->NChildren(), 1u);
  EXPECT_EQ(dim.Root().Child(1)->NChildren(), 2u);
  // Groups stay even when all their categories go.
  EXPECT_TRUE(OmMIPooler::PruneImputationCategories(dim, &dim.Root(), false, false, false));
  EXPECT_EQ(dim.Root().NChildren(), 2u);
  EXPECT_EQ(dim.Root().Child(0)->NChildren(), 0u);
}

TEST(MIPooler, PoolingPastTheCellLimitMarksTheTitleAndUnscratches) {
  ScopedMiOutput output(true, true, true, false);
  Report r(2);
  r->MaxCells(r->NCells() + 1);  // room for one pooled cell only
  OmMIPooler pooler(&kMeans, nullptr, true, true, true, false);
  pooler.Visit(*r);
  EXPECT_FALSE(r->IsScratched());
  EXPECT_EQ(r->TableTitle()->TextColor(), "#FF0000");
  const std::vector<std::string> notes = NotesOf(*r, r->TableTitle());
  ASSERT_EQ(notes.size(), 1u);
  EXPECT_NE(notes[0].find(std::to_string(r->MaxCells())), std::string::npos) << notes[0];
  EXPECT_EQ(r->NCells(), r->MaxCells());
}
