#include "backend/omfactory/pooling/ReplicateCollector.h"

#include <algorithm>
#include <utility>

#include "backend/omfactory/pooling/OmPoolingTools.h"
#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmNumber.h"

ReplicateCollector::ReplicateCollector(const OmPivotTable& table, int splitDim,
                                       unsigned sampleCount,
                                       unsigned jackknifeCount,
                                       std::vector<std::uint32_t> jackknifeBoundaries,
                                       std::vector<int> requiredDims,
                                       const ReplicateValues* values)
    : _table(&table),
      _values(values != nullptr && values->SplitDim() == splitDim ? values : nullptr),
      _splitDim(splitDim),
      _sampleCount(sampleCount),
      _jackknifeCount(jackknifeCount),
      _jackknifeBoundaries(std::move(jackknifeBoundaries)),
      _requiredDims(std::move(requiredDims)),
      _estimate(OmNumber::kSysMiss),
      _estimateStdError(OmNumber::kSysMiss) {
  const int n = table.NDimensions();
  if (splitDim < 0 || splitDim >= n) {
    throw OMSException("ReplicateCollector::ReplicateCollector -- split dimension < NDimensions()",
                       splitDim, n);
  }
  for (int d : _requiredDims) {
    if (d < 0 || d >= n) {
      throw OMSException("ReplicateCollector::ReplicateCollector -- required dimension < NDimensions()",
                         d, n);
    }
  }
}

const ReplicateValues& ReplicateCollector::Values() {
  if (_values == nullptr) {
    _ownValues = std::make_unique<ReplicateValues>(*_table, _splitDim);
    _values = _ownValues.get();
  }
  return *_values;
}

void ReplicateCollector::Gather(const ReplicateValues::Row& row, const std::vector<bool>& mask,
                                std::vector<double>& into) const {
  if (row.held == nullptr) return;
  // Samples at or beyond the row's width had no cell.
  const std::size_t last = std::min<std::size_t>(_sampleCount, _values->Width() - 1);
  into.reserve(last);
  for (std::size_t k = 1; k <= last; ++k) {
    if (!mask.empty() && !mask[k]) continue;
    if (row.held[k] == ReplicateValues::Held::kNumber && row.values[k] != OmNumber::kSysMiss) {
      into.push_back(row.values[k]);
    }
  }
}

bool ReplicateCollector::Collect(const OmPivotTable::Coordinates& estimate,
                                 const OmPivotTable::Coordinates& stdError) {
  _replicates.clear();
  _jackknifeValues.clear();
  _replicateStdErrors.clear();
  _moments.reset();
  _estimateStdError = OmNumber::kSysMiss;
  _jackknifeStart = _jackknifeEnd = 0;
  _jackknifeComplete = _jackknifeCount == 0;

  OmNumber scratch(0.0);
  const OmNumber* original = OmPoolingTools::ReadNumber(*_table, estimate, scratch);
  if (!original) return false;
  if (!stdError.empty() && stdError.size() != estimate.size()) {
    throw OMSException("ReplicateCollector::Collect -- stdError.size() == estimate.size()",
                       double(stdError.size()), double(estimate.size()));
  }
  const ReplicateValues& values = Values();
  const std::vector<bool>& mask = ReplicateMask(estimate);
  _estimate = original->Value();
  if (!stdError.empty()) {
    const OmNumber* se = OmPoolingTools::ReadNumber(*_table, stdError, scratch);
    if (se) _estimateStdError = se->Value();
  }

  const ReplicateValues::Row row = values.Find(estimate);
  Gather(row, mask, _replicates);
  if (mask.empty() && row.held != nullptr) _moments = values.MomentsOf(row, _sampleCount);
  CollectJackknife(row);

  if (!stdError.empty()) {
    Gather(values.Find(stdError), mask, _replicateStdErrors);
    if (_replicateStdErrors.size() != _replicates.size()) _replicateStdErrors.clear();
  }
  return true;
}

void ReplicateCollector::CollectJackknife(const ReplicateValues::Row& row) {
  if (_jackknifeCount == 0) return;
  // Jackknife sample j lies at split category B + 1 + j, after the bootstrap samples. The
  // boundaries end ranges of the jackknife list (statistics computed on different cases have
  // their own jackknife samples); without boundaries the whole list is one range.
  const std::uint32_t first = std::uint32_t(_sampleCount) + 1;
  const std::uint64_t categories = std::uint64_t(_table->Size(_splitDim));
  const std::uint64_t width = _values->Width();
  const std::vector<std::uint32_t> whole{std::uint32_t(_jackknifeCount)};
  const std::vector<std::uint32_t>& boundaries =
      _jackknifeBoundaries.empty() ? whole : _jackknifeBoundaries;
  // Sample k's cell as gathered; nothing beyond the gathered width.
  const auto held = [&](std::uint64_t k) {
    return row.held != nullptr && k < width ? row.held[k] : ReplicateValues::Held::kNothing;
  };
  // A statistic's range is the first whose first sample holds a cell for it.
  std::uint32_t start = 0;
  for (std::uint32_t end : boundaries) {
    // Boundaries that go backwards or point past the jackknife samples describe no samples of
    // this table: the interval cannot be trusted.
    if (end <= start || end > _jackknifeCount || first + std::uint64_t(end) > categories) return;
    if (held(first + std::uint64_t(start)) != ReplicateValues::Held::kNothing) {
      _jackknifeValues.reserve(end - start);
      for (std::uint32_t j = start; j < end; ++j) {
        const std::uint64_t k = first + std::uint64_t(j);
        // Every value of the range is needed: the acceleration from part of a jackknife is
        // not the statistic's.
        if (held(k) != ReplicateValues::Held::kNumber || row.values[k] == OmNumber::kSysMiss) {
          _jackknifeValues.clear();
          return;
        }
        _jackknifeValues.push_back(row.values[k]);
      }
      _jackknifeStart = start;
      _jackknifeEnd = end;
      _jackknifeComplete = true;
      return;
    }
    start = end;
  }
}

void ReplicateCollector::TestStatisticsToStdErrors() {
  constexpr double kSysMiss = OmNumber::kSysMiss;
  if (_estimateStdError != kSysMiss) _estimateStdError = _estimate / _estimateStdError;
  for (std::size_t i = 0; i < _replicateStdErrors.size(); ++i) {
    double& v = _replicateStdErrors[i];
    if (v == kSysMiss) continue;
    const double x = i < _replicates.size() ? _replicates[i] : kSysMiss;
    v = (x != kSysMiss && v != 0.0) ? x / v : kSysMiss;
  }
}

bool ReplicateCollector::SameBlock(const OmPivotTable::Coordinates& estimate) const {
  if (!_maskValid || estimate.size() != _maskAddress.size()) return false;
  for (std::size_t d = 0; d < estimate.size(); ++d) {
    if (int(d) == _splitDim) continue;
    bool required = false;
    for (int r : _requiredDims) required = required || std::size_t(r) == d;
    if (!required && estimate[d] != _maskAddress[d]) return false;
  }
  return true;
}

const std::vector<bool>& ReplicateCollector::ReplicateMask(const OmPivotTable::Coordinates& estimate) {
  if (_requiredDims.empty()) {
    _mask.clear();
    return _mask;
  }
  if (SameBlock(estimate)) return _mask;
  Values();
  _mask.assign(std::size_t(_sampleCount) + 1, true);
  OmPivotTable::Coordinates address = estimate;
  for (unsigned k = 1; k <= _sampleCount; ++k) _mask[k] = Matches(address, 0, int(k));
  _maskAddress = estimate;
  _maskValid = true;
  return _mask;
}

bool ReplicateCollector::Matches(OmPivotTable::Coordinates& address, std::size_t r, int k) const {
  if (r == _requiredDims.size()) {
    address[std::size_t(_splitDim)] = 0;
    OmNumber scratch(0.0);
    const OmCellText* original = _table->ReadCell(address, scratch);
    double value = 0.0;
    const ReplicateValues::Held replicate = _values->At(address, k, &value);
    if ((original == nullptr) != (replicate == ReplicateValues::Held::kNothing)) return false;
    const auto* a = dynamic_cast<const OmNumber*>(original);
    const bool b = replicate == ReplicateValues::Held::kNumber;
    return !(a && b) || a->IsSysMiss() == (value == OmNumber::kSysMiss);
  }
  // Walked from the last required dimension to the first.
  const std::size_t d = std::size_t(_requiredDims[_requiredDims.size() - 1 - r]);
  const int size = _table->Size(int(d));
  for (int c = 0; c < size; ++c) {
    address[d] = c;
    if (!Matches(address, r + 1, k)) return false;
  }
  return true;
}
