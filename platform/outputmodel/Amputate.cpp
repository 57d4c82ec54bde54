#include "platform/outputmodel/Amputate.h"

#include "platform/outputmodel/OmTextBlock.h"

OmOutputTree::Node Amputate(OmOutputTree::Node procedureNode, const OmCellText& title,
                            const std::string& codePage) {
  if (procedureNode._tree == nullptr || procedureNode.IsEnd()) {
    throw OMSException("Amputate -- procedureNode is a node");
  }
  // Output is built in message order, so the failure point is the end of the procedure's
  // subtree: whatever was built stays, and the marker block closes it.
  auto block = std::make_unique<OmTextBlock>(title, codePage);
  OmOutputTree::Node node = procedureNode._tree->AppendChild(procedureNode, block.get());
  block.release();
  return node;
}
