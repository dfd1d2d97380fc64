// The condition estimates against LINPACK's algorithm written out element by element in long double, on the factors that the
// library gives; and the sizes where the pivot search passes from one chunk to the next.
#include <gtest/gtest.h>

#include "tests/dense/forms.hpp"

namespace {

long double size(Long x) {
  return std::abs(x.real()) + std::abs(x.imag());
}

// The vector that the estimate works on.
struct Estimate {
  std::vector<Long> w;
  long double ynorm = 1;

  explicit Estimate(long n) : w(static_cast<std::size_t>(n)) {}
  long order() const {
    return static_cast<long>(w.size());
  }
  void scale(long double factor) {
    for (Long& x : w) x *= factor;
    ynorm *= factor;
  }
  void normalise() {
    long double sum = 0;
    for (Long x : w) sum += size(x);
    scale(1 / sum);
  }
  void bound(long k, long double limit) {
    if (size(w[k]) > limit) scale(limit / size(w[k]));
  }
  template <class Upper>
  void grow(Upper u) {
    Long ek = 1;
    for (long j = 0; j < order(); ++j) {
      if (size(w[j]) != 0) ek = -size(ek) / size(w[j]) * w[j];
      if (size(ek - w[j]) > size(u(j, j))) {
        const long double ratio = size(u(j, j)) / size(ek - w[j]);
        scale(ratio);
        ek *= ratio;
      }
      Long plus = ek - w[j], minus = -ek - w[j];
      long double s = size(plus), sm = size(minus);
      plus = size(u(j, j)) == 0 ? 1 : plus / std::conj(u(j, j));
      minus = size(u(j, j)) == 0 ? 1 : minus / std::conj(u(j, j));
      for (long k = j + 1; k < order(); ++k) {
        sm += size(w[k] + minus * std::conj(u(j, k)));
        w[k] += plus * std::conj(u(j, k));
        s += size(w[k]);
      }
      for (long k = j + 1; s < sm && k < order(); ++k) w[k] += (minus - plus) * std::conj(u(j, k));
      w[j] = s < sm ? minus : plus;
    }
  }
  template <class Upper>
  void solve(Upper u) {
    for (long k = order() - 1; k >= 0; --k) {
      bound(k, size(u(k, k)));
      w[k] = size(u(k, k)) == 0 ? 1 : w[k] / u(k, k);
      for (long i = 0; i < k; ++i) w[i] -= w[k] * u(i, k);
    }
  }
  template <class Upper>
  void solve_transposed(Upper u) {
    for (long k = 0; k < order(); ++k) {
      for (long i = 0; i < k; ++i) w[k] -= std::conj(u(i, k)) * w[i];
      bound(k, size(u(k, k)));
      w[k] /= std::conj(u(k, k));
    }
  }
};

template <class T>
long double column_norm(const Matrix<T>& a) {
  long double norm = 0;
  for (long j = 0; j < a.n; ++j) {
    long double sum = 0;
    for (long i = 0; i < a.n; ++i) sum += size(a.at(i, j));
    norm = std::max(norm, sum);
  }
  return norm;
}

template <class T>
double general_condition(const Matrix<T>& a, const Matrix<T>& factor, const std::vector<long>& pvt) {
  const auto u = [&](long i, long j) { return factor.at(i, j); };
  Estimate e(a.n);
  e.grow(u);
  e.normalise();
  for (long k = a.n - 1; k >= 0; --k) {
    for (long i = k + 1; i < a.n; ++i) e.w[k] += std::conj(factor.at(i, k)) * e.w[i];
    e.bound(k, 1);
    std::swap(e.w[k], e.w[pvt[k] - 1]);
  }
  e.normalise();
  e.ynorm = 1;
  for (long k = 0; k < a.n; ++k) {
    std::swap(e.w[k], e.w[pvt[k] - 1]);
    for (long i = k + 1; i < a.n; ++i) e.w[i] += e.w[k] * factor.at(i, k);
    e.bound(k, 1);
  }
  e.normalise();
  e.solve(u);
  e.normalise();
  return static_cast<double>(column_norm(a) / e.ynorm);
}

template <class T>
double definite_condition(const Matrix<T>& a, const Matrix<T>& factor) {
  const auto r = [&](long i, long j) { return factor.at(j, i); };  // the kernels see the transpose
  Estimate e(a.n);
  e.grow(r);
  e.normalise();
  e.solve(r);
  e.normalise();
  e.ynorm = 1;
  e.solve_transposed(r);
  e.normalise();
  e.solve(r);
  e.normalise();
  return static_cast<double>(column_norm(a) / e.ynorm);
}

template <class T>
class DenseEstimate : public ::testing::Test {};
using Elements = ::testing::Types<float, double, zent_f_complex, zent_d_complex>;
TYPED_TEST_SUITE(DenseEstimate, Elements);

TYPED_TEST(DenseEstimate, IsLinpacks) {
  using T = TypeParam;
  be_quiet();
  for (long n : {1, 2, 8, 31, 32, 33, 65, 129}) {
    const double limit = 100 * epsilon<T> * static_cast<double>(n);
    RealOf<T> condition = 0;
    for (Kind kind : {uniform, wilkinson}) {
      Matrix<T> a = make<T>(kind, n), factor(n);
      std::vector<long> pvt(n);
      Form<T>::general(n, a.get(), nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, pvt.data(), factor.get(), ZENT_CONDITION,
                       &condition, 0);
      EXPECT_NEAR(condition / general_condition(a, factor, pvt), 1, limit * (1 + condition / 100)) << n << " kind " << kind;
    }
    for (bool grade : {false, true}) {
      Matrix<T> a = make_definite<T>(n, 0, grade), factor(n);
      Form<T>::definite(n, a.get(), nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, factor.get(), ZENT_CONDITION, &condition, 0);
      EXPECT_NEAR(condition / definite_condition(a, factor), 1, limit) << n << " graded " << grade;
    }
  }
}

TEST(DenseSizes, PivotsBeyondTheFirstChunk) {
  be_quiet();
  for (long n : {400, 401, 402}) {
    Matrix<double> a = make<double>(uniform, n), inverse(n), factor(n);
    std::vector<double> b = random_vector<double>(n, 4);
    std::vector<long> pvt(n);
    for (bool transpose : {false, true}) {
      double* x = zent_d_lin_sol_gen(n, a.get(), b.data(), ZENT_INVERSE_USER, inverse.get(), transpose ? ZENT_TRANSPOSE : 0, 0);
      ASSERT_NE(x, nullptr);
      EXPECT_LT(backward_error(a, x, b, transpose), 30 * epsilon<double> * static_cast<double>(n));
      zent_free_allocated_memory(x);
    }
    EXPECT_LT(inverse_error(a, inverse), 30 * epsilon<double> * static_cast<double>(n));
    // The largest element of column 0 in the last row; then one as large before it, which is the one to take.
    for (long i = 0; i < n; ++i) {
      for (long j = 0; j < n; ++j) a(i, j) = i == j ? 4 : 0;
      a(i, n - 1) = 4;
      a(i, 0) = 1;
    }
    a(n - 1, 0) = a(n - 1, n - 1) = 2;
    const auto pivot = [&] {
      zent_d_lin_sol_gen(n, a.get(), nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, pvt.data(), factor.get(), 0);
      return pvt[0];
    };
    EXPECT_EQ(pivot(), n);
    a(n / 2, 0) = 4;
    EXPECT_EQ(pivot(), n / 2 + 1);
  }
}

}  // namespace
