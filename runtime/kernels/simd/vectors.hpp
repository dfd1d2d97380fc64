// Vector and matrix-vector loops of a level.
#pragma once

#include "runtime/kernels/simd/vector.hpp"

namespace zent::fast::ZENT_LEVEL {

template <class T>
void axpy(long n, T alpha, const T* x, T* y) {
  const Factor<T> factor(alpha);
  each_vector<RealOf<T>, 4>(n * parts<T>, [&, from = reals(x), to = reals(y)](long i, auto piece, auto) ZENT_FLAT {
    piece.store(to + i, factor.add(piece.load(from + i), piece.load(to + i)));
  });
}

template <class T>
void scal(long n, T alpha, T* x) {
  using Real = RealOf<T>;
  const Factor<T> factor(alpha);
  each_vector<Real, 4>(n * parts<T>, [&, to = reals(x)](long i, auto piece, auto)
                                         ZENT_FLAT { piece.store(to + i, factor.times(piece.load(to + i))); });
}

template <class T>
T dot(bool conjugate, long n, const T* x, const T* y) {
  using Real = RealOf<T>;
  Products<T> products[4];
  each_vector<Real, 4>(n * parts<T>, [&, u = reals(x), v = reals(y)](long i, auto piece, auto slot)
                                         ZENT_FLAT { products[slot].add(piece.load(u + i), piece.load(v + i)); });
  products[0].join(products[1]);
  products[2].join(products[3]);
  products[0].join(products[2]);
  return products[0].total(conjugate);
}

template <class T>
RealOf<T> sum_of_squares(long n, const T* x) {
  using Real = RealOf<T>;
  return dot<Real>(false, n * parts<T>, reals(x), reals(x));
}

template <class T>
RealOf<T> asum(long n, const T* x) {
  using Real = RealOf<T>;
  Vector<Real> sums[4] = {};
  each_vector<Real, 4>(n * parts<T>, [&, v = reals(x)](long i, auto piece, auto slot)
                                         ZENT_FLAT { sums[slot] += magnitude<Real>(piece.load(v + i)); });
  return sum<Real>((sums[0] + sums[1]) + (sums[2] + sums[3]));
}

template <class T>
void rot(long n, T* x, T* y, RealOf<T> c, RealOf<T> s) {
  using Real = RealOf<T>;
  const Vector<Real> cosine = broadcast<Real>(c), sine = broadcast<Real>(s), minus = broadcast<Real>(-s);
  each_aligned_vector<T, 2>(x, n, [&, u = reals(x), v = reals(y)](long i, auto piece, auto) ZENT_FLAT {
    const Vector<Real> a = piece.load(u + i), b = piece.load(v + i);
    piece.store(u + i, fma(sine, b, cosine * a));
    piece.store(v + i, fma(minus, a, cosine * b));
  });
}

template <class T>
void swap(long n, T* x, T* y) {
  using Real = RealOf<T>;
  each_vector<Real, 2>(n * parts<T>, [&, u = reals(x), v = reals(y)](long i, auto piece, auto) ZENT_FLAT {
    const Vector<Real> a = piece.load(u + i), b = piece.load(v + i);
    piece.store(u + i, b);
    piece.store(v + i, a);
  });
}

// Moduli |re| + |im|, in both lanes of a complex element.
template <class T>
ZENT_INLINE Vector<RealOf<T>> moduli(Vector<RealOf<T>> v) {
  using Real = RealOf<T>;
  v = magnitude<Real>(v);
  if constexpr (is_complex<T>) v += swap_parts<Real>(v);
  return v;
}
template <class T>
ZENT_INLINE RealOf<T> modulus(T x) {
  if constexpr (is_complex<T>) {
    return __builtin_fabs(x.re) + __builtin_fabs(x.im);
  } else {
    return __builtin_fabs(x);
  }
}
template <>
ZENT_INLINE float modulus<float>(float x) {
  return __builtin_fabsf(x);
}
template <>
ZENT_INLINE float modulus<zent_f_complex>(zent_f_complex x) {
  return __builtin_fabsf(x.re) + __builtin_fabsf(x.im);
}

// The largest modulus first, then the first place where it stands. A comparison
// with a not-a-number is false, so one never counts.
template <class T>
long iamax(long n, const T* x) {
  using Real = RealOf<T>;
  const Real head = modulus(x[0]);
  if (head != head) return 1;
  Vector<Real> largest[4] = {};
  each_vector<Real, 4>(n * parts<T>, [&, v = reals(x)](long i, auto piece, auto slot) ZENT_FLAT {
    const Vector<Real> size = moduli<T>(piece.load(v + i));
    largest[slot] = size > largest[slot] ? size : largest[slot];
  });
  unroll<3>([&](auto i) ZENT_FLAT { largest[0] = largest[i + 1] > largest[0] ? largest[i + 1] : largest[0]; });
  const Vector<Real> most = broadcast<Real>(largest_lane<Real>(largest[0]));
  const auto place = [&, v = reals(x)](long i, auto piece)
                         ZENT_FLAT { return first_lane<Real>(moduli<T>(piece.load(v + i)) == most); };
  long i = 0;
  for (; i + lanes<Real> <= n * parts<T>; i += lanes<Real>) {
    const int lane = place(i, Whole<Real>{});
    if (lane >= 0) return (i + lane) / parts<T> + 1;
  }
  // Behind the end lanes read as 0, which is found there only when everything before was a not-a-number.
  const int lane = i < n * parts<T> ? place(i, Part<Real>(n * parts<T> - i)) : -1;
  return lane >= 0 && i + lane < n * parts<T> ? (i + lane) / parts<T> + 1 : 1;
}

// Columns that one pass takes together: more of them save loads of the vector, as far as the registers go.
template <class T>
constexpr int columns_at_once = ZENT_VECTOR_BYTES == 64 ? 8 : 4;

// Complex elements are used twice.
template <class T, class Piece>
ZENT_INLINE Vector<RealOf<T>> element_load(Piece piece, const RealOf<T>* p) {
  if constexpr (is_complex<T>) {
    return held(piece.load(p));
  } else {
    return piece.load(p);
  }
}

template <int count, class T>
ZENT_INLINE void add_some_columns(long m, const T* a, long lda, const T* factors, T* y) {
  Multiplier<T> f[count];
  unroll<count>([&](auto j) ZENT_FLAT { f[j] = Multiplier<T>(factors[j]); });
  const auto column = [=](auto piece, auto j, long i) ZENT_FLAT { return element_load<T>(piece, reals(a + j * lda) + i); };
  each_aligned_vector<T, 1>(a, m, [&, to = reals(y)](long i, auto piece, auto) ZENT_FLAT {
    Combination<T> sum(piece.load(to + i));
    unroll<count>([&](auto j) ZENT_FLAT { sum.add(f[j], column(piece, j, i)); });
    piece.store(to + i, sum.total());
  });
}

template <class T>
void add_columns(long m, long n, const T* a, long lda, const T* factors, T* y) {
  constexpr int group = columns_at_once<T>;
  long j = 0;
  for (; j + group <= n; j += group) add_some_columns<group>(m, a + j * lda, lda, factors + j, y);
  for (; j + 4 <= n; j += 4) add_some_columns<4>(m, a + j * lda, lda, factors + j, y);
  for (; j + 2 <= n; j += 2) add_some_columns<2>(m, a + j * lda, lda, factors + j, y);
  if (j < n) add_some_columns<1>(m, a + j * lda, lda, factors + j, y);
}

// The totals of `count` sums of products.
template <int count, class T>
ZENT_INLINE void totals(bool conjugate, const Products<T>* products, T* sums) {
  using Real = RealOf<T>;
  Vector<Real> v[count];
  if constexpr (is_complex<T>) {
    const Vector<Real> negative = alternate<Real>(Real(0), -Real(0)), none{};
    const Vector<Real> signs_re = conjugate ? none : negative, signs_im = conjugate ? negative : none;
    Real re[count], im[count];
    unroll<count>([&](auto j) ZENT_FLAT { v[j] = flip_signs<Real>(products[j].straight, signs_re); });
    sum_each<Real, count>(v, re);
    unroll<count>([&](auto j) ZENT_FLAT { v[j] = flip_signs<Real>(products[j].crossed, signs_im); });
    sum_each<Real, count>(v, im);
    unroll<count>([&](auto j) ZENT_FLAT { sums[j] = {re[j], im[j]}; });
  } else {
    unroll<count>([&](auto j) ZENT_FLAT { v[j] = products[j].straight; });
    sum_each<Real, count>(v, sums);
  }
}

template <int count, class T>
ZENT_INLINE void dot_some_columns(bool conjugate, long m, const T* a, long lda, const T* x, T* sums) {
  using Real = RealOf<T>;
  constexpr int width = count == 8 ? 1 : count == 4 ? 2 : 4;
  Products<T> products[count * width];
  const auto column = [=](auto piece, auto j, long i) ZENT_FLAT { return element_load<T>(piece, reals(a + j * lda) + i); };
  each_vector<Real, width>(m * parts<T>, [&, u = reals(x)](long i, auto piece, auto slot) ZENT_FLAT {
    const Vector<Real> v = piece.load(u + i);
    unroll<count>([&](auto j) ZENT_FLAT { products[slot * count + j].add(column(piece, j, i), v); });
  });
  unroll<count>([&](auto j)
                    ZENT_FLAT { unroll<width - 1>([&](auto w) ZENT_FLAT { products[j].join(products[(w + 1) * count + j]); }); });
  totals<count>(conjugate, products, sums);
}

template <class T>
void dot_columns(bool conjugate, long m, long n, const T* a, long lda, const T* x, T* sums) {
  long j = 0;
  if constexpr (ZENT_VECTOR_BYTES == 64) {
    for (; j + 8 <= n; j += 8) dot_some_columns<8>(conjugate, m, a + j * lda, lda, x, sums + j);
  }
  for (; j + 4 <= n; j += 4) dot_some_columns<4>(conjugate, m, a + j * lda, lda, x, sums + j);
  for (; j < n; ++j) dot_some_columns<1>(conjugate, m, a + j * lda, lda, x, sums + j);
}

template <int count, class T>
ZENT_INLINE void add_some_outer(long m, const T* x, const T* factors, T* a, long lda) {
  using Real = RealOf<T>;
  Factor<T> f[count];
  unroll<count>([&](auto j) ZENT_FLAT { f[j] = Factor<T>(factors[j]); });
  each_aligned_vector<T, 1>(a, m, [&, from = reals(x)](long i, auto piece, auto) ZENT_FLAT {
    const Vector<Real> v = piece.load(from + i);
    unroll<count>([&](auto j) ZENT_FLAT {
      Real* to = reals(a + j * lda) + i;
      piece.store(to, f[j].add(v, piece.load(to)));
    });
  });
}

template <class T>
void add_outer(long m, long n, const T* x, const T* factors, T* a, long lda) {
  long j = 0;
  for (; j + 4 <= n; j += 4) add_some_outer<4>(m, x, factors + j, a + j * lda, lda);
  for (; j < n; ++j) add_some_outer<1>(m, x, factors + j, a + j * lda, lda);
}

}  // namespace zent::fast::ZENT_LEVEL
