// Least squares and its factor: residuals in long double, shapes around the block boundaries, pivot rules, options and errors.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <limits>
#include <numeric>

#include "math/linalg/qr.hpp"
#include "tests/least_squares/matrices.hpp"

namespace {

using lsq::Kind;
using lsq::Matrix;

template <class... Arguments>
float* solve(long m, long n, float* a, float* b, Arguments... rest) {
  return zent_f_lin_least_squares_gen(m, n, a, b, rest..., 0);
}
template <class... Arguments>
double* solve(long m, long n, double* a, double* b, Arguments... rest) {
  return zent_d_lin_least_squares_gen(m, n, a, b, rest..., 0);
}

template <class T>
class LeastSquares : public testing::Test {
 public:
  LeastSquares() {
    be_quiet();
  }
};
using Forms = testing::Types<float, double>;
TYPED_TEST_SUITE(LeastSquares, Forms);

template <class T>
struct Factor {
  Matrix<T> qr, q;
  std::vector<T> qraux;
  std::vector<long> pvt;
  long kbasis = -1;
};

template <class T>
Factor<T> factor(Matrix<T>& a, std::vector<long> pvt) {
  Factor<T> f = {Matrix<T>(a.m, a.n, 1), Matrix<T>(a.m, a.m, 2), std::vector<T>(a.n), std::move(pvt)};
  T tol = static_cast<T>(lsq::epsilon<T>()) * 100;
  EXPECT_EQ(
      solve(a.m, a.n, a.x.data(), static_cast<T*>(nullptr), ZENT_A_COL_DIM, static_cast<int>(a.dim), ZENT_FACTOR_ONLY,
            ZENT_FACTOR_USER, f.qraux.data(), f.qr.x.data(), ZENT_FAC_COL_DIM, static_cast<int>(f.qr.dim), ZENT_PIVOT,
            f.pvt.data(), ZENT_Q_USER, f.q.x.data(), ZENT_Q_COL_DIM, static_cast<int>(f.q.dim), ZENT_BASIS_ADR, &tol, &f.kbasis),
      nullptr);
  EXPECT_EQ(zent_error_code(), 0);
  return f;
}

// A P = Q R, Q orthogonal, norms of the free columns falling along the diagonal, A kept.
template <class T>
void check_factor(Kind kind, long m, long n) {
  SCOPED_TRACE(std::string(lsq::name(kind)) + " " + std::to_string(m) + " x " + std::to_string(n));
  const Matrix<T> original = lsq::make<T>(kind, m, n, 3);
  Matrix<T> a = original;
  const Factor<T> f = factor(a, std::vector<long>(n));
  EXPECT_EQ(std::memcmp(a.x.data(), original.x.data(), sizeof(T) * a.x.size()), 0);
  std::vector<long> sorted = f.pvt;
  std::sort(sorted.begin(), sorted.end());
  for (long j = 0; j < n; ++j) ASSERT_EQ(sorted[j], j + 1);
  const long k = std::min(m, n);
  Matrix<T> r_transposed(n, k), permuted(m, n);
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < k; ++i) r_transposed(j, i) = i <= j ? f.qr(i, j) : T(0);
    for (long i = 0; i < m; ++i) permuted(i, j) = original(i, f.pvt[j] - 1);
  }
  const double bound = 10 * lsq::epsilon<T>() * std::sqrt(static_cast<double>(m + n));
  EXPECT_LE(lsq::departure(f.q, m), bound * std::sqrt(static_cast<double>(m)));
  EXPECT_LE(lsq::distance(&permuted, f.q, r_transposed, k), bound * original.norm());
  for (long i = 0; i < k; ++i) {  // each diagonal element is the largest norm of what was left
    for (long j = i + 1; j < n; ++j) {
      lsq::Wide left = 0;
      for (long l = i; l < std::min(j + 1, k); ++l) left += lsq::Wide(f.qr(l, j)) * f.qr(l, j);
      EXPECT_LE(std::sqrt(left), std::abs(f.qr(i, i)) * 1.001L + 4 * bound * original.norm()) << i << " " << j;
    }
  }
  for (long i = 0; i < m; ++i) {
    EXPECT_EQ(f.q(i, m + 1), T(0));
    EXPECT_EQ(f.qr(i, n), T(-77));
  }
}

TYPED_TEST(LeastSquares, FactorsMatricesOfEveryKind) {
  for (int kind = 0; kind <= static_cast<int>(Kind::repeated); ++kind) {
    check_factor<TypeParam>(static_cast<Kind>(kind), 20, 12);
    check_factor<TypeParam>(static_cast<Kind>(kind), 71, 70);
    check_factor<TypeParam>(static_cast<Kind>(kind), 60, 83);
  }
}

TYPED_TEST(LeastSquares, FactorsEveryShape) {
  const long sizes[][2] = {{1, 1},   {1, 4},   {4, 1},   {2, 2},    {3, 5},    {31, 33}, {33, 31},  {47, 48}, {48, 48},
                           {49, 49}, {64, 65}, {65, 64}, {97, 100}, {100, 50}, {50, 90}, {129, 96}, {200, 49}};
  for (const auto& size : sizes) check_factor<TypeParam>(Kind::random, size[0], size[1]);
}

// The panels choose the columns that the plain steps choose, and give the same numbers to rounding.
TYPED_TEST(LeastSquares, PanelsFollowThePlainSteps) {
  using T = TypeParam;
  for (const auto& [m, n] : {std::pair{120L, 90L}, std::pair{64L, 64L}}) {
    const Matrix<T> rows = lsq::make<T>(Kind::random, n, m);  // column-major m by n
    std::vector<T> qr[2], qraux[2];
    std::vector<long> pvt[2];
    for (int plain : {0, 1}) {
      qr[plain].resize(m * n);
      qraux[plain].resize(n);
      pvt[plain].resize(n);
      for (long j = 0; j < n; ++j) pvt[plain][j] = j % 11 == 3 ? 1 : j % 13 == 5 ? -1 : 0;
      std::vector<T> norms(n), wk(2 * n);
      const auto run = plain ? zent::linalg::l2rrr_plain<zent::Math, T> : zent::linalg::l2rrr<zent::Math, T>;
      run(m, n, rows.x.data(), m, true, pvt[plain].data(), qr[plain].data(), m, qraux[plain].data(), norms.data(), wk.data());
    }
    EXPECT_EQ(pvt[0], pvt[1]);
    for (long k = 0; k < m * n; ++k) ASSERT_NEAR(qr[0][k], qr[1][k], 2000 * lsq::epsilon<T>()) << k;
    for (long k = 0; k < n; ++k) ASSERT_NEAR(qraux[0][k], qraux[1][k], 2000 * lsq::epsilon<T>()) << k;
  }
}

// Initial columns come first in their order, final ones last; the first of equal norms is taken.
TYPED_TEST(LeastSquares, PivotControl) {
  using T = TypeParam;
  Matrix<T> a = lsq::make<T>(Kind::random, 9, 6);
  const Factor<T> f = factor(a, {-1, 0, 5, -3, 0, 2});
  EXPECT_EQ((std::vector<long>{f.pvt[0], f.pvt[1], f.pvt[4], f.pvt[5]}), (std::vector<long>{3, 6, 1, 4}));
  Matrix<T> wide = lsq::make<T>(Kind::random, 2, 4);
  std::vector<T> heads(4, T(9)), qr(8), norms(4), wk(7);
  EXPECT_EQ(solve(2, 4, wide.x.data(), static_cast<T*>(nullptr), ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, heads.data(), qr.data(),
                  ZENT_PIVOT, std::vector<long>{1, 1, 1, 1}.data()),
            nullptr);
  EXPECT_EQ(std::vector<T>(heads.begin() + 1, heads.end()), std::vector<T>(3));  // no reflections there
  zent::linalg::l2rrr<zent::Math, T>(4, 2, wide.x.data(), 4, false, nullptr, qr.data(), 4, heads.data(), norms.data(), wk.data());
  EXPECT_NEAR(std::abs(qr[0]), norms[0], 1e-6);
  Matrix<T> equal(3, 3);
  const T values[] = {1, 0, 2, 0, 2, 0, 0, 0, 0};
  std::copy(values, values + 9, equal.x.begin());
  EXPECT_EQ(factor(equal, {0, 0, 0}).pvt, (std::vector<long>{2, 3, 1}));
}

// The diagonal's sign is that of -a(1,1), and a column like (3, 1e-9, 0) has no zero divisor.
TYPED_TEST(LeastSquares, OneColumn) {
  using T = TypeParam;
  for (T sign : {T(1), T(-1)}) {
    Matrix<T> a(3, 1);
    a.x = {3 * sign, T(1e-9), 0};
    const Factor<T> f = factor(a, {0});
    EXPECT_EQ(f.qr(0, 0), -3 * sign);
    EXPECT_EQ(f.qraux[0], T(2));
    EXPECT_EQ(f.kbasis, 1);
  }
  Matrix<T> single(1, 1), nothing(4, 1);
  single.x = {5};
  nothing.x = {0, 0, std::numeric_limits<T>::denorm_min(), 0};
  EXPECT_EQ(factor(single, {0}).qraux[0], T(0));
  EXPECT_EQ(factor(nothing, {0}).qraux[0], T(0));
}

// The normal equations hold, and no shorter residual comes from the columns used.
template <class T>
void check_solution(Kind kind, long m, long n) {
  SCOPED_TRACE(std::string(lsq::name(kind)) + " " + std::to_string(m) + " x " + std::to_string(n));
  Matrix<T> a = lsq::make<T>(kind, m, n, 2);
  const Matrix<T> kept = a;
  Matrix<T> b = lsq::make<T>(Kind::random, m, 1);
  const std::vector<T> right = b.x;
  std::vector<T> x(n), res(m);
  long kbasis = -1;
  ASSERT_EQ(solve(m, n, a.x.data(), b.x.data(), ZENT_A_COL_DIM, static_cast<int>(a.dim), ZENT_RETURN_USER, x.data(),
                  ZENT_RESIDUAL_USER, res.data(), ZENT_BASIS, 1e3 * lsq::epsilon<T>(), &kbasis),
            x.data());
  EXPECT_EQ(a.x, kept.x);
  EXPECT_EQ(b.x, right);
  EXPECT_LE(std::count_if(x.begin(), x.end(), [](T v) { return v != 0; }), kbasis);
  const auto length = [](const std::vector<T>& v) {
    lsq::Wide sum = 0;
    for (T e : v) sum += lsq::Wide(e) * e;
    return std::sqrt(sum);
  };
  const double bound = 20 * lsq::epsilon<T>() * std::sqrt(static_cast<double>(m + n));
  const lsq::Wide scale = a.norm() * length(x) + length(right);
  for (long i = 0; i < m; ++i) {
    lsq::Wide r = right[i];
    for (long j = 0; j < n; ++j) r -= lsq::Wide(a(i, j)) * x[j];
    EXPECT_LE(std::abs(r - res[i]), bound * scale);
  }
  for (long j = 0; j < n; ++j) {
    lsq::Wide g = 0;
    for (long i = 0; i < m; ++i) g += lsq::Wide(a(i, j)) * res[i];
    // Columns left out depend on the others to the tolerance.
    EXPECT_LE(std::abs(g), (kbasis < std::min(m, n) ? 1e4 * lsq::epsilon<T>() : bound) * a.norm() * scale) << j;
  }
}

TYPED_TEST(LeastSquares, SolutionsOfEveryKind) {
  for (Kind kind : {Kind::random, Kind::graded, Kind::hilbert, Kind::kahan, Kind::wilkinson, Kind::near_singular, Kind::low_rank,
                    Kind::repeated, Kind::identity})
    for (const auto& [m, n] : {std::pair{40L, 25L}, std::pair{25L, 40L}, std::pair{66L, 66L}, std::pair{120L, 70L}})
      check_solution<TypeParam>(kind, m, n);
}

TYPED_TEST(LeastSquares, ZeroMatrix) {
  using T = TypeParam;
  std::vector<T> a(12), b = {1, 2, 3, 4}, res(4);
  long kbasis = -1;
  T* const x = solve(4, 3, a.data(), b.data(), ZENT_RESIDUAL_USER, res.data(), ZENT_BASIS, 0.0, &kbasis);
  ASSERT_NE(x, nullptr);
  EXPECT_EQ(kbasis, 0);
  EXPECT_EQ(std::vector<T>(x, x + 3), std::vector<T>(3));
  EXPECT_EQ(res, b);
  zent_free_allocated_memory(x);
}

// Factor once, solve twice: library storage with a wide factor, and a in place.
TYPED_TEST(LeastSquares, SolvesWithAFactor) {
  using T = TypeParam;
  for (const auto& [m, n] : {std::pair{7L, 7L}, std::pair{70L, 55L}}) {
    Matrix<T> a = lsq::make<T>(Kind::random, m, n, 1);
    std::vector<T> b(m, 1), direct(n), in_place(n), residual(m);
    std::vector<long> pvt(n);
    T *qraux = nullptr, *qr = nullptr, *q = nullptr;
    long kbasis = 0;
    solve(m, n, a.x.data(), b.data(), ZENT_A_COL_DIM, static_cast<int>(a.dim), ZENT_RETURN_USER, direct.data(), ZENT_FACTOR,
          &qraux, &qr, ZENT_FAC_COL_DIM, static_cast<int>(n + 2), ZENT_PIVOT, pvt.data(), ZENT_BASIS, 0.0, &kbasis, ZENT_Q, &q);
    ASSERT_TRUE(qr != nullptr && qraux != nullptr && q != nullptr);
    for (long i = 0; i < m; ++i) EXPECT_EQ(qr[i * (n + 2) + n + 1], T(0));
    EXPECT_EQ(kbasis, n);
    T* res = nullptr;
    T* const x = solve(m, n, static_cast<T*>(nullptr), b.data(), ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, qraux, qr, ZENT_FAC_COL_DIM,
                       static_cast<int>(n + 2), ZENT_BASIS, 0.0, &kbasis, ZENT_RESIDUAL, &res);
    ASSERT_TRUE(x != nullptr && res != nullptr);
    for (long k = 0; k < n; ++k) EXPECT_NEAR(x[k], direct[pvt[k] - 1], 1e3 * lsq::epsilon<T>());
    // A factor over the matrix itself.
    std::vector<T> aux(n);
    solve(m, n, a.x.data(), b.data(), ZENT_A_COL_DIM, static_cast<int>(a.dim), ZENT_RETURN_USER, in_place.data(),
          ZENT_FACTOR_USER, aux.data(), a.x.data());
    EXPECT_EQ(in_place, direct);
    for (long i = 0; i < m; ++i)
      for (long j = 0; j < n; ++j) EXPECT_EQ(a(i, j), qr[i * (n + 2) + j]);
    for (void* p : {static_cast<void*>(qr), static_cast<void*>(qraux), static_cast<void*>(q), static_cast<void*>(x),
                    static_cast<void*>(res)})
      zent_free_allocated_memory(p);
  }
}

// The exchanges of a solve-only call with a permutation, one after the other, and zeros behind the basis.
TEST(LeastSquaresSolveOnly, ExchangesOneAfterTheOther) {
  be_quiet();
  double qr[16] = {}, qraux[4] = {}, b[4] = {1, 2, 3, 4}, x[4];
  for (int k = 0; k < 4; ++k) qr[k * 5] = 1;
  long pvt[4] = {2, 3, 1, 4}, kbasis = 3;
  ASSERT_EQ(zent_d_lin_least_squares_gen(4, 4, nullptr, b, ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, qraux, qr, ZENT_PIVOT, pvt,
                                         ZENT_BASIS, 0.0, &kbasis, ZENT_RETURN_USER, x, 0),
            x);
  EXPECT_EQ((std::vector<double>(x, x + 4)), (std::vector<double>{2, 3, 1, 0}));
  qr[5] = 0;
  double* residual = x;
  EXPECT_EQ(zent_d_lin_least_squares_gen(4, 4, nullptr, b, ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, qraux, qr, ZENT_BASIS, 0.0, &kbasis,
                                         ZENT_RESIDUAL, &residual, 0),
            nullptr);
  EXPECT_EQ(zent_error_code(), MATH_SINGULAR_TRI_MATRIX);
  EXPECT_EQ(residual, nullptr);
  kbasis = -1;
  EXPECT_EQ(
      zent_d_lin_least_squares_gen(4, 4, nullptr, b, ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, qraux, qr, ZENT_BASIS, 0.0, &kbasis, 0),
      nullptr);
  EXPECT_EQ(zent_error_code(), MATH_KBASIS_IS_NEGATIVE);
}

// Of the two places for a factor the last one named counts, with its own column dimension; a tolerance below 0 counts a zero
// diagonal element, which cannot be divided by.
TEST(LeastSquaresFactor, LastPlaceAndNegativeTolerance) {
  be_quiet();
  double a[6] = {3, 0, 9, 0, 4, 9}, kept[6], b[2] = {3, 4}, user_aux[2], *qraux = nullptr, *qr = nullptr;
  std::copy(a, a + 6, kept);
  double* const x =
      zent_d_lin_least_squares_gen(2, 2, a, b, ZENT_A_COL_DIM, 3, ZENT_FACTOR_USER, user_aux, a, ZENT_FACTOR, &qraux, &qr, 0);
  ASSERT_TRUE(x != nullptr && qr != nullptr);
  EXPECT_TRUE(std::equal(a, a + 6, kept));
  EXPECT_EQ(qr[0], -4);
  EXPECT_EQ(qr[3], -3);  // rows of 2, not of 3: (3, 0) less (1, 1) times 3
  for (double* p : {x, qraux, qr}) zent_free_allocated_memory(p);
  double singular[4] = {1, 0, 0, 0};
  long kbasis = 0;
  EXPECT_EQ(zent_d_lin_least_squares_gen(2, 2, singular, b, ZENT_BASIS, -1.0, &kbasis, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_SINGULAR_TRI_MATRIX);
}

// Factor only: the count goes along every (n + 1)-th element, here off the diagonal from the second on.
TEST(LeastSquaresFactorOnly, CountsEveryNPlusFirstElement) {
  be_quiet();
  double a[6] = {4, 0, 0, 3, 0, 0}, qraux[2], qr[6], tol = 1e-10;  // 3 by 2: elements 0, 3 of the column-major factor
  long kbasis = -1;
  zent_d_lin_least_squares_gen(3, 2, a, nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, qraux, qr, ZENT_BASIS_ADR, &tol, &kbasis, 0);
  EXPECT_EQ(qr[3], -3);  // r(2,2): rank 2
  EXPECT_EQ(kbasis, 1);  // element 3 is r(1,2) = 0
}

// The line 11/12 + 5/4 t fits (0, 1), (1, 2), (2, 3.5), each twice here; the norm of the first column is beyond the numbers, and
// once that of the right-hand side.
TYPED_TEST(LeastSquares, ColumnsTooLongForTheirNorm) {
  using T = TypeParam;
  const T top = std::ldexp(T(1), std::numeric_limits<T>::max_exponent - 1);
  for (T scale : {T(1), top / 4}) {
    T a[12], b[6], x[2], res[6];
    for (int i = 0; i < 6; ++i) {
      a[2 * i] = top;
      a[2 * i + 1] = static_cast<T>(i / 2) / 2 * top;
      b[i] = scale * (i < 2 ? T(1) : i < 4 ? T(2) : T(3.5));
    }
    long pvt[2] = {0, 0}, kbasis = 0;
    ASSERT_EQ(solve(6, 2, a, b, ZENT_RETURN_USER, x, ZENT_RESIDUAL_USER, res, ZENT_PIVOT, pvt, ZENT_BASIS, 1e-4, &kbasis), x);
    EXPECT_EQ(kbasis, 2);
    EXPECT_EQ(pvt[0], 1);
    EXPECT_NEAR(x[0] / scale * top, 11.0 / 12, 20 * lsq::epsilon<T>());
    EXPECT_NEAR(x[1] / scale * top, 2.5, 20 * lsq::epsilon<T>());
    for (int i = 0; i < 6; ++i) EXPECT_NEAR(res[i] / scale, (i / 2 == 1 ? -2 : 1) / 12.0, 20 * lsq::epsilon<T>());
    // The same fit over ordinary columns, by their factor; only the right-hand side is long.
    T heads[2], qr[12];
    for (T& v : a) v /= top;
    solve(6, 2, a, static_cast<T*>(nullptr), ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, heads, qr, ZENT_PIVOT, pvt);
    ASSERT_EQ(solve(6, 2, static_cast<T*>(nullptr), b, ZENT_RETURN_USER, x, ZENT_RESIDUAL_USER, res, ZENT_SOLVE_ONLY,
                    ZENT_FACTOR_USER, heads, qr, ZENT_BASIS, 0.0, &kbasis),
              x);
    EXPECT_NEAR(x[pvt[0] - 1] / scale, pvt[0] == 1 ? 11.0 / 12 : 2.5, 40 * lsq::epsilon<T>());
    EXPECT_NEAR(res[2] / scale, -1.0 / 6, 20 * lsq::epsilon<T>());
  }
  T wide[6] = {top, 0, 0, 0, 4, 3}, heads[3], qr[6], x[2];
  EXPECT_EQ(solve(2, 3, wide, static_cast<T*>(nullptr), ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, heads, qr), nullptr);
  EXPECT_EQ(qr[0], -top);
  EXPECT_EQ(heads[2], 3);  // the norm that is left, as of other matrices
  // With a tolerance below 0 a zero that only an overflow makes would be divided by.
  constexpr T largest = std::numeric_limits<T>::max();
  T square[4] = {largest, 1, largest, 0}, b[2] = {3, 1};
  long kbasis = 0;
  ASSERT_EQ(solve(2, 2, square, b, ZENT_RETURN_USER, x, ZENT_BASIS, -1.0, &kbasis), x);
  EXPECT_NEAR(x[1], 2, 20 * lsq::epsilon<T>());
}

TYPED_TEST(LeastSquares, NotANumberComesToAnEnd) {
  using T = TypeParam;
  for (T bad : {std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity()}) {
    Matrix<T> a = lsq::make<T>(Kind::random, 90, 70);
    a(7, 60) = bad;
    std::vector<T> b(90, 1);
    T* const x = solve(90, 70, a.x.data(), b.data());
    EXPECT_TRUE(x != nullptr || zent_error_code() != 0);
    zent_free_allocated_memory(x);
  }
}

// Products with Q and R against their definitions.
TYPED_TEST(LeastSquares, ProductsWithTheFactor) {
  using T = TypeParam;
  const long m = 12, n = 5;
  Matrix<T> a = lsq::make<T>(Kind::random, m, n);
  Factor<T> f = factor(a, std::vector<long>(n, 1));
  std::vector<T> columns(m * n), y(m), qy(m), qty(m), b(n), res(m), xb(m);
  for (long i = 0; i < m; ++i) {
    y[i] = static_cast<T>(i * i % 7) - 3;
    for (long j = 0; j < n; ++j) columns[i + j * m] = f.qr(i, j);
  }
  const auto run = [](auto... x) {
    if constexpr (std::is_same_v<T, float>) {
      zent_lqrsl(x...);
    } else {
      zent_dlqrsl(x...);
    }
  };
  run(m, n, columns.data(), m, f.qraux.data(), y.data(), qy.data(), qty.data(), b.data(), res.data(), xb.data(), 11111L);
  const double near = 100 * lsq::epsilon<T>();
  for (long i = 0; i < m; ++i) {
    T forward = 0, back = 0, fit = 0;
    for (long l = 0; l < m; ++l) {
      forward += f.q(i, l) * y[l];
      back += f.q(l, i) * y[l];
    }
    for (long j = 0; j < n; ++j) fit += a(i, j) * b[j];
    EXPECT_NEAR(qy[i], forward, near);
    EXPECT_NEAR(qty[i], back, near);
    EXPECT_NEAR(xb[i], fit, near);
    EXPECT_NEAR(res[i], y[i] - fit, near);
  }
}

// Both directions are inverse to each other and leave the permutation as it was; in place too.
TEST(Permutation, GoesAndComesBack) {
  be_quiet();
  std::mt19937 random(3);
  for (long n : {1L, 2L, 7L, 50L}) {
    std::vector<long> pvt(n);
    std::iota(pvt.begin(), pvt.end(), 1);
    std::shuffle(pvt.begin(), pvt.end(), random);
    const std::vector<long> kept = pvt;
    std::vector<double> x(n), out(n);
    std::iota(x.begin(), x.end(), 0);
    zent::linalg::l_permu<zent::Math>(n, x.data(), pvt.data(), 1, out.data());
    for (long i = 0; i < n; ++i) EXPECT_EQ(out[i], static_cast<double>(pvt[i] - 1));
    zent::linalg::l_permu<zent::Math>(n, out.data(), pvt.data(), 2, out.data());
    EXPECT_EQ(out, x);
    EXPECT_EQ(pvt, kept);
  }
}

TEST(LeastSquaresErrors, AreTheNumbersOfTheirCauses) {
  be_quiet();
  double a[6] = {1, 2, 3, 4, 5, 7}, b[3] = {1, 2, 3}, aux[2], qr[6];
  double* const none = nullptr;
  long kbasis = 2;
  const auto run = [](long expected, double* result) {
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(zent_error_code(), expected);
    EXPECT_EQ(zent_error_type(), 5);
  };
  const auto f = zent_d_lin_least_squares_gen;
  run(MATH_ILLEGAL_OPT_ARG, f(3, 2, a, b, ZENT_TRANSPOSE, 0));
  run(MATH_OPTIONAL_ARG_NULL_1, f(3, 2, a, b, ZENT_FACTOR_USER, aux, none, 0));
  run(MATH_OPTIONAL_ARG_NULL_1, f(3, 2, a, b, ZENT_PIVOT, none, 0));
  run(MATH_OPTIONAL_ARG_NULL_2, f(3, 2, a, b, ZENT_Q_USER, none, 0));
  run(MATH_UNEXPECTED_NULL_POINTER, f(3, 2, none, b, 0));
  run(MATH_UNEXPECTED_NULL_POINTER, f(3, 2, a, none, 0));
  run(MATH_NEED_NRA_AND_NCA_GT_ZERO, f(0, 2, a, b, 0));
  run(MATH_NEED_COL_A_LT_DIM, f(3, 2, a, b, ZENT_A_COL_DIM, 1, 0));
  run(MATH_NEED_QT_GT_NUM_COL, f(3, 2, a, b, ZENT_FAC_COL_DIM, 1, 0));
  run(MATH_NEED_Q_GT_NUM_COL, f(3, 2, a, b, ZENT_Q_COL_DIM, 2, 0));
  run(MATH_BAD_SOLVE_FACTOR, f(3, 2, a, b, ZENT_FACTOR_ONLY, ZENT_SOLVE_ONLY, 0));
  run(MATH_SPECIFY_FACTOR_ONLY, f(3, 2, a, b, ZENT_FACTOR_ONLY, 0));
  run(MATH_BASIS_SOLVE_ONLY, f(3, 2, a, b, ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, aux, qr, 0));
  run(MATH_SPECIFY_SOLVE_ONLY, f(3, 2, a, b, ZENT_SOLVE_ONLY, ZENT_BASIS, 0.0, &kbasis, 0));
  // Sizes whose product does not fit a long, or fits one only when it has wrapped round.
  for (const auto& [m, n] : {std::pair{1L << 32, 1L << 32}, std::pair{1L << 62, 4L}, std::pair{1L, LONG_MAX}}) {
    run(MATH_OUT_OF_MEMORY, f(m, n, a, b, 0));
  }
}

// The routines on column-major arrays refuse sizes that do not fit and touch nothing.
TEST(LeastSquaresErrors, OfTheSupportRoutines) {
  be_quiet();
  using zent::Math;
  double a[6] = {1, 2, 3, 4, 5, 7}, qr[6] = {9}, aux[2], norms[2], wk[5], y[3] = {}, x[2] = {8, 8};
  long pvt[2] = {}, kbasis = 5;
  const auto expect = [](long number) {
    EXPECT_EQ(zent_error_code(), number);
    EXPECT_EQ(zent_error_type(), 5);
  };
  const auto in_frame = [&expect](long number, auto call) {
    zent_e1psh("caller");
    call();
    zent_e1pop("caller");
    expect(number);
  };
  in_frame(MATH_NEED_NRA_AND_NCA_GT_ZERO, [&] { zent_dl2rrr(0, 2, a, 3, 1, pvt, qr, 3, aux, norms, wk); });
  in_frame(MATH_NEED_SMALLER_NRA_VALUE, [&] { zent_dl2rrr(3, 2, a, 2, 1, pvt, qr, 3, aux, norms, wk); });
  in_frame(MATH_NRQR_GREATER_THAN_LDQR, [&] { zent_dl2rrr(3, 2, a, 3, 1, pvt, qr, 2, aux, norms, wk); });
  in_frame(MATH_NEED_SMALLER_NRA_VALUE, [&] { zent_dl2qrr(3, 2, a, 2, y, 0, x, y, &kbasis, qr, aux, pvt, wk); });
  in_frame(MATH_NRA_MUST_BE_POSITIVE, [&] { zent_dlqrsl(0, 2, qr, 3, aux, y, y, y, x, y, y, 100); });
  in_frame(MATH_NRQR_GREATER_THAN_LDQR, [&] { zent_dlqrsl(3, 2, qr, 2, aux, y, y, y, x, y, y, 100); });
  in_frame(MATH_KBASIS_IS_NEGATIVE, [&] { zent_dlqrsl(3, -1, qr, 3, aux, y, y, y, x, y, y, 100); });
  in_frame(MATH_NRQR_GT_LDQR, [&] { zent::linalg::l_l2err<Math>(3, 2, qr, 3, aux, a, 2); });
  pvt[0] = 1, pvt[1] = 3;
  in_frame(MATH_IPERMU_RANGE, [&] { zent::linalg::l_permu<Math>(2, y, pvt, 1, x); });
  in_frame(MATH_IPATH_RANGE_3, [&] { zent::linalg::l_permu<Math>(2, y, pvt, 3, x); });
  in_frame(MATH_X_AND_XPERMU_LENGTH_LE_0, [&] { zent::linalg::l_permu<Math>(0, y, pvt, 1, x); });
  EXPECT_EQ(qr[0], 9);
  EXPECT_EQ(x[0], 8);
  EXPECT_EQ(kbasis, 5);
}

}  // namespace
