// Table messages: tables built cell by cell through their TCIDs, dimension placement, keep flags,
// the fast-table viewer rule, table properties, annotations and the failures that end in recovery.
#include "SessionFixture.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"

namespace sessiontest {
namespace {

using TableMessages = BothOrdersTest;

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

OM_BOTH_ORDERS(TableMessages);

// OMS selection and the viewer: messages that are dropped without error.

class DroppedTableMessages : public SessionTest {
protected:
  // A table with one statistic, one category, a cell and a footnote; then a second category and
  // cell. Not fed yet.
  void WriteTable(const std::string& title) {
    writer.BeginTable(1, Str(title), Str("Descriptive Statistics"));
    writer.CellDimension(1, Str("S"));
    writer.Category(1, Str("a"), Str("V"));
    writer.Cell(1, Num(1), Str("N"));
    writer.Annotate(5, Str("note"));
    writer.Category(1, Str("b"), Str("V"));
    writer.Cell(1, Num(2), Str("N"));
    writer.EndTable(1);
  }
};

// Only the viewer can do with the first cell of a fast table, and not when bootstrapping needs
// every cell. A new table under the same TCID starts again with its first cell.
TEST_F(DroppedTableMessages, ViewerNeedsOnlyTheFirstCellOfAFastTableUnlessBootstrapped) {
  struct Case {
    const char* name;
    bool viewer;
    const char* settings;
    double sum;
    std::size_t footnotes;
  };
  const Case cases[] = {
      {"viewer", true, "fasttables=1\n", 1, 0},
      {"not for the viewer", false, "fasttables=1\n", 3, 1},
      {"bootstrapped", true, "fasttables=1\nbootstrapped=1\n", 3, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Reopen();
    factory->setDestViewer(c.viewer);
    BeginProcedure(1, Settings("Descriptives", c.settings));
    WriteTable("Stats");
    WriteTable("Again");
    Feed();
    EXPECT_EQ(factory->RecoveredErrorCount(), 0u);
    for (std::size_t t : {0u, 1u}) {
      double sum = 0;  // of the values kept: 1 and 2 were sent
      OpenTable(t).ReadCells([&sum](const OmPivotTable::CellView& cell) {
        const auto* number = dynamic_cast<const OmNumber*>(cell.object);
        sum += number ? number->Value() : cell.number;
      });
      EXPECT_EQ(sum, c.sum) << t;
    }
    EXPECT_EQ(OpenTable().Footnotes().size(), c.footnotes);
  }
}

}  // namespace
}  // namespace sessiontest
