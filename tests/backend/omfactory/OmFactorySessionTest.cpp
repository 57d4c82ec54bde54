// The session: procedures from start to append, observers, display modes, recovery with "Output
// Missing", log blocks and page titles, output settings and the language table, ignored codes.
#include "SessionFixture.h"
#include "backend/omfactory/procedure/OmProcedurePoolers.h"
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

// Recovery.

using Recovery = SessionTest;

// An imputation pooler that takes out a table labelled "Gone" and fails on one labelled "Fails",
// as a pooler meeting a table it cannot read does.
class FailingPoolers : public OmProcedurePoolers {
  struct Pooler : OmEndPooler {
    void Pool(OmOutputPart& part) override {
      discard = part.LabelText() == "Gone";
      if (part.LabelText() == "Fails") throw OMSException("FailingPoolers -- cannot pool");
    }
    bool Discard() const override { return discard; }
    bool discard = false;
  };

public:
  std::unique_ptr<OmEndPooler> MakeMIPooler(const OmCellText*, OmOutputTree&, bool, bool, bool,
                                            bool) const override {
    return std::make_unique<Pooler>();
  }
};

// Where "Output Missing" lands, in the output language, and what is kept when the end of the
// procedure fails, before or during recovery.
TEST_F(Recovery, OutputMissingMarksTheCutAndWhatWasCollectedIsKept) {
  struct Case {
    const char* name;
    const char* second;  // the table under the second heading
    bool end;            // the procedure ends (else a message for no open table cuts it)
    bool hostSeesFailure;
    std::vector<std::string> outline;  // below the procedure node
  };
  const Case cases[] = {
      {"cut inside a table", "B", false, false,
       {"2:Heading:Eins", "3:Table:A", "2:Heading:Zwei", "3:Table:B",
        "3:Text:Ausgabe fehlt", "3:Table:Open"}},
      {"failure inside the end", "Fails", true, false,
       {"2:Heading:Zwei", "3:Table:Fails", "3:Table:Open", "2:Text:Ausgabe fehlt"}},
      {"recovery fails too", "Fails", false, true,
       {"2:Heading:Eins", "3:Table:A", "2:Heading:Zwei", "3:Table:Fails",
        "3:Text:Output Missing", "3:Table:Open"}},
  };
  const FailingPoolers poolers;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Reopen();
    factory->SetStringTablePath(std::string(OMF_STRINGTABLES_DIR) + "/lang/de");
    BeginProcedure(1, "procedure=Descriptives\ntranslated=Deskriptive Statistik\n");
    factory->Procedure()->setPoolers(poolers);
    writer.BeginNode(Str("Eins"));
    BeginTable(1, c.end ? "Gone" : "A");
    writer.EndTable(1);
    writer.EndNode();
    writer.BeginNode(Str("Zwei"));
    BeginTable(1, c.second);
    writer.EndTable(1);
    BeginTable(2, "Open");
    writer.CellDimension(2, Str("S"));
    writer.Cell(2, Num(1), Str("N"));
    if (c.end) {
      writer.EndProcedure();
    } else {
      writer.Cell(9, Num(1), Str("N"));
    }
    if (c.hostSeesFailure) {
      EXPECT_THROW(Feed(), OMSException);
    } else {
      Feed();
    }
    EXPECT_EQ(factory->RecoveredErrorCount(), 1u);
    EXPECT_EQ(factory->Procedure(), nullptr);
    std::vector<std::string> outline = Outline(*tree);
    ASSERT_GE(outline.size(), 2u);
    EXPECT_EQ(outline[1], c.hostSeesFailure ? "1:Procedure:Descriptives"
                                            : "1:Procedure:Deskriptive Statistik");
    EXPECT_EQ(std::vector<std::string>(outline.begin() + 2, outline.end()), c.outline);
    BeginProcedure(2, Settings("Next"));
    EXPECT_NE(factory->Procedure(), nullptr);
  }
}

// Output settings.

using OutputSettings = SessionTest;

TEST_F(OutputSettings, KeywordsMapTheirValuesAndUnknownOnesAreIgnored) {
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

  // TFIT is on only for labels; MIOUTPUT sets each flag by its word.
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

  // OLANG without a match changes nothing.
  factory->SetStringTablePath(std::string("/somewhere"));
  writer.OutputSetting("OLANG", "xx");
  writer.OutputSetting("OLANG", "DEUTSCH");
  writer.OutputSetting("OLANG", "");
  Feed();
  EXPECT_EQ(factory->StringTablePath().GetGeneric(), "/somewhere");
}

// The multibyte string functions follow the session: its code page at construction, then each
// procedure's own; an unknown name leaves the current one.
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
  EXPECT_EQ(probe.seen, (std::vector<std::string>{"\xc9", "\xe9", "\xe9"}));
  EXPECT_THROW(OmFactory(&tree, std::string(), "no-such-code-page", none), OMSException);
}

// A procedure whose code page or locale cannot be opened is built in the session's code page and
// the root locale, and the host is told why.
TEST_F(Recovery, UnopenableCodePageOrLocaleFallsBackAndKeepsTheProcedure) {
  struct Case {
    const char* settings;
    const char* codePage;  // of the procedure node
    const char* locale;
    const char* named;  // in the one error reported
  };
  const Case cases[] = {
      {"codepage=no-such-code-page\n", "UTF-8", "en_US", "\"no-such-code-page\""},
      {"codepage=windows-1252\nlocale=de DE\n", "windows-1252", "", "\"de DE\""},
      {"unicode=0\nlocale=de_DE.no-such-set\n", "UTF-8", "", "\"no-such-set\""},
      {"codepage=?\nlocale=de_DE.\n", "UTF-8", "", "\"?\"; locale unavailable"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.settings);
    Reopen();
    BeginProcedure(1, Settings("Descriptives", c.settings));
    writer.PrintLine(0, "kept");
    EndProcedure();
    std::vector<OmProcedure*> procedures = PartsOf<OmProcedure>(*tree);
    ASSERT_EQ(procedures.size(), 1u);
    EXPECT_EQ(procedures[0]->CodePage(), c.codePage);
    EXPECT_EQ(procedures[0]->Locale(), c.locale);
    ASSERT_EQ(PartsOf<OmTextBlock>(*tree).size(), 1u);
    EXPECT_EQ(PartsOf<OmTextBlock>(*tree)[0]->Lines(), std::vector<std::string>{"kept"});
    EXPECT_EQ(factory->RecoveredErrorCount(), 1u);
    ASSERT_NE(factory->LastRecoveredError(), nullptr);
    EXPECT_NE(factory->LastRecoveredError()->Message().find(c.named), std::string::npos)
        << factory->LastRecoveredError()->Message();
  }
}

// Swedish sorts "ä" after "z", German beside "a": the collator made for one procedure must not
// serve a later one of another locale.
TEST_F(SessionTest, EachProcedureSortsByItsOwnLocale) {
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      {"de_DE", {"a", "ä", "z"}}, {"sv_SE", {"a", "z", "ä"}}, {"de_DE", {"a", "ä", "z"}}};
  for (const auto& [locale, sorted] : cases) {
    SCOPED_TRACE(locale);
    BeginProcedure(1, Settings("Frequencies", "unicode=1\nlocale=" + locale + "\n"));
    BeginTable(1, "Fruit");
    writer.PlaceDimension(1, Str("Fruit"), 1, 0);
    writer.PlaceDimension(1, Str("Statistics"), 1, 1);
    writer.CellDimension(1, Str("Statistics"));
    for (const char* fruit : {"z", "ä", "a"}) {
      writer.Category(1, Str(fruit), Str("Fruit"));
      if (fruit[0] == 'z') writer.SortDimension(1, 0);
      writer.Cell(1, Num(1), Str("N"));
    }
    writer.EndTable(1);
    EndProcedure();
    const OmPivotTable& table = *PartsOf<OmPivotTable>(*tree).back();
    EXPECT_EQ((std::vector{LabelAt(table, 0, {0}), LabelAt(table, 0, {1}), LabelAt(table, 0, {2})}), sorted);
  }
}

}  // namespace
}  // namespace sessiontest
