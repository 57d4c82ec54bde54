// Where a pivot table's dimensions, categories and header labels go when a renderer lays the
// table out: which axis holds each dimension, every combination of categories along an axis, and
// the header cells with the rows and columns that group labels span. The HTML and JSON renderers
// and the exports (CSV, Markdown, LaTeX, Excel) read tables through it.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

class OmCellText;
class OmDimensionNode;
class OmPivotTable;

class OmTableLayout {
public:
  enum Axis : int { kRows = 0, kColumns = 1, kLayers = 2 };

  // One category of a dimension: its cell coordinate and the nodes from the dimension's top
  // level down to it (groups, then the category). A dimension without categories has one
  // leaf with an empty path at coordinate 0, so that its cells can still be addressed.
  struct Leaf {
    int coord = 0;
    std::vector<const OmDimensionNode*> path;
  };
  // One leaf per dimension of an axis, in the axis's order.
  using Combination = std::vector<const Leaf*>;

  // A label of a header. Along the axis it runs over `span` combinations from `position`; across
  // it, it covers `depth` header bands from `band`. For the column header a band is a row and a
  // position a column; for the row header a band is a column and a position a row.
  struct HeaderCell {
    enum Kind { kDimension, kGroup, kCategory, kEmpty };
    Kind kind = kEmpty;
    const OmCellText* label = nullptr;
    int band = 0;
    int position = 0;
    int depth = 1;
    int span = 1;
  };

  explicit OmTableLayout(const OmPivotTable& table);
  ~OmTableLayout();
  OmTableLayout(const OmTableLayout&) = delete;
  OmTableLayout& operator=(const OmTableLayout&) = delete;

  const OmPivotTable& Table() const { return _table; }
  // The dimensions on an axis, in placement order. A dimension on no axis goes with the rows,
  // where it still shows its cells; a dimension listed twice counts where it is met first
  // (rows, then columns, then layers).
  const std::vector<int>& Dimensions(Axis axis) const { return _dims[axis]; }
  Axis AxisOf(int dimension) const { return _axisOf[std::size_t(dimension)]; }
  const std::vector<Leaf>& Leaves(int dimension) const { return _leaves[std::size_t(dimension)]; }

  // How many combinations an axis has (1 for an axis without dimensions), saturating at
  // SIZE_MAX; and the product over all three axes. Lets callers refuse tables that are too large
  // to lay out before they build anything.
  std::size_t CombinationCount(Axis axis) const;
  std::size_t GridSize() const;
  // Every combination of one leaf per dimension of the axis, the first dimension outermost.
  std::vector<Combination> Combinations(Axis axis) const;

  // How many bands a dimension's categories take in its axis's header: the depth of its
  // category tree, 0 when its category labels are hidden.
  int CategoryBands(int dimension) const;
  // The header along the rows or columns over the given combinations of that axis. The column
  // header shows each dimension's label in a band of its own (unless hidden); the row header
  // does not (row dimension labels belong in the corner). A group label spans the categories
  // under it, an outer category all combinations of the inner dimensions; a category above the
  // deepest level of its dimension covers the bands below it. bands is set to the band count.
  std::vector<HeaderCell> Header(Axis axis, const std::vector<Combination>& combos, int& bands) const;

  // The cell coordinates of a row, column and layer combination, one per dimension.
  std::vector<int> Coordinates(const Combination& row, const Combination& column,
                               const Combination& layer) const;

private:
  const OmPivotTable& _table;
  std::vector<int> _dims[3];
  std::vector<Axis> _axisOf;
  std::vector<std::vector<Leaf>> _leaves;
};
