// The four forms of the band solvers under one name each, and matrices to try them on.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstring>
#include <random>
#include <type_traits>
#include <vector>

#include "tests/support/quiet.hpp"
#include "zent.h"

namespace band_test {

template <class T>
struct Form;
#define ZENT_TEST_FORM(P, T, Real_, Value_)                        \
  template <>                                                      \
  struct Form<T> {                                                 \
    using Real = Real_;                                            \
    using Value = Value_; /* arithmetic of the tests, in double */ \
    template <class... Arguments>                                  \
    static T* general(Arguments... arguments) {                    \
      return zent_##P##_lin_sol_gen_band(arguments...);            \
    }                                                              \
    template <class... Arguments>                                  \
    static T* posdef(Arguments... arguments) {                     \
      return zent_##P##_lin_sol_posdef_band(arguments...);         \
    }                                                              \
  };
ZENT_TEST_FORM(f, float, float, double)
ZENT_TEST_FORM(d, double, double, double)
ZENT_TEST_FORM(c, zent_f_complex, float, std::complex<double>)
ZENT_TEST_FORM(z, zent_d_complex, double, std::complex<double>)
#undef ZENT_TEST_FORM

template <class T>
constexpr bool is_complex = !std::is_floating_point_v<T>;
template <class T>
typename Form<T>::Value value(T x) {
  if constexpr (is_complex<T>) {
    return {x.re, x.im};
  } else {
    return x;
  }
}
template <class T, class V>
T element(V x) {
  using Real = typename Form<T>::Real;
  if constexpr (is_complex<T>) {
    return {static_cast<Real>(std::real(x)), static_cast<Real>(std::imag(x))};
  } else {
    return static_cast<T>(std::real(x));
  }
}
inline double conjugate(double x) {
  return x;
}
inline std::complex<double> conjugate(std::complex<double> x) {
  return std::conj(x);
}

inline std::mt19937_64 engine(20231);
template <class T>
T random_element() {
  std::uniform_real_distribution<double> uniform(-1, 1);
  if constexpr (is_complex<T>) {
    const double re = uniform(engine);
    return element<T>(std::complex<double>(re, uniform(engine)));
  } else {
    return static_cast<T>(uniform(engine));
  }
}
template <class T>
std::vector<T> random_vector(long n) {
  std::vector<T> x(n);
  for (T& xi : x) xi = random_element<T>();
  return x;
}

// Band storage with zeros in the corners.
template <class T>
struct Band {
  long n, nlca, nuca;
  std::vector<T> a;
  Band(long n_, long nlca_, long nuca_) : n(n_), nlca(nlca_), nuca(nuca_), a((nlca + nuca + 1) * n) {
    for (long i = 0; i < n; ++i) {
      for (long j = std::max(0L, i - nlca); j <= std::min(n - 1, i + nuca); ++j) at(i, j) = random_element<T>();
      // Without a heavier diagonal the solution of a lopsided band grows exponentially with n. Rows are still exchanged.
      at(i, i) = element<T>(value(at(i, i)) + 0.9 * std::sqrt(static_cast<double>(nlca + nuca)));
    }
  }
  T& at(long i, long j) {
    return a[(nuca + i - j) * n + j];
  }
};

// Norm of b - op(A) x over that of op(A) times that of x plus that of b (largest components), in units of the form's epsilon.
template <class T>
double backward_error(Band<T>& m, const std::vector<T>& b, const T* x, bool transposed) {
  double residual = 0, norm = 0, size_x = 0, size_b = 0;
  for (long i = 0; i < m.n; ++i) {
    auto rest = value(b[i]);
    double row = 0;
    for (long j = std::max(0L, i - (transposed ? m.nuca : m.nlca)); j <= std::min(m.n - 1, i + (transposed ? m.nlca : m.nuca));
         ++j) {
      const auto aij = transposed ? conjugate(value(m.at(j, i))) : value(m.at(i, j));
      rest -= aij * value(x[j]);
      row += std::abs(aij);
    }
    if (!(std::abs(rest) <= residual)) residual = std::abs(rest);  // keeps a not-a-number
    norm = std::max(norm, row);
    size_x = std::max(size_x, std::abs(value(x[i])));
    size_b = std::max(size_b, std::abs(value(b[i])));
  }
  return residual / (norm * size_x + size_b) / std::numeric_limits<typename Form<T>::Real>::epsilon();
}

template <class T>
bool same(const std::vector<T>& x, const T* y) {
  return std::memcmp(x.data(), y, x.size() * sizeof(T)) == 0;
}

struct Release {
  template <class T>
  explicit Release(T* p) : pointer(p) {}
  Release(const Release&) = delete;
  ~Release() {
    zent_free_allocated_memory(pointer);
  }
  void* pointer;
};

using Forms = ::testing::Types<float, double, zent_f_complex, zent_d_complex>;

}  // namespace band_test
