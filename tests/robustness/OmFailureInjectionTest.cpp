// Running out of memory inside a procedure: std::bad_alloc thrown at every chosen allocation while
// a session plays each sample procedure and each recorded example. The session must close the procedure, leave what it had
// collected marked "Output Missing", pass the exception on to the host, leak nothing (the
// sanitizer build checks) and take the next procedure whole.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <typeinfo>
#include <vector>

#include "backend/omfactory/procedure/OmProcedureFactory.h"
#include "fuzz/OmSampleStreams.h"
#include "fuzz/OmSessionProbe.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/stream/OmStreamReader.h"
#include "tests/robustness/OmCountingAllocator.h"

// Under AddressSanitizer each failure costs a fork, and a fork's cost in the kernel grows with
// the memory that freed blocks in quarantine keep mapped: 4 MB instead of 256 took a quarter off
// the sweep. A child does little between its failure and its exit, so that still holds every
// block it frees. (A hook the sanitizer calls; unused without it.)
extern "C" const char* __asan_default_options() { return "quarantine_size_mb=4"; }

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

// Every allocation of a stream fails once. A session is played up to the record in which the
// allocation falls, then forked: the child fails it, checks the recovery and exits, the parent
// goes on, so each failure costs one record and one check procedure rather than a replay of the
// stream up to it.
struct Clean {
  std::vector<std::size_t> perRecord;  // allocations of each record's message
  std::size_t total = 0;
  std::string whole;  // the output tree after the whole stream
};

void PlayEarlierUnchecked(OmSessionProbe& probe) {
  OmStreamWriter earlier;
  OmSampleStreams::Descriptives(earlier, 1);
  probe.Feed(earlier);
  probe.MarkEarlierOutput();
}

// The session's own recovery ends OMSExceptions; a std::bad_cast still reaches the host.
void Message(OmSessionProbe& probe, OmStreamRecord& record) {
  try {
    probe.Factory().Message(record.code, unsigned(record.payload.size()), record.payload.data());
  } catch (const std::bad_cast&) {
  } catch (const OMSException&) {
  }
}

// Counted on the second of two plays, as CleanAllocations does.
Clean CountClean(const std::vector<OmStreamRecord>& records) {
  Clean clean;
  for (int play = 0; play < 2; ++play) {
    OmSessionProbe probe;
    PlayEarlierUnchecked(probe);
    std::vector<OmStreamRecord> copy = records;
    clean.perRecord.assign(records.size(), 0);
    for (std::size_t r = 0; r < copy.size(); ++r) {
      const std::size_t before = CountingAllocator::Allocations();
      Message(probe, copy[r]);
      clean.perRecord[r] = CountingAllocator::Allocations() - before;
    }
    clean.whole = probe.Snapshot();
  }
  for (std::size_t n : clean.perRecord) clean.total += n;
  return clean;
}

// In the child: fails allocation failAt of the record's message and checks what the session
// made of it. "" when it recovered as it must.
std::string FailOnce(std::unique_ptr<OmSessionProbe>& probe, std::vector<OmStreamRecord>& records,
                     std::size_t r, std::size_t failAt, const Clean& clean,
                     std::size_t liveBefore) {
  OmStreamRecord& record = records[r];
  const bool open = probe->Factory().Procedure() != nullptr;
  const std::size_t procedures = probe->Procedures();
  bool escaped = false;
  CountingAllocator::FailAt(failAt);
  try {
    probe->Factory().Message(record.code, unsigned(record.payload.size()), record.payload.data());
  } catch (const std::bad_alloc&) {
    escaped = true;
  } catch (const std::exception& e) {
    return std::string("another exception reached the host: ") + e.what();
  }
  CountingAllocator::Disarm();
  if (!CountingAllocator::Failed()) return "the allocation did not happen";
  if (CountingAllocator::FailedQuietly() && escaped) {
    return "a refused nothrow allocation let std::bad_alloc out";
  }
  if (!escaped) {
    // Done without (a nothrow buffer, a cell store's optional growth): nothing may show it.
    for (std::size_t rest = r + 1; rest < records.size(); ++rest) Message(*probe, records[rest]);
    if (probe->Snapshot() != clean.whole) return "std::bad_alloc was swallowed, output changed";
  }
  if (escaped && probe->Factory().Procedure() != nullptr) return "the procedure stays open";
  if (escaped && open && probe->Procedures() != procedures + 1) {
    return "the procedure was not appended";
  }
  if (escaped && open && !probe->HasOutputMissing() && probe->Snapshot() != clean.whole) {
    return "the procedure is neither whole nor cut with \"Output Missing\"";
  }
  std::string problem = probe->IntactEarlierOutput();
  if (problem.empty()) problem = probe->AcceptsNextProcedure();
  if (!problem.empty()) return problem;
  probe.reset();
  const std::size_t live = CountingAllocator::LiveBytes();
  if (live != liveBefore) return "leaked " + std::to_string(live - liveBefore) + " bytes";
  return std::string();
}

// A forked child that runs FailOnce on allocation failAt of a record and reports through a pipe.
struct Child {
  bool started = false;
  pid_t pid = -1;  // -1: the pipe or the fork failed
  int fd = -1;
  std::size_t record = 0;
  std::size_t failAt = 0;
};

Child Fork(std::unique_ptr<OmSessionProbe>& probe, std::vector<OmStreamRecord>& records,
           std::size_t r, std::size_t failAt, const Clean& clean, std::size_t liveBefore) {
  int fds[2];
  if (pipe(fds) != 0) return Child{true, -1, -1, r, failAt};
  const pid_t pid = fork();
  if (pid == 0) {
    close(fds[0]);
    const std::string problem = FailOnce(probe, records, r, failAt, clean, liveBefore);
    const std::size_t n = std::min<std::size_t>(problem.size(), 4000);
    const bool written = write(fds[1], problem.data(), n) == ssize_t(n);
    _exit(problem.empty() && written ? 0 : 1);
  }
  close(fds[1]);
  return Child{true, pid, fds[0], r, failAt};
}

// Waits for the child: "" when it passed.
std::string Reap(const Child& child) {
  char text[4000];
  std::size_t got = 0;
  for (ssize_t n; child.fd >= 0 && got < sizeof text &&
                 (n = read(child.fd, text + got, sizeof text - got)) > 0;) {
    got += std::size_t(n);
  }
  if (child.fd >= 0) close(child.fd);
  if (child.pid < 0) return "pipe or fork failed";
  int status = 0;
  waitpid(child.pid, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return std::string();
  if (got > 0) return std::string(text, got);
  return "the child died (status " + std::to_string(status) + ")";
}

// The sweep over one stream: allocation 1, 1 + stride, ... of the records' messages fails.
// Returns the first problem, with where it happened.
std::string Sweep(const std::vector<OmStreamRecord>& records, std::size_t maxFailures,
                  std::size_t& failures) {
  const Clean clean = CountClean(records);
  const std::size_t stride = (clean.total + maxFailures - 1) / std::max<std::size_t>(maxFailures, 1);
  {
    // One failure in the process itself first: anything the recovery caches for the rest of the
    // program exists before the children count live bytes, and LeakSanitizer sees this one.
    OmSessionProbe probe;
    PlayEarlierUnchecked(probe);
    std::vector<OmStreamRecord> copy = records;
    Play(probe, copy, clean.total / 2 + 1);
    probe.AcceptsNextProcedure();
  }
  std::vector<OmStreamRecord> copy = records;
  const std::size_t liveBefore = CountingAllocator::LiveBytes();
  auto probe = std::make_unique<OmSessionProbe>();
  PlayEarlierUnchecked(*probe);
  // Four children at a time: the next ones are forked while the first still check, so that a
  // child's wait for a processor does not hold up the sweep. (Fixed-size: a child counts the
  // parent's live bytes at the fork as its own.)
  std::array<Child, 4> running;
  std::string problem;
  auto reap = [&](Child& child) {
    if (!child.started) return;
    const std::string found = Reap(child);
    const std::size_t r = child.record;
    child.started = false;
    if (found.empty() || !problem.empty()) return;
    problem = "record " + std::to_string(r) + " (code " + std::to_string(copy[r].code) +
              "), allocation " + std::to_string(child.failAt) + " of its " +
              std::to_string(clean.perRecord[r]) + ": " + found;
  };
  std::size_t done = 0;
  std::size_t next = 1;
  for (std::size_t r = 0; r < copy.size() && problem.empty(); ++r) {
    for (; next <= done + clean.perRecord[r]; next += std::max<std::size_t>(stride, 1)) {
      Child& slot = running[failures++ % running.size()];
      reap(slot);
      slot = Fork(probe, copy, r, next - done, clean, liveBefore);
    }
    const std::size_t before = CountingAllocator::Allocations();
    Message(*probe, copy[r]);
    if (CountingAllocator::Allocations() - before != clean.perRecord[r] && problem.empty()) {
      problem = "record " + std::to_string(r) + " made another number of allocations than counted";
    }
    done += clean.perRecord[r];
  }
  for (Child& child : running) reap(child);
  return problem;
}

std::filesystem::path ExamplesDir() {
  const char* source = std::getenv("OMF_SOURCE_DIR");
  return std::filesystem::path(source != nullptr && *source != '\0' ? source : OMF_SOURCE_DIR_DEFAULT) /
         "examples";
}

// Each sample procedure and each recorded example, every allocation (every stride-th in streams
// of more than kMaxFailures): no crash, no leak, std::bad_alloc reaches the host, the procedure
// is whole or cut with "Output Missing", the earlier output stays and the next procedure is whole.
TEST(FailureInjection, EveryAllocationOfEveryStreamFailsOnce) {
  // At most 200 failures a stream: every allocation of the smaller samples, a stride through
  // the larger ones and the examples. Each failure forks the session, and under the sanitizers a
  // fork of a grown session is dear: every allocation of every example took 26 minutes there.
  constexpr std::size_t kMaxFailures = 200;
  std::vector<std::pair<std::string, std::vector<OmStreamRecord>>> streams;
  for (const OmSampleStreams::Named& sample : Procedures()) {
    streams.emplace_back(sample.name, sample.stream.Records());
  }
  std::vector<std::filesystem::path> examples;
  for (const auto& entry : std::filesystem::directory_iterator(ExamplesDir())) {
    if (entry.path().extension() == ".oms") examples.push_back(entry.path());
  }
  std::sort(examples.begin(), examples.end());
  ASSERT_FALSE(examples.empty());
  for (const std::filesystem::path& path : examples) {
    OmStreamReader reader = OmStreamReader::FromFile(path.string());
    std::vector<OmStreamRecord> records;
    for (OmStreamRecord record; reader.Next(record);) records.push_back(record);
    streams.emplace_back(path.filename().string(), std::move(records));
  }
  for (const auto& [name, records] : streams) {
    SCOPED_TRACE(name);
    std::size_t failures = 0;
    EXPECT_EQ(Sweep(records, kMaxFailures, failures), "");
    EXPECT_GT(failures, 0u);
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
