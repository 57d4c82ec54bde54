// A pooling computation: combines the results of m analyses of multiply imputed data by Rubin's
// rules. Obtained from MPFactory::CreateMPCompAlgorithm, owned by the caller; one object pools one
// estimate, or the k terms of one model together.
//
// Use: AddImputation once per imputation, then Combine, then any of the result operations in any
// order. Every operation reports an MCCommon::MCStatus and never throws; every result list is
// resized to one value per term (k), and a value that cannot be computed is the system-missing
// value (the most negative double). On failure all values of the lists are system-missing.
//
// Per term, with estimates Q_l and variances U_l = SE_l^2 of the imputations l = 1..m:
//   Qbar = mean Q_l;  W = mean U_l;  B = sum (Q_l - Qbar)^2 / (m - 1);  T = W + (1 + 1/m) B
//   relative increase in variance  r = (1 + 1/m) B / W
//   lambda = (1 + 1/m) B / T;  v_old = (m - 1) / lambda^2  (= (m - 1)(1 + 1/r)^2)
// Degrees of freedom v:
//   - complete-data df unknown (the default): v = v_old, Rubin's classical df;
//   - complete-data df v_com known (MPParamContainer::SetCompleteDataDf): the Barnard-Rubin
//     small-sample df  v_obs = (v_com + 1)/(v_com + 3) v_com (1 - lambda),  v = 1/(1/v_old + 1/v_obs).
//   When B = 0, v_old is infinite: without v_com the reference distribution is the standard
//   normal (the df is reported as system-missing, since it has no finite value); with v_com,
//   v = v_obs. When T = 0 nothing that divides by it is defined: test statistic, df,
//   significance, interval and diagnostics are system-missing (the caller can tell this case by
//   a between-imputation variance of 0).
// Fraction of missing information gamma = (r + 2/(v + 3))/(r + 1) (1 when W = 0 < B);
// relative efficiency 1/(1 + gamma/m); t = (Qbar - Q0)/sqrt(T) with a two-tailed significance
// and interval from Student's t with v df.
#pragma once

#include <vector>

#include "platform/mipool/MCStatus.h"

class MPParamContainer;

class MPCompAlgorithm {
public:
  virtual ~MPCompAlgorithm() = default;

  // 1. Records one imputation: the container's estimates and, when its count field is 2, its
  // standard errors (or covariance matrix). Every imputation must supply the same number of
  // terms and the same count field. A system-missing value fails with 140024.
  virtual MCCommon::MCStatus AddImputation(const MPParamContainer& params) = 0;

  // 2. Pools the recorded imputations (at least two). Replaces the container's estimates by the
  // pooled estimates and fills its between-, within- and total-variance lists and its pooled
  // standard errors sqrt(T). The complete-data df is read from this container.
  virtual MCCommon::MCStatus Combine(MPParamContainer& params) = 0;

  // 3. Per term: total variance T, relative increase in variance r, fraction of missing
  // information gamma, relative efficiency, and the two-tailed significance of Qbar against 0.
  virtual MCCommon::MCStatus Diagnostics(std::vector<double>& totalVariance,
                                         std::vector<double>& relativeIncrease,
                                         std::vector<double>& fractionMissingInfo,
                                         std::vector<double>& relativeEfficiency,
                                         std::vector<double>& significance) = 0;

  // 4. Per term the interval Qbar -/+ q sqrt(T), q the (1 + level)/2 quantile of the reference
  // distribution; level strictly between 0 and 1 (0.95, not 95).
  virtual MCCommon::MCStatus ConfidenceInterval(double level, std::vector<double>& lower,
                                                std::vector<double>& upper) = 0;

  // 5. Per term t = Qbar / sqrt(T).
  virtual MCCommon::MCStatus TestStatistic(std::vector<double>& statistic) = 0;

  // 6. Per term, against the hypothesised values (one value for all terms, or one per term):
  // the degrees of freedom v, the Wald statistic t^2 (referred to F(1, v)) and the two-tailed
  // significance of t = (Qbar - Q0)/sqrt(T), which equals that of the Wald statistic.
  virtual MCCommon::MCStatus DfAndSignificance(const std::vector<double>& nullValues,
                                               std::vector<double>& df,
                                               std::vector<double>& waldStatistic,
                                               std::vector<double>& significance) = 0;

  // 7. Joint Wald test that all k terms equal the hypothesised values (D1 statistic):
  //   Ubar = mean U_l (k x k; diagonal when only standard errors were given),
  //   B = sample covariance of the Q_l,  r1 = (1 + 1/m) tr(B Ubar^-1) / k,
  //   D1 = (Qbar - Q0)' Ubar^-1 (Qbar - Q0) / (k (1 + r1)),  referred to F(k, v1), t = k(m - 1):
  //   - v_com unknown, or t <= 4: the Li-Raghunathan-Rubin df, v1 = 4 + (t - 4)(1 + (1 - 2/t)/r1)^2
  //     when t > 4, else t (1 + 1/k)(1 + 1/r1)^2 / 2;
  //   - v_com known and t > 4: Reiter's (2007) small-sample df (for r1 = 0 it is
  //     (v_com + 1)/(v_com + 3) v_com, as the per-term df); it falls back to the former when it
  //     gives no finite positive value.
  //   When B = 0, v1 is infinite: the reference is chi-square(k)/k and df2 is system-missing.
  // Fills statistic {D1}, df {k, v1}, significance {p}, relativeIncrease {r1}. A singular Ubar
  // fails with 140026, Ubar and B both 0 with 140025.
  virtual MCCommon::MCStatus WaldTest(const std::vector<double>& nullValues,
                                      std::vector<double>& statistic, std::vector<double>& df,
                                      std::vector<double>& significance,
                                      std::vector<double>& relativeIncrease) = 0;

  // Imputations recorded so far, and terms per imputation (0 before the first).
  virtual int ImputationCount() const = 0;
  virtual int TermCount() const = 0;
};
