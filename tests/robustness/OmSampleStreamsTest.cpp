// The sample streams are the baseline that every hostile stream is cut from: each must play
// through a session in either byte order without a single recovered failure, and leave the
// session able to take the next procedure. A sample that failed would hide real faults.
#include <gtest/gtest.h>

#include <set>

#include "fuzz/OmSampleStreams.h"
#include "fuzz/OmSessionProbe.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmStringCellUTF8.h"
#include "platform/outputmodel/OmTextBlock.h"
#include "platform/stream/MessageCodes.h"
#include "platform/stream/OmStreamReader.h"

namespace {

constexpr std::int16_t Code(MessageCode code) { return std::int16_t(code); }

using ByteOrder = OmSampleStreams::ByteOrder;

class SampleStreams : public ::testing::TestWithParam<ByteOrder> {};

std::string ErrorText(OmSessionProbe& probe) {
  const OMSException* error = probe.Factory().LastRecoveredError();
  return error ? error->what() : "";
}

TEST_P(SampleStreams, EverySamplePlaysWithoutAFailure) {
  for (const OmSampleStreams::Named& sample : OmSampleStreams::All(GetParam())) {
    SCOPED_TRACE(sample.name);
    OmSessionProbe probe;
    EXPECT_TRUE(probe.Feed(sample.stream));
    EXPECT_EQ(probe.Factory().RecoveredErrorCount(), 0u) << ErrorText(probe);
    EXPECT_EQ(probe.Factory().Procedure(), nullptr);
    EXPECT_FALSE(probe.HasOutputMissing());
    EXPECT_EQ(probe.AcceptsNextProcedure(), "");
  }
}

TEST_P(SampleStreams, ProceduresLandWithTheirTablesAndBlocks) {
  OmSessionProbe probe;
  for (const OmSampleStreams::Named& sample : OmSampleStreams::All(GetParam())) {
    if (sample.name == "session") {
      ASSERT_TRUE(probe.Feed(sample.stream));
    }
  }
  // Descriptives, Frequencies and Graph, with one table each.
  EXPECT_EQ(probe.Procedures(), 3u);
  EXPECT_EQ(probe.Tables(), 3u);
  const std::string text = probe.Snapshot();
  for (const char* expected :
       {"Descriptive Statistics", "170.25", "Frequency table of gender", "Case Processing Summary",
        "Wave 1", "between procedures", "after two empty lines"}) {
    EXPECT_NE(text.find(expected), std::string::npos) << expected << " missing from\n" << text;
  }
}

// The texts that take several messages are whole in their cells just before the table takes
// them: the chunked string, a long string of kind 1 (part A only), long string pieces of kind 2
// (parts A and B) and long texts (part C only up to 99 bytes).
TEST_P(SampleStreams, ChunkedAndLongTextsArriveWhole) {
  OmStreamWriter sample(GetParam());
  sample.ByteOrderProbe();
  OmSampleStreams::LongTexts(sample, 5, 40000);
  const std::vector<OmStreamRecord>& records = sample.Records();
  OmSessionProbe probe;
  std::size_t next = 0;
  auto playUntil = [&](std::int16_t code) {
    for (; next < records.size() && records[next].code != code; ++next) {
      ASSERT_TRUE(probe.Feed(records[next]));
    }
    ASSERT_LT(next, records.size());
  };
  auto texts = [&probe](int id) {
    const auto* cell = dynamic_cast<const OmStringCellUTF8*>(probe.Factory().PendingCell(id));
    return cell ? cell->Texts() : std::vector<std::string>{"not a UTF-8 string cell"};
  };

  playUntil(Code(MessageCode::IPC_BEGIN_TABLE));
  const auto* chunked = dynamic_cast<const OmStringCell*>(probe.Factory().PendingCell(1));
  ASSERT_NE(chunked, nullptr);
  // The sample marks every 64th byte with a letter, so a piece lost or repeated shows.
  std::string whole(40000, 'x');
  for (std::size_t i = 0; i < whole.size(); i += 64) whole[i] = char('a' + (i / 64) % 26);
  EXPECT_TRUE(chunked->Text() == whole) << chunked->Text().size() << " bytes";
  const auto* title = dynamic_cast<const OmStringCell*>(probe.Factory().PendingCell(2));
  ASSERT_NE(title, nullptr);
  EXPECT_EQ(title->Text(), "Title in ");

  playUntil(Code(MessageCode::IPC_CELL));
  EXPECT_EQ(texts(5), (std::vector<std::string>{"first part, ", "second part, ", "third part"}));
  EXPECT_EQ(texts(6), (std::vector<std::string>{"A", "B"}));

  playUntil(Code(MessageCode::IPC_END_PROCEDURE));
  ASSERT_TRUE(probe.Feed(records[next]));
  EXPECT_EQ(probe.Factory().RecoveredErrorCount(), 0u) << ErrorText(probe);
  EXPECT_EQ(probe.Tables(), 1u);
  const std::string text = probe.Snapshot();
  for (const char* expected : {"Title in", "Dims", "first part,", "translatable"}) {
    EXPECT_NE(text.find(expected), std::string::npos) << expected << " missing from\n" << text;
  }
}

TEST_P(SampleStreams, FileBytesReadBackRecordForRecord) {
  for (const OmSampleStreams::Named& sample : OmSampleStreams::All(GetParam())) {
    SCOPED_TRACE(sample.name);
    OmStreamReader reader(sample.stream.FileBytes());
    OmStreamRecord record;
    std::size_t n = 0;
    while (reader.Next(record)) {
      ASSERT_LT(n, sample.stream.Records().size());
      EXPECT_EQ(record, sample.stream.Records()[n]);
      ++n;
    }
    EXPECT_EQ(n, sample.stream.Records().size());
  }
}

// The hostile-stream tests cut and falsify the samples' records: a code no sample uses would go
// untested there. The two codes that always fail have tests of their own.
TEST_P(SampleStreams, BetweenThemUseEveryImplementedMessageCode) {
  std::set<std::int16_t> used;
  for (const OmSampleStreams::Named& sample : OmSampleStreams::All(GetParam())) {
    for (const OmStreamRecord& record : sample.stream.Records()) used.insert(record.code);
  }
  for (const MessageCodeName& row : kMessageCodeNames) {
    if (row.code == MessageCode::IPC_REQUIRED_TABLE) continue;
    if (row.code == MessageCode::IPC_SCRATCH_CATEGORY) continue;
    EXPECT_EQ(used.count(std::int16_t(row.code)), 1u) << row.name;
  }
}

INSTANTIATE_TEST_SUITE_P(BothOrders, SampleStreams,
                         ::testing::Values(ByteOrder::LittleEndian, ByteOrder::BigEndian),
                         [](const ::testing::TestParamInfo<ByteOrder>& info) {
                           return info.param == ByteOrder::LittleEndian ? "LittleEndian"
                                                                        : "BigEndian";
                         });

}  // namespace
