#include <cmath>

#include <gtest/gtest.h>

#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmStringCellUTF8.h"
#include "platform/outputmodel/OmStringDataValue.h"

namespace {

TEST(OmDataValues, DisplayModeChoosesValueLabelOrBoth) {
  OmNumDataValue n("sex", "Female", 2, 0x50008, 1);
  EXPECT_EQ(n.Text(), "2");
  n.setDisplayMode(2);
  EXPECT_EQ(n.Text(), "Female");
  n.setDisplayMode(3);
  EXPECT_EQ(n.Text(), "Female [2]");
  OmNumDataValue unlabelled("sex", "", 2.5, 0x1050008, 2);
  EXPECT_EQ(unlabelled.Text(), "2.5");
  OmStringDataValue s("city", "Berlin", "B", 0x10008, 3);
  EXPECT_EQ(s.Text(), "Berlin [B]");
  s.setDisplayMode(1);
  EXPECT_EQ(s.Text(), "B");
}

TEST(OmCellTextCompare, DifferentKindsAreNeverEqual) {
  OmStringCell s("1");
  OmNumber n(1);
  EXPECT_NE(s.Compare(n), 0);
  EXPECT_EQ(s.Compare(n), -n.Compare(s));
  EXPECT_FALSE(s.Equals(n));
  EXPECT_NE(s.TypeIdentity(), n.TypeIdentity());
}

TEST(OmCellTextCompare, NumbersOrderByValueWithNaNLast) {
  EXPECT_LT(OmNumber(1).Compare(OmNumber(2)), 0);
  EXPECT_EQ(OmNumber(0.0).Compare(OmNumber(-0.0)), 0);
  EXPECT_EQ(OmNumber(0.0).Hash(), OmNumber(-0.0).Hash());
  EXPECT_GT(OmNumber(NAN).Compare(OmNumber(1e300)), 0);
  EXPECT_EQ(OmNumber(NAN).Compare(OmNumber(NAN)), 0);
}

TEST(OmStringCellUTF8, HoldsOneToThreeTextsAndShowsTheFirst) {
  OmStringCellUTF8 one("a");
  OmStringCellUTF8 three("a", "b", "c");
  EXPECT_EQ(three.NTexts(), 3u);
  EXPECT_EQ(three.Text(), "a");
  EXPECT_NE(one.Compare(three), 0);
  EXPECT_TRUE(three.Equals(OmStringCellUTF8("a", "b", "c")));
}

}  // namespace
