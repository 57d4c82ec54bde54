#include "platform/bootstats/MCBSPercentileCI.h"

#include <vector>

#include <gtest/gtest.h>

#include "platform/bootstats/MCBSCommon.h"

namespace {

std::vector<double> OneTo(int count) {
  std::vector<double> values;
  for (int i = 1; i <= count; ++i) values.push_back(i);
  return values;
}

}  // namespace

TEST(MCBSPercentileCI, SetBootstrapStatsReplacesEarlierValues) {
  MCBSPercentileCI ci;
  ci.SetBootstrapStats(std::vector<double>(100, 7.0));
  ci.SetBootstrapStats(OneTo(39));
  EXPECT_EQ(ci.GetCI(0.95), std::make_pair(1.0, 39.0));
  const MCBSPercentileCI copy = ci;
  ci.SetBootstrapStats({});
  EXPECT_EQ(copy.GetCI(0.95), std::make_pair(1.0, 39.0));
}
