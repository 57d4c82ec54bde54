// A dimension of a pivot table: a tree of groups and categories under a root whose label is the
// dimension's label. Categories are numbered by leaf index, never reused; Size() is one past the
// highest index given, the range of the dimension's cell coordinate.
#pragma once

#include <memory>
#include <vector>

#include "platform/outputmodel/OmDimensionNode.h"

class OmPivotTable;

// Drops the table's cells at those leaves of dimension d: what a deleted category leaves behind.
// Defined with the table (OmPivotTable.cpp), so that a dimension needs only its declaration.
void DropCellsOfLeaves(OmPivotTable& table, int d, const std::vector<int>& leaves);

class OmDimension {
public:
  using Node = OmDimensionNode*;
  using ConstNode = const OmDimensionNode*;

  // The label is copied.
  explicit OmDimension(const OmCellText& label);
  explicit OmDimension(std::unique_ptr<OmCellText> label);
  // Copies the tree, flags and size; the copy belongs to no table.
  OmDimension(const OmDimension& other);
  OmDimension& operator=(const OmDimension&) = delete;
  ~OmDimension();

  OmDimensionNode& Root() { return *_root; }
  const OmDimensionNode& Root() const { return *_root; }
  OmCellText* Label() const { return _root->Label(); }

  // Position of parent's first child with that label and kind (group or category), or -1.
  int FindChild(ConstNode parent, const OmCellText& label, bool group) const;
  // Appends a node with a copy of label as parent's last child. A category gets position as its
  // leaf index (Size() when position is -1); a group ignores position. Returns the new node,
  // whose Depth() is its depth below the root.
  Node Child(Node parent, int position, const OmCellText& label, bool group);
  Node Child(Node parent, int position, std::unique_ptr<OmCellText> label, bool group);
  // The node of this dimension at the same path of child positions as node has in its own
  // dimension; null when this dimension has no such node.
  Node Counterpart(ConstNode node);
  // Removes node and its subtree (not the root). The cells of its categories are destroyed when
  // the dimension belongs to a table.
  void Delete(Node node);

  // One past the highest leaf index given (the category count while none was deleted).
  int Size() const { return _size; }
  // The category with that leaf index, or null.
  Node FindLeaf(int leafIndex);
  // The categories in tree order.
  std::vector<ConstNode> Leaves() const;

  // Display flags: hide the dimension's label; hide its category labels.
  bool HideLabel() const { return _hideLabel; }
  bool HideCategories() const { return _hideCategories; }
  void setDisplayFlags(bool hideLabel, bool hideCategories) {
    _hideLabel = hideLabel;
    _hideCategories = hideCategories;
  }
  // A dimension property set by table property messages (3).
  bool Property3() const { return _property3; }
  void setProperty3(bool on) { _property3 = on; }

  OmPivotTable* Table() const { return _table; }

private:
  friend class OmPivotTable;
  void setTable(OmPivotTable* table, int index) {
    _table = table;
    _index = index;
  }

  std::unique_ptr<OmDimensionNode> _root;
  OmPivotTable* _table = nullptr;
  int _index = -1;
  int _size = 0;
  bool _hideLabel = false;
  bool _hideCategories = false;
  bool _property3 = false;
};
