// Bias-corrected and accelerated (BCa) bootstrap confidence interval of one statistic. The
// bootstrap calculator uses it for cells with jackknife values: it gives the estimate, the group
// weights, the replicates and one jackknife value per jackknife entry, then asks for the bounds.
//
// Bias correction z0 = z(p), z the inverse of Phi, p = (number of replicates below the estimate
// + half the number equal to it) / B. Counting ties as half keeps z0 at 0 for a statistic whose
// replicates often repeat the estimate exactly (medians, counts); R's boot counts only the
// replicates strictly below, so both agree when no replicate equals the estimate. When all
// replicates lie strictly on one side, z0 is infinite and both bounds are system-missing (boot
// stops with an error there).
//
// Acceleration a = sum(w u^3) / (6 (sum(w u^2))^1.5) over the jackknife entries, w the entry's
// weight (a frequency: weight 2 counts like two entries), u = s_g (mean_g - value), mean_g the
// weighted mean of the jackknife values of the entry's group g. The groups are strata: each is
// centred on its own mean and scaled by s_g = N_g - 1, N_g the group's weight sum given to
// SetSumWeights (the sum of the entries' weights when the group is not there), as stratified
// jackknife influence values are; a group with N_g <= 1 contributes nothing. When all entries
// lie in one group the scale would cancel and is not applied: a is then Efron's jackknife
// acceleration. Without jackknife values, or
// when they do not vary, a = 0 and the interval is the bias-corrected percentile interval.
//
// Bounds: for alpha = (1 - level) / 2 and (1 + level) / 2, alpha' = Phi(z0 + (z0 + z(alpha)) /
// (1 - a (z0 + z(alpha)))), and the bound is MCBSPercentileCI::Quantile(replicates, alpha').
// A bound whose denominator is not positive, or whose rank falls outside 1 ... B, is
// system-missing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

class MCBSBCaCI {
public:
  // The estimate is the original sample's value of the statistic.
  explicit MCBSBCaCI(double estimate);
  MCBSBCaCI(const MCBSBCaCI& other);
  MCBSBCaCI& operator=(const MCBSBCaCI& other);
  MCBSBCaCI(MCBSBCaCI&& other) noexcept;
  MCBSBCaCI& operator=(MCBSBCaCI&& other) noexcept;
  ~MCBSBCaCI();

  // The total weight of each jackknife group, indexed by group number.
  void SetSumWeights(const std::vector<double>& groupWeights);

  // Replaces the replicate values. System-missing values are absent replicates and are left
  // out; a NaN makes every interval system-missing.
  void SetBootstrapStats(const std::vector<double>& values);

  // Adds one jackknife entry: its jackknife value, its weight and its group. An entry whose
  // value is system-missing or whose weight is not a positive number is left out; a NaN value
  // makes every interval system-missing.
  void AddJackknifeStat(double value, double weight, std::uint32_t group);

  // (lower, upper) at the confidence level, a fraction (0.95); system-missing bounds as above,
  // and both when the estimate is system-missing, there are no replicates or the level is
  // outside (0, 1).
  // Selecting the bounds reorders the kept replicates: one thread at a time, even for this
  // const call.
  std::pair<double, double> GetCI(double level) const;

  // The levels alpha' whose replicate quantiles are the bounds; system-missing where GetCI's
  // bound is for a reason other than the rank (B + 1) alpha' falling outside 1 ... B.
  std::pair<double, double> GetAdjustedLevels(double level) const;

  // z0; system-missing when it is infinite or there are no replicates.
  double GetBiasCorrection() const;

  // a; system-missing when a jackknife value is NaN.
  double GetAcceleration() const;

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
