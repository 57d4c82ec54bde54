#include "platform/outputmodel/OmDimension.h"

#include <algorithm>

#include "platform/errors/OMSException.h"

OmDimension::OmDimension(const OmCellText& label) : OmDimension(label.Clone()) {}

OmDimension::OmDimension(std::unique_ptr<OmCellText> label)
    : _root(std::make_unique<OmDimensionNode>(std::move(label), true, -1)) {}

OmDimension::OmDimension(const OmDimension& other)
    : _root(std::make_unique<OmDimensionNode>(*other._root)),
      _size(other._size),
      _hideLabel(other._hideLabel),
      _hideCategories(other._hideCategories),
      _property3(other._property3) {}

OmDimension::~OmDimension() = default;

namespace {

bool Belongs(const OmDimensionNode* node, const OmDimensionNode* root) {
  while (node && node->Parent()) node = node->Parent();
  return node == root;
}

}  // namespace

int OmDimension::FindChild(ConstNode parent, const OmCellText& label, bool group) const {
  if (!parent) throw OMSException("OmDimension::FindChild -- parent != null");
  return parent->FindChild(label, group);
}

OmDimension::Node OmDimension::Child(Node parent, int position, const OmCellText& label,
                                     bool group) {
  return Child(parent, position, label.Clone(), group);
}

OmDimension::Node OmDimension::Child(Node parent, int position, std::unique_ptr<OmCellText> label,
                                     bool group) {
  if (!parent || !Belongs(parent, _root.get())) {
    throw OMSException("OmDimension::Child -- parent belongs to this dimension");
  }
  int leaf = -1;
  if (!group) {
    leaf = position < 0 ? _size : position;
    _size = std::max(_size, leaf + 1);
  }
  return parent->AddChild(std::make_unique<OmDimensionNode>(std::move(label), group, leaf));
}

OmDimension::Node OmDimension::Counterpart(ConstNode node) {
  if (!node) return nullptr;
  std::vector<int> path;
  for (ConstNode n = node; n->Parent() != nullptr; n = n->Parent()) path.push_back(n->IndexInParent());
  Node here = _root.get();
  for (auto it = path.rbegin(); it != path.rend(); ++it) {
    if (*it < 0 || std::size_t(*it) >= here->NChildren()) return nullptr;
    here = here->Child(std::size_t(*it));
  }
  return here;
}

void OmDimension::Delete(Node node) {
  if (!node || node == _root.get() || !Belongs(node, _root.get())) {
    throw OMSException("OmDimension::Delete -- node is a non-root node of this dimension");
  }
  std::vector<int> leaves;
  node->CollectLeaves(leaves);
  OmDimensionNode* parent = node->Parent();
  parent->RemoveChild(std::size_t(node->IndexInParent()));
  if (_table && !leaves.empty()) DropCellsOfLeaves(*_table, _index, leaves);
}

namespace {

OmDimensionNode* FindLeafBelow(OmDimensionNode* node, int leaf) {
  if (!node->IsGroup() && node->LeafIndex() == leaf) return node;
  for (const auto& c : static_cast<const OmDimensionNode*>(node)->Children()) {
    if (OmDimensionNode* found = FindLeafBelow(c.get(), leaf)) return found;
  }
  return nullptr;
}

void LeavesBelow(const OmDimensionNode* node, std::vector<const OmDimensionNode*>& out) {
  if (!node->IsGroup() && node->LeafIndex() >= 0) out.push_back(node);
  for (const auto& c : node->Children()) LeavesBelow(c.get(), out);
}

}  // namespace

OmDimension::Node OmDimension::FindLeaf(int leafIndex) {
  if (leafIndex < 0) return nullptr;
  return FindLeafBelow(_root.get(), leafIndex);
}

std::vector<OmDimension::ConstNode> OmDimension::Leaves() const {
  std::vector<ConstNode> leaves;
  LeavesBelow(_root.get(), leaves);
  return leaves;
}
