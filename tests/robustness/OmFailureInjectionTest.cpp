// Running out of memory inside a procedure: std::bad_alloc thrown at every allocation in turn while
// a session plays each sample procedure and each recorded example. The session must close the
// procedure, leave what it had collected marked "Output Missing", pass the exception on to the
// host, leak nothing (the live-byte count checks, the sanitizer build too) and take the next
// procedure whole.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <new>
#include <set>
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
#include "platform/settings/iocvset.h"
#include "platform/stream/MessageCodes.h"
#include "platform/stream/OmStreamReader.h"
#include "tests/robustness/OmCountingAllocator.h"

// Under AddressSanitizer a fork's cost in the kernel grows with the memory that freed blocks in
// quarantine keep mapped: 4 MB instead of 256 took a quarter off the sweep. A child does little
// between its failure and its exit, so that still holds every block it frees. (A hook the
// sanitizer calls; unused without it.)
// Allocation stacks are not kept: unwinding and storing one at every allocation took an eighth of
// the sweep (replay a failure with ASAN_OPTIONS=malloc_context_size=30 for them).
extern "C" const char* __asan_default_options() {
  return "quarantine_size_mb=4:malloc_context_size=0";
}

namespace {

using robustness::CountingAllocator;

// Every allocation of a stream fails once. A stream is swept procedure by procedure (Units): a
// session plays what came before the failing allocation, fails it, and is checked. Two ways bring
// a session to an allocation, whichever costs less there:
// - a replay: a fresh session plays the procedure's unit from its start. It costs the session,
//   the checks and the records before the allocation, so it is cheap early in a unit;
// - a fork: one session plays the unit once and is forked before each record whose allocations
//   fail; the child fails one, checks and exits. A fork costs the same anywhere in the unit, and
//   more than a replay of the first kReplayUpTo allocations (see there).

// One procedure of a stream with what the session needs before it: lead holds the records outside
// procedures that came earlier (the byte-order probe, the session's settings, log lines between
// procedures), played and never failed; records hold what came since the previous procedure, the
// procedure and its end messages, each of whose allocations fails once.
struct Unit {
  std::vector<OmStreamRecord> lead;
  std::vector<OmStreamRecord> records;
};

std::vector<Unit> Units(const std::vector<OmStreamRecord>& all) {
  std::vector<Unit> units(1);
  std::vector<OmStreamRecord> outside;
  bool inside = false;  // from a procedure's begin to its last end message
  bool ending = false;  // the last record was an end message
  for (const OmStreamRecord& record : all) {
    const bool end = record.code == std::int16_t(MessageCode::IPC_END_PROCEDURE);
    if (ending && !end) {
      units.push_back(Unit{outside, {}});
      inside = false;
    }
    ending = end;
    inside = inside || record.code == std::int16_t(MessageCode::IPC_BEGIN_PROCEDURE);
    if (!inside) outside.push_back(record);
    units.back().records.push_back(record);
  }
  return units;
}

// Plays a record on a copy of its payload, exactly as long (the session rewrites payloads in
// place, and the sanitizer sees a read past the end). The session's own recovery ends
// OMSExceptions; a std::bad_cast still reaches the host. Returns the allocations the message made.
std::size_t PlayRecord(OmSessionProbe& probe, const OmStreamRecord& record) {
  std::vector<std::uint8_t> payload = record.payload;
  const std::size_t before = CountingAllocator::Allocations();
  try {
    probe.Factory().Message(record.code, unsigned(payload.size()), payload.data());
  } catch (const std::bad_cast&) {
  } catch (const OMSException&) {
  }
  return CountingAllocator::Allocations() - before;
}

// A fresh session after a whole earlier procedure and the unit's lead. The conversion options
// are the process's: forgotten first, so that every session sets them anew with the same
// allocations and leaves the same bytes behind.
std::unique_ptr<OmSessionProbe> StartUnit(const Unit& unit) {
  IocvReset();
  auto probe = std::make_unique<OmSessionProbe>();
  OmStreamWriter earlier;
  OmSampleStreams::Descriptives(earlier, 1);
  probe->Feed(earlier);
  probe->MarkEarlierOutput();
  for (const OmStreamRecord& record : unit.lead) PlayRecord(*probe, record);
  return probe;
}

struct Clean {
  std::vector<std::size_t> perRecord;  // allocations of each of the unit's records
  std::size_t total = 0;
  std::string whole;  // the output tree after the unit
};

// Counted on the second of two plays: the first fills caches that live as long as the program.
Clean CountClean(const Unit& unit) {
  Clean clean;
  for (int play = 0; play < 2; ++play) {
    const std::unique_ptr<OmSessionProbe> probe = StartUnit(unit);
    clean.perRecord.clear();
    for (const OmStreamRecord& record : unit.records) {
      clean.perRecord.push_back(PlayRecord(*probe, record));
    }
    clean.whole = probe->Snapshot();
  }
  for (std::size_t n : clean.perRecord) clean.total += n;
  return clean;
}

// Plays record r's message with the failure that arm sets up (after the payload's copy, so that
// the allocations counted are the message's own). Returns whether std::bad_alloc reached the
// host; another exception does too when the allocation failed, and is named in other.
template <class Arm>
bool Escaped(OmSessionProbe& probe, const OmStreamRecord& record, Arm&& arm, std::string& other) {
  std::vector<std::uint8_t> payload = record.payload;
  arm();
  bool escaped = false;
  try {
    probe.Factory().Message(record.code, unsigned(payload.size()), payload.data());
  } catch (const std::bad_alloc&) {
    escaped = true;
  } catch (const std::exception& e) {
    if (CountingAllocator::Failed()) other = e.what();
  }
  CountingAllocator::Disarm();
  CountingAllocator::CallAt(nullptr, 0, nullptr);
  return escaped;
}

// What the session made of the failed allocation in record r's message: "" when it recovered as
// it must. open and procedures are as they were before the message.
std::string Recovered(OmSessionProbe& probe, const Unit& unit, std::size_t r, bool open,
                      std::size_t procedures, bool escaped, const std::string& other,
                      const Clean& clean) {
  if (!other.empty()) return "another exception reached the host: " + other;
  if (CountingAllocator::FailedQuietly() && escaped) {
    return "a refused nothrow allocation let std::bad_alloc out";
  }
  if (!escaped) {
    // Done without (a nothrow buffer, a cell store's optional growth): nothing may show it.
    for (std::size_t rest = r + 1; rest < unit.records.size(); ++rest) {
      PlayRecord(probe, unit.records[rest]);
    }
    if (probe.Snapshot() != clean.whole) return "std::bad_alloc was swallowed, output changed";
  }
  if (escaped && probe.Factory().Procedure() != nullptr) return "the procedure stays open";
  if (escaped && open && probe.Procedures() != procedures + 1) {
    return "the procedure was not appended";
  }
  if (escaped && open && !probe.HasOutputMissing() && probe.Snapshot() != clean.whole) {
    return "the procedure is neither whole nor cut with \"Output Missing\"";
  }
  std::string problem = probe.IntactEarlierOutput();
  if (problem.empty()) problem = probe.AcceptsNextProcedure();
  return problem;
}

// The bytes allocated, with the process's conversion options forgotten: they are what the last
// session set, or what it had set when it failed.
std::size_t LiveBytes() {
  IocvReset();
  return CountingAllocator::LiveBytes();
}

// The leak check, which needs no sanitizer: once a failed session is gone, the bytes allocated
// are what they were before it.
std::string Leaked(std::size_t liveBefore) {
  const std::size_t live = LiveBytes();
  if (live == liveBefore) return std::string();
  return "live bytes went from " + std::to_string(liveBefore) + " to " + std::to_string(live);
}

// The replay: a fresh session plays the unit up to record r and fails allocation failAt of it.
std::string FailByReplay(const Unit& unit, std::size_t r, std::size_t failAt, const Clean& clean) {
  const std::size_t liveBefore = LiveBytes();
  std::string problem;
  {
    const std::unique_ptr<OmSessionProbe> probe = StartUnit(unit);
    for (std::size_t i = 0; i < r; ++i) PlayRecord(*probe, unit.records[i]);
    const bool open = probe->Factory().Procedure() != nullptr;
    const std::size_t procedures = probe->Procedures();
    std::string other;
    const bool escaped = Escaped(*probe, unit.records[r],
                                 [failAt] { CountingAllocator::FailAt(failAt); }, other);
    problem = CountingAllocator::Failed()
                  ? Recovered(*probe, unit, r, open, procedures, escaped, other, clean)
                  : "the allocation did not happen";
  }
  return problem.empty() ? Leaked(liveBefore) : problem;
}

// The fork: the session is forked inside operator new at each allocation that fails, and the child
// fails it with nothing replayed, not even the start of its message, while the parent waits.
// Nothing in the hook may allocate (the parent's counts would shift): a child's problem comes back
// in a page shared with it, and the first one is kept in fixed storage.
struct Forks {
  const std::size_t* ks = nullptr;  // the failures of the record being played, one per hook call
  bool inChild = false;
  char* shared = nullptr;           // kProblemBytes: the last child's problem, "" for none
  std::array<char, 4000> problem{}; // the first problem, "" for none
  std::size_t problemK = 0;
};
constexpr std::size_t kProblemBytes = 4000;
Forks gForks;

// The allocation hook: true in the child, whose allocation then fails.
bool ForkChild() {
  Forks& f = gForks;
  const std::size_t k = *f.ks++;
  f.shared[0] = '\0';
  const pid_t pid = fork();
  if (pid == 0) return f.inChild = true;
  int status = 0;
  if (pid < 0) {
    std::snprintf(f.shared, kProblemBytes, "fork failed");
  } else if (waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0) {
    return false;
  } else if (f.shared[0] == '\0') {
    std::snprintf(f.shared, kProblemBytes, "the child died (status %d)", status);
  }
  if (f.problem[0] == '\0') {
    std::snprintf(f.problem.data(), f.problem.size(), "%s", f.shared);
    f.problemK = k;
  }
  return false;
}

// In the child, after the failed message: checks, reports and exits.
[[noreturn]] void EndChild(std::unique_ptr<OmSessionProbe>& probe, const Unit& unit, std::size_t r,
                           bool open, std::size_t procedures, bool escaped,
                           const std::string& other, const Clean& clean, std::size_t liveBefore) {
  std::string problem = Recovered(*probe, unit, r, open, procedures, escaped, other, clean);
  if (problem.empty()) {
    probe.reset();
    problem = Leaked(liveBefore);
  }
  std::snprintf(gForks.shared, kProblemBytes, "%s", problem.c_str());
  _exit(problem.empty() ? 0 : 1);
}

// Where replays stop and forks take over. Under AddressSanitizer a replay costs about 1 ms (the
// session, the earlier procedure, the checks) and 3 to 4 us for each allocation before the one
// that fails; a fork costs 4 to 9 ms in the kernel (copying the page tables, most of them the
// sanitizer's) and then the child's copies of every page it writes, 25 to 40 ms in all for a
// child of a bootstrapped procedure some 30,000 allocations in (a replay there: 100 ms). They
// meet near 10,000 allocations.
constexpr std::size_t kReplayUpTo = 10000;

// Fails allocations ks of the unit (ascending, numbered from 1 over its records) one at a time.
// Returns the first problem, with where it happened.
std::string SweepUnit(const Unit& unit, const Clean& clean, const std::vector<std::size_t>& ks) {
  std::string problem;
  auto report = [&](std::size_t k, const std::string& found) {
    if (found.empty() || !problem.empty()) return;
    std::size_t r = 0;
    std::size_t done = 0;
    for (; done + clean.perRecord[r] < k; ++r) done += clean.perRecord[r];
    problem = "record " + std::to_string(r) + " (code " + std::to_string(unit.records[r].code) +
              "), allocation " + std::to_string(k - done) + " of its " +
              std::to_string(clean.perRecord[r]) + ": " + found;
  };
  std::size_t i = 0;
  std::size_t r = 0;
  std::size_t done = 0;  // allocations of the records before r
  for (; i < ks.size() && ks[i] <= kReplayUpTo && problem.empty(); ++i) {
    for (; done + clean.perRecord[r] < ks[i]; ++r) done += clean.perRecord[r];
    report(ks[i], FailByReplay(unit, r, ks[i] - done, clean));
  }
  if (i == ks.size() || !problem.empty()) return problem;

  // The hook's allocation counts, one record's at a time: room made before the leak check's count.
  std::vector<std::size_t> points;
  points.reserve(*std::max_element(clean.perRecord.begin(), clean.perRecord.end()));
  static char* const shared = static_cast<char*>(
      mmap(nullptr, kProblemBytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  if (shared == MAP_FAILED) return "no shared page for the children";
  gForks = Forks();
  gForks.shared = shared;
  const std::size_t liveBefore = LiveBytes();
  std::unique_ptr<OmSessionProbe> probe = StartUnit(unit);
  done = 0;
  for (r = 0; r < unit.records.size() && i < ks.size() && problem.empty(); ++r) {
    const bool open = probe->Factory().Procedure() != nullptr;
    const std::size_t procedures = ks[i] <= done + clean.perRecord[r] ? probe->Procedures() : 0;
    std::size_t before = 0;
    const std::size_t first = i;
    auto arm = [&] {
      before = CountingAllocator::Allocations();
      points.clear();
      for (; i < ks.size() && ks[i] <= done + clean.perRecord[r]; ++i) {
        points.push_back(before + ks[i] - done);
      }
      gForks.ks = ks.data() + first;
      CountingAllocator::CallAt(points.data(), points.size(), &ForkChild);
    };
    std::string other;
    const bool escaped = Escaped(*probe, unit.records[r], arm, other);
    if (gForks.inChild) {
      EndChild(probe, unit, r, open, procedures, escaped, other, clean, liveBefore);
    }
    if (escaped || CountingAllocator::Allocations() - before != clean.perRecord[r]) {
      problem = "record " + std::to_string(r) +
                " failed or made another number of allocations than counted";
    }
    done += clean.perRecord[r];
  }
  if (gForks.problem[0] != '\0') report(gForks.problemK, gForks.problem.data());
  return problem;
}

constexpr OmStreamWriter::ByteOrder kOrder = OmStreamWriter::ByteOrder::LittleEndian;

std::filesystem::path ExamplesDir() {
  const char* source = std::getenv("OMF_SOURCE_DIR");
  return std::filesystem::path(source != nullptr && *source != '\0' ? source : OMF_SOURCE_DIR_DEFAULT) /
         "examples";
}

// A sample stream by its name, or an example by its file name.
std::vector<OmStreamRecord> Stream(const std::string& name) {
  // The samples in the byte order of the machines we build on; the settings sample has no
  // procedure, and a failure there must change nothing.
  for (const OmSampleStreams::Named& sample : OmSampleStreams::All(kOrder)) {
    if (sample.name == name) return sample.stream.Records();
  }
  OmStreamReader reader = OmStreamReader::FromFile((ExamplesDir() / name).string());
  std::vector<OmStreamRecord> records;
  for (OmStreamRecord record; reader.Next(record);) records.push_back(record);
  return records;
}

// A stream's sweep is cut into shards that ctest runs side by side, one per kRecordsPerShard
// records (a cheap stand-in for its allocations, known when the tests are listed): shard index of
// count fails every count-th of the stream's chosen allocations, from the index-th.
struct Shard {
  std::string stream;
  std::size_t index = 0;
  std::size_t count = 1;
};

std::vector<Shard> Shards() {
  constexpr std::size_t kRecordsPerShard = 3000;
  std::vector<std::string> names;
  for (const OmSampleStreams::Named& sample : OmSampleStreams::All(kOrder)) {
    names.push_back(sample.name);
  }
  std::set<std::string> examples;
  for (const auto& entry : std::filesystem::directory_iterator(ExamplesDir())) {
    if (entry.path().extension() == ".oms") examples.insert(entry.path().filename().string());
  }
  names.insert(names.end(), examples.begin(), examples.end());
  std::vector<Shard> shards;
  for (const std::string& name : names) {
    const std::size_t count = std::max<std::size_t>(
        (Stream(name).size() + kRecordsPerShard - 1) / kRecordsPerShard, 1);
    for (std::size_t index = 0; index < count; ++index) shards.push_back(Shard{name, index, count});
  }
  return shards;
}

void PrintTo(const Shard& shard, std::ostream* out) {
  *out << shard.stream << ", shard " << shard.index + 1 << " of " << shard.count;
}

class FailureInjectionSweep : public testing::TestWithParam<Shard> {};

// Each sample procedure and each recorded example: every allocation (where a stream makes more
// than kEveryUpTo, every stride-th, kSampled in all) fails once, with no crash and no leak,
// std::bad_alloc reaches the host, the procedure is whole or cut with "Output Missing", the
// earlier output stays and the next procedure is whole. A failure in a bootstrapped procedure
// costs 25 to 40 ms under the sanitizers; 4,000 of the 62,643 allocations of the largest example
// keep its share of the sweep near that of the two next largest, swept whole.
TEST_P(FailureInjectionSweep, EveryAllocationFailsOnce) {
  constexpr std::size_t kEveryUpTo = 20000;
  constexpr std::size_t kSampled = 4000;
  const Shard& shard = GetParam();
  const std::vector<Unit> units = Units(Stream(shard.stream));
  ASSERT_FALSE(units.front().records.empty());
  std::vector<Clean> cleans;
  std::size_t total = 0;
  for (const Unit& unit : units) {
    cleans.push_back(CountClean(unit));
    total += cleans.back().total;
  }
  const std::size_t stride = total > kEveryUpTo ? (total + kSampled - 1) / kSampled : 1;
  std::size_t first = 0;  // the stream's allocations before the unit's
  std::size_t failures = 0;
  for (std::size_t u = 0; u < units.size(); ++u) {
    SCOPED_TRACE("procedure " + std::to_string(u + 1) + " of " + std::to_string(units.size()));
    std::vector<std::size_t> ks;
    for (std::size_t k = 1; k <= cleans[u].total; ++k) {
      const std::size_t j = first + k - 1;
      if (j % stride == 0 && j / stride % shard.count == shard.index) ks.push_back(k);
    }
    first += cleans[u].total;
    if (ks.empty()) continue;
    {
      // One failure first: anything the recovery caches for the rest of the program exists
      // before the leak check counts live bytes.
      const std::unique_ptr<OmSessionProbe> probe = StartUnit(units[u]);
      CountingAllocator::FailAt(cleans[u].total / 2 + 1);
      try {
        for (const OmStreamRecord& record : units[u].records) PlayRecord(*probe, record);
      } catch (const std::bad_alloc&) {
      }
      CountingAllocator::Disarm();
      probe->AcceptsNextProcedure();
    }
    EXPECT_EQ(SweepUnit(units[u], cleans[u], ks), "");
    failures += ks.size();
  }
  EXPECT_GT(failures, 0u);
}

INSTANTIATE_TEST_SUITE_P(Streams, FailureInjectionSweep, testing::ValuesIn(Shards()),
                         [](const testing::TestParamInfo<Shard>& info) {
                           std::string name = info.param.stream;
                           for (char& c : name) {
                             if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
                           }
                           return name + "_" + std::to_string(info.param.index);
                         });

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

// The table holds exactly the cells with a value (0: absent): walked and looked up.
void ExpectHolds(const OmPivotTable& table, const std::map<std::vector<int>, double>& values) {
  std::map<std::vector<int>, double> walked;
  std::map<std::vector<int>, double> present;
  for (auto it = table.FirstCell(); it != table.EndCell(); ++it) {
    const auto* number = dynamic_cast<const OmNumber*>(table.Cell(it.Coord()));
    walked[it.Coord()] = number != nullptr ? number->Value() : -1;
  }
  for (const auto& [at, value] : values) {
    if (value > 0) {
      present[at] = value;
    } else {
      EXPECT_EQ(table.Cell(at), nullptr);
    }
  }
  EXPECT_EQ(walked, present);
  EXPECT_EQ(table.NCells(), present.size());
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
  for (const StoreOp& op : ops) {
    if (op.kind == StoreOp::kPut) values[op.at] = 0;
  }
  double next = 0;
  auto apply = [&](const StoreOp& op) {
    switch (op.kind) {
      case StoreOp::kPut:
        table.Cell(op.at, std::make_unique<OmNumber>(next + 1));
        values.at(op.at) = ++next;
        break;
      case StoreOp::kFind:
        table.Cell(op.at);
        break;
      case StoreOp::kTake:
        if (table.TakeCell(op.at) != nullptr) values.at(op.at) = 0;
        break;
      case StoreOp::kDrop:
        table.DropCells(op.at[0], {op.at[1]});
        for (auto& [at, value] : values) value = at[std::size_t(op.at[0])] == op.at[1] ? 0 : value;
        break;
    }
  };
  const std::size_t before = CountingAllocator::Allocations();
  CountingAllocator::FailAt(failAt);
  for (const StoreOp& op : ops) {
    try {
      apply(op);
    } catch (const std::bad_alloc&) {
      ExpectHolds(table, values);
      apply(op);
    }
  }
  CountingAllocator::Disarm();
  const std::size_t allocations = CountingAllocator::Allocations() - before;
  ExpectHolds(table, values);
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
