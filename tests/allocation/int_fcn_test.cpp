// Every allocation of the integrators fails once: an error with the sizes, or the right answer, and no block lost.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/failing_allocation.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

double decay(double x) {
  return std::exp(-x);
}

template <class Call>
void fail_each(Call call, double exact, long number, long allocations) {
  be_quiet();
  zent_d_int_fcn(nullptr, 0, 1, 0);  // the catalogue's own memory comes with the first error
  for (long known : {MATH_OUT_OF_MEMORY_1, MATH_OUT_OF_MEMORY_2}) zent_find_message(known);
  const long before = failing::live_blocks();
  for (long k = 1; k <= allocations; ++k) {
    failing::arm(k);
    const double value = call();
    EXPECT_TRUE(failing::struck());
    failing::arm(0);
    EXPECT_TRUE(std::isnan(value));
    EXPECT_EQ(zent_error_code(), number) << k;
    EXPECT_EQ(failing::live_blocks(), before);
  }
  EXPECT_NEAR(call(), exact, 1e-7);
  EXPECT_EQ(failing::live_blocks(), before);
}

TEST(IntFcnAllocation, AnErrorAndNothingLost) {
  const double part = 1 - std::exp(-1);
  double p[1] = {0.5};
  fail_each([] { return zent_d_int_fcn(decay, 0, 1, 0); }, part, MATH_OUT_OF_MEMORY_1, 1);
  fail_each([] { return zent_d_int_fcn_sing(decay, 0, 1, 0); }, part, MATH_OUT_OF_MEMORY_1, 1);
  fail_each([&] { return zent_d_int_fcn_sing_pts(decay, 0, 1, 1, p, 0); }, part, MATH_OUT_OF_MEMORY_1, 4);
  fail_each([] { return zent_d_int_fcn_inf(decay, 0, ZENT_BOUND_INF, 0); }, 1, MATH_OUT_OF_MEMORY_1, 1);
  fail_each([] { return zent_d_int_fcn_alg_log(decay, 0, 1, 1, 0, 0, 0); }, part, MATH_OUT_OF_MEMORY_1, 1);
  fail_each([] { return zent_d_int_fcn_trig(decay, 0, 1, ZENT_COS, 0, 0); }, part, MATH_OUT_OF_MEMORY_1, 1);
  fail_each([] { return zent_d_int_fcn_fourier(decay, 0, ZENT_SIN, 2, 0); }, 0.4, MATH_OUT_OF_MEMORY_2, 1);
  fail_each([] { return zent_d_int_fcn_cauchy(decay, 2, 3, 1, ZENT_MAX_SUBINTER, 7, 0); },
            std::exp(-1) * (std::expint(-2.0) - std::expint(-1.0)), MATH_OUT_OF_MEMORY_1, 1);
}

// A limit that no memory can hold.
TEST(IntFcnAllocation, AHugeLimit) {
  be_quiet();
  failing::arm(1);
  EXPECT_TRUE(std::isnan(zent_d_int_fcn_sing(decay, 0, 1, ZENT_MAX_SUBINTER, 2147483647, 0)));
  failing::arm(0);
  EXPECT_EQ(zent_error_code(), MATH_OUT_OF_MEMORY_1);
}

}  // namespace
