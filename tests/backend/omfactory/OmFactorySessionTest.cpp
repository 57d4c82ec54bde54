// The session: procedures from start to append, observers, display modes, recovery with "Output
// Missing", log blocks and page titles, output settings and the language table, ignored codes.
#include "SessionFixture.h"
#include "platform/errors/OMSException.h"
#include "platform/messages/MessageParts.h"
#include "platform/outputmodel/OmPageTitle.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/settings/iocvset.h"
#include "platform/strings/CodePage.h"
#include "platform/strings/NuvaroMB.h"
#include "platform/stringtables/ExtNameStr.h"
#include "platform/stringtables/PathFactory.h"

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

TEST_P(Procedures, FinishedProcedureIsOfferedThenAppendedUnderTheRoot) {
  BeginProcedure(3);
  WriteTable(writer, 100);
  writer.EndProcedure();
  Feed();
  EXPECT_EQ(observer.events, (std::vector<std::string>{"output", "wants", "appended"}));
  EXPECT_EQ(observer.offeredSizes, (std::vector<std::size_t>{3}));
  EXPECT_EQ(observer.appendedTree, tree.get());
  EXPECT_EQ(Outline(*tree), (std::vector<std::string>{"0:-", "1:Procedure:Descriptives",
                                                      "2:Table:Statistics"}));
  EXPECT_EQ(PartsOf<OmPivotTable>(*tree)[0]->TableId(), 3 * (1 << 20) + 1);
  EXPECT_EQ(factory->Procedure(), nullptr);
  EXPECT_EQ(factory->CellSlotCount(), 0u);
}

TEST_P(Procedures, ProceduresFollowEachOtherUnderTheRoot) {
  for (std::int64_t id = 1; id <= 2; ++id) {
    BeginProcedure(id, Settings(id == 1 ? "First" : "Second"));
    WriteTable(writer, 10);
    EndProcedure();
  }
  EXPECT_EQ(Outline(*tree),
            (std::vector<std::string>{"0:-", "1:Procedure:First", "2:Table:Statistics",
                                      "1:Procedure:Second", "2:Table:Statistics"}));
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

TEST_P(Procedures, EmptyProcedureIsNotOffered) {
  BeginProcedure();
  EndProcedure();
  EXPECT_TRUE(observer.events.empty());
  EXPECT_EQ(tree->Size(), 1u);
}

TEST_P(Procedures, OutputThatNoObserverWantsOrWithoutObserversIsDiscarded) {
  RecordingObserver declines(false);
  for (bool withObserver : {false, true}) {
    SCOPED_TRACE(withObserver ? "declining observer" : "no observer");
    Reopen();
    factory = std::make_unique<OmFactory>(tree.get(), std::string(), "UTF-8", requests);
    if (withObserver) factory->Register(&declines);
    Feed();  // the probe
    BeginProcedure();
    WriteTable(writer, 10);
    EndProcedure();
    EXPECT_EQ(tree->Size(), 1u);
    EXPECT_EQ(factory->Procedure(), nullptr);
  }
  EXPECT_EQ(declines.events, (std::vector<std::string>{"output", "wants"}));
}

TEST_P(Procedures, OneWillingObserverIsEnoughAndAllAreAsked) {
  RecordingObserver declines(false);
  factory->Register(&declines);
  BeginProcedure();
  WriteTable(writer, 10);
  EndProcedure();
  EXPECT_EQ(declines.events, (std::vector<std::string>{"output", "wants", "appended"}));
  EXPECT_EQ(tree->Size(), 3u);
}

TEST_P(Procedures, EndProcedureInPartsWaitsForTheLastPart) {
  BeginProcedure();
  WriteTable(writer, 10);
  Feed();
  writer.EndProcedure("", 3, 7);
  std::vector<OmStreamRecord> parts = writer.Records();
  writer.Clear();
  ASSERT_EQ(parts.size(), 3u);
  for (std::size_t i = 0; i < parts.size(); ++i) {
    EXPECT_NE(factory->Procedure(), nullptr) << "before part " << i;
    factory->Message(parts[i].code, unsigned(parts[i].payload.size()), parts[i].payload.data());
  }
  EXPECT_EQ(factory->Procedure(), nullptr);
  EXPECT_EQ(tree->Size(), 3u);
}

TEST_P(Procedures, EndProcedureWithoutAProcedureClearsTheCells) {
  writer.String(5, "pending", 1);
  Feed();
  EXPECT_EQ(Pending(5), "pending");
  EndProcedure();
  EXPECT_EQ(factory->PendingCell(5), nullptr);
  EXPECT_TRUE(observer.events.empty());
}

TEST_P(Procedures, FailureInsideAProcedureAppendsItMarkedOutputMissing) {
  BeginProcedure();
  WriteTable(writer, 10);
  writer.EndGroup(1, Str("no group open"));  // the table was ended: TCID 1 is empty
  writer.String(77, "left over", 1);
  Feed();
  ASSERT_NE(factory->LastRecoveredError(), nullptr);
  EXPECT_EQ(factory->Procedure(), nullptr);
  EXPECT_EQ(Outline(*tree),
            (std::vector<std::string>{"0:-", "1:Procedure:Descriptives", "2:Table:Statistics",
                                      "2:Text:Output Missing"}));
  OmTextBlock* missing = PartsOf<OmTextBlock>(*tree).at(0);
  EXPECT_EQ(missing->Lines(), (std::vector<std::string>{"Out of memory collecting output."}));
  EXPECT_TRUE(dynamic_cast<OmStringCell&>(*missing->Label()).Translatable());
  // The rest of the failed message's batch still arrives: the session goes on.
  EXPECT_EQ(Pending(77), "left over");

  BeginProcedure(2, Settings("Next"));
  EXPECT_NE(factory->Procedure(), nullptr);
  WriteTable(writer, 10);
  EndProcedure();
  EXPECT_EQ(PartsOf<OmProcedure>(*tree).size(), 2u);
}

TEST_P(Procedures, SecondBeginProcedureFailsAndEndsTheFirst) {
  BeginProcedure();
  WriteTable(writer, 10);
  BeginProcedure(2, Settings("Other"));
  EXPECT_EQ(factory->LastRecoveredError()->Message(),
            "OmFactory::BeginProcedure() -- _pProc exists");
  EXPECT_EQ(factory->Procedure(), nullptr);
  EXPECT_EQ(PartsOf<OmProcedure>(*tree).size(), 1u);
  EXPECT_EQ(PartsOf<OmTextBlock>(*tree).size(), 1u);
}

TEST_P(Procedures, FailureOutsideAProcedureIsDroppedQuietly) {
  writer.RequiredTable(0, 0);
  writer.String(2, "still here", 1);
  Feed();
  EXPECT_EQ(factory->RecoveredErrorCount(), 1u);
  EXPECT_EQ(Pending(2), "still here");
  EXPECT_EQ(tree->Size(), 1u);
}

TEST_P(Procedures, MalformedSettingsTextStartsNoProcedure) {
  BeginProcedure(1, "maxcells=many\n");
  EXPECT_EQ(factory->Procedure(), nullptr);
  ASSERT_NE(factory->LastRecoveredError(), nullptr);
  BeginProcedure(2);
  EXPECT_NE(factory->Procedure(), nullptr);
}

TEST_P(Procedures, HeadingsTextBlocksAndOutlineTextGoIntoTheProcedure) {
  BeginProcedure();
  writer.BeginNode(Str("Frequencies"));
  writer.PrintLine(3, "first");
  writer.PrintLine(-1, "paged");
  writer.PrintLine(0, "zero");
  writer.PrintLine(1, "one");
  writer.PrintLine(-2, "minus two");
  writer.EndNode();
  writer.BeginTextBlock(Str("Notes"));
  writer.PrintLine(0, "note");
  writer.OutlineText("Outline");
  writer.EndProcedure();
  Feed();
  ASSERT_EQ(factory->RecoveredErrorCount(), 0u) << factory->LastRecoveredError()->what();
  EXPECT_EQ(Outline(*tree),
            (std::vector<std::string>{"0:-", "1:Procedure:Descriptives", "2:Heading:Frequencies",
                                      "3:Text:Text Output", "2:Text:Notes"}));
  std::vector<OmTextBlock*> blocks = PartsOf<OmTextBlock>(*tree);
  EXPECT_EQ(blocks[0]->Lines(), (std::vector<std::string>{"", "", "first", "\f", "paged", "zero",
                                                          "one", "minus two"}));
  EXPECT_EQ(blocks[1]->Lines(), (std::vector<std::string>{"note"}));
  OmProcedure* procedure = PartsOf<OmProcedure>(*tree)[0];
  ASSERT_NE(procedure->OutlineText(), nullptr);
  EXPECT_EQ(procedure->OutlineText()->Text(), "Outline");
}

OM_BOTH_ORDERS(Procedures);

// Log and page titles.

using LogAndTitles = BothOrdersTest;

TEST_P(LogAndTitles, LogLinesShareABlockUntilAPageTitle) {
  writer.LogLine(0, "one");
  writer.LogLine(0, "two");
  writer.PageTitle("Title", "Sub");
  writer.LogLine(0, "three");
  writer.PageTitle("Only", "");
  Feed();
  EXPECT_EQ(Outline(*tree), (std::vector<std::string>{"0:-", "1:Text:Log", "1:Page Title:Page Title",
                                                      "1:Text:Log", "1:Page Title:Page Title"}));
  std::vector<OmTextBlock*> blocks = PartsOf<OmTextBlock>(*tree);
  EXPECT_EQ(blocks[0]->Lines(), (std::vector<std::string>{"one", "two"}));
  EXPECT_TRUE(blocks[0]->IsLog());
  EXPECT_EQ(blocks[1]->Lines(), (std::vector<std::string>{"three"}));
  EXPECT_EQ(PartsOf<OmPageTitle>(*tree)[0]->Lines(), (std::vector<std::string>{"Title", "Sub"}));
  EXPECT_EQ(PartsOf<OmPageTitle>(*tree)[1]->Lines(), (std::vector<std::string>{"Only"}));  // no subtitle
  EXPECT_EQ(observer.events, (std::vector<std::string>{"log:one", "log:two", "flush", "title:Title|Sub",
                                                       "log:three", "flush", "title:Only|"}));
}

TEST_P(LogAndTitles, RequestLinesAreNotLogged) {
  writer.LogLine(0, std::string("\x01") + "request and more");
  writer.LogLine(0, std::string("\x01") + "REQUEST");
  writer.LogLine(0, std::string("\x01") + "REQ");
  Feed();
  std::vector<OmTextBlock*> blocks = PartsOf<OmTextBlock>(*tree);
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(blocks[0]->Lines(), (std::vector<std::string>{std::string("\x01") + "REQ"}));
}

TEST_P(LogAndTitles, LineSkipWritesEmptyOrFormFeedLinesFirst) {
  writer.LogLine(3, "after two");
  writer.LogLine(-1, "after feed");
  writer.LogLine(2, "after one");
  Feed();
  EXPECT_EQ(PartsOf<OmTextBlock>(*tree)[0]->Lines(),
            (std::vector<std::string>{"", "", "after two", "\f", "after feed", "", "after one"}));
}

TEST_P(LogAndTitles, FlushLogTellsObserversOnlyWhenLinesArePending) {
  writer.FlushLog();
  writer.LogLine(0, "x");
  writer.FlushLog();
  writer.FlushLog();
  writer.Refresh();
  Feed();
  EXPECT_EQ(observer.events, (std::vector<std::string>{"log:x", "flush", "refresh"}));
}

TEST_P(LogAndTitles, LogDuringAProcedureGoesToTheOutputTree) {
  BeginProcedure();
  writer.LogLine(0, "inside");
  Feed();
  EXPECT_EQ(Outline(*tree), (std::vector<std::string>{"0:-", "1:Text:Log"}));
}

TEST_P(LogAndTitles, EndOfProcedureClosesTheLogBlock) {
  writer.LogLine(0, "before");
  Feed();
  BeginProcedure();
  WriteTable(writer, 10);
  EndProcedure();
  writer.LogLine(0, "after");
  Feed();
  EXPECT_EQ(PartsOf<OmTextBlock>(*tree).size(), 2u);
}

TEST_P(LogAndTitles, OmsRequestsWithoutLogsDropLogLinesAndTitles) {
  OMSObjectSelector tablesOnly;
  tablesOnly.SelectType(16);
  requests.push_back(tablesOnly);
  Reopen();
  writer.LogLine(0, "dropped");
  writer.PageTitle("dropped", "");
  Feed();
  EXPECT_EQ(tree->Size(), 1u);
  EXPECT_TRUE(observer.events.empty());
}

OM_BOTH_ORDERS(LogAndTitles);

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

TEST_F(OutputSettings, OlangSelectsTheLanguageFolder) {
  const std::pair<const char*, const char*> cases[] = {
      {"english", "lang/en"}, {"Eng", "lang/en"}, {"ENGLISHX", "lang/en"},
      {"de", "lang/de"},      {"DE", "lang/de"},  {"zh", "lang/zh_TW"},
      {"pt_br", "lang/pt_BR"}, {"SCHINESE", "lang/zh_CN"}, {"zh-cn", "lang/zh_CN"},
  };
  for (const auto& [value, folder] : cases) {
    factory->SetStringTablePath(std::string("/nowhere"));
    writer.OutputSetting("OLANG", value);
    Feed();
    const std::string path = factory->StringTablePath().GetGeneric();
    const std::string expected(folder);
    ASSERT_GE(path.size(), expected.size()) << value;
    EXPECT_EQ(path.substr(path.size() - expected.size()), expected) << value;
  }
}

TEST_F(OutputSettings, OlangWithoutAMatchChangesNothing) {
  factory->SetStringTablePath(std::string("/somewhere"));
  writer.OutputSetting("OLANG", "xx");
  writer.OutputSetting("OLANG", "DEUTSCH");
  writer.OutputSetting("OLANG", "");
  Feed();
  EXPECT_EQ(factory->StringTablePath().GetGeneric(), "/somewhere");
}

// With the shipped tables, OLANG switches what the library and the procedure mark translatable,
// the recovery block included; names copied from the procedure stay as they are.
TEST(OutputLanguage, OlangSwitchesTheShippedTablesForLaterProcedures) {
  PathFactory::SetRoot("");
  OmOutputTree tree;
  const std::vector<OMSObjectSelector> none;
  OmFactory session(&tree, std::string(OMF_STRINGTABLES_DIR) + "/lang/en", "UTF-8", none);
  RecordingObserver wantsAll;
  session.Register(&wantsAll);
  OmStreamWriter writer;
  auto procedure = [&](std::int64_t id, bool fail) {
    writer.BeginProcedure(id, Settings("Descriptives"));
    writer.String(1, "Statistics", 0);
    writer.BeginNode(1);
    writer.String(2, "Statistic", 0);
    writer.String(3, "Descriptive Statistics", 1);
    writer.BeginTable(1, 2, 3);
    writer.String(4, "Mean", 0);
    writer.CellDimension(1, 4);
    writer.Number(5, 4, 0x050802);
    writer.String(6, "Mean", 0);
    writer.Cell(1, 5, 6);
    writer.EndTable(1);
    if (fail) writer.EndTable(1);  // no table open under TCID 1 any more
    writer.EndNode();
    writer.EndProcedure();
    Deliver(session, writer);
  };

  writer.OutputSetting("OLANG", "GERMAN");
  procedure(1, true);
  writer.OutputSetting("OLANG", "ENGLISH");
  procedure(2, false);
  PathFactory::SetRoot("");

  EXPECT_EQ(Outline(tree),
            (std::vector<std::string>{"0:-", "1:Procedure:Descriptives", "2:Heading:Statistiken",
                                      "3:Table:Statistik", "2:Text:Ausgabe fehlt",
                                      "1:Procedure:Descriptives", "2:Heading:Statistics",
                                      "3:Table:Statistic"}));
  std::vector<OmPivotTable*> tables = PartsOf<OmPivotTable>(tree);
  ASSERT_EQ(tables.size(), 2u);
  EXPECT_EQ(tables[0]->Dimension(0).Label()->Text(), "Mittelwert");
  EXPECT_EQ(tables[1]->Dimension(0).Label()->Text(), "Mean");
  EXPECT_EQ(tables[0]->TemplateName().Text(), "Descriptive Statistics");
  OmTextBlock* missing = PartsOf<OmTextBlock>(tree).at(0);
  EXPECT_EQ(missing->Lines(), (std::vector<std::string>{
                                 "Nicht genügend Arbeitsspeicher beim Sammeln der Ausgabe."}));
}

TEST_F(OutputSettings, ConversionMessagesReachTheOptionRegistry) {
  IocvReset();
  writer.ConversionName(7, "a-name-longer-than-sixteen");
  writer.ConversionPair(3, 4);
  Feed();
  EXPECT_EQ(IocvConversionNameOf(7), "a-name-longer-th");
  ASSERT_EQ(IocvConversionPairs().size(), 1u);
  EXPECT_EQ(IocvConversionPairs()[0].first, 3);
  EXPECT_EQ(IocvConversionPairs()[0].second, 4);
  IocvReset();
}

// Codes without a handler.

using IgnoredCodes = SessionTest;

TEST_F(IgnoredCodes, CodesOutsideTheTableOrInItsGapsChangeNothing) {
  writer.String(1, "kept", 1);
  Feed();
  for (std::int16_t code : {255, 260, 264, 277, 294, 301, 303, 306, 1000, -5, 0, 323}) {
    Send(code, {1, 0, 0, 0, 1, 0, 0, 0});
  }
  EXPECT_EQ(Pending(1), "kept");
  EXPECT_EQ(factory->RecoveredErrorCount(), 0u);
  EXPECT_EQ(tree->Size(), 1u);
  EXPECT_FALSE(factory->SwapBytes());
}

TEST(SessionConstruction, NullOutputTreeIsRefused) {
  const std::vector<OMSObjectSelector> none;
  EXPECT_THROW(OmFactory(nullptr, std::string(), "UTF-8", none), OMSException);
}

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
}  // namespace sessiontest
