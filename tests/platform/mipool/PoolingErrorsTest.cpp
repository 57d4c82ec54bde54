
#include <gtest/gtest.h>

#include "platform/mipool/PoolingErrors.h"

namespace {

TEST(GetPoolingErrorString, UnknownCodeIsNamedAndSuccessHasNoText) {
  EXPECT_EQ(GetPoolingErrorString(999), "Pooling failed with error code 999.");
  EXPECT_EQ(GetPoolingErrorString(-140024), "Pooling failed with error code -140024.");
  EXPECT_EQ(GetPoolingErrorString(0), "");
}

} // namespace
