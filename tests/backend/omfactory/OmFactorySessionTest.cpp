// The session: procedures from start to append, observers, display modes, recovery with "Output
// Missing", log blocks and page titles, output settings and the language table, ignored codes.
#include "SessionFixture.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/settings/iocvset.h"
#include "platform/strings/CodePage.h"
#include "platform/strings/NuvaroMB.h"
#include "platform/stringtables/ExtNameStr.h"

namespace sessiontest {
namespace {

using Procedures = BothOrdersTest;

// A procedure with one table of one cell.
void WriteTable(OmStreamWriter& writer, std::int32_t first) {
  writer.String(first, "Statistics", 1);
  writer.String(first + 1, "Descriptive Statistics", 1);
  writer.BeginTable(1, first, first + 1);
  writer.String(first + 2, "S", 1);
  writer.CellDimension(1, first + 2);
  writer.Number(first + 3, 4, 0x050802);
  writer.String(first + 4, "N", 1);
  writer.Cell(1, first + 3, first + 4);
  writer.EndTable(1);
}

TEST_P(Procedures, ProcedureGetsTheSessionDisplayModesAtItsEnd) {
  factory->OutlineVarDisplay(1);
  factory->TableValueDisplay(3);
  BeginProcedure();
  WriteTable(writer, 10);
  factory->OutlineValueDisplay(0);
  EndProcedure();
  OmProcedure* procedure = PartsOf<OmProcedure>(*tree).at(0);
  EXPECT_EQ(procedure->OutlineVarDisplay(), 1u);
  EXPECT_EQ(procedure->OutlineValueDisplay(), 0u);
  EXPECT_EQ(procedure->TableVarDisplay(), 2u);
  EXPECT_EQ(procedure->TableValueDisplay(), 3u);
}

OM_BOTH_ORDERS(Procedures);

// Output settings.

using OutputSettings = SessionTest;

TEST_F(OutputSettings, DisplayModeKeywordsMapTheirValuesAndUnknownKeywordsAreIgnored) {
  writer.OutputSetting("OVARS", "Names");
  writer.OutputSetting("TVARS", "Both");
  writer.OutputSetting("ONUMBERS", "Values");
  writer.OutputSetting("TNUMBERS", "labels");  // not an exact value: unset
  writer.OutputSetting("ovars", "Both");       // keywords match exactly
  writer.OutputSetting("COLOR", "Names");      // unknown keyword: ignored
  Feed();
  EXPECT_EQ(factory->RecoveredErrorCount(), 0u);
  EXPECT_EQ(factory->OutlineVarDisplayMode(), 1u);
  EXPECT_EQ(factory->TableVarDisplayMode(), 3u);
  EXPECT_EQ(factory->OutlineValueDisplayMode(), 1u);
  EXPECT_EQ(factory->TableValueDisplayMode(), 0u);
}

TEST_F(OutputSettings, TfitIsOnOnlyForLabelsAndMioutputSetsEachFlagByItsWord) {
  writer.OutputSetting("TFIT", "Labels");
  Feed();
  EXPECT_TRUE(factory->LabelsOnly());
  writer.OutputSetting("TFIT", "Both");
  writer.OutputSetting("MIOUTPUT", "[observed pooled]");
  Feed();
  EXPECT_FALSE(factory->LabelsOnly());
  bool pooled, observed, imputed, diagnostics;
  factory->ImputationOutput(pooled, observed, imputed, diagnostics);
  EXPECT_TRUE(pooled);
  EXPECT_TRUE(observed);
  EXPECT_FALSE(imputed);
  EXPECT_FALSE(diagnostics);
}

TEST_F(OutputSettings, OlangWithoutAMatchChangesNothing) {
  factory->SetStringTablePath(std::string("/somewhere"));
  writer.OutputSetting("OLANG", "xx");
  writer.OutputSetting("OLANG", "DEUTSCH");
  writer.OutputSetting("OLANG", "");
  Feed();
  EXPECT_EQ(factory->StringTablePath().GetGeneric(), "/somewhere");
}

// Codes without a handler.

using IgnoredCodes = SessionTest;

// The multibyte string functions follow the session: its code page at construction, then each
// procedure's own; an unknown name is refused and leaves the current one.
TEST(SessionCodePage, TheSessionsCodePageHoldsWhileItWorksAndNowhereElse) {
  // An observer upper-cases a windows-1252 letter while the session hands over a procedure.
  struct Probe : OmFactory::Observer {
    bool WantsOutput() override {
      std::string upper = "\xe9";  // one character in windows-1252, no character in UTF-8
      seen.push_back(NuvaroMBstrupr_A(upper));
      return false;
    }
    std::vector<std::string> seen;
  } probe;
  OmOutputTree tree;
  const std::vector<OMSObjectSelector> none;
  OmFactory session(&tree, std::string(), "windows-1252", none);
  session.Register(&probe);
  OmStreamWriter writer;
  for (const char* codePage : {"windows-1252", "UTF-8", "no-such-code-page"}) {
    writer.BeginProcedure(1, Settings("Descriptives", std::string("codepage=") + codePage + "\n"));
    writer.PrintLine(0, "output");
    writer.EndProcedure();
    Deliver(session, writer);
    // The caller's thread keeps its own code page between the session's calls.
    EXPECT_TRUE(CodePage::Current().IsUtf8());
  }
  EXPECT_EQ(probe.seen, (std::vector<std::string>{"\xc9", "\xe9"}));
  // A procedure in a code page that cannot be used does not start; the session goes on.
  ASSERT_NE(session.LastRecoveredError(), nullptr);
  EXPECT_NE(session.LastRecoveredError()->Message().find("no-such-code-page"), std::string::npos);
  EXPECT_THROW(OmFactory(&tree, std::string(), "no-such-code-page", none), OMSException);
}

TEST(SessionConstruction, PathConstructorsAgree) {
  OmOutputTree tree;
  const std::vector<OMSObjectSelector> none;
  OmFactory byString(&tree, std::string("/tables/lang/de"), "UTF-8", none);
  OmFactory byName(&tree, ExtNameStr("/tables/lang/de"), "UTF-8", none);
  EXPECT_EQ(byString.StringTablePath(), byName.StringTablePath());
  EXPECT_EQ(byString.Tree(), &tree);
}

}  // namespace
TEST(SessionConstruction, NullOutputTreeIsRefused) {
  const std::vector<OMSObjectSelector> none;
  EXPECT_THROW(OmFactory(nullptr, std::string(), "UTF-8", none), OMSException);
}

}  // namespace sessiontest
