#include "backend/omfactory/OmPivotFactory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "platform/errors/OMSException.h"
#include "platform/errors/ThrowError.h"
#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmDimensionNode.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmNumber.h"
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

// Runs call and returns the number of the server error it raised, -1 when none.
int ServerErrorOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const ServerError& e) {
    EXPECT_EQ(e.File(), "omerrors.err");
    return e.Number();
  }
  return -1;
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

  // The coordinate on which a probe cell lands; the probe is removed again.
  Coords CellCoordinates() {
    _builder.Cell(std::make_unique<OmStringCell>("probe"));
    for (auto it = _table.FirstCell(); !it.AtEnd(); ++it) {
      if (it.Cell()->Text() == "probe") {
        Coords coords = it.Coord();
        _table.TakeCell(coords);
        return coords;
      }
    }
    return {};
  }

  std::string Rows() const { return Join(_table.Rows()); }
  std::string Columns() const { return Join(_table.Columns()); }
  std::string Layers() const { return Join(_table.Layers()); }

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

TEST_F(PivotFactoryTest, DimensionBecomesCurrentWhetherNewOrFoundButNotBySetCategory) {
  _builder.Dimension(Text("Variables"));
  _builder.Dimension(Text("Statistics"));
  EXPECT_EQ(CurrentDimension(), 1);
  _builder.Dimension(Text("Variables"));
  EXPECT_EQ(CurrentDimension(), 0);
  _builder.SetCategory(1, Text("x"));
  EXPECT_EQ(CurrentDimension(), 0);
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

TEST_F(PivotFactoryTest, DimensionsAddedToTheTableDirectlyAreAdoptedWhenNamed) {
  _builder.Dimension(Text("A"));
  _table.AddDimension(Text("Outside"));
  EXPECT_EQ(_builder.Dimension(Text("Outside")), 1);
  _builder.SetCategory(1, Text("x"));
  _builder.SetCategory(1, Text("y"));
  EXPECT_EQ(CellCoordinates(), (Coords{0, 1}));
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

TEST_F(PivotFactoryTest, PlacementMovesADimensionBetweenAxesAndSetsItsFlags) {
  _builder.Dimension(Text("A"));
  _builder.Dimension(Text("B"));
  _builder.PlaceDimension(0, 1, 1, false, false);
  _builder.PlaceDimension(0, 2, 1, true, false);
  EXPECT_EQ(Rows(), "[1]");
  EXPECT_EQ(Columns(), "[]");
  EXPECT_EQ(Layers(), "[0]");
  EXPECT_TRUE(_table.Dimension(0).HideLabel());
  EXPECT_FALSE(_table.Dimension(0).HideCategories());

  _builder.PlaceDimension(0, 2, 2, false, true);  // past the end of its own list after removal
  EXPECT_EQ(Layers(), "[-1,0]");
  EXPECT_FALSE(_table.Dimension(0).HideLabel());
  EXPECT_TRUE(_table.Dimension(0).HideCategories());
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

TEST_F(PivotFactoryTest, ReenteringAGroupFindsItsCategoryAtTheSameCoordinate) {
  const int d = _builder.Dimension(Text("Variables"));
  _builder.Group(d, Text("A"));
  _builder.SetCategory(d, Text("x"));
  const Coords first = CellCoordinates();
  _builder.EndGroup(d);
  _builder.Group(d, Text("A"));
  _builder.SetCategory(d, Text("x"));
  EXPECT_EQ(CellCoordinates(), first);
  EXPECT_EQ(_table.Dimension(d).Root().NChildren(), 1u);
  EXPECT_EQ(_table.Dimension(d).Root().Child(0)->NChildren(), 1u);
  EXPECT_EQ(_table.Size(d), 1);
}

TEST_F(PivotFactoryTest, GroupsAndCategoriesWithOneLabelAreDifferentNodes) {
  const int d = _builder.Dimension(Text("V"));
  _builder.SetCategory(d, Text("Total"));
  _builder.Group(d, Text("Total"));
  _builder.SetCategory(d, Text("Total"));
  const OmDimensionNode& root = _table.Dimension(d).Root();
  ASSERT_EQ(root.NChildren(), 2u);
  EXPECT_FALSE(root.Child(0)->IsGroup());
  EXPECT_TRUE(root.Child(1)->IsGroup());
  EXPECT_EQ(root.Child(1)->Child(0)->LeafIndex(), 1);
}

TEST_F(PivotFactoryTest, EndGroupWithoutOpenGroupReportsLevelAndDimension) {
  _builder.Dimension(Text("A"));
  const int d = _builder.Dimension(Text("B"));
  _builder.Dimension(Text("A"));
  OMSException e = Failure([&] { _builder.EndGroup(d); });
  EXPECT_EQ(e.Message(), "OmPivotFactory::EndGroup -- level <= 0");
  EXPECT_EQ(e.Value1(), 0);
  EXPECT_EQ(e.Value2(), d);
  // The dimension became current before the failure.
  EXPECT_EQ(CurrentDimension(), d);
}

TEST_F(PivotFactoryTest, NestedGroupsCloseOneLevelAtATime) {
  const int d = _builder.Dimension(Text("V"));
  _builder.Group(d, Text("Outer"));
  _builder.Group(d, Text("Inner"));
  _builder.SetCategory(d, Text("x"));
  _builder.EndGroup(d);
  _builder.SetCategory(d, Text("y"));  // lands in Outer, beside Inner
  _builder.EndGroup(d);
  EXPECT_EQ(Failure([&] { _builder.EndGroup(d); }).Message(), "OmPivotFactory::EndGroup -- level <= 0");

  const OmDimensionNode& outer = *_table.Dimension(d).Root().Child(0);
  ASSERT_EQ(outer.NChildren(), 2u);
  EXPECT_EQ(outer.Child(0)->Label()->Text(), "Inner");
  EXPECT_EQ(outer.Child(1)->Label()->Text(), "y");
  EXPECT_EQ(outer.Child(1)->LeafIndex(), 1);
}

TEST_F(PivotFactoryTest, AllGroupsClosedTracksEveryDimension) {
  const int a = _builder.Dimension(Text("A"));
  const int b = _builder.Dimension(Text("B"));
  EXPECT_TRUE(_builder.AllGroupsClosed());
  _builder.Group(a, Text("G"));
  _builder.Group(b, Text("G"));
  _builder.Group(b, Text("H"));
  EXPECT_FALSE(_builder.AllGroupsClosed());
  _builder.EndGroup(a);
  _builder.EndGroup(b);
  EXPECT_FALSE(_builder.AllGroupsClosed());
  _builder.EndGroup(b);
  EXPECT_TRUE(_builder.AllGroupsClosed());
}

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

TEST_F(PivotFactoryTest, NewCategoryAfterFourGetsCoordinateFourWhateverItsGroup) {
  const int d = _builder.Dimension(Text("V"));
  _builder.Group(d, Text("G1"));
  _builder.SetCategory(d, Text("a"));
  _builder.SetCategory(d, Text("b"));
  _builder.EndGroup(d);
  _builder.Group(d, Text("G2"));
  _builder.SetCategory(d, Text("c"));
  _builder.SetCategory(d, Text("d"));
  _builder.EndGroup(d);
  _builder.Group(d, Text("G3"));
  _builder.SetCategory(d, Text("a"));  // same label as in G1, a new category here
  EXPECT_EQ(CellCoordinates(), (Coords{4}));
  EXPECT_EQ(_table.Size(d), 5);
}

TEST_F(PivotFactoryTest, CellBeforeAnyCategoryOfADimensionLandsAtZero) {
  const int a = _builder.Dimension(Text("A"));
  const int b = _builder.Dimension(Text("B"));
  _builder.SetCategory(b, Text("x"));
  _builder.SetCategory(b, Text("y"));
  _builder.Cell(OmNumber(3.5));
  ASSERT_NE(_table.Cell({0, 1}), nullptr);
  EXPECT_EQ(_table.Cell({0, 1})->Text(), OmNumber(3.5).Text());

  _builder.Group(a, Text("G"));  // no category of A is current again
  _builder.Cell(OmNumber(4));
  EXPECT_EQ(_table.Cell({0, 1})->Text(), OmNumber(4).Text());
  EXPECT_EQ(_table.NCells(), 1u);
}

TEST_F(PivotFactoryTest, CellsAreAddressedByTheCurrentCategoryOfEveryDimension) {
  const int vars = _builder.Dimension(Text("Variables"));
  const int stats = _builder.Dimension(Text("Statistics"));
  _builder.SetCellDimension(stats);
  for (const char* v : {"age", "income"}) {
    _builder.SetCategory(vars, Text(v));
    for (const char* s : {"N", "Mean"}) {
      _builder.SetCategory(_builder.CellDimension(), Text(s));
      _builder.Cell(Text(std::string(v) + "/" + s));
    }
  }
  EXPECT_EQ(_table.NCells(), 4u);
  EXPECT_EQ(_table.Cell({1, 0})->Text(), "income/N");
  EXPECT_EQ(_table.Cell({0, 1})->Text(), "age/Mean");
}

TEST_F(PivotFactoryTest, OwnedCellMovesIntoTheTableAndCopiedCellIsCloned) {
  const int d = _builder.Dimension(Text("V"));
  _builder.SetCategory(d, Text("x"));
  auto owned = std::make_unique<OmNumber>(1);
  const OmCellText* address = owned.get();
  _builder.Cell(std::move(owned));
  EXPECT_EQ(_table.Cell({0}), address);

  _builder.SetCategory(d, Text("y"));
  OmStringCell kept("kept");
  _builder.Cell(kept);
  ASSERT_NE(_table.Cell({1}), nullptr);
  EXPECT_NE(_table.Cell({1}), &kept);
  EXPECT_EQ(_table.Cell({1})->Text(), "kept");

  EXPECT_EQ(Failure([&] { _builder.Cell(std::unique_ptr<OmCellText>()); }).Message(),
            "OmPivotFactory::Cell -- value == null");
  EXPECT_NE(_table.Cell({1}), nullptr);
}

TEST_F(PivotFactoryTest, FirstCellFlagClearsWithTheFirstCellOrFootnote) {
  EXPECT_TRUE(_builder.FirstCell());
  _builder.Annotate(OmPivotFactory::kCaption, OmFootnote(Text("caption")));
  EXPECT_TRUE(_builder.FirstCell());
  _builder.Annotate(OmPivotFactory::kTableLabel, OmFootnote(Text("note")));
  EXPECT_FALSE(_builder.FirstCell());

  OmPivotTable other(Text("O"), Text("O"));
  OmPivotFactory builder(&other);
  builder.Cell(Text("only"));
  EXPECT_FALSE(builder.FirstCell());
}

TEST_F(PivotFactoryTest, ManyCategoriesAreFoundAgainWithTheirCoordinates) {
  const int d = _builder.Dimension(Text("Cases"));
  constexpr int kCategories = 20000;
  for (int i = 0; i < kCategories; ++i) _builder.SetCategory(d, Text("case " + std::to_string(i)));
  for (int i = kCategories - 1; i >= 0; i -= 997) {
    _builder.SetCategory(d, Text("case " + std::to_string(i)));
    EXPECT_EQ(CellCoordinates(), (Coords{i}));
  }
  EXPECT_EQ(_table.Size(d), kCategories);
}

// --- Cell dimension and state dump ----------------------------------------------------------

TEST_F(PivotFactoryTest, CellDimensionBeforeDeclarationDumpsStateThenFails) {
  CerrCapture capture;
  OMSException e = Failure([&] { _builder.CellDimension(); });
  EXPECT_EQ(e.Message(), "OmPivotFactory::CellDimension -- _cellDimension == -1");
  EXPECT_EQ(e.Value1(), -1);
  EXPECT_EQ(capture.Text(),
            "OmPivotFactory state on error:\n\tTable Title: Statistics\n\tCurrent Dimension: -1\n");
}

TEST_F(PivotFactoryTest, SelectCellDimensionMakesItCurrentAndDumpStateShowsIt) {
  const int stats = _builder.Dimension(Text("Statistics"));
  _builder.Dimension(Text("Variables"));
  _builder.SetCellDimension(stats);
  EXPECT_EQ(_builder.CellDimension(), stats);
  EXPECT_EQ(CurrentDimension(), 1);
  _builder.SelectCellDimension();
  EXPECT_EQ(CurrentDimension(), stats);
  _builder.Dimension(Text("Variables"));
  CerrCapture capture;
  _builder.DumpState();
  EXPECT_EQ(capture.Text(),
            "OmPivotFactory state on error:\n\tTable Title: Statistics\n\tCurrent Dimension: 1\n");
}

// --- Sort and ungroup marks -----------------------------------------------------------------

TEST_F(PivotFactoryTest, MarksAndStylesWithoutCurrentDimensionFailNamingTheOperation) {
  OMSException dimension = Failure([&] { _builder.MarkSortDimension(0); });
  EXPECT_EQ(dimension.Message(), "OmPivotFactory::MarkSortDimension -- _my._currentDimension == -1");
  EXPECT_EQ(dimension.Value1(), -1);
  ExpectFailures({
      {"MarkSortGroup", [&] { _builder.MarkSortGroup(1); },
       "OmPivotFactory::MarkSortGroup -- _my._currentDimension == -1"},
      {"MarkUngroup", [&] { _builder.MarkUngroup(); }, "OmPivotFactory::MarkUngroup -- _my._currentDimension == -1"},
      {"Bold", [&] { _builder.Bold(); }, "OmPivotFactory::Bold -- _my._currentDimension == -1"},
      {"HideCategory", [&] { _builder.HideCategory(); },
       "OmPivotFactory::HideCategory -- _my._currentDimension == -1"},
  });
}

TEST_F(PivotFactoryTest, SortMarksReachTheDimensionOrTheOpenGroup) {
  const int d = _builder.Dimension(Text("V"));
  _builder.Group(d, Text("G"));
  _builder.MarkSortGroup(1);
  _builder.MarkUngroup();
  _builder.MarkSortDimension(0);
  const OmDimensionNode& root = _table.Dimension(d).Root();
  const OmDimensionNode& group = *root.Child(0);
  EXPECT_EQ(root.SortMark(), 0);
  EXPECT_FALSE(root.UngroupMark());
  EXPECT_EQ(group.SortMark(), 1);
  EXPECT_TRUE(group.UngroupMark());

  _builder.EndGroup(d);
  _builder.MarkSortGroup(1);  // with no group open the insertion node is the dimension
  EXPECT_EQ(root.SortMark(), 1);
}

// --- Category styles ------------------------------------------------------------------------

TEST_F(PivotFactoryTest, StylesDecorateTheCurrentCategoryLabel) {
  const int d = _builder.Dimension(Text("V"));
  _builder.Group(d, Text("G"));
  _builder.SetCategory(d, Text("x"));
  _builder.SetCategory(d, Text("y"));
  _builder.Bold();
  _builder.TextColor("#FF0000");
  _builder.BackgroundColor("#00FF00");
  _builder.HideCategory();
  const OmDimensionNode& group = *_table.Dimension(d).Root().Child(0);
  const OmCellText& x = *group.Child(0)->Label();
  const OmCellText& y = *group.Child(1)->Label();
  EXPECT_TRUE(y.TextBold());
  EXPECT_EQ(y.TextColor(), "#FF0000");
  EXPECT_EQ(y.BackgroundColor(), "#00FF00");
  EXPECT_FALSE(y.Visible());
  EXPECT_FALSE(x.HasDecorations());
}

TEST_F(PivotFactoryTest, StylesWithoutCurrentCategoryOfTheCurrentDimensionRaiseServerError103) {
  const int a = _builder.Dimension(Text("A"));
  _builder.SetCategory(a, Text("x"));
  const int d = _builder.Dimension(Text("V"));
  EXPECT_EQ(ServerErrorOf([&] { _builder.TextColor("#000000"); }), 103);  // A's category is not V's
  EXPECT_EQ(ServerErrorOf([&] { _builder.Bold(); }), 103);
  EXPECT_EQ(ServerErrorOf([&] { _builder.BackgroundColor("#FFFFFF"); }), 103);
  _builder.Group(d, Text("G"));
  _builder.SetCategory(d, Text("x"));
  _builder.EndGroup(d);
  EXPECT_EQ(ServerErrorOf([&] { _builder.HideCategory(); }), 103);
  _builder.SetCategory(d, Text("y"));
  _builder.Group(d, Text("G"));  // entering a group leaves no category current
  EXPECT_EQ(ServerErrorOf([&] { _builder.Bold(); }), 103);
  _builder.Dimension(Text("A"));
  _builder.TextColor("#000000");
  EXPECT_EQ(_table.Dimension(a).Root().Child(0)->Label()->TextColor(), "#000000");
}

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

TEST_F(PivotFactoryTest, MarkerMakesAnEmptyCellWhereNoneIsAndJoinsTheMarkersOfAnExistingOne) {
  const int d = _builder.Dimension(Text("V"));
  _builder.SetCategory(d, Text("x"));
  _builder.addMarker(Text("*"));
  const auto* cell = dynamic_cast<const OmStringCell*>(_table.Cell({0}));
  ASSERT_NE(cell, nullptr);
  EXPECT_EQ(cell->Text(), "");
  EXPECT_FALSE(cell->Translatable());
  EXPECT_EQ(cell->Markers(), std::vector<std::string>{"*"});
  EXPECT_TRUE(_table.HasMarkers());

  _builder.SetCategory(d, Text("y"));
  _builder.Cell(OmNumber(0.01));
  _builder.addMarker(Text("*"));
  _builder.addMarker(Text("**"));
  EXPECT_EQ(_table.Cell({1})->Markers(), (std::vector<std::string>{"*", "**"}));
  EXPECT_EQ(_table.Cell({1})->Text(), OmNumber(0.01).Text());
}

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

TEST_F(PivotFactoryTargetTest, AfterEndGroupTheGroupTargetIsTheDimensionAndNoCategoryIsTargeted) {
  _builder.EndGroup(_d);
  _builder.addMiscProperty(3, "dim");
  EXPECT_EQ(_table.Dimension(_d).Label()->MiscProperties(), std::vector<std::string>{"dim"});
  EXPECT_EQ(ServerErrorOf([&] { _builder.addMiscProperty(4, "p"); }), 103);
  EXPECT_EQ(ServerErrorOf([&] { _builder.Annotate(4, OmFootnote(Text("f"))); }), 103);
  EXPECT_TRUE(_table.Footnotes().empty());
}

TEST_F(PivotFactoryTargetTest, FootnoteIsAddedOnceAndReferencedByEachTarget) {
  const OmFootnote note(Text("Based on 5 cases"));
  _builder.Annotate(4, note);
  _builder.Annotate(5, note);
  _builder.Annotate(1, OmFootnote(Text("other")));
  ASSERT_EQ(_table.Footnotes().size(), 2u);
  EXPECT_EQ(Target(4)->Footnotes(), std::vector<std::int16_t>{0});
  ASSERT_NE(Target(5), nullptr);
  EXPECT_EQ(Target(5)->Text(), "");
  EXPECT_EQ(Target(5)->Footnotes(), std::vector<std::int16_t>{0});
  EXPECT_EQ(Target(1)->Footnotes(), std::vector<std::int16_t>{1});
  EXPECT_FALSE(_builder.FirstCell());
}

TEST_F(PivotFactoryTargetTest, CaptionTargetReplacesTheCaption) {
  _builder.Annotate(6, OmFootnote(Text("New caption")));
  ASSERT_NE(_table.Caption(), nullptr);
  EXPECT_EQ(_table.Caption()->Text(), "New caption");
  EXPECT_TRUE(_table.Footnotes().empty());
  EXPECT_TRUE(_builder.FirstCell());
  _builder.Annotate(7, OmFootnote(Text("on the caption cell")));
  EXPECT_EQ(_table.Caption()->Footnotes(), std::vector<std::int16_t>{0});
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

TEST_F(PivotFactorySplitTest, CopiedBuilderStoresCellsAtTheCurrentSplitCategoryAndAddsNewOnes) {
  auto table = MakeSplitTable();
  OmPivotFactory builder(table.get(), _splitsBuilder);
  const int stats = builder.Dimension(Text("Statistics"));
  EXPECT_EQ(stats, 1);
  builder.SetCategory(stats, Text("N"));
  builder.Cell(OmNumber(10));
  ASSERT_NE(table->Cell({1, 0}), nullptr);
  EXPECT_EQ(_splits.NDimensions(), 1);  // the splits table is not touched
  EXPECT_EQ(std::as_const(*table).Rows(), (std::vector<short>{1, 0}));

  // The next split category is added to the split table.
  builder.SetCategory(builder.Dimension(Text("Gender")), Text("other"));
  builder.Cell(Text("v"));
  EXPECT_NE(table->Cell({2, 0}), nullptr);
}

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

TEST_F(PivotFactorySplitTest, CopiedBuilderKeepsCurrentAndCellDimensionAndFlag) {
  _splitsBuilder.Dimension(Text("Region"));
  _splitsBuilder.SetCellDimension(0);
  _splitsBuilder.SetCategory(1, Text("north"));
  auto table = MakeSplitTable();
  OmPivotFactory builder(table.get(), _splitsBuilder);
  EXPECT_EQ(builder.CellDimension(), 0);
  builder.MarkSortDimension(0);
  EXPECT_EQ(table->Dimension(1).Root().SortMark(), 0);
  EXPECT_EQ(_splits.Dimension(1).Root().SortMark(), -1);
  EXPECT_TRUE(builder.FirstCell());
  builder.Cell(Text("v"));
  EXPECT_NE(table->Cell({1, 0}), nullptr);
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
