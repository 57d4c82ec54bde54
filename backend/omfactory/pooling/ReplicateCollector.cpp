#include "backend/omfactory/pooling/ReplicateCollector.h"

#include <utility>

#include "platform/errors/OMSException.h"
#include "platform/outputmodel/OmNumber.h"

namespace {

const OmNumber* NumberAt(const OmPivotTable& table, const OmPivotTable::Coordinates& address) {
  return dynamic_cast<const OmNumber*>(table.Cell(address));
}

}  // namespace

ReplicateCollector::ReplicateCollector(const OmPivotTable& table, int splitDim,
                                       unsigned sampleCount,
                                       unsigned jackknifeCount,
                                       std::vector<std::uint32_t> jackknifeBoundaries,
                                       std::vector<int> requiredDims)
    : _table(&table),
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

void ReplicateCollector::Gather(OmPivotTable::Coordinates& address, int k,
                                std::vector<double>& into) const {
  address[std::size_t(_splitDim)] = k;
  const OmNumber* number = NumberAt(*_table, address);
  if (number && !number->IsSysMiss()) into.push_back(number->Value());
}

bool ReplicateCollector::Collect(const OmPivotTable::Coordinates& estimate,
                                 const OmPivotTable::Coordinates& stdError) {
  _replicates.clear();
  _jackknifeValues.clear();
  _replicateStdErrors.clear();
  _estimateStdError = OmNumber::kSysMiss;
  _jackknifeStart = _jackknifeEnd = 0;
  _jackknifeComplete = _jackknifeCount == 0;

  const OmNumber* original = NumberAt(*_table, estimate);
  if (!original) return false;
  if (!stdError.empty() && stdError.size() != estimate.size()) {
    throw OMSException("ReplicateCollector::Collect -- stdError.size() == estimate.size()",
                       double(stdError.size()), double(estimate.size()));
  }
  const std::vector<bool>& mask = ReplicateMask(estimate);
  _estimate = original->Value();
  if (!stdError.empty()) {
    if (const OmNumber* se = NumberAt(*_table, stdError)) _estimateStdError = se->Value();
  }

  const int samples = int(_sampleCount);
  _scratch = estimate;
  for (int k = 1; k <= samples; ++k) {
    if (!mask.empty() && !mask[std::size_t(k)]) continue;
    Gather(_scratch, k, _replicates);
  }

  CollectJackknife();

  if (!stdError.empty()) {
    _scratch = stdError;
    for (int k = 1; k <= samples; ++k) {
      if (!mask.empty() && !mask[std::size_t(k)]) continue;
      Gather(_scratch, k, _replicateStdErrors);
    }
    if (_replicateStdErrors.size() != _replicates.size()) _replicateStdErrors.clear();
  }
  return true;
}

void ReplicateCollector::CollectJackknife() {
  if (_jackknifeCount == 0) return;
  // Jackknife sample j lies at split category B + 1 + j, after the bootstrap samples. The
  // boundaries end ranges of the jackknife list (statistics computed on different cases have
  // their own jackknife samples); without boundaries the whole list is one range.
  const std::uint32_t first = std::uint32_t(_sampleCount) + 1;
  const std::uint64_t categories = std::uint64_t(_table->Size(_splitDim));
  const std::vector<std::uint32_t> whole{std::uint32_t(_jackknifeCount)};
  const std::vector<std::uint32_t>& boundaries =
      _jackknifeBoundaries.empty() ? whole : _jackknifeBoundaries;
  // A statistic's range is the first whose first sample holds a cell for it.
  std::uint32_t start = 0;
  for (std::uint32_t end : boundaries) {
    // Boundaries that go backwards or point past the jackknife samples describe no samples of
    // this table: the interval cannot be trusted.
    if (end <= start || end > _jackknifeCount || first + std::uint64_t(end) > categories) return;
    _scratch[std::size_t(_splitDim)] = int(first + start);
    if (_table->Cell(_scratch) != nullptr) {
      for (std::uint32_t j = start; j < end; ++j) {
        _scratch[std::size_t(_splitDim)] = int(first + j);
        const OmNumber* number = NumberAt(*_table, _scratch);
        // Every value of the range is needed: the acceleration from part of a jackknife is
        // not the statistic's.
        if (!number || number->IsSysMiss()) {
          _jackknifeValues.clear();
          return;
        }
        _jackknifeValues.push_back(number->Value());
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
    const OmCellText* original = _table->Cell(address);
    address[std::size_t(_splitDim)] = k;
    const OmCellText* replicate = _table->Cell(address);
    if ((original == nullptr) != (replicate == nullptr)) return false;
    const auto* a = dynamic_cast<const OmNumber*>(original);
    const auto* b = dynamic_cast<const OmNumber*>(replicate);
    return !(a && b) || a->IsSysMiss() == b->IsSysMiss();
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
