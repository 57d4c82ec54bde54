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

// Three fields of 23 bits need two key words: a cell missing beside one that differs from it in
// one field only, whichever word that field lands in, is not found as that one.
TEST(OmPivotTable, CellsDifferingInOneFieldOfATwoWordKeyStayApart) {
  for (std::size_t d = 0; d < 3; ++d) {
    OmPivotTable t(S("t"), S("t"));
    for (int n = 0; n < 3; ++n) t.AddDimension(OmNumber(n));
    const auto at = [d](int a) { std::vector<int> c(3, 1 << 22); c[d] = a; return c; };
    for (int a : {0, 2}) t.Cell(at(a), OmNumber(a));
    EXPECT_EQ(t.Cell(at(1)), nullptr) << d;
    EXPECT_EQ(ValueAt(t, at(0)), 0) << d;
  }
}

// Cells stored in coordinate order take the store's quick append; one whose coordinate outgrows
// its key field (four dimensions share a word, 16 bits each) must widen the keys first.
TEST(OmPivotTable, AnAppendedCoordinateThatOutgrowsItsFieldWidensTheKeys) {
  OmPivotTable t(S("t"), S("t"));
  for (int d = 0; d < 4; ++d) t.AddDimension(OmNumber(d));
  t.CellOrderHint(3);
  const std::vector<std::vector<int>> cells = {
      {0, 0, 0, 0}, {0, 0, 0, 1}, {0, 0, 0, 70000}, {0, 0, 1, 0}, {0, 1, 0, 5}, {1, 0, 0, 2}};
  for (std::size_t i = 0; i < cells.size(); ++i) t.Number(cells[i], double(i), 0, nullptr);
  ASSERT_EQ(t.NCells(), cells.size());
  for (std::size_t i = 0; i < cells.size(); ++i) EXPECT_EQ(ValueAt(t, cells[i]), double(i)) << i;
}

TEST(OmPivotTable, HoldsManyCellsCompactly) {
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
  t.Cell({9, 299, 299, 10}, std::make_unique<OmNumber>(n));  // three fields widen: every key moves
  EXPECT_EQ(t.NCells(), 100001u);
  EXPECT_EQ(ValueAt(t, {9, 99, 99, (9 + 99 + 99) % 7}), 99999);
  EXPECT_EQ(ValueAt(t, {9, 299, 299, 10}), 100000);
  // The store costs well under 100 bytes a cell, index included.
  EXPECT_LT(t.CellIndexBytes() / t.NCells(), 50u);
}

// Every way of reading a cell gives the number that was stored, whether the table keeps it
// without an object or (past the styles a table can name, or once a caller asked for a pointer)
// as an OmNumber; taking, replacing and dropping treat both alike.
TEST(OmPivotTable, PlainNumbersReadBackThroughEveryAccessor) {
  OmPivotTable t(S("t"), S("t"));
  t.AddDimension(S("rows"));
  t.AddDimension(S("statistics"));
  OmNumber scratch(0);
  // Two distinct addresses, never followed.
  icuTracker* const trackers[2] = {reinterpret_cast<icuTracker*>(&t), reinterpret_cast<icuTracker*>(&scratch)};
  constexpr int kRows = 300;  // more formats than a table names styles for
  for (int r = 0; r < kRows; ++r) t.Number({r, r % 3}, r + 0.5, OmNumber::MakeFormat(5, r, 2), trackers[r % 2]);
  t.Cell({7, 0}, OmNumber(9));  // an object among the numbers
  ASSERT_EQ(t.NCells(), std::size_t(kRows) + 1);
  for (int r = 0; r < kRows; ++r) {
    SCOPED_TRACE(r);
    const auto* read = dynamic_cast<const OmNumber*>(t.ReadCell({r, r % 3}, scratch));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->Value(), r + 0.5);
    EXPECT_EQ(read->Format(), OmNumber::MakeFormat(5, r, 2));
    EXPECT_EQ(read->getICUTracker(), trackers[r % 2]);
    EXPECT_TRUE(t.HasCell({r, r % 3}));
    EXPECT_FALSE(t.HasCell({r, r % 3 + 3}));
  }
  // Iterating reads the same cells in storage order; Object is null exactly for kept numbers.
  int seen = 0, objects = 0;
  for (auto it = t.FirstCell(); !it.AtEnd(); ++it, ++seen) {
    const OmCellText* read = it.Read(scratch);
    ASSERT_NE(read, nullptr);
    objects += it.Object() != nullptr;
    EXPECT_EQ(read->Text(), t.ReadCell(it.Coord(), scratch)->Text());
  }
  EXPECT_EQ(seen, kRows + 1);
  // ReadCells hands over the same cells in the same order, a kept number as its value.
  auto it = t.FirstCell();
  t.ReadCells([&](const OmPivotTable::CellView& cell) {
    ASSERT_FALSE(it.AtEnd());
    EXPECT_EQ(std::vector<int>(cell.coords, cell.coords + 2), it.Coord());
    EXPECT_EQ(cell.object, it.Object());
    const OmCellText* read = it.Read(scratch);
    if (cell.object == nullptr) {
      EXPECT_EQ(cell.number, static_cast<const OmNumber*>(read)->Value());
    }
    ++it;
  });
  EXPECT_TRUE(it.AtEnd());
  EXPECT_GE(objects, 1 + kRows - 254);
  EXPECT_LT(objects, kRows / 2);
  // A pointer makes the object, which keeps later decorations and is the one found after.
  OmCellText* cell = t.Cell({10, 1});
  ASSERT_NE(dynamic_cast<OmNumber*>(cell), nullptr);
  EXPECT_EQ(cell->getICUTracker(), trackers[0]);
  cell->Footnote(2);
  EXPECT_EQ(t.Cell({10, 1}), cell);
  EXPECT_EQ(t.ReadCell({10, 1}, scratch), cell);
  // Taking and replacing.
  std::unique_ptr<OmCellText> taken = t.TakeCell({11, 2});
  ASSERT_NE(dynamic_cast<OmNumber*>(taken.get()), nullptr);
  EXPECT_EQ(static_cast<OmNumber&>(*taken).Value(), 11.5);
  EXPECT_FALSE(t.HasCell({11, 2}));
  t.Number({10, 1}, 3, OmNumber::kDefaultFormat, nullptr);
  EXPECT_TRUE(t.ReadCell({10, 1}, scratch)->Footnotes().empty());
  EXPECT_EQ(ValueAt(t, {10, 1}), 3);
  t.Cell({12, 0}, OmStringCell("x"));
  EXPECT_EQ(t.ReadCell({12, 0}, scratch)->Text(), "x");
  // Dropping and the cell limit.
  t.DropCells(1, {0});
  EXPECT_FALSE(t.HasCell({0, 0}));
  EXPECT_TRUE(t.HasCell({1, 1}));
  t.MaxCells(t.NCells());
  t.Number({0, 0}, 1, OmNumber::kDefaultFormat, nullptr);
  EXPECT_FALSE(t.HasCell({0, 0}));
  EXPECT_TRUE(t.IsScratched());
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
  // Equality itself, as a hash collision would ask it: text first, then a marker on both or neither.
  EXPECT_FALSE(OmFootnote(S("a")) == OmFootnote(S("b")));
  EXPECT_FALSE(OmFootnote(S("a")) == OmFootnote(S("a"), &star));
  EXPECT_FALSE(OmFootnote(S("a"), &star) == OmFootnote(S("a")));
  t.FootnoteAt(0).AddReference();
  t.FootnoteAt(0).AddReference();
  EXPECT_EQ(t.Footnotes()[0].RefCount(), 2);
  EXPECT_THROW(t.FootnoteAt(4), OMSException);
}

}  // namespace
