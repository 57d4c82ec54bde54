#include "backend/omfactory/OmPivotFactory.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
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

using Coords = std::vector<int>;

// Runs call, expects an OMSException (not a server error) and returns it for inspection.
OMSException Failure(const std::function<void()>& call) {
  try {
    call();
  } catch (const ServerError& e) {
    ADD_FAILURE() << "unexpected server error " << e.Number();
    return e;
  } catch (const OMSException& e) {
    return e;
  }
  ADD_FAILURE() << "no exception";
  return OMSException("none");
}

// One precondition failure: what is called and the message it must raise.
struct FailureCase {
  const char* name;
  std::function<void()> call;
  const char* message;
};

void ExpectFailures(const std::vector<FailureCase>& cases) {
  for (const FailureCase& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Failure(c.call).Message(), c.message);
  }
}

// Captures what is written to std::cerr while it lives.
class CerrCapture {
public:
  CerrCapture() : _old(std::cerr.rdbuf(_buffer.rdbuf())) {}
  ~CerrCapture() { std::cerr.rdbuf(_old); }
  std::string Text() const { return _buffer.str(); }

private:
  std::ostringstream _buffer;
  std::streambuf* _old;
};

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

  static std::string Join(const std::vector<short>& list) {
    std::string out;
    for (short v : list) out += (out.empty() ? "" : ",") + std::to_string(v);
    return "[" + out + "]";
  }
};

// --- Dimensions -----------------------------------------------------------------------------

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

TEST_F(PivotFactoryTest, OperationsOnAnUnknownDimensionIndexFailWithTheIndex) {
  _builder.Dimension(Text("Only"));
  OMSException group = Failure([&] { _builder.Group(3, Text("G")); });
  EXPECT_EQ(group.Message(), "OmPivotFactory::Group -- dimension index out of range");
  EXPECT_EQ(group.Value1(), 3);
  EXPECT_EQ(group.Value2(), 1);
  ExpectFailures({
      {"EndGroup", [&] { _builder.EndGroup(-1); }, "OmPivotFactory::EndGroup -- dimension index out of range"},
      {"SetCategory", [&] { _builder.SetCategory(1, Text("x")); },
       "OmPivotFactory::SetCategory -- dimension index out of range"},
      {"SetCellDimension", [&] { _builder.SetCellDimension(2); },
       "OmPivotFactory::SetCellDimension -- dimension index out of range"},
      {"SetDimensionFlags", [&] { _builder.SetDimensionFlags(5, true, true); },
       "OmPivotFactory::SetDimensionFlags -- dimension index out of range"},
  });
  // A failed EndGroup on a bad index leaves the current dimension alone.
  EXPECT_EQ(CurrentDimension(), 0);
}

// --- Placement ------------------------------------------------------------------------------

TEST_F(PivotFactoryTest, PlacementFillsEmptyPositionsAndInsertsBeforeTakenOnes) {
  for (const char* label : {"D0", "D1", "D2", "D3"}) _builder.Dimension(Text(label));
  ASSERT_EQ(Rows(), "[3,2,1,0]");

  _builder.PlaceDimension(2, 1, 3, false, false);
  EXPECT_EQ(Columns(), "[-1,-1,2]");
  EXPECT_EQ(Rows(), "[3,1,0]");
  _builder.PlaceDimension(1, 1, 1, false, false);
  EXPECT_EQ(Columns(), "[1,-1,2]");
  _builder.PlaceDimension(0, 1, 2, false, false);
  EXPECT_EQ(Columns(), "[1,0,2]");
  _builder.PlaceDimension(3, 1, 2, false, false);
  EXPECT_EQ(Columns(), "[1,3,0,2]");
  EXPECT_EQ(Rows(), "[]");
}

TEST_F(PivotFactoryTest, PlacementRejectsBadAxisAndPositionWithoutMovingAnything) {
  _builder.Dimension(Text("A"));
  OMSException axis = Failure([&] { _builder.PlaceDimension(0, 3, 1, false, false); });
  EXPECT_EQ(axis.Message(), "OmPivotFactory::PlaceDimension -- axis out of range");
  EXPECT_EQ(axis.Value1(), 3);
  OMSException zero = Failure([&] { _builder.PlaceDimension(0, 1, 0, false, false); });
  EXPECT_EQ(zero.Message(), "OmPivotFactory::PlaceDimension -- position out of range");
  EXPECT_EQ(zero.Value1(), 0);
  EXPECT_EQ(Failure([&] { _builder.PlaceDimension(0, 1, 1 << 30, false, false); }).Message(),
            "OmPivotFactory::PlaceDimension -- position out of range");
  EXPECT_EQ(Rows(), "[0]");
  EXPECT_EQ(Failure([&] { _builder.Axis(-1); }).Message(), "OmPivotFactory::Axis -- axis out of range");
}

// --- Groups ---------------------------------------------------------------------------------

TEST_F(PivotFactoryTest, AllGroupsClosedFailsWhenTheTableHasFewerDimensionsThanSeen) {
  _builder.Dimension(Text("A"));
  _builder.Dimension(Text("B"));
  OmPivotTable smaller(Text("S"), Text("S"));
  smaller.AddDimension(Text("A"));
  _table.CopyDimensions(smaller);
  OMSException e = Failure([&] { _builder.AllGroupsClosed(); });
  EXPECT_EQ(e.Message(), "OmPivotFactory::AllGroupsClosed -- nDim > # dimensions");
  EXPECT_EQ(e.Value1(), 2);
  EXPECT_EQ(e.Value2(), 1);
}

// --- Categories and cells -------------------------------------------------------------------

// --- Cell dimension and state dump ----------------------------------------------------------

// --- Sort and ungroup marks -----------------------------------------------------------------

// --- Category styles ------------------------------------------------------------------------

TEST_F(PivotFactoryTest, StyleOfAnUnlabelledCategoryReportsTargetNotFound) {
  const int d = _builder.Dimension(Text("V"));
  _builder.SetCategory(d, Text("x"));
  _table.Dimension(d).Root().Child(0)->setLabel(nullptr);
  ExpectFailures({
      {"Bold", [&] { _builder.Bold(); }, "OmPivotFactory::Bold -- target not found"},
      {"TextColor", [&] { _builder.TextColor("#1"); }, "OmPivotFactory::TextColor -- target not found"},
      {"BackgroundColor", [&] { _builder.BackgroundColor("#1"); },
       "OmPivotFactory::BackgroundColor -- target not found"},
      {"HideCategory", [&] { _builder.HideCategory(); }, "OmPivotFactory::BackgroundColor -- target not found"},
  });
}

// --- Markers --------------------------------------------------------------------------------

TEST_F(PivotFactoryTest, MarkerWhereTheTableRefusesCellsReportsTargetNotFound) {
  const int d = _builder.Dimension(Text("V"));
  _table.MaxCells(1);
  _builder.SetCategory(d, Text("x"));
  _builder.Cell(Text("full"));
  _builder.SetCategory(d, Text("y"));
  OMSException e = Failure([&] { _builder.addMarker(Text("*")); });
  EXPECT_EQ(e.Message(), "OmPivotFactory::addMarker -- target not found");
  EXPECT_EQ(e.Value1(), 0);
  EXPECT_FALSE(_table.HasMarkers());
}

// --- Properties and footnotes by target -----------------------------------------------------

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
      case 7: return _table.Caption();
      default: return nullptr;
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
  OMSException caption = Failure([&] { _builder.addMiscProperty(6, "p"); });
  EXPECT_EQ(caption.Message(), "OmPivotFactory::addMiscProperty -- target not found");
  EXPECT_EQ(caption.Value1(), 6);
  for (int target : {0, 8, -3}) {
    OMSException e = Failure([&] { _builder.addMiscProperty(target, "p"); });
    EXPECT_EQ(e.Message(), "OmPivotFactory::addMiscProperty -- Unknown target ID in Annotate call");
    EXPECT_EQ(e.Value1(), target);
  }
  OmPivotTable bare(Text("B"), Text("B"));
  OmPivotFactory builder(&bare);
  OMSException noCaption = Failure([&] { builder.addMiscProperty(7, "p"); });
  EXPECT_EQ(noCaption.Message(), "OmPivotFactory::addMiscProperty -- target not found");
  EXPECT_EQ(noCaption.Value1(), 7);
  EXPECT_EQ(Failure([&] { builder.addMiscProperty(2, "p"); }).Message(),
            "OmPivotFactory::addMiscProperty -- _my._currentDimension == -1");

  for (int target : {0, 8}) {
    OMSException e = Failure([&] { _builder.Annotate(target, OmFootnote(Text("f"))); });
    EXPECT_EQ(e.Message(), "OmPivotFactory::Annotate -- Unknown target ID in Annotate call");
    EXPECT_EQ(e.Value1(), target);
  }
  OMSException annotate = Failure([&] { builder.Annotate(7, OmFootnote(Text("f"))); });
  EXPECT_EQ(annotate.Message(), "OmPivotFactory::Annotate -- target not found");
  EXPECT_EQ(annotate.Value1(), 7);
  EXPECT_TRUE(bare.Footnotes().empty());
  EXPECT_TRUE(builder.FirstCell());
}

TEST(PivotFactoryConstruction, NullTableIsRejected) {
  EXPECT_THROW(OmPivotFactory(nullptr), OMSException);
  OmPivotTable table(Text("T"), Text("T"));
  OmPivotFactory builder(&table);
  EXPECT_THROW(OmPivotFactory(nullptr, builder), OMSException);
}

// --- Split-aware copy -----------------------------------------------------------------------

// The procedure's splits table and its builder, and a split table made from them the way a
// procedure makes one: dimensions and axes copied, then the builder copied onto it.
class PivotFactorySplitTest : public ::testing::Test {
protected:
  void SetUp() override {
    _splitsBuilder.Dimension(Text("Gender"));
    _splitsBuilder.SetCategory(0, Text("male"));
    _splitsBuilder.SetCategory(0, Text("female"));
  }

  std::unique_ptr<OmPivotTable> MakeSplitTable() {
    auto table = std::make_unique<OmPivotTable>(Text("Split"), Text("Split"), true);
    table->CopyDimensions(_splits);
    for (int a = 0; a < 3; ++a) table->Axis(a).Assign(_splits.Axis(a).Storage());
    return table;
  }

  OmPivotTable _splits{Text("Splits"), Text("Splits"), true};
  OmPivotFactory _splitsBuilder{&_splits};
};

TEST_F(PivotFactorySplitTest, CopiedBuilderFindsCategoriesAndOpenGroupsInTheNewTable) {
  _splitsBuilder.Group(0, Text("Adults"));
  _splitsBuilder.SetCategory(0, Text("senior"));
  auto table = MakeSplitTable();
  OmPivotFactory builder(table.get(), _splitsBuilder);
  EXPECT_FALSE(builder.AllGroupsClosed());

  builder.SetCategory(0, Text("senior"));  // found in the new table's copy of the group
  builder.SetCategory(0, Text("junior"));  // added there, not in the splits table
  const OmDimensionNode& adults = *table->Dimension(0).Root().Child(2);
  ASSERT_EQ(adults.NChildren(), 2u);
  EXPECT_EQ(adults.Child(1)->LeafIndex(), 3);
  EXPECT_EQ(_splits.Dimension(0).Root().Child(2)->NChildren(), 1u);

  builder.EndGroup(0);
  EXPECT_TRUE(builder.AllGroupsClosed());
  EXPECT_FALSE(_splitsBuilder.AllGroupsClosed());
}

TEST_F(PivotFactorySplitTest, CopyOntoATableWithoutTheDimensionsOrTheOpenGroupFails) {
  OmPivotTable empty(Text("E"), Text("E"), true);
  OMSException e = Failure([&] { OmPivotFactory builder(&empty, _splitsBuilder); });
  EXPECT_EQ(e.Message(), "OmPivotFactory::OmPivotFactory -- nDim > # dimensions");
  EXPECT_EQ(e.Value1(), 1);
  EXPECT_EQ(e.Value2(), 0);

  _splitsBuilder.Group(0, Text("Adults"));
  OmPivotTable flat(Text("F"), Text("F"), true);
  flat.AddDimension(Text("Gender"));
  OMSException group = Failure([&] { OmPivotFactory builder(&flat, _splitsBuilder); });
  EXPECT_EQ(group.Message(), "OmPivotFactory::OmPivotFactory -- counterpart not found");
  EXPECT_EQ(group.Value1(), 0);
}

}  // namespace
