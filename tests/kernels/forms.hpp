// The kernels of every precision and half behind one shape, and dense reference arithmetic in extended precision.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "runtime/kernels/complex.hpp"
#include "zent.h"
#include "zents.h"

using zent::kernel::ComplexRecord;
using zent::kernel::RealOf;
using Wide = std::complex<long double>;
using Matrix = std::function<Wide(long, long)>;  // element (i, j)

// One name for the real and the complex routine of the same meaning (symv and hemv, syr and her); null where a precision has
// none.
template <class T>
struct Blas {
  using Real = RealOf<T>;
  void (*copy)(long, const T*, long, T*, long);
  void (*swap)(long, T*, long, T*, long);
  void (*scal)(long, T, T*, long);
  void (*rscal)(long, Real, T*, long);
  void (*axpy)(long, T, const T*, long, T*, long);
  T (*dotc)(long, const T*, long, const T*, long);
  T (*dotu)(long, const T*, long, const T*, long);
  Real (*asum)(long, const T*, long);
  Real (*nrm2)(long, const T*, long);
  long (*iamax)(long, const T*, long);
  void (*rot)(long, T*, long, T*, long, Real, Real);
  void (*gemv)(const char*, long, long, T, const T*, long, const T*, long, T, T*, long);
  void (*symv)(const char*, long, T, const T*, long, const T*, long, T, T*, long);
  void (*gerc)(long, long, T, const T*, long, const T*, long, T*, long);
  void (*geru)(long, long, T, const T*, long, const T*, long, T*, long);
  void (*syr)(const char*, long, Real, const T*, long, T*, long);
  void (*syr2)(const char*, long, T, const T*, long, const T*, long, T*, long);
  void (*trsv)(const char*, const char*, const char*, long, const T*, long, T*, long);
  void (*tbsv)(const char*, const char*, const char*, long, long, const T*, long, T*, long);
  void (*gemm)(const char*, const char*, long, long, long, T, const T*, long, const T*, long, T, T*, long);
  void (*m1ran)(long, long, T*, T*);
  void (*gbmv)(const char*, long, long, long, long, T, const T*, long, const T*, long, T, T*, long) = nullptr;
  void (*sbmv)(const char*, long, long, T, const T*, long, const T*, long, T, T*, long) = nullptr;
  void (*trsm)(const char*, const char*, const char*, const char*, long, long, T, const T*, long, T*, long) = nullptr;
  void (*rotg)(Real*, Real*, Real*, Real*) = nullptr;
  void (*rotmg)(Real*, Real*, Real*, Real, Real*) = nullptr;
  void (*rotm)(long, T*, long, T*, long, const T*) = nullptr;
  void (*svrgn)(long, const T*, T*) = nullptr;
  void (*svrbn)(long, const T*, T*) = nullptr;
  void (*svrgp)(long, const T*, T*, long*) = nullptr;
  long (*inan)(long, const T*, long) = nullptr;
  void (*csfrg)(long, T*, long) = nullptr;
  void (*mxtxf)(long, long, const T*, long, T*, long) = nullptr;
};

#define REAL_FORM(h, p, t, f, xtx)                                                                                           \
  {                                                                                                                          \
    h##p##copy, h##p##swap, h##p##scal, h##p##scal, h##p##axpy, h##p##dot, h##p##dot, h##p##asum, h##p##nrm2, h##i##p##amax, \
        h##p##rot, h##p##gemv, h##p##symv, h##p##ger, h##p##ger, h##p##syr, h##p##syr2, h##p##trsv, h##p##tbsv, h##p##gemm,  \
        h##f##_m1ran, h##p##gbmv, h##p##sbmv, h##p##trsm, h##p##rotg, h##p##rotmg, h##p##rotm, h##t##svrgn, h##t##svrbn,     \
        h##t##svrgp, h##i##p##anan, h##t##csfrg, h##xtx                                                                      \
  }
#define COMPLEX_FORM(h, p, norm, scaled)                                                                                   \
  {                                                                                                                        \
    h##p##copy, h##p##swap, h##p##scal, h##scaled##scal, h##p##axpy, h##p##dotc, h##p##dotu, h##norm##asum, h##norm##nrm2, \
        h##i##p##amax, h##scaled##rot, h##p##gemv, h##p##hemv, h##p##gerc, h##p##geru, h##p##her, h##p##her2, h##p##trsv,  \
        h##p##tbsv, h##p##gemm, h##p##_m1ran                                                                               \
  }

template <class T>
inline const Blas<T> halves[2] = {};
template <>
inline const Blas<float> halves<float>[2] = {REAL_FORM(zent_, s, , f, smxtxf), REAL_FORM(zents_, s, , f, smxtxf)};
template <>
inline const Blas<double> halves<double>[2] = {REAL_FORM(zent_, d, d, d, mxtxf), REAL_FORM(zents_, d, d, d, mxtxf)};
template <>
inline const Blas<zent_f_complex> halves<zent_f_complex>[2] = {COMPLEX_FORM(zent_, c, sc, cs), COMPLEX_FORM(zents_, c, sc, cs)};
template <>
inline const Blas<zent_d_complex> halves<zent_d_complex>[2] = {COMPLEX_FORM(zent_, z, dz, zd), COMPLEX_FORM(zents_, z, dz, zd)};
#undef REAL_FORM
#undef COMPLEX_FORM

using Elements = testing::Types<float, double, zent_f_complex, zent_d_complex>;
using Reals = testing::Types<float, double>;

template <class T>
constexpr long double epsilon = std::numeric_limits<RealOf<T>>::epsilon();
template <class T>
const RealOf<T> nan_of = std::numeric_limits<RealOf<T>>::quiet_NaN();

template <class T>
T make(long double re, long double im) {
  if constexpr (ComplexRecord<T>) {
    return {static_cast<RealOf<T>>(re), static_cast<RealOf<T>>(im)};
  } else {
    return static_cast<T>(re);
  }
}
template <class T>
Wide wide(T x) {
  if constexpr (ComplexRecord<T>) {
    return {x.re, x.im};
  } else {
    return {x, 0};
  }
}

template <class T>
T random_value() {
  static std::mt19937 engine(7);
  std::uniform_real_distribution<double> uniform(-1, 1);
  const double re = uniform(engine);
  return make<T>(re, uniform(engine));
}
template <class T>
std::vector<T> random_array(long n) {
  std::vector<T> a(static_cast<std::size_t>(n));
  for (T& x : a) x = random_value<T>();
  return a;
}

// A strided vector: element i of the walk, and the memory between the elements, which nobody may touch.
template <class T>
struct Walk {
  long n, inc;
  std::vector<T> memory;
  Walk(long length, long increment) : n(length), inc(increment), memory(random_array<T>(1 + length * std::labs(increment))) {}
  T& operator[](long i) {
    return memory[static_cast<std::size_t>(inc > 0 ? i * inc : (n - 1 - i) * -inc)];
  }
  T* data() {
    return memory.data();
  }
  std::vector<Wide> values() {
    std::vector<Wide> v;
    for (long i = 0; i < n; ++i) v.push_back(wide((*this)[i]));
    return v;
  }
  // The elements equal `expected` within bound, everything between them is as it was in `before`.
  void check(const std::vector<Wide>& expected, Walk before, long double bound, const std::string& what) {
    for (long i = 0; i < n; ++i) {
      EXPECT_LE(std::abs(wide((*this)[i]) - expected[static_cast<std::size_t>(i)]), bound) << what << " element " << i;
      before[i] = (*this)[i];
    }
    for (std::size_t k = 0; k < memory.size(); ++k) ASSERT_EQ(wide(memory[k]), wide(before.memory[k])) << what << " gap " << k;
  }
};

// op(A) as a matrix of its own, by the letter of the flag.
inline Matrix apply_op(char op, Matrix a) {
  if (op == 'N' || op == 'n') return a;
  const bool conjugate = op == 'C' || op == 'c';
  return [=](long i, long j) { return conjugate ? std::conj(a(j, i)) : a(j, i); };
}

inline std::vector<Wide> times(long m, long n, const Matrix& a, const std::vector<Wide>& x) {
  std::vector<Wide> y(static_cast<std::size_t>(m));
  for (long i = 0; i < m; ++i) {
    for (long j = 0; j < n; ++j) y[static_cast<std::size_t>(i)] += a(i, j) * x[static_cast<std::size_t>(j)];
  }
  return y;
}
