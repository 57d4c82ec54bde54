
#include <gtest/gtest.h>

#include "platform/mipool/PoolingErrors.h"

namespace {

const long kAllCodes[] = {
    MPError::kTooFewImputations,
    MPError::kNoEstimates,
    MPError::kTermCountMismatch,
    MPError::kSystemMissingInput,
    MPError::kNoVariance,
    MPError::kSingularMatrix,
    MPError::kNonFiniteInput,
    MPError::kNegativeStandardError,
    MPError::kStandardErrorCountMismatch,
    MPError::kCovarianceMismatch,
    MPError::kBadCountField,
    MPError::kNotCombined,
    MPError::kAlreadyCombined,
    MPError::kNoStandardErrors,
    MPError::kBadConfidenceLevel,
    MPError::kBadNullValues,
};

TEST(GetPoolingErrorString, UnknownCodeIsNamedAndSuccessHasNoText) {
  EXPECT_EQ(GetPoolingErrorString(999), "Pooling failed with error code 999.");
  EXPECT_EQ(GetPoolingErrorString(-140024), "Pooling failed with error code -140024.");
  EXPECT_EQ(GetPoolingErrorString(0), "");
}

} // namespace
