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
