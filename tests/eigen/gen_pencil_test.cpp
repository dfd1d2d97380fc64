// Eigenvalues and eigenvectors of general pencils.
#include <gtest/gtest.h>

#include "tests/eigen/gen_matrices.hpp"

namespace {

using namespace general;

template <class T>
class GeneralPencil : public testing::Test {
 protected:
  using Real = RealOf<T>;
  using C = Cx<Real>;
  vector<C> alpha;
  vector<Real> beta;
  vector<C> v;

  void SetUp() override {
    be_quiet();
  }
  void solve(const Matrix<T>& a, const Matrix<T>& b) {
    const long n = a.n;
    alpha.assign(n, C(99));
    beta.assign(n, 99);
    v.assign(n * n, C(99));
    Form<T>::geneig(n, a.a.data(), b.a.data(), alpha.data(), beta.data(), ZENT_VECTORS_USER, v.data(), 0);
    EXPECT_EQ(zent_error_code(), 0);
    for (Real x : beta) EXPECT_GE(x, 0);
  }
  void expect_right(const Matrix<T>& a, const Matrix<T>& b, const std::string& what) {
    SCOPED_TRACE(what);
    solve(a, b);
    EXPECT_LE(residual<T>(a, &b, alpha, beta, v.data(), a.n), 10 * eps<T> * std::max<double>(4, std::sqrt(a.n)));
    expect_normalized(a.n, v.data(), a.n);
    for (long k = 0; std::is_floating_point_v<T> && k < a.n; ++k) {
      if (alpha[k].imag() == 0) continue;
      EXPECT_GT(alpha[k].imag(), 0);
      ASSERT_LT(k + 1, a.n);
      EXPECT_EQ(alpha[k + 1], std::conj(alpha[k]));
      EXPECT_EQ(beta[k + 1], beta[k]);
      ++k;
    }
    // Values alone are the same ones.
    vector<C> other(a.n);
    vector<Real> weights(a.n);
    Form<T>::geneig(a.n, a.a.data(), b.a.data(), other.data(), weights.data(), 0);
    for (long k = 0; k < a.n; ++k) {
      EXPECT_EQ(other[k], alpha[k]);
      EXPECT_EQ(weights[k], beta[k]);
    }
  }
  vector<complex<double>> finite_values() const {
    vector<complex<double>> w;
    for (unsigned long k = 0; k < alpha.size(); ++k) {
      if (beta[k] != 0) w.push_back(complex<double>(alpha[k]) / static_cast<double>(beta[k]));
    }
    return w;
  }
};
using Elements = testing::Types<float, double, complex<float>, complex<double>>;
TYPED_TEST_SUITE(GeneralPencil, Elements);

TYPED_TEST(GeneralPencil, Residuals) {
  using T = TypeParam;
  for (const char* first :
       {"random", "frank", "jordan", "grcar", "companion", "cyclic", "graded", "permuted triangular", "zero"}) {
    for (const char* second : {"random", "identity", "toeplitz", "triangular"}) {
      for (long n : {1, 2, 3, 5, 12, 40}) {
        auto b = named<T>(second, n);
        if (std::string(second) == "random") b = random_matrix<T>(n, 77);
        this->expect_right(named<T>(first, n), b, std::string(first) + ", " + second + " " + std::to_string(n));
      }
    }
  }
  this->expect_right(random_matrix<T>(120), random_matrix<T>(120, 2), "random 120");
}

TYPED_TEST(GeneralPencil, ScaledPencils) {
  const int exponent = sizeof(typename TestFixture::Real) == 4 ? 15 : 150;
  for (int sign : {-1, 1}) {
    auto a = random_matrix<TypeParam>(15, 9), b = random_matrix<TypeParam>(15, 10);
    for (auto& x : a.a) x *= static_cast<typename TestFixture::Real>(std::pow(10.0, sign * exponent));
    this->solve(a, b);
    const auto scaled = this->finite_values();
    this->solve(random_matrix<TypeParam>(15, 9), b);
    auto plain = this->finite_values();
    for (auto& x : plain) x *= std::pow(10.0, sign * exponent);
    expect_same_values(scaled, plain, 1e5 * eps<TypeParam> * std::pow(10.0, sign * exponent));
  }
}

TYPED_TEST(GeneralPencil, KnownValues) {
  using T = TypeParam;
  // lambda = a_kk / b_kk of triangles, mixed by one rotation from each side.
  const long n = 6;
  Matrix<T> a = fill<T>(n, [](long i, long j) { return j < i ? 0 : j == i ? i + 1.0 : 0.5; });
  Matrix<T> b = fill<T>(n, [](long i, long j) { return j < i ? 0 : j == i ? 2.0 : 0.25; });
  for (Matrix<T>* m : {&a, &b}) {
    for (long k = 0; k + 1 < n; ++k) {
      for (long j = 0; j < n; ++j) {
        const T u = (*m)(k, j), w = (*m)(k + 1, j);
        (*m)(k, j) = element<T>(0.6, 0) * u + element<T>(0.8, 0) * w;
        (*m)(k + 1, j) = element<T>(0.6, 0) * w - element<T>(0.8, 0) * u;
      }
    }
  }
  this->solve(a, b);
  expect_same_values(this->finite_values(), vector<double>{0.5, 1, 1.5, 2, 2.5, 3}, 1000 * eps<T>);
}

TYPED_TEST(GeneralPencil, InfiniteValues) {
  using T = TypeParam;
  for (long n : {1, 2, 3, 6, 20}) {
    for (long rank = 0; rank < n;
         rank += n / 5 + 1) {  // B = product of n by rank and rank by n: n - rank or more infinite values
      const auto a = random_matrix<T>(n, 3), left = random_matrix<T>(n, 4), right = random_matrix<T>(n, 5);
      Matrix<T> b(n);
      for (long i = 0; i < n; ++i)
        for (long j = 0; j < n; ++j)
          for (long k = 0; k < rank; ++k) b(i, j) += left(i, k) * right(k, j);
      this->expect_right(a, b, "rank " + std::to_string(rank) + " of " + std::to_string(n));
      long infinite = 0;
      for (long k = 0; k < n; ++k) infinite += this->beta[k] <= 100 * eps<T> * std::abs(this->alpha[k]);  // B is rounded
      EXPECT_EQ(infinite, n - rank) << n << " " << rank;
    }
  }
  // A diagonal zero of B at every place, with the other values known.
  for (long at = 0; at < 4; ++at) {
    Matrix<T> a = fill<T>(4, [](long i, long j) { return i == j ? i + 2.0 : 0; });
    Matrix<T> b = fill<T>(4, [at](long i, long j) { return i == j && i != at; });
    this->solve(a, b);
    vector<double> expected;
    for (long i = 0; i < 4; ++i)
      if (i != at) expected.push_back(i + 2.0);
    expect_same_values(this->finite_values(), expected, 20 * eps<T>);
  }
}

TYPED_TEST(GeneralPencil, SingularPencilsAndNotFiniteInputEnd) {
  using T = TypeParam;
  Matrix<T> a = fill<T>(3, [](long i, long j) { return i == j && i != 1; });
  this->solve(a, a);
  long undetermined = 0;
  for (long k = 0; k < 3; ++k) undetermined += this->beta[k] == 0 && this->alpha[k] == typename TestFixture::C(0);
  EXPECT_EQ(undetermined, 1);
  this->solve(Matrix<T>(5), Matrix<T>(5));
  for (long k = 0; k < 5; ++k) EXPECT_TRUE(this->beta[k] == 0 && this->alpha[k] == typename TestFixture::C(0));
  for (int which : {0, 1}) {
    auto m = random_matrix<T>(10), b = random_matrix<T>(10, 2);
    (which == 0 ? m : b)(3, 4) = element<T>(std::nan(""), 0);
    vector<typename TestFixture::C> alpha(10);
    vector<typename TestFixture::Real> beta(10);
    Form<T>::geneig(10, m.a.data(), b.a.data(), alpha.data(), beta.data(), 0);
    EXPECT_TRUE(std::isnan(beta[0]) && std::isnan(alpha[9].real()));
  }
}

TYPED_TEST(GeneralPencil, OptionsAndRefusals) {
  using T = TypeParam;
  using C = typename TestFixture::C;
  const auto a = random_matrix<T>(3), b = random_matrix<T>(3, 2);
  vector<C> alpha(3);
  vector<typename TestFixture::Real> beta(3);
  C* vectors = nullptr;
  int ignored = 0;
  Form<T>::geneig(3, a.a.data(), b.a.data(), alpha.data(), beta.data(), ZENT_GENEIG_OPTION, &ignored, ZENT_VECTORS, &vectors, 0);
  ASSERT_NE(vectors, nullptr);
  expect_normalized(3, vectors, 3);
  zent_free_allocated_memory(vectors);
  const auto error = [&](const T* p, const T* q, C* x, auto* y, auto... more) {
    Form<T>::geneig(3, p, q, x, y, more...);
    return zent_error_code();
  };
  const T* none = nullptr;
  EXPECT_EQ(error(none, b.a.data(), alpha.data(), beta.data(), 0), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(error(a.a.data(), none, alpha.data(), beta.data(), 0), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(error(a.a.data(), b.a.data(), static_cast<C*>(nullptr), beta.data(), 0), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(error(a.a.data(), b.a.data(), alpha.data(), decltype(beta.data())(nullptr), 0), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(error(a.a.data(), b.a.data(), alpha.data(), beta.data(), ZENT_RETURN_USER, alpha.data(), 0), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(error(a.a.data(), b.a.data(), alpha.data(), beta.data(), ZENT_B_COL_DIM, 2, 0), MATH_COL_DIM_LESS_ORDER);
}

}  // namespace
