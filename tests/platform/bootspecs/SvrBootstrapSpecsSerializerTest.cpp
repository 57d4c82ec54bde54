#include "platform/bootspecs/SvrBootstrapSpecsSerializer.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "platform/bootspecs/SvrBootstrapSpecs.h"
#include "platform/errors/OMSException.h"

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

TEST(SvrBootstrapSpecsSerializerTest, FieldsAreLittleEndianInTheirOrder) {
  SvrBootstrapSpecs specs;
  specs.SetNSamples(0x01020304);
  specs.SetCILevelPct(95.0); // 0x4057C00000000000
  specs.SetSamplingMethod(3);
  const std::string bytes = SvrBootstrapSpecsSerializer::serializeSpecs(specs);
  EXPECT_EQ(bytes, std::string("\x04\x03\x02\x01"
                               "\0\0\0\0\0\xC0\x57\x40"
                               "\x03\0\0\0"
                               "\0\0\0\0"
                               "\0\0\0\0",
                               24));
}

TEST(SvrBootstrapSpecsSerializerTest, EveryShorterTextIsRefused) {
  const std::string bytes = SvrBootstrapSpecsSerializer::serializeSpecs(StratifiedWithJackknife());
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    SvrBootstrapSpecs read;
    EXPECT_THROW(SvrBootstrapSpecsSerializer::deserializeSpecs(bytes.substr(0, length), read),
                 OMSException)
        << length << " bytes";
    EXPECT_EQ(read, SvrBootstrapSpecs()) << "a refused text leaves the record alone";
  }
}

TEST(SvrBootstrapSpecsSerializerTest, BytesLeftOverAreRefused) {
  const std::string bytes = SvrBootstrapSpecsSerializer::serializeSpecs(StratifiedWithJackknife());
  SvrBootstrapSpecs read;
  try {
    SvrBootstrapSpecsSerializer::deserializeSpecs(bytes + "xy", read);
    FAIL() << "two extra bytes accepted";
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message(), "SvrBootstrapSpecsSerializer::deserializeSpecs -- bytes left over");
    EXPECT_EQ(e.Value1(), 2.0);
  }
}

TEST(SvrBootstrapSpecsSerializerTest, HugeCountsAreRefusedBeforeAllocating) {
  SvrBootstrapSpecs specs;
  std::string bytes = SvrBootstrapSpecsSerializer::serializeSpecs(specs);
  // The boundary count sits at offset 16; claim 4 billion boundaries.
  bytes.replace(16, 4, "\xFF\xFF\xFF\xFF");
  SvrBootstrapSpecs read;
  try {
    SvrBootstrapSpecsSerializer::deserializeSpecs(bytes, read);
    FAIL() << "4 billion boundaries in 24 bytes accepted";
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message(),
              "SvrBootstrapSpecsSerializer::deserializeSpecs -- text ends in jackknife boundaries");
  }
}

TEST(SvrBootstrapSpecsSerializerTest, ConfidenceLevelMustLieStrictlyBetween0And100) {
  for (double level : {0.0, 100.0, -5.0, 250.0, std::numeric_limits<double>::quiet_NaN(),
                       std::numeric_limits<double>::infinity()}) {
    SvrBootstrapSpecs specs;
    specs.SetCILevelPct(level);
    SvrBootstrapSpecs read;
    EXPECT_THROW(SvrBootstrapSpecsSerializer::deserializeSpecs(
                     SvrBootstrapSpecsSerializer::serializeSpecs(specs), read),
                 OMSException)
        << level;
  }
  SvrBootstrapSpecs edge;
  edge.SetCILevelPct(99.9);
  SvrBootstrapSpecs read;
  SvrBootstrapSpecsSerializer::deserializeSpecs(SvrBootstrapSpecsSerializer::serializeSpecs(edge),
                                                read);
  EXPECT_EQ(read.GetCILevelPct(), 99.9);
}

TEST(SvrBootstrapSpecsTest, CopiesAreIndependent) {
  SvrBootstrapSpecs original = StratifiedWithJackknife();
  SvrBootstrapSpecs copy = original;
  original.SetJackknifeList({});
  EXPECT_EQ(copy.GetJackknifeList().size(), 3u);
  EXPECT_FALSE(copy == original);
}

} // namespace
