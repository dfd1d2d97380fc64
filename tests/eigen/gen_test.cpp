// Eigenvalues and eigenvectors of general matrices.
#include <gtest/gtest.h>

#include "tests/eigen/gen_matrices.hpp"

namespace {

using namespace general;

template <class T>
class GeneralEigen : public testing::Test {
 protected:
  using Real = RealOf<T>;
  using C = Cx<Real>;
  void SetUp() override {
    be_quiet();
  }
  static vector<C> values(const Matrix<T>& m) {
    vector<C> w(m.n);
    EXPECT_EQ(Form<T>::eig(m.n, m.a.data(), ZENT_RETURN_USER, w.data(), 0), w.data());
    EXPECT_EQ(zent_error_code(), 0);
    return w;
  }
  // Both paths, their orders and residuals, and that the values of the first belong to the matrix: as many as those of the second
  // in number, sum and magnitude.
  static void expect_right(const Matrix<T>& m, const std::string& what) {
    SCOPED_TRACE(what);
    const long n = m.n;
    vector<C> v(n * n), w(n);
    const Matrix<T> copy = m;
    ASSERT_EQ(Form<T>::eig(n, m.a.data(), ZENT_VECTORS_USER, v.data(), ZENT_RETURN_USER, w.data(), 0), w.data());
    EXPECT_EQ(zent_error_code(), 0);
    EXPECT_TRUE(copy.a == m.a);
    EXPECT_LE(residual<T>(m, nullptr, w, vector<Real>(n, 1), v.data(), n), 10 * eps<T> * std::max<double>(4, std::sqrt(n)));
    expect_normalized(n, v.data(), n);
    const vector<C> alone = values(m);
    for (const vector<C>* list : {static_cast<const vector<C>*>(&w), &alone}) {
      complex<double> sum = 0, trace = 0;
      for (long k = 0; k < n; ++k) {
        const C x = (*list)[k];
        sum += complex<double>(x);
        trace += complex<double>(m(k, k));
        if (k + 1 < n) {
          EXPECT_GE(std::abs(x) * (1 + 2 * eps<T>), std::abs((*list)[k + 1])) << k;
        }
        if (std::is_floating_point_v<T> && x.imag() > 0) {
          ASSERT_LT(k + 1, n);
          EXPECT_EQ((*list)[k + 1], std::conj(x)) << k;
          ++k;
          sum += complex<double>((*list)[k]);
          trace += complex<double>(m(k, k));
        } else if (std::is_floating_point_v<T>) {
          EXPECT_EQ(x.imag(), 0) << k;
        }
      }
      EXPECT_LE(std::abs(sum - trace), 40 * n * eps<T> * m.norm());
    }
  }
};
using Elements = testing::Types<float, double, complex<float>, complex<double>>;
TYPED_TEST_SUITE(GeneralEigen, Elements);

TYPED_TEST(GeneralEigen, ResidualsOfAllKinds) {
  for (const char* name : {"random", "zero", "identity", "jordan", "turned jordan", "frank", "grcar", "companion", "cyclic",
                           "toeplitz", "graded", "triangular", "permuted triangular", "clustered"}) {
    for (long n : {1, 2, 3, 4, 7, 12, 33, 70}) {
      this->expect_right(named<TypeParam>(name, n), std::string(name) + " " + std::to_string(n));
    }
  }
  this->expect_right(rosser<TypeParam>(), "rosser");
  this->expect_right(random_matrix<TypeParam>(200), "random 200");
}

TYPED_TEST(GeneralEigen, ScaledMatrices) {
  const int exponent = sizeof(typename TestFixture::Real) == 4 ? 15 : 150;
  for (int sign : {-1, 1}) {
    auto m = random_matrix<TypeParam>(20, 9);
    for (auto& x : m.a) x *= static_cast<typename TestFixture::Real>(std::pow(10.0, sign * exponent));
    this->expect_right(m, "scaled by 10^" + std::to_string(sign * exponent));
  }
}

// At the ends of the exponent range, where a factor that brings the matrix to 1 need not be a number: the values of a matrix of
// integers times a power of two. Denormal multiples of integers are exact.
TYPED_TEST(GeneralEigen, EndsOfTheExponentRange) {
  using T = TypeParam;
  using Real = typename TestFixture::Real;
  const Real least = std::numeric_limits<Real>::denorm_min(), most = std::numeric_limits<Real>::max() / 16;
  for (Real unit : {least, 64 * least, std::numeric_limits<Real>::min(), most}) {
    Matrix<T> m(3);  // (4, 1; 3, 2) has the values 5 and 1
    const int elements[] = {4, 1, 0, 3, 2, 0, 0, 0, -7};
    for (int i = 0; i < 9; ++i) m.a[i] = element<T>(static_cast<double>(unit) * elements[i], 0);
    vector<typename TestFixture::C> alone = this->values(m), w(3), v(9);
    Form<T>::eig(3, m.a.data(), ZENT_VECTORS_USER, v.data(), ZENT_RETURN_USER, w.data(), 0);
    EXPECT_EQ(zent_error_code(), 0);
    expect_normalized(3, v.data(), 3);
    for (auto* list : {&alone, &w}) {
      for (auto [k, value] : {std::pair{0, -7.0}, {1, 5.0}, {2, 1.0}}) {
        EXPECT_NEAR((*list)[k].real() / unit, value, 40 * eps<T>) << unit;
      }
    }
  }
}

// D M inverse of D with rows far apart: balancing finds M again, far below the size of the matrix. Beyond the exponent range
// elements vanish, but results there are.
TYPED_TEST(GeneralEigen, GradedBeyondTheRangeOfSquares) {
  using T = TypeParam;
  const bool single = sizeof(typename TestFixture::Real) == 4;
  const auto graded = [](double step) {
    return fill<T>(3, [step](long i, long j) {
      return (i == j ? 3 - 2.0 * static_cast<double>(i) : 0.5) * std::pow(10.0, step * static_cast<double>(i - j));
    });
  };
  const auto expected = this->values(graded(0));
  for (double step : {single ? 9.3 : 76.8, single ? 12.0 : 100.0}) {
    const bool whole = step == 9.3 || step == 76.8;
    const auto m = graded(step);
    const auto found = this->values(m);
    vector<typename TestFixture::C> w(3), v(9);
    EXPECT_NE(Form<T>::eig(3, m.a.data(), ZENT_VECTORS_USER, v.data(), ZENT_RETURN_USER, w.data(), 0), nullptr) << step;
    expect_normalized(3, v.data(), 3);
    expect_same_values(w, found, 100 * eps<T>);
    if (whole) expect_same_values(found, expected, 100 * eps<T>);
  }
}

TYPED_TEST(GeneralEigen, KnownValues) {
  using T = TypeParam;
  // Rosser: 10 sqrt(10405), 510 +- 100 sqrt(26), 1000 twice, 1020 and 0 among them.
  const double r = 10 * std::sqrt(10405.0), s = 100 * std::sqrt(26.0);
  expect_same_values(this->values(rosser<T>()), vector<double>{r, -r, 510 + s, 510 - s, 1000, 1000, 1020, 0},
                     300 * eps<T> * 1020);
  // Tridiagonal Toeplitz: 1 + 2 sqrt(2 / 2) cos.
  const long n = 25;
  vector<double> cosines(n);
  for (long k = 0; k < n; ++k) cosines[k] = 1 + 2 * std::cos((k + 1) * std::acos(-1.0) / (n + 1));
  expect_same_values(this->values(named<T>("toeplitz", n)), cosines, 1000 * eps<T>);
  // Roots of unity.
  vector<complex<double>> roots;
  for (long k = 0; k < n; ++k) roots.push_back(std::polar(1.0, 2 * std::acos(-1.0) * k / n));
  expect_same_values(this->values(named<T>("cyclic", n)), roots, 100 * eps<T>);
  // A triangle that is only permuted: the diagonal, to the last bit.
  const auto triangle = named<T>("permuted triangular", 60);
  vector<T> diagonal;
  for (long i = 0; i < 60; ++i) diagonal.push_back(triangle(i, i));
  expect_same_values(this->values(triangle), diagonal, 0);
  // Frank of order 12: values in reciprocal pairs, determinant 1.
  const auto frank_values = this->values(named<T>("frank", 12));
  EXPECT_NEAR(std::abs(frank_values[0]), 32.2288915015722, 2e4 * eps<T>);
}

TYPED_TEST(GeneralEigen, SmallCases) {
  using T = TypeParam;
  using C = typename TestFixture::C;
  const T one[] = {element<T>(-3, 4)};
  C v[4];
  C* w = Form<T>::eig(1, one, ZENT_VECTORS_USER, v, 0);
  ASSERT_NE(w, nullptr);
  EXPECT_EQ(w[0], C(one[0]));
  EXPECT_EQ(v[0], C(1));
  zent_free_allocated_memory(w);
  const T turn[] = {element<T>(0, 0), element<T>(-1, 0), element<T>(1, 0), element<T>(0, 0)};
  C* vectors = nullptr;
  w = Form<T>::eig(2, turn, ZENT_VECTORS, &vectors, 0);
  ASSERT_NE(w, nullptr);
  ASSERT_NE(vectors, nullptr);
  EXPECT_LE(std::abs(w[0].real()), eps<T>);
  EXPECT_NEAR(std::abs(w[0].imag()), 1, 2 * eps<T>);
  if (std::is_floating_point_v<T>) {
    EXPECT_GT(w[0].imag(), 0);
  }
  EXPECT_LE(std::abs(w[0] + w[1]), 4 * eps<T>);
  zent_free_allocated_memory(w);
  zent_free_allocated_memory(vectors);
  // Values of equal magnitude and both signs.
  const T swap[] = {element<T>(0, 0), element<T>(5, 0), element<T>(5, 0), element<T>(0, 0)};
  Matrix<T> m(2);
  std::copy(swap, swap + 4, m.a.begin());
  expect_same_values(this->values(m), vector<double>{5, -5}, 20 * eps<T>);
  if (std::is_floating_point_v<T>) {
    C two[2];
    Form<T>::eig(2, swap, ZENT_RETURN_USER, two, ZENT_VECTORS_USER, v, 0);
    for (const C& x : v) EXPECT_FALSE(std::signbit(x.imag())) << "a real vector has no negative zeros";
  }
}

TYPED_TEST(GeneralEigen, ColumnDimensionsAndVectorsOfEachKind) {
  using T = TypeParam;
  using C = typename TestFixture::C;
  const long n = 5, lda = 8, ldv = 7;
  const auto m = random_matrix<T>(n, 4);
  vector<T> wide(n * lda, element<T>(99, 0));
  for (long i = 0; i < n; ++i)
    for (long j = 0; j < n; ++j) wide[i * lda + j] = m(i, j);
  vector<C> plain(n * n), v(n * ldv, C(7)), w(n);
  Form<T>::eig(n, m.a.data(), ZENT_VECTORS_USER, plain.data(), ZENT_RETURN_USER, w.data(), 0);
  Form<T>::eig(n, wide.data(), ZENT_A_COL_DIM, lda, ZENT_EVECU_COL_DIM, ldv, ZENT_VECTORS_USER, v.data(), ZENT_RETURN_USER,
               w.data(), 0);
  for (long i = 0; i < n; ++i) {
    for (long j = 0; j < ldv; ++j) EXPECT_EQ(v[i * ldv + j], j < n ? plain[i * n + j] : C(7));
  }
}

TYPED_TEST(GeneralEigen, NotFiniteInputEnds) {
  using T = TypeParam;
  using C = typename TestFixture::C;
  for (double bad : {std::nan(""), HUGE_VAL}) {
    auto m = random_matrix<T>(30);
    m(7, 3) = element<T>(bad, 0);
    vector<C> v(30 * 30), w(30);
    Form<T>::eig(30, m.a.data(), ZENT_RETURN_USER, w.data(), 0);
    for (const C& x : w) EXPECT_TRUE(std::isnan(x.real()));
    Form<T>::eig(30, m.a.data(), ZENT_VECTORS_USER, v.data(), ZENT_RETURN_USER, w.data(), 0);
    EXPECT_TRUE(std::isnan(w[0].real()) && std::isnan(v[899].imag()));
  }
}

TYPED_TEST(GeneralEigen, Refusals) {
  using T = TypeParam;
  using C = typename TestFixture::C;
  const auto m = random_matrix<T>(3);
  const T* a = m.a.data();
  C* vectors = reinterpret_cast<C*>(&vectors);
  EXPECT_EQ(Form<T>::eig(3, a, 12345, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(Form<T>::eig(3, a, ZENT_B_COL_DIM, 3, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_UNKNOWN_OPTION);
  const T* const none = nullptr;
  EXPECT_EQ(Form<T>::eig(0, none, 12345, 0), nullptr);  // of several faults the first
  EXPECT_EQ(zent_error_code(), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(Form<T>::eig(0, none, ZENT_VECTORS_USER, static_cast<C*>(nullptr), 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(Form<T>::eig(0, a, ZENT_VECTORS_USER, static_cast<C*>(nullptr), 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(Form<T>::eig(3, a, ZENT_EVECU_COL_DIM, 2, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_COL_DIM_LESS_ORDER);
  EXPECT_EQ(Form<T>::eig(3, none, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(Form<T>::eig(3, a, ZENT_VECTORS_USER, static_cast<C*>(nullptr), 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(Form<T>::eig(0, a, ZENT_VECTORS, &vectors, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_NEGATIVE_ORDER);
  EXPECT_EQ(vectors, nullptr);
  EXPECT_EQ(Form<T>::eig(3, a, ZENT_A_COL_DIM, 2, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_COL_DIM_LESS_ORDER);
  EXPECT_EQ(Form<T>::eig(3, a, ZENT_VECTORS, &vectors, ZENT_EVECU_COL_DIM, 2, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_COL_DIM_LESS_ORDER);
}

}  // namespace
