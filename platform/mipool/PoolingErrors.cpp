#include "platform/mipool/PoolingErrors.h"


namespace {

struct ErrorText {
  long code;
  const char* text;
};

// clang-format off
constexpr ErrorText kErrorTexts[] = {
  {MPError::kTooFewImputations,          "Pooling requires at least two imputations."},
  {MPError::kNoEstimates,                "An imputation supplied no estimates to pool."},
  {MPError::kTermCountMismatch,          "The imputations supplied different numbers of estimates."},
  {MPError::kSystemMissingInput,         "An imputation has a missing value; the results cannot be pooled."},
  {MPError::kNoVariance,                 "There is no variance within or among imputations; the test cannot be computed."},
  {MPError::kSingularMatrix,             "The average within-imputation covariance matrix is singular; the test cannot be computed."},
  {MPError::kNonFiniteInput,             "An imputation supplied an estimate or standard error that is not a finite number."},
  {MPError::kNegativeStandardError,      "An imputation supplied a negative standard error."},
  {MPError::kStandardErrorCountMismatch, "The standard errors of an imputation do not match its estimates."},
  {MPError::kCovarianceMismatch,         "The covariance matrix of an imputation does not match its estimates or is not symmetric."},
  {MPError::kBadCountField,              "The pooling parameters state neither estimates only nor estimates with standard errors."},
  {MPError::kNotCombined,                "Pooled statistics were requested before the imputations were combined."},
  {MPError::kAlreadyCombined,            "An imputation was added after the imputations were combined."},
  {MPError::kNoStandardErrors,           "The statistic requires standard errors, but only estimates were pooled."},
  {MPError::kBadConfidenceLevel,         "The confidence level must lie strictly between 0 and 1."},
  {MPError::kBadNullValues,              "The hypothesized values must be one value or one value per estimate."},
};
// clang-format on

} // namespace

std::string GetPoolingErrorString(long errorCode) {
  if (errorCode == 0)
    return {};
  for (const ErrorText& row : kErrorTexts)
    if (row.code == errorCode)
      return row.text;
  std::string text = kUnknownPoolingErrorPattern;
  text.replace(text.find("^1"), 2, std::to_string(errorCode));
  return text;
}

bool IsKnownPoolingError(long errorCode) {
  for (const ErrorText& row : kErrorTexts)
    if (row.code == errorCode)
      return true;
  return false;
}
