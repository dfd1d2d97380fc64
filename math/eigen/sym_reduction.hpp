// Reduction of a symmetric or Hermitian matrix to a real symmetric tridiagonal one by blocks of reflections (Dongarra, Sorensen,
// Hammarling 1989), and their product. One template: a symmetric matrix is a Hermitian one of real elements.
#pragma once

#include <algorithm>
#include <cmath>

#include "runtime/kernels/fast.hpp"
#include "runtime/machine.hpp"
#include "runtime/scratch.hpp"

namespace zent::eigen {

using kernel::from_real;
using kernel::RealOf;

inline constexpr long panel_width = 32;
inline constexpr long last_panel_width = 48;  // no update follows it, so it may be wider

template <class T>
T inner_product(long n, const T* x, const T* y) {
  if constexpr (kernel::ComplexRecord<T>) {
    return fast::dotc(n, x, 1, y, 1);
  } else {
    return fast::dot(n, x, 1, y, 1);
  }
}

// Reflection H = I - tau v v^H whose conjugate transpose maps x to (beta, 0, ...), beta real. v goes over x with its leading 1.
// Elements below the guard are dropped: the matrix is scaled to 1, and their squares have lost their digits.
template <class T>
T reflection(long n, T* x, RealOf<T>* beta) {
  using Real = RealOf<T>;
  constexpr Real guard = Machine<Real>::smallest / Machine<Real>::epsilon;
  const Real rest = n > 1 ? kernel::real(inner_product(n - 1, x + 1, x + 1)) : 0;
  const T alpha = x[0];
  Real imaginary = 0;
  if constexpr (kernel::ComplexRecord<T>) imaginary = alpha.im;
  const Real head = kernel::real(alpha);
  x[0] = from_real<T>(1);
  if (rest <= guard) {
    std::fill_n(x + 1, n - 1, T{});
    if (imaginary == 0) {
      *beta = head;
      return T{};
    }
  }
  const Real length = std::hypot(std::hypot(head, imaginary), rest <= guard ? 0 : std::sqrt(rest));
  *beta = head < 0 ? length : -length;
  if (rest > guard) {
    T inverse;
    if constexpr (kernel::ComplexRecord<T>) {
      inverse = from_real<T>(1) / T{head - *beta, imaginary};
    } else {
      inverse = 1 / (head - *beta);
    }
    fast::scal(n - 1, inverse, x + 1, 1);
  }
  if constexpr (kernel::ComplexRecord<T>) {
    return {(*beta - head) / *beta, -imaginary / *beta};
  } else {
    return (*beta - head) / *beta;
  }
}

// Columns k to k + width - 1 of the lower triangle: each one is brought up to date with the reflections of this panel only, its
// own reflection found, and the column w = tau (A v - V W^H v - W V^H v) + ... of the later update A - V W^H - W V^H with it.
template <class T>
void reduce_panel(long n, long k, long width, T* a, long lda, RealOf<T>* d, RealOf<T>* e, T* tau, T* w) {
  using Real = RealOf<T>;
  const T one = from_real<T>(1), minus = from_real<T>(-1);
  T row_v[last_panel_width], row_w[last_panel_width];
  for (long i = 0; i < width; ++i) {
    const long j = k + i, m = n - j - 1;
    T* column = a + j * lda;
    if (i > 0) {
      for (long p = 0; p < i; ++p) {
        row_v[p] = kernel::conj(a[j + (k + p) * lda]);
        row_w[p] = kernel::conj(w[j + p * n]);
      }
      fast::gemv('N', m + 1, i, minus, a + j + k * lda, lda, row_w, 1, one, column + j, 1);
      fast::gemv('N', m + 1, i, minus, w + j, n, row_v, 1, one, column + j, 1);
    }
    d[j] = kernel::real(column[j]);
    tau[j] = T{};
    if (m == 0) return;
    T* v = column + j + 1;
    T* result = w + j + 1 + i * n;
    tau[j] = reflection(m, v, e + j);
    if (tau[j] == T{}) {
      std::fill_n(result, m, T{});
      continue;
    }
    fast::symv('L', m, one, a + (j + 1) * (lda + 1), lda, v, 1, T{}, result, 1);
    if (i > 0) {
      fast::gemv('C', m, i, one, w + j + 1, n, v, 1, T{}, row_w, 1);
      fast::gemv('N', m, i, minus, a + j + 1 + k * lda, lda, row_w, 1, one, result, 1);
      fast::gemv('C', m, i, one, a + j + 1 + k * lda, lda, v, 1, T{}, row_v, 1);
      fast::gemv('N', m, i, minus, w + j + 1, n, row_v, 1, one, result, 1);
    }
    fast::scal(m, tau[j], result, 1);
    const T half = Real(-0.5) * (tau[j] * inner_product(m, result, v));
    fast::axpy(m, half, v, 1, result, 1);
  }
}

// A = Q T Q^H from the lower triangle of the column-major array a. The reflections stay below the diagonal, each with its leading
// 1; d has n elements, e and tau have n (e[i] couples i and i + 1, the last is 0). False without memory.
template <class Half, class T>
bool reduce(long n, T* a, long lda, RealOf<T>* d, RealOf<T>* e, T* tau) {
  void* mark = scratch_mark<Half>();
  T* w = scratch<Half, T>(n * std::min(n, last_panel_width));
  if (w != nullptr) {
    for (long k = 0; k < n;) {
      const long width = n - k <= last_panel_width ? n - k : panel_width;
      reduce_panel(n, k, width, a, lda, d, e, tau, w);
      const long next = k + width;
      if (next < n) {
        fast::syr2k('L', n - next, width, from_real<T>(-1), a + next + k * lda, lda, w + next, n, 1, a + next * (lda + 1), lda);
      }
      k = next;
    }
    e[n - 1] = 0;
  }
  scratch_release<Half>(mark);
  return w != nullptr;
}

// Z := Q Z for the n by columns matrix Z, reflections in blocks I - V S V^H. With `identity`, Z starts as the identity, whose
// leading columns a block does not reach. False without memory.
template <class Half, class T>
bool apply_reflections(long n, const T* a, long lda, const T* tau, long columns, T* z, long ldz, bool identity) {
  constexpr long width = panel_width;
  const T one = from_real<T>(1);
  void* mark = scratch_mark<Half>();
  T* v = scratch<Half, T>(n * width);
  T* scaled = scratch<Half, T>(n * width);
  T* s = scratch<Half, T>(width * width);
  T* product = scratch<Half, T>(width * columns);
  const bool enough = v && scaled && s && product;
  for (long k = (n - 2) / width * width; enough && n > 1 && k >= 0; k -= width) {
    const long count = std::min(width, n - 1 - k), m = n - 1 - k, first = identity ? k + 1 : 0;
    for (long j = 0; j < count; ++j) {
      std::fill_n(v + j * m, j, T{});
      kernel::copy(m - j, a + k + 1 + j + (k + j) * lda, 1, v + j + j * m, 1);
    }
    // S = (I + D G)^-1 D with D the factors tau and G the strict upper triangle of V^H V: solving costs no more than forming S.
    fast::gemm('C', 'N', count, count, m, one, v, m, v, m, T{}, s, width);
    for (long j = 0; j < count; ++j) {
      for (long i = 0; i < j; ++i) s[i + j * width] = tau[k + i] * s[i + j * width];
      for (long i = 0; i < m; ++i) scaled[i + j * m] = kernel::conj(tau[k + j]) * v[i + j * m];
    }
    T* part = z + k + 1 + first * ldz;
    fast::gemm('C', 'N', count, columns - first, m, one, scaled, m, part, ldz, T{}, product, width);
    fast::trsm('L', 'U', 'N', 'U', count, columns - first, one, s, width, product, width);
    fast::gemm('N', 'N', m, columns - first, count, from_real<T>(-1), v, m, product, width, one, part, ldz);
  }
  scratch_release<Half>(mark);
  return enough;
}

}  // namespace zent::eigen
