// Band loops are short, so a call for each column would cost more than the arithmetic: whole algorithms are compiled for each
// kind of processor instead, from one always-inline body, and the choice is made once for a call.
#pragma once

#include "runtime/kernels/complex.hpp"
#include "runtime/machine.hpp"

namespace zent::band {

#define ZENT_BAND_INLINE [[gnu::always_inline]] inline

enum class Isa { baseline, avx2, avx512 };

inline Isa processor() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq")) {
    return Isa::avx512;
  }
  if (__builtin_cpu_supports("avx2")) return Isa::avx2;
#endif
  return Isa::baseline;
}

template <class Body, class... Arguments>
[[gnu::noinline, gnu::optimize("O3")]] auto run_baseline(Body, Arguments... arguments) {
  return Body::run(arguments...);
}
#if defined(__x86_64__)
template <class Body, class... Arguments>
[[gnu::noinline, gnu::optimize("O3"), gnu::target("avx2")]] auto run_avx2(Body, Arguments... arguments) {
  return Body::run(arguments...);
}
template <class Body, class... Arguments>
[[gnu::noinline, gnu::optimize("O3"), gnu::target("avx512f,avx512vl,avx512dq")]] auto run_avx512(Body, Arguments... arguments) {
  return Body::run(arguments...);
}
#endif

// Body has a static always-inline function run.
template <class Body, class... Arguments>
auto run_for_processor(Arguments... arguments) {
#if defined(__x86_64__)
  switch (processor()) {
    case Isa::avx512:
      return run_avx512(Body{}, arguments...);
    case Isa::avx2:
      return run_avx2(Body{}, arguments...);
    default:
      break;
  }
#endif
  return run_baseline(Body{}, arguments...);
}

// y += alpha x, the arrays apart from each other.
template <class T>
ZENT_BAND_INLINE void add_multiple(long n, T alpha, const T* __restrict x, T* __restrict y) {
  for (long i = 0; i < n; ++i) y[i] += alpha * x[i];
}

// The same for four columns y + k * step at once, which read x once.
template <class T>
ZENT_BAND_INLINE void add_multiples_4(long n, const T (&alpha)[4], const T* __restrict x, T* y, long step) {
  T* __restrict y0 = y;
  T* __restrict y1 = y + step;
  T* __restrict y2 = y + 2 * step;
  T* __restrict y3 = y + 3 * step;
  const T a0 = alpha[0], a1 = alpha[1], a2 = alpha[2], a3 = alpha[3];
  for (long i = 0; i < n; ++i) {
    const T xi = x[i];
    y0[i] += a0 * xi;
    y1[i] += a1 * xi;
    y2[i] += a2 * xi;
    y3[i] += a3 * xi;
  }
}

// y += the sum of alpha[k] times the columns x + k * step.
template <class T>
ZENT_BAND_INLINE void add_combination_4(long n, const T (&alpha)[4], const T* __restrict x, long step, T* __restrict y) {
  const T a0 = alpha[0], a1 = alpha[1], a2 = alpha[2], a3 = alpha[3];
  for (long i = 0; i < n; ++i) {
    y[i] += (a0 * x[i] + a1 * x[i + step]) + (a2 * x[i + 2 * step] + a3 * x[i + 3 * step]);
  }
}

// The sum of op(x_i) y_i in eight partial sums, which vector registers hold.
template <bool conjugate, class T>
ZENT_BAND_INLINE T inner_product(long n, const T* __restrict x, const T* __restrict y) {
  constexpr long lanes = 8;
  T sum{};
  long i = 0;
  if (n >= lanes) {
    T partial[lanes] = {};
    for (; i + lanes <= n; i += lanes) {
      for (long k = 0; k < lanes; ++k) partial[k] += (conjugate ? kernel::conj(x[i + k]) : x[i + k]) * y[i + k];
    }
    for (long half = lanes / 2; half > 0; half /= 2) {
      for (long k = 0; k < half; ++k) partial[k] += partial[k + half];
    }
    sum = partial[0];
  }
  for (; i < n; ++i) sum += (conjugate ? kernel::conj(x[i]) : x[i]) * y[i];
  return sum;
}

// How a substitution divides by the diagonal element of column j. An estimate solves with one factor again and again: it has the
// reciprocals, and takes what underflows as 0, because the inverse of a band matrix decays away from its diagonal and arithmetic
// with denormal numbers is slow.
template <class T>
struct Division {
  static constexpr bool drops = false;

  ZENT_BAND_INLINE T operator()(T x, T diagonal, long) const {
    return x / diagonal;
  }
  ZENT_BAND_INLINE T conjugated(T x, T diagonal, long) const {
    return x / kernel::conj(diagonal);
  }
};
template <class T>
ZENT_BAND_INLINE T without_underflow(T x) {
  return kernel::abs1(x) < Machine<kernel::RealOf<T>>::smallest ? T{} : x;
}
template <class T>
struct Reciprocals {
  static constexpr bool drops = true;
  const T* of;

  ZENT_BAND_INLINE T operator()(T x, T, long j) const {
    return without_underflow(of[j] * x);
  }
  ZENT_BAND_INLINE T conjugated(T x, T, long j) const {
    return without_underflow(kernel::conj(of[j]) * x);
  }
};

// Substitution with n columns of an upper triangular band. Column j ends with its diagonal at last + j * ld and has `upper`
// codiagonals.
// In wide bands columns go by fours where all of them have their full length: one pass over x then serves four.
template <class T, class Quotient>
ZENT_BAND_INLINE void solve_upper(const T* last, long ld, long n, long upper, T* x, Quotient quotient) {
  long j = n - 1;
  for (; upper >= 64 && j >= upper + 3; j -= 4) {
    T alpha[4];
    for (int k = 0; k < 4; ++k) {  // columns j, j - 1, j - 2, j - 3
      const T* column = last + (j - k) * ld;
      const T value = quotient(x[j - k], column[0], j - k);
      x[j - k] = value;
      for (long i = 1; i < 4 - k; ++i) x[j - k - i] += -value * column[-i];          // rows of the four
      for (long i = upper; i > upper - k; --i) x[j - k - i] += -value * column[-i];  // rows that the first does not reach
      alpha[3 - k] = -value;
    }
    // Rows j - upper to j - 4, common to all.
    add_combination_4(upper - 3, alpha, last + (j - 3) * ld + (3 - upper), ld - 1, x + j - upper);
  }
  for (; j >= 0; --j) {
    if (x[j] == T{}) continue;
    const T* column = last + j * ld;
    const T value = quotient(x[j], column[0], j);
    x[j] = value;
    const long m = upper < j ? upper : j;
    add_multiple(m, -value, column - m, x + j - m);
  }
}

// The same with the conjugate transpose.
template <class T, class Quotient>
ZENT_BAND_INLINE void solve_upper_transposed(const T* last, long ld, long n, long upper, T* x, Quotient quotient) {
  long zeros = upper;  // unknowns before this one that are 0, where they are counted
  for (long j = 0; j < n; ++j) {
    if constexpr (Quotient::drops) {
      if (zeros >= upper && x[j] == T{}) continue;
    }
    const T* column = last + j * ld;
    const long m = upper < j ? upper : j;
    x[j] = quotient.conjugated(x[j] - inner_product<true>(m, column - m, x + j - m), column[0], j);
    if constexpr (Quotient::drops) zeros = x[j] == T{} ? zeros + 1 : 0;
  }
}

}  // namespace zent::band
