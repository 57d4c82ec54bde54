#include "platform/bootspecs/SvrBootstrapSpecsSerializer.h"

#include <gtest/gtest.h>

#include "platform/bootspecs/SvrBootstrapSpecs.h"

namespace {

SvrBootstrapSpecs StratifiedWithJackknife() {
  SvrBootstrapSpecs specs;
  specs.SetNSamples(1000);
  specs.SetCILevelPct(97.5);
  specs.SetSamplingMethod(1);
  specs.SetJackknifeBoundaries({1001, 1009, 1021});
  specs.SetJackknifeList({{0.125, 0}, {-2.5, 1}, {1e-300, 4294967295u}});
  return specs;
}

TEST(SvrBootstrapSpecsTest, CopiesAreIndependent) {
  SvrBootstrapSpecs original = StratifiedWithJackknife();
  SvrBootstrapSpecs copy = original;
  original.SetJackknifeList({});
  EXPECT_EQ(copy.GetJackknifeList().size(), 3u);
  EXPECT_FALSE(copy == original);
}

} // namespace
