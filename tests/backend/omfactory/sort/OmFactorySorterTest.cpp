#include "backend/omfactory/sort/OmFactorySorter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"

namespace {

using Node = OmDimensionNode*;

OmStringCell Text(const std::string& text) { return OmStringCell(text); }

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

}  // namespace
