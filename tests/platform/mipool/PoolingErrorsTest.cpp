#include <set>
#include <string>

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

TEST(GetPoolingErrorString, EveryCodeHasItsOwnSentence) {
  std::set<long> codes;
  std::set<std::string> texts;
  for (long code : kAllCodes) {
    SCOPED_TRACE(code);
    const std::string text = GetPoolingErrorString(code);
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.back(), '.');
    // A known code's text is its own, not the generic one that repeats the number.
    EXPECT_EQ(text.find(std::to_string(code)), std::string::npos);
    codes.insert(code);
    texts.insert(text);
  }
  EXPECT_EQ(codes.size(), std::size(kAllCodes));
  EXPECT_EQ(texts.size(), std::size(kAllCodes));
}

TEST(GetPoolingErrorString, UnknownCodeIsNamedAndSuccessHasNoText) {
  EXPECT_EQ(GetPoolingErrorString(999), "Pooling failed with error code 999.");
  EXPECT_EQ(GetPoolingErrorString(-140024), "Pooling failed with error code -140024.");
  EXPECT_EQ(GetPoolingErrorString(0), "");
}

} // namespace
