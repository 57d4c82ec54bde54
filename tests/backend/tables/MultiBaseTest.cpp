#include "backend/tables/MultiBase.h"

#include <gtest/gtest.h>

namespace {

using Digits = std::vector<std::uint32_t>;

TEST(MultiBase, WalkVisitsEveryCombinationInOrder) {
  MultiBase mb({2, 3, 2});
  ASSERT_EQ(mb.Count(), 12u);
  Digits previous;
  for (std::uint64_t i = 0; i < mb.Count(); ++i) {
    Digits d = mb.Digits(i);
    EXPECT_EQ(mb.Number(d), i);
    if (i > 0) {
      EXPECT_LT(previous, d);  // lexicographic order, last digit fastest
    }
    previous = d;
  }
}

}  // namespace
