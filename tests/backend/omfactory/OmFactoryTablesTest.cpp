// Table messages: tables built cell by cell through their TCIDs, dimension placement, keep flags,
// the fast-table viewer rule, table properties, annotations and the failures that end in recovery.
#include "SessionFixture.h"
#include "backend/omsopmgr/OMSSelector.h"
#include "platform/errors/ThrowError.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmVariable.h"
#include "platform/settings/BackendSettings.h"

namespace sessiontest {
namespace {

double ValueAt(const OmPivotTable& table, std::vector<int> coords) {
  const OmCellText* cell = table.Cell(coords);
  if (cell == nullptr) return -1;
  return dynamic_cast<const OmNumber&>(*cell).Value();
}

std::vector<short> AxisOf(const OmPivotTable& table, int axis) {
  return axis == 0 ? table.Rows() : axis == 1 ? table.Columns() : table.Layers();
}

using TableMessages = BothOrdersTest;

TEST_P(TableMessages, CellsLandAtTheCurrentCategoriesOfEveryDimension) {
  BeginProcedure();
  BeginTable(1, "Statistics");
  writer.CellDimension(1, Str("Statistics"));
  writer.Category(1, Str("x"), Str("Variables"));
  writer.Cell(1, Num(10), Str("N"));
  writer.Cell(1, Num(2.5), Str("Mean"));
  writer.Category(1, Str("y"), Str("Variables"));
  writer.Cell(1, Num(12), Str("N"));
  writer.EndTable(1);
  Feed();
  ASSERT_EQ(factory->RecoveredErrorCount(), 0u) << factory->LastRecoveredError()->what();

  OmPivotTable& table = OpenTable();
  ASSERT_EQ(table.NDimensions(), 2);
  EXPECT_EQ(table.Dimension(0).Label()->Text(), "Statistics");
  EXPECT_EQ(table.Dimension(1).Label()->Text(), "Variables");
  EXPECT_EQ(table.NCells(), 3u);
  EXPECT_EQ(ValueAt(table, {0, 0}), 10);
  EXPECT_EQ(ValueAt(table, {1, 0}), 2.5);
  EXPECT_EQ(ValueAt(table, {0, 1}), 12);
  EXPECT_TRUE(table.IsEnded());
  EXPECT_EQ(factory->CurrentTCID(), 1);
  EXPECT_EQ(factory->PendingCell(3), nullptr);  // cells were taken from their slots

  EndProcedure();
  EXPECT_EQ(Outline(*tree), (std::vector<std::string>{"0:-", "1:Procedure:Descriptives",
                                                      "2:Table:Statistics"}));
}

// How the axes fill and shift is the pivot factory's own; here only the message's part: the
// dimension named by its label and the two hide flags.
TEST_P(TableMessages, PlacementFindsTheDimensionByLabelAndDecodesItsFlags) {
  BeginProcedure();
  BeginTable(1, "Placed");
  writer.Dimension(1, Str("A"));
  writer.Dimension(1, Str("B"));
  writer.PlaceDimension(1, Str("A"), 2, 1, 1, 0);
  Feed();
  OmPivotTable& table = OpenTable();
  EXPECT_EQ(AxisOf(table, 1), (std::vector<short>{-1, 0}));
  EXPECT_EQ(AxisOf(table, 0), (std::vector<short>{1}));
  EXPECT_TRUE(table.Dimension(0).HideLabel());
  EXPECT_FALSE(table.Dimension(0).HideCategories());
  writer.PlaceDimension(1, Str("A"), 1, 0, 0, 1);
  Feed();
  EXPECT_EQ(AxisOf(table, 0), (std::vector<short>{0, 1}));
  EXPECT_FALSE(table.Dimension(0).HideLabel());
  EXPECT_TRUE(table.Dimension(0).HideCategories());
  EXPECT_EQ(factory->RecoveredErrorCount(), 0u);
}

TEST_P(TableMessages, GroupsNestCategoriesAndEndTableChecksThemClosed) {
  BeginProcedure();
  BeginTable(2, "Grouped");
  writer.BeginGroup(2, Str("Valid"), Str("Cases"));
  writer.Category(2, Str("Yes"), Str("Cases"));
  writer.EndGroup(2, Str("Cases"));
  writer.Category(2, Str("Missing"), Str("Cases"));
  writer.EndTable(2);
  Feed();
  ASSERT_EQ(factory->RecoveredErrorCount(), 0u) << factory->LastRecoveredError()->what();
  const OmDimension& cases = OpenTable().Dimension(0);
  ASSERT_EQ(cases.Root().NChildren(), 2u);
  EXPECT_EQ(cases.Root().Child(0)->Label()->Text(), "Valid");
  EXPECT_EQ(cases.Root().Child(0)->Child(0)->Label()->Text(), "Yes");
  EXPECT_EQ(cases.Root().Child(1)->Label()->Text(), "Missing");
}

TEST_P(TableMessages, EndTableWithAnOpenGroupIsServerError102) {
  BeginProcedure();
  BeginTable(1, "Open group");
  writer.BeginGroup(1, Str("G"), Str("D"));
  writer.EndTable(1);
  Feed();
  ASSERT_NE(factory->LastRecoveredError(), nullptr);
  EXPECT_EQ(factory->LastRecoveredError()->Value1(), 102);
  EXPECT_EQ(factory->Procedure(), nullptr);  // recovery appended the procedure
}

TEST_P(TableMessages, EndTableOfAnUnopenedTcidIsServerError101) {
  BeginProcedure();
  writer.EndTable(4);
  Feed();
  ASSERT_NE(factory->LastRecoveredError(), nullptr);
  EXPECT_EQ(factory->LastRecoveredError()->Value1(), 101);
  EXPECT_EQ(factory->LastRecoveredError()->Message(), ServerError("omerrors.err", 101).Message());
}

TEST_P(TableMessages, MessageForAnUnopenedTcidNamesTheTcid) {
  BeginProcedure();
  BeginTable(1, "Open");
  writer.Category(9, Str("x"), Str("d"));
  Feed();
  const OMSException* error = factory->LastRecoveredError();
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->Message(), "OmFactory::CheckTCID() -- TCID invalid");
  EXPECT_EQ(error->Value1(), 9);
  EXPECT_EQ(factory->CellSlotCount(), 0u);
  EXPECT_EQ(factory->Procedure(), nullptr);
}

TEST_P(TableMessages, BeginTableOnAnOpenTcidReplacesTheEntry) {
  BeginProcedure();
  BeginTable(1, "First");
  BeginTable(1, "Second");
  writer.Dimension(1, Str("D"));
  Feed();
  ASSERT_EQ(OpenTables().size(), 2u);
  EXPECT_EQ(OpenTable(0).NDimensions(), 0);
  EXPECT_EQ(OpenTable(1).NDimensions(), 1);
}

TEST_P(TableMessages, MessagesWithoutTcidUseTheCurrentOne) {
  BeginProcedure();
  BeginTable(1, "One");
  BeginTable(2, "Two");
  writer.Dimension(1, Str("D"));  // makes 1 current again
  writer.Category(1, Str("c"), Str("D"));
  writer.Bold();
  writer.TextColor("#FF0000");
  writer.TableColors(3, 4);
  Feed();
  ASSERT_EQ(factory->RecoveredErrorCount(), 0u) << factory->LastRecoveredError()->what();
  OmPivotTable& one = OpenTable(0);
  const OmCellText* category = one.Dimension(0).Root().Child(0)->Label();
  EXPECT_TRUE(category->TextBold());
  EXPECT_EQ(category->TextColor(), "#FF0000");
  EXPECT_EQ(one.StartColor(), 3);
  EXPECT_EQ(one.EndColor(), 4);
  const OmPivotTable fresh(OmStringCell("t"), OmStringCell("t"));
  EXPECT_EQ(OpenTable(1).StartColor(), fresh.StartColor());
}

TEST_P(TableMessages, CornerTextWidthsAndFirstPartFlagLeaveTheCurrentTcid) {
  BeginProcedure();
  BeginTable(1, "One");
  BeginTable(2, "Two");
  writer.CornerText(1, Str("corner"));
  writer.ColumnWidth(1, 3, 5, 50);
  writer.ClearTableFlag(1);
  Feed();
  EXPECT_EQ(factory->CurrentTCID(), 2);
  OmPivotTable& one = OpenTable(0);
  ASSERT_NE(one.CornerText(), nullptr);
  EXPECT_EQ(one.CornerText()->Text(), "corner");
  EXPECT_EQ(one.MinColumnWidth(), 5);
  EXPECT_EQ(one.MaxColumnWidth(), 50);
  EXPECT_EQ(one._firstPart, 0);
  EXPECT_EQ(OpenTable(1)._firstPart, 1);
}

TEST_P(TableMessages, TablePropertiesSetRotationOptionsDimensionFlagAndMergedSimple) {
  BeginProcedure();
  BeginTable(1, "Props");
  writer.Dimension(1, Str("Dim"));
  writer.TableProperty(1, 0, Num(1));
  writer.TableProperty(1, 1, Num(0));
  writer.Integer(90, 0, 0x050802);
  writer.Number(90, 3.9, 0x050802);
  writer.TableProperty(1, 2, 90);
  writer.TableProperty(1, 3, Str("Dim"));
  writer.TableProperty(1, 4, Str("ignored"));
  writer.TableProperty(1, 5, Str("ignored"));
  writer.TableProperty(1, 6, Str("ignored"));
  Feed();
  ASSERT_EQ(factory->RecoveredErrorCount(), 0u) << factory->LastRecoveredError()->what();
  OmPivotTable& table = OpenTable();
  EXPECT_TRUE(table.RotateRowLabels());
  EXPECT_FALSE(table.RotateColumnLabels());
  EXPECT_EQ(table.OptionNumber(), 3);
  EXPECT_TRUE(table.Dimension(0).Property3());
  EXPECT_EQ(table.MiscProperties(), (std::vector<std::string>{"mergedSimple"}));
}

TEST_P(TableMessages, TextForANumericPropertyOrAnUnknownDimensionLabelFails) {
  const std::pair<int, const char*> cases[] = {{0, "OmFactory::TableProperty() -- pNum"},
                                               {3, "OmFactory::TableProperty() -- dim < 0"}};
  std::int64_t id = 1;
  for (const auto& [property, message] : cases) {
    SCOPED_TRACE(message);
    BeginProcedure(id++);
    BeginTable(1, "Props");
    writer.TableProperty(1, property, Str("Nowhere"));
    Feed();
    ASSERT_NE(factory->LastRecoveredError(), nullptr);
    EXPECT_EQ(factory->LastRecoveredError()->Message(), message);
  }
  EXPECT_EQ(factory->LastRecoveredError()->Value1(), -1);
}

TEST_P(TableMessages, AnnotationsReachTablesAndHeadings) {
  BeginProcedure();
  BeginTable(1, "Noted");
  writer.CellDimension(1, Str("S"));
  writer.Cell(1, Num(1), Str("N"));
  writer.Annotate(5, Str("cell note"));
  writer.AnnotateMarked(1, Str("title note"), Str("*"));
  writer.Annotate(0, Str("heading note"));
  Feed();
  ASSERT_EQ(factory->RecoveredErrorCount(), 0u) << factory->LastRecoveredError()->what();
  OmPivotTable& table = OpenTable();
  ASSERT_EQ(table.Footnotes().size(), 3u);
  EXPECT_EQ(table.Footnotes()[0].Text().Text(), "cell note");
  EXPECT_EQ(table.Footnotes()[1].Text().Text(), "title note");
  ASSERT_NE(table.Footnotes()[1].Marker(), nullptr);
  EXPECT_EQ(table.Footnotes()[1].Marker()->Text(), "*");
  EXPECT_EQ(table.Footnotes()[2].Text().Text(), "heading note");
  EXPECT_EQ(table.Cell({0})->Footnotes().size(), 1u);
}

TEST_P(TableMessages, AnnotationTargetOutsideZeroToSevenNamesTargetAndText) {
  BeginProcedure();
  writer.String(44, "note", 1);
  writer.Annotate(9, 44);
  Feed();
  const OMSException* error = factory->LastRecoveredError();
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->Message(), "OmFactory::Annotate() -- unknown annotation target");
  EXPECT_EQ(error->Value1(), 9);
  EXPECT_EQ(error->Value2(), 44);
}

TEST_P(TableMessages, MiscPropertyTargetIsCheckedOnlyWithAProcedure) {
  writer.MiscProperty(0, "x");
  writer.MiscProperty(8, "x");
  Feed();
  EXPECT_EQ(factory->RecoveredErrorCount(), 0u);

  BeginProcedure();
  writer.MiscProperty(8, "x");
  Feed();
  ASSERT_NE(factory->LastRecoveredError(), nullptr);
  EXPECT_EQ(factory->LastRecoveredError()->Message(),
            "OmFactory::addMiscProperty() -- unknown target");
  EXPECT_EQ(factory->LastRecoveredError()->Value1(), 8);
}

TEST_P(TableMessages, MiscPropertyAndMarkerDecorateTheCurrentCell) {
  BeginProcedure();
  BeginTable(1, "Decorated");
  writer.CellDimension(1, Str("S"));
  writer.Cell(1, Num(1), Str("N"));
  writer.MiscProperty(5, "highlight");
  writer.Marker(Str("**"));
  Feed();
  ASSERT_EQ(factory->RecoveredErrorCount(), 0u) << factory->LastRecoveredError()->what();
  const OmCellText* cell = OpenTable().Cell({0});
  ASSERT_NE(cell, nullptr);
  EXPECT_EQ(cell->MiscProperties(), (std::vector<std::string>{"highlight"}));
  EXPECT_EQ(cell->Markers(), (std::vector<std::string>{"**"}));
}

TEST_P(TableMessages, WithoutAProcedureTableMessagesOnlyEmptyTheirSlots) {
  const std::int32_t category = Str("x");
  const std::int32_t dimension = Str("d");
  Feed();
  ASSERT_NE(factory->PendingCell(category), nullptr);
  writer.Category(1, category, dimension);
  writer.BeginTable(1, Str("t"), Str("s"));
  Feed();
  EXPECT_EQ(factory->PendingCell(category), nullptr);
  EXPECT_EQ(factory->PendingCell(dimension), nullptr);
  EXPECT_EQ(factory->RecoveredErrorCount(), 0u);
  EXPECT_EQ(factory->CurrentTCID(), -1);
}

TEST_P(TableMessages, ScratchTableMarksTheTableFoundByTitle) {
  BeginProcedure();
  BeginTable(1, "Doomed");
  writer.ScratchTable(Str("Doomed"));
  writer.ScratchTable(Str("Absent"));
  Feed();
  EXPECT_TRUE(OpenTable().IsScratched());
}

TEST_P(TableMessages, UnimplementedCodesFailInsideAProcedure) {
  BeginProcedure();
  writer.RequiredTable(1, 2);
  Feed();
  ASSERT_NE(factory->LastRecoveredError(), nullptr);
  EXPECT_EQ(factory->LastRecoveredError()->Message(),
            "OmFactory::Data::ProcessMessage() -- IPC_REQUIRED_TABLE not implemented");
  BeginProcedure(2);
  writer.ScratchCategory(1, 2);
  Feed();
  EXPECT_EQ(factory->LastRecoveredError()->Message(),
            "OmFactory::Data::ProcessMessage() -- IPC_SCRATCH_CATEGORY not implemented");
}

TEST_P(TableMessages, TableModeFixerGivesVariablesTheTableModeAndTheOutlineKeepsItsOwn) {
  writer.OutputSetting("TVARS", "Names");
  writer.OutputSetting("OVARS", "Both");
  BeginProcedure();
  writer.Variable(50, 2, "income", "Household income");
  writer.BeginTable(1, 50, Str("Sub"));
  writer.Variable(51, 2, "region", "Region");
  writer.Dimension(1, 51);
  Feed();
  OmPivotTable& table = OpenTable();
  EXPECT_EQ(dynamic_cast<const OmVariable&>(*table.Label()).DisplayMode(), 3u);
  EXPECT_EQ(dynamic_cast<const OmVariable&>(*table.TableTitle()).DisplayMode(), 1u);
  EXPECT_EQ(dynamic_cast<const OmVariable&>(*table.Dimension(0).Label()).DisplayMode(), 1u);
}

TEST_P(TableMessages, BeginTableHandsTheProcedureSettingsToTheTable) {
  writer.OutputSetting("TFIT", "Labels");
  BeginProcedure(1, Settings("Descriptives", "fasttables=1\nmaxcells=500\n"));
  BeginTable(1, "Settled");
  OmPivotTable& table = OpenTable();
  EXPECT_TRUE(table.fastTable());
  EXPECT_TRUE(table.LabelsOnly());
  EXPECT_EQ(table.MaxCells(), 500u);
  ASSERT_NE(table.getBackendSettings(), nullptr);
  EXPECT_EQ(table.getBackendSettings()->getMaxCells(), 500u);
}

OM_BOTH_ORDERS(TableMessages);

// OMS selection and the viewer: messages that are dropped without error.

OMSObjectSelector Request(unsigned types) {
  OMSObjectSelector request;
  request.SelectType(types);
  return request;
}

class DroppedTableMessages : public SessionTest {
protected:
  // A table with one statistic, one category and a cell; then a second category and cell.
  void FillTable() {
    BeginTable(1, "Stats");
    writer.CellDimension(1, Str("S"));
    writer.Category(1, Str("a"), Str("V"));
    writer.Cell(1, Num(1), Str("N"));
    writer.Category(1, Str("b"), Str("V"));
    writer.Cell(1, Num(2), Str("N"));
    writer.Annotate(5, Str("note"));
    writer.EndTable(1);
    Feed();
  }
};

TEST_F(DroppedTableMessages, TableThatOmsDoesNotKeepReceivesNothing) {
  requests.push_back(Request(32));  // headings and procedures only
  Reopen();
  BeginProcedure();
  FillTable();
  EXPECT_EQ(factory->RecoveredErrorCount(), 0u);
  OmPivotTable& table = OpenTable();
  EXPECT_EQ(table._keep, 0);
  EXPECT_EQ(table.NDimensions(), 0);
  EXPECT_EQ(table.NCells(), 0u);
  EXPECT_TRUE(table.IsEnded());  // IPC_END_TABLE does not test the flag
}

// Only the viewer can do with the first cell of a fast table, and not when bootstrapping needs
// every cell.
TEST_F(DroppedTableMessages, ViewerNeedsOnlyTheFirstCellOfAFastTableUnlessBootstrapped) {
  struct Case {
    const char* name;
    bool viewer;
    const char* settings;
    std::size_t cells;
    std::size_t footnotes;
  };
  const Case cases[] = {
      {"viewer", true, "fasttables=1\n", 1, 0},
      {"not for the viewer", false, "fasttables=1\n", 2, 1},
      {"bootstrapped", true, "fasttables=1\nbootstrapped=1\n", 2, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Reopen();
    factory->setDestViewer(c.viewer);
    BeginProcedure(1, Settings("Descriptives", c.settings));
    FillTable();
    EXPECT_EQ(factory->RecoveredErrorCount(), 0u);
    EXPECT_EQ(OpenTable().NCells(), c.cells);
    EXPECT_EQ(OpenTable().Footnotes().size(), c.footnotes);
  }
}

}  // namespace
}  // namespace sessiontest
