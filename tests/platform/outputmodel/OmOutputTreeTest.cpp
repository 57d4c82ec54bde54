#include "platform/outputmodel/OmOutputTree.h"

#include <gtest/gtest.h>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/Amputate.h"
#include "platform/outputmodel/OmHeading.h"
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
