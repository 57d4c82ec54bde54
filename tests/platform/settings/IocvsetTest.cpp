#include "platform/settings/iocvset.h"

#include <cstring>

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

namespace {

class IocvsetTest : public testing::Test {
protected:
  void SetUp() override { IocvReset(); }
  void TearDown() override { IocvReset(); }
};

TEST_F(IocvsetTest, NamesAreStoredByValueAndALaterNameReplaces) {
  IocvConversionName option;
  option.value = 4;
  std::memcpy(option.name, "latin1", 7);
  iocvset_(kIocvConversionName, &option);
  std::memcpy(option.name, "cp1252", 7);
  iocvset_(kIocvConversionName, &option);
  option.value = -1;
  std::memcpy(option.name, "utf8", 5);
  iocvset_(kIocvConversionName, &option);

  EXPECT_EQ(IocvConversionNameOf(4), "cp1252");
  EXPECT_EQ(IocvConversionNameOf(-1), "utf8");
  EXPECT_EQ(IocvConversionNameOf(5), "");
  using Names = std::vector<std::pair<std::int32_t, std::string>>;
  EXPECT_EQ(IocvConversionNames(), (Names{{-1, "utf8"}, {4, "cp1252"}}));
}

TEST_F(IocvsetTest, UnknownKindOrMissingRecordIsAnOMSException) {
  const IocvConversionPair pair{1, 2};
  try {
    iocvset_(std::int64_t{7}, &pair);
    FAIL() << "kind 7 accepted";
  } catch (const OMSException& e) {
    EXPECT_EQ(e.Message(), "iocvset_ -- unknown option kind");
    EXPECT_EQ(e.Value1(), 7.0);
  }
  EXPECT_THROW(iocvset_(kIocvConversionPair, nullptr), OMSException);
  EXPECT_TRUE(IocvConversionPairs().empty());
}

} // namespace
