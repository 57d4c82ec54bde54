// OmProcedureFactory: text lines, heading footnotes, split tables, and the end of a procedure (the
// nothing-to-show rule, pooling before instances are counted, bootstrap settings, building
// after the end).

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

#include "backend/omfactory/procedure/OmProcedurePoolers.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmFootnote.h"
#include "tests/backend/omfactory/procedure/ProcedureFixture.h"

namespace {

using namespace proctest;

using ProcedureFactoryTest = ProcedureTest;

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

TEST_F(ProcedureFactoryTest, OnlyNotesActiveDatasetAndEmptyWarningsLeaveNothingToShow) {
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

// ---- poolers and selection at the end -------------------------------------------------------

// Poolers that discard the parts whose labels they are given (imputation pooling only).
class DiscardingPoolers : public OmProcedurePoolers {
public:
  std::set<std::string> miDiscards;

  std::unique_ptr<OmEndPooler> MakeMIPooler(const OmCellText*, OmOutputTree&, bool, bool, bool,
                                            bool) const override {
    return std::make_unique<Pooler>(miDiscards);
  }
  std::unique_ptr<OmEndPooler> MakeBootPooler(const OmCellText*, OmOutputTree&,
                                              const SvrBootstrapSpecs&) const override {
    return std::make_unique<Pooler>(_none);
  }

private:
  std::set<std::string> _none;

  class Pooler : public OmEndPooler {
  public:
    explicit Pooler(const std::set<std::string>& discards) : _discards(discards) {}
    void Pool(OmOutputPart& part) override { _discard = _discards.count(part.LabelText()) > 0; }
    bool Discard() const override { return _discard; }

  private:
    const std::set<std::string>& _discards;
    bool _discard = false;
  };
};

// Requests that keep the first table of a procedure and every object that is not a table.
class FirstTableTest : public ProcedureTest {
protected:
  void FirstTableOnly() {
    _requests.push_back(Request(OMSObjectSelector::kTables, "", 1));
    _requests.push_back(Request(AllTypesBut(OMSObjectSelector::kTables)));
  }
};

TEST_F(FirstTableTest, BootstrappedTablesAreCountedAsInstancesOnlyAfterImputationPooling) {
  DiscardingPoolers poolers;
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

TEST_F(ProcedureFactoryTest, MalformedSpecificationsFailTheEnd) {
  for (const std::string& specs : {std::string("\x01\x02", 2), BootstrapSpecs() + "x"}) {
    auto proc = Begin();
    proc->SetBootstrapped(true);
    TableWithCells(*proc, "T", "S", {"N"});
    EXPECT_THROW(End(*proc, specs), OMSException) << specs.size() << " bytes";
  }
  // Bootstrap settings bytes without a pointer.
  EXPECT_THROW(Begin()->EndProcedure(4, nullptr, true, true, true, true), OMSException);
}

TEST_F(ProcedureFactoryTest, EmptyLineIsStoredAndAMissingTextWithALengthIsRefused) {
  auto proc = Begin();
  proc->PrintLine(nullptr, 0);
  EXPECT_EQ(PartsOf<OmTextBlock>(proc->Tree()).at(0)->Lines(), std::vector<std::string>{""});
  EXPECT_THROW(proc->PrintLine(nullptr, 3), OMSException);
}

TEST_F(ProcedureFactoryTest, HeadingFootnotesReachANewTableRootMostFirst) {
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
  proc->AnnotateHeading(OmFootnote(Text("Inner note")));  // reaches the table: its equal serves
  EXPECT_EQ(table.Footnotes().size(), 2u);
}

TEST_F(ProcedureFactoryTest, AnnotateHeadingAtTheRootThrowsBadCast) {
  auto proc = Begin();
  proc->EndNode();
  EXPECT_THROW(proc->AnnotateHeading(OmFootnote(Text("x"))), std::bad_cast);
}

TEST_F(ProcedureFactoryTest, SplitSetterOnATableWithoutBuilderFails) {
  OmPivotTable table(Text("T"), Text("S"), true);
  OmProcedureFactory::TableSplitSetter setter(Text("Gender"), Text("Female"), false);
  EXPECT_THAT([&] { table.Accept(setter); },
              testing::ThrowsMessage<OMSException>(testing::HasSubstr("TableSplitSetter::Visit -- hint doesn't exist")));
}

TEST_F(ProcedureFactoryTest, BuildingAfterTheEndOfTheProcedureFails) {
  auto proc = Begin();
  TableWithCells(*proc, "T", "S", {"N"});
  proc->EndProcedure(0, nullptr, true, true, true, true);
  EXPECT_THROW(proc->SetCategory(Text("Gender"), Text("Female")), OMSException);
  EXPECT_THROW(proc->CreateTable(Text("U"), Text("S"), Text("U"), false, false), OMSException);
  EXPECT_THROW(proc->PrintLine("x", 1), OMSException);
  EXPECT_THROW(proc->EndProcedure(0, nullptr, true, true, true, true), OMSException);
}

}  // namespace
