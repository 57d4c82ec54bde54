#include "tools/render/OmTableLayout.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"

namespace {

using Cell = OmTableLayout::HeaderCell;

OmStringCell S(const std::string& text) { return OmStringCell(text); }

// Adds categories (and one group with categories) to dimension d.
void Categories(OmPivotTable& t, int d, std::initializer_list<const char*> labels) {
  OmDimension& dim = t.Dimension(d);
  for (const char* l : labels) dim.Child(&dim.Root(), -1, S(l), false);
}

std::string Text(const Cell& c) { return c.label ? c.label->Text() : std::string("-"); }

// "label@band,position depth x span" for compact comparisons.
std::string Describe(const std::vector<Cell>& cells) {
  std::string out;
  for (const Cell& c : cells) {
    out += Text(c) + "@" + std::to_string(c.band) + "," + std::to_string(c.position) + " " +
           std::to_string(c.depth) + "x" + std::to_string(c.span) + "; ";
  }
  return out;
}

// Columns: A (a1, a2) outside B (group G {x, y}, then z).
std::unique_ptr<OmPivotTable> TwoColumnDimensions() {
  auto t = std::make_unique<OmPivotTable>(S("T"), S("T"));
  const int a = t->AddDimension(S("A"));
  const int b = t->AddDimension(S("B"));
  t->Columns().push_back(short(a));
  t->Columns().push_back(short(b));
  Categories(*t, a, {"a1", "a2"});
  OmDimension& bd = t->Dimension(b);
  OmDimensionNode* g = bd.Child(&bd.Root(), -1, S("G"), true);
  bd.Child(g, -1, S("x"), false);
  bd.Child(g, -1, S("y"), false);
  bd.Child(&bd.Root(), -1, S("z"), false);
  return t;
}

TEST(OmTableLayout, DimensionsGoWhereTheAxesSayAndUnplacedOnesJoinTheRows) {
  OmPivotTable t(S("T"), S("T"));
  for (const char* l : {"d0", "d1", "d2", "d3"}) t.AddDimension(S(l));
  t.Rows().push_back(1);
  t.Columns().push_back(0);
  t.Layers().push_back(3);
  const OmTableLayout layout(t);
  EXPECT_EQ(layout.Dimensions(OmTableLayout::kRows), (std::vector<int>{1, 2}));
  EXPECT_EQ(layout.Dimensions(OmTableLayout::kColumns), (std::vector<int>{0}));
  EXPECT_EQ(layout.Dimensions(OmTableLayout::kLayers), (std::vector<int>{3}));
  EXPECT_EQ(layout.AxisOf(2), OmTableLayout::kRows);
  EXPECT_EQ(layout.AxisOf(3), OmTableLayout::kLayers);
}

TEST(OmTableLayout, EmptyPositionsOutOfRangeEntriesAndRepeatsAreSkipped) {
  OmPivotTable t(S("T"), S("T"));
  t.AddDimension(S("d0"));
  t.AddDimension(S("d1"));
  for (short d : {short(-1), short(0), short(7), short(0)}) t.Rows().push_back(d);
  t.Columns().push_back(0);
  t.Columns().push_back(1);
  const OmTableLayout layout(t);
  EXPECT_EQ(layout.Dimensions(OmTableLayout::kRows), (std::vector<int>{0}));
  EXPECT_EQ(layout.Dimensions(OmTableLayout::kColumns), (std::vector<int>{1}));
}

TEST(OmTableLayout, ColumnHeaderSpansGroupsAndOuterCategories) {
  auto t = TwoColumnDimensions();
  const OmTableLayout layout(*t);
  const auto combos = layout.Combinations(OmTableLayout::kColumns);
  ASSERT_EQ(combos.size(), 6u);
  int bands = 0;
  const auto cells = layout.Header(OmTableLayout::kColumns, combos, bands);
  EXPECT_EQ(bands, 5);
  // A's label over all six columns; a1 and a2 over three each; B's label once under each; the
  // group G over x and y; z, a category above B's deepest level, covers two bands.
  EXPECT_EQ(Describe(cells),
            "A@0,0 1x6; a1@1,0 1x3; a2@1,3 1x3; B@2,0 1x3; B@2,3 1x3; "
            "G@3,0 1x2; z@3,2 2x1; G@3,3 1x2; z@3,5 2x1; x@4,0 1x1; y@4,1 1x1; x@4,3 1x1; y@4,4 1x1; ");
  EXPECT_EQ(cells[5].kind, Cell::kGroup);
  EXPECT_EQ(cells[6].kind, Cell::kCategory);
  EXPECT_EQ(cells[0].kind, Cell::kDimension);
}

TEST(OmTableLayout, RowHeaderLeavesDimensionLabelsToTheCorner) {
  auto t = TwoColumnDimensions();
  t->Columns().Clear();
  t->Rows().push_back(0);
  t->Rows().push_back(1);
  const OmTableLayout layout(*t);
  int bands = 0;
  const auto cells = layout.Header(OmTableLayout::kRows, layout.Combinations(OmTableLayout::kRows), bands);
  EXPECT_EQ(bands, 3);
  EXPECT_EQ(Describe(cells),
            "a1@0,0 1x3; a2@0,3 1x3; G@1,0 1x2; z@1,2 2x1; G@1,3 1x2; z@1,5 2x1; "
            "x@2,0 1x1; y@2,1 1x1; x@2,3 1x1; y@2,4 1x1; ");
}

TEST(OmTableLayout, HiddenLabelsAndHiddenCategoriesTakeNoBand) {
  auto t = TwoColumnDimensions();
  t->Dimension(0).setDisplayFlags(true, false);  // A: label hidden
  t->Dimension(1).setDisplayFlags(false, true);  // B: categories hidden
  const OmTableLayout layout(*t);
  int bands = 0;
  const auto cells = layout.Header(OmTableLayout::kColumns, layout.Combinations(OmTableLayout::kColumns), bands);
  EXPECT_EQ(bands, 2);
  EXPECT_EQ(layout.CategoryBands(1), 0);
  EXPECT_EQ(Describe(cells), "a1@0,0 1x3; a2@0,3 1x3; B@1,0 1x3; B@1,3 1x3; ");
}

TEST(OmTableLayout, DimensionWithoutCategoriesStillAddressesCoordinateZero) {
  OmPivotTable t(S("T"), S("T"));
  const int d = t.AddDimension(S("Empty"));
  const int e = t.AddDimension(S("E"));
  Categories(t, e, {"e0", "e1"});
  t.Rows().push_back(short(d));
  t.Columns().push_back(short(e));
  const OmTableLayout layout(t);
  ASSERT_EQ(layout.Leaves(d).size(), 1u);
  EXPECT_EQ(layout.Leaves(d)[0].coord, 0);
  EXPECT_TRUE(layout.Leaves(d)[0].path.empty());
  EXPECT_EQ(layout.CategoryBands(d), 0);
  const auto rows = layout.Combinations(OmTableLayout::kRows);
  const auto columns = layout.Combinations(OmTableLayout::kColumns);
  const auto layers = layout.Combinations(OmTableLayout::kLayers);
  ASSERT_EQ(layers.size(), 1u);
  EXPECT_EQ(layout.Coordinates(rows[0], columns[1], layers[0]), (std::vector<int>{0, 1}));
}

TEST(OmTableLayout, CoordinatesFollowLeafIndicesNotTreeOrder) {
  OmPivotTable t(S("T"), S("T"));
  const int d = t.AddDimension(S("D"));
  OmDimension& dim = t.Dimension(d);
  // Sorted categories: the tree order differs from the order the cells were numbered in.
  dim.Child(&dim.Root(), 2, S("c"), false);
  dim.Child(&dim.Root(), 0, S("a"), false);
  dim.Child(&dim.Root(), 1, S("b"), false);
  t.Rows().push_back(short(d));
  const OmTableLayout layout(t);
  const auto rows = layout.Combinations(OmTableLayout::kRows);
  const auto none = layout.Combinations(OmTableLayout::kColumns);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(layout.Coordinates(rows[0], none[0], none[0]), (std::vector<int>{2}));
  EXPECT_EQ(layout.Coordinates(rows[1], none[0], none[0]), (std::vector<int>{0}));
}

TEST(OmTableLayout, GridSizeMultipliesTheAxesAndSaturates) {
  auto t = TwoColumnDimensions();
  const int r = t->AddDimension(S("R"));
  Categories(*t, r, {"r0", "r1", "r2", "r3"});
  t->Rows().push_back(short(r));
  EXPECT_EQ(OmTableLayout(*t).GridSize(), 24u);

  // Seventy dimensions of two categories each: 2^70 positions do not fit a size_t.
  OmPivotTable huge(S("H"), S("H"));
  for (int i = 0; i < 70; ++i) {
    const int d = huge.AddDimension(S("d" + std::to_string(i)));
    Categories(huge, d, {"x", "y"});
    huge.Layers().push_back(short(d));
  }
  const OmTableLayout layout(huge);
  EXPECT_EQ(layout.CombinationCount(OmTableLayout::kLayers), SIZE_MAX);
  EXPECT_EQ(layout.GridSize(), SIZE_MAX);
}

}  // namespace
