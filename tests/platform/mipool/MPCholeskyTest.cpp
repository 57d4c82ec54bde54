#include <vector>

#include <gtest/gtest.h>

#include "platform/mipool/MPCholesky.h"

namespace {

std::vector<double> Multiply(const std::vector<double>& a, const std::vector<double>& x) {
  const std::size_t n = x.size();
  std::vector<double> y(n, 0.0);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < n; ++j)
      y[i] += a[i * n + j] * x[j];
  return y;
}

TEST(MPCholesky, SolvesSymmetricPositiveDefiniteSystems) {
  const struct {
    const char* what;
    std::vector<double> a; // only the lower triangle is read
    std::vector<double> x;
    double tolerance;
  } cases[] = {
      // L = [2 0 0; 6 1 0; -8 5 3].
      {"3 x 3", {4, 12, -16, 12, 37, -43, -16, -43, 98}, {1.0, -2.0, 0.5}, 1e-12},
      {"upper triangle ignored", {2.0, 999.0, 1.0, 2.0}, {1.0, 1.0}, 1e-15},
      // Variances of terms on very different scales are common (an intercept and a slope).
      {"widely scaled", {1e6, 0.0, 0.0, 1e-4}, {1.0, 1.0}, 1e-12},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const std::size_t n = c.x.size();
    std::vector<double> symmetric = c.a;
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = i + 1; j < n; ++j) symmetric[i * n + j] = symmetric[j * n + i];
    const MPCholesky factor(n, c.a);
    ASSERT_TRUE(factor.IsPositiveDefinite());
    const std::vector<double> solved = factor.Solve(Multiply(symmetric, c.x));
    ASSERT_EQ(solved.size(), n);
    for (std::size_t i = 0; i < n; ++i) EXPECT_NEAR(solved[i], c.x[i], c.tolerance);
  }
}

TEST(MPCholesky, RejectsSingularAndIndefiniteMatrices) {
  EXPECT_FALSE(MPCholesky(2, {1.0, 2.0, 2.0, 4.0}).IsPositiveDefinite());       // rank 1
  EXPECT_FALSE(MPCholesky(2, {1.0, 1.0, 1.0, 1.0 + 1e-14}).IsPositiveDefinite()); // nearly
  EXPECT_FALSE(MPCholesky(2, {1.0, 0.0, 0.0, -1.0}).IsPositiveDefinite());
  EXPECT_FALSE(MPCholesky(1, {0.0}).IsPositiveDefinite());
  EXPECT_FALSE(MPCholesky(2, {1.0, 0.0, 0.0}).IsPositiveDefinite()); // wrong size
  EXPECT_FALSE(MPCholesky(0, {}).IsPositiveDefinite());
}

} // namespace
