// Running out of memory inside a procedure: std::bad_alloc thrown at every chosen allocation while
// a session plays each sample procedure. The session must close the procedure, leave what it had
// collected marked "Output Missing", pass the exception on to the host, leak nothing (the
// sanitizer build checks) and take the next procedure whole.
#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "backend/omfactory/procedure/OmProcedureFactory.h"
#include "fuzz/OmSampleStreams.h"
#include "fuzz/OmSessionProbe.h"
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

}  // namespace
