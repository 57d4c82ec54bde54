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

TEST(MPCholesky, SolvesASymmetricPositiveDefiniteSystem) {
  const std::vector<double> a = {4, 12, -16, 12, 37, -43, -16, -43, 98};
  const MPCholesky factor(3, a);
  ASSERT_TRUE(factor.IsPositiveDefinite());
  // L = [2 0 0; 6 1 0; -8 5 3]: x = (1, -2, 0.5) gives b = A x.
  const std::vector<double> x = {1.0, -2.0, 0.5};
  const std::vector<double> solved = factor.Solve(Multiply(a, x));
  for (std::size_t i = 0; i < 3; ++i)
    EXPECT_NEAR(solved[i], x[i], 1e-12);
}

TEST(MPCholesky, ReadsOnlyTheLowerTriangle) {
  const MPCholesky factor(2, {2.0, 999.0, 1.0, 2.0});
  ASSERT_TRUE(factor.IsPositiveDefinite());
  const std::vector<double> solved = factor.Solve({3.0, 3.0}); // [2 1; 1 2] x = (3, 3)
  EXPECT_NEAR(solved[0], 1.0, 1e-15);
  EXPECT_NEAR(solved[1], 1.0, 1e-15);
}

TEST(MPCholesky, RejectsSingularAndIndefiniteMatrices) {
  EXPECT_FALSE(MPCholesky(2, {1.0, 2.0, 2.0, 4.0}).IsPositiveDefinite());       // rank 1
  EXPECT_FALSE(MPCholesky(2, {1.0, 1.0, 1.0, 1.0 + 1e-14}).IsPositiveDefinite()); // nearly
  EXPECT_FALSE(MPCholesky(2, {1.0, 0.0, 0.0, -1.0}).IsPositiveDefinite());
  EXPECT_FALSE(MPCholesky(1, {0.0}).IsPositiveDefinite());
  EXPECT_FALSE(MPCholesky(2, {1.0, 0.0, 0.0}).IsPositiveDefinite()); // wrong size
  EXPECT_FALSE(MPCholesky(0, {}).IsPositiveDefinite());
}

TEST(MPCholesky, AcceptsWidelyScaledButRegularMatrices) {
  // Variances of terms on very different scales are common (an intercept and a slope).
  const MPCholesky factor(2, {1e6, 0.0, 0.0, 1e-4});
  ASSERT_TRUE(factor.IsPositiveDefinite());
  const std::vector<double> solved = factor.Solve({1e6, 1e-4});
  EXPECT_NEAR(solved[0], 1.0, 1e-12);
  EXPECT_NEAR(solved[1], 1.0, 1e-12);
}

} // namespace
