// The product of a Hermitian matrix, of which one triangle is stored, with a vector: each element is loaded once and used twice.
#pragma once

#include "runtime/kernels/simd/vectors.hpp"

namespace zent::fast::ZENT_LEVEL {

// Lanes `from` to `to` - 1 of the first `count` of a vector in memory, 0 elsewhere.
template <class Real>
ZENT_INLINE Vector<Real> load_lanes(const Real* p, long from, long to, long count) {
#if ZENT_VECTOR_BYTES == 64
  Part<Real> piece(to < count ? to : count);
  piece.mask = static_cast<decltype(piece.mask)>(piece.mask & ~0u << from);
  return piece.load(p);
#else
  const Mask<Real> lane = lane_numbers<Real>();
  return keep<Real>(Part<Real>(count).load(p), (lane >= static_cast<int>(from)) & (lane < static_cast<int>(to)));
#endif
}

// Columns j to j + count - 1 of n off the diagonal: y += sum of factors[c] a_c, sums[c] = conj(a_c)' x. Rows go in vectors from
// the first one on for every group, and stores of y are whole: loads of the next group could not take over other ones.
template <int count, class T>
void mirror_some_columns(bool upper, long n, long j, const T* a, long lda, const T* factors, const T* x, T* y, T* sums) {
  using Real = RealOf<T>;
  constexpr Whole<Real> wide;
  constexpr long side = lanes<Real>;
  Multiplier<T> f[count];
  Products<T> products[count];
  unroll<count>([&](auto c) ZENT_FLAT { f[c] = Multiplier<T>(factors[c]); });
  const Real* columns = reals(a + j * lda);
  const long next = lda * parts<T>;
  const auto step = [&, u = reals(x), to = reals(y)](long i, auto load) ZENT_FLAT {
    const Vector<Real> v = wide.load(u + i);
    Combination<T> sum(wide.load(to + i));
    unroll<count>([&](auto c) ZENT_FLAT {
      const Vector<Real> column = held(load(columns + c * next + i, c));
      sum.add(f[c], column);
      products[c].add(column, v);
    });
    wide.store(to + i, sum.total());
  };
  const auto with = [](auto piece) ZENT_FLAT { return [=](const Real* p, auto) ZENT_FLAT { return piece.load(p); }; };
  const auto inside = [&](long i, long to) ZENT_FLAT {
    for (; i + side <= to; i += side) step(i, with(wide));
    if (i < to) step(i, with(Part<Real>(to - i)));
  };
  const long all = n * parts<T>, first = j * parts<T>, behind = first + count * parts<T>, block = first / side * side;
  if (upper) inside(0, block);
  long i = block;
  for (; i < behind; i += side) {
    const long length = smaller(side, all - i), diagonal = first - i;
    step(i, [=](const Real* p, auto c) ZENT_FLAT {
      const long cut = diagonal + (upper ? c : c + 1) * parts<T>, at = cut < 0 ? 0 : smaller(cut, side);
      return load_lanes<Real>(p, upper ? 0 : at, upper ? at : side, length);
    });
  }
  if (!upper) inside(i, all);
  totals<count>(true, products, sums);
}

template <int count, class T>
ZENT_INLINE void mirror_groups(bool upper, long n, long j, long columns, const T* a, long lda, const T* factors, const T* x, T* y,
                               T* sums) {
  long done = 0;
  for (; done + count <= columns; done += count) {
    mirror_some_columns<count>(upper, n, j + done, a, lda, factors + done, x, y, sums + done);
  }
  if constexpr (count > 1) {
    if (done < columns) {
      mirror_groups<count / 2>(upper, n, j + done, columns - done, a, lda, factors + done, x, y, sums + done);
    }
  }
}

template <class T>
void mirror_columns(bool upper, long n, long j, long count, const T* a, long lda, const T* factors, const T* x, T* y, T* sums) {
  constexpr int registers = (ZENT_VECTOR_BYTES == 64 ? 8 : 4) / parts<T>;
  mirror_groups<registers>(upper, n, j, count, a, lda, factors, x, y, sums);
}

}  // namespace zent::fast::ZENT_LEVEL
