#include "platform/bootstats/MCBSStdErrorBias.h"

#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "platform/bootstats/MCBSCommon.h"

namespace {
constexpr double kMissing = MCBSCommon::SystemMissing;

MCBSStdErrorBias Fed(const std::vector<double>& values) {
  MCBSStdErrorBias stats;
  for (double value : values) stats.AddBootstrapStat(value);
  return stats;
}
}  // namespace

TEST(MCBSStdErrorBias, HandComputedAndDegenerateSetsGiveTheirValuesOrSystemMissing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  // Squared deviations of 1..4 from 2.5: 2.25 + 0.25 + 0.25 + 2.25 = 5 over n - 1 = 3.
  const double spread = std::sqrt(5.0 / 3.0);
  const struct {
    const char* what; std::vector<double> values; double estimate, bias, standardError, tolerance;
    std::optional<std::size_t> count; std::optional<double> mean;
  } cases[] = {
      {"hand computed", {1, 2, 3, 4}, 2.0, 0.5, spread, 1e-15, 4, 2.5},
      {"estimate above the mean", {1, 2, 3, 4}, 3.0, -0.5, spread, 1e-15, {}, {}},
      // A one-pass sum of squares loses every digit here (the squares are near 1e18); the
      // spread of 4, 7, 13, 16 around 10 gives a variance of 90 / 3 = 30.
      {"large close values", {1e9 + 4, 1e9 + 7, 1e9 + 13, 1e9 + 16}, 1e9, 10.0, std::sqrt(30.0),
       1e-6, {}, {}},
      {"identical", std::vector<double>(7, 0.1), 0.1, 0.0, 0.0, 1e-17, {}, {}},
      {"none", {}, 1.0, kMissing, kMissing, 0, 0, kMissing},
      {"one: no standard error", {3.5}, 3.0, 0.5, kMissing, 1e-15, {}, {}},
      {"system-missing replicates are absent", {1, kMissing, 2, 3, kMissing, 4}, 2.0, 0.5, spread,
       1e-15, 4, {}},
      {"system-missing estimate", {1, 2}, kMissing, kMissing, std::sqrt(0.5), 1e-15, {}, {}},
      {"NaN", {1, nan, 2}, 1.0, kMissing, kMissing, 0, {}, {}},
      {"infinity", {1, inf, 2}, 1.0, kMissing, kMissing, 0, {}, {}},
      {"minus infinity", {1, -inf, 2}, 1.0, kMissing, kMissing, 0, {}, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const MCBSStdErrorBias stats = Fed(c.values);
    // A system-missing result must be exactly that: any other value lies far from it.
    EXPECT_NEAR(stats.GetBias(c.estimate), c.bias, c.tolerance);
    EXPECT_NEAR(stats.GetStandardError(), c.standardError, c.tolerance);
    if (c.count) { EXPECT_EQ(stats.GetCount(), *c.count); }
    if (c.mean) { EXPECT_NEAR(stats.GetMean(), *c.mean, c.tolerance); }
  }
}

