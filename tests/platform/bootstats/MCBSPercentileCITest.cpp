#include "platform/bootstats/MCBSPercentileCI.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "platform/bootstats/MCBSCommon.h"
#include "tests/platform/bootstats/BootReferenceData.h"

namespace {
constexpr double kMissing = MCBSCommon::SystemMissing;

std::pair<double, double> Interval(const std::vector<double>& replicates, double level) {
  MCBSPercentileCI ci;
  ci.SetBootstrapStats(replicates);
  return ci.GetCI(level);
}

std::vector<double> OneTo(int count) {
  std::vector<double> values;
  for (int i = 1; i <= count; ++i) values.push_back(i);
  return values;
}

void ExpectBound(double actual, double expected) {
  if (expected == kMissing) {
    EXPECT_EQ(actual, kMissing);
  } else {
    EXPECT_NEAR(actual, expected, 1e-9 * std::fabs(expected));
  }
}
}  // namespace

// Expected bounds: R 4.2.2, boot 1.3-28.1, boot.ci(type = "perc") on the sets of
// BootReferenceData.h (see there). We use boot's own quantile rule, so the bounds agree to
// rounding of the normal quantiles: 1e-9 relative.
TEST(MCBSPercentileCI, BoundsMatchBootCiPercentile) {
  struct Expected {
    const BootReference::ReplicateSet& set;
    double level;
    double lower;
    double upper;
  };
  const Expected cases[] = {
      {BootReference::CaseA(), 0.50, 0.70071641298808718, 1.0267750430014346},
      {BootReference::CaseA(), 0.80, 0.56010032899616136, 1.2349344614169042},
      {BootReference::CaseA(), 0.90, 0.54756830242411614, 1.273276330605525},
      {BootReference::CaseB(), 0.90, 0.939043, 1.72156},
      {BootReference::CaseB(), 0.95, 0.841149, 1.74573},
      {BootReference::CaseB(), 0.99, 0.629225, 1.87745},
      {BootReference::CaseC(), 0.90, 1.0246086348937371, 7.4481167404787394},
      {BootReference::CaseC(), 0.95, 0.85518451289284547, 9.1953529882628153},
  };
  for (const Expected& expected : cases) {
    const auto [lower, upper] = Interval(expected.set.replicates, expected.level);
    EXPECT_NEAR(lower, expected.lower, 1e-9 * std::fabs(expected.lower)) << expected.level;
    EXPECT_NEAR(upper, expected.upper, 1e-9 * std::fabs(expected.upper)) << expected.level;
  }
}

TEST(MCBSPercentileCI, WholeRankTakesTheOrderStatisticExactly) {
  // 199 replicates at 90%: ranks 200 * 0.05 = 10 and 190, although 0.05 and 0.95 are not exact
  // in binary.
  std::vector<double> sorted = BootReference::CaseB().replicates;
  std::sort(sorted.begin(), sorted.end());
  const auto [lower, upper] = Interval(BootReference::CaseB().replicates, 0.90);
  EXPECT_EQ(lower, sorted[9]);
  EXPECT_EQ(upper, sorted[189]);
}

TEST(MCBSPercentileCI, InterpolatesOnTheNormalQuantileScale) {
  // Rank 5 * 0.3 = 1.5 lies between t(1) = 1 and t(2) = 2; R: 1 + (qnorm(.3) - qnorm(.2)) /
  // (qnorm(.4) - qnorm(.2)). A linear rule would give 1.5.
  EXPECT_NEAR(MCBSPercentileCI::Quantile({1.0, 2.0, 3.0, 4.0}, 0.3), 1.5392396239303676, 1e-12);
}

TEST(MCBSPercentileCI, EdgeCasesGiveTheirBoundsOrSystemMissing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> reversed = BootReference::CaseC().replicates;
  std::reverse(reversed.begin(), reversed.end());
  std::vector<double> withGaps = OneTo(39);
  withGaps.insert(withGaps.begin() + 5, kMissing);
  withGaps.push_back(kMissing);
  std::vector<double> withNaN = OneTo(100);
  withNaN[40] = nan;
  std::vector<double> withInfinity = OneTo(39);
  withInfinity[0] = -std::numeric_limits<double>::infinity();
  const struct {
    const char* what;
    std::vector<double> replicates;
    double level, lower, upper;
  } cases[] = {
      {"replicate order does not matter", reversed, 0.9, 1.0246086348937371, 7.4481167404787394},
      // Ranks 40 * 0.025 = 1 and 39: the extremes themselves.
      {"39 replicates suffice for 95%", OneTo(39), 0.95, 1.0, 39.0},
      // Ranks 0.975 and 38.025 lie outside the replicates.
      {"38 replicates do not", OneTo(38), 0.95, kMissing, kMissing},
      // boot.ci gives (t(1), t(20)) here with a warning; rank 21 * 0.025 = 0.525 is unreachable.
      {"where boot pins the extremes", BootReference::CaseA().replicates, 0.95, kMissing, kMissing},
      {"identical replicates", std::vector<double>(50, 2.25), 0.9, 2.25, 2.25},
      {"system-missing replicates are absent", withGaps, 0.95, 1.0, 39.0},
      {"infinite order statistic", withInfinity, 0.95, kMissing, 39.0},
      {"no replicates", {}, 0.9, kMissing, kMissing},
      {"only system-missing", {kMissing, kMissing}, 0.9, kMissing, kMissing},
      {"NaN replicate", withNaN, 0.9, kMissing, kMissing},
      {"level 0", OneTo(100), 0.0, kMissing, kMissing},
      {"level 1", OneTo(100), 1.0, kMissing, kMissing},
      {"negative level", OneTo(100), -0.5, kMissing, kMissing},
      {"level as a percentage", OneTo(100), 95.0, kMissing, kMissing},
      {"NaN level", OneTo(100), nan, kMissing, kMissing},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const auto [lower, upper] = Interval(c.replicates, c.level);
    ExpectBound(lower, c.lower);
    ExpectBound(upper, c.upper);
  }
}

TEST(MCBSPercentileCI, SetBootstrapStatsReplacesEarlierValues) {
  MCBSPercentileCI ci;
  ci.SetBootstrapStats(std::vector<double>(100, 7.0));
  ci.SetBootstrapStats(OneTo(39));
  EXPECT_EQ(ci.GetCI(0.95), std::make_pair(1.0, 39.0));
  const MCBSPercentileCI copy = ci;
  ci.SetBootstrapStats({});
  EXPECT_EQ(copy.GetCI(0.95), std::make_pair(1.0, 39.0));
}
