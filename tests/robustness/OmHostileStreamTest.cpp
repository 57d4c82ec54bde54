// Hostile streams: every record of every sample stream, in both byte orders, replayed with its
// payload cut short and with each of its leading 32-bit fields lying (by one, hugely, negative).
// Whatever the lie, the session must report it or ignore it, never crash or read past a payload,
// keep the procedure completed before it intact, and take the next procedure whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "fuzz/OmSampleStreams.h"
#include "fuzz/OmSessionProbe.h"
#include "platform/stream/MessageCodes.h"
#include "platform/stream/OmStreamWriter.h"

namespace {

using ByteOrder = OmSampleStreams::ByteOrder;

std::string CodeName(std::int16_t code) {
  const char* name = MessageCodeNameOf(code);
  return name ? name : std::to_string(code);
}

// One session that has played a whole procedure (the earlier output) and then the records of a
// sample before the hostile one.
struct Replay {
  explicit Replay(const OmStreamWriter& sample, std::size_t upTo) {
    OmStreamWriter earlier;
    OmSampleStreams::Descriptives(earlier, 1);
    EXPECT_TRUE(probe.Feed(earlier));
    probe.MarkEarlierOutput();
    const std::vector<OmStreamRecord>& records = sample.Records();
    for (std::size_t i = 0; i < upTo; ++i) EXPECT_TRUE(probe.Feed(records[i]));
    errorsBefore = probe.Factory().RecoveredErrorCount();
  }

  // Feeds the hostile record; true when the session reported it (recovered or let it out).
  bool Reported(const OmStreamRecord& record) {
    const bool clean = probe.Feed(record);
    return !clean || probe.Factory().RecoveredErrorCount() > errorsBefore;
  }

  // "" when the earlier output is intact and the next procedure arrives whole.
  std::string Recovery() {
    std::string problem = probe.IntactEarlierOutput();
    if (problem.empty()) problem = probe.AcceptsNextProcedure();
    if (problem.empty()) problem = probe.IntactEarlierOutput();
    return problem;
  }

  OmSessionProbe probe;
  std::size_t errorsBefore = 0;
};

std::vector<std::size_t> Cuts(std::size_t size) {
  std::set<std::size_t> cuts;
  // At and just past each boundary of the leading 32-bit fields.
  for (std::size_t n = 0; n < std::min<std::size_t>(size, 17); ++n) {
    if (n % 4 <= 1) cuts.insert(n);
  }
  if (size > 0) {
    cuts.insert(size / 2);
    cuts.insert(size - 1);
  }
  return {cuts.begin(), cuts.end()};
}

void PutInt32(std::vector<std::uint8_t>& payload, std::size_t at, std::int32_t value,
              ByteOrder order) {
  const auto bits = std::uint32_t(value);
  for (std::size_t i = 0; i < 4; ++i) {
    const std::size_t shift = order == ByteOrder::LittleEndian ? 8 * i : 8 * (3 - i);
    payload[at + i] = std::uint8_t(bits >> shift);
  }
}

std::int32_t GetInt32(const std::vector<std::uint8_t>& payload, std::size_t at, ByteOrder order) {
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const std::size_t shift = order == ByteOrder::LittleEndian ? 8 * i : 8 * (3 - i);
    bits |= std::uint32_t(payload[at + i]) << shift;
  }
  return std::int32_t(bits);
}

struct Case {
  ByteOrder order;
  std::string sample;
};

class HostileRecords : public ::testing::TestWithParam<Case> {
 protected:
  const OmStreamWriter& Sample() {
    if (_samples.empty()) _samples = OmSampleStreams::All(GetParam().order);
    for (const OmSampleStreams::Named& named : _samples) {
      if (named.name == GetParam().sample) return named.stream;
    }
    ADD_FAILURE() << "no sample " << GetParam().sample;
    return _samples.front().stream;
  }

 private:
  std::vector<OmSampleStreams::Named> _samples;
};

// Whether a payload cut to cut bytes may go unreported: the byte-order probe counts by its
// presence; parts of multi-part messages frame their shares with no length of their own (a short
// share shows only once the whole body is read, if at all); a long text's part C above 99 bytes
// is dropped unread.
bool CutMayPass(const OmStreamRecord& record, std::size_t cut, ByteOrder order) {
  constexpr std::size_t kPartHeader = 12;
  switch (MessageCode(record.code)) {
    case MessageCode::IPC_BYTE_ORDER:
      return true;
    case MessageCode::IPC_END_PROCEDURE:
    case MessageCode::IPC_MODEL_PMML:
      return cut >= kPartHeader;
    case MessageCode::IPC_LONG_TEXT: {
      const std::size_t partsAB = std::size_t(GetInt32(record.payload, 0, order)) +
                                  std::size_t(GetInt32(record.payload, 4, order));
      return GetInt32(record.payload, 8, order) > 99 && cut >= 16 + partsAB;
    }
    default:
      return false;
  }
}

// The baseline every hostile record is cut from: the whole sample plays without a single
// recovered failure and closes its procedure whole. A sample that failed would hide real faults.
TEST_P(HostileRecords, TheWholeSamplePlaysWithoutAFailure) {
  Replay replay(Sample(), Sample().Records().size());
  EXPECT_EQ(replay.errorsBefore, 0u);
  EXPECT_EQ(replay.probe.Factory().Procedure(), nullptr);
  EXPECT_FALSE(replay.probe.HasOutputMissing());
  EXPECT_EQ(replay.Recovery(), "");
}

TEST_P(HostileRecords, CutPayloadsAreReportedAndTheSessionRecovers) {
  const OmStreamWriter& sample = Sample();
  const std::vector<OmStreamRecord>& records = sample.Records();
  for (std::size_t i = 0; i < records.size(); ++i) {
    for (std::size_t cut : Cuts(records[i].payload.size())) {
      SCOPED_TRACE(CodeName(records[i].code) + " record " + std::to_string(i) + " cut to " +
                   std::to_string(cut) + " of " + std::to_string(records[i].payload.size()));
      Replay replay(sample, i);
      OmStreamRecord hostile = records[i];
      hostile.payload.resize(cut);
      const bool reported = replay.Reported(hostile);
      if (!CutMayPass(records[i], cut, GetParam().order)) {
        EXPECT_TRUE(reported);
      }
      ASSERT_EQ(replay.Recovery(), "");
    }
  }
}

TEST_P(HostileRecords, LyingFieldsNeverCrashAndTheSessionRecovers) {
  const OmStreamWriter& sample = Sample();
  const ByteOrder order = GetParam().order;
  const std::vector<OmStreamRecord>& records = sample.Records();
  for (std::size_t i = 0; i < records.size(); ++i) {
    const std::size_t size = records[i].payload.size();
    for (std::size_t at = 0; at + 4 <= std::min<std::size_t>(size, 20); at += 4) {
      const std::int32_t truth = GetInt32(records[i].payload, at, order);
      for (std::int32_t lie : {std::int32_t(std::uint32_t(truth) + 1), std::int32_t(-1),
                               std::int32_t(0x7FFFFFFF)}) {
        if (lie == truth) continue;
        SCOPED_TRACE(CodeName(records[i].code) + " record " + std::to_string(i) + " field at " +
                     std::to_string(at) + " " + std::to_string(truth) + " -> " +
                     std::to_string(lie));
        Replay replay(sample, i);
        OmStreamRecord hostile = records[i];
        PutInt32(hostile.payload, at, lie, order);
        replay.Reported(hostile);
        // The next few records after the lie: later messages may find the session's state
        // different from what the sender believed.
        for (std::size_t rest = i + 1; rest < std::min(records.size(), i + 9); ++rest) {
          replay.probe.Feed(records[rest]);
        }
        ASSERT_EQ(replay.Recovery(), "");
      }
    }
  }
}

std::vector<Case> AllCases() {
  std::vector<Case> cases;
  for (ByteOrder order : {ByteOrder::LittleEndian, ByteOrder::BigEndian}) {
    for (const OmSampleStreams::Named& named : OmSampleStreams::All(order)) {
      if (named.name == "session") continue;  // the other samples in one, nothing new
      cases.push_back({order, named.name});
    }
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(EverySample, HostileRecords, ::testing::ValuesIn(AllCases()),
                         [](const ::testing::TestParamInfo<Case>& info) {
                           return info.param.sample +
                                  (info.param.order == ByteOrder::LittleEndian ? "_LE" : "_BE");
                         });

}  // namespace
