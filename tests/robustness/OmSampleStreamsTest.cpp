// The sample streams are the baseline that every hostile stream is cut from: each must play
// through a session in either byte order without a single recovered failure, and leave the
// session able to take the next procedure. A sample that failed would hide real faults.
#include <gtest/gtest.h>

#include <set>

#include "fuzz/OmSampleStreams.h"
#include "fuzz/OmSessionProbe.h"
#include "platform/errors/OMSException.h"
#include "platform/stream/MessageCodes.h"

namespace {

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
