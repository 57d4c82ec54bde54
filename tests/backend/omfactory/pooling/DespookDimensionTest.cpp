#include "backend/omfactory/pooling/DespookDimension.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MITableBuilder.h"

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
