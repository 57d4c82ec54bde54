#include "platform/bootstats/MCBSBCaCI.h"

#include <limits>
#include <numeric>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/bootstats/MCBSCommon.h"

namespace {
constexpr double kMissing = MCBSCommon::SystemMissing;

std::vector<double> OneTo(int count) {
  std::vector<double> values(count);
  std::iota(values.begin(), values.end(), 1.0);
  return values;
}

}  // namespace

TEST(MCBSBCaCI, GroupWeightSumsScaleTheGroups) {
  // Two groups whose jackknife values mirror each other: with equal totals their skewness
  // cancels; the larger total of group 1 lets its deviations (positive third power) outweigh
  // group 0's.
  auto acceleration = [](double secondTotal) {
    MCBSBCaCI ci(0.0);
    ci.SetSumWeights({3.0, secondTotal});
    for (double value : {1.0, 2.0, 9.0}) ci.AddJackknifeStat(value, 1.0, 0);
    for (double value : {9.0, 8.0, 1.0}) ci.AddJackknifeStat(value, 1.0, 1);
    return ci.GetAcceleration();
  };
  EXPECT_GT(acceleration(30.0), 0.0);
  EXPECT_NEAR(acceleration(3.0), 0.0, 1e-15);
}

TEST(MCBSBCaCI, UnusableJackknifeEntriesAreLeftOut) {
  MCBSBCaCI plain(0.0), mixed(0.0);
  for (double value : {1.0, 2.0, 7.0}) plain.AddJackknifeStat(value, 1.0, 0);
  const std::pair<double, double> entries[] = {
      {1.0, 1.0}, {kMissing, 1.0}, {2.0, 1.0}, {50.0, 0.0}, {60.0, -1.0},
      {70.0, std::numeric_limits<double>::quiet_NaN()}, {7.0, 1.0}};
  for (const auto& [value, weight] : entries) mixed.AddJackknifeStat(value, weight, 0);
  EXPECT_NEAR(mixed.GetAcceleration(), plain.GetAcceleration(), 1e-15);
}

TEST(MCBSBCaCI, UnusableInputGivesSystemMissingBounds) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> withNaN = OneTo(100);
  withNaN[3] = nan;
  const struct {
    const char* what; double estimate; std::vector<double> replicates, jackknife; double level;
    bool biasMissing, accelerationMissing;
  } cases[] = {
      {"all replicates above the estimate", 0.5, OneTo(100), {1.0, 2.5}, 0.95, true, false},
      {"all replicates below the estimate", 100.5, OneTo(100), {1.0, 2.5}, 0.95, true, false},
      {"NaN jackknife value", 50.5, OneTo(100), {1.0, nan}, 0.9, false, true},
      {"NaN replicate", 50.5, withNaN, {}, 0.9, false, false},
      {"no replicates", 1.0, {}, {}, 0.95, true, false},
      {"only system-missing replicates", 1.0, {kMissing, kMissing}, {}, 0.95, false, false},
      {"system-missing estimate", kMissing, OneTo(100), {}, 0.95, false, false},
      {"level 0", 50.5, OneTo(100), {}, 0.0, false, false},
      {"level 1", 50.5, OneTo(100), {}, 1.0, false, false},
      {"level as a percentage", 50.5, OneTo(100), {}, 95.0, false, false},
      {"NaN level", 50.5, OneTo(100), {}, nan, false, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    MCBSBCaCI ci(c.estimate);
    ci.SetBootstrapStats(c.replicates);
    for (double value : c.jackknife) ci.AddJackknifeStat(value, 1.0, 0);
    EXPECT_EQ(ci.GetCI(c.level), std::make_pair(kMissing, kMissing));
    if (c.biasMissing) { EXPECT_EQ(ci.GetBiasCorrection(), kMissing); }
    if (c.accelerationMissing) { EXPECT_EQ(ci.GetAcceleration(), kMissing); }
  }
}
