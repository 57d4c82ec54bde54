#include "platform/mipool/MPCholesky.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

MPCholesky::MPCholesky(int n, const std::vector<double>& a) : _n(n), _l(a.size(), 0.0) {
  if (n <= 0 || a.size() != static_cast<std::size_t>(n) * static_cast<std::size_t>(n))
    return;
  auto at = [n](int i, int j) { return static_cast<std::size_t>(i) * n + j; };
  double largestDiagonal = 0.0;
  for (int i = 0; i < n; ++i)
    largestDiagonal = std::max(largestDiagonal, std::fabs(a[at(i, i)]));
  // A pivot this small relative to the matrix means the terms are (nearly) collinear; the
  // inverse would be noise, so such a matrix counts as singular.
  const double tiny = 1e-12 * largestDiagonal;
  for (int j = 0; j < n; ++j) {
    double pivot = a[at(j, j)];
    for (int p = 0; p < j; ++p)
      pivot -= _l[at(j, p)] * _l[at(j, p)];
    if (!(pivot > tiny))
      return;
    const double ljj = std::sqrt(pivot);
    _l[at(j, j)] = ljj;
    for (int i = j + 1; i < n; ++i) {
      double sum = a[at(i, j)];
      for (int p = 0; p < j; ++p)
        sum -= _l[at(i, p)] * _l[at(j, p)];
      _l[at(i, j)] = sum / ljj;
    }
  }
  _ok = true;
}

std::vector<double> MPCholesky::Solve(const std::vector<double>& b) const {
  const int n = _n;
  auto at = [n](int i, int j) { return static_cast<std::size_t>(i) * n + j; };
  std::vector<double> x(b);
  for (int i = 0; i < n; ++i) { // L y = b
    for (int p = 0; p < i; ++p)
      x[i] -= _l[at(i, p)] * x[p];
    x[i] /= _l[at(i, i)];
  }
  for (int i = n - 1; i >= 0; --i) { // L' x = y
    for (int p = i + 1; p < n; ++p)
      x[i] -= _l[at(p, i)] * x[p];
    x[i] /= _l[at(i, i)];
  }
  return x;
}
