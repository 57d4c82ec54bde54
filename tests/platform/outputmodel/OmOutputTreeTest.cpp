#include "platform/outputmodel/OmOutputTree.h"

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"

#include "platform/outputmodel/Amputate.h"
#include "platform/outputmodel/OmChart.h"
#include "platform/outputmodel/OmHeading.h"
#include "platform/outputmodel/OmPageTitle.h"
#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmProcedure.h"
#include "platform/outputmodel/OmStringCell.h"
#include "platform/outputmodel/OmTextBlock.h"

namespace {

int gDestroyed = 0;

// A heading that counts its destruction, to see which parts the tree destroys.
class CountedHeading : public OmHeading {
public:
  explicit CountedHeading(const std::string& label) : OmHeading(OmStringCell(label)) {}
  ~CountedHeading() override { ++gDestroyed; }
};

// A builder that counts its destruction and checks that its table still exists then.
class CountedBuilder : public OmBuilderSlot {
public:
  explicit CountedBuilder(OmPivotTable* table) : _table(table) {}
  ~CountedBuilder() override {
    ++gDestroyed;
    EXPECT_EQ(_table->TemplateName().Text(), "T");
  }

private:
  OmPivotTable* _table;
};

TEST(OmOutputTree, ANewTreeHasOneRootWithoutAPart) {
  OmOutputTree tree;
  ASSERT_EQ(tree.Size(), 1u);
  EXPECT_EQ(*tree.Root(), nullptr);
  EXPECT_EQ(tree.Root().Level(), 0);
  OmOutputTree empty(false);
  EXPECT_TRUE(empty.Empty());
  auto n = empty.AppendUnderRoot(std::make_unique<OmHeading>(OmStringCell("h")));
  EXPECT_EQ(n.Level(), 1);
}

TEST(OmOutputTree, ErasingAndPruningDestroyTheParts) {
  gDestroyed = 0;
  {
    OmOutputTree tree;
    auto a = tree.AppendUnderRoot(std::make_unique<CountedHeading>("a"));
    tree.Append(a, std::make_unique<CountedHeading>("a1"));
    auto b = tree.AppendUnderRoot(std::make_unique<CountedHeading>("b"));
    tree.AppendUnderRoot(std::make_unique<CountedHeading>("c"));
    tree.Erase(a);
    EXPECT_EQ(gDestroyed, 2);
    tree.Prune(b);
    EXPECT_EQ(gDestroyed, 3);
    EXPECT_EQ(tree.Size(), 2u);
  }
  EXPECT_EQ(gDestroyed, 4);  // the tree's destructor takes the rest
}

TEST(OmOutputTree, EraseOneKeepsTheChildrensParts) {
  gDestroyed = 0;
  OmOutputTree tree;
  auto h = tree.AppendUnderRoot(std::make_unique<CountedHeading>("h"));
  auto t = tree.Append(h, std::make_unique<CountedHeading>("t"));
  tree.EraseOne(h);
  EXPECT_EQ(gDestroyed, 1);
  EXPECT_EQ(t.Level(), 1);
  EXPECT_EQ(t.Value()->LabelText(), "t");
}

TEST(OmOutputTree, ReleaseHandsALeafsPartOver) {
  gDestroyed = 0;
  OmOutputTree tree;
  auto h = tree.AppendUnderRoot(std::make_unique<CountedHeading>("h"));
  auto leaf = tree.Append(h, std::make_unique<CountedHeading>("leaf"));
  EXPECT_THROW(tree.Release(h), OMSException);
  std::unique_ptr<OmOutputPart> part = tree.Release(leaf);
  EXPECT_EQ(gDestroyed, 0);
  EXPECT_EQ(part->LabelText(), "leaf");
  EXPECT_EQ(tree.Size(), 2u);
  part.reset();
  EXPECT_EQ(gDestroyed, 1);
}

TEST(OmOutputTree, MovingBetweenTreesTransfersOwnership) {
  gDestroyed = 0;
  OmOutputTree out;
  {
    OmOutputTree proc;
    auto p = proc.AppendUnderRoot(std::make_unique<CountedHeading>("proc"));
    proc.Append(p, std::make_unique<CountedHeading>("table"));
    out.Move(out.Root().ChildEnd(), p, proc.End());
    EXPECT_EQ(proc.Size(), 1u);
  }
  EXPECT_EQ(gDestroyed, 0);
  EXPECT_EQ(out.Size(), 3u);
  EXPECT_EQ(out.Count<OmHeading>(), 2u);
}

TEST(OmOutputPart, TheBuilderGoesBeforeItsTable) {
  gDestroyed = 0;
  {
    auto table = std::make_unique<OmPivotTable>(OmStringCell("t"), OmStringCell("T"));
    table->setBuilder(std::make_unique<CountedBuilder>(table.get()));
    EXPECT_NE(table->Builder(), nullptr);
  }
  EXPECT_EQ(gDestroyed, 1);
  OmPivotTable table(OmStringCell("t"), OmStringCell("T"));
  table.setBuilder(std::make_unique<CountedBuilder>(&table));
  auto builder = table.ReleaseBuilder();
  EXPECT_EQ(table.Builder(), nullptr);
  builder.reset();
  EXPECT_EQ(gDestroyed, 2);
}

TEST(OmOutputPart, LabelIsACopyOfTheCellGiven) {
  OmStringCell label("Label");
  OmTextBlock block(label, "UTF-8", true);
  label.setShownText("changed");
  EXPECT_EQ(block.LabelText(), "Label");
}

class PartRecorder : public OmOutputPart::Visitor {
public:
  std::string seen;
  void Visit(OmPivotTable&) override { seen += "T"; }
  void Visit(OmProcedure&) override { seen += "P"; }
  void Visit(OmHeading&) override { seen += "H"; }
  void Visit(OmTextBlock&) override { seen += "X"; }
  void Visit(OmChart&) override { seen += "C"; }
};

TEST(OmOutputPart, AcceptReachesTheVisitOfTheKind) {
  PartRecorder r;
  OmStringCell l("l");
  OmProcedure(l, "", "", "").Accept(r);
  OmHeading(l).Accept(r);
  OmPivotTable(l, l).Accept(r);
  OmTextBlock(l, "").Accept(r);
  OmChart(l, "", 7).Accept(r);
  OmPageTitle("").Accept(r);  // not overridden: nothing happens
  EXPECT_EQ(r.seen, "PHTXC");
}

TEST(Amputate, AppendsATitledBlockUnderTheProcedure) {
  OmOutputTree tree;
  auto proc = tree.AppendUnderRoot(std::make_unique<OmProcedure>(OmStringCell("Freq"), "en", "UTF-8", "en"));
  auto heading = tree.Append(proc, std::make_unique<OmHeading>(OmStringCell("h")));
  tree.Append(heading, std::make_unique<OmPivotTable>(OmStringCell("t"), OmStringCell("t")));
  auto node = Amputate(proc, OmStringCell("Output Missing", true), "UTF-8");
  auto* block = dynamic_cast<OmTextBlock*>(node.Value());
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(block->LabelText(), "Output Missing");
  EXPECT_EQ(block->CodePage(), "UTF-8");
  EXPECT_EQ(node.Parent(), proc);
  EXPECT_EQ(tree.Size(), 5u);
  EXPECT_EQ(tree.Last(), node);
  EXPECT_THROW(Amputate(tree.End(), OmStringCell("x"), ""), OMSException);
}

}  // namespace
