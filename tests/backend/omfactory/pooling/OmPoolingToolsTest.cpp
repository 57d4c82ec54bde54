#include "backend/omfactory/pooling/OmPoolingTools.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "MITableBuilder.h"
#include "platform/outputmodel/OmStringCell.h"

using mitest::TableBuilder;
using T = OmPoolingTools;

namespace {

}  // namespace

// --- Finding categories

TEST(PoolingToolsCategories, LabelPathFindsCategoryInsideNamedGroupThroughUnnamedGroups) {
  TableBuilder t("Any");
  const int d = t.Dim("Statistics", {"Valid"});  // a top-level "Valid" that the path must skip
  OmDimension& dim = t->Dimension(d);
  OmDimension::Node outer = dim.Child(&dim.Root(), -1, OmStringCell("Counts"), true);
  OmDimension::Node n = dim.Child(outer, -1, OmStringCell("N"), true);
  dim.Child(n, -1, OmStringCell("Missing"), false);
  const int valid = dim.Child(n, -1, OmStringCell("Valid"), false)->LeafIndex();

  EXPECT_EQ(T::FindMatchingCategory(std::string("N#Valid"), &dim.Root()), valid);
  EXPECT_EQ(T::FindMatchingCategory(std::string("Valid"), &dim.Root()), 0);
  EXPECT_EQ(T::FindMatchingCategory(std::string("N"), &dim.Root()), -1);  // a group is no answer
  EXPECT_EQ(T::FindMatchingCategory(std::string("Missing#N"), &dim.Root()), -1);
  EXPECT_EQ(T::FindMatchingCategory(std::string(""), &dim.Root()), -1);
}

// --- Bootstrap helpers

TEST(PoolingToolsBootstrap, DemoteDimensionMovesItToTheFrontInTheCallersStorage) {
  std::vector<short> order{3, 1, 4, 1};
  T::DemoteDimension(PuppetVector<short>(order, -1), 1);
  EXPECT_EQ(order, (std::vector<short>{1, 3, 4, 1}));
  T::DemoteDimension(PuppetVector<short>(order, -1), 9);
  T::DemoteDimension(PuppetVector<short>(order, -1), 1);
  EXPECT_EQ(order, (std::vector<short>{1, 3, 4, 1}));
}

