// Bootstrap results of one table cell: bias, standard error, confidence interval and two-tailed
// significance, computed from the original sample's estimate and the replicate (and jackknife)
// values that the replicate collector gathered. BootstrapCellCalculator makes one per cell.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "platform/bootspecs/SvrBootstrapSpecs.h"

class MCBSStdErrorBias;

class OmBootCalculator {
public:
  using JackknifeList = std::vector<SvrBootstrapSpecs::JackknifeEntry>;

  // The four lists are borrowed and must outlive the calculator. Jackknife value k (from 0)
  // belongs to entry jackknifeStart + k of jackknifeList; [jackknifeStart, jackknifeEnd) is the
  // cell's range of that list. estimateStdError is system-missing when the cell has none.
  // A standard error list that is neither empty nor as long as the replicates, or a range
  // beyond the jackknife list, is an OMSException "OmBootCalculator::OmBootCalculator -- size
  // mismatch". Bias and standard error are computed here, from accumulated when given (the
  // replicates' accumulation carried out already; borrowed for the constructor only).
  OmBootCalculator(const std::vector<double>& replicates,
                   const std::vector<double>& replicateStdErrors,
                   const std::vector<double>& jackknifeValues, const JackknifeList& jackknifeList,
                   std::uint32_t jackknifeStart, std::uint32_t jackknifeEnd, double estimate,
                   double estimateStdError, const MCBSStdErrorBias* accumulated = nullptr);
  OmBootCalculator(const OmBootCalculator& other);
  OmBootCalculator& operator=(const OmBootCalculator& other);
  ~OmBootCalculator();

  // Mean of the replicates minus the estimate; system-missing when a replicate is missing or
  // there is none.
  double Bias() const;
  // Standard deviation of the replicates; system-missing as for Bias (and below 2 replicates).
  double StandardError() const;
  // (lower, upper) at levelPct percent: the percentile interval without jackknife values, the
  // BCa interval with them; both system-missing when a replicate or jackknife value is missing
  // or there is no replicate.
  std::pair<double, double> ConfidenceInterval(double levelPct) const;
  // For a BCa interval, the number of replicates whose extreme order statistics would reach its
  // adjusted levels (so that neither bound falls outside them); 0 for a percentile interval or
  // when no number would do.
  unsigned SamplesForCoverage(double levelPct) const;
  // The bootstrap-t probability of the estimate against testValue under the alternative
  // (MCBSPercentileTTS::AltHypType; 2 is two-tailed); -1.0 when there are no replicate standard
  // errors or a replicate value or standard error is missing. Another alternative is an
  // OMSException.
  double Significance(int alternative, double testValue) const;

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
