#include "platform/outputmodel/OmPivotTable.h"

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmVariable.h"

namespace {

OmStringCell S(const std::string& t) { return OmStringCell(t); }

double ValueAt(const OmPivotTable& t, const std::vector<int>& c) {
  auto* n = dynamic_cast<OmNumber*>(t.Cell(c));
  return n ? n->Value() : -999;
}

TEST(OmPivotTable, DimensionsAreFoundByTheirLabel) {
  OmPivotTable t(S("Label"), S("Descriptive Statistics"));
  EXPECT_EQ(t.FindDimension(S("x")), -1);
  EXPECT_EQ(t.AddDimension(OmVariable("age", "Age")), 0);
  EXPECT_EQ(t.AddDimension(S("Statistics")), 1);
  EXPECT_EQ(t.FindDimension(OmVariable("age", "")), 0);
  EXPECT_EQ(t.FindDimension(S("Statistics")), 1);
  EXPECT_EQ(t.FindDimension(S("age")), -1);
  EXPECT_EQ(t.NDimensions(), 2);
  EXPECT_THROW(t.Dimension(2), OMSException);
  EXPECT_THROW(t.Dimension(-1), OMSException);
}

TEST(OmPivotTable, AxisListsAreTheTablesOwnAndFillWithMinusOne) {
  OmPivotTable t(S("t"), S("t"));
  auto cols = t.Columns();
  EXPECT_EQ(cols.Fill(), -1);
  cols.Resize(3);
  cols[2] = 2;
  t.Rows().Insert(0, 0);
  EXPECT_EQ(static_cast<const OmPivotTable&>(t).Columns(), (std::vector<short>{-1, -1, 2}));
  EXPECT_EQ(static_cast<const OmPivotTable&>(t).Rows(), (std::vector<short>{0}));
  EXPECT_EQ(t.Axis(2).size(), 0u);
  EXPECT_THROW(t.Axis(3), OMSException);
}

TEST(OmPivotTable, BadCoordinatesAreRefused) {
  OmPivotTable t(S("t"), S("t"));
  t.AddDimension(S("a"));
  EXPECT_THROW(t.Cell({0, 0}), OMSException);
  EXPECT_THROW(t.Cell({0, 0}, OmNumber(1)), OMSException);
  EXPECT_THROW(t.Cell({-1}, OmNumber(1)), OMSException);
  EXPECT_EQ(t.NCells(), 0u);
}

TEST(OmPivotTable, HoldsAMillionCellsCompactly) {
  OmPivotTable t(S("t"), S("t"));
  for (int d = 0; d < 4; ++d) t.AddDimension(OmNumber(d));
  std::vector<int> c(4);
  int n = 0;
  for (c[0] = 0; c[0] < 10; ++c[0])
    for (c[1] = 0; c[1] < 100; ++c[1])
      for (c[2] = 0; c[2] < 100; ++c[2]) {
        c[3] = (c[0] + c[1] + c[2]) % 7;
        t.Cell(c, std::make_unique<OmNumber>(n++));
      }
  EXPECT_EQ(t.NCells(), 100000u);
  // Another 900,000 in a fresh region of dimension 3.
  c[3] = 10;
  for (c[0] = 0; c[0] < 10; ++c[0])
    for (c[1] = 0; c[1] < 300; ++c[1])
      for (c[2] = 0; c[2] < 300; ++c[2]) t.Cell(c, std::make_unique<OmNumber>(n++));
  EXPECT_EQ(t.NCells(), 1000000u);
  EXPECT_EQ(ValueAt(t, {9, 99, 99, (9 + 99 + 99) % 7}), 99999);
  EXPECT_EQ(ValueAt(t, {9, 299, 299, 10}), 999999);
  // The store costs well under 100 bytes a cell, index included.
  EXPECT_LT(t.CellIndexBytes() / t.NCells(), 50u);
}

TEST(OmPivotTable, EqualFootnotesAreStoredOnce) {
  OmPivotTable t(S("t"), S("t"));
  OmStringCell star("*");
  EXPECT_EQ(t.Footnote(OmFootnote(S("Based on 1000 samples"))), 0);
  EXPECT_EQ(t.Footnote(OmFootnote(S("Lower bound"))), 1);
  EXPECT_EQ(t.Footnote(OmFootnote(S("Based on 1000 samples"))), 0);
  EXPECT_EQ(t.Footnote(OmFootnote(S("Lower bound"), &star)), 2);  // a marker makes another
  EXPECT_EQ(t.Footnote(OmFootnote(S("Lower bound")), true), 3);   // so does forcing
  EXPECT_EQ(t.Footnote(OmFootnote(S("Lower bound"), &star)), 2);
  ASSERT_EQ(t.Footnotes().size(), 4u);
  EXPECT_EQ(t.Footnotes()[2].Marker()->Text(), "*");
  t.FootnoteAt(0).AddReference();
  t.FootnoteAt(0).AddReference();
  EXPECT_EQ(t.Footnotes()[0].RefCount(), 2);
  EXPECT_THROW(t.FootnoteAt(4), OMSException);
}

}  // namespace
