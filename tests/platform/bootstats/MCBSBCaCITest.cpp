#include "platform/bootstats/MCBSBCaCI.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "platform/bootstats/MCBSCommon.h"
#include "platform/bootstats/MCBSPercentileCI.h"
#include "tests/platform/bootstats/BootReferenceData.h"

namespace {
constexpr double kMissing = MCBSCommon::SystemMissing;

// Fed as the bootstrap calculator feeds it: group weights summed from unit entry weights, then
// the replicates, then one jackknife value per entry.
MCBSBCaCI Fed(const BootReference::ReplicateSet& set) {
  std::vector<double> groupWeights(1, 0.0);
  for (std::uint32_t group : set.groups) {
    if (group >= groupWeights.size()) groupWeights.resize(group + 1, 0.0);
    groupWeights[group] += 1.0;
  }
  MCBSBCaCI ci(set.estimate);
  ci.SetSumWeights(groupWeights);
  ci.SetBootstrapStats(set.replicates);
  for (std::size_t i = 0; i < set.jackknife.size(); ++i) {
    ci.AddJackknifeStat(set.jackknife[i], 1.0, set.groups[i]);
  }
  return ci;
}

std::vector<double> OneTo(int count) {
  std::vector<double> values;
  for (int i = 1; i <= count; ++i) values.push_back(i);
  return values;
}

double Acceleration(const std::vector<double>& values, const std::vector<double>& weights,
                    const std::vector<std::uint32_t>& groups) {
  MCBSBCaCI ci(0.0);
  for (std::size_t i = 0; i < values.size(); ++i) ci.AddJackknifeStat(values[i], weights[i], groups[i]);
  return ci.GetAcceleration();
}

void ExpectBound(double actual, double expected, const char* what) {
  if (expected == kMissing) {
    EXPECT_EQ(actual, kMissing) << what;
  } else {
    EXPECT_NEAR(actual, expected, 1e-9 * std::fabs(expected)) << what;
  }
}
}  // namespace

// Expected bounds: R 4.2.2, boot 1.3-28.1, boot.ci(type = "bca", L = influence values) on the
// sets of BootReferenceData.h (see there); set C has two jackknife groups. Same quantile rule and
// no replicate tied with its estimate, so agreement is to rounding: 1e-9 relative. Where boot's
// adjusted rank falls outside 1 ... B (A upper at 80% and 90%: 20.68 and 20.9; B upper at 99%:
// 199.93; C lower at 95%: 0.52) boot pins the bound to an extreme replicate with a warning, and
// we give system-missing.
TEST(MCBSBCaCI, BoundsMatchBootCiBca) {
  struct Expected {
    const BootReference::ReplicateSet& set;
    double level;
    double lower;
    double upper;
  };
  const Expected cases[] = {
      {BootReference::CaseA(), 0.50, 0.94979227116230536, 1.2594328513465904},
      {BootReference::CaseA(), 0.80, 0.80198841091629647, kMissing},
      {BootReference::CaseA(), 0.90, 0.65228152917230631, kMissing},
      {BootReference::CaseB(), 0.90, 1.0193131612531823, 1.7642217297845382},
      {BootReference::CaseB(), 0.95, 0.95636933065378427, 1.8536526693555857},
      {BootReference::CaseB(), 0.99, 0.8351424637057635, kMissing},
      {BootReference::CaseC(), 0.90, 0.72744517890499261, 5.8026190759394574},
      {BootReference::CaseC(), 0.95, kMissing, 6.6355828524944087},
  };
  for (const Expected& expected : cases) {
    const auto [lower, upper] = Fed(expected.set).GetCI(expected.level);
    ExpectBound(lower, expected.lower, "lower");
    ExpectBound(upper, expected.upper, "upper");
  }
}

// Expected: R 4.2.2, qnorm(mean(t < t0)) and sum(L^3) / (6 * sum(L^2)^1.5) with the influence
// values L of BootReferenceData.h; 1e-12 relative.
TEST(MCBSBCaCI, BiasCorrectionAndAccelerationMatchR) {
  struct Expected {
    const BootReference::ReplicateSet& set;
    double z0;
    double a;
  };
  const Expected cases[] = {
      {BootReference::CaseA(), 0.38532046640756762, 0.037073669626147346},
      {BootReference::CaseB(), 0.094611877123512683, 0.07277375692346072},
      {BootReference::CaseC(), -0.16365848623314122, -0.090821157647094308},
  };
  for (const Expected& expected : cases) {
    const MCBSBCaCI ci = Fed(expected.set);
    EXPECT_NEAR(ci.GetBiasCorrection(), expected.z0, 1e-12 * std::fabs(expected.z0));
    EXPECT_NEAR(ci.GetAcceleration(), expected.a, 1e-12 * std::fabs(expected.a));
  }
}

TEST(MCBSBCaCI, ReplicatesEqualToTheEstimateCountHalf) {
  MCBSBCaCI balanced(3.0);
  balanced.SetBootstrapStats({1.0, 2.0, 3.0, 3.0, 4.0, 5.0});
  EXPECT_EQ(balanced.GetBiasCorrection(), 0.0);

  // (1 below + 3 equal / 2) / 4 = 0.625; R: qnorm(0.625).
  MCBSBCaCI tied(2.0);
  tied.SetBootstrapStats({1.0, 2.0, 2.0, 2.0});
  EXPECT_NEAR(tied.GetBiasCorrection(), 0.31863936396437514, 1e-12);

  // Every replicate equal to the estimate: no bias, a point interval.
  MCBSBCaCI point(4.0);
  point.SetBootstrapStats(std::vector<double>(60, 4.0));
  EXPECT_EQ(point.GetBiasCorrection(), 0.0);
  EXPECT_EQ(point.GetCI(0.95), std::make_pair(4.0, 4.0));
}

TEST(MCBSBCaCI, WithoutBiasOrAccelerationItIsThePercentileInterval) {
  // The median of 199 replicates as the estimate: (99 + 1/2) / 199 = 0.5, z0 = 0; jackknife
  // values symmetric about their mean: a = 0.
  const std::vector<double>& replicates = BootReference::CaseB().replicates;
  std::vector<double> sorted = replicates;
  std::sort(sorted.begin(), sorted.end());
  MCBSBCaCI ci(sorted[99]);
  ci.SetBootstrapStats(replicates);
  for (double value : {1.0, 2.0, 4.0, 6.0, 7.0}) ci.AddJackknifeStat(value, 1.0, 0);
  EXPECT_EQ(ci.GetBiasCorrection(), 0.0);
  EXPECT_EQ(ci.GetAcceleration(), 0.0);
  MCBSPercentileCI percentile;
  percentile.SetBootstrapStats(replicates);
  for (double level : {0.8, 0.9, 0.95}) {
    const auto [lower, upper] = ci.GetCI(level);
    const auto [expectedLower, expectedUpper] = percentile.GetCI(level);
    EXPECT_NEAR(lower, expectedLower, 1e-12) << level;
    EXPECT_NEAR(upper, expectedUpper, 1e-12) << level;
  }
}

TEST(MCBSBCaCI, ZeroAccelerationGivesTheBiasCorrectedPercentileInterval) {
  // Bias-corrected percentile: the quantiles at Phi(2 z0 + z(alpha)).
  const BootReference::ReplicateSet& set = BootReference::CaseB();
  MCBSBCaCI symmetric(set.estimate);
  symmetric.SetBootstrapStats(set.replicates);
  for (double value : {1.0, 2.0, 3.0}) symmetric.AddJackknifeStat(value, 1.0, 0);
  MCBSBCaCI withoutJackknife(set.estimate);
  withoutJackknife.SetBootstrapStats(set.replicates);
  ASSERT_EQ(symmetric.GetAcceleration(), 0.0);
  ASSERT_EQ(withoutJackknife.GetAcceleration(), 0.0);

  std::vector<double> sorted = set.replicates;
  std::sort(sorted.begin(), sorted.end());
  const double z0 = 0.094611877123512683;  // R, see BiasCorrectionAndAccelerationMatchR
  const double z = 1.6448536269514722;      // R: qnorm(0.95)
  const double lower = MCBSPercentileCI::Quantile(sorted, MCBSCommon::NormalCdf(2 * z0 - z));
  const double upper = MCBSPercentileCI::Quantile(sorted, MCBSCommon::NormalCdf(2 * z0 + z));
  for (const MCBSBCaCI* ci : {&symmetric, &withoutJackknife}) {
    const auto bounds = ci->GetCI(0.90);
    EXPECT_NEAR(bounds.first, lower, 1e-12);
    EXPECT_NEAR(bounds.second, upper, 1e-12);
  }
}

TEST(MCBSBCaCI, EntryWeightCountsLikeRepeatedEntries) {
  const double weighted = Acceleration({1.0, 2.0, 7.0}, {2.0, 1.0, 3.0}, {0, 0, 0});
  const double repeated =
      Acceleration({1.0, 1.0, 2.0, 7.0, 7.0, 7.0}, {1.0, 1.0, 1.0, 1.0, 1.0, 1.0}, {0, 0, 0, 0, 0, 0});
  EXPECT_NE(weighted, 0.0);
  EXPECT_NEAR(weighted, repeated, 1e-14);
}

TEST(MCBSBCaCI, EachGroupIsCentredOnItsOwnMean) {
  const std::vector<double> weights(7, 1.0);
  const std::vector<std::uint32_t> groups{0, 0, 0, 1, 1, 1, 1};
  const double base = Acceleration({1.0, 2.0, 6.0, 3.0, 4.0, 4.5, 9.0}, weights, groups);
  const double shifted = Acceleration({1.0, 2.0, 6.0, 103.0, 104.0, 104.5, 109.0}, weights, groups);
  EXPECT_NE(base, 0.0);
  EXPECT_NEAR(base, shifted, 1e-12);
  // One group for all: the shift now dominates the skewness.
  const double pooled =
      Acceleration({1.0, 2.0, 6.0, 103.0, 104.0, 104.5, 109.0}, weights, std::vector<std::uint32_t>(7, 0));
  EXPECT_GT(std::fabs(pooled - base), 0.01);
}

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
  const double plain = Acceleration({1.0, 2.0, 7.0}, {1.0, 1.0, 1.0}, {0, 0, 0});
  MCBSBCaCI ci(0.0);
  ci.AddJackknifeStat(1.0, 1.0, 0);
  ci.AddJackknifeStat(kMissing, 1.0, 0);
  ci.AddJackknifeStat(2.0, 1.0, 0);
  ci.AddJackknifeStat(50.0, 0.0, 0);
  ci.AddJackknifeStat(60.0, -1.0, 0);
  ci.AddJackknifeStat(70.0, std::numeric_limits<double>::quiet_NaN(), 0);
  ci.AddJackknifeStat(7.0, 1.0, 0);
  EXPECT_NEAR(ci.GetAcceleration(), plain, 1e-15);
}

TEST(MCBSBCaCI, UnusableInputGivesSystemMissingBounds) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> withNaN = OneTo(100);
  withNaN[3] = nan;
  const struct {
    const char* what;
    double estimate;
    std::vector<double> replicates, jackknife;
    double level;
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
    if (c.biasMissing) {
      EXPECT_EQ(ci.GetBiasCorrection(), kMissing);
    }
    if (c.accelerationMissing) {
      EXPECT_EQ(ci.GetAcceleration(), kMissing);
    }
  }
}

TEST(MCBSBCaCI, BoundPastTheTurningPointOfTheAdjustmentIsSystemMissing) {
  // Jackknife values 0 and 1 with weights 0.01 and 0.0001: a is about -16, so for the lower
  // bound 1 - a (z0 + z) = 1 - 16 * 1.645 < 0. The upper bound stays close to the median.
  MCBSBCaCI ci(50.0);
  ci.SetBootstrapStats(OneTo(99));
  ci.AddJackknifeStat(0.0, 0.01, 0);
  ci.AddJackknifeStat(1.0, 0.0001, 0);
  ASSERT_LT(ci.GetAcceleration(), -10.0);
  const auto [lower, upper] = ci.GetCI(0.90);
  EXPECT_EQ(lower, kMissing);
  EXPECT_GT(upper, 50.0);
  EXPECT_LT(upper, 53.0);
}

TEST(MCBSBCaCI, CopyKeepsItsOwnState) {
  MCBSBCaCI original = Fed(BootReference::CaseB());
  const MCBSBCaCI copy = original;
  original.AddJackknifeStat(100.0, 5.0, 0);
  original.SetBootstrapStats({});
  EXPECT_NEAR(copy.GetAcceleration(), 0.07277375692346072, 1e-12);
  ExpectBound(copy.GetCI(0.95).first, 0.95636933065378427, "lower");
}
