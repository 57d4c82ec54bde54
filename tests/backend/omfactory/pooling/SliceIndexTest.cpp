#include "backend/omfactory/pooling/SliceIndex.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "platform/errors/OMSException.h"

TEST(MultiBaseDigits, MixedRadixDigitsWithTheLastDigitLeastSignificant) {
  const MultiBase bases({5, 2, 3});
  EXPECT_EQ(bases.Digits(7), (std::vector<std::uint32_t>{1, 0, 1}));
  EXPECT_EQ(bases.Digits(0), (std::vector<std::uint32_t>{0, 0, 0}));
  EXPECT_EQ(bases.Digits(29), (std::vector<std::uint32_t>{4, 1, 2}));
}

TEST(MultiBaseDigits, LeadingDigitKeepsWhatIsLeftUnreduced) {
  EXPECT_EQ(MultiBase({4}).Digits(9), std::vector<std::uint32_t>{9});
  EXPECT_EQ(MultiBase({2, 3}).Digits(13), (std::vector<std::uint32_t>{4, 1}));
  EXPECT_TRUE(MultiBase().Digits(3).empty());
}

TEST(MultiBaseDigits, ZeroBaseThatWouldBeDividedByIsRefused) {
  EXPECT_THROW(MultiBase({3, 0}).Digits(1), OMSException);
  EXPECT_NO_THROW(MultiBase({0, 3}).Digits(1));  // the first base is never divided by
}

TEST(SliceIndexWalk, VisitsEveryCombinationOfTheOtherDimensionsLastFastest) {
  // Dimensions of sizes 2, 4 (fixed), 3.
  const SliceIndex walk({2, 4, 3}, {1});
  EXPECT_EQ(walk.Others(), (std::vector<int>{0, 2}));
  EXPECT_EQ(walk.FixedSize(0), 4);
  ASSERT_EQ(walk.Count(), 6u);
  OmPivotTable::Coordinates at{-1, 9, -1};
  std::vector<std::vector<int>> seen;
  for (std::uint64_t i = 0; i < walk.Count(); ++i) {
    walk.Position(i, at);
    seen.push_back(at);
  }
  EXPECT_EQ(seen, (std::vector<std::vector<int>>{
                      {0, 9, 0}, {0, 9, 1}, {0, 9, 2}, {1, 9, 0}, {1, 9, 1}, {1, 9, 2}}));
}

TEST(SliceIndexWalk, AllDimensionsFixedGivesOnePosition) {
  const SliceIndex walk({3, 2}, {1, 0});
  EXPECT_TRUE(walk.Others().empty());
  EXPECT_EQ(walk.Base().Bases(), std::vector<std::uint32_t>{1});
  EXPECT_EQ(walk.Count(), 1u);
  OmPivotTable::Coordinates at;
  walk.Position(0, at);
  EXPECT_EQ(at.size(), 2u);
}

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
