#include "backend/tables/MultiBase.h"

#include <gtest/gtest.h>

namespace {

using Digits = std::vector<std::uint32_t>;

TEST(MultiBase, DigitsAreMixedRadixWithTheLastDigitLeastSignificantAndTheLeadingOneUnreduced) {
  MultiBase mb({5, 2, 3});
  EXPECT_EQ(mb.Digits(7), (Digits{1, 0, 1}));
  EXPECT_EQ(mb.Digits(0), (Digits{0, 0, 0}));
  EXPECT_EQ(mb.Digits(29), (Digits{4, 1, 2}));
  // 30 = 5 * 6: the first base would wrap it to 0, but it is never divided by.
  EXPECT_EQ(mb.Digits(30), (Digits{5, 0, 0}));
  EXPECT_EQ(MultiBase({4}).Digits(11), (Digits{11}));
}

TEST(MultiBase, NoBasesGiveNoDigits) {
  MultiBase none;
  EXPECT_TRUE(none.Digits(12).empty());
  EXPECT_EQ(none.Count(), 1u);
}

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

TEST(MultiBase, AZeroBaseThatIsDividedByFails) {
  MultiBase mb({3, 0, 2});
  EXPECT_EQ(mb.Digits(0), (Digits{0, 0, 0}));  // nothing is divided for 0
  try {
    mb.Digits(5);
    FAIL() << "dividing by a zero base must fail";
  } catch (const OMSException& e) {
    EXPECT_NE(e.Message().find("b>0"), std::string::npos);
    EXPECT_NE(e.Message().find("MultiBase::Digits"), std::string::npos);
  }
}

}  // namespace
