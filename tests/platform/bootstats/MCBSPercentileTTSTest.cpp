#include "platform/bootstats/MCBSPercentileTTS.h"

#include <vector>

#include <gtest/gtest.h>

#include "platform/bootstats/MCBSCommon.h"
#include "platform/errors/OMSException.h"

namespace {

// Replicates estimate + d for each offset d, every one with standard error 1: t* = d.
MCBSPercentileTTS WithOffsets(double estimate, double stdError, double testValue,
                              const std::vector<double>& offsets) {
  MCBSPercentileTTS test(estimate, stdError, testValue);
  for (double offset : offsets) test.AddBootstrapStats(estimate + offset, 1.0);
  return test;
}
}  // namespace

TEST(MCBSPercentileTTS, SymmetricReplicatesGiveTheShareOfLargerAbsoluteT) {
  // Observed t = (0 - (-2)) / 1 = 2; t* = -3, -2, -1, 1, 2, 3.
  const MCBSPercentileTTS test = WithOffsets(0.0, 1.0, -2.0, {-3, -2, -1, 1, 2, 3});
  EXPECT_DOUBLE_EQ(test.GetProbability(MCBSPercentileTTS::TwoTailed), 5.0 / 7.0);
  EXPECT_DOUBLE_EQ(test.GetProbability(MCBSPercentileTTS::GreaterThan), 3.0 / 7.0);
  EXPECT_DOUBLE_EQ(test.GetProbability(MCBSPercentileTTS::LessThan), 6.0 / 7.0);
  // The calculator asks by number: 2 is two-tailed.
  EXPECT_DOUBLE_EQ(test.GetProbability(static_cast<MCBSPercentileTTS::AltHypType>(2)), 5.0 / 7.0);
  // A negative observed t of the same size gives the same two-tailed share.
  const MCBSPercentileTTS mirrored = WithOffsets(0.0, 1.0, 2.0, {-3, -2, -1, 1, 2, 3});
  EXPECT_DOUBLE_EQ(mirrored.GetProbability(MCBSPercentileTTS::TwoTailed), 5.0 / 7.0);
  EXPECT_DOUBLE_EQ(mirrored.GetProbability(MCBSPercentileTTS::LessThan), 3.0 / 7.0);
}

TEST(MCBSPercentileTTS, UnknownAlternativeIsRejected) {
  const MCBSPercentileTTS test = WithOffsets(0.0, 1.0, 0.0, {1.0});
  try {
    test.GetProbability(static_cast<MCBSPercentileTTS::AltHypType>(3));
    FAIL() << "no exception";
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message(), "MCBSPercentileTTS::GetProbability -- alternative invalid");
    EXPECT_EQ(e.Value1(), 3.0);
  }
}

TEST(MCBSPercentileTTS, CopyKeepsItsOwnState) {
  MCBSPercentileTTS original = WithOffsets(0.0, 1.0, -2.0, {-3, -2, -1, 1, 2, 3});
  const MCBSPercentileTTS copy = original;
  original.AddBootstrapStats(0.0, 1.0);
  EXPECT_EQ(copy.GetCount(), 6u);
  EXPECT_DOUBLE_EQ(copy.GetProbability(MCBSPercentileTTS::TwoTailed), 5.0 / 7.0);
}
