// Vector and matrix-vector loops of a level.
#pragma once

#include "runtime/kernels/simd/vector.hpp"

namespace zent::fast::ZENT_LEVEL {

template <class T>
void axpy(long n, T alpha, const T* x, T* y) {
  using Real = RealOf<T>;
  const Factor<T> factor(alpha);
  each_vector<Real, 4>(n * parts<T>, [&, from = reals(x), to = reals(y)](long i, auto piece, auto) ZENT_FLAT {
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
  each_vector<Real, 2>(n * parts<T>, [&, u = reals(x), v = reals(y)](long i, auto piece, auto) ZENT_FLAT {
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
  Real most = 0;
  for (const Vector<Real>& part : largest) {
    for (int i = 0; i < lanes<Real>; ++i) most = part[i] > most ? part[i] : most;
  }
  constexpr long block = 64;
  for (long first = 0; first < n; first += block) {
    const long count = smaller(block, n - first);
    Mask<Real> found{};
    each_vector<Real, 1>(count * parts<T>, [&, v = reals(x + first)](long i, auto piece, auto)
                                               ZENT_FLAT { found |= moduli<T>(piece.load(v + i)) == broadcast<Real>(most); });
    bool any = false;
    for (int i = 0; i < lanes<Real>; ++i) any |= found[i] != 0;
    if (!any) continue;
    for (long i = first; i < first + count; ++i) {
      if (modulus(x[i]) == most) return i + 1;
    }
  }
  return 1;
}

// Columns that one pass takes together: more of them save loads of the vector,
// as far as the registers go.
template <class T>
constexpr int columns_at_once = ZENT_VECTOR_BYTES == 64 && !is_complex<T> ? 8 : 4;

template <int count, class T>
ZENT_INLINE void add_some_columns(long m, const T* a, long lda, const T* factors, T* y) {
  using Real = RealOf<T>;
  Factor<T> f[count];
  unroll<count>([&](auto j) ZENT_FLAT { f[j] = Factor<T>(factors[j]); });
  each_vector<Real, 1>(m * parts<T>, [&, to = reals(y)](long i, auto piece, auto) ZENT_FLAT {
    Vector<Real> total = piece.load(to + i);
    unroll<count>([&](auto j) ZENT_FLAT { total = f[j].add(piece.load(reals(a + j * lda) + i), total); });
    piece.store(to + i, total);
  });
}

template <class T>
void add_columns(long m, long n, const T* a, long lda, const T* factors, T* y) {
  constexpr int group = columns_at_once<T>;
  long j = 0;
  for (; j + group <= n; j += group) add_some_columns<group>(m, a + j * lda, lda, factors + j, y);
  for (; j + 2 <= n; j += 2) add_some_columns<2>(m, a + j * lda, lda, factors + j, y);
  if (j < n) add_some_columns<1>(m, a + j * lda, lda, factors + j, y);
}

template <int count, class T>
ZENT_INLINE void dot_some_columns(bool conjugate, long m, const T* a, long lda, const T* x, T* sums) {
  using Real = RealOf<T>;
  constexpr int width = count == 1 ? 4 : 2;
  Products<T> products[count * width];
  each_vector<Real, width>(m * parts<T>, [&, u = reals(x)](long i, auto piece, auto slot) ZENT_FLAT {
    const Vector<Real> v = piece.load(u + i);
    unroll<count>([&](auto j) ZENT_FLAT { products[slot * count + j].add(piece.load(reals(a + j * lda) + i), v); });
  });
  unroll<count>([&](auto j) ZENT_FLAT {
    unroll<width - 1>([&](auto w) ZENT_FLAT { products[j].join(products[(w + 1) * count + j]); });
    sums[j] = products[j].total(conjugate);
  });
}

template <class T>
void dot_columns(bool conjugate, long m, long n, const T* a, long lda, const T* x, T* sums) {
  long j = 0;
  for (; j + 4 <= n; j += 4) dot_some_columns<4>(conjugate, m, a + j * lda, lda, x, sums + j);
  for (; j < n; ++j) dot_some_columns<1>(conjugate, m, a + j * lda, lda, x, sums + j);
}

template <int count, class T>
ZENT_INLINE void add_some_outer(long m, const T* x, const T* factors, T* a, long lda) {
  using Real = RealOf<T>;
  Factor<T> f[count];
  unroll<count>([&](auto j) ZENT_FLAT { f[j] = Factor<T>(factors[j]); });
  each_vector<Real, 1>(m * parts<T>, [&, from = reals(x)](long i, auto piece, auto) ZENT_FLAT {
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

// Reals before the first vector boundary at or behind p, if that boundary does
// not cut an element.
template <class T>
ZENT_INLINE long reals_to_boundary(const T* p) {
  constexpr unsigned long bytes = ZENT_VECTOR_BYTES;
  const long head = static_cast<long>(-reinterpret_cast<unsigned long>(p) % bytes / sizeof(RealOf<T>));
  return head % parts<T> == 0 ? head : 0;
}

// Successive calls work on sections of y that begin at different places.
// Vectors at fixed boundaries of memory let the loads of one call take over
// whole stores of the last one, which may still be on their way.
template <class T>
void mirror_columns(long m, const T* a, long lda, const T* factors, const T* x, T* y, T* sums) {
  using Real = RealOf<T>;
  constexpr int count = 4;
  Factor<T> f[count] = {Factor<T>(factors[0]), Factor<T>(factors[1]), Factor<T>(factors[2]), Factor<T>(factors[3])};
  Products<T> products[count];
  const auto step = [&, u = reals(x), to = reals(y)](long i, auto piece) ZENT_FLAT {
    const Vector<Real> v = piece.load(u + i);
    Vector<Real> total = piece.load(to + i);
    unroll<count>([&](auto j) ZENT_FLAT {
      const Vector<Real> column = piece.load(reals(a + j * lda) + i);
      total = f[j].add(column, total);
      products[j].add(column, v);
    });
    piece.store(to + i, total);
  };
  const long all = m * parts<T>, head = smaller(reals_to_boundary(y), all);
  if (head > 0) step(0, Part<Real>(head));
  each_vector<Real, 1>(all - head, [&](long i, auto piece, auto) ZENT_FLAT { step(head + i, piece); });
  unroll<count>([&](auto j) ZENT_FLAT { sums[j] = products[j].total(true); });
}

}  // namespace zent::fast::ZENT_LEVEL
