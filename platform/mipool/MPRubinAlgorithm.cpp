#include "platform/mipool/MPRubinAlgorithm.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>

#include "platform/mipool/MPCholesky.h"
#include "platform/mipool/MPParamContainer.h"
#include "platform/mipool/PoolingErrors.h"

using MCCommon::MCStatus;

namespace {

constexpr double kSysmis = -std::numeric_limits<double>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kUndefined = std::numeric_limits<double>::quiet_NaN();

// Pooling must not throw for a numerical problem: distribution functions return NaN instead of
// raising, and NaN becomes the system-missing value on the way out.
using NoThrow = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::ignore_error>,
    boost::math::policies::pole_error<boost::math::policies::ignore_error>,
    boost::math::policies::overflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::underflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::evaluation_error<boost::math::policies::ignore_error>,
    boost::math::policies::rounding_error<boost::math::policies::ignore_error>,
    boost::math::policies::indeterminate_result_error<boost::math::policies::ignore_error>>;
using Normal = boost::math::normal_distribution<double, NoThrow>;
using StudentsT = boost::math::students_t_distribution<double, NoThrow>;
using FisherF = boost::math::fisher_f_distribution<double, NoThrow>;
using ChiSquared = boost::math::chi_squared_distribution<double, NoThrow>;

double OrMissing(double x) { return std::isfinite(x) ? x : kSysmis; }

void Fill(std::vector<double>& list, std::size_t n, double value) { list.assign(n, value); }

// Two-tailed significance of a t value with v df; v infinite means the standard normal.
double TwoTailed(double t, double v) {
  if (!std::isfinite(t) || std::isnan(v) || v <= 0)
    return kSysmis;
  const double tail = std::isinf(v) ? cdf(complement(Normal(), std::fabs(t)))
                                    : cdf(complement(StudentsT(v), std::fabs(t)));
  return OrMissing(2.0 * tail);
}

// The (1 + level)/2 quantile of the reference distribution with v df.
double CriticalValue(double level, double v) {
  if (std::isnan(v) || v <= 0)
    return kUndefined;
  const double tail = (1.0 - level) / 2.0;
  return std::isinf(v) ? quantile(complement(Normal(), tail))
                       : quantile(complement(StudentsT(v), tail));
}

bool KnownDf(double df) { return std::isfinite(df) && df > 0 && df != kSysmis; }

// Pooled quantities of one term.
struct Term {
  double qbar = kUndefined;
  double w = kUndefined; // within-imputation variance
  double b = kUndefined; // between-imputation variance
  double t = kUndefined; // total variance
  double v = kUndefined; // degrees of freedom: NaN undefined, +inf infinite
};

// Rubin's classical df, adjusted by Barnard and Rubin when the complete-data df is known.
double DegreesOfFreedom(int m, double b, double t, double completeDf) {
  if (!(t > 0))
    return kUndefined;
  const double lambda = (1.0 + 1.0 / m) * b / t;
  const double dfOld = lambda > 0 ? (m - 1) / (lambda * lambda) : kInfinity;
  if (!KnownDf(completeDf))
    return dfOld;
  const double dfObs = (completeDf + 1.0) / (completeDf + 3.0) * completeDf * (1.0 - lambda);
  if (!(dfObs > 0))
    return kUndefined;
  if (std::isinf(dfOld))
    return dfObs;
  return dfOld * dfObs / (dfOld + dfObs);
}

// The D1 test's denominator df: Li, Raghunathan and Rubin (1991), or Reiter (2007) when the
// complete-data df is known (his approximation needs t = k(m - 1) > 4).
double WaldDenominatorDf(int k, int m, double r, double completeDf) {
  const double t = static_cast<double>(k) * (m - 1);
  if (KnownDf(completeDf) && t > 4) {
    const double a = r * t / (t - 2.0);
    const double vStar = (completeDf + 1.0) / (completeDf + 3.0) * completeDf;
    const double c0 = 1.0 / (t - 4.0);
    const double c1 = vStar - 2.0 * (1.0 + a);
    const double c2 = vStar - 4.0 * (1.0 + a);
    const double a2 = a * a;
    const double z = 1.0 / c2 + c0 * (a2 * c1 / ((1.0 + a) * (1.0 + a) * c2)) +
                     c0 * (8.0 * a2 * c1 / ((1.0 + a) * c2 * c2) + 4.0 * a2 / ((1.0 + a) * c2)) +
                     c0 * (4.0 * a2 / (c2 * c1) + 16.0 * a2 * c1 / (c2 * c2 * c2)) +
                     c0 * (8.0 * a2 / (c2 * c2));
    const double v = 4.0 + 1.0 / z;
    if (std::isfinite(v) && v > 0)
      return v;
  }
  if (!(r > 0))
    return kInfinity;
  if (t > 4) {
    const double f = 1.0 + (1.0 - 2.0 / t) / r;
    return 4.0 + (t - 4.0) * f * f;
  }
  const double f = 1.0 + 1.0 / r;
  return t * (1.0 + 1.0 / k) * f * f / 2.0;
}

bool SymmetricEnough(double x, double y) {
  return std::fabs(x - y) <= 1e-9 * std::max(std::fabs(x), std::fabs(y));
}

} // namespace

struct MPRubinAlgorithm::Data {
  int count = 0;            // count field of the first imputation; 0 before it
  bool covariances = false; // whether the first imputation gave a covariance matrix
  int k = 0;                // terms per imputation
  std::vector<std::vector<double>> estimates; // one row per imputation
  // Sum of the imputations' k x k covariances; without covariances only its diagonal, the sums
  // of squared standard errors (k values: a model of many terms must not cost k x k).
  std::vector<double> sumU;
  double SumU(std::size_t i, std::size_t j) const {
    if (covariances) return sumU[i * std::size_t(k) + j];
    return i == j ? sumU[i] : 0.0;
  }
  bool combined = false;
  double completeDf = 0.0;
  std::vector<Term> terms; // after Combine

  std::size_t K() const { return static_cast<std::size_t>(k); }
  int M() const { return static_cast<int>(estimates.size()); }
};

MPRubinAlgorithm::MPRubinAlgorithm() : _my(std::make_unique<Data>()) {}
MPRubinAlgorithm::~MPRubinAlgorithm() = default;
MPRubinAlgorithm::MPRubinAlgorithm(const MPRubinAlgorithm& other)
    : _my(std::make_unique<Data>(*other._my)) {}
MPRubinAlgorithm& MPRubinAlgorithm::operator=(const MPRubinAlgorithm& other) {
  if (this != &other)
    *_my = *other._my;
  return *this;
}

int MPRubinAlgorithm::ImputationCount() const { return _my->M(); }
int MPRubinAlgorithm::TermCount() const { return _my->k; }

MCStatus MPRubinAlgorithm::AddImputation(const MPParamContainer& params) {
  Data& my = *_my;
  if (my.combined)
    return MCStatus(MPError::kAlreadyCombined);
  const int count = params.Count();
  if (count != MPParamContainer::kEstimatesOnly && count != MPParamContainer::kWithStandardErrors)
    return MCStatus(MPError::kBadCountField);
  const std::vector<double>& q = params.Estimates();
  if (q.empty())
    return MCStatus(MPError::kNoEstimates);
  const std::size_t k = q.size();
  const bool first = my.estimates.empty();
  if (!first && k != my.K())
    return MCStatus(MPError::kTermCountMismatch);
  if (!first && count != my.count)
    return MCStatus(MPError::kStandardErrorCountMismatch);

  const bool withVariance = count == MPParamContainer::kWithStandardErrors;
  const bool withCovariances = withVariance && !params.Covariances().empty();
  const std::vector<double>& se = params.StandardErrors();
  const std::vector<double>& cov = params.Covariances();
  if (withVariance) {
    if (!first && withCovariances != my.covariances)
      return MCStatus(MPError::kCovarianceMismatch);
    if (withCovariances && cov.size() != k * k)
      return MCStatus(MPError::kCovarianceMismatch);
    if (!withCovariances && se.size() != k)
      return MCStatus(MPError::kStandardErrorCountMismatch);
  }
  const std::vector<double>& variances = withCovariances ? cov : se;

  // A missing value has its own code, whatever else is wrong with the imputation.
  auto isMissing = [](double x) { return x == kSysmis; };
  if (std::any_of(q.begin(), q.end(), isMissing) ||
      (withVariance && std::any_of(variances.begin(), variances.end(), isMissing)))
    return MCStatus(MPError::kSystemMissingInput);
  auto notFinite = [](double x) { return !std::isfinite(x); };
  if (std::any_of(q.begin(), q.end(), notFinite) ||
      (withVariance && std::any_of(variances.begin(), variances.end(), notFinite)))
    return MCStatus(MPError::kNonFiniteInput);
  if (withCovariances) {
    for (std::size_t i = 0; i < k; ++i) {
      if (cov[i * k + i] < 0)
        return MCStatus(MPError::kNegativeStandardError);
      for (std::size_t j = 0; j < i; ++j)
        if (!SymmetricEnough(cov[i * k + j], cov[j * k + i]))
          return MCStatus(MPError::kCovarianceMismatch);
    }
  } else if (withVariance && std::any_of(se.begin(), se.end(), [](double s) { return s < 0; })) {
    return MCStatus(MPError::kNegativeStandardError);
  }

  if (first) {
    my.k = static_cast<int>(k);
    my.count = count;
    my.covariances = withCovariances;
    my.sumU.assign(withCovariances ? k * k : k, 0.0);
  }
  my.estimates.push_back(q);
  if (withCovariances) {
    for (std::size_t i = 0; i < k * k; ++i)
      my.sumU[i] += cov[i];
  } else if (withVariance) {
    for (std::size_t i = 0; i < k; ++i)
      my.sumU[i] += se[i] * se[i];
  }
  return MCStatus();
}

MCStatus MPRubinAlgorithm::Combine(MPParamContainer& params) {
  Data& my = *_my;
  const std::size_t k = my.K();
  const int m = my.M();
  params.BetweenVariances().clear();
  params.WithinVariances().clear();
  params.TotalVariances().clear();
  params.PooledStandardErrors().clear();
  if (m < 2) {
    Fill(params.Estimates(), k, kSysmis);
    Fill(params.BetweenVariances(), k, kSysmis);
    return MCStatus(MPError::kTooFewImputations);
  }

  my.completeDf = params.CompleteDataDf();
  const bool withVariance = my.count == MPParamContainer::kWithStandardErrors;
  my.terms.assign(k, Term());
  for (std::size_t j = 0; j < k; ++j) {
    Term& term = my.terms[j];
    double sum = 0.0;
    for (const std::vector<double>& row : my.estimates)
      sum += row[j];
    term.qbar = sum / m;
    double squares = 0.0;
    for (const std::vector<double>& row : my.estimates)
      squares += (row[j] - term.qbar) * (row[j] - term.qbar);
    term.b = squares / (m - 1);
    if (withVariance) {
      term.w = my.SumU(j, j) / m;
      term.t = term.w + (1.0 + 1.0 / m) * term.b;
      term.v = DegreesOfFreedom(m, term.b, term.t, my.completeDf);
    }
  }
  my.combined = true;

  std::vector<double>& estimates = params.Estimates();
  estimates.clear();
  for (const Term& term : my.terms) {
    estimates.push_back(OrMissing(term.qbar));
    params.BetweenVariances().push_back(OrMissing(term.b));
    if (withVariance) {
      params.WithinVariances().push_back(OrMissing(term.w));
      params.TotalVariances().push_back(OrMissing(term.t));
      params.PooledStandardErrors().push_back(OrMissing(std::sqrt(term.t)));
    }
  }
  return MCStatus();
}

MCStatus MPRubinAlgorithm::CheckResultsReady() const {
  if (!_my->combined)
    return MCStatus(MPError::kNotCombined);
  if (_my->count != MPParamContainer::kWithStandardErrors)
    return MCStatus(MPError::kNoStandardErrors);
  return MCStatus();
}

MCStatus MPRubinAlgorithm::Diagnostics(std::vector<double>& totalVariance,
                                       std::vector<double>& relativeIncrease,
                                       std::vector<double>& fractionMissingInfo,
                                       std::vector<double>& relativeEfficiency,
                                       std::vector<double>& significance) {
  const std::size_t k = _my->K();
  for (std::vector<double>* list :
       {&totalVariance, &relativeIncrease, &fractionMissingInfo, &relativeEfficiency, &significance})
    Fill(*list, k, kSysmis);
  const MCStatus ready = CheckResultsReady();
  if (!ready.IsOK())
    return ready;

  const int m = _my->M();
  for (std::size_t j = 0; j < k; ++j) {
    const Term& term = _my->terms[j];
    double r = kUndefined;
    if (term.w > 0)
      r = (1.0 + 1.0 / m) * term.b / term.w;
    else if (term.b > 0)
      r = kInfinity;
    double gamma = kUndefined;
    if (std::isinf(r))
      gamma = 1.0; // no information within imputations: all of it is missing
    else if (term.t > 0 && !std::isnan(term.v))
      gamma = (r + 2.0 / (term.v + 3.0)) / (r + 1.0);
    totalVariance[j] = OrMissing(term.t);
    relativeIncrease[j] = OrMissing(r);
    fractionMissingInfo[j] = OrMissing(gamma);
    relativeEfficiency[j] = OrMissing(1.0 / (1.0 + gamma / m));
    if (term.t > 0)
      significance[j] = TwoTailed(term.qbar / std::sqrt(term.t), term.v);
  }
  return MCStatus();
}

MCStatus MPRubinAlgorithm::ConfidenceInterval(double level, std::vector<double>& lower,
                                              std::vector<double>& upper) {
  const std::size_t k = _my->K();
  Fill(lower, k, kSysmis);
  Fill(upper, k, kSysmis);
  const MCStatus ready = CheckResultsReady();
  if (!ready.IsOK())
    return ready;
  if (!(level > 0 && level < 1))
    return MCStatus(MPError::kBadConfidenceLevel);

  for (std::size_t j = 0; j < k; ++j) {
    const Term& term = _my->terms[j];
    if (!(term.t > 0))
      continue;
    const double halfWidth = CriticalValue(level, term.v) * std::sqrt(term.t);
    if (!std::isfinite(halfWidth))
      continue;
    lower[j] = OrMissing(term.qbar - halfWidth);
    upper[j] = OrMissing(term.qbar + halfWidth);
  }
  return MCStatus();
}

MCStatus MPRubinAlgorithm::TestStatistic(std::vector<double>& statistic) {
  const std::size_t k = _my->K();
  Fill(statistic, k, kSysmis);
  const MCStatus ready = CheckResultsReady();
  if (!ready.IsOK())
    return ready;
  for (std::size_t j = 0; j < k; ++j) {
    const Term& term = _my->terms[j];
    if (term.t > 0)
      statistic[j] = OrMissing(term.qbar / std::sqrt(term.t));
  }
  return MCStatus();
}

MCStatus MPRubinAlgorithm::DfAndSignificance(const std::vector<double>& nullValues,
                                             std::vector<double>& df,
                                             std::vector<double>& waldStatistic,
                                             std::vector<double>& significance) {
  const std::size_t k = _my->K();
  Fill(df, k, kSysmis);
  Fill(waldStatistic, k, kSysmis);
  Fill(significance, k, kSysmis);
  const MCStatus ready = CheckResultsReady();
  if (!ready.IsOK())
    return ready;
  if ((nullValues.size() != 1 && nullValues.size() != k) ||
      std::any_of(nullValues.begin(), nullValues.end(),
                  [](double x) { return !std::isfinite(x) || x == kSysmis; }))
    return MCStatus(MPError::kBadNullValues);

  for (std::size_t j = 0; j < k; ++j) {
    const Term& term = _my->terms[j];
    const double q0 = nullValues.size() == 1 ? nullValues[0] : nullValues[j];
    df[j] = OrMissing(term.v);
    if (!(term.t > 0))
      continue;
    const double t = (term.qbar - q0) / std::sqrt(term.t);
    waldStatistic[j] = OrMissing(t * t);
    significance[j] = TwoTailed(t, term.v);
  }
  return MCStatus();
}

MCStatus MPRubinAlgorithm::WaldTest(const std::vector<double>& nullValues,
                                    std::vector<double>& statistic, std::vector<double>& df,
                                    std::vector<double>& significance,
                                    std::vector<double>& relativeIncrease) {
  Fill(statistic, 1, kSysmis);
  Fill(df, 2, kSysmis);
  Fill(significance, 1, kSysmis);
  Fill(relativeIncrease, 1, kSysmis);
  const MCStatus ready = CheckResultsReady();
  if (!ready.IsOK())
    return ready;
  const Data& my = *_my;
  const std::size_t k = my.K();
  const int m = my.M();
  if ((nullValues.size() != 1 && nullValues.size() != k) ||
      std::any_of(nullValues.begin(), nullValues.end(),
                  [](double x) { return !std::isfinite(x) || x == kSysmis; }))
    return MCStatus(MPError::kBadNullValues);
  df[0] = static_cast<double>(k);

  std::vector<double> ubar(k * k);
  for (std::size_t i = 0; i < k; ++i)
    for (std::size_t j = 0; j < k; ++j)
      ubar[i * k + j] = my.SumU(i, j) / m;
  // Between-imputation covariance of the estimates, stored by columns for the solves below.
  std::vector<std::vector<double>> bColumns(k, std::vector<double>(k, 0.0));
  for (std::size_t i = 0; i < k; ++i)
    for (std::size_t j = 0; j < k; ++j) {
      double sum = 0.0;
      for (const std::vector<double>& row : my.estimates)
        sum += (row[i] - my.terms[i].qbar) * (row[j] - my.terms[j].qbar);
      bColumns[j][i] = sum / (m - 1);
    }

  const MPCholesky ubarFactor(my.k, ubar);
  if (!ubarFactor.IsPositiveDefinite()) {
    const bool noVariance =
        std::all_of(ubar.begin(), ubar.end(), [](double x) { return x == 0; }) &&
        std::all_of(bColumns.begin(), bColumns.end(), [](const std::vector<double>& column) {
          return std::all_of(column.begin(), column.end(), [](double x) { return x == 0; });
        });
    return MCStatus(noVariance ? MPError::kNoVariance : MPError::kSingularMatrix);
  }

  double trace = 0.0; // tr(Ubar^-1 B) = tr(B Ubar^-1)
  for (std::size_t j = 0; j < k; ++j)
    trace += ubarFactor.Solve(bColumns[j])[j];
  const double r = (1.0 + 1.0 / m) * trace / static_cast<double>(k);

  std::vector<double> difference(k);
  for (std::size_t j = 0; j < k; ++j)
    difference[j] = my.terms[j].qbar - (nullValues.size() == 1 ? nullValues[0] : nullValues[j]);
  const std::vector<double> solved = ubarFactor.Solve(difference);
  double quadratic = 0.0;
  for (std::size_t j = 0; j < k; ++j)
    quadratic += difference[j] * solved[j];
  const double d1 = quadratic / (static_cast<double>(k) * (1.0 + r));

  const double v = WaldDenominatorDf(my.k, m, r, my.completeDf);
  double p = kUndefined;
  if (std::isfinite(d1) && d1 >= 0) {
    p = std::isinf(v) ? cdf(complement(ChiSquared(static_cast<double>(k)), d1 * k))
                      : cdf(complement(FisherF(static_cast<double>(k), v), d1));
  }
  statistic[0] = OrMissing(d1);
  df[1] = OrMissing(v);
  significance[0] = OrMissing(p);
  relativeIncrease[0] = OrMissing(r);
  return MCStatus();
}
