#include "backend/tables/PuppetVector.h"

#include <gtest/gtest.h>

namespace {

TEST(PuppetVector, ChangesReachTheOwnersStorage) {
  std::vector<short> storage{1, 2};
  PuppetVector<short> view(storage, -1);
  view.Resize(4);
  view[3] = 7;
  view.Insert(0, 9);
  EXPECT_EQ(storage, (std::vector<short>{9, 1, 2, -1, 7}));
  // A copy of the view is a view of the same list.
  PuppetVector<short> copy = view;
  copy.Erase(0);
  EXPECT_EQ(storage, (std::vector<short>{1, 2, -1, 7}));
}

TEST(PuppetVector, FindAndRemoveKeepTheOrderOfOthers) {
  std::vector<short> storage{3, 1, 3, 2};
  PuppetVector<short> view(storage, -1);
  EXPECT_EQ(view.Find(3), 0);
  EXPECT_EQ(view.Find(5), -1);
  EXPECT_EQ(view.Remove(3), 2u);
  EXPECT_EQ(storage, (std::vector<short>{1, 2}));
}

TEST(PuppetVector, OutOfRangeEditsFail) {
  std::vector<short> storage{1};
  PuppetVector<short> view(storage, -1);
  EXPECT_THROW(view.Erase(1), OMSException);
  EXPECT_THROW(view.Insert(3, 0), OMSException);
  EXPECT_THROW(view.at(2), OMSException);
  EXPECT_EQ(storage.size(), 1u);
}

}  // namespace
