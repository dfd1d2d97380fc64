// Transposition by squares that fit the registers: each line of memory is read and written once.
#pragma once

#include "runtime/kernels/simd/vector.hpp"

namespace zent::fast::ZENT_LEVEL {

// Side of the square: elements in a vector.
template <class T>
constexpr int square_side = lanes<RealOf<T>> / parts<T>;

template <class T, int distance>
ZENT_INLINE void butterfly(Vector<RealOf<T>>* v) {
  using Real = RealOf<T>;
  constexpr int side = square_side<T>;
  unroll<side>([&](auto i) ZENT_FLAT {
    if constexpr ((i & distance) == 0) {
      const Vector<Real> a = v[i], b = v[i + distance];
      v[i] = shuffle<Real, Exchange<side, parts<T>, distance, true>>(a, b);
      v[i + distance] = shuffle<Real, Exchange<side, parts<T>, distance, false>>(a, b);
    }
  });
  if constexpr (distance * 2 < side) butterfly<T, distance * 2>(v);
}

// A square on its way through the registers; with `partial` it has `rows` by `columns` elements, 0 elsewhere.
template <bool partial, class T>
struct Square {
  using Real = RealOf<T>;
  Vector<Real> v[square_side<T>];

  ZENT_INLINE void load(const T* a, long lda, long rows, long columns, Vector<Real> signs) {
    const auto piece = piece_of<partial, Real>(rows * parts<T>);
    unroll<square_side<T>>([&](auto j) ZENT_FLAT {
      if (!partial || j < columns) {
        v[j] = flip_signs<Real>(piece.load(reals(a + j * lda)), signs);
      } else {
        v[j] = Vector<Real>{};
      }
    });
    if constexpr (square_side < T >> 1) butterfly<T, 1>(v);
  }
  // Sizes as before the transposition.
  ZENT_INLINE void store(T* b, long ldb, long rows, long columns) const {
    const auto piece = piece_of<partial, Real>(columns * parts<T>);
    unroll<square_side<T>>([&](auto i) ZENT_FLAT {
      if (!partial || i < rows) piece.store(reals(b + i * ldb), v[i]);
    });
  }
};

template <class T>
ZENT_INLINE void transpose_one(const T* a, long lda, long rows, long columns, T* b, long ldb, Vector<RealOf<T>> signs) {
  constexpr long side = square_side<T>;
  if (rows >= side && columns >= side) {
    Square<false, T> square;
    square.load(a, lda, side, side, signs);
    square.store(b, ldb, side, side);
  } else {
    Square<true, T> square;
    square.load(a, lda, smaller(rows, side), smaller(columns, side), signs);
    square.store(b, ldb, smaller(rows, side), smaller(columns, side));
  }
}

template <class T>
void transpose(bool conjugate, long m, long n, const T* a, long lda, T* b, long ldb) {
  using Real = RealOf<T>;
  constexpr long side = square_side<T>;
  const Vector<Real> signs = conjugate && is_complex<T> ? alternate<Real>(Real(0), -Real(0)) : Vector<Real>{};
  for (long j = 0; j < n; j += side) {
    for (long i = 0; i < m; i += side) transpose_one(a + i + j * lda, lda, m - i, n - j, b + j + i * ldb, ldb, signs);
  }
}

// Exchanges the square at `a` with the one at `b`, both transposed.
template <bool partial, class T>
ZENT_INLINE void exchange_squares(T* a, T* b, long lda, long rows, long columns) {
  using Real = RealOf<T>;
  Square<partial, T> one, other;
  one.load(a, lda, rows, columns, Vector<Real>{});
  other.load(b, lda, columns, rows, Vector<Real>{});
  one.store(b, lda, rows, columns);
  other.store(a, lda, columns, rows);
}

// Squares are taken in tiles of 8 by 8, so that the lines they share with their neighbours are still in the cache.
template <class T>
void transpose_square(long n, T* a, long lda) {
  using Real = RealOf<T>;
  constexpr long side = square_side<T>, tile = 8 * side;
  for (long tile_j = 0; tile_j < n; tile_j += tile) {
    for (long tile_i = 0; tile_i <= tile_j; tile_i += tile) {
      for (long j = tile_j; j < smaller(tile_j + tile, n); j += side) {
        for (long i = tile_i; i < smaller(tile_i + tile, j); i += side) {
          if (n - j >= side) {
            exchange_squares<false>(a + i + j * lda, a + j + i * lda, lda, side, side);
          } else {
            exchange_squares<true>(a + i + j * lda, a + j + i * lda, lda, side, n - j);
          }
        }
        if (tile_i != tile_j) continue;
        T* diagonal = a + j + j * lda;
        transpose_one(diagonal, lda, n - j, n - j, diagonal, lda, Vector<Real>{});
      }
    }
  }
}

}  // namespace zent::fast::ZENT_LEVEL
