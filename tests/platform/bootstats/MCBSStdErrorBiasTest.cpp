#include "platform/bootstats/MCBSStdErrorBias.h"

#include <vector>

#include <gtest/gtest.h>

#include "platform/bootstats/MCBSCommon.h"

namespace {

MCBSStdErrorBias Fed(const std::vector<double>& values) {
  MCBSStdErrorBias stats;
  for (double value : values) stats.AddBootstrapStat(value);
  return stats;
}

}  // namespace

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
