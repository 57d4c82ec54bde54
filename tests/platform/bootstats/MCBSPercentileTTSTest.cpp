#include "platform/bootstats/MCBSPercentileTTS.h"

#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "platform/bootstats/MCBSCommon.h"
#include "platform/errors/OMSException.h"

namespace {
constexpr double kMissing = MCBSCommon::SystemMissing;

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

TEST(MCBSPercentileTTS, ExtremeOrUnusableInputsGiveOneZeroOrSystemMissing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> pair{-1, 1};
  const struct {
    const char* what;
    double estimate, stdError, testValue;
    std::vector<double> offsets;
    double p;
  } cases[] = {
      {"estimate at the test value", 1.5, 0.3, 1.5, {-0.4, 0.1, 0.2, 0.7}, 1.0},
      {"observed t beyond every replicate", 10.0, 1.0, 0.0, {-3, -2, -1, 1, 2, 3}, 1.0 / 7.0},
      {"zero standard error", 1.0, 0.0, 0.0, pair, kMissing},
      {"negative standard error", 1.0, -1.0, 0.0, pair, kMissing},
      {"system-missing standard error", 1.0, kMissing, 0.0, pair, kMissing},
      {"NaN standard error", 1.0, nan, 0.0, pair, kMissing},
      {"system-missing test value", 1.0, 1.0, kMissing, pair, kMissing},
      {"no replicates", 1.0, 1.0, 0.0, {}, kMissing},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(WithOffsets(c.estimate, c.stdError, c.testValue, c.offsets)
                  .GetProbability(MCBSPercentileTTS::TwoTailed),
              c.p);
  }
  MCBSPercentileTTS missingEstimate(kMissing, 1.0, 0.0);
  missingEstimate.AddBootstrapStats(1.0, 1.0);
  EXPECT_EQ(missingEstimate.GetProbability(MCBSPercentileTTS::TwoTailed), kMissing);
}

TEST(MCBSPercentileTTS, PairsWithoutAUsableTAreLeftOut) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  MCBSPercentileTTS test(0.0, 1.0, -2.0);
  test.AddBootstrapStats(3.0, 1.0);
  test.AddBootstrapStats(1.0, 1.0);
  test.AddBootstrapStats(5.0, 0.0);
  test.AddBootstrapStats(5.0, -1.0);
  test.AddBootstrapStats(5.0, kMissing);
  test.AddBootstrapStats(kMissing, 1.0);
  test.AddBootstrapStats(nan, 1.0);
  test.AddBootstrapStats(5.0, nan);
  test.AddBootstrapStats(inf, 1.0);
  test.AddBootstrapStats(5.0, 1e-320);  // t* overflows
  EXPECT_EQ(test.GetCount(), 2u);
  EXPECT_DOUBLE_EQ(test.GetProbability(MCBSPercentileTTS::TwoTailed), 2.0 / 3.0);
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
