#include "platform/settings/iocvset.h"

#include <cstring>

#include <gmock/gmock.h>
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
  const std::pair<int, const char*> names[] = {{4, "latin1"}, {4, "cp1252"}, {-1, "utf8"}};
  for (const auto& [value, name] : names) {
    option.value = value;
    std::strcpy(option.name, name);
    iocvset_(kIocvConversionName, &option);
  }

  EXPECT_EQ(IocvConversionNameOf(4), "cp1252");
  EXPECT_EQ(IocvConversionNameOf(-1), "utf8");
  EXPECT_EQ(IocvConversionNameOf(5), "");
  using Names = std::vector<std::pair<std::int32_t, std::string>>;
  EXPECT_EQ(IocvConversionNames(), (Names{{-1, "utf8"}, {4, "cp1252"}}));
}

TEST_F(IocvsetTest, UnknownKindOrMissingRecordIsAnOMSException) {
  const IocvConversionPair pair{1, 2};
  EXPECT_THAT([&] { iocvset_(std::int64_t{7}, &pair); },
              testing::ThrowsMessage<OMSException>(
                  testing::StrEq("iocvset_ -- unknown option kind, value 1 == 7, value 2 == 0")));
  EXPECT_THROW(iocvset_(kIocvConversionPair, nullptr), OMSException);
  EXPECT_TRUE(IocvConversionPairs().empty());
}

} // namespace
