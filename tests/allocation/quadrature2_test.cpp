// Gauss rules and integrals over regions when memory ends. Links with the failing allocator.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/support/failing_allocation.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

// Fails the k-th allocation for k = 1, 2, ... until there are no more; `run` is true when the call went through.
template <class Run>
void survive(Run run, int least) {
  be_quiet();
  zent_find_message(MATH_OUT_OF_MEMORY_1);  // the catalogue is read once
  int failures = 0;
  for (long k = 1;; ++k) {
    const long before = failing::live_blocks();
    failing::arm(k);
    const bool through = run();
    const bool struck = failing::struck();
    failing::arm(0);
    EXPECT_EQ(failing::live_blocks(), before) << k;
    EXPECT_TRUE(through || struck) << k;
    if (!struck) break;
    if (through) continue;  // an allocation that could be done without
    EXPECT_EQ(zent_error_code(), MATH_OUT_OF_MEMORY_1);
    EXPECT_EQ(zent_error_type(), 5);
    ++failures;
  }
  EXPECT_GE(failures, least);
}

TEST(QuadratureAllocation, IsCheckedEverywhere) {
  std::vector<double> x(40, 7), w(40);
  survive(
      [&] {
        x[0] = 7;
        zent_d_gauss_quad_rule(40L, x.data(), w.data(), ZENT_GEN_LAGUERRE, 0.5, 0);
        if (x[0] == 7) return false;
        EXPECT_LT(x[0], x[20]);
        EXPECT_LT(x[20], x[39]);
        return true;
      },
      7);
  std::vector<float> fx(40), fw(40);
  survive(
      [&] {
        fx[0] = 7;
        zent_f_gauss_quad_rule(40L, fx.data(), fw.data(), ZENT_FIXED_POINT, 1.0, 0);
        return fx[0] != 7;
      },
      5);
  double a[] = {0, 0, 0}, b[] = {1, 1, 1};
  const auto product = [](long, double* p) { return p[0] * p[1]; };
  survive([&] { return std::isfinite(zent_d_int_fcn_qmc(product, 3L, a, b, 0)); }, 8);
  const auto zero = [](double) { return 0.0; };
  survive([&] { return std::isfinite(zent_d_int_fcn_2d([](double x2, double y) { return x2 * y; }, zero, zero, 0.0, 1.0, 0)); },
          1);
}

}  // namespace
