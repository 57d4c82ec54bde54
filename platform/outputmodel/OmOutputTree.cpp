#include "platform/outputmodel/OmOutputTree.h"

OmOutputTree::OmOutputTree(bool withRoot) {
  if (withRoot) Insert(End(0), nullptr);
}

OmOutputTree::~OmOutputTree() { DiscardAll(); }

OmOutputTree::Node OmOutputTree::AppendUnderRoot(std::unique_ptr<OmOutputPart> part) {
  if (Empty()) {
    Node n = Insert(End(1), part.get());
    part.release();
    return n;
  }
  return Append(Begin(), std::move(part));
}

OmOutputTree::Node OmOutputTree::Append(Node parent, std::unique_ptr<OmOutputPart> part) {
  Node n = AppendChild(parent, part.get());
  part.release();  // the tree owns it from here on
  return n;
}

std::unique_ptr<OmOutputPart> OmOutputTree::Release(Node& node) {
  if (node._tree != this || node.IsEnd() || node.HasChildren()) {
    throw OMSException("OmOutputTree::Release -- a leaf node of this tree");
  }
  std::unique_ptr<OmOutputPart> part(node.Value());
  node.Value() = nullptr;  // Discard then has nothing to destroy
  node = Erase(node);
  return part;
}

void OmOutputTree::Discard(OmOutputPart*& part) {
  delete part;
  part = nullptr;
}
