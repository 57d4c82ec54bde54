#include "backend/omsopmgr/OMSObjectSelector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

namespace {

OMSSelector WithInstances(std::initializer_list<int> numbers, bool last = false) {
  OMSSelector s;
  for (int n : numbers) s.AddInstances(n);
  if (last) s.AddLastInstance();
  return s;
}

}  // namespace

TEST(OMSObjectSelector, InstanceNumbersOfIfAndExceptIf) {
  OMSObjectSelector r;
  EXPECT_TRUE(r.IsInstanceSelected(7));  // no numbers: every instance
  r.AddIfOption(WithInstances({1, 3}));
  EXPECT_TRUE(r.IsInstanceSelected(3));
  EXPECT_FALSE(r.IsInstanceSelected(2));
  r.AddExceptIfOption(WithInstances({3}));
  EXPECT_FALSE(r.IsInstanceSelected(3));
  EXPECT_TRUE(r.IsInstanceSelected(1));
}

TEST(OMSObjectSelector, LastAloneSelectsNoNumber) {
  OMSObjectSelector r;
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

TEST(OMSObjectSelector, EmptyTagViolatesThePrecondition) {
  EXPECT_THAT([] { OMSObjectSelector().SetOMSTag(""); },
              testing::ThrowsMessage<OMSException>(testing::HasSubstr("backend/omsopmgr/OMSObjectSelector: tag.length() > 0")));
}

