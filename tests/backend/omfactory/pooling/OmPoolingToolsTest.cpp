#include "backend/omfactory/pooling/OmPoolingTools.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "PoolingTables.h"
#include "backend/omfactory/pooling/PoolingData.h"
#include "platform/mipool/PoolingErrors.h"
#include "platform/outputmodel/OmComposite.h"

using pooltest::TableBuilder;
using T = OmPoolingTools;

TEST(PoolingToolsCategories, LabelPathFindsCategoryInsideNamedGroupThroughUnnamedGroups) {
  TableBuilder t("Any");
  const int d = t.Dim("Statistics", {"Valid"});  // a top-level "Valid" that the path must skip
  OmDimension& dim = t->Dimension(d);
  OmDimension::Node outer = dim.Child(&dim.Root(), -1, OmStringCell("Counts"), true);
  OmDimension::Node n = dim.Child(outer, -1, OmStringCell("N"), true);
  dim.Child(n, -1, OmStringCell("Missing"), false);
  const int valid = dim.Child(n, -1, OmStringCell("Valid"), false)->LeafIndex();

  // "N" is a group, no answer.
  for (const auto& [path, category] : {std::pair<std::string, int>{"N#Valid", valid}, {"Valid", 0}, {"N", -1},
                                       {"Missing#N", -1}, {"", -1}}) {
    EXPECT_EQ(T::FindMatchingCategory(path, &dim.Root()), category) << path;
  }
}

TEST(PoolingToolsCategories, FindSearchesSiblingsDepthFirstUpToTheEnd) {
  TableBuilder t("Any");
  const int d = t.Dim("Statistics", {"A"});
  t.Group(d, "G", {"B", "C"});
  t.Category(d, "D");
  const OmDimensionNode& root = t->Dimension(d).Root();
  const OmDimensionNode* a = root.Child(0);
  const OmDimensionNode* g = root.Child(1);
  const OmDimensionNode* last = root.Child(2);
  const OmStringCell c("C"), dLabel("D"), gLabel("G");
  EXPECT_EQ(T::Find(a, nullptr, &c), g->Child(1));
  EXPECT_EQ(T::Find(a, nullptr, &gLabel), g);
  EXPECT_EQ(T::Find(a, g, &c), g);  // C lies inside the end node: not in the range
  EXPECT_EQ(T::Find(a, nullptr, &dLabel), last);
  EXPECT_EQ(T::Find(g, nullptr, nullptr), nullptr);
}

TEST(PoolingToolsCategories, ConfidenceIntervalGroupNeedsExactlyTwoBounds) {
  TableBuilder t("Any");
  const int d = t.Dim("Statistics", {});
  t.Group(d, "Interval", {"Lower", "Middle", "Upper"});
  int a = 5, b = 5;
  double level = 0;
  EXPECT_FALSE(T::FindCI(t->Dimension(d), "Interval", a, b, level));
  EXPECT_FALSE(T::FindCI(t->Dimension(d), "Missing", a, b, level));
  EXPECT_EQ(a, -1);
  EXPECT_EQ(b, -1);
  EXPECT_DOUBLE_EQ(level, 0.95);
}

TEST(PoolingToolsBootstrap, SplitNumberIsTheOneDigitAfterTheMarkerOrTheWholeDataValue) {
  OmComposite inner("^1", false);
  inner.Add(OmStringCell("$bootstrap_split=4"));
  OmComposite outer("^1 ^2", false);
  outer.Add(OmStringCell("nothing"));
  outer.Add(inner);
  const OmStringCell three("$bootstrap_split=3"), spaced("x $bootstrap_split = 12");
  const OmStringCell letter("$bootstrap_split= a"), none("bootstrap 3");
  const OmNumDataValue whole("$bootstrap_split", "", 2.0, pooltest::kNoDecimals);
  const OmNumDataValue fraction("$bootstrap_split", "", 2.5, pooltest::kNoDecimals);
  const OmNumDataValue otherCase("$BOOTSTRAP_SPLIT", "", 2.0, pooltest::kNoDecimals);
  const OmNumber number(2.0);
  const std::pair<const OmCellText*, int> cases[] = {
      {&three, 3},     {&spaced, 1},   {&letter, -1},   {&none, -1},      {nullptr, -1},
      {&outer, 4},     {&whole, 2},    {&fraction, -1}, {&otherCase, -1}, {&number, -1}};
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE("case " + std::to_string(i));
    EXPECT_EQ(T::BootstrapSplitNum(cases[i].first), cases[i].second);
  }
}

TEST(PoolingToolsBootstrap, DemoteDimensionMovesItToTheFrontInTheCallersStorage) {
  std::vector<short> order{3, 1, 4, 1};
  T::DemoteDimension(PuppetVector<short>(order, -1), 1);
  EXPECT_EQ(order, (std::vector<short>{1, 3, 4, 1}));
  T::DemoteDimension(PuppetVector<short>(order, -1), 9);
  T::DemoteDimension(PuppetVector<short>(order, -1), 1);
  EXPECT_EQ(order, (std::vector<short>{1, 3, 4, 1}));
}


// The texts a pooled table shows: an error the pooler knows by its own words, any other with its
// code as an argument (one translation for all), and the bootstrap samples by sampling method.
TEST(PoolingToolsTexts, ErrorsAndSamplingMethodsInTheirOwnWords) {
  EXPECT_EQ(T::PoolingErrorText(MPError::kBadConfidenceLevel)->Text(),
            "The confidence level must lie strictly between 0 and 1.");
  EXPECT_EQ(T::PoolingErrorText(9999)->Text(), "Pooling failed with error code 9999.");
  const char* const methods[] = {"bootstrap samples", "stratified bootstrap samples",
                                 "residual bootstrap samples", "wild bootstrap samples",
                                 "bootstrap samples"};
  for (unsigned m = 0; m < std::size(methods); ++m) {
    EXPECT_EQ(PoolingData::SamplingText(m), methods[m]);
  }
}
