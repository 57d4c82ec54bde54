// OmProcedureFactory::EndProcedure: the nothing-to-show rule, pruning, the visiting order of the
// poolers, selector, translators and sorter, and the translated procedure name.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "backend/omfactory/procedure/OmProcedurePoolers.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmDimension.h"
#include "tests/backend/omfactory/procedure/ProcedureFixture.h"

namespace {

using namespace proctest;

using ProcedureEndTest = ProcedureTest;

void End(OmProcedureFactory& proc) { proc.EndProcedure(0, nullptr, true, true, true, true); }

void End(OmProcedureFactory& proc, const std::string& specs) {
  proc.EndProcedure(std::uint32_t(specs.size()), specs.data(), true, true, true, true);
}

// Serialized bootstrap specifications: 1000 samples, 95% intervals, simple sampling, no
// jackknife.
std::string BootstrapSpecs() {
  std::string bytes;
  auto u32 = [&bytes](std::uint32_t v) {
    for (int i = 0; i < 4; ++i) bytes.push_back(char((v >> (8 * i)) & 0xFF));
  };
  auto f64 = [&bytes](double d) {
    std::uint64_t v;
    std::memcpy(&v, &d, sizeof v);
    for (int i = 0; i < 8; ++i) bytes.push_back(char((v >> (8 * i)) & 0xFF));
  };
  u32(1000);
  f64(95.0);
  u32(0);
  u32(0);
  u32(0);
  return bytes;
}

void Notes(OmProcedureFactory& proc) {
  TableWithCells(proc, "Notes", "Notes", {"Output Created"});
}

void ActiveDataset(OmProcedureFactory& proc) {
  proc.BeginTextBlock(Text("Active Dataset"));
  proc.PrintLine("[DataSet1]", 10);
}

void EmptyWarnings(OmProcedureFactory& proc) {
  proc.CreateTable(Text("Warnings"), Text("Warnings"), Text("Warnings"), false, false);
}

// ---- nothing to show ------------------------------------------------------------------------

// How a procedure is filled before its end, and the last line of its outline after it ("0:-" when
// nothing is left to show).
struct EndCase {
  const char* name;
  void (*fill)(OmProcedureFactory&);
  const char* last;
};

TEST_F(ProcedureEndTest, OnlyNotesActiveDatasetAndEmptyWarningsLeaveNothingToShow) {
  const EndCase cases[] = {
      {"no children", [](OmProcedureFactory&) {}, "0:-"},
      {"notes, dataset, empty warnings",
       [](OmProcedureFactory& p) { Notes(p); ActiveDataset(p); EmptyWarnings(p); }, "0:-"},
      {"empty warnings after a real object",
       [](OmProcedureFactory& p) { TableWithCells(p, "Stats", "S", {"N"}); EmptyWarnings(p); },
       "2:Table:Warnings"},
      {"warnings with a cell",
       [](OmProcedureFactory& p) { Notes(p); TableWithCells(p, "Warnings", "Warnings", {"T"}); },
       "2:Table:Warnings"},
      {"text block with another title",
       [](OmProcedureFactory& p) { Notes(p); p.PrintLine("hello", 5); }, "2:Text:Text Output"},
  };
  for (const EndCase& c : cases) {
    SCOPED_TRACE(c.name);
    auto proc = Begin();
    c.fill(*proc);
    End(*proc);
    EXPECT_EQ(Outline(proc->Tree()).back(), c.last);
  }
}

TEST_F(ProcedureEndTest, EmptyWarningsBeforeTheFirstRealObjectIsPruned) {
  auto proc = Begin();
  Notes(*proc);
  EmptyWarnings(*proc);
  TableWithCells(*proc, "Statistics", "Descriptive Statistics", {"N"});
  End(*proc);
  EXPECT_EQ(Outline(proc->Tree()),
            (std::vector<std::string>{"0:-", "1:Procedure:Descriptives", "2:Table:Notes",
                                      "2:Table:Statistics"}));
}

TEST_F(ProcedureEndTest, NothingToShowBuildsNoPooler) {
  struct Counting : OmProcedurePoolers {
    std::unique_ptr<OmEndPooler> MakeMIPooler(const OmCellText*, OmOutputTree&, bool, bool, bool,
                                              bool) const override {
      ++made;
      return nullptr;
    }
    mutable int made = 0;
  } poolers;
  _requests.push_back(Request(AllTypesBut(0), "Kept"));
  auto proc = Begin();
  proc->setPoolers(poolers);
  Notes(*proc);
  End(*proc);
  auto excluded = Begin("Descriptives", 2);
  excluded->setPoolers(poolers);
  TableWithCells(*excluded, "Dropped", "Other", {"N"});
  End(*excluded);  // pruning leaves nothing: the procedure goes before pooling
  EXPECT_EQ(poolers.made, 0);
  EXPECT_EQ(excluded->Tree().Size(), 1u);
}

// ---- pruning --------------------------------------------------------------------------------

TEST_F(ProcedureEndTest, HeadingsLeftEmptyByAnExcludedTableArePruned) {
  _requests.push_back(Request(AllTypesBut(0), "Kept"));
  auto proc = Begin();
  proc->Node(Text("Outer"));
  proc->Node(Text("Inner"));
  TableWithCells(*proc, "Dropped", "Other", {"N"});
  proc->EndNode();
  proc->EndNode();
  proc->Node(Text("Kept heading"));
  TableWithCells(*proc, "Shown", "Kept", {"N"});
  proc->EndNode();
  End(*proc);
  EXPECT_EQ(Outline(proc->Tree()),
            (std::vector<std::string>{"0:-", "1:Procedure:Descriptives", "2:Heading:Kept heading",
                                      "3:Table:Shown"}));
}

TEST_F(ProcedureEndTest, ExcludedHeadingWithKeptContentStays) {
  _requests.push_back(Request(AllTypesBut(OMSObjectSelector::kHeadings)));
  auto proc = Begin();
  proc->Node(Text("Group"));
  TableWithCells(*proc, "Shown", "Any", {"N"});
  End(*proc);
  EXPECT_EQ(Outline(proc->Tree()),
            (std::vector<std::string>{"0:-", "1:Procedure:Descriptives", "2:Heading:Group",
                                      "3:Table:Shown"}));
}

TEST_F(ProcedureEndTest, BuildersAreReleased) {
  auto proc = Begin();
  TableWithCells(*proc, "One", "S", {"N"});
  proc->Node(Text("Group"));
  TableWithCells(*proc, "Two", "S", {"N"});
  End(*proc);
  auto tables = PartsOf<OmPivotTable>(proc->Tree());
  ASSERT_EQ(tables.size(), 2u);
  for (OmPivotTable* table : tables) EXPECT_EQ(table->Builder(), nullptr);
}

// ---- translated name, translation and sorting -----------------------------------------------

TEST_F(ProcedureEndTest, NonEmptyTranslatedNameBecomesThePlainLabelOfTheProcedure) {
  for (const std::string translated : {"Deskriptive Statistik", ""}) {
    SCOPED_TRACE("translated name \"" + translated + "\"");
    auto proc = Begin("Descriptives", 1, "de", translated);
    TableWithCells(*proc, "T", "S", {"N"});
    End(*proc);
    auto* label = dynamic_cast<OmStringCell*>(PartsOf<OmProcedure>(proc->Tree()).at(0)->Label());
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(translated.empty() ? label->KeyText() : label->Text(),
              translated.empty() ? "Descriptives" : translated);
    EXPECT_EQ(label->Translatable(), translated.empty());
  }
}

TEST_F(ProcedureEndTest, LabelsAndTablesAreTranslatedIntoTheOutputLanguage) {
  FacSTDictionary german(ShippedTables() + "/lang/de");
  ASSERT_TRUE(german.HasTable()) << ShippedTables();
  OmOutputTreeTranslator translator(&german);
  OmFactorySelector selector(_requests, &translator.GetCellTextTranslator());
  OmProcedureFactory proc("Descriptives", "", "de", "UTF-8", "de_DE", selector, translator, 2, 2);
  proc.setId(1);
  proc.PrintLine("x", 1);
  OmPivotFactory* builder = proc.CreateTable(OmStringCell("Notes", true), Text("Notes"),
                                             OmStringCell("Notes", true), false, false);
  builder->SetCategory(builder->Dimension(OmStringCell("Pooled", true)), Text("a"));
  builder->Cell(OmNumber(1.0));
  End(proc);
  auto blocks = PartsOf<OmTextBlock>(proc.Tree());
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(blocks[0]->LabelText(), "Textausgabe");
  OmPivotTable* table = PartsOf<OmPivotTable>(proc.Tree()).at(0);
  EXPECT_EQ(table->LabelText(), "Anmerkungen");
  EXPECT_EQ(table->Dimension(0).Label()->Text(), "Zusammengefasst");
}

TEST_F(ProcedureEndTest, MarkedDimensionIsSorted) {
  auto proc = Begin();
  OmPivotFactory* builder = TableWithCells(*proc, "T", "S", {"b", "c", "a"});
  builder->Dimension(Text("Statistics"));
  builder->MarkSortDimension(0);
  End(*proc);
  std::vector<std::string> order;
  OmPivotTable* table = PartsOf<OmPivotTable>(proc->Tree()).at(0);
  for (const auto* leaf : table->Dimension(0).Leaves()) order.push_back(leaf->Label()->Text());
  EXPECT_EQ(order, (std::vector<std::string>{"a", "b", "c"}));
}

// ---- poolers and selection at the end -------------------------------------------------------

// Poolers that write each visit to a shared log ("boot:Label", "mi:Label") and discard the parts
// whose labels they are given.
class RecordingPoolers : public OmProcedurePoolers {
public:
  mutable std::vector<std::string> log;
  std::set<std::string> miDiscards;
  mutable const OmCellText* procedureName = nullptr;
  mutable OmOutputTree* tree = nullptr;
  mutable int miMade = 0;
  mutable int bootMade = 0;

  std::unique_ptr<OmEndPooler> MakeMIPooler(const OmCellText* name, OmOutputTree& t, bool, bool,
                                            bool, bool) const override {
    ++miMade;
    procedureName = name;
    tree = &t;
    return std::make_unique<Pooler>("mi", log, miDiscards);
  }
  std::unique_ptr<OmEndPooler> MakeBootPooler(const OmCellText*, OmOutputTree&,
                                              const SvrBootstrapSpecs&) const override {
    ++bootMade;
    return std::make_unique<Pooler>("boot", log, _none);
  }

private:
  std::set<std::string> _none;

  class Pooler : public OmEndPooler {
  public:
    Pooler(std::string name, std::vector<std::string>& log, const std::set<std::string>& discards)
        : _name(std::move(name)), _log(log), _discards(discards) {}
    void Pool(OmOutputPart& part) override {
      _log.push_back(_name + ":" + part.LabelText());
      _discard = _discards.count(part.LabelText()) > 0;
    }
    bool Discard() const override { return _discard; }

  private:
    std::string _name;
    std::vector<std::string>& _log;
    const std::set<std::string>& _discards;
    bool _discard = false;
  };
};

TEST_F(ProcedureEndTest, EveryPartMeetsTheBootstrapPoolerBeforeTheImputationPooler) {
  RecordingPoolers poolers;
  auto proc = Begin();
  proc->setPoolers(poolers);
  proc->Node(Text("Group"));
  TableWithCells(*proc, "T", "S", {"N"});
  End(*proc, BootstrapSpecs());
  EXPECT_EQ(poolers.log,
            (std::vector<std::string>{"boot:Descriptives", "mi:Descriptives", "boot:Group",
                                      "mi:Group", "boot:T", "mi:T"}));
  EXPECT_EQ(poolers.procedureName, PartsOf<OmProcedure>(proc->Tree()).at(0)->Label());
  EXPECT_EQ(poolers.tree, &proc->Tree());
}

TEST_F(ProcedureEndTest, WithoutSpecificationsNoBootstrapPoolerIsBuilt) {
  RecordingPoolers poolers;
  auto proc = Begin();
  proc->setPoolers(poolers);
  TableWithCells(*proc, "T", "S", {"N"});
  End(*proc);
  EXPECT_EQ(poolers.bootMade, 0);
  EXPECT_EQ(poolers.miMade, 1);
  EXPECT_EQ(poolers.log, (std::vector<std::string>{"mi:Descriptives", "mi:T"}));
}

TEST_F(ProcedureEndTest, PartDiscardedByTheImputationPoolerLeavesTheTree) {
  RecordingPoolers poolers;
  poolers.miDiscards = {"Imputed only"};
  auto proc = Begin();
  proc->setPoolers(poolers);
  TableWithCells(*proc, "Imputed only", "S", {"N"});
  TableWithCells(*proc, "Pooled", "S", {"N"});
  End(*proc, BootstrapSpecs());
  EXPECT_EQ(Outline(proc->Tree()),
            (std::vector<std::string>{"0:-", "1:Procedure:Descriptives", "2:Table:Pooled"}));
}

// Requests that keep the first table of a procedure and every object that is not a table.
class FirstTableTest : public ProcedureTest {
protected:
  void FirstTableOnly() {
    _requests.push_back(Request(OMSObjectSelector::kTables, "", 1));
    _requests.push_back(Request(AllTypesBut(OMSObjectSelector::kTables)));
  }
};

TEST_F(FirstTableTest, BootstrappedTablesAreCountedAsInstancesOnlyAfterImputationPooling) {
  RecordingPoolers poolers;
  poolers.miDiscards = {"First"};
  FirstTableOnly();
  auto proc = Begin();
  proc->SetBootstrapped(true);
  proc->setPoolers(poolers);
  TableWithCells(*proc, "First", "S", {"N"});
  TableWithCells(*proc, "Second", "S", {"N"});
  TableWithCells(*proc, "Third", "S", {"N"});
  End(*proc, BootstrapSpecs());
  // "First" went with the pooler, so "Second" is instance 1 and "Third" instance 2.
  EXPECT_EQ(Outline(proc->Tree()),
            (std::vector<std::string>{"0:-", "1:Procedure:Descriptives", "2:Table:Second"}));
}

TEST_F(FirstTableTest, WithoutSpecificationsTheSelectorIsNotAppliedAtTheEnd) {
  FirstTableOnly();
  auto proc = Begin();
  proc->SetBootstrapped(true);
  TableWithCells(*proc, "First", "S", {"N"});
  TableWithCells(*proc, "Second", "S", {"N"});
  End(*proc);
  EXPECT_EQ(PartsOf<OmPivotTable>(proc->Tree()).size(), 2u);
}

TEST_F(ProcedureEndTest, WithSpecificationsAnUnselectedTableIsRemoved) {
  _requests.push_back(Request(AllTypesBut(0), "Kept"));
  auto proc = Begin();
  proc->SetBootstrapped(true);
  TableWithCells(*proc, "Shown", "Kept", {"N"});
  TableWithCells(*proc, "Dropped", "Other", {"N"});
  End(*proc, BootstrapSpecs());
  EXPECT_EQ(Outline(proc->Tree()),
            (std::vector<std::string>{"0:-", "1:Procedure:Descriptives", "2:Table:Shown"}));
}

TEST_F(ProcedureEndTest, MalformedSpecificationsFailTheEnd) {
  for (const std::string& specs : {std::string("\x01\x02", 2), BootstrapSpecs() + "x"}) {
    auto proc = Begin();
    proc->SetBootstrapped(true);
    TableWithCells(*proc, "T", "S", {"N"});
    EXPECT_THROW(End(*proc, specs), OMSException) << specs.size() << " bytes";
  }
}

TEST_F(ProcedureEndTest, SpecificationBytesWithoutAPointerAreRefused) {
  auto proc = Begin();
  EXPECT_THROW(proc->EndProcedure(4, nullptr, true, true, true, true), OMSException);
}

}  // namespace
