#include "platform/bootstats/MCBSCommon.h"

#include <cmath>

#include <boost/math/distributions/normal.hpp>

namespace {
// Boost reports domain and overflow problems by throwing unless told otherwise; the callers
// guard the ranges themselves and treat NaN and infinities as "not computable".
using NoThrowPolicy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::ignore_error>,
    boost::math::policies::overflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::evaluation_error<boost::math::policies::ignore_error>>;
using StandardNormal = boost::math::normal_distribution<double, NoThrowPolicy>;
}  // namespace

namespace MCBSCommon {

double NormalCdf(double x) {
  if (std::isnan(x)) return std::numeric_limits<double>::quiet_NaN();
  if (std::isinf(x)) return x > 0 ? 1.0 : 0.0;
  return boost::math::cdf(StandardNormal(), x);
}

double NormalQuantile(double p) {
  if (std::isnan(p) || p < 0.0 || p > 1.0) return std::numeric_limits<double>::quiet_NaN();
  if (p == 0.0) return -std::numeric_limits<double>::infinity();
  if (p == 1.0) return std::numeric_limits<double>::infinity();
  return boost::math::quantile(StandardNormal(), p);
}

double ResultOrMissing(double value) {
  return std::isfinite(value) ? value : SystemMissing;
}

}  // namespace MCBSCommon
