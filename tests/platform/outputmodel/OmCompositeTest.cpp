#include "platform/outputmodel/OmComposite.h"

#include "platform/errors/OMSException.h"

#include <gtest/gtest.h>

#include "platform/outputmodel/OmStringCell.h"

namespace {

TEST(OmComposite, MissingArgumentsAreDroppedOrKept) {
  OmComposite c("a ^1 b ^3 c ^ d ^^", false);
  c.Add(OmStringCell("X"));
  EXPECT_EQ(c.SubstitutedText(nullptr, false), "a X b  c ^ d ^");
  EXPECT_EQ(c.SubstitutedText(nullptr, true), "a X b ^3 c ^ d ^");
  EXPECT_EQ(OmComposite::SubstituteText("^10^1", {"1", "2", "3", "4", "5", "6", "7", "8", "9", "ten"}, false),
            "ten1");
}

TEST(OmComposite, CloneIsIndependentAndKeepsAnOpenList) {
  OmComposite c("^1", false);
  c.BeginRepeatList();
  c.Add(OmStringCell("a"));
  auto copy = c.Clone();
  auto& cc = static_cast<OmComposite&>(*copy);
  EXPECT_TRUE(cc.InRepeatList());
  cc.Add(OmStringCell("b"));
  cc.EndRepeatList();
  EXPECT_EQ(cc.SubstitutedText(), "a, b");
  EXPECT_EQ(c.SubstitutedText(), "a");
  EXPECT_NE(c.Compare(cc), 0);
}

TEST(OmComposite, EndWithoutBeginFails) {
  OmComposite c("x", false);
  EXPECT_THROW(c.EndRepeatList(), OMSException);
  EXPECT_THROW(c.Argument(0), OMSException);
}

}  // namespace
