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

TEST(MCBSOrderStatistics, SelectionsInAnyOrderGiveTheSortedValues) {
  // Ties, a negative run and a spread that leaves the selections real partitioning to do.
  std::vector<double> values;
  for (int i = 0; i < 257; ++i) values.push_back(double((i * 7919) % 101) - 40.0);
  std::vector<double> sorted = values;
  std::sort(sorted.begin(), sorted.end());
  const struct {
    const char* what;
    std::vector<std::size_t> ranks;
  } cases[] = {
      {"a percentile interval's four, rising", {6, 7, 249, 250}},
      {"falling", {250, 249, 7, 6}},
      {"repeated and neighbouring", {100, 100, 101, 99, 0, 256, 1}},
      {"every rank", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    MCBSOrderStatistics statistics;
    for (double v : values) statistics.Add(v);
    std::vector<std::size_t> ranks = c.ranks;
    if (ranks.empty()) {
      for (std::size_t i = 0; i < sorted.size(); ++i) ranks.push_back(i);
    }
    for (std::size_t rank : ranks) EXPECT_EQ(statistics.At(rank), sorted[rank]) << rank;
  }
  // Asking reorders the values, never the interval: the same bounds a second time.
  MCBSPercentileCI ci;
  ci.SetBootstrapStats(values);
  const std::pair<double, double> first = ci.GetCI(0.9);
  EXPECT_EQ(ci.GetCI(0.9), first);
}
