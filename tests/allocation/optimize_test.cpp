// Every allocation of the solvers of many variables fails once: an error, nothing handed over, no block lost.
#include <gtest/gtest.h>

#include "tests/support/failing_allocation.hpp"
#include "tests/support/quiet.hpp"
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

// Until none is left to fail; the number that did.
template <class Call>
long fail_each(Call call) {
  be_quiet();
  zent_d_min_uncon_multivar(nullptr, 0, 0);  // the catalogue's own memory comes with the first error
  zent_find_message(MATH_OUT_OF_MEMORY_1);
  zent_find_message(MATH_OUT_OF_MEMORY_2);
  const long before = failing::live_blocks();
  for (long k = 1; k < 100; ++k) {
    failing::arm(k);
    const bool delivered = call();
    const bool struck = failing::struck();
    failing::arm(0);
    EXPECT_EQ(failing::live_blocks(), before) << k;
    EXPECT_NE(delivered, struck) << k;
    if (!struck) return k - 1;
    EXPECT_TRUE(zent_error_code() == MATH_OUT_OF_MEMORY_1 || zent_error_code() == MATH_OUT_OF_MEMORY_2) << zent_error_code();
  }
  return -1;
}

TEST(OptimizeAllocation, AnErrorAndNothingLost) {
  EXPECT_GE(fail_each([] {
              double* const x = zent_d_min_uncon_multivar(objective, 2, 0);
              const bool delivered = x != nullptr;
              zent_free_allocated_memory(x);
              return delivered;
            }),
            3);
  EXPECT_GE(fail_each([] {
              double *f = nullptr, *jac = nullptr, *r = nullptr, *cov = nullptr;
              double* const x = zent_d_nonlin_least_squares(residuals, 3, 2, ZENT_JACOBIAN, jacobian, ZENT_FVEC, &f, ZENT_FJAC,
                                                            &jac, ZENT_R_FACTOR, &r, ZENT_COVARIANCE, &cov, 0);
              const bool delivered = x != nullptr;
              for (double* p : {f, jac, r, cov}) EXPECT_EQ(p != nullptr, delivered);
              for (double* p : {x, f, jac, r, cov}) zent_free_allocated_memory(p);
              return delivered;
            }),
            7);
}

}  // namespace
