#include "backend/omsopmgr/OmFactorySelector.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "backend/omfactory/translate/OmCellTextTranslator.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"
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

TEST_F(SelectorTest, DecidingBeforeTheFirstResetIsAnError) {
  _requests = {Request(OMSObjectSelector::kTables)};  // no Reset for this request list
  auto table = Table("A", "Frequencies");
  EXPECT_THROW(_selector.Visit(*table), OMSException);
}

// ---- notes

TEST_F(SelectorTest, NotesTableGoesToTheNextRequestWhenOneHidesNotes) {
  OMSObjectSelector hidesNotes = Request(OMSObjectSelector::kTables);
  hidesNotes.ShowNotesTables(false);
  Use({hidesNotes, Request(OMSObjectSelector::kTables)});

  EXPECT_EQ(NewTable("Notes", "NOTES")._keep, 1);
  EXPECT_EQ(_selector.Instances()[0].count, 0);
  EXPECT_EQ(_selector.Instances()[1].count, 1);
}

// ---- commands, subtypes and labels

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
