#include "platform/outputmodel/OmPivotTable.h"

#include <map>
#include <random>
#include <set>

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

TEST(OmPivotTable, CellsAreStoredSparselyByLeafIndex) {
  OmPivotTable t(S("t"), S("t"));
  t.AddDimension(S("a"));
  t.AddDimension(S("b"));
  t.AddDimension(S("c"));
  t.Cell({0, 0, 0}, OmNumber(1));
  t.Cell({5, 1000, 3}, OmNumber(2));  // widening a field repacks what is stored
  t.Cell({5, 0, 70000}, OmNumber(3));
  EXPECT_EQ(t.NCells(), 3u);
  EXPECT_EQ(ValueAt(t, {0, 0, 0}), 1);
  EXPECT_EQ(ValueAt(t, {5, 1000, 3}), 2);
  EXPECT_EQ(ValueAt(t, {5, 0, 70000}), 3);
  EXPECT_EQ(t.Cell({5, 1000, 4}), nullptr);
  EXPECT_EQ(t.Cell({1 << 30, 0, 0}), nullptr);
  EXPECT_EQ(t.Cell({-1, 0, 0}), nullptr);
  t.Cell({0, 0, 0}, OmNumber(9));  // replaces
  EXPECT_EQ(t.NCells(), 3u);
  EXPECT_EQ(ValueAt(t, {0, 0, 0}), 9);
}

TEST(OmPivotTable, CellsKeepTheirCoordinatesWhenKeysWidenPastOneWord) {
  OmPivotTable t(S("t"), S("t"));
  for (const char* label : {"a", "b", "c", "d", "e"}) t.AddDimension(S(label));
  std::set<std::vector<int>> stored;
  for (int i = 0; i < 300; ++i) {
    // Small coordinates first, then ones that need every bit: keys are repacked into three words.
    const int big = i < 100 ? i : (1 << 30) - i;
    std::vector<int> c{i % 7, big, i, (i * 37) % 101, i < 200 ? 0 : big};
    t.Cell(c, OmNumber(i));
    stored.insert(c);
  }
  ASSERT_EQ(t.NCells(), 300u);
  std::set<std::vector<int>> seen;
  for (auto it = t.FirstCell(); it != t.EndCell(); ++it) {
    const std::vector<int> c = it.Coord();
    EXPECT_EQ(ValueAt(t, c), c[2]);
    seen.insert(c);
  }
  EXPECT_EQ(seen, stored);
  // Taking every other cell leaves the rest reachable along their probe sequences.
  int taken = 0;
  for (const std::vector<int>& c : stored) {
    if (c[2] % 2 == 0) {
      ASSERT_NE(t.TakeCell(c), nullptr);
      ++taken;
    }
  }
  EXPECT_EQ(t.NCells(), 300u - std::size_t(taken));
  for (const std::vector<int>& c : stored) {
    EXPECT_EQ(t.Cell(c) != nullptr, c[2] % 2 != 0);
  }
}

// Runs of cells along the hinted dimension share neighbouring slots, so their probe sequences
// overlap far more than scattered keys do: a random mix of stores, replacements and removals,
// with coordinates that outgrow their fields, must still find exactly what a map holds.
TEST(OmPivotTable, CellsStoredInRunsAlongTheHintedDimensionStayExact) {
  for (int hint : {2, 0, 1}) {
    OmPivotTable t(S("t"), S("t"));
    for (const char* label : {"rows", "groups", "statistics"}) t.AddDimension(S(label));
    t.CellOrderHint(hint);
    std::map<std::vector<int>, int> expected;
    std::mt19937 random(unsigned(hint) + 11);
    for (int i = 0; i < 6000; ++i) {
      const int row = int(random() % 60);
      const int group = i < 4000 ? int(random() % 9) : int(random() % 5000);
      if (random() % 5 == 0) {
        const std::vector<int> c{row, group, int(random() % 40)};
        EXPECT_EQ(t.TakeCell(c) != nullptr, expected.erase(c) == 1) << hint << " " << i;
        continue;
      }
      // A run of neighbours along the statistics, as a builder stores a row.
      for (int s = 0; s < 20; ++s) {
        const std::vector<int> c{row, group, s + int(i % 3) * 10};
        t.Cell(c, OmNumber(i));
        expected[c] = i;
      }
      if (i == 3000) t.CellOrderHint((hint + 1) % 3);  // too late to matter: ignored
    }
    ASSERT_EQ(t.NCells(), expected.size()) << hint;
    for (const auto& [c, value] : expected) ASSERT_EQ(ValueAt(t, c), value) << hint;
    std::size_t visited = 0;
    for (auto it = t.FirstCell(); it != t.EndCell(); ++it) {
      ASSERT_EQ(expected.count(it.Coord()), 1u) << hint;
      ++visited;
    }
    EXPECT_EQ(visited, expected.size()) << hint;
  }
}

// A table filled in coordinate order (first dimension slowest, the hinted one fastest) keeps its
// cells in a plain sorted log; replacing, taking and looking up must answer as a map does while
// the log lasts, and after a cell out of order has brought in the index.
TEST(OmPivotTable, AnOrderedFillAnswersAsAMapBeforeAndAfterItsIndexArrives) {
  OmPivotTable t(S("t"), S("t"));
  for (const char* label : {"variables", "groups", "statistics"}) t.AddDimension(S(label));
  t.CellOrderHint(2);
  std::map<std::vector<int>, int> expected;
  auto check = [&](const char* phase) {
    ASSERT_EQ(t.NCells(), expected.size()) << phase;
    for (const auto& [c, value] : expected) ASSERT_EQ(ValueAt(t, c), value) << phase;
    std::map<std::vector<int>, int> seen;
    for (auto it = t.FirstCell(); it != t.EndCell(); ++it) {
      seen[it.Coord()] = int(dynamic_cast<OmNumber*>(it.Cell())->Value());
    }
    EXPECT_EQ(seen, expected) << phase;
  };
  std::mt19937 random(7);
  int n = 0;
  // Groups grow past every field width the store starts with, so keys are repacked in order.
  for (int v = 0; v < 4; ++v) {
    for (int g = 0; g < 3000; g += 1 + int(random() % 3)) {
      for (int s = 0; s < 7; ++s) {
        t.Cell({v, g, s}, OmNumber(++n));
        expected[{v, g, s}] = n;
        if (random() % 50 == 0) {  // the cell just stored, replaced
          t.Cell({v, g, s}, OmNumber(++n));
          expected[{v, g, s}] = n;
        }
      }
      if (random() % 40 == 0) {  // the last cell taken, and one from the middle
        EXPECT_NE(t.TakeCell({v, g, 6}), nullptr);
        expected.erase({v, g, 6});
        const std::vector<int> middle{v, g / 2, 3};
        EXPECT_EQ(t.TakeCell(middle) != nullptr, expected.erase(middle) == 1);
      }
    }
  }
  // Without an index a table this size holds its log in about 16 bytes a cell.
  EXPECT_LT(t.CellIndexBytes(), t.NCells() * 26);
  check("in order");

  t.Cell({0, 1, 3}, OmNumber(-1));  // out of order
  expected[{0, 1, 3}] = -1;
  t.Cell({2, 5000, 0}, OmNumber(-2));  // out of order and wider
  expected[{2, 5000, 0}] = -2;
  for (int i = 0; i < 100; ++i) {  // new cells between old ones, most of which stay below
    const std::vector<int> c{int(random() % 4), 5 * int(random() % 600), 7 + int(random() % 3)};
    t.Cell(c, OmNumber(-10 - i));
    expected[c] = -10 - i;
  }
  // The newest cell, taken while the index is in, leaves the index too.
  t.Cell({1, 2, 9}, OmNumber(-5));
  EXPECT_NE(t.TakeCell({1, 2, 9}), nullptr);
  EXPECT_EQ(t.Cell({1, 2, 9}), nullptr);
  t.Cell({1, 2, 8}, OmNumber(-6));
  expected[{1, 2, 8}] = -6;
  check("indexed");
  for (auto it = expected.begin(); it != expected.end();) {  // most cells go: the log compacts
    if (it->first[1] % 5 != 0) {
      ASSERT_NE(t.TakeCell(it->first), nullptr);
      it = expected.erase(it);
    } else {
      ++it;
    }
  }
  check("compacted");
  t.DropCells(0, {1, 3});
  std::erase_if(expected, [](const auto& entry) { return entry.first[0] == 1 || entry.first[0] == 3; });
  check("dropped");
}

// Look-ups may bring in the index while an iterator walks the cells; the walk goes on.
TEST(OmPivotTable, LookUpsDuringAWalkKeepTheIteratorValid) {
  OmPivotTable t(S("t"), S("t"));
  t.AddDimension(S("rows"));
  t.AddDimension(S("columns"));
  for (int r = 0; r < 300; ++r) {
    for (int c = 0; c < 10; ++c) t.Cell({r, c}, OmNumber(r * 10 + c));
  }
  std::size_t visited = 0;
  for (auto it = t.FirstCell(); it != t.EndCell(); ++it, ++visited) {
    const std::vector<int> at = it.Coord();
    for (int probe = 0; probe < 3; ++probe) {
      ASSERT_EQ(ValueAt(t, {(at[0] * 7 + probe) % 300, at[1]}), ((at[0] * 7 + probe) % 300) * 10 + at[1]);
    }
    ASSERT_EQ(t.Cell({at[0], 10}), nullptr);
    ASSERT_EQ(dynamic_cast<OmNumber*>(it.Cell())->Value(), at[0] * 10 + at[1]);
  }
  EXPECT_EQ(visited, 3000u);
}

TEST(OmPivotTable, BadCoordinatesAreRefused) {
  OmPivotTable t(S("t"), S("t"));
  t.AddDimension(S("a"));
  EXPECT_THROW(t.Cell({0, 0}), OMSException);
  EXPECT_THROW(t.Cell({0, 0}, OmNumber(1)), OMSException);
  EXPECT_THROW(t.Cell({-1}, OmNumber(1)), OMSException);
  EXPECT_EQ(t.NCells(), 0u);
}

TEST(OmPivotTable, TakeAndNullStoreMoveCellsByPointer) {
  OmPivotTable t(S("t"), S("t"));
  t.AddDimension(S("a"));
  t.Cell({1}, std::make_unique<OmNumber>(7));
  auto taken = t.TakeCell({1});
  ASSERT_NE(taken, nullptr);
  EXPECT_EQ(t.Cell({1}), nullptr);
  EXPECT_EQ(t.TakeCell({1}), nullptr);
  t.Cell({2}, std::move(taken));
  EXPECT_EQ(ValueAt(t, {2}), 7);
  t.Cell({2}, std::unique_ptr<OmCellText>());
  EXPECT_EQ(t.NCells(), 0u);
}

TEST(OmPivotTable, ADimensionAddedLaterSeesOldCellsAtZero) {
  OmPivotTable t(S("t"), S("t"));
  t.AddDimension(S("a"));
  t.Cell({3}, OmNumber(1));
  t.AddDimension(S("split"));
  EXPECT_EQ(ValueAt(t, {3, 0}), 1);
  t.Cell({3, 2}, OmNumber(2));
  EXPECT_EQ(ValueAt(t, {3, 0}), 1);
  EXPECT_EQ(ValueAt(t, {3, 2}), 2);
}

TEST(OmPivotTable, IteratorVisitsEveryStoredCellOnce) {
  OmPivotTable t(S("t"), S("t"));
  t.AddDimension(S("a"));
  t.AddDimension(S("b"));
  EXPECT_EQ(t.FirstCell().Cell(), nullptr);
  EXPECT_TRUE(t.FirstCell() == t.EndCell());
  std::set<std::vector<int>> stored;
  for (int i = 0; i < 200; ++i) {
    std::vector<int> c{i % 17, i * 3};
    t.Cell(c, OmNumber(i));
    stored.insert(c);
  }
  std::set<std::vector<int>> seen;
  for (auto it = t.FirstCell(); !(it == t.EndCell()); ++it) {
    ASSERT_NE(it.Cell(), nullptr);
    EXPECT_TRUE(seen.insert(it.Coord()).second);
    EXPECT_EQ(it.Cell(), t.Cell(it.Coord()));
  }
  EXPECT_EQ(seen, stored);
}

TEST(OmPivotTable, RemovalKeepsTheOtherCellsReachable) {
  OmPivotTable t(S("t"), S("t"));
  t.AddDimension(S("a"));
  for (int i = 0; i < 1000; ++i) t.Cell({i}, OmNumber(i));
  for (int i = 0; i < 1000; i += 3) t.TakeCell({i});
  for (int i = 0; i < 1000; ++i) {
    if (i % 3 == 0) {
      EXPECT_EQ(t.Cell({i}), nullptr) << i;
    } else {
      EXPECT_EQ(ValueAt(t, {i}), i) << i;
    }
  }
}

TEST(OmPivotTable, HoldsAMillionCellsCompactly) {
  OmPivotTable t(S("t"), S("t"));
  for (int d = 0; d < 4; ++d) t.AddDimension(OmNumber(d));
  std::vector<int> c(4);
  int n = 0;
  for (c[0] = 0; c[0] < 10; ++c[0]) {
    for (c[1] = 0; c[1] < 100; ++c[1]) {
      for (c[2] = 0; c[2] < 100; ++c[2]) {
        c[3] = (c[0] + c[1] + c[2]) % 7;
        t.Cell(c, std::make_unique<OmNumber>(n++));
      }
    }
  }
  EXPECT_EQ(t.NCells(), 100000u);
  // Another 900,000 in a fresh region of dimension 3.
  for (c[0] = 0; c[0] < 10; ++c[0]) {
    for (c[1] = 0; c[1] < 300; ++c[1]) {
      for (c[2] = 0; c[2] < 300; ++c[2]) {
        c[3] = 10;
        t.Cell(c, std::make_unique<OmNumber>(n++));
      }
    }
  }
  EXPECT_EQ(t.NCells(), 1000000u);
  EXPECT_EQ(ValueAt(t, {9, 99, 99, (9 + 99 + 99) % 7}), 99999);
  EXPECT_EQ(ValueAt(t, {9, 299, 299, 10}), 999999);
  // The store costs well under 100 bytes a cell, index included.
  EXPECT_LT(t.CellIndexBytes() / t.NCells(), 50u);
}

// A bootstrapped table keeps one sample in a thousand: the store must shrink with its cells.
TEST(OmPivotTable, DroppingMostCellsKeepsTheRestAndGivesBackTheIndex) {
  OmPivotTable t(S("t"), S("t"));
  t.AddDimension(S("variables"));
  t.AddDimension(S("samples"));
  for (int v = 0; v < 100; ++v) {
    for (int k = 0; k < 500; ++k) t.Cell({v, k}, OmNumber(v * 1000 + k));
  }
  const std::size_t fullIndex = t.CellIndexBytes();
  std::vector<int> samples;
  for (int k = 1; k < 500; ++k) samples.push_back(k);
  t.DropCells(1, samples);
  ASSERT_EQ(t.NCells(), 100u);
  for (int v = 0; v < 100; ++v) {
    EXPECT_EQ(ValueAt(t, {v, 0}), v * 1000) << v;
    EXPECT_EQ(t.Cell({v, 1}), nullptr) << v;
  }
  EXPECT_LT(t.CellIndexBytes() * 100, fullIndex);
  t.Cell({5, 7}, OmNumber(1));  // the shrunk index still takes new cells
  EXPECT_EQ(ValueAt(t, {5, 7}), 1);
  EXPECT_EQ(t.NCells(), 101u);
}

TEST(OmPivotTable, OverTheCellLimitTheTableIsScratched) {
  OmPivotTable t(S("t"), S("t"));
  t.AddDimension(S("a"));
  t.MaxCells(2);
  t.Cell({0}, OmNumber(0));
  t.Cell({1}, OmNumber(1));
  EXPECT_FALSE(t.IsScratched());
  t.Cell({1}, OmNumber(5));  // replacing is not growing
  EXPECT_FALSE(t.IsScratched());
  t.Cell({2}, OmNumber(2));
  EXPECT_TRUE(t.IsScratched());
  EXPECT_EQ(t.NCells(), 2u);
  EXPECT_EQ(t.Cell({2}), nullptr);
  t.Scratch(false);
  EXPECT_FALSE(t.IsScratched());
}

TEST(OmPivotTable, EqualFootnotesAreStoredOnce) {
  OmPivotTable t(S("t"), S("t"));
  OmStringCell star("*");
  const int a = t.Footnote(OmFootnote(S("Based on 1000 samples")));
  const int b = t.Footnote(OmFootnote(S("Lower bound")));
  const int a2 = t.Footnote(OmFootnote(S("Based on 1000 samples")));
  const int marked = t.Footnote(OmFootnote(S("Lower bound"), &star));
  const int forced = t.Footnote(OmFootnote(S("Lower bound")), true);
  EXPECT_EQ(a, 0);
  EXPECT_EQ(b, 1);
  EXPECT_EQ(a2, 0);
  EXPECT_EQ(marked, 2);  // a marker makes it another footnote
  EXPECT_EQ(forced, 3);
  EXPECT_EQ(t.Footnote(OmFootnote(S("Lower bound"), &star)), 2);
  ASSERT_EQ(t.Footnotes().size(), 4u);
  EXPECT_EQ(t.Footnotes()[2].Marker()->Text(), "*");
  t.FootnoteAt(0).AddReference();
  t.FootnoteAt(0).AddReference();
  EXPECT_EQ(t.Footnotes()[0].RefCount(), 2);
  EXPECT_THROW(t.FootnoteAt(4), OMSException);
}

TEST(OmPivotTable, ManyDistinctFootnotesStayDistinct) {
  OmPivotTable t(S("t"), S("t"));
  for (int i = 0; i < 500; ++i) EXPECT_EQ(t.Footnote(OmFootnote(OmNumber(i))), i);
  for (int i = 0; i < 500; ++i) EXPECT_EQ(t.Footnote(OmFootnote(OmNumber(i))), i);
}

TEST(OmPivotTable, CopyDimensionsGivesAnIndependentStructureWithoutCells) {
  OmPivotTable splits(S("Splits"), S("Splits"), true);
  const int d = splits.AddDimension(OmVariable("sex", ""));
  splits.Dimension(d).Child(&splits.Dimension(d).Root(), -1, S("m"), false);
  OmPivotTable t(S("t"), S("t"), true);
  t.AddDimension(S("old"));
  t.Cell({0}, OmNumber(1));
  t.CopyDimensions(splits);
  EXPECT_EQ(t.NDimensions(), 1);
  EXPECT_EQ(t.NCells(), 0u);
  EXPECT_EQ(t.SizeVector(), (std::vector<int>{1}));
  t.Dimension(0).Child(&t.Dimension(0).Root(), -1, S("f"), false);
  EXPECT_EQ(splits.Size(0), 1);
  EXPECT_EQ(t.Size(0), 2);
  EXPECT_EQ(t.Dimension(0).Table(), &t);
  EXPECT_TRUE(t.HasSplits());
}

TEST(OmPivotTable, NotesAndWarningsAreKnownByTemplateName) {
  EXPECT_TRUE(OmPivotTable(S("x"), S("NOTES")).IsNotes());
  EXPECT_TRUE(OmPivotTable(S("x"), S("Warnings")).IsWarnings());
  EXPECT_FALSE(OmPivotTable(S("Notes"), S("Note")).IsNotes());
}

}  // namespace
