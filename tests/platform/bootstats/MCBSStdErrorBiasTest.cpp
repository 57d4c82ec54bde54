#include "platform/bootstats/MCBSStdErrorBias.h"

#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "platform/bootstats/MCBSCommon.h"
#include "tests/platform/bootstats/BootReferenceData.h"

namespace {
constexpr double kMissing = MCBSCommon::SystemMissing;

MCBSStdErrorBias Fed(const std::vector<double>& values) {
  MCBSStdErrorBias stats;
  for (double value : values) stats.AddBootstrapStat(value);
  return stats;
}
}  // namespace

// Expected values: R 4.2.2, mean(t) - t0 and sd(t) on the sets of BootReferenceData.h. Both are
// plain sums, so agreement is to rounding: 1e-12 relative.
TEST(MCBSStdErrorBias, BiasAndStandardErrorMatchRReference) {
  struct Expected {
    const BootReference::ReplicateSet& set;
    double bias;
    double standardError;
  };
  const Expected cases[] = {
      {BootReference::CaseA(), -0.068065799999999954, 0.21352522610186514},
      {BootReference::CaseB(), -0.047279467336683423, 0.22852415919580402},
      {BootReference::CaseC(), 0.8059779899999997, 2.0699953109185887},
  };
  for (const Expected& expected : cases) {
    const MCBSStdErrorBias stats = Fed(expected.set.replicates);
    EXPECT_EQ(stats.GetCount(), expected.set.replicates.size());
    EXPECT_NEAR(stats.GetBias(expected.set.estimate), expected.bias,
                1e-12 * std::fabs(expected.bias));
    EXPECT_NEAR(stats.GetStandardError(), expected.standardError,
                1e-12 * expected.standardError);
  }
}

TEST(MCBSStdErrorBias, SmallSetGivesHandComputedValues) {
  const MCBSStdErrorBias stats = Fed({1.0, 2.0, 3.0, 4.0});
  EXPECT_DOUBLE_EQ(stats.GetMean(), 2.5);
  EXPECT_DOUBLE_EQ(stats.GetBias(2.0), 0.5);
  EXPECT_DOUBLE_EQ(stats.GetBias(3.0), -0.5);
  // Squared deviations 2.25 + 0.25 + 0.25 + 2.25 = 5 over n - 1 = 3.
  EXPECT_DOUBLE_EQ(stats.GetStandardError(), std::sqrt(5.0 / 3.0));
}

TEST(MCBSStdErrorBias, StandardErrorStaysExactForLargeCloseValues) {
  // A one-pass sum of squares loses every digit here (the squares are near 1e18); the spread of
  // 4, 7, 13, 16 around 10 gives a variance of 90 / 3 = 30.
  const MCBSStdErrorBias stats = Fed({1e9 + 4, 1e9 + 7, 1e9 + 13, 1e9 + 16});
  EXPECT_NEAR(stats.GetStandardError(), std::sqrt(30.0), 1e-9);
  EXPECT_NEAR(stats.GetBias(1e9), 10.0, 1e-6);
}

TEST(MCBSStdErrorBias, IdenticalReplicatesHaveZeroStandardError) {
  const MCBSStdErrorBias stats = Fed({0.1, 0.1, 0.1, 0.1, 0.1, 0.1, 0.1});
  EXPECT_EQ(stats.GetStandardError(), 0.0);
  EXPECT_NEAR(stats.GetBias(0.1), 0.0, 1e-17);
}

TEST(MCBSStdErrorBias, WithoutReplicatesBothResultsAreSystemMissing) {
  const MCBSStdErrorBias stats;
  EXPECT_EQ(stats.GetCount(), 0u);
  EXPECT_EQ(stats.GetBias(1.0), kMissing);
  EXPECT_EQ(stats.GetStandardError(), kMissing);
  EXPECT_EQ(stats.GetMean(), kMissing);
}

TEST(MCBSStdErrorBias, OneReplicateGivesBiasButNoStandardError) {
  const MCBSStdErrorBias stats = Fed({3.5});
  EXPECT_DOUBLE_EQ(stats.GetBias(3.0), 0.5);
  EXPECT_EQ(stats.GetStandardError(), kMissing);
}

TEST(MCBSStdErrorBias, SystemMissingReplicatesAreAbsent) {
  const MCBSStdErrorBias stats = Fed({1.0, kMissing, 2.0, 3.0, kMissing, 4.0});
  EXPECT_EQ(stats.GetCount(), 4u);
  EXPECT_DOUBLE_EQ(stats.GetBias(2.0), 0.5);
  EXPECT_DOUBLE_EQ(stats.GetStandardError(), std::sqrt(5.0 / 3.0));
}

TEST(MCBSStdErrorBias, SystemMissingEstimateGivesSystemMissingBias) {
  const MCBSStdErrorBias stats = Fed({1.0, 2.0});
  EXPECT_EQ(stats.GetBias(kMissing), kMissing);
}

TEST(MCBSStdErrorBias, NotANumberOrInfinityMakesResultsSystemMissing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  for (double bad : {nan, inf, -inf}) {
    const MCBSStdErrorBias stats = Fed({1.0, bad, 2.0});
    EXPECT_EQ(stats.GetBias(1.0), kMissing) << bad;
    EXPECT_EQ(stats.GetStandardError(), kMissing) << bad;
  }
}

TEST(MCBSStdErrorBias, CopyKeepsItsOwnState) {
  MCBSStdErrorBias original = Fed({1.0, 2.0, 3.0, 4.0});
  const MCBSStdErrorBias copy = original;
  original.AddBootstrapStat(100.0);
  EXPECT_EQ(copy.GetCount(), 4u);
  EXPECT_DOUBLE_EQ(copy.GetBias(2.0), 0.5);
  EXPECT_EQ(original.GetCount(), 5u);

  MCBSStdErrorBias assigned;
  assigned = copy;
  assigned.AddBootstrapStat(9.0);
  EXPECT_EQ(copy.GetCount(), 4u);
  EXPECT_EQ(assigned.GetCount(), 5u);
}
