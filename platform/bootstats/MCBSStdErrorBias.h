// Bootstrap bias and standard error of one statistic, accumulated replicate by replicate.
// The bootstrap calculator feeds it every replicate value of a cell and reads both results.
#pragma once

#include <cstddef>
#include <memory>

class MCBSStdErrorBias {
public:
  MCBSStdErrorBias();
  // Resumes an accumulation that Step carried this far elsewhere.
  MCBSStdErrorBias(std::size_t count, double mean, double sumSquares);
  MCBSStdErrorBias(const MCBSStdErrorBias& other);
  MCBSStdErrorBias& operator=(const MCBSStdErrorBias& other);
  MCBSStdErrorBias(MCBSStdErrorBias&& other) noexcept;
  MCBSStdErrorBias& operator=(MCBSStdErrorBias&& other) noexcept;
  ~MCBSStdErrorBias();

  // Adds one replicate value. The system-missing value marks an absent replicate and is skipped;
  // a NaN or an infinity is counted and makes both results system-missing.
  void AddBootstrapStat(double value);
  // The same for each of count values in turn, in one call.
  void AddBootstrapStats(const double* values, std::size_t count);

  // Mean of the replicates minus the estimate; system-missing without replicates or when the
  // estimate is system-missing.
  double GetBias(double estimate) const;

  // Sample standard deviation of the replicates (n - 1 denominator); system-missing with fewer
  // than two replicates.
  double GetStandardError() const;

  // Number of replicates counted so far.
  std::size_t GetCount() const;

  // Mean of the replicates; system-missing without replicates.
  double GetMean() const;

  // One step of the accumulation (Welford's), for value (not system-missing): callers that
  // accumulate several statistics side by side use it to get the very same results.
  static void Step(std::size_t& count, double& mean, double& sumSquares, double value) {
    ++count;
    const double delta = value - mean;
    mean += delta / static_cast<double>(count);
    sumSquares += delta * (value - mean);
  }

private:
  struct Data;
  std::unique_ptr<Data> _my;
};
