// Test matrices for general eigenproblems, and the calls of all forms behind one name.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "tests/support/quiet.hpp"
#include "zent.h"

namespace general {

using std::complex;
using std::vector;

template <class T>
struct Form;
template <class R>
using Cx = complex<R>;

#define FORM(P, Element, Native, RealType, Record)                                                              \
  template <>                                                                                                   \
  struct Form<Element> {                                                                                        \
    using Real = RealType;                                                                                      \
    template <class... More>                                                                                    \
    static Cx<Real>* eig(long n, const Element* a, More... more) {                                              \
      return reinterpret_cast<Cx<Real>*>(zent_##P##_eig_gen(n, (Native*)a, more...));                           \
    }                                                                                                           \
    template <class... More>                                                                                    \
    static void geneig(long n, const Element* a, const Element* b, Cx<Real>* alpha, Real* beta, More... more) { \
      zent_##P##_geneig(n, (Native*)a, (Native*)b, reinterpret_cast<Record*>(alpha), beta, more...);            \
    }                                                                                                           \
  };
FORM(f, float, float, float, zent_f_complex)
FORM(d, double, double, double, zent_d_complex)
FORM(c, complex<float>, zent_f_complex, float, zent_f_complex)
FORM(z, complex<double>, zent_d_complex, double, zent_d_complex)
#undef FORM

template <class T>
using RealOf = typename Form<T>::Real;
template <class T>
constexpr double eps = std::numeric_limits<RealOf<T>>::epsilon();

template <class T>
T element(double re, double im) {
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(re);
  } else {
    return T(static_cast<RealOf<T>>(re), static_cast<RealOf<T>>(im));
  }
}

template <class T>
struct Matrix {
  long n;
  vector<T> a;
  explicit Matrix(long order) : n(order), a(order * order) {}
  T& operator()(long i, long j) {
    return a[i * n + j];
  }
  const T& operator()(long i, long j) const {
    return a[i * n + j];
  }
  double norm() const {
    double largest = 0, sum = 0;
    for (const T& x : a) largest = std::max<double>(largest, std::abs(x));
    if (largest == 0) return 0;
    for (const T& x : a) sum += std::pow(std::abs(x) / largest, 2);
    return largest * std::sqrt(sum);
  }
};

template <class T, class F>
Matrix<T> fill(long n, F f) {
  Matrix<T> m(n);
  for (long i = 0; i < n; ++i) {
    for (long j = 0; j < n; ++j) m(i, j) = element<T>(f(i, j), 0);
  }
  return m;
}

template <class T>
Matrix<T> random_matrix(long n, unsigned seed = 1) {
  std::mt19937 g(seed);
  std::normal_distribution<double> d;
  Matrix<T> m(n);
  for (T& x : m.a) {
    const double re = d(g), im = d(g);
    x = element<T>(re, im);
  }
  return m;
}

inline double frank(long n, long i, long j) {
  return j < i - 1 ? 0 : static_cast<double>(n - std::max(i, j));
}

template <class T>
Matrix<T> rosser() {
  static const double r[8][8] = {{611, 196, -192, 407, -8, -52, -49, 29}, {196, 899, 113, -192, -71, -43, -8, -44},
                                 {-192, 113, 899, 196, 61, 49, 8, 52},    {407, -192, 196, 611, 8, 44, 59, -23},
                                 {-8, -71, 61, 8, 411, -599, 208, 208},   {-52, -43, 49, 44, -599, 411, 208, 208},
                                 {-49, -8, 8, 59, 208, 208, 99, -911},    {29, -44, 52, -23, 208, 208, -911, 99}};
  return fill<T>(8, [](long i, long j) { return r[i][j]; });
}

// The matrices by name.
template <class T>
Matrix<T> named(const std::string& name, long n) {
  if (name == "random") return random_matrix<T>(n);
  if (name == "zero") return Matrix<T>(n);
  if (name == "identity") return fill<T>(n, [](long i, long j) { return i == j; });
  if (name == "jordan") return fill<T>(n, [](long i, long j) { return i == j ? 2 : j == i + 1; });
  if (name == "turned jordan") {  // defective and full: S J S^-1 with S = I + u v^T, v^T u = 0
    return fill<T>(n, [n](long i, long j) {
      auto u = [](long k) { return k % 2 == 0 ? 1.0 : -1.0; };
      auto base = [](long r, long c) { return r == c ? 2.0 : c == r + 1 ? 1.0 : 0.0; };
      double vb = 0, bu = 0, vbu = 0;  // v = ones over an even part
      const long m = n - n % 2;
      for (long k = 0; k < m; ++k) vb += base(k, j);
      for (long k = 0; k < m; ++k) bu += base(i, k) * u(k);
      for (long r = 0; r < m; ++r)
        for (long c = 0; c < m; ++c) vbu += base(r, c) * u(c);
      const double ui = i < m ? u(i) : 0, vj = j < m ? 1 : 0;
      return base(i, j) + ui * vb - bu * vj - ui * vbu * vj;
    });
  }
  if (name == "frank") return fill<T>(n, [n](long i, long j) { return frank(n, i, j); });
  if (name == "grcar") return fill<T>(n, [](long i, long j) { return j == i - 1 ? -1 : j >= i && j <= i + 3; });
  if (name == "rosser") return rosser<T>();
  if (name == "companion") return fill<T>(n, [n](long i, long j) { return i == 0 ? -1.0 / (j + 1) : j == i - 1; });
  if (name == "cyclic") return fill<T>(n, [n](long i, long j) { return i == (j + 1) % n; });
  if (name == "toeplitz") return fill<T>(n, [](long i, long j) { return i == j ? 1 : j == i + 1 ? 2 : i == j + 1 ? 0.5 : 0; });
  if (name == "graded") {
    const double step = sizeof(RealOf<T>) == 4 ? 0.5 : 2;
    Matrix<T> m = random_matrix<T>(n, 5);
    for (long i = 0; i < n; ++i)
      for (long j = 0; j < n; ++j) m(i, j) *= static_cast<RealOf<T>>(std::pow(10, -step * std::min<double>(i + j, 16)));
    return m;
  }
  if (name == "triangular") {
    Matrix<T> m = random_matrix<T>(n, 6);
    for (long i = 0; i < n; ++i)
      for (long j = 0; j < i; ++j) m(i, j) = T{};
    return m;
  }
  if (name == "permuted triangular") {
    Matrix<T> m = named<T>("triangular", n), p(n);
    vector<long> order(n);
    for (long i = 0; i < n; ++i) order[i] = i;
    std::shuffle(order.begin(), order.end(), std::mt19937(3));
    for (long i = 0; i < n; ++i)
      for (long j = 0; j < n; ++j) p(order[i], order[j]) = m(i, j);
    return p;
  }
  if (name == "clustered") {  // values 1 + k 1e-9 by a random similarity of a triangle
    Matrix<T> m = random_matrix<T>(n, 8);
    for (long i = 0; i < n; ++i)
      for (long j = 0; j <= i; ++j) m(i, j) = j < i ? T{} : element<T>(1 + 1e-9 * i, 0);
    for (long k = 0; k < n - 1; ++k) {  // rotations of neighbours
      for (long j = 0; j < n; ++j) {
        const T u = m(k, j), v = m(k + 1, j);
        m(k, j) = element<T>(0.6, 0) * u + element<T>(0.8, 0) * v;
        m(k + 1, j) = element<T>(0.6, 0) * v - element<T>(0.8, 0) * u;
      }
      for (long i = 0; i < n; ++i) {
        const T u = m(i, k), v = m(i, k + 1);
        m(i, k) = element<T>(0.6, 0) * u + element<T>(0.8, 0) * v;
        m(i, k + 1) = element<T>(0.6, 0) * v - element<T>(0.8, 0) * u;
      }
    }
    return m;
  }
  ADD_FAILURE() << name;
  return Matrix<T>(n);
}

// Largest |beta A x - alpha B x| of all vectors over |beta| |A| + |alpha| |B|. B null: the identity.
template <class T>
double residual(const Matrix<T>& a, const Matrix<T>* b, const vector<Cx<RealOf<T>>>& alpha, const vector<RealOf<T>>& beta,
                const Cx<RealOf<T>>* v, long ld) {
  using Z = complex<long double>;
  const long n = a.n;
  const double norm_a = a.norm(), norm_b = b != nullptr ? b->norm() : 1;
  double worst = 0;
  for (long k = 0; k < n; ++k) {
    double sum = 0;
    const double size = beta[k] * norm_a + std::abs(alpha[k]) * norm_b;
    if (size == 0) continue;
    for (long i = 0; i < n; ++i) {
      Z ax = 0, bx = b != nullptr ? Z(0) : Z(v[i * ld + k]);
      for (long j = 0; j < n; ++j) {
        const Z x(v[j * ld + k]);
        ax += Z(a(i, j)) * x;
        if (b != nullptr) bx += Z((*b)(i, j)) * x;
      }
      const Z r = (static_cast<long double>(beta[k]) * ax - Z(alpha[k]) * bx) / static_cast<long double>(size);
      sum += static_cast<double>(std::norm(r));
    }
    if (!(std::sqrt(sum) <= worst)) worst = std::sqrt(sum);
  }
  return worst;
}

// Norm 1, largest component real and positive.
template <class R>
void expect_normalized(long n, const Cx<R>* v, long ld) {
  const double e = std::numeric_limits<R>::epsilon();
  for (long k = 0; k < n; ++k) {
    double sum = 0, largest = 0, real_largest = 0;
    for (long i = 0; i < n; ++i) {
      const Cx<R> x = v[i * ld + k];
      sum += std::norm(complex<double>(x));
      largest = std::max<double>(largest, std::abs(complex<double>(x)));
      if (x.imag() == 0) real_largest = std::max<double>(real_largest, x.real());
    }
    EXPECT_NEAR(sum, 1, 20 * n * e) << k;
    EXPECT_GE(real_largest, largest * (1 - 4 * e)) << k;
  }
}

// Every value of one list has its own partner within `distance` in the other.
template <class A, class B>
void expect_same_values(vector<A> x, vector<B> y, double distance) {
  ASSERT_EQ(x.size(), y.size());
  for (const A& value : x) {
    auto best = std::min_element(y.begin(), y.end(), [&](const B& p, const B& q) {
      return std::abs(complex<double>(p) - complex<double>(value)) < std::abs(complex<double>(q) - complex<double>(value));
    });
    EXPECT_LE(std::abs(complex<double>(*best) - complex<double>(value)), distance) << value;
    y.erase(best);
  }
}

}  // namespace general
