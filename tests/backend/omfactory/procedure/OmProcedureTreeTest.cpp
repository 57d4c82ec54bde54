// OmProcedureFactory: the procedure node, headings, tables, text blocks, heading footnotes and
// split tables.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmFootnote.h"
#include "platform/outputmodel/OmStringCellUTF8.h"
#include "platform/settings/BackendSettings.h"
#include "tests/backend/omfactory/procedure/ProcedureFixture.h"

namespace {

using namespace proctest;

using ProcedureTreeTest = ProcedureTest;

// ---- the procedure node ---------------------------------------------------------------------

TEST_F(ProcedureTreeTest, NewProcedureIsTheRootsOnlyChildAndSetsTheSelectorsCommand) {
  auto proc = Begin("Frequencies", 1, "de", "Häufigkeiten");
  EXPECT_EQ(Outline(proc->Tree()), (std::vector<std::string>{"0:-", "1:Procedure:Frequencies"}));
  auto* procedure = PartsOf<OmProcedure>(proc->Tree()).at(0);
  auto* label = dynamic_cast<OmStringCell*>(procedure->Label());
  ASSERT_NE(label, nullptr);
  EXPECT_TRUE(label->Translatable());
  EXPECT_EQ(_selector.Command(), "Frequencies");
  EXPECT_EQ(procedure->_keep, 1);
}

TEST_F(ProcedureTreeTest, ProcedureAndHeadingsNotSelectedByAnyRequestAreNotKept) {
  _requests.push_back(Request(OMSObjectSelector::kTables));
  auto proc = Begin();
  proc->Node(Text("Group"));
  EXPECT_EQ(PartsOf<OmProcedure>(proc->Tree()).at(0)->_keep, 0);
  EXPECT_EQ(PartsOf<OmHeading>(proc->Tree()).at(1)->_keep, 0);
}

TEST_F(ProcedureTreeTest, NewProcedureRestartsInstanceCounting) {
  _requests.push_back(Request(OMSObjectSelector::kTables, "", 1));
  auto first = Begin("Descriptives", 1);
  TableWithCells(*first, "A", "Descriptive Statistics", {"N"});
  TableWithCells(*first, "B", "Descriptive Statistics", {"N"});
  auto second = Begin("Descriptives", 2);
  TableWithCells(*second, "C", "Descriptive Statistics", {"N"});
  // The first table of each procedure is instance 1.
  EXPECT_EQ(PartsOf<OmPivotTable>(first->Tree()).at(0)->_keep, 1);
  EXPECT_EQ(PartsOf<OmPivotTable>(first->Tree()).at(1)->_keep, 0);
  EXPECT_EQ(PartsOf<OmPivotTable>(second->Tree()).at(0)->_keep, 1);
}

TEST_F(ProcedureTreeTest, OutlineTextGoesToTheProcedureNode) {
  auto proc = Begin();
  proc->Node(Text("Heading"));
  proc->OutlineText(Text("Split = 1"));
  auto* procedure = PartsOf<OmProcedure>(proc->Tree()).at(0);
  ASSERT_NE(procedure->OutlineText(), nullptr);
  EXPECT_EQ(procedure->OutlineText()->Text(), "Split = 1");
}

TEST_F(ProcedureTreeTest, NewSettingsLeaveTheSettingsSharedEarlierUnchanged) {
  auto proc = Begin();
  EXPECT_EQ(proc->getSettings().getMaxCells(), 0u);
  BackendSettings settings;
  settings.setSettings("procedure=Descriptives\nmaxcells=500\nfasttables=1");
  proc->setSettings(settings);
  std::shared_ptr<const BackendSettings> shared = proc->SharedSettings();
  EXPECT_EQ(&*shared, &proc->getSettings());
  EXPECT_EQ(shared->getMaxCells(), 500u);
  settings.setSettings("maxcells=7");
  proc->setSettings(settings);
  EXPECT_EQ(proc->getSettings().getMaxCells(), 7u);
  EXPECT_EQ(shared->getMaxCells(), 500u);  // a table holding the old settings keeps them
  EXPECT_TRUE(shared->getFastTables());
}

// ---- headings -------------------------------------------------------------------------------

TEST_F(ProcedureTreeTest, NodeReentersAnExistingHeadingAndKeepsTheTextBlock) {
  auto proc = Begin();
  proc->Node(Text("Group A"));
  proc->BeginTextBlock(Text("Notes text"));
  proc->EndNode();
  proc->Node(Text("Group A"));
  proc->PrintLine("line", 4);
  EXPECT_EQ(Outline(proc->Tree()),
            (std::vector<std::string>{"0:-", "1:Procedure:Descriptives", "2:Heading:Group A",
                                      "3:Text:Notes text"}));
  EXPECT_EQ(PartsOf<OmTextBlock>(proc->Tree()).at(0)->Lines(), std::vector<std::string>{"line"});
}

TEST_F(ProcedureTreeTest, NodeWithANewTextAddsOneHeadingAndClearsTheTextBlock) {
  auto proc = Begin();
  proc->BeginTextBlock(Text("Block"));
  proc->Node(Text("Group B"));
  proc->PrintLine("x", 1);
  EXPECT_EQ(Outline(proc->Tree()),
            (std::vector<std::string>{"0:-", "1:Procedure:Descriptives", "2:Text:Block",
                                      "2:Heading:Group B", "3:Text:Text Output"}));
}

TEST_F(ProcedureTreeTest, HeadingsWithEqualTextOfDifferentCellTypesAreDistinct) {
  auto proc = Begin();
  proc->Node(Text("Age"));
  proc->EndNode();
  proc->Node(OmStringCellUTF8("Age"));
  proc->EndNode();
  proc->Node(Text("Age"));
  EXPECT_EQ(PartsOf<OmHeading>(proc->Tree()).size(), 3u);  // the procedure and two headings
}

TEST_F(ProcedureTreeTest, HeadingIsFoundOnlyAmongTheCurrentNodesChildren) {
  auto proc = Begin();
  proc->Node(Text("Outer"));
  proc->Node(Text("Inner"));
  proc->EndNode();
  proc->EndNode();
  proc->Node(Text("Inner"));
  EXPECT_EQ(Outline(proc->Tree()),
            (std::vector<std::string>{"0:-", "1:Procedure:Descriptives", "2:Heading:Outer",
                                      "3:Heading:Inner", "2:Heading:Inner"}));
}

TEST_F(ProcedureTreeTest, EndNodeAboveTheRootFails) {
  auto proc = Begin();
  proc->EndNode();  // from the procedure node to the root
  EXPECT_THROW(proc->EndNode(), OMSException);
}

// ---- tables ---------------------------------------------------------------------------------

TEST_F(ProcedureTreeTest, FirstTableOfProcedureThreeHasId3145729) {
  auto proc = Begin("Descriptives", 3);
  proc->CreateTable(Text("T1"), Text("Sub"), Text("T1"), false, false);
  proc->CreateTable(Text("T2"), Text("Sub"), Text("T2"), false, false);
  auto tables = PartsOf<OmPivotTable>(proc->Tree());
  EXPECT_EQ(tables.at(0)->TableId(), 3145729);  // 3 * 2^20 + 1
  EXPECT_EQ(tables.at(1)->TableId(), 3145730);
}

TEST_F(ProcedureTreeTest, CreateTableWithAnExistingLabelReturnsThatTablesBuilder) {
  auto proc = Begin();
  OmPivotFactory* first = proc->CreateTable(Text("Stats"), Text("Sub"), Text("Stats"), false, false);
  OmPivotFactory* again = proc->CreateTable(Text("Stats"), Text("Other"), Text("x"), false, false);
  EXPECT_EQ(first, again);
  EXPECT_EQ(&first->Table(), proc->FindTable(Text("Stats")));
  proc->CreateTable(Text("Next"), Text("Sub"), Text("Next"), false, false);
  auto tables = PartsOf<OmPivotTable>(proc->Tree());
  ASSERT_EQ(tables.size(), 2u);
  EXPECT_EQ(tables.at(1)->TableId() & 0xFFFFF, 2);  // the lookup did not count a table
}

TEST_F(ProcedureTreeTest, TableWithTheSameLabelOneLevelDeeperIsNotFound) {
  auto proc = Begin();
  proc->Node(Text("Group"));
  OmPivotFactory* inner = proc->CreateTable(Text("Stats"), Text("Sub"), Text("Stats"), false, false);
  proc->EndNode();
  EXPECT_EQ(proc->FindTable(Text("Stats")), nullptr);
  OmPivotFactory* outer = proc->CreateTable(Text("Stats"), Text("Sub"), Text("Stats"), false, false);
  EXPECT_NE(inner, outer);
  EXPECT_EQ(PartsOf<OmPivotTable>(proc->Tree()).size(), 2u);
}

TEST_F(ProcedureTreeTest, NewTableCarriesItsTitleAndIsOwnedByTheBackend) {
  auto proc = Begin();
  OmPivotFactory* builder =
      proc->CreateTable(Text("Label"), Text("Descriptive Statistics"), Text("Title"), false, true);
  OmPivotTable& table = builder->Table();
  ASSERT_NE(table.TableTitle(), nullptr);
  EXPECT_EQ(table.TableTitle()->Text(), "Title");
  EXPECT_TRUE(table.BackendOwns());
  EXPECT_FALSE(table.HasSplits());
  EXPECT_EQ(table.Builder(), builder);
}

TEST_F(ProcedureTreeTest, TableIsSelectedWhenCreatedUnlessTheProcedureIsBootstrapped) {
  _requests.push_back(Request(AllTypesBut(0), "Kept"));
  auto plain = Begin();
  plain->CreateTable(Text("Dropped"), Text("Other"), Text("Dropped"), false, false);
  EXPECT_EQ(plain->FindTable(Text("Dropped"))->_keep, 0);

  auto bootstrapped = Begin("Descriptives", 2);
  bootstrapped->SetBootstrapped(true);
  bootstrapped->CreateTable(Text("Dropped"), Text("Other"), Text("Dropped"), false, false);
  EXPECT_EQ(bootstrapped->FindTable(Text("Dropped"))->_keep, 1);
}

struct LanguageCase {
  const char* code;
  int lang;
};

class TableLanguageTest : public ProcedureTest,
                          public ::testing::WithParamInterface<LanguageCase> {};

TEST_P(TableLanguageTest, OutputLanguageCodeGivesTheTablesLanguageNumber) {
  auto proc = Begin("Descriptives", 1, GetParam().code);
  OmPivotFactory* builder = proc->CreateTable(Text("T"), Text("S"), Text("T"), false, false);
  EXPECT_EQ(builder->Table().Lang(), GetParam().lang) << "code \"" << GetParam().code << "\"";
}

INSTANTIATE_TEST_SUITE_P(
    Codes, TableLanguageTest,
    ::testing::Values(LanguageCase{"de", 1}, LanguageCase{"zh-tw", 8}, LanguageCase{"zh-cn", 9},
                      LanguageCase{"pt_BR", 10}, LanguageCase{"fr", 11},
                      // Exact comparison: English, nothing, a region-less or upper-case code.
                      LanguageCase{"en", 0}, LanguageCase{"", 0}, LanguageCase{"pt", 0},
                      LanguageCase{"ZH-TW", 0}, LanguageCase{"de ", 0}));

// ---- text blocks ----------------------------------------------------------------------------

TEST_F(ProcedureTreeTest, PrintLineWithoutATextBlockMakesTextOutputUnderTheCurrentNode) {
  auto proc = Begin();
  proc->Node(Text("Group"));
  proc->PrintLine("first", 5);
  proc->PrintLine("second line", 6);
  auto blocks = PartsOf<OmTextBlock>(proc->Tree());
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(blocks[0]->Lines(), (std::vector<std::string>{"first", "second"}));
  auto* label = dynamic_cast<OmStringCell*>(blocks[0]->Label());
  ASSERT_NE(label, nullptr);
  EXPECT_EQ(label->KeyText(), "Text Output");
  EXPECT_TRUE(label->Translatable());
  EXPECT_EQ(blocks[0]->CodePage(), "UTF-8");
  EXPECT_EQ(Outline(proc->Tree()).back(), "3:Text:Text Output");
}

TEST_F(ProcedureTreeTest, LinesForAnExcludedTextBlockAreDropped) {
  _requests.push_back(Request(AllTypesBut(OMSObjectSelector::kTexts)));
  auto proc = Begin();
  proc->BeginTextBlock(Text("Block"));
  proc->PrintLine("dropped", 7);
  auto blocks = PartsOf<OmTextBlock>(proc->Tree());
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(blocks[0]->_keep, 0);
  EXPECT_TRUE(blocks[0]->Lines().empty());
}

TEST_F(ProcedureTreeTest, CreateTableEndsTheTextBlock) {
  auto proc = Begin();
  proc->BeginTextBlock(Text("Before"));
  proc->CreateTable(Text("T"), Text("S"), Text("T"), false, false);
  proc->PrintLine("after", 5);
  auto blocks = PartsOf<OmTextBlock>(proc->Tree());
  ASSERT_EQ(blocks.size(), 2u);
  EXPECT_TRUE(blocks[0]->Lines().empty());
  EXPECT_EQ(blocks[1]->LabelText(), "Text Output");
}

TEST_F(ProcedureTreeTest, EmptyLineIsStoredAndAMissingTextWithALengthIsRefused) {
  auto proc = Begin();
  proc->PrintLine(nullptr, 0);
  EXPECT_EQ(PartsOf<OmTextBlock>(proc->Tree()).at(0)->Lines(), std::vector<std::string>{""});
  EXPECT_THROW(proc->PrintLine(nullptr, 3), OMSException);
}

// ---- heading footnotes ----------------------------------------------------------------------

TEST_F(ProcedureTreeTest, FootnoteOnTheProcedureReachesExistingAndLaterTables) {
  auto proc = Begin();
  OmPivotFactory* before = proc->CreateTable(Text("Before"), Text("S"), Text("B"), false, false);
  proc->AnnotateHeading(OmFootnote(Text("Weighted")));
  proc->Node(Text("Group"));
  OmPivotFactory* after = proc->CreateTable(Text("After"), Text("S"), Text("A"), false, false);
  for (OmPivotFactory* builder : {before, after}) {
    OmPivotTable& table = builder->Table();
    ASSERT_EQ(table.Footnotes().size(), 1u) << table.LabelText();
    EXPECT_EQ(table.Footnotes()[0].Text().Text(), "Weighted");
    EXPECT_EQ(table.Footnotes()[0].RefCount(), 1);
    EXPECT_EQ(table.Label()->Footnotes(), std::vector<std::int16_t>{0});
  }
  EXPECT_EQ(PartsOf<OmProcedure>(proc->Tree()).at(0)->Footnotes().size(), 1u);
}

TEST_F(ProcedureTreeTest, HeadingFootnotesReachANewTableRootMostFirst) {
  auto proc = Begin();
  proc->Node(Text("Group"));
  proc->AnnotateHeading(OmFootnote(Text("Inner note")));
  proc->EndNode();
  proc->AnnotateHeading(OmFootnote(Text("Outer note")));
  proc->Node(Text("Group"));
  OmPivotTable& table = proc->CreateTable(Text("T"), Text("S"), Text("T"), false, false)->Table();
  ASSERT_EQ(table.Footnotes().size(), 2u);
  EXPECT_EQ(table.Footnotes()[0].Text().Text(), "Outer note");
  EXPECT_EQ(table.Footnotes()[1].Text().Text(), "Inner note");
  EXPECT_EQ(table.Label()->Footnotes(), (std::vector<std::int16_t>{0, 1}));
}

TEST_F(ProcedureTreeTest, HeadingFootnoteDoesNotReachTablesOutsideTheHeading) {
  auto proc = Begin();
  proc->Node(Text("One"));
  OmPivotFactory* inside = proc->CreateTable(Text("In"), Text("S"), Text("In"), false, false);
  proc->EndNode();
  proc->Node(Text("Two"));
  OmPivotFactory* outside = proc->CreateTable(Text("Out"), Text("S"), Text("Out"), false, false);
  proc->EndNode();
  proc->Node(Text("One"));
  proc->AnnotateHeading(OmFootnote(Text("Only one")));
  EXPECT_EQ(inside->Table().Footnotes().size(), 1u);
  EXPECT_TRUE(outside->Table().Footnotes().empty());
  EXPECT_TRUE(outside->Table().Label()->Footnotes().empty());
}

TEST_F(ProcedureTreeTest, EqualHeadingFootnoteIsSharedAndCountedTwice) {
  auto proc = Begin();
  proc->AnnotateHeading(OmFootnote(Text("Same")));
  proc->Node(Text("Group"));
  proc->AnnotateHeading(OmFootnote(Text("Same")));
  OmPivotTable& table = proc->CreateTable(Text("T"), Text("S"), Text("T"), false, false)->Table();
  ASSERT_EQ(table.Footnotes().size(), 1u);
  EXPECT_EQ(table.Footnotes()[0].RefCount(), 2);
  EXPECT_EQ(table.Label()->Footnotes(), std::vector<std::int16_t>{0});
}

TEST_F(ProcedureTreeTest, AnnotateHeadingAtTheRootThrowsBadCast) {
  auto proc = Begin();
  proc->EndNode();
  EXPECT_THROW(proc->AnnotateHeading(OmFootnote(Text("x"))), std::bad_cast);
}

// ---- split tables ---------------------------------------------------------------------------

// The category labels of a table's dimension labelled `variable`.
std::vector<std::string> Categories(const OmPivotTable& table, const std::string& variable) {
  std::vector<std::string> labels;
  const int d = table.FindDimension(Text(variable));
  if (d < 0) return labels;
  for (const auto* leaf : table.Dimension(d).Leaves()) labels.push_back(leaf->Label()->Text());
  return labels;
}

int SortMark(const OmPivotTable& table, const std::string& variable) {
  const int d = table.FindDimension(Text(variable));
  return d < 0 ? -2 : table.Dimension(d).Root().SortMark();
}

TEST_F(ProcedureTreeTest, SplitTableFollowsTheSplitCategoriesAndPlainTablesDoNot) {
  auto proc = Begin();
  proc->SetCategory(Text("Gender"), Text("Female"));
  OmPivotFactory* split = proc->CreateTable(Text("Split"), Text("S"), Text("Split"), true, false);
  OmPivotFactory* plain = proc->CreateTable(Text("Plain"), Text("S"), Text("Plain"), false, false);
  // The split table was made from the splits seen so far.
  EXPECT_TRUE(split->Table().HasSplits());
  EXPECT_EQ(Categories(split->Table(), "Gender"), std::vector<std::string>{"Female"});
  proc->SetCategory(Text("Gender"), Text("Male"));
  EXPECT_EQ(Categories(split->Table(), "Gender"), (std::vector<std::string>{"Female", "Male"}));
  EXPECT_EQ(plain->Table().NDimensions(), 0);
  // The first split variable is not sorted.
  EXPECT_EQ(SortMark(split->Table(), "Gender"), -1);
}

TEST_F(ProcedureTreeTest, SplitTableStoresCellsUnderTheCurrentSplitCategory) {
  auto proc = Begin();
  proc->SetCategory(Text("Region"), Text("North"));
  OmPivotFactory* split = proc->CreateTable(Text("Split"), Text("S"), Text("Split"), true, false);
  const int stats = split->Dimension(Text("Statistics"));
  split->SetCategory(stats, Text("Mean"));
  split->Cell(OmNumber(1.0));
  proc->SetCategory(Text("Region"), Text("South"));
  split->SetCategory(stats, Text("Mean"));
  split->Cell(OmNumber(2.0));
  OmPivotTable& table = split->Table();
  const int region = table.FindDimension(Text("Region"));
  ASSERT_GE(region, 0);
  std::vector<int> coords(std::size_t(table.NDimensions()), 0);
  coords[std::size_t(stats)] = 0;
  coords[std::size_t(region)] = 0;
  ASSERT_NE(table.Cell(coords), nullptr);
  EXPECT_EQ(table.Cell(coords)->Text(), OmNumber(1.0).Text());
  coords[std::size_t(region)] = 1;
  ASSERT_NE(table.Cell(coords), nullptr);
  EXPECT_EQ(table.Cell(coords)->Text(), OmNumber(2.0).Text());
}

TEST_F(ProcedureTreeTest, SecondSplitVariableIsMarkedForAscendingSortOnEverySplitTable) {
  auto proc = Begin();
  proc->SetCategory(Text("Gender"), Text("Female"));
  OmPivotFactory* early = proc->CreateTable(Text("Early"), Text("S"), Text("E"), true, false);
  proc->Node(Text("Group"));
  OmPivotFactory* nested = proc->CreateTable(Text("Nested"), Text("S"), Text("N"), true, false);
  proc->SetCategory(Text("Region"), Text("North"));
  for (OmPivotFactory* builder : {early, nested}) {
    EXPECT_EQ(Categories(builder->Table(), "Region"), std::vector<std::string>{"North"});
    EXPECT_EQ(SortMark(builder->Table(), "Region"), 0) << builder->Table().LabelText();
    EXPECT_EQ(SortMark(builder->Table(), "Gender"), -1);
  }
}

TEST_F(ProcedureTreeTest, SplitSetterOnATableWithoutBuilderFails) {
  OmPivotTable table(Text("T"), Text("S"), true);
  OmProcedureFactory::TableSplitSetter setter(Text("Gender"), Text("Female"), false);
  try {
    table.Accept(setter);
    FAIL() << "no exception";
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message(), "TableSplitSetter::Visit -- hint doesn't exist");
  }
}

// ---- after the end --------------------------------------------------------------------------

TEST_F(ProcedureTreeTest, BuildingAfterTheEndOfTheProcedureFails) {
  auto proc = Begin();
  TableWithCells(*proc, "T", "S", {"N"});
  proc->EndProcedure(0, nullptr, true, true, true, true);
  EXPECT_THROW(proc->SetCategory(Text("Gender"), Text("Female")), OMSException);
  EXPECT_THROW(proc->CreateTable(Text("U"), Text("S"), Text("U"), false, false), OMSException);
  EXPECT_THROW(proc->PrintLine("x", 1), OMSException);
  EXPECT_THROW(proc->EndProcedure(0, nullptr, true, true, true, true), OMSException);
}

}  // namespace
