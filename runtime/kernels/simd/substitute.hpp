// Small triangular systems with one right side, in scalar registers.
#pragma once

#include "runtime/kernels/simd/gemm.hpp"

namespace zent::fast::ZENT_LEVEL {

// x - t y
template <class Real>
ZENT_INLINE Real less_product(Real x, Real t, Real y) {
#if ZENT_VECTOR_BYTES > 16
  if constexpr (sizeof(Real) == 8) {
    return __builtin_fma(-t, y, x);
  } else {
    return __builtin_fmaf(-t, y, x);
  }
#else
  return x - t * y;
#endif
}

template <class T>
ZENT_INLINE T less_multiple(bool conjugate, T x, T t, T y) {
  if constexpr (is_complex<T>) {
    const RealOf<T> im = conjugate ? -t.im : t.im;
    return {less_product(less_product(x.re, t.re, y.re), -im, y.im), less_product(less_product(x.im, t.re, y.im), im, y.re)};
  } else {
    return less_product(x, t, y);
  }
}

template <class T>
ZENT_INLINE T quotient(T x, const Divisor<RealOf<T>>& by) {
  if constexpr (is_complex<T>) {
    return {(by.direct * x.re + by.cross * x.im) / by.scale, (by.direct * x.im - by.cross * x.re) / by.scale};
  } else {
    return x / by.scale;
  }
}

// Each unknown, once known, is taken out of those behind it: that chain is as short as it can be, whatever way the triangle lies.
template <class T>
void substitute(bool conjugate, bool keep_zeros, const T* t, long row, long column, const Divisor<RealOf<T>>* divisors, T* x,
                long step) {
  T v[substitute_order];
  unroll<substitute_order>([&](auto i) ZENT_FLAT { v[i] = x[i * step]; });
  unroll<substitute_order>([&](auto j) ZENT_FLAT {
    if (keep_zeros && is_zero(v[j])) return;
    if (divisors != nullptr) v[j] = quotient<T>(v[j], divisors[j]);
    unroll<substitute_order - 1 - j>([&](auto k) ZENT_FLAT {
      constexpr int i = j + 1 + k;
      v[i] = less_multiple<T>(conjugate, v[i], t[i * row + j * column], v[j]);
    });
  });
  unroll<substitute_order>([&](auto i) ZENT_FLAT { x[i * step] = v[i]; });
}

}  // namespace zent::fast::ZENT_LEVEL
