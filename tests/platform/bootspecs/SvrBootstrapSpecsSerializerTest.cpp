#include "platform/bootspecs/SvrBootstrapSpecsSerializer.h"

#include <string>

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

TEST(SvrBootstrapSpecsSerializerTest, RoundTripKeepsEveryField) {
  const SvrBootstrapSpecs specs = StratifiedWithJackknife();
  const std::string bytes = SvrBootstrapSpecsSerializer::serializeSpecs(specs);
  EXPECT_EQ(bytes.size(), 4u + 8u + 4u + 4u + 3u * 4u + 4u + 3u * 12u);
  SvrBootstrapSpecs read;
  SvrBootstrapSpecsSerializer::deserializeSpecs(bytes, read);
  EXPECT_EQ(read.GetNSamples(), 1000u);
  EXPECT_EQ(read.GetCILevelPct(), 97.5);
  EXPECT_EQ(read.GetSamplingMethod(), 1u);
  EXPECT_EQ(read.GetJackknifeBoundaries(), (std::vector<std::uint32_t>{1001, 1009, 1021}));
  EXPECT_EQ(read.GetJackknifeList(), specs.GetJackknifeList());
  EXPECT_EQ(read, specs);
}

TEST(SvrBootstrapSpecsTest, CopiesAreIndependent) {
  SvrBootstrapSpecs original = StratifiedWithJackknife();
  SvrBootstrapSpecs copy = original;
  original.SetJackknifeList({});
  EXPECT_EQ(copy.GetJackknifeList().size(), 3u);
  EXPECT_FALSE(copy == original);
}

} // namespace
