#include "backend/omfactory/pooling/DespookDimension.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MITableBuilder.h"
#include "platform/errors/OMSException.h"

using mitest::NumberAt;
using mitest::TableBuilder;

namespace {

// A coefficients table whose key dimension repeats the block {(Constant), x} once per model.
struct Blocks {
  TableBuilder t{"Coefficients"};
  int key = -1;
  int stats = -1;
  std::vector<std::vector<int>> block;

  explicit Blocks(int count, const std::vector<std::string>& terms = {"(Constant)", "x"}) {
    key = t.Dim("Variables", {});
    for (int b = 0; b < count; ++b) block.push_back(t.Group(key, "Block", terms));
    stats = t.Dim("Statistics", {"B", "Std. Error"});
  }
};

}  // namespace

TEST(DespookDimension, SourceWithoutACellAtSomeStatisticClearsTheTargetThere) {
  Blocks b(2);
  b.t.Number({b.block[0][0], 1}, 0.5);  // the first block's standard error
  b.t.Number({b.block[0][1], 1}, 0.6);
  b.t.Number({b.block[1][0], 0}, 7.0);  // the second block states B only
  b.t.Number({b.block[1][1], 0}, 8.0);
  EXPECT_TRUE(DespookDimension()(*b.t, b.key, b.stats));
  EXPECT_EQ(NumberAt(*b.t, {b.block[0][0], 0}).Value(), 7.0);
  EXPECT_EQ(b.t->Cell({b.block[0][0], 1}), nullptr);
  EXPECT_EQ(b.t->Cell({b.block[0][1], 1}), nullptr);
}

TEST(DespookDimension, SourceCategoryWithoutCellsFailsButOtherPairsStillMove) {
  Blocks b(2);
  b.t.Number({b.block[0][0], 0}, 1.0);
  b.t.Number({b.block[1][1], 0}, 2.0);  // the second block has no constant
  EXPECT_FALSE(DespookDimension()(*b.t, b.key, b.stats));
  EXPECT_EQ(b.t->Dimension(b.key).Root().NChildren(), 2u);
  EXPECT_EQ(NumberAt(*b.t, {b.block[0][0], 0}).Value(), 1.0);
  EXPECT_EQ(NumberAt(*b.t, {b.block[0][1], 0}).Value(), 2.0);
  EXPECT_EQ(b.t->Cell({b.block[1][1], 0}), nullptr);
}

TEST(DespookDimension, TablesThatAreNotBlocksOfEqualGroupsStayAsTheyAre) {
  TableBuilder categories("Coefficients");
  const int key = categories.Dim("Variables", {"(Constant)", "x"});
  const int stats = categories.Dim("Statistics", {"B"});
  categories.Number({0, 0}, 1.0);
  EXPECT_FALSE(DespookDimension()(*categories, key, stats));

  Blocks different(1);
  different.t.Group(different.key, "Block", {"(Constant)", "z"});
  different.t.Number({different.block[0][0], 0}, 1.0);
  EXPECT_FALSE(DespookDimension()(*different.t, different.key, different.stats));
  EXPECT_EQ(different.t->Dimension(different.key).Root().NChildren(), 2u);

  Blocks single(1);
  EXPECT_TRUE(DespookDimension()(*single.t, single.key, single.stats));
}

TEST(DespookDimension, CombineRefusesOperandsThatAreNotGroups) {
  TableBuilder t("Coefficients");
  const int key = t.Dim("Variables", {"x"});
  t.Group(key, "Block", {"y"});
  OmDimension& dim = t->Dimension(key);
  OmDimension::Node nested = dim.Child(&dim.Root(), -1, OmStringCell("Block"), true);
  dim.Child(nested, -1, OmStringCell("y"), true);
  dim.Child(nested->Child(0), -1, OmStringCell("z"), false);
  const int stats = t.Dim("Statistics", {"B"});
  const SliceIndex walk(*t, {key, stats});
  DespookDimension despook;
  try {
    despook.Combine(dim.Root().Child(0), dim.Root().Child(1), *t, walk);
    FAIL() << "a category was combined";
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message(), "DespookDimension::Combine -- target is not a group");
  }
  try {
    despook.Combine(nested, dim.Root().Child(1), *t, walk);
    FAIL() << "a subgroup was combined with a category";
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message(), "DespookDimension::Combine -- s is not a group");
  }
}
