// The data that travel between a caller and a pooling computation (MPCompAlgorithm): one
// imputation's estimates and standard errors going in, the pooled results coming out of Combine.
#pragma once

#include <vector>

class MPParamContainer {
public:
  // Count field values: what an imputation supplies.
  static constexpr int kEstimatesOnly = 1;
  static constexpr int kWithStandardErrors = 2;

  // --- Input of one imputation (the caller empties and refills them before each AddImputation).
  // One estimate per term.
  std::vector<double>& Estimates() { return _estimates; }
  const std::vector<double>& Estimates() const { return _estimates; }
  // One standard error per term; read only when the count field is 2.
  std::vector<double>& StandardErrors() { return _standardErrors; }
  const std::vector<double>& StandardErrors() const { return _standardErrors; }
  // Optional: the imputation's full covariance matrix of the estimates, k x k row-major. Read only
  // when the count field is 2; when not empty it replaces the standard errors (the multi-term
  // Wald test then uses the covariances between terms).
  std::vector<double>& Covariances() { return _covariances; }
  const std::vector<double>& Covariances() const { return _covariances; }

  // 2 when standard errors (or covariances) are supplied, 1 when only estimates are.
  int Count() const { return _count; }
  void SetCount(int count) { _count = count; }

  // Complete-data degrees of freedom (for a regression, the residual df). Unknown by default;
  // any value that is not finite and positive (0, infinity, system-missing) means unknown.
  double CompleteDataDf() const { return _completeDataDf; }
  void SetCompleteDataDf(double df) { _completeDataDf = df; }

  // --- Results of Combine, one value per term. Combine also replaces Estimates() by the pooled
  // estimates. The three variance lists and the pooled standard errors stay empty when only
  // estimates were pooled.
  std::vector<double>& BetweenVariances() { return _betweenVariances; }
  const std::vector<double>& BetweenVariances() const { return _betweenVariances; }
  std::vector<double>& WithinVariances() { return _withinVariances; }
  const std::vector<double>& WithinVariances() const { return _withinVariances; }
  std::vector<double>& TotalVariances() { return _totalVariances; }
  const std::vector<double>& TotalVariances() const { return _totalVariances; }
  std::vector<double>& PooledStandardErrors() { return _pooledStandardErrors; }
  const std::vector<double>& PooledStandardErrors() const { return _pooledStandardErrors; }

private:
  std::vector<double> _estimates;
  std::vector<double> _standardErrors;
  std::vector<double> _covariances;
  int _count = kWithStandardErrors;
  double _completeDataDf = 0.0;
  std::vector<double> _betweenVariances;
  std::vector<double> _withinVariances;
  std::vector<double> _totalVariances;
  std::vector<double> _pooledStandardErrors;
};
