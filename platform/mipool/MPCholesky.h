// Cholesky factorisation of a small symmetric positive definite matrix (the k x k average
// within-imputation covariance of a model's terms), for the multi-term Wald test of pooling.
#pragma once

#include <vector>

class MPCholesky {
public:
  // Factors the n x n row-major matrix a = L L'. Only the lower triangle is read.
  MPCholesky(int n, const std::vector<double>& a);

  // False when the matrix is not positive definite to working precision (a pivot is not
  // positive, or below 1e-12 times the largest diagonal element); then Solve must not be called.
  bool IsPositiveDefinite() const { return _ok; }

  // Solves A x = b for x (b has n values).
  std::vector<double> Solve(const std::vector<double>& b) const;

private:
  int _n;
  bool _ok = false;
  std::vector<double> _l; // lower triangle of L, row-major n x n
};
