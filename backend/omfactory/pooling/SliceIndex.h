// The cell walk of the poolers: every combination of categories of a table's dimensions other than
// one to three dimensions held fixed, numbered 0 .. Count() - 1 in mixed-radix order (the last
// other dimension varies fastest). The caller sets the fixed dimensions' coordinates itself.
#pragma once

#include <cstdint>
#include <vector>

#include "backend/tables/MultiBase.h"
#include "platform/outputmodel/OmPivotTable.h"

class SliceIndex {
public:
  // sizes: the category count of each dimension (OmPivotTable::SizeVector); fixed: one to three
  // distinct dimension numbers below sizes.size(). Anything else is an OMSException.
  SliceIndex(std::vector<int> sizes, std::vector<int> fixed);
  // The walk of table with the given dimensions fixed.
  SliceIndex(const OmPivotTable& table, std::vector<int> fixed);

  const std::vector<int>& Sizes() const { return _sizes; }
  const std::vector<int>& Fixed() const { return _fixed; }
  // The other dimensions, ascending.
  const std::vector<int>& Others() const { return _others; }
  // Bases: the other dimensions' sizes, or the single base 1 when every dimension is fixed.
  const MultiBase& Base() const { return _base; }
  // The category count of the j-th fixed dimension.
  int FixedSize(std::size_t j) const { return _fixedSizes.at(j); }
  // The number of positions: the product of the other dimensions' sizes (1 when there are none,
  // 0 when one of them has no categories).
  std::uint64_t Count() const { return _count; }

  // Writes position i's categories into the other dimensions' entries of coords (resized to the
  // dimension count); the fixed dimensions' entries are left as they were. i < Count().
  void Position(std::uint64_t i, OmPivotTable::Coordinates& coords) const;

private:
  std::vector<int> _sizes;
  std::vector<int> _fixed;
  std::vector<int> _others;
  MultiBase _base;
  std::vector<int> _fixedSizes;
  std::uint64_t _count = 1;
  mutable std::vector<std::uint32_t> _digits;  // scratch, so a walk does not allocate per step
};
