#include "platform/bootstats/MCBSPercentileTTS.h"

#include <cmath>
#include <vector>

#include "platform/bootstats/MCBSCommon.h"
#include "platform/errors/OMSException.h"

namespace {
bool IsUsable(double value) { return std::isfinite(value) && value != MCBSCommon::SystemMissing; }
}  // namespace

struct MCBSPercentileTTS::Data {
  double _estimate = 0.0;
  double _estimateStdError = 0.0;
  double _testValue = 0.0;
  std::vector<double> _tStar;
};

MCBSPercentileTTS::MCBSPercentileTTS(double estimate, double estimateStdError, double testValue)
    : _my(std::make_unique<Data>()) {
  _my->_estimate = estimate;
  _my->_estimateStdError = estimateStdError;
  _my->_testValue = testValue;
}

MCBSPercentileTTS::MCBSPercentileTTS(const MCBSPercentileTTS& other)
    : _my(std::make_unique<Data>(*other._my)) {}

MCBSPercentileTTS& MCBSPercentileTTS::operator=(const MCBSPercentileTTS& other) {
  if (this != &other) *_my = *other._my;
  return *this;
}

MCBSPercentileTTS::MCBSPercentileTTS(MCBSPercentileTTS&& other) noexcept = default;
MCBSPercentileTTS& MCBSPercentileTTS::operator=(MCBSPercentileTTS&& other) noexcept = default;
MCBSPercentileTTS::~MCBSPercentileTTS() = default;

void MCBSPercentileTTS::AddBootstrapStats(double value, double stdError) {
  if (!IsUsable(value) || !IsUsable(stdError) || !(stdError > 0.0)) return;
  const double tStar = (value - _my->_estimate) / stdError;
  if (std::isfinite(tStar)) _my->_tStar.push_back(tStar);
}

double MCBSPercentileTTS::GetProbability(AltHypType alternative) const {
  if (alternative != LessThan && alternative != GreaterThan && alternative != TwoTailed) {
    throw OMSException("MCBSPercentileTTS::GetProbability -- alternative invalid",
                       static_cast<double>(alternative));
  }
  const Data& my = *_my;
  if (my._tStar.empty() || !IsUsable(my._estimate) || !IsUsable(my._testValue) ||
      !IsUsable(my._estimateStdError) || !(my._estimateStdError > 0.0)) {
    return MCBSCommon::SystemMissing;
  }
  const double observed = (my._estimate - my._testValue) / my._estimateStdError;
  if (!std::isfinite(observed)) return MCBSCommon::SystemMissing;

  std::size_t extreme = 0;
  for (double tStar : my._tStar) {
    switch (alternative) {
      case LessThan: extreme += tStar <= observed; break;
      case GreaterThan: extreme += tStar >= observed; break;
      case TwoTailed: extreme += std::fabs(tStar) >= std::fabs(observed); break;
    }
  }
  return static_cast<double>(1 + extreme) / static_cast<double>(1 + my._tStar.size());
}

std::size_t MCBSPercentileTTS::GetCount() const { return _my->_tStar.size(); }
