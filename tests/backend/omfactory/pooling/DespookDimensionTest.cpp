#include "backend/omfactory/pooling/DespookDimension.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PoolingTables.h"

using pooltest::NumberAt;
using pooltest::TableBuilder;

namespace {

// A coefficients table whose key dimension repeats the block {(Constant), x} once per model.
struct Blocks : TableBuilder {
  int key = -1, stats = -1;
  std::vector<std::vector<int>> block;

  explicit Blocks(int count) : TableBuilder("Coefficients") {
    key = Dim("Variables", {});
    for (int b = 0; b < count; ++b) block.push_back(Group(key, "Block", {"(Constant)", "x"}));
    stats = Dim("Statistics", {"B", "Std. Error"});
  }
  bool Despook() { return DespookDimension()(**this, key, stats); }
};

}  // namespace

TEST(DespookDimension, SourceWithoutACellAtSomeStatisticClearsTheTargetThere) {
  Blocks b(2);
  b.Number({b.block[0][0], 1}, 0.5);  // the first block's standard error
  b.Number({b.block[0][1], 1}, 0.6);
  b.Number({b.block[1][0], 0}, 7.0);  // the second block states B only
  b.Number({b.block[1][1], 0}, 8.0);
  EXPECT_TRUE(b.Despook());
  EXPECT_EQ(NumberAt(*b, {b.block[0][0], 0}).Value(), 7.0);
  EXPECT_EQ(b->Cell({b.block[0][0], 1}), nullptr);
  EXPECT_EQ(b->Cell({b.block[0][1], 1}), nullptr);
}

TEST(DespookDimension, SourceCategoryWithoutCellsFailsButOtherPairsStillMove) {
  Blocks b(2);
  b.Number({b.block[0][0], 0}, 1.0);
  b.Number({b.block[1][1], 0}, 2.0);  // the second block has no constant
  EXPECT_FALSE(b.Despook());
  EXPECT_EQ(b->Dimension(b.key).Root().NChildren(), 2u);
  EXPECT_EQ(NumberAt(*b, {b.block[0][0], 0}).Value(), 1.0);
  EXPECT_EQ(NumberAt(*b, {b.block[0][1], 0}).Value(), 2.0);
  EXPECT_EQ(b->Cell({b.block[1][1], 0}), nullptr);
}

TEST(DespookDimension, TablesThatAreNotBlocksOfEqualGroupsStayAsTheyAre) {
  TableBuilder categories("Coefficients");
  const int key = categories.Dim("Variables", {"(Constant)", "x"});
  const int stats = categories.Dim("Statistics", {"B"});
  categories.Number({0, 0}, 1.0);
  EXPECT_FALSE(DespookDimension()(*categories, key, stats));

  Blocks different(1);
  different.Group(different.key, "Block", {"(Constant)", "z"});
  different.Number({different.block[0][0], 0}, 1.0);
  EXPECT_FALSE(different.Despook());
  EXPECT_EQ(different->Dimension(different.key).Root().NChildren(), 2u);
  EXPECT_TRUE(Blocks(1).Despook());
}

TEST(DespookDimension, CombineRefusesOperandsThatAreNotGroups) {
  TableBuilder t("Coefficients");
  const int key = t.Dim("Variables", {"x"});
  t.Group(key, "Block", {"y"});
  OmDimension& dim = t->Dimension(key);
  OmDimension::Node nested = dim.Child(&dim.Root(), -1, OmStringCell("Block"), true);
  dim.Child(nested, -1, OmStringCell("y"), true);
  dim.Child(nested->Child(0), -1, OmStringCell("z"), false);
  const SliceIndex walk(*t, {key, t.Dim("Statistics", {"B"})});
  DespookDimension despook;
  EXPECT_EQ(pooltest::ErrorOf([&] { despook.Combine(dim.Root().Child(0), dim.Root().Child(1), *t, walk); }),
            "DespookDimension::Combine -- target is not a group, value 1 == 0, value 2 == 0");
  EXPECT_EQ(pooltest::ErrorOf([&] { despook.Combine(nested, dim.Root().Child(1), *t, walk); }),
            "DespookDimension::Combine -- s is not a group, value 1 == 0, value 2 == 0");
}
