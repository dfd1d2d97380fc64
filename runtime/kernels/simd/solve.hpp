// Triangular solves with many right sides, one right side in each lane.
#pragma once

#include "runtime/kernels/simd/vectors.hpp"

namespace zent::fast::ZENT_LEVEL {

// x - t y for a scalar t, where y_i is i y for complex elements.
template <class T>
ZENT_INLINE Vector<RealOf<T>> take_away(Vector<RealOf<T>> x, const T& t, Vector<RealOf<T>> y, Vector<RealOf<T>> y_i) {
  using Real = RealOf<T>;
  if constexpr (is_complex<T>) {
    return fma(broadcast<Real>(-t.im), y_i, fma(broadcast<Real>(-t.re), y, x));
  } else {
    return fma(broadcast<Real>(-t), y, x);
  }
}

template <class T>
ZENT_INLINE Vector<RealOf<T>> divide(bool keep_zeros, Vector<RealOf<T>> x, const Divisor<RealOf<T>>& by) {
  using Real = RealOf<T>;
  Vector<Real> quotient;
  if constexpr (is_complex<T>) {
    quotient = (broadcast<Real>(by.direct) * x - broadcast<Real>(by.cross) * times_i<Real>(x)) / broadcast<Real>(by.scale);
  } else {
    quotient = x / broadcast<Real>(by.scale);
  }
  // 0 / p is 0 but for a p that is 0 or not-a-number.
  if (keep_zeros) quotient = moduli<T>(x) == Vector<Real>{} ? x : quotient;
  return quotient;
}

// Columns that are solved together, so that one load of a finished column serves all of them.
constexpr int solve_columns = 4;

template <int count, int vectors, class T, class Last>
ZENT_INLINE void solve_some_columns(bool keep_zeros, long n, long j, const T* t, const Divisor<RealOf<T>>* divisors, T* b,
                                    long ldb, Last last) {
  using Real = RealOf<T>;
  constexpr int step = lanes<Real>;
  const auto piece = [&](auto i) ZENT_FLAT {
    if constexpr (i == vectors - 1) {
      return last;
    } else {
      return Whole<Real>{};
    }
  };
  Vector<Real> x[count * vectors];
  unroll<count>([&](auto col) ZENT_FLAT {
    unroll<vectors>([&](auto i) ZENT_FLAT { x[col * vectors + i] = piece(i).load(reals(b + (j + col) * ldb) + i * step); });
  });
  for (long k = 0; k < j; ++k) {
    unroll<vectors>([&](auto i) ZENT_FLAT {
      const Vector<Real> y = piece(i).load(reals(b + k * ldb) + i * step);
      const Vector<Real> y_i = is_complex<T> ? times_i<Real>(y) : y;
      unroll<count>([&](auto col)
                        ZENT_FLAT { x[col * vectors + i] = take_away<T>(x[col * vectors + i], t[k + (j + col) * n], y, y_i); });
    });
  }
  unroll<count>([&](auto col) ZENT_FLAT {
    unroll<vectors>([&](auto i) ZENT_FLAT {
      Vector<Real>& y = x[col * vectors + i];
      if (divisors != nullptr) y = divide<T>(keep_zeros, y, divisors[j + col]);
      piece(i).store(reals(b + (j + col) * ldb) + i * step, y);
      const Vector<Real> y_i = is_complex<T> ? times_i<Real>(y) : y;
      unroll<count>([&](auto later) ZENT_FLAT {
        if constexpr (later > col) {
          x[later * vectors + i] = take_away<T>(x[later * vectors + i], t[j + col + (j + later) * n], y, y_i);
        }
      });
    });
  });
}

template <int vectors, bool partial, class T>
void solve_strip(bool keep_zeros, long n, const T* t, const Divisor<RealOf<T>>* divisors, T* b, long ldb, long tail) {
  const auto last = piece_of<partial, RealOf<T>>(tail);
  long j = 0;
  for (; j + solve_columns <= n; j += solve_columns) {
    solve_some_columns<solve_columns, vectors>(keep_zeros, n, j, t, divisors, b, ldb, last);
  }
  for (; j < n; ++j) solve_some_columns<1, vectors>(keep_zeros, n, j, t, divisors, b, ldb, last);
}

template <class T>
void solve_rows(bool keep_zeros, long m, long n, const T* t, const Divisor<RealOf<T>>* divisors, T* b, long ldb) {
  constexpr int vectors = ZENT_VECTOR_BYTES == 64 ? 4 : 2;
  constexpr long side = lanes<RealOf<T>> / parts<T>;
  for (; m >= vectors * side; m -= vectors * side, b += vectors * side) {
    solve_strip<vectors, false>(keep_zeros, n, t, divisors, b, ldb, 0);
  }
  for (; m >= side; m -= side, b += side) solve_strip<1, false>(keep_zeros, n, t, divisors, b, ldb, 0);
  if (m > 0) solve_strip<1, true>(keep_zeros, n, t, divisors, b, ldb, m * parts<T>);
}

}  // namespace zent::fast::ZENT_LEVEL
