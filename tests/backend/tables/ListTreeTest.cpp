#include "backend/tables/ListTree.h"

#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Tree = ListTree<std::string>;
using Node = Tree::Node;

// "value/level" for every node in order, e.g. "root/0 a/1 b/2".
std::string Shape(Tree& tree) {
  std::string s;
  for (Node n = tree.Begin(); n != tree.End(); ++n) {
    if (!s.empty()) s += " ";
    s += *n + "/" + std::to_string(n.Level());
  }
  return s;
}

// root
//   a
//     a1
//     a2
//   b
struct Sample {
  Tree tree;
  Node root, a, a1, a2, b;
  Sample() {
    root = tree.Insert(tree.End(0), "root");
    a = tree.AppendChild(root, "a");
    b = tree.AppendChild(root, "b");
    a1 = tree.AppendChild(a, "a1");
    a2 = tree.AppendChild(a, "a2");
  }
};

// Erases counted destructions of owned values, as the output tree does.
class CountingTree : public ListTree<int> {
public:
  std::vector<int> discarded;
  ~CountingTree() override { DiscardAll(); }

protected:
  void Discard(int& v) override { discarded.push_back(v); }
};

TEST(ListTree, ParentIsTheNearestEarlierShallowerNode) {
  Sample s;
  EXPECT_EQ(s.a2.Parent(), s.a);
  EXPECT_EQ(s.b.Parent(), s.root);
  EXPECT_TRUE(s.root.IsRoot());
  try {
    s.root.Parent();
    FAIL() << "Parent of the root must fail";
  } catch (const OMSException& e) {
    EXPECT_NE(e.Message().find("!IsRoot()"), std::string::npos);
  }
}

TEST(ListTree, ChildrenAndSiblingWalkStopAtTheSubtreeEnd) {
  Sample s;
  std::vector<std::string> names;
  for (Node c = s.root.FirstChild(); c != s.root.ChildEnd(); c = c.NextSibling()) names.push_back(*c);
  EXPECT_EQ(names, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(s.a.NChildren(), 2u);
  EXPECT_EQ(s.b.NChildren(), 0u);
  EXPECT_EQ(s.b.FirstChild(), s.b.ChildEnd());
}

TEST(ListTree, InsertChildAtAPositionAmongSiblings) {
  Sample s;
  s.tree.InsertChild(s.a, 1, "mid");
  s.tree.InsertChild(s.root, 0, "first");
  s.tree.InsertChild(s.a, 99, "last");
  EXPECT_EQ(Shape(s.tree), "root/0 first/1 a/1 a1/2 mid/2 a2/2 last/2 b/1");
  EXPECT_EQ(s.a.LastDescendant().Value(), "last");
}

TEST(ListTree, EraseRemovesTheSubtreeAndKeepsOtherHandles) {
  CountingTree tree;
  auto root = tree.Insert(tree.End(0), 0);
  auto a = tree.AppendChild(root, 1);
  tree.AppendChild(a, 2);
  tree.AppendChild(a, 3);
  auto b = tree.AppendChild(root, 4);
  auto pos = tree.Erase(a);
  EXPECT_EQ(tree.Size(), 2u);
  EXPECT_EQ(tree.discarded, (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(pos.Here(), b);
  EXPECT_EQ(*b, 4);
  EXPECT_EQ(b.Parent(), root);
  // The root's subtree now ends at b; a new child goes after it.
  tree.AppendChild(root, 5);
  EXPECT_EQ(*root.LastDescendant(), 5);
}

TEST(ListTree, EraseOneLiftsTheChildrenIntoItsPlace) {
  Sample s;
  Node a11 = s.tree.AppendChild(s.a1, "a11");
  Node taken = s.tree.EraseOne(s.a);
  EXPECT_EQ(taken, s.a1);
  EXPECT_EQ(Shape(s.tree), "root/0 a1/1 a11/2 a2/1 b/1");
  EXPECT_EQ(s.a1.Parent(), s.root);
  EXPECT_EQ(s.a2.Parent(), s.root);
  EXPECT_EQ(a11.Parent(), s.a1);
  EXPECT_EQ(s.root.NChildren(), 3u);
}

TEST(ListTree, EraseOneOfALastLeafHandsTheSubtreeEndToItsPredecessor) {
  Sample s;
  s.tree.EraseOne(s.a2);
  EXPECT_EQ(s.a.LastDescendant(), s.a1);
  s.tree.AppendChild(s.a, "a3");
  EXPECT_EQ(Shape(s.tree), "root/0 a/1 a1/2 a3/2 b/1");
}

TEST(ListTree, PruneLooksAtChildrenBeforeTheirParents) {
  Sample s;
  Node c = s.tree.AppendChild(s.root, "c");
  s.tree.AppendChild(c, "drop");
  // Drop "drop" leaves, then any non-root node left without children whose name is one letter:
  // "c" goes only because its child went first.
  std::size_t removed = s.tree.Prune([](Node n) {
    return *n == "drop" || (n.Value().size() == 1 && !n.HasChildren() && !n.IsRoot() && *n != "b");
  });
  EXPECT_EQ(removed, 2u);
  EXPECT_EQ(Shape(s.tree), "root/0 a/1 a1/2 a2/2 b/1");
}

TEST(ListTree, PruneOfAPositionRemovesNothing) {
  Sample s;
  Node end = s.tree.End(0);
  s.tree.Prune(end);
  EXPECT_EQ(s.tree.Size(), 5u);
  Node a = s.a;
  s.tree.Prune(a);
  EXPECT_EQ(Shape(s.tree), "root/0 b/1");
  EXPECT_TRUE(a.IsEnd());
}

TEST(ListTree, MoveIntoAnEmptyTreeAtLevelOne) {
  Tree target;
  Tree source;
  Node r = source.Insert(source.End(0), "r");
  Node p = source.AppendChild(r, "p");
  source.AppendChild(p, "x");
  target.Move(target.End(1), p, source.End());
  EXPECT_EQ(Shape(target), "p/1 x/2");
  EXPECT_TRUE(target.Begin().IsRoot());
}

TEST(ListTree, MoveRefusesARangeThatClimbsAboveItsFirstNode) {
  Sample s;
  Tree target;
  // From a1 to the end runs into b at level 1, above a1's level 2.
  EXPECT_THROW(target.Move(target.End(2), s.a1, s.tree.End()), OMSException);
  EXPECT_EQ(s.tree.Size(), 5u);
}

}  // namespace
