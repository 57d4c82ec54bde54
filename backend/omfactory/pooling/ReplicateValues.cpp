#include "backend/omfactory/pooling/ReplicateValues.h"

#include <algorithm>

#include "platform/bootstats/MCBSStdErrorBias.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmHugePages.h"
#include "platform/outputmodel/OmNumber.h"

ReplicateValues::ReplicateValues(const OmPivotTable& table, int splitDim) : _splitDim(splitDim) {
  Start(table);
  table.ReadCells([this](const OmPivotTable::CellView& cell) { Add(cell); });
}

ReplicateValues::ReplicateValues(OmPivotTable& table, int splitDim, const std::vector<int>& drop)
    : _splitDim(splitDim) {
  Start(table);
  table.ReadAndDropCells(splitDim, drop, [this](const OmPivotTable::CellView& cell) { Add(cell); });
}

void ReplicateValues::Start(const OmPivotTable& table) {
  const int n = table.NDimensions();
  if (_splitDim < 0 || _splitDim >= n) {
    throw OMSException("ReplicateValues::ReplicateValues -- split dimension < NDimensions()",
                       _splitDim, n);
  }
  _dimensions = std::size_t(n);
  _width = std::size_t(std::max(table.Size(_splitDim), 1));
  // A full table has one row per (its cells / width); a sparser one grows the arrays.
  const std::size_t expected = table.NCells() / _width + 1;
  _keys.reserve(expected * (_dimensions - 1));
  _values.reserve(expected * _width);
  _held.reserve(expected * _width);
  OmPreferHugePages(_values.data(), _values.capacity() * sizeof(double));
  OmPreferHugePages(_held.data(), _held.capacity() * sizeof(Held));
  _hashes.reserve(expected);
  Reindex(16);
}

void ReplicateValues::Add(const OmPivotTable::CellView& cell) {
  const int* coords = cell.coords;
  const int k = coords[std::size_t(_splitDim)];
  if (k <= 0) return;
  // A cell beyond its dimension's categories is rare: the rows are widened then.
  if (std::size_t(k) >= _width) Widen(std::max(std::size_t(k) + 1, _width + _width / 2));
  // Cells come in storage order, which is mostly coordinate order: a statistic's samples
  // follow one another when the split dimension is the fastest.
  if (_lastRow == kNone || !SameKey(_lastRow, coords)) {
    const std::uint64_t hash = HashOf(coords);
    _lastRow = Lookup(coords, hash);
    if (_lastRow == kNone) _lastRow = AddRow(coords, hash);
  }
  const std::size_t at = std::size_t(_lastRow) * _width + std::size_t(k);
  if (cell.object == nullptr) {  // nearly every sample: a plain number kept as such
    _held[at] = Held::kNumber;
    _values[at] = cell.number;
  } else if (const auto* number = dynamic_cast<const OmNumber*>(cell.object)) {
    _held[at] = Held::kNumber;
    _values[at] = number->Value();
  } else {
    _held[at] = Held::kText;
  }
}

void ReplicateValues::Widen(std::size_t width) {
  std::vector<double> values(std::size_t(_rows) * width, 0.0);
  std::vector<Held> held(std::size_t(_rows) * width, Held::kNothing);
  for (std::size_t r = 0; r < _rows; ++r) {
    std::copy_n(_values.begin() + std::ptrdiff_t(r * _width), _width,
                values.begin() + std::ptrdiff_t(r * width));
    std::copy_n(_held.begin() + std::ptrdiff_t(r * _width), _width,
                held.begin() + std::ptrdiff_t(r * width));
  }
  _values.swap(values);
  _held.swap(held);
  _width = width;
}

std::uint64_t ReplicateValues::HashOf(const int* coords) const {
  std::uint64_t h = 0x9e3779b97f4a7c15ULL;
  for (std::size_t d = 0; d < _dimensions; ++d) {
    if (d == std::size_t(_splitDim)) continue;
    h = (h ^ std::uint32_t(coords[d])) * 0xbf58476d1ce4e5b9ULL;
    h ^= h >> 29;
  }
  return h;
}

bool ReplicateValues::SameKey(std::uint32_t row, const int* coords) const {
  const int* key = _keys.data() + std::size_t(row) * (_dimensions - 1);
  for (std::size_t d = 0; d < _dimensions; ++d) {
    if (d == std::size_t(_splitDim)) continue;
    if (*key++ != coords[d]) return false;
  }
  return true;
}

std::uint32_t ReplicateValues::Lookup(const int* coords, std::uint64_t hash) const {
  const std::size_t mask = _index.size() - 1;
  for (std::size_t slot = std::size_t(hash) & mask;; slot = (slot + 1) & mask) {
    const std::uint32_t row = _index[slot];
    if (row == kNone || (_hashes[row] == hash && SameKey(row, coords))) return row;
  }
}

std::uint32_t ReplicateValues::AddRow(const int* coords, std::uint64_t hash) {
  if (_rows == kNone - 1) {
    throw OMSException("ReplicateValues::AddRow -- too many statistics", double(_rows));
  }
  const std::uint32_t row = _rows++;
  for (std::size_t d = 0; d < _dimensions; ++d) {
    if (d != std::size_t(_splitDim)) _keys.push_back(coords[d]);
  }
  _hashes.push_back(hash);
  _values.resize(_values.size() + _width, 0.0);
  _held.resize(_held.size() + _width, Held::kNothing);
  // At most half full, so that probes stay short.
  if (std::size_t(_rows) * 2 > _index.size()) {
    Reindex(_index.size() * 2);
  } else {
    Place(row);
  }
  return row;
}

void ReplicateValues::Place(std::uint32_t row) {
  const std::size_t mask = _index.size() - 1;
  std::size_t slot = std::size_t(_hashes[row]) & mask;
  while (_index[slot] != kNone) slot = (slot + 1) & mask;
  _index[slot] = row;
}

void ReplicateValues::Reindex(std::size_t slots) {
  _index.assign(slots, kNone);
  for (std::uint32_t row = 0; row < _rows; ++row) Place(row);
}

ReplicateValues::Row ReplicateValues::Find(const OmPivotTable::Coordinates& address) const {
  if (address.size() < _dimensions || _rows == 0) return {};
  for (std::size_t d = _dimensions; d < address.size(); ++d) {
    if (address[d] != 0) return {};
  }
  const std::uint32_t row = Lookup(address.data(), HashOf(address.data()));
  if (row == kNone) return {};
  const std::size_t at = std::size_t(row) * _width;
  return Row{&_values[at], &_held[at], row};
}

const ReplicateValues::Moments& ReplicateValues::MomentsOf(const Row& row, std::size_t last) const {
  last = std::min(last, _width - 1);
  if (last != _momentsLast || _moments.size() != _rows) {
    _moments.assign(_rows, Moments{});
    _momentsReady.assign(_rows, false);
    _momentsLast = last;
  }
  const std::uint32_t first = row.index;
  if (_momentsReady[first]) return _moments[first];
  constexpr std::uint32_t kLanes = 4;
  // Past the last row a lane repeats it; its result is not kept.
  std::size_t at[kLanes];
  Moments lane[kLanes];
  for (std::uint32_t j = 0; j < kLanes; ++j) at[j] = std::size_t(std::min(first + j, _rows - 1)) * _width;
  for (std::size_t k = 1; k <= last; ++k) {
    for (std::uint32_t j = 0; j < kLanes; ++j) {
      const double value = _values[at[j] + k];
      if (_held[at[j] + k] == Held::kNumber && value != OmNumber::kSysMiss) {
        MCBSStdErrorBias::Step(lane[j].count, lane[j].mean, lane[j].sumSquares, value);
      }
    }
  }
  for (std::uint32_t j = 0; j < kLanes && first + j < _rows; ++j) {
    _moments[first + j] = lane[j];
    _momentsReady[first + j] = true;
  }
  return _moments[first];
}

ReplicateValues::Held ReplicateValues::At(const OmPivotTable::Coordinates& address, int k,
                                          double* value) const {
  if (k <= 0 || std::size_t(k) >= _width) return Held::kNothing;
  const Row row = Find(address);
  if (row.held == nullptr) return Held::kNothing;
  *value = row.values[k];
  return row.held[k];
}
