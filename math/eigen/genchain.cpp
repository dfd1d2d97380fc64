// Chains of small similarity steps in vector registers: a column or row is loaded once, meets the three steps that touch it, and
// is stored once.
#include "math/eigen/genchain.hpp"

#include <cstring>

namespace zent::eigen {

namespace {

#define ZENT_INLINE [[gnu::always_inline]] inline

template <class Real, int bytes>
struct Lanes;
#define ZENT_LANES(Real, Index, bytes)                       \
  template <>                                                \
  struct Lanes<Real, bytes> {                                \
    typedef Real Vector __attribute__((vector_size(bytes))); \
    typedef Index Mask __attribute__((vector_size(bytes)));  \
    typedef Index Whole;                                     \
    static constexpr int width = bytes / int{sizeof(Real)};  \
  };
ZENT_LANES(double, long, 16)
ZENT_LANES(double, long, 32)
ZENT_LANES(double, long, 64)
ZENT_LANES(float, int, 16)
ZENT_LANES(float, int, 32)
ZENT_LANES(float, int, 64)
#undef ZENT_LANES

template <class V, class Real>
ZENT_INLINE void load(V& v, const Real* p) {
  __builtin_memcpy(&v, p, sizeof(V));
}
template <class V, class Real>
ZENT_INLINE void store(const V& v, Real* p) {
  __builtin_memcpy(p, &v, sizeof(V));
}

// width vectors, each of width elements, transposed by repeated interleaving of the two halves.
template <class L, class V>
ZENT_INLINE void transpose(V (&t)[L::width]) {
  constexpr int w = L::width;
  typename L::Mask low, high;
#pragma GCC unroll 16
  for (int i = 0; i < w; ++i) {
    low[i] = static_cast<typename L::Whole>(i / 2 + (i % 2) * w);
    high[i] = static_cast<typename L::Whole>(w / 2 + i / 2 + (i % 2) * w);
  }
#pragma GCC unroll 4
  for (int stage = 1; stage < w; stage *= 2) {
    V out[w];
#pragma GCC unroll 16
    for (int i = 0; i < w / 2; ++i) {
      out[2 * i] = __builtin_shuffle(t[i], t[i + w / 2], low);
      out[2 * i + 1] = __builtin_shuffle(t[i], t[i + w / 2], high);
    }
#pragma GCC unroll 16
    for (int i = 0; i < w; ++i) t[i] = out[i];
  }
}

// `group` vectors of rows side by side hide the latency of the chain.
template <class L, int group, class Real>
ZENT_INLINE void columns_strip(long count, bool pair, const Step<Real>* steps, Real* a, long lda) {
  using V = typename L::Vector;
  constexpr int w = L::width;
  V first[group], second[group];
#pragma GCC unroll 4
  for (int g = 0; g < group; ++g) {
    load(first[g], a + g * w);
    load(second[g], a + lda + g * w);
  }
  const long threes = pair ? count - 1 : count;
  for (long k = 0; k < threes; ++k, a += lda) {
    const Step<Real> s = steps[k];
#pragma GCC unroll 4
    for (int g = 0; g < group; ++g) {
      V third;
      load(third, a + 2 * lda + g * w);
      const V sum = s.x * first[g] + s.y * second[g] + s.z * third;
      store(first[g] - sum, a + g * w);
      first[g] = second[g] - sum * s.q;
      second[g] = third - sum * s.r;
    }
  }
  if (pair) {
    const Step<Real> s = steps[threes];
#pragma GCC unroll 4
    for (int g = 0; g < group; ++g) {
      const V sum = s.x * first[g] + s.y * second[g];
      first[g] = first[g] - sum;
      second[g] = second[g] - sum * s.q;
    }
  }
#pragma GCC unroll 4
  for (int g = 0; g < group; ++g) {
    store(first[g], a + g * w);
    store(second[g], a + lda + g * w);
  }
}

template <class Real, int bytes>
ZENT_INLINE void columns_body(long count, bool pair, const Step<Real>* steps, long m, Real* a, long lda) {
  using L = Lanes<Real, bytes>;
  constexpr int w = L::width;
  long i = 0;
  for (; i + 4 * w <= m; i += 4 * w) columns_strip<L, 4>(count, pair, steps, a + i, lda);
  for (; i + w <= m; i += w) columns_strip<L, 1>(count, pair, steps, a + i, lda);
  if constexpr (bytes > 32) {
    constexpr int half = Lanes<Real, 32>::width;
    for (; i + half <= m; i += half) columns_strip<Lanes<Real, 32>, 1>(count, pair, steps, a + i, lda);
  }
  if constexpr (bytes > 16) {
    constexpr int quarter = Lanes<Real, 16>::width;
    for (; i + quarter <= m; i += quarter) columns_strip<Lanes<Real, 16>, 1>(count, pair, steps, a + i, lda);
  }
  if (i < m) chain_columns_plain(count, pair, steps, m - i, a + i, lda);
}

// One row of w columns, element by element: for the ends of the chain.
template <class V, int w, class Real>
ZENT_INLINE void gather(V& v, const Real* p, long lda) {
  Real elements[w];
#pragma GCC unroll 16
  for (int j = 0; j < w; ++j) elements[j] = p[j * lda];
  load(v, elements);
}
template <class V, int w, class Real>
ZENT_INLINE void scatter(const V& v, Real* p, long lda) {
#pragma GCC unroll 16
  for (int j = 0; j < w; ++j) p[j * lda] = v[j];
}

// group times w columns, transposed in registers so that a vector holds one row of them.
template <class L, int group, class Real>
ZENT_INLINE void rows_strip(long count, bool pair, const Step<Real>* steps, Real* a, long lda) {
  using V = typename L::Vector;
  constexpr int w = L::width;
  V first[group], second[group];
#pragma GCC unroll 4
  for (int g = 0; g < group; ++g) {
    gather<V, w>(first[g], a + g * w * lda, lda);
    gather<V, w>(second[g], a + 1 + g * w * lda, lda);
  }
  const long threes = pair ? count - 1 : count;
  long k = 0;
  for (; k + w <= threes; k += w, a += w) {
    V t[group][w];
#pragma GCC unroll 4
    for (int g = 0; g < group; ++g) {
#pragma GCC unroll 16
      for (int j = 0; j < w; ++j) load(t[g][j], a + 2 + (g * w + j) * lda);
      transpose<L>(t[g]);
    }
#pragma GCC unroll 16
    for (int i = 0; i < w; ++i) {
      const Step<Real> s = steps[k + i];
#pragma GCC unroll 4
      for (int g = 0; g < group; ++g) {
        const V sum = (s.r * t[g][i] + s.q * second[g]) + first[g];
        const V done = first[g] - sum * s.x;
        first[g] = second[g] - sum * s.y;
        second[g] = t[g][i] - sum * s.z;
        t[g][i] = done;
      }
    }
#pragma GCC unroll 4
    for (int g = 0; g < group; ++g) {
      transpose<L>(t[g]);
#pragma GCC unroll 16
      for (int j = 0; j < w; ++j) store(t[g][j], a + (g * w + j) * lda);
    }
  }
#pragma GCC unroll 4
  for (int g = 0; g < group; ++g) {
    Real* rest = a + g * w * lda;
    V one = first[g], two = second[g];
    for (long l = k; l < threes; ++l, ++rest) {
      const Step<Real> s = steps[l];
      V three;
      gather<V, w>(three, rest + 2, lda);
      const V sum = one + s.q * two + s.r * three;
      scatter<V, w>(one - sum * s.x, rest, lda);
      one = two - sum * s.y;
      two = three - sum * s.z;
    }
    if (pair) {
      const Step<Real> s = steps[threes];
      const V sum = one + s.q * two;
      one = one - sum * s.x;
      two = two - sum * s.y;
    }
    scatter<V, w>(one, rest, lda);
    scatter<V, w>(two, rest + 1, lda);
  }
}

// A full run: the rows that it touches fit the registers as whole blocks, so no row needs to be gathered.
template <class L, class Real>
ZENT_INLINE void full_run_strip(const Step<Real>* steps, Real* a, long lda) {
  using V = typename L::Vector;
  constexpr int w = L::width, rows = full_run + 2;
  V t[rows / w][w];
#pragma GCC unroll 16
  for (int b = 0; b < rows / w; ++b) {
#pragma GCC unroll 16
    for (int j = 0; j < w; ++j) load(t[b][j], a + b * w + j * lda);
    transpose<L>(t[b]);
  }
#pragma GCC unroll 16
  for (int k = 0; k < full_run; ++k) {
    const Step<Real> s = steps[k];
    V& first = t[k / w][k % w];
    V& second = t[(k + 1) / w][(k + 1) % w];
    V& third = t[(k + 2) / w][(k + 2) % w];
    const V sum = (s.r * third + s.q * second) + first;
    first = first - sum * s.x;
    second = second - sum * s.y;
    third = third - sum * s.z;
  }
#pragma GCC unroll 16
  for (int b = 0; b < rows / w; ++b) {
    transpose<L>(t[b]);
#pragma GCC unroll 16
    for (int j = 0; j < w; ++j) store(t[b][j], a + b * w + j * lda);
  }
}

template <class Real, int bytes>
ZENT_INLINE void rows_body(long count, bool pair, const Step<Real>* steps, long n, Real* a, long lda) {
  using L = Lanes<Real, bytes>;
  constexpr int w = L::width;
  long j = 0;
  if (count == full_run && !pair) {
    for (; j + w <= n; j += w) full_run_strip<L>(steps, a + j * lda, lda);
    if (j < n) {  // the last columns as part of a tile
      constexpr int rows = full_run + 2;
      Real tile[rows * w] = {};
      for (long c = 0; c < n - j; ++c) __builtin_memcpy(tile + c * rows, a + (j + c) * lda, sizeof(Real) * rows);
      full_run_strip<L>(steps, tile, rows);
      for (long c = 0; c < n - j; ++c) __builtin_memcpy(a + (j + c) * lda, tile + c * rows, sizeof(Real) * rows);
    }
    return;
  }
  if constexpr (w == 8 && bytes == 64) {  // with 32 registers two strips hide each other's latency
    for (; j + 2 * w <= n; j += 2 * w) rows_strip<L, 2>(count, pair, steps, a + j * lda, lda);
  }
  for (; j + w <= n; j += w) rows_strip<L, 1>(count, pair, steps, a + j * lda, lda);
  if (j < n) chain_rows_plain(count, pair, steps, n - j, a + j * lda, lda);
}

// Strips of columns go through a transposed copy, in which a vector is a piece of a row, once for all runs.
template <class Real, int bytes>
ZENT_INLINE void runs_body(long runs, const Run<Real>* run, long rows, long columns, Real* a, long lda, Real* buffer) {
  using L = Lanes<Real, bytes>;
  using V = typename L::Vector;
  constexpr int w = L::width, group = 2, width = group * w;
  static_assert(width <= buffer_width);
  for (long c = 0; c < columns; c += width, a += width * lda) {
    const long valid = c + width <= columns ? width : columns - c;
    const long blocks = valid == width ? rows / w * w : 0;  // rows that are transposed as blocks
    for (long r = 0; r < blocks; r += w) {
#pragma GCC unroll 2
      for (int g = 0; g < group; ++g) {
        V t[w];
#pragma GCC unroll 16
        for (int j = 0; j < w; ++j) load(t[j], a + r + (g * w + j) * lda);
        transpose<L>(t);
#pragma GCC unroll 16
        for (int i = 0; i < w; ++i) store(t[i], buffer + (r + i) * width + g * w);
      }
    }
    for (long r = blocks; r < rows; ++r) {
      for (long j = 0; j < width; ++j) buffer[r * width + j] = j < valid ? a[r + j * lda] : 0;
    }
    for (long i = 0; i < runs; ++i) {
      Real* row = buffer + run[i].start * width;
      const Step<Real>* steps = run[i].steps;
      const long threes = run[i].count - 1;
      V first[group], second[group];
#pragma GCC unroll 2
      for (int g = 0; g < group; ++g) {
        load(first[g], row + g * w);
        load(second[g], row + width + g * w);
      }
      for (long k = 0; k < threes; ++k, row += width) {
        const Step<Real> s = steps[k];
#pragma GCC unroll 2
        for (int g = 0; g < group; ++g) {
          V third;
          load(third, row + 2 * width + g * w);
          const V sum = (s.r * third + s.q * second[g]) + first[g];
          store(first[g] - sum * s.x, row + g * w);
          first[g] = second[g] - sum * s.y;
          second[g] = third - sum * s.z;
        }
      }
      const Step<Real> s = steps[threes];
#pragma GCC unroll 2
      for (int g = 0; g < group; ++g) {
        const V sum = first[g] + s.q * second[g];
        store(first[g] - sum * s.x, row + g * w);
        store(second[g] - sum * s.y, row + width + g * w);
      }
    }
    for (long r = 0; r < blocks; r += w) {
#pragma GCC unroll 2
      for (int g = 0; g < group; ++g) {
        V t[w];
#pragma GCC unroll 16
        for (int i = 0; i < w; ++i) load(t[i], buffer + (r + i) * width + g * w);
        transpose<L>(t);
#pragma GCC unroll 16
        for (int j = 0; j < w; ++j) store(t[j], a + r + (g * w + j) * lda);
      }
    }
    for (long r = blocks; r < rows; ++r) {
      for (long j = 0; j < valid; ++j) a[r + j * lda] = buffer[r * width + j];
    }
  }
}

#define ZENT_RUNS(name, Real)                                                                                                   \
  void name##_base(long runs, const Run<Real>* run, long rows, long columns, Real* a, long lda, Real* buffer) {                 \
    runs_body<Real, 16>(runs, run, rows, columns, a, lda, buffer);                                                              \
  }                                                                                                                             \
  __attribute__((target("avx2"))) void name##_avx2(long runs, const Run<Real>* run, long rows, long columns, Real* a, long lda, \
                                                   Real* buffer) {                                                              \
    runs_body<Real, 32>(runs, run, rows, columns, a, lda, buffer);                                                              \
  }                                                                                                                             \
  __attribute__((target("avx512f,avx512dq"))) void name##_avx512(long runs, const Run<Real>* run, long rows, long columns,      \
                                                                 Real* a, long lda, Real* buffer) {                             \
    runs_body<Real, 64>(runs, run, rows, columns, a, lda, buffer);                                                              \
  }                                                                                                                             \
  void name(long runs, const Run<Real>* run, long rows, long columns, Real* a, long lda, Real* buffer) {                        \
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq")) {                                              \
      name##_avx512(runs, run, rows, columns, a, lda, buffer);                                                                  \
    } else if (__builtin_cpu_supports("avx2")) {                                                                                \
      name##_avx2(runs, run, rows, columns, a, lda, buffer);                                                                    \
    } else {                                                                                                                    \
      name##_base(runs, run, rows, columns, a, lda, buffer);                                                                    \
    }                                                                                                                           \
  }
ZENT_RUNS(runs_double, double)
ZENT_RUNS(runs_float, float)
#undef ZENT_RUNS

#define ZENT_BODIES(name, body, Real)                                                                                           \
  void name##_base(long count, bool pair, const Step<Real>* steps, long m, Real* a, long lda) {                                 \
    body<Real, 16>(count, pair, steps, m, a, lda);                                                                              \
  }                                                                                                                             \
  __attribute__((target("avx2"))) void name##_avx2(long count, bool pair, const Step<Real>* steps, long m, Real* a, long lda) { \
    body<Real, 32>(count, pair, steps, m, a, lda);                                                                              \
  }                                                                                                                             \
  __attribute__((target("avx512f,avx512dq"))) void name##_avx512(long count, bool pair, const Step<Real>* steps, long m,        \
                                                                 Real* a, long lda) {                                           \
    body<Real, 64>(count, pair, steps, m, a, lda);                                                                              \
  }                                                                                                                             \
  void name(long count, bool pair, const Step<Real>* steps, long m, Real* a, long lda) {                                        \
    if (count < 1 || m < 1) return;                                                                                             \
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq")) {                                              \
      name##_avx512(count, pair, steps, m, a, lda);                                                                             \
    } else if (__builtin_cpu_supports("avx2")) {                                                                                \
      name##_avx2(count, pair, steps, m, a, lda);                                                                               \
    } else {                                                                                                                    \
      name##_base(count, pair, steps, m, a, lda);                                                                               \
    }                                                                                                                           \
  }
ZENT_BODIES(columns_double, columns_body, double)
ZENT_BODIES(columns_float, columns_body, float)
ZENT_BODIES(rows_double, rows_body, double)
ZENT_BODIES(rows_float, rows_body, float)
#undef ZENT_BODIES
#undef ZENT_INLINE

}  // namespace

template <>
void chain_columns(long count, bool pair, const Step<double>* steps, long m, double* a, long lda) {
  columns_double(count, pair, steps, m, a, lda);
}
template <>
void chain_columns(long count, bool pair, const Step<float>* steps, long m, float* a, long lda) {
  columns_float(count, pair, steps, m, a, lda);
}
template <>
void chain_rows(long count, bool pair, const Step<double>* steps, long n, double* a, long lda) {
  rows_double(count, pair, steps, n, a, lda);
}
template <>
void chain_rows(long count, bool pair, const Step<float>* steps, long n, float* a, long lda) {
  rows_float(count, pair, steps, n, a, lda);
}

template <>
void runs_rows(long runs, const Run<double>* run, long rows, long columns, double* a, long lda, double* buffer) {
  runs_double(runs, run, rows, columns, a, lda, buffer);
}
template <>
void runs_rows(long runs, const Run<float>* run, long rows, long columns, float* a, long lda, float* buffer) {
  runs_float(runs, run, rows, columns, a, lda, buffer);
}

}  // namespace zent::eigen
