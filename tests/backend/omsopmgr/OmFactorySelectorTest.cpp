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

// Holds the requests, the dictionary the label translator works on, and the selector under test.
class SelectorTest : public ::testing::Test {
protected:
  void Use(std::vector<OMSObjectSelector> requests) {
    _requests = std::move(requests);
    _selector.Reset();
  }

  // Shows a table to the selector as the builder does when it creates one.
  OmPivotTable& NewTable(const std::string& label, const std::string& subtype) {
    auto& table = *_parts.emplace_back(std::make_unique<OmPivotTable>(OmStringCell(label), OmStringCell(subtype)));
    _selector.Visit(table);
    return table;
  }

  std::vector<OMSObjectSelector> _requests;
  FacSTDictionary _dictionary{ShippedStringTables() + "/lang/en"};
  OmCellTextTranslator _translator{&_dictionary};
  OmFactorySelector _selector{_requests, &_translator};
  std::vector<std::unique_ptr<OmPivotTable>> _parts;
};

TEST_F(SelectorTest, FirstAndLastInstanceOfFourTables) {
  Use({Request(OMSObjectSelector::kTables, [](OMSSelector& s) {
    s.AddSubtypes("Descriptive Statistics");
    s.AddInstances(1);
    s.AddLastInstance();
  })});

  // The marks of all tables so far after each new one: the first kept by its number, the last
  // one so far kept as the last, the others no longer.
  const std::vector<std::vector<int>> keeps = {{1}, {1, 1}, {1, 0, 1}, {1, 0, 0, 1}};
  std::vector<const OmPivotTable*> tables;
  for (const std::vector<int>& expected : keeps) {
    tables.push_back(&NewTable("Statistics", "Descriptive Statistics"));
    for (std::size_t i = 0; i < expected.size(); ++i) {
      EXPECT_EQ(tables[i]->_keep, expected[i]) << "table " << i + 1 << " of " << tables.size();
    }
  }
  EXPECT_EQ(_selector.Instances()[0].count, 4);
  EXPECT_EQ(_selector.Instances()[0].last, tables.back());
}

TEST_F(SelectorTest, DecidingBeforeTheFirstResetIsAnError) {
  _requests = {Request(OMSObjectSelector::kTables)};  // no Reset for this request list
  OmPivotTable table(OmStringCell("A"), OmStringCell("Frequencies"));
  EXPECT_THROW(_selector.Visit(table), OMSException);
}

TEST_F(SelectorTest, NotesTableGoesToTheNextRequestWhenOneHidesNotes) {
  OMSObjectSelector hidesNotes = Request(OMSObjectSelector::kTables);
  hidesNotes.ShowNotesTables(false);
  Use({hidesNotes, Request(OMSObjectSelector::kTables)});

  EXPECT_EQ(NewTable("Notes", "NOTES")._keep, 1);
  EXPECT_EQ(_selector.Instances()[0].count, 0);
  EXPECT_EQ(_selector.Instances()[1].count, 1);
}

TEST(SelectorWithoutTranslator, LabelsAreMatchedAsTheyAre) {
  std::vector<OMSObjectSelector> requests{
      Request(OMSObjectSelector::kTables, [](OMSSelector& s) { s.AddNames("Bias"); })};
  OmFactorySelector selector(requests, nullptr);
  selector.Reset();
  OmPivotTable table(OmStringCell("Bias", true), OmStringCell("Bootstrap Statistics"));
  selector.Visit(table);
  EXPECT_EQ(table._keep, 1);
}

}  // namespace
