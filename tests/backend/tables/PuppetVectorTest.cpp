#include "backend/tables/PuppetVector.h"

#include <gtest/gtest.h>

namespace {

TEST(PuppetVector, OutOfRangeEditsFail) {
  std::vector<short> storage{1};
  PuppetVector<short> view(storage, -1);
  EXPECT_THROW(view.Erase(1), OMSException);
  EXPECT_THROW(view.Insert(3, 0), OMSException);
  EXPECT_THROW(view.at(2), OMSException);
  EXPECT_EQ(storage.size(), 1u);
}

}  // namespace
