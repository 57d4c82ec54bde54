#include "tools/render/OmTableLayout.h"

#include <algorithm>
#include <cstdint>

#include "platform/outputmodel/OmPivotTable.h"

namespace {

std::vector<OmTableLayout::Leaf> LeavesOf(const OmDimension& dimension) {
  std::vector<OmTableLayout::Leaf> leaves;
  for (const OmDimensionNode* node : dimension.Leaves()) {
    OmTableLayout::Leaf leaf;
    leaf.coord = node->LeafIndex();
    for (const OmDimensionNode* n = node; n->Parent() != nullptr; n = n->Parent()) {
      leaf.path.push_back(n);
    }
    std::reverse(leaf.path.begin(), leaf.path.end());
    leaves.push_back(std::move(leaf));
  }
  if (leaves.empty()) leaves.emplace_back();
  return leaves;
}

// Whether two combinations agree on the dimensions before dimension k of their axis.
bool SamePrefix(const OmTableLayout::Combination& a, const OmTableLayout::Combination& b,
                std::size_t k) {
  for (std::size_t j = 0; j < k; ++j) {
    if (a[j] != b[j]) return false;
  }
  return true;
}

}  // namespace

OmTableLayout::OmTableLayout(const OmPivotTable& table) : _table(table) {
  const int n = table.NDimensions();
  _axisOf.assign(std::size_t(n), kRows);
  std::vector<bool> placed(std::size_t(n), false);
  const std::vector<short>* lists[3] = {&table.Rows(), &table.Columns(), &table.Layers()};
  for (int axis = kRows; axis <= kLayers; ++axis) {
    for (short d : *lists[axis]) {
      if (d < 0 || d >= n || placed[std::size_t(d)]) continue;
      placed[std::size_t(d)] = true;
      _dims[axis].push_back(d);
      _axisOf[std::size_t(d)] = Axis(axis);
    }
  }
  for (int d = 0; d < n; ++d) {
    if (!placed[std::size_t(d)]) _dims[kRows].push_back(d);
  }
  _leaves.reserve(std::size_t(n));
  for (int d = 0; d < n; ++d) _leaves.push_back(LeavesOf(table.Dimension(d)));
}

OmTableLayout::~OmTableLayout() = default;

std::size_t OmTableLayout::CombinationCount(Axis axis) const {
  std::size_t count = 1;
  for (int d : _dims[axis]) {
    const std::size_t n = Leaves(d).size();
    if (count > SIZE_MAX / n) return SIZE_MAX;
    count *= n;
  }
  return count;
}

std::size_t OmTableLayout::GridSize() const {
  std::size_t size = 1;
  for (int axis = kRows; axis <= kLayers; ++axis) {
    const std::size_t n = CombinationCount(Axis(axis));
    if (size > SIZE_MAX / n) return SIZE_MAX;
    size *= n;
  }
  return size;
}

std::vector<OmTableLayout::Combination> OmTableLayout::Combinations(Axis axis) const {
  std::vector<Combination> out(1);
  for (int d : _dims[axis]) {
    const std::vector<Leaf>& leaves = Leaves(d);
    std::vector<Combination> next;
    next.reserve(out.size() * leaves.size());
    for (const Combination& prefix : out) {
      for (const Leaf& leaf : leaves) {
        next.push_back(prefix);
        next.back().push_back(&leaf);
      }
    }
    out = std::move(next);
  }
  return out;
}

int OmTableLayout::CategoryBands(int dimension) const {
  if (_table.Dimension(dimension).HideCategories()) return 0;
  std::size_t depth = 0;
  for (const Leaf& leaf : Leaves(dimension)) depth = std::max(depth, leaf.path.size());
  return int(depth);
}

std::vector<OmTableLayout::HeaderCell> OmTableLayout::Header(
    Axis axis, const std::vector<Combination>& combos, int& bands) const {
  std::vector<HeaderCell> cells;
  const std::vector<int>& dims = _dims[axis];
  const std::size_t n = combos.size();
  int band = 0;
  for (std::size_t k = 0; k < dims.size(); ++k) {
    const OmDimension& dimension = _table.Dimension(dims[k]);
    if (axis == kColumns && !dimension.HideLabel() && dimension.Label() != nullptr) {
      for (std::size_t c = 0; c < n;) {
        std::size_t e = c + 1;
        while (e < n && SamePrefix(combos[e], combos[c], k)) ++e;
        cells.push_back({HeaderCell::kDimension, dimension.Label(), band, int(c), 1, int(e - c)});
        c = e;
      }
      ++band;
    }
    const int depth = CategoryBands(dims[k]);
    for (int i = 0; i < depth; ++i, ++band) {
      const std::size_t slot = std::size_t(i);
      for (std::size_t c = 0; c < n;) {
        const Leaf& leaf = *combos[c][k];
        // Below its category's level a combination is covered by the category's label.
        if (slot >= leaf.path.size()) {
          ++c;
          continue;
        }
        const OmDimensionNode* node = leaf.path[slot];
        const bool category = slot + 1 == leaf.path.size();
        std::size_t e = c + 1;
        while (e < n && SamePrefix(combos[e], combos[c], k) && combos[e][k]->path.size() > slot &&
               combos[e][k]->path[slot] == node) {
          ++e;
        }
        HeaderCell cell;
        cell.kind = category ? HeaderCell::kCategory : HeaderCell::kGroup;
        cell.label = node->Label();
        cell.band = band;
        cell.position = int(c);
        cell.depth = category ? depth - i : 1;
        cell.span = int(e - c);
        cells.push_back(cell);
        c = e;
      }
    }
  }
  bands = band;
  return cells;
}

std::vector<int> OmTableLayout::Coordinates(const Combination& row, const Combination& column,
                                            const Combination& layer) const {
  std::vector<int> coords(std::size_t(_table.NDimensions()), 0);
  const Combination* combos[3] = {&row, &column, &layer};
  for (int axis = kRows; axis <= kLayers; ++axis) {
    const std::vector<int>& dims = _dims[axis];
    for (std::size_t j = 0; j < dims.size() && j < combos[axis]->size(); ++j) {
      coords[std::size_t(dims[j])] = (*combos[axis])[j]->coord;
    }
  }
  return coords;
}
