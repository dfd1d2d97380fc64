// Matrix products by register tiles (the scheme of Goto and van de Geijn, ACM TOMS 34, 2008). A complex matrix is worked on as
// the real one it is in memory: a tile multiplies the reals of A by the real and by the imaginary part of each element of B, in
// columns of their own, and only the finished tile is put together as straight + i crossed. So one inner loop serves all types.
#pragma once

#include "runtime/kernels/simd/transpose.hpp"

namespace zent::fast::ZENT_LEVEL {

// The full tile: vectors high, real columns wide. It fills the registers but for the operands.
constexpr int tile_vectors = ZENT_VECTOR_BYTES == 16 ? 2 : 3;
constexpr int tile_columns = ZENT_VECTOR_BYTES == 64 ? 8 : 4;
template <class T>
constexpr long tile_rows = tile_vectors* lanes<RealOf<T>> / parts<T>;  // in elements
template <class T>
constexpr long tile_width = tile_columns / parts<T>;

// Blocks, in elements: a strip of B of block_depth rows lives in the first cache, a block of A in the second, the panel of B in
// the third.
constexpr long block_depth = 384;
template <class T>
constexpr long block_rows = (pack_a_bytes / 2 / block_depth / static_cast<long>(sizeof(T))) / tile_rows<T>* tile_rows<T>;
template <class T>
constexpr long block_width = (pack_b_bytes / block_depth / static_cast<long>(sizeof(T))) / tile_width<T>* tile_width<T>;

// What the tiles of one product have in common. Distances are in elements.
template <class T>
struct Product {
  long depth, lda, row_b, column_b, ldc;
  T alpha, beta;
  bool conjugate_b;
  // With packed B: the tiles of one strip of it fetch the next strip, from `ahead` on, ahead_step bytes in each step of the
  // depth.
  const char* ahead;
  long ahead_step;
};

template <class T>
ZENT_INLINE bool is_one(T x) {
  if constexpr (is_complex<T>) {
    return x.re == 1 && x.im == 0;
  } else {
    return x == 1;
  }
}
template <class T>
ZENT_INLINE bool is_zero(T x) {
  if constexpr (is_complex<T>) {
    return x.re == 0 && x.im == 0;
  } else {
    return x == 0;
  }
}

// Element column j of a finished tile, vector i.
template <class T, int vectors>
ZENT_INLINE Vector<RealOf<T>> finished(const Vector<RealOf<T>>* sums, int i, int j, Vector<RealOf<T>> signs) {
  using Real = RealOf<T>;
  if constexpr (is_complex<T>) {
    return sums[2 * j * vectors + i] + times_i<Real>(flip_signs<Real>(sums[(2 * j + 1) * vectors + i], signs));
  } else {
    return sums[j * vectors + i];
  }
}

// C := alpha (finished tile) + beta C for the first `columns` columns.
template <class T, int vectors, int width, class Last>
ZENT_INLINE void write_tile(const Product<T>& p, const Vector<RealOf<T>>* sums, T* c, long columns, Last last) {
  using Real = RealOf<T>;
  const long ldc = p.ldc;
  const Factor<T> alpha(p.alpha);
  const Vector<Real> signs = is_complex<T> && p.conjugate_b ? broadcast<Real>(-Real(0)) : Vector<Real>{};
  const auto each = [&](auto put) ZENT_FLAT {
    unroll<width / parts<T>>([&](auto j) ZENT_FLAT {
      if (j >= columns) return;
      unroll<vectors>([&](auto i) ZENT_FLAT {
        const Vector<Real> value = finished<T, vectors>(sums, i, j, signs);
        Real* to = reals(c + j * ldc) + i * lanes<Real>;
        if constexpr (i == vectors - 1) {
          put(last, to, value);
        } else {
          put(Whole<Real>{}, to, value);
        }
      });
    });
  };
  if (is_one(p.beta)) {
    each([&](auto piece, Real* to, Vector<Real> value) ZENT_FLAT { piece.store(to, alpha.add(value, piece.load(to))); });
  } else if (is_zero(p.beta) && is_one(p.alpha)) {
    each([&](auto piece, Real* to, Vector<Real> value) ZENT_FLAT { piece.store(to, value); });
  } else if (is_zero(p.beta)) {
    each([&](auto piece, Real* to, Vector<Real> value) ZENT_FLAT { piece.store(to, alpha.times(value)); });
  } else {
    const Factor<T> beta(p.beta);
    each([&](auto piece, Real* to, Vector<Real> value)
             ZENT_FLAT { piece.store(to, alpha.add(value, beta.times(piece.load(to)))); });
  }
}

// One tile of C: `vectors` vectors high, the last of them with `tail` reals when `partial`; `width` real columns wide, of which
// the first `columns` elements are stored.
template <class T, int vectors, int width, bool packed_b, bool partial>
void tile(const Product<T>& p, const T* a_start, const T* b_start, T* c, long columns, long tail) {
  using Real = RealOf<T>;
  constexpr int step = lanes<Real>;
  constexpr int lines = (vectors * ZENT_VECTOR_BYTES + 63) / 64, line = 64 / static_cast<int>(sizeof(Real));
  // Packed blocks come from the outer caches, in time when they are asked for: A so many steps ahead, B a strip, C a tile.
  constexpr bool fetches = packed_b && !partial && vectors == tile_vectors;
  constexpr long steps_ahead = 16;
  const auto last = piece_of<partial, Real>(tail);
  const Real* a = reals(a_start);
  const Real* b = reals(b_start);
  const long next_a = p.lda * parts<T>;
  const long next_b = packed_b ? width : p.row_b * parts<T>, column_b = packed_b ? parts<T> : p.column_b * parts<T>;
  [[maybe_unused]] const char* ahead = p.ahead;
  [[maybe_unused]] const long ahead_step = p.ahead_step;
  if constexpr (fetches) {
    unroll<width / parts<T>>([&](auto j) ZENT_FLAT {
      if (j >= columns) return;
      unroll<lines>([&](auto i) ZENT_FLAT { __builtin_prefetch(reals(c + j * p.ldc) + i * line, 1); });
    });
  }
  Vector<Real> sums[vectors * width] = {};
  for (long l = p.depth; l > 0; --l) {
    if constexpr (fetches) {
      unroll<lines>([&](auto i) ZENT_FLAT { __builtin_prefetch(a + steps_ahead * next_a + i * line); });
      __builtin_prefetch(ahead);
      ahead += ahead_step;
    }
    Vector<Real> x[vectors];
    unroll<vectors>([&](auto i) ZENT_FLAT {
      if constexpr (i == vectors - 1) {
        x[i] = last.load(a + i * step);
      } else {
        x[i] = Whole<Real>{}.load(a + i * step);
      }
    });
    unroll<width>([&](auto j) ZENT_FLAT {
      const Vector<Real> factor = broadcast<Real>(b[(j / parts<T>)*column_b + j % parts<T>]);
      unroll<vectors>([&](auto i) ZENT_FLAT { sums[j * vectors + i] = fma(x[i], factor, sums[j * vectors + i]); });
    });
    a += next_a;
    b += next_b;
  }
  write_tile<T, vectors, width>(p, sums, c, columns, last);
}

#if ZENT_VECTOR_BYTES == 64
// A tile of at most half a vector, at half the price.
template <class Real>
struct Half;
template <>
struct Half<double> {
  __m256d v;
  ZENT_INLINE static Half load(unsigned mask, const double* p) {
    return {_mm256_maskz_loadu_pd(static_cast<__mmask8>(mask), p)};
  }
  ZENT_INLINE void add(Half x, double factor) {
    v = _mm256_fmadd_pd(x.v, _mm256_set1_pd(factor), v);
  }
  ZENT_INLINE DoubleVector whole() const {
    return _mm512_maskz_broadcast_f64x4(0xff, v);
  }
};
template <>
struct Half<float> {
  __m256 v;
  ZENT_INLINE static Half load(unsigned mask, const float* p) {
    return {_mm256_maskz_loadu_ps(static_cast<__mmask8>(mask), p)};
  }
  ZENT_INLINE void add(Half x, float factor) {
    v = _mm256_fmadd_ps(x.v, _mm256_set1_ps(factor), v);
  }
  ZENT_INLINE FloatVector whole() const {
    return _mm512_maskz_broadcast_f32x8(0xffff, v);
  }
};

template <class T, int width>
void half_tile(const Product<T>& p, const T* a_start, const T* b_start, T* c, long columns, long tail) {
  using Real = RealOf<T>;
  const unsigned mask = (1u << tail) - 1u;
  const Real* a = reals(a_start);
  const Real* b = reals(b_start);
  const long next_a = p.lda * parts<T>, next_b = p.row_b * parts<T>, column_b = p.column_b * parts<T>;
  Half<Real> halves[width];
  unroll<width>([&](auto j) ZENT_FLAT { halves[j] = Half<Real>::load(0, a); });
  for (long l = p.depth; l > 0; --l) {
    const Half<Real> x = Half<Real>::load(mask, a);
    unroll<width>([&](auto j) ZENT_FLAT { halves[j].add(x, b[(j / parts<T>)*column_b + j % parts<T>]); });
    a += next_a;
    b += next_b;
  }
  Vector<Real> sums[width];
  unroll<width>([&](auto j) ZENT_FLAT { sums[j] = halves[j].whole(); });
  write_tile<T, 1, width>(p, sums, c, columns, Part<Real>(tail));
}
#endif

// The tiles of one width, by height and by whether the last vector is partial.
template <class T>
using TileFunction = void (*)(const Product<T>&, const T*, const T*, T*, long, long);
template <class T>
struct Tiles {
  TileFunction<T> whole[tile_vectors];
  TileFunction<T> part[tile_vectors];
  TileFunction<T> half = nullptr;
};
template <class T, int width, bool packed_b, int... above>
constexpr Tiles<T> tiles_over(Sequence<above...>) {
  return {
    {tile<T, above + 1, width, packed_b, false>...}, {tile<T, above + 1, width, packed_b, true>...},
#if ZENT_VECTOR_BYTES == 64
        half_tile<T, width>
#endif
  };
}
template <class T, int width, bool packed_b>
constexpr Tiles<T> tiles_of_width() {
  return tiles_over<T, width, packed_b>(typename MakeSequence<tile_vectors>::type{});
}

// All tiles of a strip of C, `rows` high.
template <class T>
ZENT_INLINE void run_tiles(const Tiles<T>& tiles, Product<T>& p, long rows, const T* a, long strip_a, const T* b, T* c,
                           long columns) {
  constexpr long height = tile_rows<T>;
  for (; rows >= height; rows -= height, a += strip_a, c += height) {
    tiles.whole[tile_vectors - 1](p, a, b, c, columns, 0);
    p.ahead += p.ahead_step * p.depth;
  }
  if (rows == 0) return;
  constexpr long vector = lanes<RealOf<T>> / parts<T>, worth_two_tiles = 32;
  if (rows % vector == 0) return tiles.whole[rows / vector - 1](p, a, b, c, columns, 0);
  const long vectors = (rows + vector - 1) / vector, above = (vectors - 1) * vector, tail = rows - above;
  if (tiles.half == nullptr || tail > vector / 2 || (above > 0 && p.depth < worth_two_tiles)) {
    return tiles.part[vectors - 1](p, a, b, c, columns, tail * parts<T>);
  }
  if (above > 0) tiles.part[vectors - 2](p, a, b, c, columns, vector * parts<T>);
  tiles.half(p, a + above, b, c + above, columns, tail * parts<T>);
}

// Packs op(A) or op(B)' as strips of `height` rows: element (i, l) of a strip at [i + l * height]. `across`: the strip's rows are
// columns of the source.
template <class T>
void pack(bool across, bool conjugate, long rows, long depth, const T* source, long ld, long height, T* to) {
  using Real = RealOf<T>;
  for (long i = 0; i < rows; i += height, to += height * depth) {
    const long count = smaller(height, rows - i);
    if (count < height) {
      for (long l = 0; l < depth * height; ++l) to[l] = T{};
    }
    if (across) {
      transpose(conjugate, depth, count, source + i * ld, ld, to, height);
    } else {
      for (long l = 0; l < depth; ++l) {
        each_vector<Real, 1>(count * parts<T>,
                             [from = reals(source + i + l * ld), target = reals(to + l * height)](long e, auto piece, auto)
                                 ZENT_FLAT { piece.store(target + e, piece.load(from + e)); });
      }
    }
  }
}

// A block of the product, `rows` by `columns` of C over p.depth, with B packed.
template <class T>
void multiply_packed(Product<T>& p, long rows, long columns, const T* a, long strip_a, const T* b, T* c) {
  static constexpr Tiles<T> wide = tiles_of_width<T, tile_columns, true>();
  constexpr long width = tile_width<T>, step_bytes = width * static_cast<long>(sizeof(T));
  p.ahead_step = (step_bytes * tile_rows<T> + rows - 1) / rows;
  for (long j = 0; j < columns; j += width, b += width * p.depth) {
    p.ahead = reinterpret_cast<const char*>(b + width * p.depth);
    run_tiles(wide, p, rows, a, strip_a, b, c + j * p.ldc, smaller(width, columns - j));
  }
}

// The same with B read in place.
template <class T>
void multiply_in_place(Product<T>& p, long rows, long columns, const T* a, long strip_a, const T* b, T* c) {
  const auto strips = [&](const Tiles<T>& tiles, long step) ZENT_FLAT {
    for (; columns >= step; columns -= step, b += step * p.column_b, c += step * p.ldc) {
      run_tiles(tiles, p, rows, a, strip_a, b, c, step);
    }
  };
  static constexpr Tiles<T> wide = tiles_of_width<T, tile_columns, false>();
  strips(wide, tile_width<T>);
  if constexpr (tile_columns > 4) {
    static constexpr Tiles<T> four = tiles_of_width<T, 4, false>();
    strips(four, 4 / parts<T>);
  }
  static constexpr Tiles<T> two = tiles_of_width<T, 2, false>();
  strips(two, 2 / parts<T>);
  if constexpr (!is_complex<T>) {
    static constexpr Tiles<T> one = tiles_of_width<T, 1, false>();
    strips(one, 1);
  }
}

// Below direct_limit real multiplications packing costs more than it saves. No product with sides up to direct_side gets there.
constexpr double direct_limit = 120.0 * 120.0 * 120.0;
template <class T>
constexpr long direct_side = 120 / parts<T>;

template <class T>
__attribute__((noinline)) void gemm_in_blocks(Op op_a, Op op_b, long m, long n, long k, T alpha, const T* a, long lda, const T* b,
                                              long ldb, T beta, T* c, long ldc) {
  constexpr long height = tile_rows<T>;
  const double work = static_cast<double>(m) * static_cast<double>(n) * static_cast<double>(k) * parts<T> * parts<T>;
  const bool direct = work <= direct_limit;
  const bool packed_a = op_a != Op::none || (!direct && n > 2 * tile_width<T>);
  const bool packed_b = !direct && m > 2 * height;
  T* const store_a = reinterpret_cast<T*>(pack_a);
  T* const store_b = reinterpret_cast<T*>(pack_b);
  // Slices of equal depth; the common case goes without a division.
  const long slices = (k + block_depth - 1) / block_depth;
  const long full_depth = slices <= 1 ? k : (k + slices - 1) / slices;
  Product<T> p{};
  p.lda = packed_a ? height : lda;
  p.row_b = packed_b ? tile_width<T> : op_b == Op::none ? 1 : ldb;
  p.column_b = packed_b ? 1 : op_b == Op::none ? ldb : 1;
  p.ldc = ldc;
  p.alpha = alpha;
  p.conjugate_b = op_b == Op::conjugate;
  for (long j = 0; j < n; j += block_width<T>) {
    const long width = smaller(block_width<T>, n - j);
    p.beta = beta;
    for (long l = 0; l < k; l += full_depth) {
      p.depth = smaller(full_depth, k - l);
      const T* right = b + (op_b == Op::none ? l + j * ldb : j + l * ldb);
      if (packed_b) {
        pack(op_b == Op::none, false, width, p.depth, right, ldb, tile_width<T>, store_b);
        right = store_b;
      }
      for (long i = 0; i < m; i += block_rows<T>) {
        const long rows = smaller(block_rows<T>, m - i);
        const T* left = a + (op_a == Op::none ? i + l * lda : l + i * lda);
        if (packed_a) {
          pack(op_a != Op::none, op_a == Op::conjugate, rows, p.depth, left, lda, height, store_a);
          left = store_a;
        }
        const auto multiply = packed_b ? multiply_packed<T> : multiply_in_place<T>;
        multiply(p, rows, width, left, packed_a ? height * p.depth : height, right, c + i + j * ldc);
      }
      p.beta = kernel::from_real<T>(1);
    }
  }
}

template <class T>
void gemm(Op op_a, Op op_b, long m, long n, long k, T alpha, const T* a, long lda, const T* b, long ldb, T beta, T* c, long ldc) {
  constexpr long side = direct_side<T>;
  if (op_a != Op::none || m > side || n > side || k > side) {
    return gemm_in_blocks(op_a, op_b, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
  }
  const bool across = op_b != Op::none;
  Product<T> p = {k, lda, across ? ldb : 1, across ? 1 : ldb, ldc, alpha, beta, op_b == Op::conjugate, nullptr, 0};
  multiply_in_place(p, m, n, a, tile_rows<T>, b, c);
}

}  // namespace zent::fast::ZENT_LEVEL
