#include "platform/bootstats/MCBSPercentileCI.h"

#include <limits>
#include <numeric>
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

// 200 replicates of the ratio of the means of two independent samples (8 and 12 values),
// resampled within each sample: generated in R 4.2.2 with set.seed(20240517), rounded to 6
// significant digits. The expected interval is boot.ci(type = "perc") of R 4.2.2, boot 1.3-28.1,
// with the set wrapped by hand into a "boot" object (t0 = 2.42505, R = 200, sim = "ordinary").
const std::vector<double> kRatioReplicates = {
    2.0647, 2.54758, 1.31389, 1.38846, 6.00916, 5.41565, 2.78357, 1.33165, 4.27507, 1.80473,
    6.33503, 2.65785, 1.61571, 2.80705, 3.0663, 3.32048, 1.41765, 6.84928, 1.98931, 1.13763,
    2.46967, 1.23175, 1.12138, 1.74722, 1.21994, 3.33854, 8.25847, 3.38941, 6.24267, 1.85294,
    4.43542, 4.93036, 1.0139, 3.34912, 2.27059, 6.168, 4.14737, 4.03236, 1.40731, 2.72513, 2.40847,
    1.24748, 3.12873, 1.40141, 6.9402, 1.82863, 1.40095, 2.83793, 4.19769, 1.48559, 2.24984,
    3.98585, 3.7785, 2.83702, 4.78258, 9.49495, 9.22131, 1.35633, 2.5118, 6.8805, 4.34243, 3.32725,
    4.01539, 11.0754, 1.13322, 0.727381, 2.4261, 2.6749, 6.33988, 2.81925, 0.953057, 1.92441,
    2.01885, 2.5165, 2.42487, 2.57657, 11.6726, 4.41517, 2.04151, 2.07079, 3.1156, 1.82417, 2.58652,
    6.68284, 5.88729, 2.9561, 2.08169, 3.30359, 3.14891, 2.07, 4.07646, 1.47927, 2.86488, 2.8625,
    1.56385, 2.08099, 2.95227, 4.12104, 6.30813, 5.47022, 7.48575, 6.47142, 1.80709, 4.32856,
    3.72401, 3.63835, 1.02177, 2.63966, 2.05764, 1.16251, 2.01311, 5.71068, 2.05586, 7.46881,
    5.28649, 3.86785, 4.16694, 2.06865, 1.52024, 2.51621, 3.91826, 5.09302, 3.13466, 1.83621,
    1.5386, 5.05005, 3.82759, 2.2079, 6.65679, 1.5618, 4.462, 6.63106, 2.96133, 4.95471, 7.06969,
    0.85496, 7.70474, 10.7054, 2.02654, 2.34405, 3.02486, 2.73229, 3.09056, 3.00067, 2.59789,
    0.914182, 2.30073, 2.34764, 5.47567, 4.61303, 3.9124, 1.3784, 1.27969, 1.07652, 0.594182,
    2.15003, 0.743597, 5.10425, 4.20711, 2.83676, 0.837571, 4.61249, 1.41045, 0.863288, 1.32072,
    4.17439, 3.93092, 1.75037, 2.67638, 2.02686, 3.98909, 2.09839, 2.88693, 4.17501, 2.77484,
    1.26986, 2.22775, 1.15008, 2.00514, 3.58087, 1.33246, 7.53212, 3.90756, 2.55463, 3.08198,
    1.86844, 2.21802, 1.9418, 3.24414, 1.33093, 1.73129, 1.60145, 1.50504, 1.57289, 1.67307,
    1.37768, 1.12393, 5.20351, 1.39103, 2.9309};

}  // namespace

TEST(MCBSPercentileCI, EdgeCasesGiveTheirBoundsOrSystemMissing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> withGaps = OneTo(39);
  withGaps.insert(withGaps.begin() + 5, kMissing);
  withGaps.push_back(kMissing);
  std::vector<double> withNaN = OneTo(100);
  withNaN[40] = nan;
  std::vector<double> withInfinity = OneTo(39);
  withInfinity[0] = -std::numeric_limits<double>::infinity();
  const struct {
    const char* what; std::vector<double> replicates; double level, lower, upper;
  } cases[] = {
      {"replicate order does not matter", {kRatioReplicates.rbegin(), kRatioReplicates.rend()},
       0.9, 1.0246086348937371, 7.4481167404787394},
      // Ranks 40 * 0.025 = 1 and 39: the extremes themselves.
      {"39 replicates suffice for 95%", OneTo(39), 0.95, 1.0, 39.0},
      // Ranks 0.975 and 38.025 lie outside the replicates.
      {"38 replicates do not", OneTo(38), 0.95, kMissing, kMissing},
      // boot.ci gives (t(1), t(20)) here with a warning; rank 21 * 0.025 = 0.525 is unreachable.
      {"where boot pins the extremes", OneTo(20), 0.95, kMissing, kMissing},
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
    MCBSPercentileCI ci;
    ci.SetBootstrapStats(c.replicates);
    const auto [lower, upper] = ci.GetCI(c.level);
    // A system-missing bound must be exactly that: any other value lies far from it.
    EXPECT_NEAR(lower, c.lower, 1e-9);
    EXPECT_NEAR(upper, c.upper, 1e-9);
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
