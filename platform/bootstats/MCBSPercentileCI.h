// Bootstrap percentile confidence interval: the equal-tailed quantiles of the replicate values.
// The bootstrap calculator uses it for cells without jackknife values; MCBSBCaCI shares its
// quantile rule.
//
// Quantile rule (Quantile below): the alpha quantile of B sorted replicates t(1) <= ... <= t(B)
// is the order statistic of rank r = (B + 1) * alpha. A whole r gives t(r); otherwise, with
// k = floor(r), the bound is interpolated between t(k) and t(k+1) on the normal quantile scale:
//     t(k) + (z(alpha) - z(k/(B+1))) / (z((k+1)/(B+1)) - z(k/(B+1))) * (t(k+1) - t(k)),
// z being the inverse of Phi (Davison and Hinkley, Bootstrap Methods and their Application,
// 1997, eq. 5.8). We chose it over a plain linear (type 7) quantile because R's boot package
// uses it for its "perc" and "bca" intervals, so our bounds can be checked against boot.ci to
// rounding, and because (B + 1) * alpha makes the smallest usable sample size plain: a rank
// below 1 or above B cannot be reached, and that bound is system-missing, where boot.ci pins it
// to the smallest or largest replicate with a warning. For a 95% interval this needs B >= 39,
// the coverage count that the result writer footnotes. Ranks within 1e-14 relative of a whole
// number count as whole, so that a level such as 0.95 does not interpolate on rounding noise.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "platform/bootstats/MCBSOrderStatistics.h"

class MCBSPercentileCI {
public:
  MCBSPercentileCI();
  MCBSPercentileCI(const MCBSPercentileCI& other);
  MCBSPercentileCI& operator=(const MCBSPercentileCI& other);
  MCBSPercentileCI(MCBSPercentileCI&& other) noexcept;
  MCBSPercentileCI& operator=(MCBSPercentileCI&& other) noexcept;
  ~MCBSPercentileCI();

  // Replaces the replicate values. System-missing values are absent replicates and are left
  // out; a NaN makes every interval system-missing.
  void SetBootstrapStats(const std::vector<double>& values);

  // (lower, upper) at the quantiles (1 - level) / 2 and (1 + level) / 2 of the replicates, level
  // being a fraction (0.95). A bound that cannot be given is system-missing: no replicates, a
  // level outside (0, 1), or a rank outside 1 ... B. Selecting the bounds reorders the kept
  // replicates: one thread at a time, even for this const call.
  std::pair<double, double> GetCI(double level) const;

  // Number of replicates kept.
  std::size_t GetCount() const;

  // The alpha quantile of values by the rule above; system-missing when the rank falls outside
  // 1 ... B, alpha is outside (0, 1) or the result is not a finite number.
  static double Quantile(MCBSOrderStatistics& values, double alpha);

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
