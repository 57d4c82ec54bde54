#include "platform/outputmodel/OmDimension.h"


#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

#include "platform/outputmodel/OmNumDataValue.h"
#include "platform/outputmodel/OmNumber.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmStringCellUTF8.h"
#include "platform/outputmodel/OmVariable.h"

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
      const int expected = dim.FindChild(root, S(text), false);
      // Whatever category is guessed first.
      for (int guess = -1; guess <= int(root->NChildren()); ++guess) {
        EXPECT_EQ(root->FindCategoryText(text, guess), expected)
            << "'" << text << "' among " << root->NChildren() << ", guess " << guess;
      }
    }
    EXPECT_EQ(root->FindCategoryText("Mean"), 3);
    EXPECT_EQ(root->FindCategoryText("N"), 4);
  }
  // A guess that was right while the texts were unique is not once a duplicate comes before it.
  OmDimension dim(S("d"));
  for (const char* text : {"a", "b", "c"}) dim.Child(&dim.Root(), -1, S(text), false);
  EXPECT_EQ(dim.Root().FindCategoryText("c", 2), 2);
  dim.Child(&dim.Root(), -1, S("b"), false);
  EXPECT_EQ(dim.Root().FindCategoryText("b", 3), 1);
  dim.Root().RemoveChild(3);
  EXPECT_EQ(dim.Root().FindCategoryText("c", 2), 2);
  dim.Root().Child(0)->setLabel(S("c").Clone());
  EXPECT_EQ(dim.Root().FindCategoryText("c", 2), 0);
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

}  // namespace
