// Symmetric and Hermitian eigenvalue problems through the public functions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "tests/support/quiet.hpp"
#include "zent.h"
#include "zents.h"

namespace {

// The four forms under one name; std::complex has the layout of the library's records.
template <class T>
struct Form;
template <>
struct Form<float> {
  using Real = float;
  template <class... Arguments>
  static float* solve(long n, float* a, Arguments... options) {
    return zent_f_eig_sym(n, a, options..., 0);
  }
};
template <>
struct Form<double> {
  using Real = double;
  template <class... Arguments>
  static double* solve(long n, double* a, Arguments... options) {
    return zent_d_eig_sym(n, a, options..., 0);
  }
};
template <>
struct Form<std::complex<float>> {
  using Real = float;
  template <class... Arguments>
  static float* solve(long n, std::complex<float>* a, Arguments... options) {
    return zent_c_eig_herm(n, reinterpret_cast<zent_f_complex*>(a), options..., 0);
  }
};
template <>
struct Form<std::complex<double>> {
  using Real = double;
  template <class... Arguments>
  static double* solve(long n, std::complex<double>* a, Arguments... options) {
    return zent_z_eig_herm(n, reinterpret_cast<zent_d_complex*>(a), options..., 0);
  }
};

template <class T>
constexpr bool is_complex = !std::is_floating_point_v<T>;

template <class T>
T conjugate(T x) {
  if constexpr (is_complex<T>) {
    return std::conj(x);
  } else {
    return x;
  }
}

template <class T>
T element(double re, double im) {
  using Real = typename Form<T>::Real;
  if constexpr (is_complex<T>) {
    return T(static_cast<Real>(re), static_cast<Real>(im));
  } else {
    return static_cast<Real>(re);
  }
}

template <class T>
using Matrix = std::vector<T>;

// Matrices by name; the complex ones get a Hermitian imaginary part where that leaves the point of the matrix alone.
template <class T>
Matrix<T> make(const std::string& name, long n) {
  std::mt19937 generator(static_cast<unsigned>(n));
  std::normal_distribution<double> normal;
  Matrix<T> a(n * n);
  const auto fill = [&](const std::function<double(long, long)>& re, bool imaginary) {
    for (long i = 0; i < n; ++i) {
      for (long j = 0; j <= i; ++j) {
        a[i * n + j] = element<T>(re(i, j), imaginary && i != j ? normal(generator) : 0);
        a[j * n + i] = conjugate(a[i * n + j]);
      }
    }
  };
  const double tiny = std::is_same_v<typename Form<T>::Real, float> ? 1e-15 : 1e-150;
  if (name == "random") fill([&](long, long) { return normal(generator); }, true);
  if (name == "small") fill([&](long, long) { return tiny * normal(generator); }, false);
  if (name == "large") fill([&](long, long) { return normal(generator) / tiny; }, false);
  if (name == "zero") fill([](long, long) { return 0.0; }, false);
  if (name == "diagonal")
    fill([n](long i, long j) { return i == j ? (i % 2 ? -1.0 : 1.0) * static_cast<double>(i % (n / 2 + 1)) : 0; }, false);
  if (name == "identity") fill([](long i, long j) { return i == j ? 1.0 : 0; }, false);
  if (name == "toeplitz") fill([](long i, long j) { return i == j ? 2.0 : i - j == 1 ? -1.0 : 0; }, false);
  if (name == "wilkinson") {
    fill(
        [n](long i, long j) {
          return i == j ? std::abs(static_cast<double>(i) - static_cast<double>(n - 1) / 2) : i - j == 1 ? 1.0 : 0;
        },
        false);
  }
  if (name == "graded")
    fill([&](long i, long j) { return std::pow(10.0, -static_cast<double>(i + j) / 4) * normal(generator); }, false);
  if (name == "graded_up")
    fill([&](long i, long j) { return std::pow(10.0, static_cast<double>(i + j - 2 * n) / 4) * normal(generator); }, false);
  // Small rows above, the large ones at the end, and underflow in between: the reduction puts rounding errors beside tiny rows.
  if (name == "steep") {
    fill([&](long i, long j) { return std::pow(2.0, static_cast<double>(i + j - 2 * n)) * normal(generator); }, false);
  }
  if (name == "rank_one") fill([](long i, long j) { return 1.0 / static_cast<double>((i + 1) * (j + 1)); }, false);
  if (name == "ones") fill([](long, long) { return 1.0; }, false);
  if (name == "clustered") fill([&](long i, long j) { return (i == j ? 1.0 : 0) + 1e-5 * normal(generator); }, false);
  if (name == "signs") fill([](long i, long j) { return i % 2 == 1 && j == i - 1 ? 1.0 : 0; }, false);
  if (name == "arrow") fill([n](long i, long j) { return i == j ? static_cast<double>(i) : i == n - 1 ? 1e-3 : 0; }, false);
  return a;
}

template <class T>
double norm_of(const Matrix<T>& a, long n) {  // largest row sum
  double norm = 0;
  for (long i = 0; i < n; ++i) {
    double sum = 0;
    for (long j = 0; j < n; ++j) sum += std::abs(a[i * n + j]);
    norm = std::max(norm, sum);
  }
  return norm;
}

// Residual and orthogonality of `count` columns with row stride ldv, and the rule of signs.
template <class T>
void check_vectors(const Matrix<T>& a, long n, const typename Form<T>::Real* w, const T* v, long count, long ldv,
                   double slack = 1) {
  using Real = typename Form<T>::Real;
  const double unit = slack * 8 * std::sqrt(static_cast<double>(n + 8)) * std::numeric_limits<Real>::epsilon(),
               norm = norm_of(a, n);
  for (long j = 0; j < count; ++j) {
    double worst = 0, largest = 0;
    T top = 0;
    for (long i = 0; i < n; ++i) {
      std::complex<double> sum = 0;
      for (long k = 0; k < n; ++k) sum += std::complex<double>(a[i * n + k]) * std::complex<double>(v[k * ldv + j]);
      worst = std::max(worst, std::abs(sum - static_cast<double>(w[j]) * std::complex<double>(v[i * ldv + j])));
      if (std::abs(v[i * ldv + j]) > largest) {
        largest = std::abs(v[i * ldv + j]);
        top = v[i * ldv + j];
      }
    }
    ASSERT_LE(worst, unit * norm) << "residual of " << j;
    ASSERT_GT(std::real(top), 0) << "sign of " << j;
    if (is_complex<T>) {
      ASSERT_LE(std::abs(std::imag(top)), 4 * std::numeric_limits<Real>::epsilon() * largest);
    }
  }
  for (long i = 0; i < count; ++i) {
    for (long j = 0; j <= i; ++j) {
      std::complex<double> sum = i == j ? -1 : 0;
      for (long k = 0; k < n; ++k) sum += std::complex<double>(conjugate(v[k * ldv + i])) * std::complex<double>(v[k * ldv + j]);
      ASSERT_LE(std::abs(sum), unit) << "orthogonality of " << i << ", " << j;
    }
  }
}

template <class T>
class Symmetric : public ::testing::Test {};
using Elements = ::testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(Symmetric, Elements);

// Every path on every kind of matrix: values, vectors, and both with a range that holds them all.
template <class T>
void all_paths(const std::string& name, long n) {
  SCOPED_TRACE(name + " " + std::to_string(n));
  using Real = typename Form<T>::Real;
  const Matrix<T> a = make<T>(name, n);
  const long lda = n + 3, ldv = n + 2;
  const T poison = element<T>(std::numeric_limits<double>::quiet_NaN(), 0);
  Matrix<T> input(n * lda, poison);  // nothing but the lower triangle may be read
  for (long i = 0; i < n; ++i) std::copy_n(&a[i * n], i + 1, &input[i * lda]);
  const Matrix<T> before = input;
  const double tolerance = 4 * std::sqrt(static_cast<double>(n + 8)) * std::numeric_limits<Real>::epsilon() * norm_of(a, n);

  Real* values = Form<T>::solve(n, input.data(), ZENT_A_COL_DIM, lda);
  ASSERT_NE(values, nullptr);
  ASSERT_EQ(zent_error_code(), 0);
  std::vector<Real> w(n);
  Matrix<T> v(n * ldv, poison);
  ASSERT_EQ(Form<T>::solve(n, input.data(), ZENT_A_COL_DIM, lda, ZENT_RETURN_USER, w.data(), ZENT_VECTORS_USER, v.data(),
                           ZENT_EVECU_COL_DIM, ldv),
            w.data());
  ASSERT_EQ(zent_error_code(), 0);
  check_vectors(a, n, w.data(), v.data(), n, ldv);
  for (long j = 1; j < n; ++j) {
    ASSERT_GE(values[j - 1], values[j]);
    ASSERT_GE(std::abs(w[j - 1]), std::abs(w[j]));
  }
  std::vector<Real> sorted = w;
  std::sort(sorted.rbegin(), sorted.rend());
  for (long j = 0; j < n; ++j) ASSERT_NEAR(sorted[j], values[j], tolerance);

  const Real high = static_cast<Real>(2 * norm_of(a, n)) + std::numeric_limits<Real>::min(), low = -high;
  T* all = nullptr;
  long count = -1;
  Real* in_range = Form<T>::solve(n, input.data(), ZENT_A_COL_DIM, lda, ZENT_RANGE_ADR, &low, &high, ZENT_RETURN_NUMBER, &count,
                                  ZENT_VECTORS, &all);
  ASSERT_NE(in_range, nullptr);
  ASSERT_EQ(zent_error_code(), 0);
  ASSERT_EQ(count, n);
  check_vectors(a, n, in_range, all, n, n, std::is_same_v<Real, float> ? 2 : 1);
  for (long j = 0; j < n; ++j) ASSERT_NEAR(std::abs(in_range[j]), std::abs(w[j]), tolerance);
  Real* range_values =
      Form<T>::solve(n, input.data(), ZENT_A_COL_DIM, lda, ZENT_RANGE_ADR, &low, &high, ZENT_RETURN_NUMBER, &count);
  ASSERT_EQ(count, n);
  EXPECT_TRUE(std::equal(values, values + n, range_values));
  EXPECT_EQ(std::memcmp(before.data(), input.data(), input.size() * sizeof(T)), 0) << "the input is left alone";
  zent_free_allocated_memory(values);
  zent_free_allocated_memory(in_range);
  zent_free_allocated_memory(range_values);
  zent_free_allocated_memory(all);
}

TYPED_TEST(Symmetric, AllPathsOnAllMatrices) {
  be_quiet();
  for (const char* name : {"random", "small", "large", "zero", "diagonal", "identity", "toeplitz", "wilkinson", "graded",
                           "graded_up", "rank_one", "ones", "clustered", "signs", "arrow"}) {
    for (long n : {1, 2, 3, 21, 50}) all_paths<TypeParam>(name, n);
  }
  for (long n : {49, 77, 110}) all_paths<TypeParam>("steep", n);
  for (long n : {31, 32, 33, 48, 49, 50, 63, 64, 65, 81, 97, 130}) all_paths<TypeParam>("random", n);  // around the panels
}

TEST(EigSym, LargeMatrices) {
  be_quiet();
  all_paths<double>("random", 193);
  all_paths<double>("toeplitz", 300);
  all_paths<float>("wilkinson", 151);
}

TYPED_TEST(Symmetric, PublishedValues) {
  be_quiet();
  using T = TypeParam;
  using Real = typename Form<T>::Real;
  const double eps = std::numeric_limits<Real>::epsilon();
  const double rosser[] = {611,  196, -192, 407, -8,  -52,  -49, 29,   196, 899,  113, -192, -71,  -43, -8,   -44,
                           -192, 113, 899,  196, 61,  49,   8,   52,   407, -192, 196, 611,  8,    44,  59,   -23,
                           -8,   -71, 61,   8,   411, -599, 208, 208,  -52, -43,  49,  44,   -599, 411, 208,  208,
                           -49,  -8,  8,    59,  208, 208,  99,  -911, 29,  -44,  52,  -23,  208,  208, -911, 99};
  Matrix<T> a(rosser, rosser + 64);
  Real w[8];
  Form<T>::solve(8, a.data(), ZENT_RETURN_USER, w);
  const double exact[] = {10 * std::sqrt(10405.0),     1020, 510 + 100 * std::sqrt(26.0), 1000, 1000,
                          510 - 100 * std::sqrt(26.0), 0,    -10 * std::sqrt(10405.0)};
  for (int j = 0; j < 8; ++j) EXPECT_NEAR(w[j], exact[j], 4 * eps * 1020);

  const long n = 100;
  a = make<T>("toeplitz", n);
  std::vector<Real> values(n);
  Form<T>::solve(n, a.data(), ZENT_RETURN_USER, values.data());
  for (long j = 0; j < n; ++j) EXPECT_NEAR(values[j], 2 - 2 * std::cos(M_PI * static_cast<double>(n - j) / (n + 1)), 40 * eps);

  a = make<T>("wilkinson", 21);
  Form<T>::solve(21, a.data(), ZENT_RETURN_USER, values.data());
  EXPECT_NEAR(values[0], 10.746194182903393, 80 * eps);
  EXPECT_NEAR(values[1], 10.746194182903322, 80 * eps);
  EXPECT_NEAR(values[20], -1.125441522119985, 80 * eps);
}

TYPED_TEST(Symmetric, RangesAndTheirOrder) {
  be_quiet();
  using T = TypeParam;
  using Real = typename Form<T>::Real;
  Matrix<T> a(25);
  const double diagonal[] = {1, -5, 2, 4, -3};
  for (int i = 0; i < 5; ++i) a[6 * i] = element<T>(diagonal[i], 0);
  const struct {
    Real low, high;
    std::vector<Real> algebraic, magnitude;
  } cases[] = {{-3, 2, {2, 1, -3}, {-3, 2, 1}},
               {Real(-3.5), Real(3.5), {2, 1, -3}, {-3, 2, 1}},
               {5, 6, {}, {}},
               {-5, 4, {4, 2, 1, -3, -5}, {-5, 4, -3, 2, 1}}};
  for (const auto& c : cases) {
    long count = -1;
    T* v = nullptr;
    Real w[5];
    ASSERT_EQ(
        Form<T>::solve(5, a.data(), ZENT_RANGE, double{c.low}, double{c.high}, ZENT_RETURN_NUMBER, &count, ZENT_RETURN_USER, w),
        w);
    EXPECT_EQ(std::vector<Real>(w, w + count), c.algebraic);
    Real* values = Form<T>::solve(5, a.data(), ZENT_RANGE_ADR, &c.low, &c.high, ZENT_RETURN_NUMBER, &count, ZENT_VECTORS, &v);
    ASSERT_NE(values, nullptr);
    EXPECT_EQ(std::vector<Real>(values, values + count), c.magnitude);
    ASSERT_NE(v, nullptr);
    check_vectors(a, 5, values, v, count, count);
    zent_free_allocated_memory(values);
    zent_free_allocated_memory(v);
  }
  // All zeros: the scale of such a matrix is 0, and 0 is in the range or not.
  Matrix<T> zero(9);
  long count = -1;
  Real w[3];
  Form<T>::solve(3, zero.data(), ZENT_RANGE, 0.0, 1.0, ZENT_RETURN_NUMBER, &count, ZENT_RETURN_USER, w);
  EXPECT_EQ(count, 3);
  Form<T>::solve(3, zero.data(), ZENT_RANGE, 0.5, 1.0, ZENT_RETURN_NUMBER, &count, ZENT_RETURN_USER, w);
  EXPECT_EQ(count, 0);
  // Vectors of values that are an end of the range, zero and numbers without a reciprocal among them.
  const Real tiny = std::numeric_limits<Real>::min() / 4;
  for (double corner : {0.0, static_cast<double>(tiny), -3.0}) {
    Matrix<T> small = zero;
    small[0] = element<T>(corner, 0);
    small[4] = element<T>(corner == -3.0 ? -3 : 0, 0);
    for (long n : {1, 3}) {
      T* v = nullptr;
      const Real from = static_cast<Real>(std::min(corner, 0.0)), to = static_cast<Real>(std::max(corner, 0.0)) + tiny;
      Form<T>::solve(n, small.data(), ZENT_RANGE_ADR, &from, &to, ZENT_RETURN_NUMBER, &count, ZENT_RETURN_USER, w, ZENT_VECTORS,
                     &v);
      EXPECT_EQ(count, n) << corner;
      check_vectors(Matrix<T>(small.begin(), small.begin() + n * n), n, w, v, count, count);
      zent_free_allocated_memory(v);
    }
  }
  // Part of a random spectrum, with neighbours on both sides.
  const long n = 60;
  a = make<T>("random", n);
  Real* all = Form<T>::solve(n, a.data());
  const Real low = (all[40] + all[41]) / 2, high = (all[9] + all[10]) / 2;
  T* v = nullptr;
  Real* some = Form<T>::solve(n, a.data(), ZENT_RANGE_ADR, &low, &high, ZENT_RETURN_NUMBER, &count, ZENT_VECTORS, &v);
  EXPECT_EQ(count, 31);
  check_vectors(a, n, some, v, count, count, 2);
  zent_free_allocated_memory(all);
  zent_free_allocated_memory(some);
  zent_free_allocated_memory(v);
}

TEST(EigSym, LeavesTheStreamAlone) {
  be_quiet();
  Matrix<double> a = make<double>("random", 20);
  double drawn[2][5], *vectors[2];
  zent_random_option(2);  // with a shuffle table, which belongs to the stream
  for (int pass = 0; pass < 2; ++pass) {
    double table[128] = {0};
    zent_drnses(table);
    zent_random_seed_set(777);
    zent_drnun(3, drawn[pass]);
    if (pass == 1) {
      for (double*& v : vectors)
        zent_free_allocated_memory(zent_d_eig_sym(20, a.data(), ZENT_RANGE, -1.0, 1.0, ZENT_VECTORS, &v, 0));
    }
    zent_drnun(5, drawn[pass]);
  }
  zent_random_option(1);
  EXPECT_EQ(std::memcmp(drawn[0], drawn[1], sizeof drawn[0]), 0);
  EXPECT_EQ(std::memcmp(vectors[0], vectors[1], 20 * sizeof(double)), 0) << "the same start vectors each time";
  for (double* v : vectors) zent_free_allocated_memory(v);
}

TYPED_TEST(Symmetric, NotANumberEnds) {
  be_quiet();
  using T = TypeParam;
  using Real = typename Form<T>::Real;
  for (double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    Matrix<T> a = make<T>("random", 30);
    a[20 * 30 + 7] = element<T>(bad, 0);
    Real w[30] = {};
    Matrix<T> v(900);
    Form<T>::solve(30, a.data(), ZENT_RETURN_USER, w);
    EXPECT_EQ(zent_error_code(), MATH_SLOW_CONVERGENCE_SYM);
    EXPECT_EQ(zent_error_type(), 3);
    EXPECT_TRUE(std::all_of(w, w + 30, [](Real x) { return std::isnan(x); }));
    std::fill_n(w, 30, Real(0));
    Form<T>::solve(30, a.data(), ZENT_RETURN_USER, w, ZENT_VECTORS_USER, v.data());
    EXPECT_TRUE(std::isnan(w[0]) && std::isnan(std::real(v[899])));
    long count = -1;
    T* some = nullptr;
    Real* values = Form<T>::solve(30, a.data(), ZENT_RANGE, -1.0, 1.0, ZENT_RETURN_NUMBER, &count, ZENT_VECTORS, &some);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(zent_error_code(), MATH_SLOW_CONVERGENCE_SYM);
    zent_free_allocated_memory(values);
    zent_free_allocated_memory(some);
  }
}

TYPED_TEST(Symmetric, BadArguments) {
  be_quiet();
  using T = TypeParam;
  Matrix<T> a = make<T>("random", 3);
  T* v = a.data();
  T* const none = nullptr;
  const auto code = [](const void* result) {
    EXPECT_EQ(result, nullptr);
    return zent_error_code();
  };
  EXPECT_EQ(code(Form<T>::solve(3, a.data(), 99999)), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(code(Form<T>::solve(0, none, 99999)), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(code(Form<T>::solve(3, a.data(), ZENT_B_COL_DIM, 3)), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(code(Form<T>::solve(0, none)), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(code(Form<T>::solve(0, a.data(), ZENT_VECTORS_USER, none)), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(code(Form<T>::solve(3, a.data(), ZENT_VECTORS, static_cast<T**>(nullptr))), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(code(Form<T>::solve(0, a.data())), MATH_NEGATIVE_ORDER);
  EXPECT_EQ(code(Form<T>::solve(3, a.data(), ZENT_A_COL_DIM, 2)), MATH_COL_DIM_LESS_ORDER);
  EXPECT_EQ(code(Form<T>::solve(3, a.data(), ZENT_VECTORS_USER, a.data(), ZENT_EVECU_COL_DIM, 2)), MATH_COL_DIM_LESS_ORDER);
  EXPECT_EQ(code(Form<T>::solve(3, a.data(), ZENT_RANGE, 0.0, 1.0, ZENT_VECTORS_USER, a.data())), MATH_USE_MATH_VECTORS_OPTION);
  EXPECT_EQ(code(Form<T>::solve(3, a.data(), ZENT_RANGE, 1.0, 1.0)), MATH_NEED_ELOW_LESS_THAN_EHIGH);
  EXPECT_EQ(code(Form<T>::solve(3, a.data(), ZENT_RANGE, 1.0, std::nan(""), ZENT_VECTORS, &v)), MATH_NEED_ELOW_LESS_THAN_EHIGH);
  EXPECT_EQ(v, nullptr);
  if (is_complex<T>) {
    a[4] = element<T>(1, 0.5);
    EXPECT_EQ(code(Form<T>::solve(3, a.data(), ZENT_VECTORS, &v)), MATH_HERMITIAN_DIAG_REAL);
    EXPECT_EQ(zent_error_type(), 4);
  }
}

TEST(EigSymStat, DecreasingValuesWithVectors) {
  be_quiet();
  const long n = 12, ld = 15;
  const Matrix<double> a = make<double>("random", n);
  Matrix<double> input(n * ld, std::numeric_limits<double>::quiet_NaN());  // column-major, upper triangle
  for (long j = 0; j < n; ++j) std::copy_n(&a[j * n], j + 1, &input[j * ld]);
  std::vector<double> w(n), v(n * n);
  zents_de5csf(n, input.data(), ld, w.data(), input.data(), ld);
  EXPECT_EQ(zents_error_code(), 0);
  EXPECT_TRUE(std::is_sorted(w.rbegin(), w.rend()));
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < n; ++i) v[i * n + j] = input[i + j * ld];
  }
  check_vectors(a, n, w.data(), v.data(), n, n);
  const float bad[] = {std::numeric_limits<float>::quiet_NaN()};
  float value, vector;
  zents_e5csf(1, bad, 1, &value, &vector, 1);
  EXPECT_EQ(zents_error_code(), STAT_FAILED_TO_CONVERGE);
  EXPECT_EQ(zents_error_type(), 4);
}

}  // namespace
