// The sample streams are the baseline that every hostile stream is cut from: each must play
// through a session in either byte order without a single recovered failure, and leave the
// session able to take the next procedure. A sample that failed would hide real faults.
#include <gtest/gtest.h>

#include "fuzz/OmSampleStreams.h"
#include "fuzz/OmSessionProbe.h"
#include "platform/errors/OMSException.h"

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

INSTANTIATE_TEST_SUITE_P(BothOrders, SampleStreams,
                         ::testing::Values(ByteOrder::LittleEndian, ByteOrder::BigEndian),
                         [](const ::testing::TestParamInfo<ByteOrder>& info) {
                           return info.param == ByteOrder::LittleEndian ? "LittleEndian"
                                                                        : "BigEndian";
                         });

}  // namespace
