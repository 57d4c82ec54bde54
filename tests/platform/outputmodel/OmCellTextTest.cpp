#include <cmath>

#include <gtest/gtest.h>

#include "platform/outputmodel/OmMemoryRegion.h"
#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmStringCellUTF8.h"
#include "platform/outputmodel/OmStringDataValue.h"
#include "platform/outputmodel/OmVariable.h"

namespace {

TEST(OmVariable, DisplayModeChoosesNameLabelOrBoth) {
  OmVariable v("age", "Age in years", 1);
  EXPECT_EQ(v.Text(), "age");
  v.setDisplayMode(2);
  EXPECT_EQ(v.Text(), "Age in years");
  v.setDisplayMode(3);
  EXPECT_EQ(v.Text(), "Age in years [age]");
  v.setDisplayMode(0);
  EXPECT_EQ(v.Text(), "Age in years");
  OmVariable unlabelled("x", "", 3);
  EXPECT_EQ(unlabelled.Text(), "x");
}

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

TEST(OmNumber, FormatWordPacksTypeWidthAndDecimalsAndSystemMissingShowsADot) {
  const std::uint32_t f = OmNumber::MakeFormat(5, 8, 2);
  EXPECT_EQ(f, 0x02050008u);
  EXPECT_EQ(OmNumber::Width(f), 8);
  EXPECT_EQ(OmNumber::Type(f), 5);
  EXPECT_EQ(OmNumber::Decimals(f), 2);
  EXPECT_EQ(OmNumber(3.14159, f).Text(), "3.14");
  OmNumber missing(OmNumber::kSysMiss, f);
  EXPECT_TRUE(missing.IsSysMiss());
  EXPECT_EQ(missing.Text(), ".");
}

TEST(OmCellTextCompare, EqualContentIgnoresDecorationsAndFlags) {
  OmStringCell a("Mean", true);
  OmStringCell b("Mean", false);
  b.Footnote(3);
  b.setTextBold(true);
  EXPECT_EQ(a.Compare(b), 0);
  EXPECT_TRUE(a.Equals(b));
  EXPECT_EQ(a.Hash(), b.Hash());
  EXPECT_LT(OmStringCell("A").Compare(OmStringCell("B")), 0);
  EXPECT_GT(OmStringCell("B").Compare(OmStringCell("A")), 0);
}

TEST(OmCellTextCompare, DifferentKindsAreNeverEqual) {
  OmStringCell s("1");
  OmNumber n(1);
  EXPECT_NE(s.Compare(n), 0);
  EXPECT_EQ(s.Compare(n), -n.Compare(s));
  EXPECT_FALSE(s.Equals(n));
  EXPECT_NE(s.TypeIdentity(), n.TypeIdentity());
}

TEST(OmCellTextCompare, VariablesCompareByNameAndValuesByNameAndValue) {
  EXPECT_TRUE(OmVariable("Imputation_", "Imputation Number").Equals(OmVariable("Imputation_", "")));
  EXPECT_FALSE(OmVariable("a", "").Equals(OmVariable("A", "")));
  // The value label does not take part: the original-data category is found by value 0.
  EXPECT_TRUE(OmNumDataValue("Imputation_", "Original data", 0, 0x50008)
                  .Equals(OmNumDataValue("Imputation_", "", 0, 0x50005)));
  EXPECT_FALSE(OmNumDataValue("Imputation_", "", 0, 0x50008).Equals(OmNumDataValue("Imputation_", "", 1, 0x50008)));
  EXPECT_FALSE(OmNumDataValue("a", "", 0, 0).Equals(OmNumDataValue("b", "", 0, 0)));
}

TEST(OmCellTextCompare, NumbersOrderByValueWithNaNLast) {
  EXPECT_LT(OmNumber(1).Compare(OmNumber(2)), 0);
  EXPECT_EQ(OmNumber(0.0).Compare(OmNumber(-0.0)), 0);
  EXPECT_EQ(OmNumber(0.0).Hash(), OmNumber(-0.0).Hash());
  EXPECT_GT(OmNumber(NAN).Compare(OmNumber(1e300)), 0);
  EXPECT_EQ(OmNumber(NAN).Compare(OmNumber(NAN)), 0);
}

TEST(OmCellTextClone, IsDeepAndCountedInItsRegion) {
  OmStringCell s("key", true);
  s.setShownText("shown");
  s.setFurtherText("further");
  s.Footnote(2);
  s.addMarker("*");
  s.addMiscProperty("p");
  s.setTextColor("#FF0000");
  s.setVisible(false);
  OmMemoryRegion region;
  auto copy = s.Clone(&region);
  EXPECT_EQ(region.Allocations(), 1u);
  auto* c = dynamic_cast<OmStringCell*>(copy.get());
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->KeyText(), "key");
  EXPECT_EQ(c->ShownText(), "shown");
  EXPECT_EQ(c->Text(), "shown");
  EXPECT_EQ(c->FurtherText(), "further");
  EXPECT_TRUE(c->Translatable());
  EXPECT_EQ(c->Footnotes(), (std::vector<std::int16_t>{2}));
  EXPECT_EQ(c->Markers(), (std::vector<std::string>{"*"}));
  EXPECT_EQ(c->TextColor(), "#FF0000");
  EXPECT_FALSE(c->Visible());
  // Changing the copy leaves the original alone.
  c->Footnote(5);
  c->setTextColor("#000000");
  EXPECT_EQ(s.Footnotes().size(), 1u);
  EXPECT_EQ(s.TextColor(), "#FF0000");

  const auto before = OmMemoryRegion::DefaultHeap()->Allocations();
  OmNumber(1).Clone();
  EXPECT_EQ(OmMemoryRegion::DefaultHeap()->Allocations(), before + 1);
}

TEST(OmCellTextFootnotes, ReferencesAreUniqueAndRemovable) {
  OmNumber n(1);
  EXPECT_FALSE(n.HasDecorations());
  n.Footnote(0);
  n.Footnote(4);
  n.Footnote(0);
  EXPECT_EQ(n.Footnotes(), (std::vector<std::int16_t>{0, 4}));
  n.RemoveFootnote(0);
  n.RemoveFootnote(9);
  EXPECT_EQ(n.Footnotes(), (std::vector<std::int16_t>{4}));
}

TEST(OmStringCellUTF8, HoldsOneToThreeTextsAndShowsTheFirst) {
  OmStringCellUTF8 one("a");
  OmStringCellUTF8 three("a", "b", "c");
  EXPECT_EQ(three.NTexts(), 3u);
  EXPECT_EQ(three.Text(), "a");
  EXPECT_NE(one.Compare(three), 0);
  EXPECT_TRUE(three.Equals(OmStringCellUTF8("a", "b", "c")));
}

class KindRecorder : public OmCellText::Visitor {
public:
  std::string seen;
  void Visit(OmNumber&) override { seen += "N"; }
  void Visit(OmStringCell&) override { seen += "S"; }
  void Visit(OmStringCellUTF8&) override { seen += "U"; }
  void Visit(OmVariable&) override { seen += "V"; }
  void Visit(OmNumDataValue&) override { seen += "D"; }
  void Visit(OmStringDataValue&) override { seen += "T"; }
};

TEST(OmCellTextVisitor, EachKindReachesItsOwnVisit) {
  KindRecorder r;
  OmNumber(1).Accept(r);
  OmStringCell("s").Accept(r);
  OmStringCellUTF8("u").Accept(r);
  OmVariable("v", "").Accept(r);
  OmNumDataValue("v", "", 1, 0).Accept(r);
  OmStringDataValue("v", "", "x", 0).Accept(r);
  EXPECT_EQ(r.seen, "NSUVDT");
}

}  // namespace
