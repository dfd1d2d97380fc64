// Gauss rules and integrals over regions when memory ends. Links with the failing allocator.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/support/survive.hpp"
#include "zent.h"

namespace {

TEST(QuadratureAllocation, IsCheckedEverywhere) {
  std::vector<double> x(40, 7), w(40);
  failing::survive(
      [&] {
        x[0] = 7;
        zent_d_gauss_quad_rule(40L, x.data(), w.data(), ZENT_GEN_LAGUERRE, 0.5, 0);
        if (x[0] == 7) return false;
        EXPECT_LT(x[0], x[20]);
        EXPECT_LT(x[20], x[39]);
        return true;
      },
      7, 1);
  std::vector<float> fx(40), fw(40);
  failing::survive(
      [&] {
        fx[0] = 7;
        zent_f_gauss_quad_rule(40L, fx.data(), fw.data(), ZENT_FIXED_POINT, 1.0, 0);
        return fx[0] != 7;
      },
      5, 1);
  double a[] = {0, 0, 0}, b[] = {1, 1, 1};
  const auto product = [](long, double* p) { return p[0] * p[1]; };
  failing::survive([&] { return std::isfinite(zent_d_int_fcn_qmc(product, 3L, a, b, 0)); }, 8);
  const auto zero = [](double) { return 0.0; };
  failing::survive(
      [&] { return std::isfinite(zent_d_int_fcn_2d([](double x2, double y) { return x2 * y; }, zero, zero, 0.0, 1.0, 0)); }, 1);
}

}  // namespace
