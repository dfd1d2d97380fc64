// Test matrices, and the arithmetic of the checks in long double.
#pragma once

#include <cmath>
#include <complex>
#include <random>
#include <type_traits>
#include <vector>

#include "tests/support/quiet.hpp"
#include "zent.h"

namespace lsq {

using Wide = long double;

template <class T>
struct RealOf {
  using type = T;
};
template <class R>
struct RealOf<std::complex<R>> {
  using type = R;
};
template <class T>
using Real = typename RealOf<T>::type;
template <class T>
inline constexpr bool is_complex = !std::is_same_v<T, Real<T>>;
template <class T>
using WideOf = std::conditional_t<is_complex<T>, std::complex<Wide>, Wide>;

template <class T>
WideOf<T> widen(T x) {
  if constexpr (is_complex<T>) {
    return {x.real(), x.imag()};
  } else {
    return x;
  }
}
template <class W>
W conjugate(W x) {
  if constexpr (std::is_same_v<W, Wide>) {
    return x;
  } else {
    return std::conj(x);
  }
}
template <class T>
constexpr double epsilon() {
  return std::is_same_v<Real<T>, float> ? 0x1p-23 : 0x1p-52;
}

// Row-major m by n in an array with `dim` columns; what lies beyond is a mark.
template <class T>
struct Matrix {
  long m, n, dim;
  std::vector<T> x;
  Matrix(long rows, long columns, long pad = 0) : m(rows), n(columns), dim(columns + pad), x(rows * dim, T(-77)) {}
  T& operator()(long i, long j) {
    return x[i * dim + j];
  }
  const T& operator()(long i, long j) const {
    return x[i * dim + j];
  }
  Wide norm() const {
    Wide sum = 0;
    for (long i = 0; i < m; ++i)
      for (long j = 0; j < n; ++j) sum += std::norm(std::complex<Wide>(widen((*this)(i, j))));
    return std::sqrt(sum);
  }
};

template <class T>
T draw(std::mt19937_64& random) {
  std::uniform_real_distribution<double> u(-1, 1);
  if constexpr (is_complex<T>) {
    const double re = u(random), im = u(random);
    return T(static_cast<Real<T>>(re), static_cast<Real<T>>(im));
  } else {
    return static_cast<T>(u(random));
  }
}

enum class Kind { random, graded, hilbert, kahan, wilkinson, near_singular, low_rank, zero, identity, repeated };
inline const char* name(Kind kind) {
  const char* const names[] = {"Random",       "Graded",  "Hilbert", "Kahan",    "Wilkinson",
                               "NearSingular", "LowRank", "Zero",    "Identity", "Repeated"};
  return names[static_cast<int>(kind)];
}

template <class T>
Matrix<T> make(Kind kind, long m, long n, long pad = 0) {
  std::mt19937_64 random(1000 * m + n);
  Matrix<T> a(m, n, pad);
  std::vector<T> left(m), right(n);
  for (auto& x : left) x = draw<T>(random);
  for (auto& x : right) x = draw<T>(random);
  for (long i = 0; i < m; ++i) {
    for (long j = 0; j < n; ++j) {
      T x = draw<T>(random);
      const double s = 0.9, c = std::sqrt(1 - s * s);
      using R = Real<T>;
      switch (kind) {
        case Kind::graded:
          x *= static_cast<R>(std::pow(10.0, -12.0 * static_cast<double>(i + j) / static_cast<double>(m + n)));
          break;
        case Kind::hilbert:
          x = T(static_cast<R>(1.0 / static_cast<double>(i + j + 1)));
          break;
        case Kind::kahan:
          x = T(static_cast<R>(i == j ? std::pow(s, i) : i < j ? -c * std::pow(s, i) : 0));
          break;
        case Kind::wilkinson:
          x = T(static_cast<R>(i == j || j == n - 1 ? 1 : i > j ? -1 : 0));
          break;
        case Kind::near_singular:
          x = left[i] * right[j] + x * static_cast<R>(1e-6);
          break;
        case Kind::low_rank:
          x = left[i] * right[j] + T(static_cast<R>(i % 3)) * right[n - 1 - j];
          break;
        case Kind::zero:
          x = T(0);
          break;
        case Kind::identity:
          x = T(static_cast<R>(i == j));
          break;
        case Kind::repeated:
          x = left[i] * static_cast<R>(1 + j % 2) + (j < n / 2 ? x : T(0));
          break;
        default:
          break;
      }
      a(i, j) = x;
    }
  }
  return a;
}

// || A - B C^H ||, B m by k, C n by k; A may be null for 0.
template <class T>
Wide distance(const Matrix<T>* a, const Matrix<T>& b, const Matrix<T>& c, long k) {
  Wide sum = 0;
  for (long i = 0; i < b.m; ++i) {
    for (long j = 0; j < c.m; ++j) {
      WideOf<T> x = a != nullptr ? widen((*a)(i, j)) : WideOf<T>(0);
      for (long l = 0; l < k; ++l) x -= widen(b(i, l)) * conjugate(widen(c(j, l)));
      sum += std::norm(std::complex<Wide>(x));
    }
  }
  return std::sqrt(sum);
}

// || I - X^H X || for the first k columns.
template <class T>
Wide departure(const Matrix<T>& x, long k) {
  Wide sum = 0;
  for (long i = 0; i < k; ++i) {
    for (long j = 0; j < k; ++j) {
      WideOf<T> d = i == j ? -1 : 0;
      for (long l = 0; l < x.m; ++l) d += conjugate(widen(x(l, i))) * widen(x(l, j));
      sum += std::norm(std::complex<Wide>(d));
    }
  }
  return std::sqrt(sum);
}

}  // namespace lsq
