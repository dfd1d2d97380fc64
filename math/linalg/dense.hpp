// What the dense solvers share: moves between the row-major arrays of callers and the column-major view of the kernels.
#pragma once

#include <algorithm>
#include <climits>
#include <cstring>

#include "math/linalg/condition.hpp"
#include "runtime/envelope.hpp"

namespace zent::linalg {

// Elements of a rows by columns array; a count that overflows becomes one that no allocation can serve.
inline long area(long rows, long columns) {
  long count = 0;
  return __builtin_mul_overflow(rows, columns, &count) ? LONG_MAX : count;
}

// The smallest number whose reciprocal does not overflow.
template <class Real>
constexpr Real safe_small() {
  constexpr Real small = Machine<Real>::smallest;
  return 1 > small * Machine<Real>::largest ? 1 / Machine<Real>::largest : small;
}

// Frames of the kernels by precision; the complex ones have no public name.
template <class T>
constexpr const char* frame_name(const char* f, const char* d, const char* complex) {
  if constexpr (kernel::ComplexRecord<T>) {
    return complex;
  } else {
    return sizeof(T) == sizeof(float) ? f : d;
  }
}

// Type 5 errors of a factorization's sizes; false then.
template <class Half>
bool check_factor_sizes(long n, long lda, long ldfac) {
  if (n < 1) {
    raise<Half>(5, MATH_NEGATIVE_ORDER, {.i = {n}});
  } else if (n > lda) {
    raise<Half>(5, MATH_LDA_LESS_ORDER, {.i = {n, lda}});
  } else if (n > ldfac) {
    raise<Half>(5, MATH_LDFAC_LESS_ORDER, {.i = {n, ldfac}});
  } else {
    return true;
  }
  return false;
}

// b(j, i) := a(i, j) for the leading n by n part; the arrays do not overlap.
template <class T>
void copy_transposed(long n, const T* a, long lda, T* b, long ldb) {
  if (lda == n && ldb == n) return fast::transpose(n, n, a, b);
  constexpr long tile = 16;
  for (long j0 = 0; j0 < n; j0 += tile) {
    const long j1 = std::min(n, j0 + tile);
    for (long i0 = 0; i0 < n; i0 += tile) {
      const long i1 = std::min(n, i0 + tile);
      for (long j = j0; j < j1; ++j) {
        for (long i = i0; i < i1; ++i) b[j + i * ldb] = a[i + j * lda];
      }
    }
  }
}

// Transposes the leading n by n part where it stands; what lies between the columns is not touched.
template <class T>
void transpose_leading(long n, T* a, long lda) {
  if (lda == n) return fast::transpose_square(n, a);
  constexpr long tile = 16;
  for (long j0 = 0; j0 < n; j0 += tile) {
    const long j1 = std::min(n, j0 + tile);
    for (long i0 = 0; i0 <= j0; i0 += tile) {
      for (long j = j0; j < j1; ++j) {
        for (long i = i0; i < std::min(j, i0 + tile); ++i) std::swap(a[i + j * lda], a[j + i * lda]);
      }
    }
  }
}

// Columns that stand lda apart, to ldb apart; b may be a.
template <class T>
void copy_columns(long n, const T* a, long lda, T* b, long ldb) {
  if (a == b && lda == ldb) return;
  const bool spreads = a == b && ldb > lda;  // from the last one on, so that none is written over before it has moved
  for (long step = 0; step < n; ++step) {
    const long j = spreads ? n - 1 - step : step;
    std::memmove(b + j * ldb, a + j * lda, sizeof(T) * n);
  }
}

// The upper triangle alone; where b is a, all of it moves.
template <class T>
void copy_upper(long n, const T* a, long lda, T* b, long ldb) {
  if (a == b) return copy_columns(n, a, lda, b, ldb);
  for (long j = 0; j < n; ++j) std::memcpy(b + j * ldb, a + j * lda, sizeof(T) * (j + 1));
}

// Columns n to col_dim - 1 of a row-major array with n rows.
template <class T>
void clear_unused_columns(long n, T* a, long col_dim) {
  for (long i = 0; i < n; ++i) std::fill(a + i * col_dim + n, a + (i + 1) * col_dim, T{});
}

// The upper triangle, conjugated, onto the lower one, tile by tile.
template <class T>
void mirror_upper_conjugated(long n, T* a, long lda) {
  constexpr long tile = 16;
  for (long j0 = 0; j0 < n; j0 += tile) {
    const long j1 = std::min(n, j0 + tile);
    for (long i0 = 0; i0 <= j0; i0 += tile) {
      for (long j = j0; j < j1; ++j) {
        for (long i = i0; i < std::min(j, i0 + tile); ++i) a[j + i * lda] = conj(a[i + j * lda]);
      }
    }
  }
}

template <class T>
void clear_below_diagonal(long n, T* a, long lda) {
  for (long j = 0; j < n; ++j) std::fill(a + j * lda + j + 1, a + j * lda + n, T{});
}

// The inverse of a triangular matrix in place, by halves: the block off the diagonal is -A11^-1 A12 A22^-1 (upper).
template <class T>
void invert_triangle(bool upper, long n, T* a, long lda) {
  constexpr long smallest_block = 16;
  if (n > smallest_block) {
    const long m = n / 2;
    T* corner = a + m + m * lda;
    if (upper) {
      T* above = a + m * lda;
      fast::trsm('L', 'U', 'N', 'N', m, n - m, from_real<T>(-1), a, lda, above, lda);
      fast::trsm('R', 'U', 'N', 'N', m, n - m, from_real<T>(1), corner, lda, above, lda);
    } else {
      T* below = a + m;
      fast::trsm('L', 'L', 'N', 'N', n - m, m, from_real<T>(-1), corner, lda, below, lda);
      fast::trsm('R', 'L', 'N', 'N', n - m, m, from_real<T>(1), a, lda, below, lda);
    }
    invert_triangle(upper, m, a, lda);
    invert_triangle(upper, n - m, corner, lda);
    return;
  }
  for (long step = 0; step < n; ++step) {  // the triangle that is inverted already, times the column beside it
    const long j = upper ? step : n - 1 - step;
    T* column = a + j * lda;
    const T pivot = from_real<T>(1) / column[j];
    column[j] = pivot;
    if (upper) {
      for (long i = 0; i < j; ++i) {
        T sum{};
        for (long k = i; k < j; ++k) sum += a[i + k * lda] * column[k];
        column[i] = -pivot * sum;
      }
    } else {
      for (long i = n - 1; i > j; --i) {
        T sum{};
        for (long k = j + 1; k <= i; ++k) sum += a[i + k * lda] * column[k];
        column[i] = -pivot * sum;
      }
    }
  }
}

// ainv := inverse of the lower (ipath 1) or upper (2) triangle of a, the other triangle 0; the arrays may be the same.
template <class Half, class T>
bool l_linrt(long n, const T* a, long lda, long ipath, T* ainv, long ldainv) {
  if (ipath != 1 && ipath != 2) {
    raise<Half>(5, MATH_IPATH_RANGE_3, {.i = {ipath}});
    return false;
  }
  for (long j = 0; j < n; ++j) {
    if (!(abs1(a[j + j * lda]) > safe_small<RealOf<T>>())) {
      raise<Half>(4, MATH_SINGULAR_MATRIX);
      return false;
    }
  }
  copy_columns(n, a, lda, ainv, ldainv);
  if (ipath == 2) {
    clear_below_diagonal(n, ainv, ldainv);
  } else {
    for (long j = 0; j < n; ++j) std::fill(ainv + j * ldainv, ainv + j * ldainv + j, T{});
  }
  invert_triangle(ipath == 2, n, ainv, ldainv);
  return true;
}

}  // namespace zent::linalg
