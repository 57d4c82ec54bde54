#include "platform/outputmodel/OmComposite.h"

#include "platform/errors/OMSException.h"

#include <gtest/gtest.h>

#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmVariable.h"

namespace {

TEST(OmComposite, TextIsThePatternUntilSubstituted) {
  OmComposite c("Bootstrap for ^1", true);
  c.Add(OmStringCell("Descriptives"));
  EXPECT_EQ(c.Text(), "Bootstrap for ^1");
  EXPECT_EQ(c.SubstitutedText(), "Bootstrap for Descriptives");
  EXPECT_EQ(c.Text(), "Bootstrap for ^1");
  c.Substitute();
  EXPECT_EQ(c.Text(), "Bootstrap for Descriptives");
}

TEST(OmComposite, ArgumentsMayAppearInAnyOrderAndRepeat) {
  OmComposite c("^2 of ^1 (^2)", false);
  c.Add(OmStringCell("x"));
  c.Add(OmNumber(95, 0x50005));
  c.Substitute();
  EXPECT_EQ(c.Text(), "95 of x (95)");
}

TEST(OmComposite, RepeatListJoinsItsMembers) {
  OmComposite c("Dependent: ^1; Factors: ^2", false);
  c.Add(OmVariable("y", "", 1));
  c.BeginRepeatList();
  EXPECT_TRUE(c.InRepeatList());
  c.Add(OmVariable("a", "", 1));
  c.Add(OmVariable("b", "", 1));
  c.Add(OmVariable("c", "", 1));
  c.EndRepeatList();
  EXPECT_FALSE(c.InRepeatList());
  ASSERT_EQ(c.NArguments(), 2u);
  EXPECT_EQ(c.Argument(1), nullptr);  // a repeat list has no cell of its own
  EXPECT_EQ(c.Root().Parts()[1]->Parts().size(), 3u);
  c.Substitute();
  EXPECT_EQ(c.Text(), "Dependent: y; Factors: a, b, c");
}

TEST(OmComposite, NestedRepeatListsAndCompositesSubstituteInside) {
  OmComposite inner("^1%", false);
  inner.Add(OmNumber(95, 0x50005));
  OmComposite c("^1 interval for ^2", false);
  c.Add(inner);
  c.BeginRepeatList();
  c.Add(OmStringCell("p"));
  c.BeginRepeatList();
  c.Add(OmStringCell("q"));
  c.Add(OmStringCell("r"));
  c.EndRepeatList();
  c.EndRepeatList();
  EXPECT_EQ(c.SubstitutedText(), "95% interval for p, q, r");
}

TEST(OmComposite, MissingArgumentsAreDroppedOrKept) {
  OmComposite c("a ^1 b ^3 c ^ d ^^", false);
  c.Add(OmStringCell("X"));
  EXPECT_EQ(c.SubstitutedText(nullptr, false), "a X b  c ^ d ^");
  EXPECT_EQ(c.SubstitutedText(nullptr, true), "a X b ^3 c ^ d ^");
  EXPECT_EQ(OmComposite::SubstituteText("^10^1", {"1", "2", "3", "4", "5", "6", "7", "8", "9", "ten"}, false),
            "ten1");
}

TEST(OmComposite, TranslatedPatternAndArgumentsAreUsed) {
  OmComposite c("Based on ^1 samples", true);
  c.Add(OmNumber(1000, 0x50005));
  static_cast<OmStringCell&>(c.Pattern()).setShownText("Basierend auf ^1 Stichproben");
  c.Substitute();
  EXPECT_EQ(c.Text(), "Basierend auf 1000 Stichproben");
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

TEST(OmComposite, CompareLooksAtPatternAndArguments) {
  OmComposite a("^1", false), b("^1", false);
  a.Add(OmNumber(1));
  b.Add(OmNumber(1));
  EXPECT_EQ(a.Compare(b), 0);
  EXPECT_EQ(a.Hash(), b.Hash());
  b.Add(OmNumber(2));
  EXPECT_NE(a.Compare(b), 0);
  OmComposite d("^1", false);
  d.Add(OmNumber(3));
  EXPECT_NE(a.Compare(d), 0);
}

TEST(OmComposite, EndWithoutBeginFails) {
  OmComposite c("x", false);
  EXPECT_THROW(c.EndRepeatList(), OMSException);
  EXPECT_THROW(c.Argument(0), OMSException);
}

}  // namespace
