// Carries out the sort marks that a procedure put on table dimensions and groups: at the end of a
// procedure every part accepts a sorter, and each pivot table has the children of its marked
// dimension roots and groups reordered, ascending (mark 0) or descending (mark 1).
#pragma once

#include <memory>

#include "platform/outputmodel/OmDimensionNode.h"
#include "platform/outputmodel/OmOutputPart.h"

class OmFactorySorter : public OmOutputPart::Visitor {
public:
  // Orders of child nodes by the output model's category order (OmDimensionNode::operator<).
  struct Ascending {
    bool operator()(const std::unique_ptr<OmDimensionNode>& a,
                    const std::unique_ptr<OmDimensionNode>& b) const {
      return *a < *b;
    }
  };
  struct Descending {
    bool operator()(const std::unique_ptr<OmDimensionNode>& a,
                    const std::unique_ptr<OmDimensionNode>& b) const {
      return *b < *a;
    }
  };

  // Every group of every dimension is sorted by its own mark, whatever the marks above it; each
  // child moves with its subtree. Categories that compare equal may end in any relative order.
  void Visit(OmPivotTable& table) override;

  // Sorts the children of node by its mark, then does the same for every group below it.
  static void SortNode(OmDimensionNode& node);
};
