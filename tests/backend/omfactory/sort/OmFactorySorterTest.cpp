#include "backend/omfactory/sort/OmFactorySorter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"

namespace {

using Node = OmDimensionNode*;

OmStringCell Text(const std::string& text) { return OmStringCell(text); }

// The labels of node's children, in order.
std::vector<std::string> Labels(const OmDimensionNode& node) {
  std::vector<std::string> labels;
  for (const auto& child : node.Children()) labels.push_back(child->Label()->Text());
  return labels;
}

using Strings = std::vector<std::string>;

// A table with one dimension "Region": a group "North" of "Oslo", "Bergen", "Alta", then the
// categories "Zurich" and "Bern", then a group "South" of "Rome", "Milan". Each category's cell
// holds its own name.
class SorterTest : public ::testing::Test {
protected:
  SorterTest() : _table(Text("Table"), Text("Regions")) {
    _dim = &_table.Dimension(_table.AddDimension(Text("Region")));
    Node root = &_dim->Root();
    _north = _dim->Child(root, -1, Text("North"), true);
    for (const char* city : {"Oslo", "Bergen", "Alta"}) Category(_north, city);
    Category(root, "Zurich");
    Category(root, "Bern");
    _south = _dim->Child(root, -1, Text("South"), true);
    for (const char* city : {"Rome", "Milan"}) Category(_south, city);
  }

  void Category(Node parent, const std::string& name) {
    Node category = _dim->Child(parent, -1, Text(name), false);
    _table.Cell({category->LeafIndex()}, Text(name));
  }

  void Sort() {
    OmFactorySorter sorter;
    _table.Accept(sorter);
  }

  // Every category's cell still holds its own name, wherever the category moved.
  void ExpectCellsFollowCategories() const {
    for (const OmDimensionNode* leaf : _dim->Leaves()) {
      const OmCellText* cell = _table.Cell({leaf->LeafIndex()});
      ASSERT_NE(cell, nullptr);
      EXPECT_EQ(cell->Text(), leaf->Label()->Text());
    }
  }

  OmPivotTable _table;
  OmDimension* _dim = nullptr;
  Node _north = nullptr;
  Node _south = nullptr;
};

TEST_F(SorterTest, TableWithoutMarksIsUnchanged) {
  _north->setSortMark(7);  // neither ascending nor descending
  Sort();
  EXPECT_EQ(Labels(_dim->Root()), (Strings{"North", "Zurich", "Bern", "South"}));
  EXPECT_EQ(Labels(*_north), (Strings{"Oslo", "Bergen", "Alta"}));
  EXPECT_EQ(Labels(*_south), (Strings{"Rome", "Milan"}));
}

TEST_F(SorterTest, GroupMarkedAscendingInsideUnmarkedDimensionSortsOnlyItsMembers) {
  _north->setSortMark(0);
  Sort();
  EXPECT_EQ(Labels(*_north), (Strings{"Alta", "Bergen", "Oslo"}));
  EXPECT_EQ(Labels(_dim->Root()), (Strings{"North", "Zurich", "Bern", "South"}));
  EXPECT_EQ(Labels(*_south), (Strings{"Rome", "Milan"}));
  ExpectCellsFollowCategories();
}

TEST_F(SorterTest, DimensionMarkedDescendingSortsItsTopLevelOnly) {
  _dim->Root().setSortMark(1);
  Sort();
  EXPECT_EQ(Labels(_dim->Root()), (Strings{"Zurich", "South", "North", "Bern"}));
  // Unmarked groups keep the order of their members, and keep all of them.
  EXPECT_EQ(Labels(*_dim->Root().Child(1)), (Strings{"Rome", "Milan"}));
  EXPECT_EQ(Labels(*_dim->Root().Child(2)), (Strings{"Oslo", "Bergen", "Alta"}));
  ExpectCellsFollowCategories();
}

TEST_F(SorterTest, EachGroupIsSortedByItsOwnMark) {
  _dim->Root().setSortMark(0);
  _north->setSortMark(1);
  _south->setSortMark(0);
  Sort();
  EXPECT_EQ(Labels(_dim->Root()), (Strings{"Bern", "North", "South", "Zurich"}));
  EXPECT_EQ(Labels(*_dim->Root().Child(1)), (Strings{"Oslo", "Bergen", "Alta"}));
  EXPECT_EQ(Labels(*_dim->Root().Child(2)), (Strings{"Milan", "Rome"}));
  ExpectCellsFollowCategories();
}

TEST_F(SorterTest, MovedNodesPointToTheirParents) {
  _dim->Root().setSortMark(1);
  _north->setSortMark(0);
  Sort();
  for (const auto& child : _dim->Root().Children()) {
    EXPECT_EQ(child->Parent(), &_dim->Root());
    for (const auto& grandchild : child->Children()) EXPECT_EQ(grandchild->Parent(), child.get());
  }
}

TEST(Sorter, SortedCategoriesAreFoundAtTheirNewPositions) {
  // Enough categories for the node's hashed look-up, which is built before the sort.
  OmPivotTable table(Text("Table"), Text("Many"));
  OmDimension& dim = table.Dimension(table.AddDimension(Text("D")));
  for (int i = 0; i < 30; ++i) {
    dim.Child(&dim.Root(), -1, Text("c" + std::to_string(100 + i)), false);
  }
  ASSERT_EQ(dim.FindChild(&dim.Root(), Text("c100"), false), 0);
  dim.Root().setSortMark(1);

  OmFactorySorter sorter;
  table.Accept(sorter);
  EXPECT_EQ(dim.FindChild(&dim.Root(), Text("c100"), false), 29);
  EXPECT_EQ(dim.FindChild(&dim.Root(), Text("c129"), false), 0);
}

TEST(Sorter, GroupsWithOneMemberOrNoneAreLeftAsTheyAre) {
  OmPivotTable table(Text("Table"), Text("Small"));
  OmDimension& dim = table.Dimension(table.AddDimension(Text("D")));
  Node single = dim.Child(&dim.Root(), -1, Text("Single"), true);
  dim.Child(single, -1, Text("Only"), false);
  Node empty = dim.Child(&dim.Root(), -1, Text("Empty"), true);
  single->setSortMark(0);
  empty->setSortMark(1);

  OmFactorySorter sorter;
  table.Accept(sorter);
  EXPECT_EQ(Labels(dim.Root()), (Strings{"Single", "Empty"}));
  EXPECT_EQ(Labels(*dim.Root().Child(0)), (Strings{"Only"}));
  EXPECT_EQ(dim.Root().Child(1)->NChildren(), 0u);
}

TEST(Sorter, NumericCategoriesSortByValue) {
  OmPivotTable table(Text("Table"), Text("Counts"));
  OmDimension& dim = table.Dimension(table.AddDimension(Text("N")));
  for (double v : {10.0, 9.0, 100.0, -1.0}) dim.Child(&dim.Root(), -1, OmNumber(v), false);
  dim.Root().setSortMark(0);

  OmFactorySorter sorter;
  table.Accept(sorter);
  std::vector<double> order;
  for (const auto& child : dim.Root().Children()) {
    order.push_back(static_cast<const OmNumber&>(*child->Label()).Value());
  }
  EXPECT_EQ(order, (std::vector<double>{-1.0, 9.0, 10.0, 100.0}));
}

TEST(Sorter, EveryDimensionOfATableIsSorted) {
  OmPivotTable table(Text("Table"), Text("Two"));
  for (const char* name : {"First", "Second"}) {
    OmDimension& dim = table.Dimension(table.AddDimension(Text(name)));
    for (const char* c : {"b", "c", "a"}) dim.Child(&dim.Root(), -1, Text(c), false);
    dim.Root().setSortMark(1);
  }
  OmFactorySorter sorter;
  table.Accept(sorter);
  EXPECT_EQ(Labels(table.Dimension(0).Root()), (Strings{"c", "b", "a"}));
  EXPECT_EQ(Labels(table.Dimension(1).Root()), (Strings{"c", "b", "a"}));
}

}  // namespace
