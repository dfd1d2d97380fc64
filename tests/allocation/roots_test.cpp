// Every allocation of the root finders made to fail in turn: an error, no block lost, storage of the caller as it was.
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/failing_allocation.hpp"
#include "tests/support/quiet.hpp"

namespace {

template <class Run>
void survive(Run run, int least) {
  be_quiet();
  zent_find_message(MATH_OUT_OF_MEMORY_1);  // the catalogue is read once
  int failures = 0;
  for (long k = 1;; ++k) {
    const long before = failing::live_blocks();
    failing::arm(k);
    void* result = run();
    const bool struck = failing::struck();
    failing::arm(0);
    if (result == nullptr) {
      EXPECT_EQ(zent_error_code(), MATH_OUT_OF_MEMORY_1);
      EXPECT_EQ(zent_error_type(), 5);
      ++failures;
    }
    zent_free_allocated_memory(result);
    EXPECT_EQ(failing::live_blocks(), before) << k;
    if (!struck) {
      EXPECT_NE(result, nullptr);
      break;
    }
  }
  EXPECT_GE(failures, least);
}

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
  survive(
      [&] {
        long* info = nullptr;
        double* x = zent_d_zeros_fcn(cubic, ZENT_NUM_ROOTS, 3, ZENT_XGUESS, guess.data(), ZENT_INFO_USER_PTR, &info, 0);
        EXPECT_EQ(x == nullptr, info == nullptr);
        zent_free_allocated_memory(info);
        return x;
      },
      3);
  survive([&] { return zent_d_zeros_sys_eqn(linear, 3, ZENT_XGUESS, guess.data(), 0); }, 3);
  survive([&] { return zent_d_zeros_sys_eqn(linear, 3, ZENT_XGUESS, guess.data(), ZENT_JACOBIAN, identity, 0); }, 3);
  survive([&] { return zent_d_zeros_poly(30, c.data(), 0); }, 7);
  survive([&] { return zent_z_zeros_poly(30, z.data(), 0); }, 7);
  survive([&] { return zent_d_zeros_poly(30, c.data(), ZENT_COMPANION, 0); }, 3);
  EXPECT_EQ(guess, (std::vector<double>{1, 2, 3}));
}

}  // namespace
