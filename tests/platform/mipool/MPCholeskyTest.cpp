#include <vector>

#include <gtest/gtest.h>

#include "platform/mipool/MPCholesky.h"

namespace {

TEST(MPCholesky, RejectsSingularAndIndefiniteMatrices) {
  EXPECT_FALSE(MPCholesky(2, {1.0, 2.0, 2.0, 4.0}).IsPositiveDefinite());       // rank 1
  EXPECT_FALSE(MPCholesky(2, {1.0, 1.0, 1.0, 1.0 + 1e-14}).IsPositiveDefinite()); // nearly
  EXPECT_FALSE(MPCholesky(2, {1.0, 0.0, 0.0, -1.0}).IsPositiveDefinite());
  EXPECT_FALSE(MPCholesky(1, {0.0}).IsPositiveDefinite());
  EXPECT_FALSE(MPCholesky(2, {1.0, 0.0, 0.0}).IsPositiveDefinite()); // wrong size
  EXPECT_FALSE(MPCholesky(0, {}).IsPositiveDefinite());
}

} // namespace
