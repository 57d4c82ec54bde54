#include "backend/omsopmgr/OmFactorySelector.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "backend/omfactory/translate/OmCellTextTranslator.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmAnswerTree.h"
#include "platform/outputmodel/OmChart.h"
#include "platform/outputmodel/OmComposite.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmInteractive.h"
#include "platform/outputmodel/OmModel.h"
#include "platform/outputmodel/OmPageTitle.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmTextBlock.h"
#include "platform/stringtables/FacSTDictionary.h"
#include "tests/backend/omfactory/translate/TranslationTables.h"

namespace {

OmStringCell Text(const std::string& text) { return OmStringCell(text); }

// A request for the given object types, with an IF subcommand built by fill (none when it adds
// nothing).
OMSObjectSelector Request(unsigned types, const std::function<void(OMSSelector&)>& fill = {}) {
  OMSObjectSelector request;
  request.SelectType(types);
  OMSSelector ifOption;
  if (fill) fill(ifOption);
  request.AddIfOption(ifOption);
  return request;
}

std::unique_ptr<OmPivotTable> Table(const std::string& label, const std::string& subtype) {
  return std::make_unique<OmPivotTable>(Text(label), Text(subtype));
}

std::unique_ptr<OmProcedure> Procedure(const std::string& command) {
  return std::make_unique<OmProcedure>(Text(command), "en", "UTF-8", "en_US");
}

// Holds the requests, the dictionary the label translator works on, and the selector under test.
class SelectorTest : public ::testing::Test {
protected:
  void Use(std::vector<OMSObjectSelector> requests) {
    _requests = std::move(requests);
    _selector.Reset();
  }

  // Shows a table to the selector as the builder does when it creates one.
  OmPivotTable& NewTable(const std::string& label, const std::string& subtype) {
    _parts.push_back(Table(label, subtype));
    auto& table = static_cast<OmPivotTable&>(*_parts.back());
    _selector.Visit(table);
    return table;
  }

  std::vector<OMSObjectSelector> _requests;
  FacSTDictionary _dictionary{ShippedStringTables() + "/lang/en"};
  OmCellTextTranslator _translator{&_dictionary};
  OmFactorySelector _selector{_requests, &_translator};
  std::vector<std::unique_ptr<OmOutputPart>> _parts;
};

// Every kind of output object, with the type bit a request selects it by.
struct KindCase {
  const char* name;
  unsigned bit;
  std::function<std::unique_ptr<OmOutputPart>()> make;
};

const std::vector<KindCase>& Kinds() {
  static const std::vector<KindCase> kinds = {
      {"chart", 1, [] { return std::make_unique<OmChart>(Text("C"), "UTF-8", 1); }},
      {"text", 2, [] { return std::make_unique<OmTextBlock>(Text("T"), "UTF-8"); }},
      {"log", 4, [] { return std::make_unique<OmTextBlock>(Text("L"), "UTF-8", true); }},
      {"warnings", 8, [] { return Table("Warnings", "Warnings"); }},
      {"table", 16, [] { return Table("Statistics", "Descriptive Statistics"); }},
      {"heading", 32, [] { return std::make_unique<OmHeading>(Text("H")); }},
      {"procedure", 32, [] { return Procedure("Descriptives"); }},
      {"page title", 64, [] { return std::make_unique<OmPageTitle>("UTF-8"); }},
      {"tree", 128, [] { return std::make_unique<OmAnswerTree>(Text("A"), "UTF-8"); }},
      {"model", 256, [] { return std::make_unique<OmModel>(Text("M")); }},
      {"interactive", 256, [] { return std::make_unique<OmInteractive>(Text("I"), "UTF-8", 1); }},
  };
  return kinds;
}

TEST_F(SelectorTest, WithoutRequestsEveryKindOfObjectIsKept) {
  Use({});
  for (const KindCase& kind : Kinds()) {
    auto part = kind.make();
    part->_keep = 0;
    part->Accept(_selector);
    EXPECT_EQ(part->_keep, 1) << kind.name;
  }
}

TEST_F(SelectorTest, EachKindOfObjectIsMatchedWithItsOwnTypeBit) {
  for (const KindCase& request : Kinds()) {
    Use({Request(request.bit)});
    for (const KindCase& kind : Kinds()) {
      auto part = kind.make();
      part->Accept(_selector);
      EXPECT_EQ(part->_keep, kind.bit == request.bit ? 1 : 0)
          << kind.name << " under a request for " << request.name;
    }
  }
}

// ---- instances

TEST_F(SelectorTest, FirstAndLastInstanceOfFourTables) {
  Use({Request(OMSObjectSelector::kTables, [](OMSSelector& s) {
    s.AddSubtypes("Descriptive Statistics");
    s.AddInstances(1);
    s.AddLastInstance();
  })});

  OmPivotTable& first = NewTable("Statistics", "Descriptive Statistics");
  EXPECT_EQ(first._keep, 1);
  OmPivotTable& second = NewTable("Statistics", "Descriptive Statistics");
  EXPECT_EQ(second._keep, 1);  // the last one so far
  OmPivotTable& third = NewTable("Statistics", "Descriptive Statistics");
  EXPECT_EQ(second._keep, 0);  // no longer the last
  EXPECT_EQ(third._keep, 1);
  OmPivotTable& fourth = NewTable("Statistics", "Descriptive Statistics");
  EXPECT_EQ(third._keep, 0);
  EXPECT_EQ(first._keep, 1);  // selected by its number
  EXPECT_EQ(fourth._keep, 1);
  EXPECT_EQ(_selector.Instances()[0].count, 4);
  EXPECT_EQ(_selector.Instances()[0].last, &fourth);
}

TEST_F(SelectorTest, TablesOfAnotherSubtypeDoNotCountAsInstances) {
  Use({Request(OMSObjectSelector::kTables, [](OMSSelector& s) {
    s.AddSubtypes("Descriptive Statistics");
    s.AddInstances(2);
  })});
  EXPECT_EQ(NewTable("A", "Descriptive Statistics")._keep, 0);
  EXPECT_EQ(NewTable("B", "Correlations")._keep, 0);
  EXPECT_EQ(NewTable("C", "Descriptive Statistics")._keep, 1);
  EXPECT_EQ(NewTable("D", "Descriptive Statistics")._keep, 0);
}

TEST_F(SelectorTest, FirstOfTwoMatchingRequestsKeepsAndCountsTheTable) {
  Use({Request(OMSObjectSelector::kTables), Request(OMSObjectSelector::kTables)});
  OmPivotTable& table = NewTable("Statistics", "Descriptive Statistics");
  EXPECT_EQ(table._keep, 1);
  EXPECT_EQ(_selector.Instances()[0].count, 1);
  EXPECT_EQ(_selector.Instances()[0].last, &table);
  EXPECT_EQ(_selector.Instances()[1].count, 0);
  EXPECT_EQ(_selector.Instances()[1].last, nullptr);
}

TEST_F(SelectorTest, RequestThatMatchesButDoesNotSelectTheNumberStillCountsIt) {
  Use({Request(OMSObjectSelector::kTables, [](OMSSelector& s) { s.AddInstances(2); }),
       Request(OMSObjectSelector::kTables)});
  OmPivotTable& first = NewTable("A", "Frequencies");
  EXPECT_EQ(first._keep, 1);  // by the second request
  EXPECT_EQ(_selector.Instances()[0].count, 1);
  EXPECT_EQ(_selector.Instances()[1].count, 1);

  OmPivotTable& second = NewTable("B", "Frequencies");
  EXPECT_EQ(second._keep, 1);  // by the first request, which ends the decision
  EXPECT_EQ(_selector.Instances()[0].count, 2);
  EXPECT_EQ(_selector.Instances()[1].count, 1);
}

TEST_F(SelectorTest, ResetStartsCountingAgainForTheNextProcedure) {
  Use({Request(OMSObjectSelector::kTables, [](OMSSelector& s) { s.AddInstances(1); })});
  EXPECT_EQ(NewTable("A", "Frequencies")._keep, 1);
  EXPECT_EQ(NewTable("B", "Frequencies")._keep, 0);
  _selector.Reset();
  EXPECT_EQ(_selector.Instances()[0].count, 0);
  EXPECT_EQ(_selector.Instances()[0].last, nullptr);
  EXPECT_EQ(NewTable("C", "Frequencies")._keep, 1);
}

TEST_F(SelectorTest, DecidingBeforeTheFirstResetIsAnError) {
  _requests = {Request(OMSObjectSelector::kTables)};  // no Reset for this request list
  auto table = Table("A", "Frequencies");
  EXPECT_THROW(_selector.Visit(*table), OMSException);
}

// ---- notes

TEST_F(SelectorTest, NotesTableIsPassedOverByARequestThatHidesNotes) {
  OMSObjectSelector hidesNotes = Request(OMSObjectSelector::kTables);
  hidesNotes.ShowNotesTables(false);
  Use({hidesNotes});

  // Subtype and label are compared without regard to case.
  EXPECT_EQ(NewTable("notes", "NOTES")._keep, 0);
  EXPECT_EQ(_selector.Instances()[0].count, 0);
  // Both must read "Notes": a notes subtype under another label is an ordinary table here.
  EXPECT_EQ(NewTable("Processing Summary", "NOTES")._keep, 1);
}

TEST_F(SelectorTest, NotesTableGoesToTheNextRequestWhenOneHidesNotes) {
  OMSObjectSelector hidesNotes = Request(OMSObjectSelector::kTables);
  hidesNotes.ShowNotesTables(false);
  Use({hidesNotes, Request(OMSObjectSelector::kTables)});

  EXPECT_EQ(NewTable("Notes", "NOTES")._keep, 1);
  EXPECT_EQ(_selector.Instances()[0].count, 0);
  EXPECT_EQ(_selector.Instances()[1].count, 1);
}

// ---- commands, subtypes and labels

TEST_F(SelectorTest, HeadingIsMatchedWithAnEmptySubtype) {
  Use({Request(OMSObjectSelector::kHeadings | OMSObjectSelector::kTables, [](OMSSelector& s) {
    s.AddCommands("Descriptives");
    s.AddSubtypes("Descriptive Statistics");
  })});
  auto procedure = Procedure("Descriptives");
  procedure->Accept(_selector);
  EXPECT_EQ(procedure->_keep, 1);

  OmHeading heading(Text("Descriptive Statistics of Income"));
  heading.Accept(_selector);
  EXPECT_EQ(heading._keep, 1);

  EXPECT_EQ(NewTable("Statistics", "Descriptive Statistics")._keep, 1);
  EXPECT_EQ(NewTable("Correlations", "Correlations")._keep, 0);
}

TEST_F(SelectorTest, ObjectsAreMatchedWithTheCommandOfTheLastProcedureVisited) {
  Use({Request(OMSObjectSelector::kTables, [](OMSSelector& s) { s.AddCommands("FREQUENCIES"); })});
  auto descriptives = Procedure("Descriptives");
  descriptives->Accept(_selector);
  EXPECT_EQ(_selector.Command(), "Descriptives");
  EXPECT_EQ(descriptives->_keep, 0);  // a heading, and headings were not asked for
  EXPECT_EQ(NewTable("Statistics", "Statistics")._keep, 0);

  auto frequencies = Procedure("Frequencies");
  frequencies->Accept(_selector);
  EXPECT_EQ(NewTable("Statistics", "Statistics")._keep, 1);

  _selector.SetCommand("Descriptives");
  EXPECT_EQ(NewTable("Statistics", "Statistics")._keep, 0);
}

TEST_F(SelectorTest, LabelsAreMatchedInTheOutputLanguageWithoutChangingThem) {
  _dictionary.SetGlobalStringTable(ShippedStringTables() + "/lang/de");
  Use({Request(OMSObjectSelector::kTables, [](OMSSelector& s) { s.AddNames("Verzerrung"); })});

  OmPivotTable bias(OmStringCell("Bias", true), Text("Bootstrap Statistics"));
  _selector.Visit(bias);
  EXPECT_EQ(bias._keep, 1);
  EXPECT_EQ(bias.LabelText(), "Bias");

  // A composite label is matched by its substituted text.
  OmComposite pattern("Bootstrap for ^1", true);
  pattern.Add(std::make_unique<OmStringCell>("Bias", true));
  Use({Request(OMSObjectSelector::kTables,
               [](OMSSelector& s) { s.AddNames("Bootstrap für Verzerrung"); })});
  OmPivotTable composite(pattern, Text("Bootstrap Statistics"));
  _selector.Visit(composite);
  EXPECT_EQ(composite._keep, 1);
  EXPECT_EQ(composite.LabelText(), "Bootstrap for ^1");

  // A label that is not translatable is matched as it is.
  OmPivotTable plain(Text("Bias"), Text("Bootstrap Statistics"));
  _selector.Visit(plain);
  EXPECT_EQ(plain._keep, 0);
}

TEST(SelectorWithoutTranslator, LabelsAreMatchedAsTheyAre) {
  std::vector<OMSObjectSelector> requests{
      Request(OMSObjectSelector::kTables, [](OMSSelector& s) { s.AddNames("Bias"); })};
  OmFactorySelector selector(requests, nullptr);
  selector.Reset();
  OmPivotTable table(OmStringCell("Bias", true), Text("Bootstrap Statistics"));
  selector.Visit(table);
  EXPECT_EQ(table._keep, 1);
}

}  // namespace
