// Shared pieces of the bootstrap statistics classes: the system-missing value that every result
// falls back to, and the standard normal distribution function and its inverse.
#pragma once

#include <limits>

namespace MCBSCommon {

// Marks a number that is missing or could not be computed, in input and in results.
inline constexpr double SystemMissing = std::numeric_limits<double>::lowest();

// Phi(x); NaN for NaN, 0 and 1 at the infinities. Never throws.
double NormalCdf(double x);

// The inverse of Phi: -inf at 0, +inf at 1, NaN outside [0, 1] or for NaN. Never throws.
double NormalQuantile(double p);

// The value itself when it is a finite number other than the system-missing value, otherwise
// the system-missing value: results are never NaN or infinite.
double ResultOrMissing(double value);

}  // namespace MCBSCommon
