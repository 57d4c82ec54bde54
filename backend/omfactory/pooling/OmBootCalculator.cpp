#include "backend/omfactory/pooling/OmBootCalculator.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>

#include "platform/bootstats/MCBSBCaCI.h"
#include "platform/bootstats/MCBSCommon.h"
#include "platform/bootstats/MCBSPercentileCI.h"
#include "platform/bootstats/MCBSPercentileTTS.h"
#include "platform/bootstats/MCBSStdErrorBias.h"
#include "platform/errors/OMSException.h"

namespace {

constexpr double kSysMiss = MCBSCommon::SystemMissing;

// Not-a-number counts as present: only the system-missing value marks an absent value.
bool AllPresent(const std::vector<double>& values) {
  return std::none_of(values.begin(), values.end(), [](double v) { return v == kSysMiss; });
}

}  // namespace

struct OmBootCalculator::Data {
  double _estimate = kSysMiss;
  double _estimateStdError = kSysMiss;
  const std::vector<double>* _replicates = nullptr;
  const std::vector<double>* _replicateStdErrors = nullptr;
  const std::vector<double>* _jackknifeValues = nullptr;
  const JackknifeList* _jackknifeList = nullptr;
  std::uint32_t _jackknifeStart = 0;
  std::uint32_t _jackknifeEnd = 0;
  double _bias = kSysMiss;
  double _standardError = kSysMiss;
  bool _replicatesPresent = true;
  bool _stdErrorsPresent = true;
  bool _jackknifePresent = true;
  // Made at the first question that needs it: the interval, then perhaps its coverage.
  mutable std::optional<MCBSBCaCI> _bca;

  // The BCa interval of the collected values.
  MCBSBCaCI& BCa() const;
};

OmBootCalculator::OmBootCalculator(const std::vector<double>& replicates,
                                   const std::vector<double>& replicateStdErrors,
                                   const std::vector<double>& jackknifeValues,
                                   const JackknifeList& jackknifeList,
                                   std::uint32_t jackknifeStart, std::uint32_t jackknifeEnd,
                                   double estimate, double estimateStdError,
                                   const MCBSStdErrorBias* accumulated)
    : _my(std::make_unique<Data>()) {
  static const char* const kMismatch = "OmBootCalculator::OmBootCalculator -- size mismatch";
  if (!replicateStdErrors.empty() && replicateStdErrors.size() != replicates.size()) {
    throw OMSException(kMismatch, double(replicateStdErrors.size()), double(replicates.size()));
  }
  if (jackknifeStart > jackknifeList.size()) {
    throw OMSException(kMismatch, double(jackknifeStart), double(jackknifeList.size()));
  }
  if (jackknifeEnd > jackknifeList.size()) {
    throw OMSException(kMismatch, double(jackknifeEnd), double(jackknifeList.size()));
  }
  Data& my = *_my;
  my._estimate = estimate;
  my._estimateStdError = estimateStdError;
  my._replicates = &replicates;
  my._replicateStdErrors = &replicateStdErrors;
  my._jackknifeValues = &jackknifeValues;
  my._jackknifeList = &jackknifeList;
  my._jackknifeStart = jackknifeStart;
  my._jackknifeEnd = jackknifeEnd;
  my._replicatesPresent = AllPresent(replicates);
  my._stdErrorsPresent = AllPresent(replicateStdErrors);
  my._jackknifePresent = AllPresent(jackknifeValues);

  if (my._replicatesPresent && !replicates.empty()) {
    MCBSStdErrorBias own;
    if (accumulated == nullptr) {
      own.AddBootstrapStats(replicates.data(), replicates.size());
      accumulated = &own;
    }
    my._bias = accumulated->GetBias(estimate);
    my._standardError = accumulated->GetStandardError();
  }
}

OmBootCalculator::OmBootCalculator(const OmBootCalculator& other)
    : _my(std::make_unique<Data>(*other._my)) {}

OmBootCalculator& OmBootCalculator::operator=(const OmBootCalculator& other) {
  if (this != &other) _my = std::make_unique<Data>(*other._my);
  return *this;
}

OmBootCalculator::~OmBootCalculator() = default;

double OmBootCalculator::Bias() const { return _my->_bias; }

double OmBootCalculator::StandardError() const { return _my->_standardError; }

std::pair<double, double> OmBootCalculator::ConfidenceInterval(double levelPct) const {
  const Data& my = *_my;
  const std::vector<double>& replicates = *my._replicates;
  if (!my._replicatesPresent || !my._jackknifePresent || replicates.empty()) {
    return {kSysMiss, kSysMiss};
  }
  const std::vector<double>& jackknife = *my._jackknifeValues;
  if (jackknife.empty()) {
    MCBSPercentileCI percentile;
    percentile.SetBootstrapStats(replicates);
    return percentile.GetCI(levelPct / 100.0);
  }

  return my.BCa().GetCI(levelPct / 100.0);
}

unsigned OmBootCalculator::SamplesForCoverage(double levelPct) const {
  const Data& my = *_my;
  if (my._jackknifeValues->empty() || !my._replicatesPresent || !my._jackknifePresent) return 0;
  const auto [low, high] = my.BCa().GetAdjustedLevels(levelPct / 100.0);
  if (low == kSysMiss || high == kSysMiss) return 0;
  // Both ranks (B + 1) alpha' must lie in 1 ... B: B >= 1 / alpha' - 1 for the smaller tail.
  const double tail = std::min(low, 1.0 - high);
  if (!(tail > 0.0)) return 0;
  const double needed = std::ceil(1.0 / tail - 1.0 - 1e-9);
  return needed < 4e9 ? unsigned(needed) : 0;
}

MCBSBCaCI& OmBootCalculator::Data::BCa() const {
  if (_bca) return *_bca;
  const JackknifeList& entries = *_jackknifeList;
  const std::vector<double>& jackknife = *_jackknifeValues;
  std::uint32_t largestGroup = 0;
  for (std::uint32_t i = _jackknifeStart; i < _jackknifeEnd; ++i) {
    largestGroup = std::max(largestGroup, entries[i].group);
  }
  std::vector<double> groupWeights(std::size_t(largestGroup) + 1, 0.0);
  for (std::uint32_t i = _jackknifeStart; i < _jackknifeEnd; ++i) {
    groupWeights[entries[i].group] += entries[i].value;
  }
  MCBSBCaCI& bca = _bca.emplace(_estimate);
  bca.SetSumWeights(groupWeights);
  bca.SetBootstrapStats(*_replicates);
  for (std::uint32_t i = _jackknifeStart; i < _jackknifeEnd; ++i) {
    // Jackknife value k belongs to entry start + k; an entry without a value is given as
    // missing, which the interval leaves out.
    const std::size_t k = i - _jackknifeStart;
    const double value = k < jackknife.size() ? jackknife[k] : kSysMiss;
    bca.AddJackknifeStat(value, entries[i].value, entries[i].group);
  }
  return bca;
}

double OmBootCalculator::Significance(int alternative, double testValue) const {
  if (alternative < MCBSPercentileTTS::LessThan || alternative > MCBSPercentileTTS::TwoTailed) {
    throw OMSException("OmBootCalculator::Significance -- alternative 0, 1 or 2", alternative);
  }
  const Data& my = *_my;
  const std::vector<double>& stdErrors = *my._replicateStdErrors;
  if (!my._replicatesPresent || !my._stdErrorsPresent || stdErrors.empty()) return -1.0;
  MCBSPercentileTTS test(my._estimate, my._estimateStdError, testValue);
  const std::vector<double>& replicates = *my._replicates;
  for (std::size_t i = 0; i < stdErrors.size() && i < replicates.size(); ++i) {
    test.AddBootstrapStats(replicates[i], stdErrors[i]);
  }
  return test.GetProbability(static_cast<MCBSPercentileTTS::AltHypType>(alternative));
}
