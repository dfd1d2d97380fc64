// Every allocation of the least squares and singular value functions fails once: an error or the right answer, no block lost, and
// the matrix as it was.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/support/failing_allocation.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

constexpr long m = 70, n = 52;

std::vector<double> matrix() {
  std::vector<double> a(m * n);
  for (long i = 0; i < m; ++i)
    for (long j = 0; j < n; ++j) a[i * n + j] = std::sin(static_cast<double>(3 * i * j + i + 7 * j));
  return a;
}

// Runs the call with the first, second, ... allocation failing until none is left to fail.
template <class Call>
void fail_each(Call call, const std::vector<long>& numbers) {
  be_quiet();
  zent_d_lin_svd_gen(0, 0, nullptr, 0);  // the catalogue's own memory comes with the first error
  for (long number : numbers) zent_find_message(number);
  const long before = failing::live_blocks();
  long failures = 0;
  for (long k = 1; k < 100; ++k) {
    failing::arm(k);
    const bool delivered = call();
    const bool struck = failing::struck();
    failing::arm(0);
    EXPECT_EQ(failing::live_blocks(), before) << k;
    if (!struck) {
      EXPECT_TRUE(delivered);
      EXPECT_GT(failures, 4);
      return;
    }
    if (delivered) continue;  // done in another way
    ++failures;
    EXPECT_TRUE(std::count(numbers.begin(), numbers.end(), zent_error_code())) << zent_error_code();
  }
  FAIL() << "never came to an end";
}

TEST(LeastSquaresAllocation, AnErrorAndNothingLost) {
  std::vector<double> a = matrix(), b(m, 1), reference(n);
  const std::vector<double> kept = a;
  zent_d_lin_least_squares_gen(m, n, a.data(), b.data(), ZENT_RETURN_USER, reference.data(), 0);
  fail_each(
      [&] {
        double *qraux = nullptr, *qr = nullptr, *q = nullptr, *residual = nullptr;
        double* const x = zent_d_lin_least_squares_gen(m, n, a.data(), b.data(), ZENT_FACTOR, &qraux, &qr, ZENT_Q, &q,
                                                       ZENT_RESIDUAL, &residual, 0);
        EXPECT_EQ(a, kept);
        const bool delivered = x != nullptr;
        for (double* p : {qraux, qr, q, residual}) EXPECT_EQ(p != nullptr, delivered);
        for (long k = 0; delivered && k < n; ++k) EXPECT_NEAR(x[k], reference[k], 1e-9);
        for (double* p : {x, qraux, qr, q, residual}) zent_free_allocated_memory(p);
        return delivered;
      },
      {MATH_OUT_OF_MEMORY, MATH_OUT_OF_MEMORY_FOR_Q});
}

TEST(SvdAllocation, AnErrorAndNothingLost) {
  std::vector<double> a = matrix();
  const std::vector<double> kept = a;
  fail_each(
      [&] {
        double *u = nullptr, *v = nullptr, *inverse = nullptr;
        double* const s = zent_d_lin_svd_gen(m, n, a.data(), ZENT_U, &u, ZENT_V, &v, ZENT_INVERSE, &inverse, 0);
        EXPECT_EQ(a, kept);
        for (double* p : {u, v, inverse}) EXPECT_EQ(p != nullptr, s != nullptr);
        for (double* p : {s, u, v, inverse}) zent_free_allocated_memory(p);
        return s != nullptr;
      },
      {MATH_OUT_OF_MEMORY_2, MATH_NO_SPACE_FOR_INVERSE});
}

}  // namespace
