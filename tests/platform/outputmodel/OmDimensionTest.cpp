#include "platform/outputmodel/OmDimension.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmStringCellUTF8.h"
#include "platform/outputmodel/OmVariable.h"
#include "platform/strings/CodePage.h"
#include "platform/strings/icuTracker.h"

namespace {

OmStringCell S(const std::string& t) { return OmStringCell(t); }

TEST(OmDimension, CategoriesGetLeafIndicesInOrderOfCreation) {
  OmDimension dim(S("Statistics"));
  auto* root = &dim.Root();
  auto* group = dim.Child(root, -1, S("N"), true);
  EXPECT_EQ(group->LeafIndex(), -1);
  EXPECT_EQ(group->Depth(), 1);
  auto* valid = dim.Child(group, dim.Size(), S("Valid"), false);
  auto* missing = dim.Child(group, dim.Size(), S("Missing"), false);
  auto* mean = dim.Child(root, -1, S("Mean"), false);
  EXPECT_EQ(valid->LeafIndex(), 0);
  EXPECT_EQ(missing->LeafIndex(), 1);
  EXPECT_EQ(mean->LeafIndex(), 2);
  EXPECT_EQ(valid->Depth(), 2);
  EXPECT_EQ(dim.Size(), 3);
  std::vector<int> order;
  for (auto* leaf : dim.Leaves()) order.push_back(leaf->LeafIndex());
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(dim.FindLeaf(1), missing);
  EXPECT_EQ(dim.FindLeaf(7), nullptr);
}

TEST(OmDimension, FindChildTellsGroupsFromCategories) {
  OmDimension dim(S("d"));
  auto* root = &dim.Root();
  dim.Child(root, -1, S("x"), true);
  dim.Child(root, -1, S("x"), false);
  EXPECT_EQ(dim.FindChild(root, S("x"), true), 0);
  EXPECT_EQ(dim.FindChild(root, S("x"), false), 1);
  EXPECT_EQ(dim.FindChild(root, S("y"), false), -1);
  EXPECT_EQ(dim.FindChild(root, OmNumber(1), false), -1);
}

TEST(OmDimension, FindChildStaysCorrectWithManyChildrenAndAfterReordering) {
  OmDimension dim(S("d"));
  auto* root = &dim.Root();
  for (int i = 0; i < 5000; ++i) dim.Child(root, -1, OmNumber(i), false);
  EXPECT_EQ(dim.FindChild(root, OmNumber(4321), false), 4321);
  EXPECT_EQ(dim.FindChild(root, OmNumber(-1), false), -1);
  dim.Child(root, -1, OmNumber(9999), false);  // the index follows additions
  EXPECT_EQ(dim.FindChild(root, OmNumber(9999), false), 5000);
  auto& children = root->Children();  // reordering through the mutable list drops the index
  std::reverse(children.begin(), children.end());
  EXPECT_EQ(dim.FindChild(root, OmNumber(9999), false), 0);
  EXPECT_EQ(dim.FindChild(root, OmNumber(0), false), 5000);
}

// The factory finds a cell's category by its label text without making the label cell: that
// look-up must answer exactly as FindChild with a made OmStringCell does, among labels of other
// kinds showing the same text, groups, duplicates, and with few children and with many (hashed).
TEST(OmDimensionNode, FindCategoryTextAnswersAsFindChildWithAStringCell) {
  for (int extra : {0, 40}) {
    OmDimension dim(S("d"));
    auto* root = &dim.Root();
    dim.Child(root, -1, S("N"), true);                             // a group with the text
    dim.Child(root, -1, OmVariable("N", "N"), false);              // another kind, same text
    dim.Child(root, -1, OmStringCellUTF8("Mean"), false);          // a subclass, same text
    dim.Child(root, -1, S("Mean"), false);
    dim.Child(root, -1, OmStringCell("N", true), false);           // translatable: still equal
    dim.Child(root, -1, S("Mean"), false);                         // a duplicate: the first wins
    dim.Child(root, -1, S(""), false);
    for (int i = 0; i < extra; ++i) dim.Child(root, -1, S("c" + std::to_string(i)), false);
    for (const char* text : {"N", "Mean", "", "c7", "c39", "missing", "Mea"}) {
      EXPECT_EQ(root->FindCategoryText(text), dim.FindChild(root, S(text), false))
          << "'" << text << "' among " << root->NChildren();
    }
    EXPECT_EQ(root->FindCategoryText("Mean"), 3);
    EXPECT_EQ(root->FindCategoryText("N"), 4);
  }
}

TEST(OmDimension, CounterpartFollowsTheSamePath) {
  OmDimension a(S("d"));
  auto* g = a.Child(&a.Root(), -1, S("g"), true);
  auto* c = a.Child(g, -1, S("c"), false);
  OmDimension b(a);
  auto* bc = b.Counterpart(c);
  ASSERT_NE(bc, nullptr);
  EXPECT_NE(bc, c);
  EXPECT_TRUE(bc->Label()->Equals(*c->Label()));
  EXPECT_EQ(b.Counterpart(&a.Root()), &b.Root());
  a.Child(g, -1, S("extra"), false);
  EXPECT_EQ(b.Counterpart(a.Root().Child(0)->Child(1)), nullptr);
  // The copy's tree links back to its own nodes.
  EXPECT_EQ(bc->Parent()->Parent(), &b.Root());
}

TEST(OmDimension, DeleteRemovesTheSubtreeButNeverTheRoot) {
  OmDimension dim(S("d"));
  auto* g = dim.Child(&dim.Root(), -1, S("g"), true);
  dim.Child(g, -1, S("a"), false);
  dim.Child(&dim.Root(), -1, S("b"), false);
  dim.Delete(g);
  EXPECT_EQ(dim.Root().NChildren(), 1u);
  EXPECT_EQ(dim.Size(), 2);  // leaf indices are not reused
  EXPECT_THROW(dim.Delete(&dim.Root()), OMSException);
  OmDimension other(S("o"));
  auto* foreign = other.Child(&other.Root(), -1, S("f"), false);
  EXPECT_THROW(dim.Delete(foreign), OMSException);
}

TEST(OmDimensionNode, EqualityNeedsSameKindAndLabel) {
  OmDimensionNode a(S("x").Clone(), true, -1);
  OmDimensionNode b(S("x").Clone(), true, -1);
  OmDimensionNode c(S("x").Clone(), false, 0);
  OmDimensionNode d(S("y").Clone(), true, -1);
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a == c);
  EXPECT_FALSE(a == d);
}

TEST(OmDimensionNode, OrderIsNumericForNumbersAndCollatedForText) {
  auto node = [](std::unique_ptr<OmCellText> label) { return OmDimensionNode(std::move(label), false, 0); };
  EXPECT_TRUE(node(std::make_unique<OmNumber>(2)) < node(std::make_unique<OmNumber>(10)));
  EXPECT_FALSE(node(std::make_unique<OmNumber>(10)) < node(std::make_unique<OmNumber>(2)));
  EXPECT_TRUE(node(std::make_unique<OmNumDataValue>("v", "z label", 1, 0)) <
              node(std::make_unique<OmNumDataValue>("v", "a label", 2, 0)));
  // Collation: case and accents are secondary, so "apple" < "Banana" < "cherry" and "é" near "e".
  EXPECT_TRUE(node(std::make_unique<OmStringCell>("apple")) < node(std::make_unique<OmStringCell>("Banana")));
  EXPECT_TRUE(node(std::make_unique<OmStringCell>("Banana")) < node(std::make_unique<OmStringCell>("cherry")));
  EXPECT_TRUE(node(std::make_unique<OmStringCell>("\xC3\xA9t\xC3\xA9")) < node(std::make_unique<OmStringCell>("f")));
  // Numbers come before texts; an unlabelled node first of all.
  EXPECT_TRUE(node(std::make_unique<OmNumber>(99)) < node(std::make_unique<OmStringCell>("1")));
  EXPECT_TRUE(node(nullptr) < node(std::make_unique<OmNumber>(0)));
  EXPECT_FALSE(node(nullptr) < node(nullptr));
}

// Labels are compared as the characters they encode, in the session's code page (UTF-8 cells
// always as UTF-8), in the order of their tracker's locale.
TEST(OmDimensionNode, TextOrderFollowsTheLabelsCodePageAndLocale) {
  auto node = [](std::unique_ptr<OmCellText> label, icuTracker* tracker = nullptr) {
    if (tracker != nullptr) label->setICUTracker(tracker);
    return OmDimensionNode(std::move(label), false, 0);
  };
  const std::string apfelUtf8 = "\xC3\xA4pfel", apfelLatin = "\xE4pfel";  // "äpfel"

  CodePage::SetCurrent("windows-1252");
  EXPECT_TRUE(node(std::make_unique<OmStringCell>(apfelLatin)) <
              node(std::make_unique<OmStringCell>("birnen")));
  EXPECT_TRUE(node(std::make_unique<OmStringCellUTF8>(apfelUtf8)) <
              node(std::make_unique<OmStringCellUTF8>("birnen")));
  icuTracker latinGerman(false, "de_DE.windows-1252");
  EXPECT_TRUE(node(std::make_unique<OmStringCell>(apfelLatin), &latinGerman) <
              node(std::make_unique<OmStringCell>("birnen"), &latinGerman));
  CodePage::SetCurrent("UTF-8");

  // Swedish sorts "ä" after "z"; the root order puts it with "a".
  icuTracker swedish(true, "sv_SE");
  EXPECT_TRUE(node(std::make_unique<OmStringCell>("zebra"), &swedish) <
              node(std::make_unique<OmStringCell>("\xC3\xA4pple"), &swedish));
  EXPECT_TRUE(node(std::make_unique<OmStringCell>("\xC3\xA4pple")) <
              node(std::make_unique<OmStringCell>("zebra")));
}

TEST(OmDimension, DeleteInATableDestroysTheCategoriesCells) {
  OmPivotTable table(S("t"), S("tmpl"));
  const int d0 = table.AddDimension(S("rows"));
  const int d1 = table.AddDimension(S("cols"));
  auto& rows = table.Dimension(d0);
  auto* g = rows.Child(&rows.Root(), -1, S("g"), true);
  rows.Child(g, -1, S("r0"), false);
  rows.Child(g, -1, S("r1"), false);
  rows.Child(&rows.Root(), -1, S("r2"), false);
  auto& cols = table.Dimension(d1);
  cols.Child(&cols.Root(), -1, S("c0"), false);
  cols.Child(&cols.Root(), -1, S("c1"), false);
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 2; ++c) table.Cell({r, c}, OmNumber(r * 10 + c));
  }
  rows.Delete(g);
  EXPECT_EQ(table.NCells(), 2u);
  EXPECT_EQ(table.Cell({0, 0}), nullptr);
  EXPECT_EQ(table.Cell({1, 1}), nullptr);
  ASSERT_NE(table.Cell({2, 1}), nullptr);
  EXPECT_EQ(static_cast<OmNumber*>(table.Cell({2, 1}))->Value(), 21);
}

}  // namespace
