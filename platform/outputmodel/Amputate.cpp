#include "platform/outputmodel/Amputate.h"

#include <vector>

#include "platform/outputmodel/OmPivotTable.h"
#include "platform/outputmodel/OmTextBlock.h"

OmOutputTree::Node Amputate(OmOutputTree::Node node, const OmCellText& title,
                            const std::string& codePage) {
  if (node._tree == nullptr || node.IsEnd()) throw OMSException("Amputate -- node is a node");
  // A table that had not ended was cut short: the marker goes before it, right after the last
  // part that was whole.
  const std::vector<OmOutputTree::Node> children = node.Children();
  std::size_t at = children.size();
  while (at > 0) {
    const auto* table = dynamic_cast<const OmPivotTable*>(children[at - 1].Value());
    if (table == nullptr || table->IsEnded()) break;
    --at;
  }
  auto block = std::make_unique<OmTextBlock>(title, codePage);
  OmOutputTree::Node made = node._tree->InsertChild(node, at, block.get());
  block.release();
  return made;
}
