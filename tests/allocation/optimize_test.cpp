// Every allocation of the solvers of many variables fails once: an error, nothing handed over, no block lost.
#include <gtest/gtest.h>

#include "tests/support/survive.hpp"
#include "zent.h"

namespace {

void residuals(long, long, double* x, double* f) {
  f[0] = 10 * (x[1] - x[0] * x[0]);
  f[1] = 1 - x[0];
  f[2] = x[0] + x[1] - 3;
}
void jacobian(long, long, double* x, double* jac) {
  jac[0] = -20 * x[0];
  jac[1] = 10;
  jac[2] = -1;
  jac[3] = 0;
  jac[4] = jac[5] = 1;
}
double objective(long, double* x) {
  return (x[0] - 1) * (x[0] - 1) + x[1] * x[1];
}

TEST(OptimizeAllocation, AnErrorAndNothingLost) {
  failing::survive([] { return zent_d_min_uncon_multivar(objective, 2, 0); }, 3);
  failing::survive(
      [] {
        double *f = nullptr, *jac = nullptr, *r = nullptr, *cov = nullptr;
        double* const x = zent_d_nonlin_least_squares(residuals, 3, 2, ZENT_JACOBIAN, jacobian, ZENT_FVEC, &f, ZENT_FJAC, &jac,
                                                      ZENT_R_FACTOR, &r, ZENT_COVARIANCE, &cov, 0);
        for (double* p : {f, jac, r, cov}) {
          EXPECT_EQ(p != nullptr, x != nullptr);
          zent_free_allocated_memory(p);
        }
        return x;
      },
      7);
}

}  // namespace
