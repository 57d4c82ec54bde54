#include "platform/bootspecs/SvrBootstrapSpecsSerializer.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/bootspecs/SvrBootstrapSpecs.h"

namespace {

TEST(SvrBootstrapSpecsSerializerTest, RoundTripKeepsEveryFieldAndCopiesAreIndependent) {
  SvrBootstrapSpecs specs;
  specs.SetNSamples(1000);
  specs.SetCILevelPct(97.5);
  specs.SetSamplingMethod(1);
  specs.SetJackknifeBoundaries({1001, 1009, 1021});
  specs.SetJackknifeList({{0.125, 0}, {-2.5, 1}, {1e-300, 4294967295u}});
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

  const SvrBootstrapSpecs copy = read;
  read.SetJackknifeList({});
  EXPECT_EQ(copy.GetJackknifeList().size(), 3u);
  EXPECT_FALSE(copy == read);
}

} // namespace
