#include "platform/bootstats/MCBSStdErrorBias.h"

#include <algorithm>
#include <cmath>

#include "platform/bootstats/MCBSCommon.h"

// Welford's running mean and sum of squared deviations: one pass, no cancellation when the
// replicates are large and close together.
struct MCBSStdErrorBias::Data {
  std::size_t _count = 0;
  double _mean = 0.0;
  double _sumSquares = 0.0;
};

MCBSStdErrorBias::MCBSStdErrorBias() : _my(std::make_unique<Data>()) {}

MCBSStdErrorBias::MCBSStdErrorBias(std::size_t count, double mean, double sumSquares)
    : _my(std::make_unique<Data>(Data{count, mean, sumSquares})) {}

MCBSStdErrorBias::MCBSStdErrorBias(const MCBSStdErrorBias& other)
    : _my(std::make_unique<Data>(*other._my)) {}

MCBSStdErrorBias& MCBSStdErrorBias::operator=(const MCBSStdErrorBias& other) {
  if (this != &other) *_my = *other._my;
  return *this;
}

MCBSStdErrorBias::MCBSStdErrorBias(MCBSStdErrorBias&& other) noexcept = default;
MCBSStdErrorBias& MCBSStdErrorBias::operator=(MCBSStdErrorBias&& other) noexcept = default;
MCBSStdErrorBias::~MCBSStdErrorBias() = default;

void MCBSStdErrorBias::AddBootstrapStat(double value) {
  if (value == MCBSCommon::SystemMissing) return;
  Data& my = *_my;
  Step(my._count, my._mean, my._sumSquares, value);
}

void MCBSStdErrorBias::AddBootstrapStats(const double* values, std::size_t count) {
  // In locals, so that the loop keeps them in registers.
  Data& my = *_my;
  std::size_t n = my._count;
  double mean = my._mean;
  double sumSquares = my._sumSquares;
  for (std::size_t i = 0; i < count; ++i) {
    if (values[i] != MCBSCommon::SystemMissing) Step(n, mean, sumSquares, values[i]);
  }
  my._count = n;
  my._mean = mean;
  my._sumSquares = sumSquares;
}

double MCBSStdErrorBias::GetBias(double estimate) const {
  if (_my->_count == 0 || estimate == MCBSCommon::SystemMissing) return MCBSCommon::SystemMissing;
  return MCBSCommon::ResultOrMissing(_my->_mean - estimate);
}

double MCBSStdErrorBias::GetStandardError() const {
  if (_my->_count < 2) return MCBSCommon::SystemMissing;
  const double variance = _my->_sumSquares / static_cast<double>(_my->_count - 1);
  if (std::isnan(variance)) return MCBSCommon::SystemMissing;
  // Rounding can leave a tiny negative sum for identical replicates; they have no spread.
  return MCBSCommon::ResultOrMissing(std::sqrt(std::max(variance, 0.0)));
}

std::size_t MCBSStdErrorBias::GetCount() const { return _my->_count; }

double MCBSStdErrorBias::GetMean() const {
  if (_my->_count == 0) return MCBSCommon::SystemMissing;
  return MCBSCommon::ResultOrMissing(_my->_mean);
}
