// Bootstrap-t significance of one statistic against a test value. The bootstrap calculator
// gives the estimate, its standard error and the test value, then each replicate value with
// its standard error, and asks for the probability under an alternative hypothesis.
//
// Observed t = (estimate - test value) / standard error; each replicate gives
// t* = (replicate - estimate) / replicate standard error, the bootstrap stand-in for the
// distribution of t under the null hypothesis. Probabilities count the t* values as extreme as
// t: two-tailed, |t*| >= |t| (the symmetric bootstrap-t test); greater, t* >= t; less, t* <= t;
// p = (1 + count) / (1 + B) (Davison and Hinkley 1997, 4.2): the observed t counts as one of
// the sample, so a p is never 0, which B samples could never show.
#pragma once

#include <cstddef>
#include <memory>

class MCBSPercentileTTS {
public:
  // The alternative hypothesis; the bootstrap calculator always asks for TwoTailed.
  enum AltHypType { LessThan = 0, GreaterThan = 1, TwoTailed = 2 };

  MCBSPercentileTTS(double estimate, double estimateStdError, double testValue);
  MCBSPercentileTTS(const MCBSPercentileTTS& other);
  MCBSPercentileTTS& operator=(const MCBSPercentileTTS& other);
  MCBSPercentileTTS(MCBSPercentileTTS&& other) noexcept;
  MCBSPercentileTTS& operator=(MCBSPercentileTTS&& other) noexcept;
  ~MCBSPercentileTTS();

  // Adds one replicate value with its standard error. A pair whose t* is not a finite number
  // (a system-missing, NaN or infinite value, or a standard error that is not positive) is
  // left out.
  void AddBootstrapStats(double value, double stdError);

  // The probability under the alternative; system-missing without usable replicates, or when
  // the estimate, its standard error (which must be positive) or the test value is not a finite
  // number. Throws OMSException for an alternative that is not one of the three above.
  double GetProbability(AltHypType alternative) const;

  // Number of replicates that gave a t* value.
  std::size_t GetCount() const;

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
