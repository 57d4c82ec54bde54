#include "backend/omsopmgr/OMSObjectSelector.h"

#include <gtest/gtest.h>

namespace {

OMSSelector WithInstances(std::initializer_list<int> numbers, bool last = false) {
  OMSSelector s;
  for (int n : numbers) s.AddInstances(n);
  if (last) s.AddLastInstance();
  return s;
}

OMSObjectSelector Request(unsigned types) {
  OMSObjectSelector r;
  r.SelectType(types);
  return r;
}

}  // namespace

TEST(OMSObjectSelector, LastAloneSelectsNoNumber) {
  OMSObjectSelector r = Request(16);
  r.AddIfOption(WithInstances({}, true));
  EXPECT_TRUE(r.IsLastInstanceSelected());
  EXPECT_FALSE(r.IsLastInstanceExcluded());
  for (int n = 1; n <= 5; ++n) EXPECT_FALSE(r.IsInstanceSelected(n)) << n;
  r.AddIfOption(WithInstances({1}, true));
  EXPECT_TRUE(r.IsInstanceSelected(1));
  r.AddExceptIfOption(WithInstances({}, true));
  EXPECT_TRUE(r.IsLastInstanceExcluded());
  EXPECT_TRUE(r.IsInstanceSelected(1));  // LAST in EXCEPTIF removes no number
}
