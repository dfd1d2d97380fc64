// The singular value decomposition: residuals in long double, all four forms, shapes around the block boundaries.
#include "math/linalg/svd.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <limits>

#include "tests/least_squares/matrices.hpp"

namespace {

using lsq::Kind;
using lsq::Matrix;

template <class... Arguments>
float* svd(long m, long n, float* a, Arguments... rest) {
  return zent_f_lin_svd_gen(m, n, a, rest..., 0);
}
template <class... Arguments>
double* svd(long m, long n, double* a, Arguments... rest) {
  return zent_d_lin_svd_gen(m, n, a, rest..., 0);
}
template <class... Arguments>
float* svd(long m, long n, std::complex<float>* a, Arguments... rest) {
  return zent_c_lin_svd_gen(m, n, reinterpret_cast<zent_f_complex*>(a), rest..., 0);
}
template <class... Arguments>
double* svd(long m, long n, std::complex<double>* a, Arguments... rest) {
  return zent_z_lin_svd_gen(m, n, reinterpret_cast<zent_d_complex*>(a), rest..., 0);
}

template <class T>
class Svd : public testing::Test {
 public:
  Svd() {
    be_quiet();
  }
};
using Forms = testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(Svd, Forms);

// Everything at once: A = U S V^H, orthonormal vectors, descending values, the inverse by its four conditions' core, A kept.
template <class T>
void check(Kind kind, long m, long n) {
  SCOPED_TRACE(std::string(lsq::name(kind)) + " " + std::to_string(m) + " x " + std::to_string(n));
  using R = lsq::Real<T>;
  const long k = std::min(m, n);
  const Matrix<T> original = lsq::make<T>(kind, m, n, 2);
  Matrix<T> a = original, u(m, k, 1), v(n, k, 3), inverse(n, m, 2);
  std::vector<R> s(k);
  const R tol = static_cast<R>(-100 * lsq::epsilon<T>());
  long rank = -1;
  const R* given =
      svd(m, n, a.x.data(), ZENT_A_COL_DIM, static_cast<int>(a.dim), ZENT_RETURN_USER, s.data(), ZENT_U_USER, u.x.data(),
          ZENT_U_COL_DIM, static_cast<int>(u.dim), ZENT_V_USER, v.x.data(), ZENT_V_COL_DIM, static_cast<int>(v.dim),
          ZENT_RANK_ADR, &tol, &rank, ZENT_INVERSE_USER, inverse.x.data(), ZENT_INV_COL_DIM, static_cast<int>(inverse.dim));
  ASSERT_EQ(given, s.data()) << zent_error_code();
  EXPECT_EQ(std::memcmp(a.x.data(), original.x.data(), sizeof(T) * a.x.size()), 0);
  for (long i = 0; i < k; ++i) {
    EXPECT_GE(s[i], 0);
    EXPECT_GE(s[std::max(i - 1, 0L)], s[i]);
  }
  const auto bound = 10 * lsq::epsilon<T>() * std::sqrt(static_cast<double>(m + n));
  EXPECT_LE(lsq::departure(u, k), bound * std::sqrt(static_cast<double>(k)));
  EXPECT_LE(lsq::departure(v, k), bound * std::sqrt(static_cast<double>(k)));
  Matrix<T> us(m, k);
  for (long i = 0; i < m; ++i)
    for (long j = 0; j < k; ++j) us(i, j) = u(i, j) * s[j];
  EXPECT_LE(lsq::distance(&original, us, v, k), bound * original.norm());
  for (long i = 0; i < n; ++i) EXPECT_EQ(v(i, k + 2), T(-77));
  // (A^+)^H from the vectors of the rank that was found.
  long expected = 0;
  while (expected < k && s[expected] > -tol * a.norm() * 3) ++expected;
  EXPECT_GE(rank, expected);
  if (rank > 0 && s[rank - 1] > 1e3 * lsq::epsilon<T>() * s[0]) {
    Matrix<T> vs(n, rank);
    for (long i = 0; i < n; ++i)
      for (long j = 0; j < rank; ++j) vs(i, j) = v(i, j) / s[j];
    Matrix<T> pinv(n, m);
    for (long i = 0; i < n; ++i)
      for (long j = 0; j < m; ++j) pinv(i, j) = inverse(i, j);
    EXPECT_LE(lsq::distance(&pinv, vs, u, rank), bound * static_cast<double>(rank) / s[rank - 1]);
  }
}

TYPED_TEST(Svd, ReproducesMatricesOfEveryKind) {
  for (int kind = 0; kind <= static_cast<int>(Kind::repeated); ++kind) {
    check<TypeParam>(static_cast<Kind>(kind), 20, 12);
    check<TypeParam>(static_cast<Kind>(kind), 12, 20);
    check<TypeParam>(static_cast<Kind>(kind), 71, 70);
  }
}

TYPED_TEST(Svd, ReproducesEveryShape) {
  const long sizes[][2] = {{1, 1},   {1, 2},   {2, 1},   {1, 7},   {7, 1},   {2, 3},   {3, 2},    {31, 32},  {32, 31},
                           {33, 33}, {32, 34}, {63, 66}, {66, 64}, {65, 65}, {66, 66}, {97, 100}, {100, 67}, {70, 130}};
  for (const auto& size : sizes) check<TypeParam>(Kind::random, size[0], size[1]);
}

TYPED_TEST(Svd, LibraryAndUserStorageAgree) {
  using T = TypeParam;
  using R = lsq::Real<T>;
  for (const auto& [m, n] : {std::pair{9L, 5L}, std::pair{5L, 9L}}) {
    Matrix<T> a = lsq::make<T>(Kind::random, m, n);
    T *u = nullptr, *v = nullptr, *inverse = nullptr;
    long rank = 0;
    const long k = std::min(m, n);
    R* const s = svd(m, n, a.x.data(), ZENT_U, &u, ZENT_U_COL_DIM, 7, ZENT_V, &v, ZENT_V_COL_DIM, 6, ZENT_INVERSE, &inverse,
                     ZENT_INV_COL_DIM, 11, ZENT_RANK, 0.5, &rank);
    R* const only = svd(m, n, a.x.data());
    Matrix<T> u_user(m, k);
    R* const with_u = svd(m, n, a.x.data(), ZENT_U_USER, u_user.x.data());
    ASSERT_TRUE(s != nullptr && only != nullptr);
    long above = 0;
    for (long j = 0; j < k; ++j) {
      EXPECT_EQ(s[j], only[j]);
      above += s[j] > R(0.5);
      for (long i = 0; i < m; ++i) EXPECT_EQ(u[i * 7 + j], u_user(i, j));
    }
    EXPECT_EQ(rank, above);
    for (long i = 0; i < m; ++i) EXPECT_EQ(u[i * 7 + 5], T(0));
    for (long i = 0; i < n; ++i) {
      EXPECT_EQ(v[i * 6 + 5], T(0));
      EXPECT_EQ(inverse[i * 11 + m], T(0));
    }
    for (void* p : {static_cast<void*>(u), static_cast<void*>(v), static_cast<void*>(inverse), static_cast<void*>(s),
                    static_cast<void*>(only), static_cast<void*>(with_u)})
      zent_free_allocated_memory(p);
  }
}

// Values known in closed form: second differences have 4 sin^2(k pi / (2 n + 2)).
TYPED_TEST(Svd, ValuesOfSecondDifferences) {
  using T = TypeParam;
  for (long n : {5L, 64L, 129L}) {
    Matrix<T> a(n, n);
    for (long i = 0; i < n; ++i)
      for (long j = 0; j < n; ++j) a(i, j) = T(static_cast<lsq::Real<T>>(i == j ? 2 : std::abs(i - j) == 1 ? -1 : 0));
    auto* const s = svd(n, n, a.x.data());
    ASSERT_NE(s, nullptr);
    for (long k = 0; k < n; ++k) {
      const double x = std::sin(static_cast<double>(n - k) * std::acos(-1.0) / static_cast<double>(2 * n + 2));
      EXPECT_NEAR(s[k], 4 * x * x, 100 * lsq::epsilon<T>());
    }
    zent_free_allocated_memory(s);
  }
}

// Integers whose columns have equal norms: the shift alone would send the iteration round in circles. Every 3 by 2 and 3 by 3
// matrix of a range; the squares of the values add up to those of the elements.
TYPED_TEST(Svd, SmallIntegersConverge) {
  using T = TypeParam;
  using R = lsq::Real<T>;
  std::vector<T> steep = {3, 0, 1, 3, 2, 2, 0, 1};
  R s[3];
  ASSERT_EQ(svd(4, 2, steep.data(), ZENT_RETURN_USER, s), s);
  EXPECT_NEAR(s[0], std::sqrt(21.0), 20 * lsq::epsilon<T>());
  EXPECT_NEAR(s[1], std::sqrt(7.0), 20 * lsq::epsilon<T>());
  const auto check_all = [&s](long n, int range, long count) {
    for (long code = 0; code < count; ++code) {
      T a[9];
      double trace = 0;
      long digits = code;
      for (long k = 0; k < 3 * n; ++k, digits /= 2 * range + 1) {
        const double value = static_cast<double>(digits % (2 * range + 1) - range);
        a[k] = T(static_cast<R>(value));
        trace += value * value;
      }
      ASSERT_EQ(svd(3, n, a, ZENT_RETURN_USER, s), s) << n << " " << code;
      double sum = 0;
      for (long k = 0; k < n; ++k) sum += static_cast<double>(s[k]) * s[k];
      ASSERT_NEAR(sum, trace, 40 * lsq::epsilon<T>() * trace) << n << " " << code;
    }
  };
  check_all(2, 2, 15625);
  check_all(3, 1, 19683);
}

TYPED_TEST(Svd, OneByOneMovesItsSignToV) {
  using T = TypeParam;
  T a(-3), u, v;
  auto* const s = svd(1, 1, &a, ZENT_U_USER, &u, ZENT_V_USER, &v);
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(*s, 3);
  if constexpr (!lsq::is_complex<T>) {
    EXPECT_EQ(u, T(1));
    EXPECT_EQ(v, T(-1));
  } else {
    EXPECT_LE(std::abs(u * std::conj(v) + T(1)), 1e-6F);
  }
  zent_free_allocated_memory(s);
}

// A positive tolerance is absolute, so the default takes a tiny multiple of the identity for 0; a negative one is relative.
TYPED_TEST(Svd, RankTolerance) {
  using T = TypeParam;
  using R = lsq::Real<T>;
  std::vector<T> a(9);
  for (int i = 0; i < 3; ++i) a[i * 4] = T(R(1e-20));
  long rank = -1;
  R s[3], tol = 100 * static_cast<R>(lsq::epsilon<T>());
  svd(3, 3, a.data(), ZENT_RETURN_USER, s, ZENT_RANK_ADR, &tol, &rank);
  EXPECT_EQ(rank, 0);
  svd(3, 3, a.data(), ZENT_RETURN_USER, s, ZENT_RANK, -1e-3, &rank);
  EXPECT_EQ(rank, 3);
  a[8] = T(R(1e-25));
  a[1] = T(R(3e-20));  // row sum 4e-20
  svd(3, 3, a.data(), ZENT_RETURN_USER, s, ZENT_RANK, -1e-3, &rank);
  EXPECT_EQ(rank, 2);
  svd(3, 3, a.data(), ZENT_RETURN_USER, s, ZENT_RANK, -0.2, &rank);  // 8e-21 lies between the values 3.3e-21 and 3e-20
  EXPECT_EQ(rank, 1 + (s[1] > R(8e-21)));
}

// Elements near the ends of the range neither overflow nor lose digits.
TYPED_TEST(Svd, ExtremeElements) {
  using T = TypeParam;
  using R = lsq::Real<T>;
  Matrix<T> a = lsq::make<T>(Kind::random, 40, 30);
  std::vector<R> s(30), scaled(30);
  svd(40, 30, a.x.data(), ZENT_RETURN_USER, s.data());
  const int top = std::numeric_limits<R>::max_exponent - 5;
  for (int exponent : {top, -top}) {
    Matrix<T> b = a;
    for (T& x : b.x) x = T(x * static_cast<R>(std::ldexp(R(1), exponent)));
    ASSERT_NE(svd(40, 30, b.x.data(), ZENT_RETURN_USER, scaled.data()), nullptr);
    for (int k = 0; k < 30; ++k) EXPECT_NEAR(std::ldexp(scaled[k], -exponent), s[k], 100 * lsq::epsilon<T>() * s[0]);
  }
}

TYPED_TEST(Svd, NotANumberEndsInAnError) {
  using T = TypeParam;
  using R = lsq::Real<T>;
  for (R bad : {std::numeric_limits<R>::quiet_NaN(), std::numeric_limits<R>::infinity()}) {
    for (long at : {0L, 17L, 80L * 90 - 1}) {
      Matrix<T> a = lsq::make<T>(Kind::random, 80, 90);
      a.x[at] = T(bad);
      const Matrix<T> kept = a;
      EXPECT_EQ(svd(80, 90, a.x.data()), nullptr);
      EXPECT_EQ(zent_error_code(), MATH_SLOWCONVERGENT_MATRIX);
      EXPECT_EQ(std::memcmp(a.x.data(), kept.x.data(), sizeof(T) * a.x.size()), 0);
    }
  }
}

TEST(SvdErrors, AreTheNumbersOfTheirCauses) {
  be_quiet();
  double a[6] = {1, 2, 3, 4, 5, 6};
  double* const none = nullptr;
  const auto run = [](long expected, double* result) {
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(zent_error_code(), expected);
  };
  run(MATH_ILLEGAL_OPT_ARG, zent_d_lin_svd_gen(2, 3, a, ZENT_TRANSPOSE, 0));
  run(MATH_ILLEGAL_OPT_ARG, zent_d_lin_svd_gen(2, 3, a, -1, 0));
  run(MATH_OPTIONAL_ARG_NULL_1, zent_d_lin_svd_gen(2, 3, a, ZENT_U_USER, none, 0));
  run(MATH_OPTIONAL_ARG_NULL_1, zent_d_lin_svd_gen(2, 3, a, ZENT_RETURN_USER, none, 0));
  run(MATH_UNEXPECTED_NULL_POINTER, zent_d_lin_svd_gen(2, 3, none, 0));
  run(MATH_NEED_NUM_ROWS_GT_ZERO, zent_d_lin_svd_gen(0, 3, a, 0));
  run(MATH_NEED_NUM_COLS_GT_ZERO, zent_d_lin_svd_gen(2, 0, a, 0));
  run(MATH_COLUMN_DIM_ERROR, zent_d_lin_svd_gen(2, 3, a, ZENT_A_COL_DIM, 2, 0));
  run(MATH_COLUMN_DIM_ERROR, zent_d_lin_svd_gen(2, 3, a, ZENT_U_USER, a, ZENT_U_COL_DIM, 1, 0));
  run(MATH_COLUMN_DIM_ERROR, zent_d_lin_svd_gen(2, 3, a, ZENT_INVERSE_USER, a, ZENT_INV_COL_DIM, 1, 0));
  // Sizes whose product does not fit a long, or fits one only when it has wrapped round.
  for (const auto& [m, n] : {std::pair{1L << 32, 1L << 32}, std::pair{1L << 62, 4L}, std::pair{LONG_MAX, 1L}}) {
    run(MATH_OUT_OF_MEMORY_2, zent_d_lin_svd_gen(m, n, a, ZENT_RETURN_USER, a, 0));
  }
  const long jobs[][7] = {{MATH_NEED_NRA_AND_NCA_GT_ZERO, 0, 3, 2, 2, 3, 21},
                          {MATH_NEED_SMALLER_NRA_VALUE, 2, 3, 1, 2, 3, 21},
                          {MATH_NEED_LDU_GT_ZERO, 2, 3, 2, 0, 3, 21},
                          {MATH_NEED_LDV_GT_ZERO, 2, 3, 2, 2, 0, 21},
                          {MATH_CONTROL_FLAG_ERROR, 2, 3, 2, 2, 3, 30},
                          {MATH_CONTROL_FLAG_ERROR, 2, 3, 2, 2, 3, 2},
                          {0, 2, 3, 2, 2, 3, 11}};
  for (const auto& [expected, m, n, lda, ldu, ldv, job] : jobs) {
    zent_e1psh("caller");
    EXPECT_EQ(zent::linalg::acceptable_svd<zent::Math>(m, n, lda, ldu, ldv, job), expected == 0);
    zent_e1pop("caller");
    EXPECT_EQ(zent_error_code(), expected);
  }
  double* const s = zent_d_lin_svd_gen(2, 3, a, ZENT_U_COL_DIM, 1, 0);  // not asked for: not tested
  EXPECT_NE(s, nullptr);
  zent_free_allocated_memory(s);
}

}  // namespace
