// Every allocation of the root finders made to fail in turn: an error, no block lost, storage of the caller as it was.
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/survive.hpp"

namespace {

double cubic(double x) {
  return (x - 1) * (x - 2) * (x - 4);
}
void linear(long n, double* x, double* f) {
  for (long i = 0; i < n; ++i) f[i] = x[i] - static_cast<double>(i);
}
void identity(long n, double*, double* fjac) {
  for (long i = 0; i < n * n; ++i) fjac[i] = i % (n + 1) == 0;
}

TEST(RootsAllocation, IsCheckedEverywhere) {
  std::vector<double> c(31, 1.0), guess = {1, 2, 3};
  std::vector<zent_d_complex> z(31, {1, 1});
  failing::survive(
      [&] {
        long* info = nullptr;
        double* x = zent_d_zeros_fcn(cubic, ZENT_NUM_ROOTS, 3, ZENT_XGUESS, guess.data(), ZENT_INFO_USER_PTR, &info, 0);
        EXPECT_EQ(x == nullptr, info == nullptr);
        zent_free_allocated_memory(info);
        return x;
      },
      3);
  failing::survive([&] { return zent_d_zeros_sys_eqn(linear, 3, ZENT_XGUESS, guess.data(), 0); }, 3);
  failing::survive([&] { return zent_d_zeros_sys_eqn(linear, 3, ZENT_XGUESS, guess.data(), ZENT_JACOBIAN, identity, 0); }, 3);
  failing::survive([&] { return zent_d_zeros_poly(30, c.data(), 0); }, 7);
  failing::survive([&] { return zent_z_zeros_poly(30, z.data(), 0); }, 7);
  failing::survive([&] { return zent_d_zeros_poly(30, c.data(), ZENT_COMPANION, 0); }, 3, 4);
  EXPECT_EQ(guess, (std::vector<double>{1, 2, 3}));
}

}  // namespace
