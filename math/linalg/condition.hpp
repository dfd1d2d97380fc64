// LINPACK's estimate of the condition number from a dense factorization (Cline, Moler, Stewart and Wilkinson, SIAM J. Numer.
// Anal. 16, 1979): the pieces that all factors share.
#pragma once

#include "runtime/error.hpp"
#include "runtime/kernels/fast.hpp"
#include "runtime/machine.hpp"
#include "runtime/scratch.hpp"

namespace zent::linalg {

using kernel::abs1;
using kernel::conj;
using kernel::from_real;
using kernel::RealOf;

// A loop over elements, compiled for the vectors that the processor has. The arithmetic is the same on all levels and keeps its
// sums apart itself, so all give the same bits. Complex elements stop at AVX2: with AVX-512 the compiler fuses their products.
#if defined(__x86_64__)
#define ZENT_VECTOR_LEVEL(features) gnu::target(features), gnu::optimize("O3", "fp-contract=off")
#define ZENT_BY_LEVEL(name, parameters, arguments)                                                           \
  template <class T>                                                                                         \
  [[ZENT_VECTOR_LEVEL("avx512f,avx512vl,avx512dq,prefer-vector-width=512")]] void name##_avx512 parameters { \
    name##_body<T> arguments;                                                                                \
  }                                                                                                          \
  template <class T>                                                                                         \
  [[ZENT_VECTOR_LEVEL("avx2")]] void name##_avx2 parameters {                                                \
    name##_body<T> arguments;                                                                                \
  }                                                                                                          \
  template <class T>                                                                                         \
  void name parameters {                                                                                     \
    if constexpr (!kernel::ComplexRecord<T>) {                                                               \
      if (fast::level() == fast::Level::avx512) return name##_avx512<T> arguments;                           \
    }                                                                                                        \
    if (fast::level() != fast::Level::baseline) return name##_avx2<T> arguments;                             \
    name##_body<T> arguments;                                                                                \
  }
#else
#define ZENT_BY_LEVEL(name, parameters, arguments) \
  template <class T>                               \
  void name parameters {                           \
    name##_body<T> arguments;                      \
  }
#endif

// What a caller is told for an estimate of the reciprocal condition number.
template <class Real>
Real condition_number(Real rcond) {
  return rcond <= Machine<Real>::smallest ? Machine<Real>::infinity : 1 / rcond;
}

template <class Half, class Real>
void warn_ill_conditioned(Real rcond) {
  if (rcond <= Machine<Real>::epsilon) raise<Half>(3, MATH_ILL_CONDITIONED, {.r = {rcond}});
}

template <class T>
void scale_by(long n, RealOf<T> factor, T* x) {
  fast::scal(n, from_real<T>(factor), x, 1);
}

// w := w / ||w||_1; the factor.
template <class T>
RealOf<T> normalise(long n, T* w) {
  const RealOf<T> factor = 1 / kernel::asum(n, w, 1);
  scale_by(n, factor, w);
  return factor;
}

// |t| with the sign, or direction, of the opposite of w, which is not 0.
template <class T>
T against(T t, T w) {
  if constexpr (kernel::ComplexRecord<T>) {
    return (-abs1(t) / abs1(w)) * w;
  } else {
    return w > 0 ? -std::abs(t) : std::abs(t);
  }
}

// One step of the growth vector behind its pivot: w += plus r, with the 1-norms that w has then and would have with `minus`.
// Sums side by side keep the additions from waiting for each other, and let the compiler put them into vectors.
template <class T>
[[gnu::always_inline]] inline void grow_body(long n, const T* r, T plus, T minus, T* w, RealOf<T>* sums) {
  constexpr long lanes = 16;
  RealOf<T> first[lanes] = {}, second[lanes] = {};
  long k = 0;
  for (; k + lanes <= n; k += lanes) {
    for (long l = 0; l < lanes; ++l) {
      const T grown = w[k + l] + plus * r[k + l];
      second[l] += abs1(w[k + l] + minus * r[k + l]);
      first[l] += abs1(grown);
      w[k + l] = grown;
    }
  }
  for (long l = 0; k < n; ++k, ++l) {
    second[l] += abs1(w[k] + minus * r[k]);
    w[k] += plus * r[k];
    first[l] += abs1(w[k]);
  }
  for (long l = 0; l < lanes; ++l) sums[0] += first[l], sums[1] += second[l];
}

ZENT_BY_LEVEL(grow, (long n, const T* r, T plus, T minus, T* w, RealOf<T>* sums), (n, r, plus, minus, w, sums))

// Solves U^H w = e with e of moduli 1 chosen for growth. row(j) is the address of conj(u(j, j)), conj(u(j, j + 1)), ...
template <class T, class Row>
void growth_vector(long n, T* w, Row row) {
  using Real = RealOf<T>;
  for (long j = 0; j < n; ++j) w[j] = T{};
  T ek = from_real<T>(1);
  for (long j = 0; j < n; ++j) {
    const T* r = row(j);
    const Real pivot = abs1(r[0]);
    if (abs1(w[j]) != 0) ek = against(ek, w[j]);
    const Real step = abs1(ek - w[j]);
    if (step > pivot) {
      scale_by(n, pivot / step, w);
      ek = (pivot / step) * ek;
    }
    T plus = ek - w[j], minus = -ek - w[j];
    Real sums[2] = {abs1(plus), abs1(minus)};
    if (pivot != 0) {
      plus = plus / r[0];
      minus = minus / r[0];
    } else {
      plus = minus = from_real<T>(1);
    }
    grow(n - j - 1, r + 1, plus, minus, w + j + 1, sums);
    if (sums[0] < sums[1]) {
      fast::axpy(n - j - 1, minus - plus, r + 1, 1, w + j + 1, 1);
      plus = minus;
    }
    w[j] = plus;
  }
}

inline constexpr long bounded_block = 32;

// Elements first to last - 1 of w were scaled by `factor` in passing; the others follow.
template <class T>
void scale_others(long n, long first, long last, RealOf<T> factor, T* w) {
  if (factor == 1) return;
  scale_by(first, factor, w);
  scale_by(n - last, factor, w + last);
}

// Solves U z = w, z over w, scaled down wherever a component would exceed 1; ynorm goes with it. A block of columns at a time:
// the scaling reaches the elements outside of the block when the block is done.
template <class T>
void bounded_solve_upper(long n, const T* u, long ldu, T* w, RealOf<T>& ynorm) {
  using Real = RealOf<T>;
  for (long last = n; last > 0;) {
    const long first = (last - 1) / bounded_block * bounded_block, width = last - first;
    Real scaled = 1;
    for (long k = last - 1; k >= first; --k) {
      const T* column = u + k * ldu;
      const Real pivot = abs1(column[k]), size = abs1(w[k]);
      if (size > pivot) {
        scale_by(width, pivot / size, w + first);
        scaled *= pivot / size;
      }
      w[k] = pivot != 0 ? w[k] / column[k] : from_real<T>(1);
      for (long i = first; i < k; ++i) w[i] += -w[k] * column[i];
    }
    scale_others(n, first, last, scaled, w);
    ynorm *= scaled;
    fast::gemv('N', first, width, from_real<T>(-1), u + first * ldu, ldu, w + first, 1, from_real<T>(1), w, 1);
    last = first;
  }
}

// Solves U^H v = w, v over w, likewise.
template <class T>
void bounded_solve_upper_transposed(long n, const T* u, long ldu, T* w, RealOf<T>& ynorm) {
  using Real = RealOf<T>;
  for (long first = 0; first < n; first += bounded_block) {
    const long width = n - first < bounded_block ? n - first : bounded_block, last = first + width;
    fast::gemv('C', first, width, from_real<T>(-1), u + first * ldu, ldu, w, 1, from_real<T>(1), w + first, 1);
    Real scaled = 1;
    for (long k = first; k < last; ++k) {
      const T* column = u + k * ldu;
      for (long i = first; i < k; ++i) w[k] += -conj(column[i]) * w[i];
      const Real pivot = abs1(column[k]), size = abs1(w[k]);
      if (size > pivot) {
        scale_by(width, pivot / size, w + first);
        scaled *= pivot / size;
      }
      w[k] = pivot != 0 ? w[k] / conj(column[k]) : from_real<T>(1);
    }
    scale_others(n, first, last, scaled, w);
    ynorm *= scaled;
  }
}

}  // namespace zent::linalg
