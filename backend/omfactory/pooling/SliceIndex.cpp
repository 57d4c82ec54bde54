#include "backend/omfactory/pooling/SliceIndex.h"

#include <algorithm>
#include <utility>

#include "platform/errors/OMSException.h"

SliceIndex::SliceIndex(std::vector<int> sizes, std::vector<int> fixed)
    : _sizes(std::move(sizes)), _fixed(std::move(fixed)) {
  if (_fixed.empty() || _fixed.size() > 3) {
    throw OMSException("SliceIndex::SliceIndex -- 1 <= fixed dimensions <= 3", double(_fixed.size()));
  }
  const int n = int(_sizes.size());
  for (std::size_t j = 0; j < _fixed.size(); ++j) {
    const int d = _fixed[j];
    if (d < 0 || d >= n) {
      throw OMSException("SliceIndex::SliceIndex -- fixed dimension < dimension count", d, n);
    }
    if (std::find(_fixed.begin(), _fixed.begin() + std::ptrdiff_t(j), d) != _fixed.begin() + std::ptrdiff_t(j)) {
      throw OMSException("SliceIndex::SliceIndex -- fixed dimensions distinct", d);
    }
    _fixedSizes.push_back(_sizes[std::size_t(d)]);
  }
  std::vector<std::uint32_t> bases;
  for (int d = 0; d < n; ++d) {
    if (std::find(_fixed.begin(), _fixed.end(), d) != _fixed.end()) continue;
    const int size = std::max(_sizes[std::size_t(d)], 0);
    _others.push_back(d);
    bases.push_back(std::uint32_t(size));
    _count *= std::uint64_t(size);
  }
  if (bases.empty()) bases.push_back(1);
  _base = MultiBase(std::move(bases));
}

SliceIndex::SliceIndex(const OmPivotTable& table, std::vector<int> fixed)
    : SliceIndex(table.SizeVector(), std::move(fixed)) {}

void SliceIndex::Position(std::uint64_t i, OmPivotTable::Coordinates& coords) const {
  if (i >= _count) throw OMSException("SliceIndex::Position -- i < Count()", double(i), double(_count));
  coords.resize(_sizes.size(), 0);
  _base.Digits(i, _digits);
  for (std::size_t j = 0; j < _others.size(); ++j) coords[std::size_t(_others[j])] = int(_digits[j]);
}
