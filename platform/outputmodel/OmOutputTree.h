// The output tree: output parts in pre-order with levels. The tree owns its parts: erasing or
// pruning a node destroys the part in it and the parts below it. A new tree holds one root node
// without a part (level 0); procedures and log blocks are appended below it.
#pragma once

#include "backend/tables/ListTree.h"
#include "platform/outputmodel/OmOutputPart.h"

class OmOutputTree : public ListTree<OmOutputPart*> {
public:
  using Node = ListTree<OmOutputPart*>::Node;

  // withRoot false makes a tree without any node.
  explicit OmOutputTree(bool withRoot = true);
  ~OmOutputTree() override;

  // The first node (the root), or End() for an empty tree.
  Node Root() { return Begin(); }
  // Appends part as last child of the first node, or at level 1 of an empty tree. Takes it.
  Node AppendUnderRoot(std::unique_ptr<OmOutputPart> part);
  // Appends part as the last child of parent. Takes it.
  Node Append(Node parent, std::unique_ptr<OmOutputPart> part);

  // Unlinks a node that has no children and hands its part to the caller; returns the part and
  // sets node to the position where it was.
  std::unique_ptr<OmOutputPart> Release(Node& node);

  // The number of parts of type P in the tree (P = OmPivotTable, OmHeading...).
  template <class P>
  std::size_t Count() {
    std::size_t n = 0;
    for (OmOutputPart* part : *this) n += dynamic_cast<P*>(part) != nullptr;
    return n;
  }

protected:
  void Discard(OmOutputPart*& part) override;
};
