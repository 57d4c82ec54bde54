#include "platform/bootstats/MCBSPercentileCI.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/bootstats/MCBSCommon.h"

struct MCBSPercentileCI::Data {
  MCBSOrderStatistics _values;
  bool _hasNaN = false;
};

MCBSPercentileCI::MCBSPercentileCI() : _my(std::make_unique<Data>()) {}

MCBSPercentileCI::MCBSPercentileCI(const MCBSPercentileCI& other)
    : _my(std::make_unique<Data>(*other._my)) {}

MCBSPercentileCI& MCBSPercentileCI::operator=(const MCBSPercentileCI& other) {
  if (this != &other) *_my = *other._my;
  return *this;
}

MCBSPercentileCI::MCBSPercentileCI(MCBSPercentileCI&& other) noexcept = default;
MCBSPercentileCI& MCBSPercentileCI::operator=(MCBSPercentileCI&& other) noexcept = default;
MCBSPercentileCI::~MCBSPercentileCI() = default;

void MCBSPercentileCI::SetBootstrapStats(const std::vector<double>& values) {
  Data& my = *_my;
  my._values.Clear();
  my._values.Reserve(values.size());
  my._hasNaN = false;
  for (double value : values) {
    if (value == MCBSCommon::SystemMissing) continue;
    // NaN has no place in an order; keep it out of the sort and remember it.
    if (std::isnan(value)) {
      my._hasNaN = true;
      continue;
    }
    my._values.Add(value);
  }
}

std::pair<double, double> MCBSPercentileCI::GetCI(double level) const {
  const double missing = MCBSCommon::SystemMissing;
  if (_my->_hasNaN || !(level > 0.0 && level < 1.0)) return {missing, missing};
  // The lower bound first: the upper one's selection then works above it.
  const double lower = Quantile(_my->_values, (1.0 - level) / 2.0);
  return {lower, Quantile(_my->_values, (1.0 + level) / 2.0)};
}

std::size_t MCBSPercentileCI::GetCount() const { return _my->_values.Size(); }

double MCBSPercentileCI::Quantile(MCBSOrderStatistics& values, double alpha) {
  const double missing = MCBSCommon::SystemMissing;
  const std::size_t count = values.Size();
  if (count == 0 || !(alpha > 0.0 && alpha < 1.0)) return missing;

  const double places = static_cast<double>(count) + 1.0;
  const double rank = places * alpha;
  const double nearest = std::round(rank);
  if (std::fabs(rank - nearest) <= 64.0 * std::numeric_limits<double>::epsilon() * rank) {
    if (nearest < 1.0 || nearest > static_cast<double>(count)) return missing;
    return MCBSCommon::ResultOrMissing(values.At(static_cast<std::size_t>(nearest) - 1));
  }

  const double below = std::floor(rank);
  if (below < 1.0 || below >= static_cast<double>(count)) return missing;
  const auto k = static_cast<std::size_t>(below);
  const double low = values.At(k - 1);
  const double high = values.At(k);
  if (low == high) return MCBSCommon::ResultOrMissing(low);
  const double zLow = MCBSCommon::NormalQuantile(below / places);
  const double zHigh = MCBSCommon::NormalQuantile((below + 1.0) / places);
  const double zAlpha = MCBSCommon::NormalQuantile(alpha);
  return MCBSCommon::ResultOrMissing(low + (zAlpha - zLow) / (zHigh - zLow) * (high - low));
}
