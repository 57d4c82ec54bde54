// Error codes of the pooling computation and their texts. Callers that cannot pool a value show
// GetPoolingErrorString(code) as a footnote on the pooled cell.
#pragma once

#include <string>

namespace MPError {

inline constexpr long kTooFewImputations          = 140021;
inline constexpr long kNoEstimates                = 140022;
inline constexpr long kTermCountMismatch          = 140023;
inline constexpr long kSystemMissingInput         = 140024;
inline constexpr long kNoVariance                 = 140025;
inline constexpr long kSingularMatrix             = 140026;
inline constexpr long kNonFiniteInput             = 140027;
inline constexpr long kNegativeStandardError      = 140028;
inline constexpr long kStandardErrorCountMismatch = 140029;
inline constexpr long kCovarianceMismatch         = 140030;
inline constexpr long kBadCountField              = 140031;
inline constexpr long kNotCombined                = 140032;
inline constexpr long kAlreadyCombined            = 140033;
inline constexpr long kNoStandardErrors           = 140034;
inline constexpr long kBadConfidenceLevel         = 140035;
inline constexpr long kBadNullValues              = 140036;

} // namespace MPError

// The text of a code unknown to GetPoolingErrorString, as a pattern whose ^1 is the code: the
// number stays out of the translation key.
inline constexpr const char* kUnknownPoolingErrorPattern = "Pooling failed with error code ^1.";

// The user-facing text of an error code (UTF-8, one sentence). Unknown codes get
// kUnknownPoolingErrorPattern with the code put in; 0 gives an empty text.
std::string GetPoolingErrorString(long errorCode);
// True for the codes that have a text of their own.
bool IsKnownPoolingError(long errorCode);
