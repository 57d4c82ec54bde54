#include "backend/omfactory/pooling/DespookDimension.h"

#include <algorithm>
#include <cstddef>

#include "platform/errors/OMSException.h"

namespace {

bool HasChildren(OmDimension::ConstNode node) { return node->NChildren() > 0; }

// Same nodes, node by node, through every subgroup.
bool SameStructure(OmDimension::ConstNode a, OmDimension::ConstNode b) {
  if (a->NChildren() != b->NChildren()) return false;
  for (std::size_t i = 0; i < a->NChildren(); ++i) {
    const OmDimensionNode* x = a->Child(i);
    const OmDimensionNode* y = b->Child(i);
    if (!(*x == *y) || !SameStructure(x, y)) return false;
  }
  return true;
}

}  // namespace

bool DespookDimension::operator()(OmPivotTable& table, int d, int other) {
  OmDimension& dimension = table.Dimension(d);
  OmDimensionNode& root = dimension.Root();
  for (const auto& top : root.Children()) {
    if (!HasChildren(top.get())) return false;
  }
  for (std::size_t g = 1; g < root.NChildren(); ++g) {
    if (!(*root.Child(0) == *root.Child(g)) || !SameStructure(root.Child(0), root.Child(g))) return false;
  }
  if (root.NChildren() < 2) return true;

  const SliceIndex walk(table, {d, other});
  bool combined = true;
  for (std::size_t g = 1; g < root.NChildren() && combined; ++g) {
    combined = Combine(root.Child(0), root.Child(g), table, walk);
  }
  if (combined) {
    while (root.NChildren() > 1) dimension.Delete(root.Child(root.NChildren() - 1));
  }
  return combined;
}

bool DespookDimension::Combine(OmDimension::Node target, OmDimension::Node source,
                               OmPivotTable& table, const SliceIndex& walk) {
  if (!target || !source || !HasChildren(target) || !HasChildren(source)) {
    throw OMSException("DespookDimension::Combine -- target is not a group");
  }
  // The walk holds the merged dimension first and the other fixed dimension second.
  const std::size_t d = std::size_t(walk.Fixed().at(0));
  const int other = walk.Fixed().size() > 1 ? walk.Fixed()[1] : -1;
  const int otherSize = other >= 0 ? table.Size(other) : 1;
  bool result = true;
  OmPivotTable::Coordinates at;
  const std::size_t n = std::min(target->NChildren(), source->NChildren());
  for (std::size_t i = 0; i < n; ++i) {
    OmDimension::Node t = target->Child(i);
    OmDimension::Node s = source->Child(i);
    if (HasChildren(t)) {
      if (!HasChildren(s)) throw OMSException("DespookDimension::Combine -- s is not a group");
      if (!Combine(t, s, table, walk)) result = false;
      continue;
    }
    if (t->LeafIndex() < 0 || s->LeafIndex() < 0 || HasChildren(s)) {
      result = false;
      continue;
    }
    // The first cell of the source category: categories of the other dimension first, then the
    // walk's positions.
    bool found = false;
    for (int o = 0; o < otherSize && !found; ++o) {
      for (std::uint64_t p = 0; p < walk.Count() && !found; ++p) {
        walk.Position(p, at);
        at[d] = s->LeafIndex();
        if (other >= 0) at[std::size_t(other)] = o;
        found = table.Cell(at) != nullptr;
      }
    }
    if (!found) {
      result = false;
      continue;
    }
    for (int o = 0; o < otherSize; ++o) {
      if (other >= 0) at[std::size_t(other)] = o;
      OmPivotTable::Coordinates to = at;
      to[d] = t->LeafIndex();
      table.Cell(to, table.TakeCell(at));
    }
  }
  return result;
}
