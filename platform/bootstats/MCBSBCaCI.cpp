#include "platform/bootstats/MCBSBCaCI.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "platform/bootstats/MCBSCommon.h"
#include "platform/bootstats/MCBSOrderStatistics.h"
#include "platform/bootstats/MCBSPercentileCI.h"

namespace {
struct JackknifeEntry {
  double _value;
  double _weight;
  std::uint32_t _group;
};

struct GroupSums {
  double _weight = 0.0;
  double _weightedValue = 0.0;
  double _scale = 1.0;
};

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
}  // namespace

struct MCBSBCaCI::Data {
  double _estimate = 0.0;
  std::vector<double> _groupWeights;
  MCBSOrderStatistics _replicates;
  // Replicates below and equal to the estimate, counted as they are set.
  std::size_t _below = 0;
  std::size_t _equal = 0;
  bool _replicateNaN = false;
  std::vector<JackknifeEntry> _jackknife;
  bool _jackknifeNaN = false;

  // z0, or NaN / an infinity when it cannot be used.
  double BiasCorrection() const;
  // a, or NaN when a jackknife value is NaN.
  double Acceleration() const;
};

double MCBSBCaCI::Data::BiasCorrection() const {
  if (_replicates.Size() == 0 || _replicateNaN || !std::isfinite(_estimate) ||
      _estimate == MCBSCommon::SystemMissing) {
    return kNaN;
  }
  const double below = static_cast<double>(_below);
  const double equal = static_cast<double>(_equal);
  const double share = (below + 0.5 * equal) / static_cast<double>(_replicates.Size());
  return MCBSCommon::NormalQuantile(share);
}

double MCBSBCaCI::Data::Acceleration() const {
  if (_jackknifeNaN) return kNaN;
  if (_jackknife.empty()) return 0.0;

  // The groups in ascending order of number, found by binary search: a statistic has one
  // group or a few strata, and a map's node per group cost more than the sums themselves.
  std::vector<std::pair<std::uint32_t, GroupSums>> groups;
  const auto find = [&groups](std::uint32_t group) {
    return std::lower_bound(groups.begin(), groups.end(), group,
                            [](const auto& g, std::uint32_t number) { return g.first < number; });
  };
  for (const JackknifeEntry& entry : _jackknife) {
    auto at = find(entry._group);
    if (at == groups.end() || at->first != entry._group) {
      at = groups.insert(at, {entry._group, GroupSums{}});
    }
    GroupSums& sums = at->second;
    sums._weight += entry._weight;
    sums._weightedValue += entry._weight * entry._value;
  }
  if (groups.size() > 1) {
    for (auto& [group, sums] : groups) {
      const bool given = group < _groupWeights.size() && std::isfinite(_groupWeights[group]) &&
                         _groupWeights[group] > 0.0;
      const double total = given ? _groupWeights[group] : sums._weight;
      sums._scale = total > 1.0 ? total - 1.0 : 0.0;
    }
  }

  double second = 0.0;
  double third = 0.0;
  for (const JackknifeEntry& entry : _jackknife) {
    const GroupSums& sums = find(entry._group)->second;
    const double mean = sums._weightedValue / sums._weight;
    const double deviation = sums._scale * (mean - entry._value);
    second += entry._weight * deviation * deviation;
    third += entry._weight * deviation * deviation * deviation;
  }
  if (std::isnan(second) || std::isnan(third)) return kNaN;
  if (second == 0.0) return 0.0;  // jackknife values that do not vary say nothing of skewness
  return third / (6.0 * std::pow(second, 1.5));
}

MCBSBCaCI::MCBSBCaCI(double estimate) : _my(std::make_unique<Data>()) { _my->_estimate = estimate; }

MCBSBCaCI::MCBSBCaCI(const MCBSBCaCI& other) : _my(std::make_unique<Data>(*other._my)) {}

MCBSBCaCI& MCBSBCaCI::operator=(const MCBSBCaCI& other) {
  if (this != &other) *_my = *other._my;
  return *this;
}

MCBSBCaCI::MCBSBCaCI(MCBSBCaCI&& other) noexcept = default;
MCBSBCaCI& MCBSBCaCI::operator=(MCBSBCaCI&& other) noexcept = default;
MCBSBCaCI::~MCBSBCaCI() = default;

void MCBSBCaCI::SetSumWeights(const std::vector<double>& groupWeights) {
  _my->_groupWeights = groupWeights;
}

void MCBSBCaCI::SetBootstrapStats(const std::vector<double>& values) {
  Data& my = *_my;
  my._replicates.Clear();
  my._replicates.Reserve(values.size());
  my._below = my._equal = 0;
  my._replicateNaN = false;
  for (double value : values) {
    if (value == MCBSCommon::SystemMissing) continue;
    if (std::isnan(value)) {
      my._replicateNaN = true;
      continue;
    }
    my._replicates.Add(value);
    my._below += value < my._estimate;
    my._equal += value == my._estimate;
  }
}

void MCBSBCaCI::AddJackknifeStat(double value, double weight, std::uint32_t group) {
  if (value == MCBSCommon::SystemMissing || !(std::isfinite(weight) && weight > 0.0)) return;
  if (std::isnan(value)) {
    _my->_jackknifeNaN = true;
    return;
  }
  _my->_jackknife.push_back({value, weight, group});
}

std::pair<double, double> MCBSBCaCI::GetAdjustedLevels(double level) const {
  const double missing = MCBSCommon::SystemMissing;
  if (!(level > 0.0 && level < 1.0)) return {missing, missing};
  const double z0 = _my->BiasCorrection();
  const double a = _my->Acceleration();
  if (!std::isfinite(z0) || !std::isfinite(a)) return {missing, missing};

  const auto adjust = [&](double alpha) {
    const double shifted = z0 + MCBSCommon::NormalQuantile(alpha);
    const double denominator = 1.0 - a * shifted;
    // Past this point the adjusted level no longer grows with alpha: no usable bound.
    if (!(denominator > 0.0)) return missing;
    return MCBSCommon::NormalCdf(z0 + shifted / denominator);
  };
  return {adjust((1.0 - level) / 2.0), adjust((1.0 + level) / 2.0)};
}

std::pair<double, double> MCBSBCaCI::GetCI(double level) const {
  const double missing = MCBSCommon::SystemMissing;
  const auto [low, high] = GetAdjustedLevels(level);
  const auto bound = [&](double alpha) {
    return alpha == missing ? missing : MCBSPercentileCI::Quantile(_my->_replicates, alpha);
  };
  // The lower bound first: the upper one's selection then works above it.
  const double lower = bound(low);
  return {lower, bound(high)};
}

double MCBSBCaCI::GetBiasCorrection() const {
  return MCBSCommon::ResultOrMissing(_my->BiasCorrection());
}

double MCBSBCaCI::GetAcceleration() const { return MCBSCommon::ResultOrMissing(_my->Acceleration()); }
