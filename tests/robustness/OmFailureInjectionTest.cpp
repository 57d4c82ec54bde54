// Running out of memory inside a procedure: std::bad_alloc thrown at every chosen allocation while
// a session plays each sample procedure. The session must close the procedure, leave what it had
// collected marked "Output Missing", pass the exception on to the host, leak nothing (the
// sanitizer build checks) and take the next procedure whole.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "backend/omfactory/procedure/OmProcedureFactory.h"
#include "fuzz/OmSampleStreams.h"
#include "fuzz/OmSessionProbe.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"
#include "tests/robustness/OmCountingAllocator.h"

namespace {

using robustness::CountingAllocator;

// Samples that hold procedures, in the byte order of the machines we build on.
std::vector<OmSampleStreams::Named> Procedures() {
  std::vector<OmSampleStreams::Named> samples;
  for (OmSampleStreams::Named& named :
       OmSampleStreams::All(OmStreamWriter::ByteOrder::LittleEndian)) {
    if (named.name != "settings" && named.name != "session" && named.name != "chunked_string") {
      samples.push_back(std::move(named));
    }
  }
  return samples;
}

struct Outcome {
  bool escaped = false;        // std::bad_alloc reached the host
  bool procedureOpen = false;  // a procedure was open when it did
  std::size_t nodesCollected = 0;
  std::int16_t failedIn = 0;  // the code of the message during which the allocation failed
  std::size_t allocations = 0;
};

// Plays the records into the probe with allocation failAt failing (0: none); stops at the first
// std::bad_alloc that reaches the host.
// records are changed: the session rewrites payloads in place.
Outcome Play(OmSessionProbe& probe, std::vector<OmStreamRecord>& records, std::size_t failAt) {
  Outcome outcome;
  const std::size_t before = CountingAllocator::Allocations();
  CountingAllocator::FailAt(failAt);
  for (OmStreamRecord& record : records) {
    const OmProcedureFactory* open = probe.Factory().Procedure();
    outcome.procedureOpen = open != nullptr;
    outcome.nodesCollected = open ? open->Tree().Size() : 0;
    try {
      probe.Factory().Message(record.code, unsigned(record.payload.size()), record.payload.data());
    } catch (const std::bad_alloc&) {
      outcome.escaped = true;
    }
    if (CountingAllocator::Failed()) {
      outcome.failedIn = record.code;
      break;
    }
  }
  CountingAllocator::Disarm();
  outcome.allocations = CountingAllocator::Allocations() - before;
  return outcome;
}

// Plays a whole procedure first: the output the failure must leave intact, and the warm state
// (string tables, trackers) in which every run counts its allocations alike.
void PlayEarlier(OmSessionProbe& probe) {
  OmStreamWriter earlier;
  OmSampleStreams::Descriptives(earlier, 1);
  ASSERT_TRUE(probe.Feed(earlier));
  probe.MarkEarlierOutput();
}

// How many allocations the session makes for the records after an earlier procedure. Counted
// on the second of two plays: the first fills caches that live as long as the program.
std::size_t CleanAllocations(const std::vector<OmStreamRecord>& records) {
  std::size_t total = 0;
  for (int play = 0; play < 2; ++play) {
    OmSessionProbe probe;
    PlayEarlier(probe);
    std::vector<OmStreamRecord> copy = records;
    const std::size_t before = CountingAllocator::Allocations();
    EXPECT_FALSE(Play(probe, copy, 0).escaped);
    total = CountingAllocator::Allocations() - before;
  }
  return total;
}

TEST(FailureInjection, BadAllocInsideAProcedureLeavesOutputMissingAndPassesOn) {
  for (const OmSampleStreams::Named& sample : Procedures()) {
    SCOPED_TRACE(sample.name);
    // How many allocations one clean play makes.
    const std::size_t total = CleanAllocations(sample.stream.Records());
    ASSERT_GT(total, 0u);
    const std::size_t step = total / 400 + 1;
    std::size_t escapes = 0;
    for (std::size_t n = 1; n <= total; n += step) {
      SCOPED_TRACE("allocation " + std::to_string(n) + " of " + std::to_string(total));
      const std::size_t liveBefore = CountingAllocator::LiveBytes();
      [&] {
        OmSessionProbe probe;
        PlayEarlier(probe);
        const std::size_t procedures = probe.Procedures();

        std::vector<OmStreamRecord> records = sample.stream.Records();
        const Outcome outcome = Play(probe, records, n);
        // A play that made fewer allocations (caches warmed further) has nothing to fail.
        if (outcome.allocations < n) return;
        EXPECT_TRUE(CountingAllocator::Failed());
        EXPECT_TRUE(outcome.escaped)
            << "std::bad_alloc in message " << outcome.failedIn << " was swallowed";
        escapes += outcome.escaped;
        EXPECT_EQ(probe.Factory().Procedure(), nullptr);
        if (outcome.escaped && outcome.procedureOpen) {
          EXPECT_EQ(probe.Procedures(), procedures + 1);
          if (outcome.nodesCollected >= 2) {
            EXPECT_TRUE(probe.HasOutputMissing());
          }
        }
        EXPECT_EQ(probe.IntactEarlierOutput(), "");
        EXPECT_EQ(probe.AcceptsNextProcedure(), "");
      }();
      // Everything the session held, the cells it had not placed among them, is freed with it.
      EXPECT_EQ(CountingAllocator::LiveBytes(), liveBefore) << "leaked";
      if (HasFailure()) return;
    }
    EXPECT_GT(escapes, 0u);
  }
}

TEST(FailureInjection, BadAllocBetweenProceduresReachesTheHostAndChangesNothing) {
  OmStreamWriter settings;
  settings.ByteOrderProbe();
  OmSampleStreams::SessionSettings(settings);
  const std::size_t total = CleanAllocations(settings.Records());
  for (std::size_t n = 1; n <= total; ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n) + " of " + std::to_string(total));
    OmSessionProbe probe;
    PlayEarlier(probe);
    std::vector<OmStreamRecord> records = settings.Records();
    const Outcome outcome = Play(probe, records, n);
    if (outcome.allocations < n) continue;
    EXPECT_TRUE(outcome.escaped) << "std::bad_alloc in message " << outcome.failedIn
                                 << " was swallowed";
    EXPECT_FALSE(outcome.procedureOpen);
    EXPECT_EQ(probe.Procedures(), 1u);
    EXPECT_EQ(probe.IntactEarlierOutput(), "");
    EXPECT_EQ(probe.AcceptsNextProcedure(), "");
    if (HasFailure()) return;
  }
}

// A table's cell store changes shape as it fills: its log grows, keys are repacked when a
// coordinate outgrows its field, an index arrives with the first cell out of order or with many
// look-ups and grows, holes are compacted, categories are dropped. Each operation either happens
// whole or not at all when an allocation fails inside it, and the same operation then succeeds.
struct StoreOp {
  enum Kind { kPut, kFind, kTake, kDrop } kind;
  std::vector<int> at;  // kDrop: {dimension, leaf}
};

// Ordered cells with a repack, look-ups enough to bring in the index, cells out of order enough
// to grow it, takes enough to compact, a dropped category and a repack with the index in.
std::vector<StoreOp> StoreScript() {
  std::vector<StoreOp> ops;
  for (int v = 0; v < 3; ++v) {
    for (int g = 0; g < 30; ++g) {
      for (int s = 0; s < 4; ++s) ops.push_back({StoreOp::kPut, {v, g, s}});
    }
  }
  ops.push_back({StoreOp::kPut, {2, 1 << 22, 0}});
  for (int i = 0; i < 40; ++i) ops.push_back({StoreOp::kFind, {i % 3, (i * 7) % 30, i % 4}});
  for (int i = 0; i < 450; ++i) ops.push_back({StoreOp::kPut, {i % 3, (i / 3) % 30, 4 + i / 90}});
  for (int v = 0; v < 2; ++v) {
    for (int g = 0; g < 30; ++g) {
      for (int s = 0; s < 9; ++s) ops.push_back({StoreOp::kTake, {v, g, s}});
    }
  }
  ops.push_back({StoreOp::kDrop, {0, 2}});
  for (int i = 0; i < 10; ++i) ops.push_back({StoreOp::kPut, {i % 2, 1 << (20 + i % 3), 9 + i}});
  return ops;
}

// The table holds exactly the cells present, with their values: walked and looked up.
void ExpectHolds(const OmPivotTable& table, const std::map<std::vector<int>, double>& values,
                 const std::map<std::vector<int>, bool>& present) {
  std::size_t n = 0;
  for (const auto& [at, here] : present) {
    const auto* number = dynamic_cast<const OmNumber*>(table.Cell(at));
    if (!here) {
      EXPECT_EQ(number, nullptr);
      continue;
    }
    ++n;
    ASSERT_NE(number, nullptr);
    EXPECT_EQ(number->Value(), values.at(at));
  }
  EXPECT_EQ(table.NCells(), n);
  std::size_t walked = 0;
  for (auto it = table.FirstCell(); it != table.EndCell(); ++it, ++walked) {
    ASSERT_TRUE(present.at(it.Coord()));
  }
  EXPECT_EQ(walked, n);
}

// Runs the script on a fresh table with allocation failAt failing (0: none). When the failure
// comes, the table must hold what the operations before it left, and the operation is repeated.
// Returns the allocations the script made.
std::size_t PlayStore(const std::vector<StoreOp>& ops, std::size_t failAt) {
  OmPivotTable table(OmStringCell("t"), OmStringCell("t"));
  for (const char* label : {"variables", "groups", "statistics"}) {
    table.AddDimension(OmStringCell(label));
  }
  table.CellOrderHint(2);
  // Every map node exists before the failure is armed: the bookkeeping must not allocate.
  std::map<std::vector<int>, double> values;
  std::map<std::vector<int>, bool> present;
  for (const StoreOp& op : ops) {
    if (op.kind == StoreOp::kPut) values[op.at] = -1;
  }
  for (const auto& [at, value] : values) present[at] = false;
  double next = 0;
  auto apply = [&](const StoreOp& op) {
    switch (op.kind) {
      case StoreOp::kPut:
        table.Cell(op.at, std::make_unique<OmNumber>(next + 1));
        values.at(op.at) = ++next;
        present.at(op.at) = true;
        break;
      case StoreOp::kFind:
        table.Cell(op.at);
        break;
      case StoreOp::kTake:
        if (table.TakeCell(op.at) != nullptr) present.at(op.at) = false;
        break;
      case StoreOp::kDrop:
        table.DropCells(op.at[0], {op.at[1]});
        for (auto& [at, here] : present) here = here && at[std::size_t(op.at[0])] != op.at[1];
        break;
    }
  };
  const std::size_t before = CountingAllocator::Allocations();
  CountingAllocator::FailAt(failAt);
  for (const StoreOp& op : ops) {
    try {
      apply(op);
    } catch (const std::bad_alloc&) {
      ExpectHolds(table, values, present);
      apply(op);
    }
  }
  CountingAllocator::Disarm();
  const std::size_t allocations = CountingAllocator::Allocations() - before;
  ExpectHolds(table, values, present);
  return allocations;
}

TEST(FailureInjection, EveryCellStoreOperationHappensWholeOrNotAtAll) {
  const std::vector<StoreOp> ops = StoreScript();
  const std::size_t total = PlayStore(ops, 0);
  ASSERT_GT(total, 0u);
  for (std::size_t n = 1; n <= total; ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n) + " of " + std::to_string(total));
    const std::size_t liveBefore = CountingAllocator::LiveBytes();
    PlayStore(ops, n);
    EXPECT_TRUE(CountingAllocator::Failed());
    EXPECT_EQ(CountingAllocator::LiveBytes(), liveBefore) << "leaked";
    if (HasFailure()) return;
  }
}

}  // namespace
