// A node of a dimension's category tree: the dimension's root, a group, or a category. A category
// has a leaf index, the coordinate by which cells address it; groups have -1. Nodes own their
// children; the sorter reorders Children() directly.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/outputmodel/OmCellText.h"

class OmDimensionNode {
public:
  using Children_t = std::vector<std::unique_ptr<OmDimensionNode>>;

  // label may be null (an unlabelled node).
  OmDimensionNode(std::unique_ptr<OmCellText> label, bool group, int leafIndex);
  // A deep copy of the node and its subtree; the copy has no parent.
  OmDimensionNode(const OmDimensionNode& other);
  OmDimensionNode& operator=(const OmDimensionNode&) = delete;
  ~OmDimensionNode();

  OmCellText* Label() const { return _label.get(); }
  void setLabel(std::unique_ptr<OmCellText> label);

  bool IsGroup() const { return _group; }
  void setGroup(bool group) { _group = group; }
  // The category's cell coordinate in its dimension; -1 for groups and the root.
  int LeafIndex() const { return _leaf; }
  void setLeafIndex(int leaf) { _leaf = leaf; }
  // 0 sort children ascending, 1 descending, anything else (-1 initially) keep their order.
  int SortMark() const { return _sortMark; }
  void setSortMark(int mark) { _sortMark = mark; }
  bool UngroupMark() const { return _ungroup; }
  void setUngroupMark(bool mark) { _ungroup = mark; }

  OmDimensionNode* Parent() const { return _parent; }
  void setParent(OmDimensionNode* parent) { _parent = parent; }
  // 0 for the dimension's root.
  int Depth() const;
  // Position among the parent's children; -1 for the root.
  int IndexInParent() const;

  std::size_t NChildren() const { return _children.size(); }
  OmDimensionNode* Child(std::size_t i) const;
  const Children_t& Children() const { return _children; }
  // Mutable access for reordering or removal; drops the look-up index, which is rebuilt on the
  // next FindChild.
  Children_t& Children();
  // Appends child (setting its parent) and returns it.
  OmDimensionNode* AddChild(std::unique_ptr<OmDimensionNode> child);
  // Removes child i and returns it (without parent).
  std::unique_ptr<OmDimensionNode> RemoveChild(std::size_t i);

  // The position of the first child whose label equals label and which is a group (group true)
  // or not a group (group false); -1 if none. Hashed once a node has many children.
  int FindChild(const OmCellText& label, bool group) const;
  // FindChild(OmStringCell(text), false) without making the cell: the first category (not a
  // group) whose label is a plain string cell showing text; -1 if none.
  int FindCategoryText(std::string_view text) const;
  // The same, trying the category at guess first: a procedure's cells name a dimension's
  // categories mostly in turn. The guess stands only while no two children show the same plain
  // text, so the answer is always the first match.
  int FindCategoryText(std::string_view text, int guess) const;

  // The leaf indices of the categories in this subtree (this node's own if it is one), in order.
  void CollectLeaves(std::vector<int>& leaves) const;

  // Same kind (group flag) and equal labels (both null, or same type comparing equal).
  bool operator==(const OmDimensionNode& other) const;
  // Label order: unlabelled first, then numbers and numeric values by value, then texts by
  // collation (ICU, root locale) of their display text.
  bool operator<(const OmDimensionNode& other) const;

private:
  using Index = std::unordered_multimap<std::size_t, int>;
  const Index& LookupIndex() const;
  // Whether no two children's labels are plain string cells showing the same text; worked out
  // on demand and forgotten with the index.
  bool TextsUnique() const;
  // Forgets what was worked out from the children's labels.
  void Forget() const {
    _index.reset();
    _textsUnique = kUnknown;
  }

  std::unique_ptr<OmCellText> _label;
  OmDimensionNode* _parent = nullptr;
  Children_t _children;
  mutable std::unique_ptr<Index> _index;  // label hash -> child position, built on demand
  enum : std::uint8_t { kUnknown, kUnique, kShared };
  mutable std::uint8_t _textsUnique = kUnknown;
  int _leaf;
  int _sortMark = -1;
  bool _group;
  bool _ungroup = false;
};
