#include "backend/omfactory/sort/OmFactorySorter.h"

#include <algorithm>
#include <vector>

#include "platform/outputmodel/OmDimension.h"
#include "platform/outputmodel/OmPivotTable.h"

void OmFactorySorter::Visit(OmPivotTable& table) {
  for (int d = 0; d < table.NDimensions(); ++d) SortNode(table.Dimension(d).Root());
}

void OmFactorySorter::SortNode(OmDimensionNode& node) {
  // Each group is sorted by its own mark alone, so the order of visiting does not matter; an
  // explicit stack keeps deep category trees off the call stack.
  std::vector<OmDimensionNode*> pending{&node};
  while (!pending.empty()) {
    OmDimensionNode* group = pending.back();
    pending.pop_back();
    // A dimension's root is a group; categories have nothing below them.
    if (!group->IsGroup()) continue;
    auto& children = group->Children();
    if (group->SortMark() == 0) {
      std::sort(children.begin(), children.end(), Ascending{});
    } else if (group->SortMark() == 1) {
      std::sort(children.begin(), children.end(), Descending{});
    }
    for (auto& child : children) {
      child->setParent(group);
      pending.push_back(child.get());
    }
  }
}
