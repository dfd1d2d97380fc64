// Symmetric definite pencils, and the tridiagonal solvers behind all symmetric paths.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "math/eigen/sym_paths.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

template <class... Arguments>
double* solve(long n, double* a, double* b, Arguments... options) {
  return zent_d_eig_symgen(n, a, b, options..., 0);
}
template <class... Arguments>
float* solve(long n, float* a, float* b, Arguments... options) {
  return zent_f_eig_symgen(n, a, b, options..., 0);
}

template <class Real>
struct Pencil {
  long n;
  std::vector<Real> a, b;
};

// A random, B of condition about 10, both times `scale`.
template <class Real>
Pencil<Real> make(long n, double scale) {
  std::mt19937 generator(static_cast<unsigned>(n));
  std::normal_distribution<double> normal;
  std::vector<double> root(n * n);
  for (double& x : root) x = normal(generator) / std::sqrt(static_cast<double>(n));
  Pencil<Real> p = {n, std::vector<Real>(n * n), std::vector<Real>(n * n)};
  for (long i = 0; i < n; ++i) {
    for (long j = 0; j <= i; ++j) {
      double sum = i == j ? 0.5 : 0;
      for (long k = 0; k < n; ++k) sum += root[i * n + k] * root[j * n + k];
      p.a[i * n + j] = p.a[j * n + i] = static_cast<Real>(scale * normal(generator));
      p.b[i * n + j] = p.b[j * n + i] = static_cast<Real>(scale * sum);
    }
  }
  return p;
}

template <class Real>
void check(const Pencil<Real>& p, const Real* w, const Real* x, long ldx, double scale) {
  const double eps = std::numeric_limits<Real>::epsilon(), bound = 40 * eps * static_cast<double>(p.n + 8);
  for (long j = 0; j < p.n; ++j) {
    double norm = 0, top = 0, worst = 0;
    for (long i = 0; i < p.n; ++i) {
      double sum = 0;
      for (long k = 0; k < p.n; ++k) {
        sum += (static_cast<double>(p.a[i * p.n + k]) - static_cast<double>(w[j]) * static_cast<double>(p.b[i * p.n + k])) /
               scale * static_cast<double>(x[k * ldx + j]);
      }
      worst = std::max(worst, std::abs(sum));
      const double component = static_cast<double>(x[i * ldx + j]);
      norm += component * component;
      if (std::abs(component) > std::abs(top)) top = component;
    }
    EXPECT_LE(worst, bound * (1 + std::abs(static_cast<double>(w[j]))));
    EXPECT_NEAR(norm, 1, bound);
    EXPECT_GT(top, 0);
    if (j > 0) {
      EXPECT_GE(std::abs(w[j - 1]), std::abs(w[j]));
    }
  }
}

template <class Real>
class SymmetricPencil : public ::testing::Test {};
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(SymmetricPencil, Reals);

TYPED_TEST(SymmetricPencil, SolvesTheEquation) {
  using Real = TypeParam;
  be_quiet();
  const double extreme = std::is_same_v<Real, float> ? 1e15 : 1e150;
  for (long n : {1, 2, 5, 63, 64, 65, 130}) {
    for (double scale : {1.0, extreme, 1 / extreme}) {
      const Pencil<Real> p = make<Real>(n, scale);
      const long lda = n + 1, ldb = n + 2, ldx = n + 3;
      std::vector<Real> a(n * lda, std::nan("")), b(n * ldb, std::nan("")), x(n * ldx), w(n);
      for (long i = 0; i < n; ++i) {
        std::copy_n(&p.a[i * n], i + 1, &a[i * lda]);
        std::copy_n(&p.b[i * n], i + 1, &b[i * ldb]);
      }
      ASSERT_EQ(solve(n, a.data(), b.data(), ZENT_A_COL_DIM, lda, ZENT_B_COL_DIM, ldb, ZENT_RETURN_USER, w.data(),
                      ZENT_VECTORS_USER, x.data(), ZENT_EVECU_COL_DIM, ldx),
                w.data());
      check(p, w.data(), x.data(), ldx, scale);
      Real* vectors = nullptr;
      Real* values = solve(n, a.data(), b.data(), ZENT_A_COL_DIM, lda, ZENT_B_COL_DIM, ldb, ZENT_VECTORS, &vectors);
      ASSERT_NE(values, nullptr);
      EXPECT_TRUE(std::equal(w.begin(), w.end(), values));
      for (long i = 0; i < n; ++i) EXPECT_TRUE(std::equal(vectors + i * n, vectors + (i + 1) * n, &x[i * ldx]));
      Real* decreasing = solve(n, a.data(), b.data(), ZENT_A_COL_DIM, lda, ZENT_B_COL_DIM, ldb);
      EXPECT_TRUE(std::is_sorted(decreasing, decreasing + n, std::greater<Real>()));
      std::sort(w.begin(), w.end(), std::greater<Real>());
      const double spread =
          40 * static_cast<double>(std::numeric_limits<Real>::epsilon()) * static_cast<double>(n) * std::abs(values[0]);
      for (long j = 0; j < n; ++j) EXPECT_NEAR(w[j], decreasing[j], spread);
      zent_free_allocated_memory(values);
      zent_free_allocated_memory(vectors);
      zent_free_allocated_memory(decreasing);
    }
  }
}

// Values near 1 of matrices at the ends of the exponent range, where the scale of either matrix overflows a value.
TYPED_TEST(SymmetricPencil, EndsOfTheExponentRange) {
  using Real = TypeParam;
  be_quiet();
  for (Real unit : {std::numeric_limits<Real>::max() / 2, 64 * std::numeric_limits<Real>::denorm_min()}) {
    const long n = 20;
    std::vector<Real> a(n * n, unit), b(n * n), w(n), v(n * n);  // all ones: n, and 0 otherwise
    for (long i = 0; i < n; ++i) b[i * n + i] = unit;
    ASSERT_NE(solve(n, a.data(), b.data(), ZENT_RETURN_USER, w.data(), ZENT_VECTORS_USER, v.data()), nullptr);
    EXPECT_NEAR(w[0], n, 100 * std::numeric_limits<Real>::epsilon());
    EXPECT_NEAR(w[1], 0, 100 * std::numeric_limits<Real>::epsilon());
    EXPECT_NEAR(v[0], 1 / std::sqrt(static_cast<double>(n)), 10 * std::numeric_limits<Real>::epsilon());
  }
}

TYPED_TEST(SymmetricPencil, BadArguments) {
  using Real = TypeParam;
  be_quiet();
  Real a[] = {2, 1, 1, 2}, b[] = {1, 0, 3, 1};  // the lower triangle of b says (1, 3; 3, 1)
  Real* const none = nullptr;
  Real* vectors = nullptr;
  const auto code = [](const Real* result) {
    EXPECT_EQ(result, nullptr);
    return zent_error_code();
  };
  EXPECT_EQ(code(solve(2, a, b, ZENT_VECTORS, &vectors)), MATH_MATRIX_B_NOT_POS_DEFINITE);
  EXPECT_EQ(zent_error_type(), 4);
  EXPECT_EQ(vectors, nullptr);
  b[3] = std::numeric_limits<Real>::quiet_NaN();
  EXPECT_EQ(code(solve(2, a, b)), MATH_MATRIX_B_NOT_POS_DEFINITE);
  EXPECT_EQ(code(solve(2, a, b, ZENT_RANGE, 0.0, 1.0)), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(code(solve(2, a, none)), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(code(solve(2, none, b)), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(code(solve(2, a, b, ZENT_VECTORS_USER, none)), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(code(solve(-1, a, b)), MATH_NEGATIVE_ORDER);
  EXPECT_EQ(code(solve(2, a, b, ZENT_A_COL_DIM, 1)), MATH_COL_DIM_LESS_ORDER);
  EXPECT_EQ(code(solve(2, a, b, ZENT_B_COL_DIM, 1)), MATH_COL_DIM_LESS_ORDER);
  Real good[] = {1, 0, 0, 1}, w[2];
  a[2] = std::numeric_limits<Real>::quiet_NaN();
  solve(2, a, good, ZENT_RETURN_USER, w, ZENT_VECTORS, &vectors);
  EXPECT_TRUE(std::isnan(w[0]) && std::isnan(vectors[3]));
  zent_free_allocated_memory(vectors);
}

using zent::Math;
using zent::Stat;

template <class Body>
void in_call(Body body) {  // the internal routines raise into the frame of a public call
  zent::public_call<Math>("test", body);
}

TYPED_TEST(SymmetricPencil, TridiagonalSolvers) {
  using Real = TypeParam;
  be_quiet();
  const Real eps = std::numeric_limits<Real>::epsilon();
  const long n = 200;  // second differences: 2 - 2 cos(k pi / (n + 1))
  std::vector<Real> d(n, 2), e(n, -1), first_row(n, 0);
  EXPECT_NEAR((zent::eigen::l_e3asb<Stat, Real>(n, d.data(), e.data())), 2 + 2 * std::cos(M_PI / (n + 1)), 40 * eps);
  // The first row of the vectors alone, as a Gauss rule needs it: component 1 of vector k is sqrt(2 / (n + 1)) sin(k pi / (n +
  // 1)).
  first_row[0] = 1;
  ASSERT_TRUE((zent::eigen::tridiagonal_vectors<Math, Real>(n, d.data(), e.data(), 1, first_row.data(), 1)));
  std::vector<long> order(n);
  for (long k = 0; k < n; ++k) order[k] = k;
  std::sort(order.begin(), order.end(), [&](long i, long j) { return d[i] < d[j]; });
  for (long k = 0; k < n; ++k) {
    const double angle = M_PI * static_cast<double>(k + 1) / (n + 1);
    EXPECT_NEAR(d[order[k]], 2 - 2 * std::cos(angle), 40 * eps);
    EXPECT_NEAR(std::abs(first_row[order[k]]), std::sqrt(2.0 / (n + 1)) * std::sin(angle), 200 * eps);
  }
}

TYPED_TEST(SymmetricPencil, WarningsOfTheTridiagonalSolvers) {
  using Real = TypeParam;
  be_quiet();
  const long n = 3;
  const Real d[] = {2, 2, 2}, e[] = {-1, -1, 0};
  Real value[3], work[3];
  zent::eigen::SplitBlock block[3];
  long blocks = 0, found = 0;
  in_call([&] { found = zent::eigen::l_e4bsf<Math, Real>(n, d, e, 0, 4, 2, value, block, &blocks, work); });
  EXPECT_EQ(found, -1);
  EXPECT_EQ(zent_error_code(), MATH_NO_EIGENVALUES_RETURNED);
  EXPECT_EQ(zent_error_type(), 3);
  in_call([&] { found = zent::eigen::l_e4bsf<Math, Real>(n, d, e, 1, 4, 3, value, block, &blocks, work); });
  EXPECT_EQ(found, 2);
  EXPECT_NEAR(value[0], 2, 8 * std::numeric_limits<Real>::epsilon());

  // A value that is none has no vector with a small residual.
  value[0] = Real(1.3);
  Real z[6];
  zent::eigen::IterationFaults faults = {-1, false};
  in_call([&] { zent::eigen::l_e6esf<Math, Real>(n, d, e, found, value, block, blocks, z, n, faults); });
  EXPECT_EQ(faults.slow, 0);

  const auto code = [](long order, long lda, long most, Real low, Real high, long ldv) {
    in_call([&] { zent::eigen::check_range<Math>(order, lda, most, low, high, ldv); });
    return zent_error_code();
  };
  EXPECT_EQ(code(0, 3, 3, 0, 1, 3), MATH_MATRIX_ORDER_TOO_SMALL);
  EXPECT_EQ(code(3, 2, 3, 0, 1, 3), MATH_LDA_VALUE_TOO_SMALL);
  EXPECT_EQ(code(3, 3, 4, 0, 1, 3), MATH_NUMBER_MAX_EIGENVALUES);
  EXPECT_EQ(code(3, 3, 3, 1, 1, 3), MATH_NEED_ELOW_LESS_THAN_EHIGH);
  EXPECT_EQ(code(3, 3, 3, 0, 1, 2), MATH_LDEVEC_VALUE_TOO_SMALL);

  // The iteration gives up after 100 sweeps on each of two values; what it has stays.
  Real endless[] = {1, 2, std::numeric_limits<Real>::quiet_NaN()}, squares[] = {0, 1, 1};
  long stack[3];
  in_call([&] { zent::eigen::l_e5lsf<Math>(3L, endless, squares, stack); });
  EXPECT_EQ(zent_error_code(), MATH_SLOW_CONVERGENCE_SYM);
}

}  // namespace
