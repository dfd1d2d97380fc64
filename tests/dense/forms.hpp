// The precisions of the dense solvers under one name, matrices to try them on, and residuals in long double.
#pragma once

#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include "tests/support/quiet.hpp"
#include "zent.h"
#include "zents.h"

template <class T>
struct Form;
#define FORM(p, T, R)                                           \
  template <>                                                   \
  struct Form<T> {                                              \
    using Real = R;                                             \
    static constexpr auto general = zent_##p##_lin_sol_gen;     \
    static constexpr auto definite = zent_##p##_lin_sol_posdef; \
  };
FORM(f, float, float)
FORM(d, double, double)
FORM(c, zent_f_complex, float)
FORM(z, zent_d_complex, double)
#undef FORM

template <class T>
using RealOf = typename Form<T>::Real;
template <class T>
constexpr bool is_complex = !std::is_same_v<T, RealOf<T>>;
template <class T>
constexpr double epsilon = sizeof(RealOf<T>) == 4 ? 0x1p-23 : 0x1p-52;

using Long = std::complex<long double>;

template <class T>
Long wide(T x) {
  if constexpr (is_complex<T>) {
    return {x.re, x.im};
  } else {
    return {x, 0};
  }
}
template <class T>
T narrow(Long x) {
  using Real = RealOf<T>;
  if constexpr (is_complex<T>) {
    return {static_cast<Real>(x.real()), static_cast<Real>(x.imag())};
  } else {
    return static_cast<Real>(x.real());
  }
}

// Row-major n by n in rows of `dim`; what lies between the rows holds a mark.
template <class T>
struct Matrix {
  long n, dim;
  std::vector<T> data;

  explicit Matrix(long order, long columns = 0, double mark = 77) : n(order), dim(columns == 0 ? order : columns) {
    data.assign(static_cast<std::size_t>(n * dim), narrow<T>(Long(static_cast<long double>(mark))));
  }
  T& operator()(long i, long j) {
    return data[static_cast<std::size_t>(i * dim + j)];
  }
  Long at(long i, long j) const {
    return wide(data[static_cast<std::size_t>(i * dim + j)]);
  }
  T* get() {
    return data.data();
  }
  long double norm() const {  // largest row sum
    long double most = 0;
    for (long i = 0; i < n; ++i) {
      long double sum = 0;
      for (long j = 0; j < n; ++j) sum += std::abs(at(i, j));
      most = std::max(most, sum);
    }
    return most;
  }
};

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  template <class T>
  T value() {
    const double re = uniform_(engine_), im = uniform_(engine_);
    return narrow<T>(Long(re, im));
  }

 private:
  std::mt19937_64 engine_;
  std::uniform_real_distribution<double> uniform_{-1, 1};
};

template <class T>
std::vector<T> random_vector(long n, unsigned seed) {
  Random random(seed);
  std::vector<T> x(static_cast<std::size_t>(n));
  for (T& element : x) element = random.value<T>();
  return x;
}

enum Kind { uniform, graded, hilbert, kahan, wilkinson, nearly_singular, kinds };

template <class T>
Matrix<T> make(Kind kind, long n, long dim = 0) {
  Matrix<T> a(n, dim);
  Random random(static_cast<unsigned>(100 * kind + n));
  const double s = 0.6, c = 0.8;
  for (long i = 0; i < n; ++i) {
    for (long j = 0; j < n; ++j) {
      const Long noise = wide(random.value<T>());
      long double x = 0;
      switch (kind) {
        case graded:
          a(i, j) = narrow<T>(noise * std::pow(2.0L, static_cast<long double>(-(i % 40) - j % 30)));
          continue;
        case hilbert:
          x = 1.0L / static_cast<long double>(i + j + 1);
          break;
        case kahan:  // upper triangular, with a small disturbance that keeps it a general matrix
          x = i > j ? 0 : std::pow(s, static_cast<double>(i % 60)) * (i == j ? 1.0 : -c);
          break;
        case wilkinson:  // the worst growth of partial pivoting, 2^10 from its first columns
          x = i == j || j == n - 1 ? 1 : i > j && j < 10 ? -1 : 0;
          break;
        case nearly_singular:
          a(i, j) = j == n - 1 && n > 1 ? narrow<T>(a.at(i, 0) + noise * (100.0L * epsilon<T>)) : narrow<T>(noise);
          continue;
        default:
          a(i, j) = narrow<T>(noise);
          continue;
      }
      a(i, j) = narrow<T>(Long(x));
    }
  }
  return a;
}

// Hermitian positive definite: a diagonal on top of random elements, graded where asked for.
template <class T>
Matrix<T> make_definite(long n, long dim = 0, bool grade = false) {
  Matrix<T> a(n, dim);
  Random random(static_cast<unsigned>(n));
  const auto scale = [grade](long i) { return grade ? std::pow(2.0L, static_cast<long double>(-(i % 25))) : 1.0L; };
  for (long i = 0; i < n; ++i) {
    for (long j = 0; j <= i; ++j) {
      Long x = i == j ? Long(static_cast<long double>(n) * 0.8L + 1) : wide(random.value<T>());
      x *= scale(i) * scale(j);
      a(i, j) = narrow<T>(x);
      a(j, i) = narrow<T>(std::conj(wide(a(i, j))));
    }
  }
  return a;
}

// ||b - op(A) x|| / (||A|| ||x|| + ||b||), in the maximum norm.
template <class T>
double backward_error(const Matrix<T>& a, const T* x, const std::vector<T>& b, bool adjoint = false) {
  long double residual = 0, size_x = 0, size_b = 0, norm = 0;
  for (long i = 0; i < a.n; ++i) {
    Long sum = wide(b[static_cast<std::size_t>(i)]);
    long double row = 0;
    size_b = std::max(size_b, std::abs(sum));
    size_x = std::max(size_x, std::abs(wide(x[i])));
    for (long j = 0; j < a.n; ++j) {
      const Long element = adjoint ? std::conj(a.at(j, i)) : a.at(i, j);
      row += std::abs(element);
      sum -= element * wide(x[j]);
    }
    norm = std::max(norm, row);
    residual = std::max(residual, std::abs(sum));
  }
  return static_cast<double>(residual / (norm * size_x + size_b));
}

// ||A B - I|| / (||A|| ||B||)
template <class T>
double inverse_error(const Matrix<T>& a, const Matrix<T>& b) {
  long double most = 0;
  for (long i = 0; i < a.n; ++i) {
    for (long j = 0; j < a.n; ++j) {
      Long sum = i == j ? -1 : 0;
      for (long k = 0; k < a.n; ++k) sum += a.at(i, k) * b.at(k, j);
      most = std::max(most, std::abs(sum));
    }
  }
  return static_cast<double>(most / (a.norm() * b.norm()));
}

inline long error_type() {
  return zent_error_type();
}
inline long error_number() {
  return zent_error_code();
}
