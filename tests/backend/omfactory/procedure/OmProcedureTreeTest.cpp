// OmProcedureFactory: the procedure node, headings, tables, text blocks, heading footnotes and
// split tables.

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmFootnote.h"
#include "tests/backend/omfactory/procedure/ProcedureFixture.h"

namespace {

using namespace proctest;

using ProcedureTreeTest = ProcedureTest;

// ---- the procedure node ---------------------------------------------------------------------

// ---- headings -------------------------------------------------------------------------------

// ---- text blocks ----------------------------------------------------------------------------

TEST_F(ProcedureTreeTest, EmptyLineIsStoredAndAMissingTextWithALengthIsRefused) {
  auto proc = Begin();
  proc->PrintLine(nullptr, 0);
  EXPECT_EQ(PartsOf<OmTextBlock>(proc->Tree()).at(0)->Lines(), std::vector<std::string>{""});
  EXPECT_THROW(proc->PrintLine(nullptr, 3), OMSException);
}

// ---- heading footnotes ----------------------------------------------------------------------

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

TEST_F(ProcedureTreeTest, AnnotateHeadingAtTheRootThrowsBadCast) {
  auto proc = Begin();
  proc->EndNode();
  EXPECT_THROW(proc->AnnotateHeading(OmFootnote(Text("x"))), std::bad_cast);
}

// ---- split tables ---------------------------------------------------------------------------

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
