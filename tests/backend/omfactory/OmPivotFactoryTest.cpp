#include "backend/omfactory/OmPivotFactory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/errors/OMSException.h"
#include "platform/errors/ThrowError.h"
#include "platform/outputmodel/OmDimensionNode.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"

namespace {

OmStringCell Text(const std::string& text) { return OmStringCell(text); }

// One precondition failure: what is called, the message it must raise and, where the message
// names them, the index or count it carries (NaN: not checked).
struct FailureCase {
  const char* name;
  std::function<void()> call;
  const char* message;
  double value1 = NAN, value2 = NAN;
};

void ExpectFailures(const std::vector<FailureCase>& cases) {
  for (const FailureCase& c : cases) {
    SCOPED_TRACE(c.name);
    try {
      c.call();
      ADD_FAILURE() << "no exception";
    } catch (const ServerError& e) {
      ADD_FAILURE() << "unexpected server error " << e.Number();
    } catch (const OMSException& e) {
      EXPECT_EQ(e.Message(), c.message);
      EXPECT_TRUE(std::isnan(c.value1) || e.Value1() == c.value1) << e.Value1();
      EXPECT_TRUE(std::isnan(c.value2) || e.Value2() == c.value2) << e.Value2();
    }
  }
}

std::string Join(const std::vector<short>& list) {
  std::string out;
  for (short v : list) out += (out.empty() ? "" : ",") + std::to_string(v);
  return "[" + out + "]";
}

class PivotFactoryTest : public ::testing::Test {
protected:
  OmPivotTable _table{Text("Statistics"), Text("Descriptive Statistics")};
  OmPivotFactory _builder{&_table};

  // The current dimension, observed through the sort mark that lands on its root.
  int CurrentDimension() {
    for (int d = 0; d < _table.NDimensions(); ++d) _table.Dimension(d).Root().setSortMark(-1);
    _builder.MarkSortDimension(7);
    for (int d = 0; d < _table.NDimensions(); ++d) {
      if (_table.Dimension(d).Root().SortMark() == 7) return d;
    }
    return -1;
  }
  std::string Rows() const { return Join(_table.Rows()); }
  std::string Columns() const { return Join(_table.Columns()); }
};

TEST_F(PivotFactoryTest, NewDimensionGoesFirstInRowsAndSameLabelAgainChangesNothing) {
  OmPivotTable table(Text("T"), Text("T"));
  table.AddDimension(Text("A"));
  table.AddDimension(Text("B"));
  table.Rows().push_back(0);
  table.Rows().push_back(1);
  OmPivotFactory builder(&table);
  EXPECT_EQ(builder.Dimension(Text("C")), 2);
  EXPECT_EQ(Join(std::as_const(table).Rows()), "[2,0,1]");
  EXPECT_EQ(builder.Dimension(Text("C")), 2);
  EXPECT_EQ(builder.Dimension(Text("A")), 0);
  EXPECT_EQ(Join(std::as_const(table).Rows()), "[2,0,1]");
  EXPECT_EQ(table.NDimensions(), 3);
}

TEST_F(PivotFactoryTest, PlacementFillsEmptyPositionsAndInsertsBeforeTakenOnes) {
  for (const char* label : {"D0", "D1", "D2", "D3"}) _builder.Dimension(Text(label));
  ASSERT_EQ(Rows(), "[3,2,1,0]");
  const struct {
    int dimension, position;
    const char* columns;
  } steps[] = {{2, 3, "[-1,-1,2]"}, {1, 1, "[1,-1,2]"}, {0, 2, "[1,0,2]"}, {3, 2, "[1,3,0,2]"}};
  for (const auto& step : steps) {
    _builder.PlaceDimension(step.dimension, 1, step.position, false, false);
    EXPECT_EQ(Columns(), step.columns) << step.dimension;
  }
  EXPECT_EQ(Rows(), "[]");
}

// Builder calls that break a precondition fail with the operation, the condition and the
// offending index, and leave the table as it was.
TEST_F(PivotFactoryTest, BrokenPreconditionsNameTheOperationAndTheIndex) {
  _builder.Dimension(Text("Only"));
  ExpectFailures({
      {"Group", [&] { _builder.Group(3, Text("G")); }, "OmPivotFactory::Group -- dimension index out of range", 3, 1},
      {"EndGroup", [&] { _builder.EndGroup(-1); }, "OmPivotFactory::EndGroup -- dimension index out of range"},
      {"SetCategory", [&] { _builder.SetCategory(1, Text("x")); },
       "OmPivotFactory::SetCategory -- dimension index out of range"},
      {"SetCellDimension", [&] { _builder.SetCellDimension(2); },
       "OmPivotFactory::SetCellDimension -- dimension index out of range"},
      {"SetDimensionFlags", [&] { _builder.SetDimensionFlags(5, true, true); },
       "OmPivotFactory::SetDimensionFlags -- dimension index out of range"},
      {"axis", [&] { _builder.PlaceDimension(0, 3, 1, false, false); },
       "OmPivotFactory::PlaceDimension -- axis out of range", 3},
      {"position 0", [&] { _builder.PlaceDimension(0, 1, 0, false, false); },
       "OmPivotFactory::PlaceDimension -- position out of range", 0},
      {"huge position", [&] { _builder.PlaceDimension(0, 1, 1 << 30, false, false); },
       "OmPivotFactory::PlaceDimension -- position out of range"},
      {"Axis", [&] { _builder.Axis(-1); }, "OmPivotFactory::Axis -- axis out of range"},
  });
  EXPECT_EQ(Rows(), "[0]");
  EXPECT_EQ(CurrentDimension(), 0);  // a failed EndGroup leaves the current dimension alone

  OmPivotTable smaller(Text("S"), Text("S"));
  smaller.AddDimension(Text("A"));
  _builder.Dimension(Text("B"));
  _table.CopyDimensions(smaller);
  ExpectFailures({{"AllGroupsClosed", [&] { _builder.AllGroupsClosed(); },
                   "OmPivotFactory::AllGroupsClosed -- nDim > # dimensions", 2, 1}});
}

TEST_F(PivotFactoryTest, StylesAndMarkersWithoutATargetReportTargetNotFound) {
  const int d = _builder.Dimension(Text("V"));
  _table.MaxCells(1);
  _builder.SetCategory(d, Text("x"));
  _builder.Cell(Text("full"));
  _builder.SetCategory(d, Text("y"));
  ExpectFailures({{"marker where the table refuses cells", [&] { _builder.addMarker(Text("*")); },
                   "OmPivotFactory::addMarker -- target not found", 0}});
  EXPECT_FALSE(_table.HasMarkers());
  _table.Dimension(d).Root().Child(1)->setLabel(nullptr);
  ExpectFailures({
      {"Bold", [&] { _builder.Bold(); }, "OmPivotFactory::Bold -- target not found"},
      {"TextColor", [&] { _builder.TextColor("#1"); }, "OmPivotFactory::TextColor -- target not found"},
      {"BackgroundColor", [&] { _builder.BackgroundColor("#1"); },
       "OmPivotFactory::BackgroundColor -- target not found"},
      {"HideCategory", [&] { _builder.HideCategory(); }, "OmPivotFactory::BackgroundColor -- target not found"},
  });
}

// Properties and footnotes by target: 1 title, 2 dimension, 3 group, 4 category, 5 cell,
// 7 caption.
class PivotFactoryTargetTest : public PivotFactoryTest {
protected:
  void SetUp() override {
    _d = _builder.Dimension(Text("V"));
    _builder.Group(_d, Text("G"));
    _builder.SetCategory(_d, Text("x"));
    _table.Caption(Text("Caption"));
  }
  const OmCellText* Target(int target) {
    const OmDimensionNode& group = *_table.Dimension(_d).Root().Child(0);
    switch (target) {
      case 1: return _table.Label();
      case 2: return _table.Dimension(_d).Label();
      case 3: return group.Label();
      case 4: return group.Child(0)->Label();
      case 5: return _table.Cell({0});
      default: return _table.Caption();
    }
  }
  int _d = -1;
};

TEST_F(PivotFactoryTargetTest, MiscPropertyReachesEachTargetsCell) {
  for (int target : {1, 2, 3, 4, 5, 7}) {
    const std::string property = "p" + std::to_string(target);
    _builder.addMiscProperty(target, property);
    const OmCellText* cell = Target(target);
    ASSERT_NE(cell, nullptr) << target;
    EXPECT_EQ(cell->MiscProperties(), std::vector<std::string>{property}) << target;
  }
}

TEST_F(PivotFactoryTargetTest, MiscPropertyAndAnnotateFailuresCarryTheTarget) {
  OmPivotTable bare(Text("B"), Text("B"));
  OmPivotFactory builder(&bare);
  std::vector<FailureCase> cases = {
      {"caption cell", [&] { _builder.addMiscProperty(6, "p"); }, "OmPivotFactory::addMiscProperty -- target not found", 6},
      {"no caption", [&] { builder.addMiscProperty(7, "p"); }, "OmPivotFactory::addMiscProperty -- target not found", 7},
      {"no dimension", [&] { builder.addMiscProperty(2, "p"); },
       "OmPivotFactory::addMiscProperty -- _my._currentDimension == -1"},
      {"annotate without caption", [&] { builder.Annotate(7, OmFootnote(Text("f"))); },
       "OmPivotFactory::Annotate -- target not found", 7},
  };
  for (int target : {0, 8, -3}) {
    cases.push_back({"misc", [&, target] { _builder.addMiscProperty(target, "p"); },
                     "OmPivotFactory::addMiscProperty -- Unknown target ID in Annotate call", double(target)});
    cases.push_back({"annotate", [&, target] { _builder.Annotate(target, OmFootnote(Text("f"))); },
                     "OmPivotFactory::Annotate -- Unknown target ID in Annotate call", double(target)});
  }
  ExpectFailures(cases);
  EXPECT_TRUE(bare.Footnotes().empty());
  EXPECT_TRUE(builder.FirstCell());
}

// A split table made the way a procedure makes one: the splits table's dimensions and axes
// copied, then its builder copied onto it.
class PivotFactorySplitTest : public ::testing::Test {
protected:
  void SetUp() override {
    _splitsBuilder.Dimension(Text("Gender"));
    _splitsBuilder.SetCategory(0, Text("male"));
    _splitsBuilder.SetCategory(0, Text("female"));
  }
  OmPivotTable _splits{Text("Splits"), Text("Splits"), true};
  OmPivotFactory _splitsBuilder{&_splits};
};

TEST_F(PivotFactorySplitTest, CopiedBuilderFindsCategoriesAndOpenGroupsInTheNewTable) {
  _splitsBuilder.Group(0, Text("Adults"));
  _splitsBuilder.Group(0, Text("Working"));  // first in its parent: found by a path with a 0
  _splitsBuilder.SetCategory(0, Text("senior"));
  OmPivotTable table(Text("Split"), Text("Split"), true);
  table.CopyDimensions(_splits);
  for (int a = 0; a < 3; ++a) table.Axis(a).Assign(_splits.Axis(a).Storage());
  OmPivotFactory builder(&table, _splitsBuilder);
  EXPECT_FALSE(builder.AllGroupsClosed());
  builder.SetCategory(0, Text("senior"));  // found in the new table's copy of the group
  builder.SetCategory(0, Text("junior"));  // added there, not in the splits table
  const OmDimensionNode& working = *table.Dimension(0).Root().Child(2)->Child(0);
  ASSERT_EQ(working.NChildren(), 2u);
  EXPECT_EQ(working.Child(1)->LeafIndex(), 3);
  EXPECT_EQ(_splits.Dimension(0).Root().Child(2)->Child(0)->NChildren(), 1u);
  builder.EndGroup(0);
  EXPECT_FALSE(builder.AllGroupsClosed());
  builder.EndGroup(0);
  EXPECT_TRUE(builder.AllGroupsClosed());
  EXPECT_FALSE(_splitsBuilder.AllGroupsClosed());
}

TEST_F(PivotFactorySplitTest, CopyOntoATableWithoutTheDimensionsOrTheOpenGroupFails) {
  OmPivotTable empty(Text("E"), Text("E"), true);
  OmPivotTable flat(Text("F"), Text("F"), true);
  flat.AddDimension(Text("Gender"));
  OmPivotTable table(Text("T"), Text("T"));
  ExpectFailures({
      {"no dimensions", [&] { OmPivotFactory builder(&empty, _splitsBuilder); },
       "OmPivotFactory::OmPivotFactory -- nDim > # dimensions", 1, 0},
      {"open group", [&] { _splitsBuilder.Group(0, Text("Adults")); OmPivotFactory builder(&flat, _splitsBuilder); },
       "OmPivotFactory::OmPivotFactory -- counterpart not found", 0},
  });
  EXPECT_THROW(OmPivotFactory(nullptr), OMSException);
  OmPivotFactory builder(&table);
  EXPECT_THROW(OmPivotFactory(nullptr, builder), OMSException);
}

}  // namespace
