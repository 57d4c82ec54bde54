#include "platform/bootstats/MCBSPercentileTTS.h"

#include <limits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
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

TEST(MCBSPercentileTTS, EachAlternativeGivesItsShareOfReplicatesWithAsExtremeT) {
  // Observed t = (0 - (-2)) / 1 = 2; t* = -3, -2, -1, 1, 2, 3.
  MCBSPercentileTTS test = WithOffsets(0.0, 1.0, -2.0, {-3, -2, -1, 1, 2, 3});
  EXPECT_DOUBLE_EQ(test.GetProbability(MCBSPercentileTTS::TwoTailed), 5.0 / 7.0);
  EXPECT_DOUBLE_EQ(test.GetProbability(MCBSPercentileTTS::GreaterThan), 3.0 / 7.0);
  EXPECT_DOUBLE_EQ(test.GetProbability(MCBSPercentileTTS::LessThan), 6.0 / 7.0);
  // A negative observed t of the same size gives the same two-tailed share.
  const MCBSPercentileTTS mirrored = WithOffsets(0.0, 1.0, 2.0, {-3, -2, -1, 1, 2, 3});
  EXPECT_DOUBLE_EQ(mirrored.GetProbability(MCBSPercentileTTS::TwoTailed), 5.0 / 7.0);
  EXPECT_DOUBLE_EQ(mirrored.GetProbability(MCBSPercentileTTS::LessThan), 3.0 / 7.0);
  // A copy keeps its own replicates.
  const MCBSPercentileTTS copy = test;
  test.AddBootstrapStats(0.0, 1.0);
  EXPECT_EQ(copy.GetCount(), 6u);
  EXPECT_DOUBLE_EQ(copy.GetProbability(MCBSPercentileTTS::TwoTailed), 5.0 / 7.0);
  // An alternative outside the three is refused.
  EXPECT_THAT([&] { test.GetProbability(static_cast<MCBSPercentileTTS::AltHypType>(3)); },
              testing::ThrowsMessage<OMSException>(testing::StrEq(
                  "MCBSPercentileTTS::GetProbability -- alternative invalid, value 1 == 3, "
                  "value 2 == 0")));
}

TEST(MCBSPercentileTTS, ExtremeOrUnusableInputsGiveOneZeroOrSystemMissing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> pair{-1, 1};
  const struct {
    const char* what; double estimate, stdError, testValue; std::vector<double> offsets; double p;
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
  // Only the first two give a t*; the last one's overflows.
  const std::pair<double, double> pairs[] = {
      {3.0, 1.0}, {1.0, 1.0}, {5.0, 0.0}, {5.0, -1.0}, {5.0, kMissing},
      {kMissing, 1.0}, {nan, 1.0}, {5.0, nan}, {inf, 1.0}, {5.0, 1e-320}};
  for (const auto& [value, stdError] : pairs) test.AddBootstrapStats(value, stdError);
  EXPECT_EQ(test.GetCount(), 2u);
  EXPECT_DOUBLE_EQ(test.GetProbability(MCBSPercentileTTS::TwoTailed), 2.0 / 3.0);
}
