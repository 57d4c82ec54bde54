#include "backend/omfactory/pooling/SliceIndex.h"

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

TEST(SliceIndexWalk, AnEmptyOtherDimensionLeavesNothingToVisit) {
  const SliceIndex walk({3, 0, 2}, {0});
  EXPECT_EQ(walk.Count(), 0u);
  OmPivotTable::Coordinates at;
  EXPECT_THROW(walk.Position(0, at), OMSException);
}

TEST(SliceIndexWalk, FixedDimensionsMustBeOneToThreeDistinctDimensionsOfTheTable) {
  EXPECT_THROW(SliceIndex({2, 2}, {}), OMSException);
  EXPECT_THROW(SliceIndex({2, 2, 2, 2, 2}, {0, 1, 2, 3}), OMSException);
  EXPECT_THROW(SliceIndex({2, 2}, {2}), OMSException);
  EXPECT_THROW(SliceIndex({2, 2}, {-1}), OMSException);
  EXPECT_THROW(SliceIndex({2, 2, 2}, {1, 1}), OMSException);
}
