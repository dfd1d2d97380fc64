// Cholesky factorization A = R^H R of a positive definite band matrix, upper half stored, and the solution with it.
#include <algorithm>

#include "math/linalg/band.hpp"
#include "math/linalg/band_window.hpp"

namespace zent::band {

namespace {

template <class T>
struct UpperBand {
  T* data;
  long ld, n, codiagonals;

  T* diagonal(long j) const {
    return data + j * ld + codiagonals;
  }
};

// The upper half of A less that of the square matrix conj(row) row', where `row` comes conjugated already.
template <class T>
ZENT_BAND_INLINE void subtract_square(long m, const T* row, T* a, long ld) {
  long c = 0;
  for (; c + 3 < m; c += 4) {
    T factors[4];
    for (int k = 0; k < 4; ++k) factors[k] = -kernel::conj(row[c + k]);
    add_multiples_4(c + 1, factors, row, a + c * ld, ld);
    for (int k = 1; k < 4; ++k) {
      for (long i = c + 1; i <= c + k; ++i) a[(c + k) * ld + i] += factors[k] * row[i];
    }
  }
  for (; c < m; ++c) add_multiple(c + 1, -kernel::conj(row[c]), row, a + c * ld);
}

// In place, a row of R at a time; `row` holds one. The result is the order of the leading part that is not positive definite, or
// 0.
struct FactorRows {
  template <class T>
  ZENT_BAND_INLINE static long run(UpperBand<T> r, T* row) {
    for (long k = 0; k < r.n; ++k) {
      T* diagonal = r.diagonal(k);
      const RealOf<T> square = kernel::real(diagonal[0]);
      if (!(square > 0)) return k + 1;
      const RealOf<T> root = std::sqrt(square);
      diagonal[0] = kernel::from_real<T>(root);
      const long m = std::min(r.codiagonals, r.n - 1 - k);
      T* const first = diagonal + (r.ld - 1);  // R(k, k + 1), and the next column's is ld - 1 further on
      const RealOf<T> scale = 1 / root;
      for (long c = 0; c < m; ++c) first[c * (r.ld - 1)] = scale * first[c * (r.ld - 1)];
      for (long c = 0; c < m; ++c) row[c] = kernel::conj(first[c * (r.ld - 1)]);
      subtract_square(m, row, first + 1, r.ld - 1);
    }
    return 0;
  }
};

// A diagonal block of a window, in the same way, but confined to its `width` columns.
struct FactorBlock {
  template <class T>
  ZENT_BAND_INLINE static long run(T* block, long ld, long width, T* row) {
    for (long k = 0; k < width; ++k) {
      T* diagonal = block + k * ld + k;
      const RealOf<T> square = kernel::real(diagonal[0]);
      if (!(square > 0)) return k + 1;
      const RealOf<T> root = std::sqrt(square);
      diagonal[0] = kernel::from_real<T>(root);
      const RealOf<T> scale = 1 / root;
      const long m = width - k - 1;
      T* const first = diagonal + ld;
      for (long c = 0; c < m; ++c) first[c * ld] = scale * first[c * ld];
      for (long c = 0; c < m; ++c) row[c] = kernel::conj(first[c * ld]);
      subtract_square(m, row, first + 1, ld);
    }
    return 0;
  }
};

// Columns of the band between the factor and the window.
template <class T>
void load_columns(Window<T>& w, const UpperBand<T>& r, long last) {
  for (long j = w.last; j < last; ++j) {
    std::fill_n(w.storage + (j - w.first) * w.rows, w.rows, T{});
    const long m = std::min(r.codiagonals, j);
    std::copy(r.diagonal(j) - m, r.diagonal(j) + 1, w.at(j - m, j));
  }
  w.last = std::max(w.last, last);
}
template <class T>
void store_columns(const Window<T>& w, const UpperBand<T>& r, long j, long width) {
  for (long c = j; c < j + width; ++c) {
    const long m = std::min(r.codiagonals, c);
    std::copy(w.at(c - m, c), w.at(c, c) + 1, r.diagonal(c) - m);
  }
}

constexpr long block_width = 32;

// The strip of rows of R behind a diagonal block, and the update of the upper half behind that, in strips of columns. Below the
// diagonal of a strip the products land in spare rows of the window that nobody reads.
template <class T>
void update_trailing(const Window<T>& w, long j, long width, long columns) {
  if (columns < 1) return;
  const T one = kernel::from_real<T>(1);
  const long ld = w.dense_ld();
  T* right = w.at(j, j + width);
  fast::trsm('L', 'U', 'C', 'N', width, columns, one, w.at(j, j), ld, right, ld);
  for (long c = 0; c < columns; c += block_width) {
    const long strip = std::min(block_width, columns - c);
    fast::gemm('C', 'N', c + strip, strip, width, -one, right, ld, right + c * ld, ld, one, right + width + c * ld, ld);
  }
}

template <class T>
long factor_blocks(Window<T> w, const UpperBand<T>& r, T* row) {
  for (long j = 0; j < r.n; j += block_width) {
    const long width = std::min(block_width, r.n - j);
    const long needed = std::min(r.n, j + width + r.codiagonals);
    if (needed - w.first > w.capacity) w.drop_before(j);
    load_columns(w, r, needed);
    const long found = run_for_processor<FactorBlock>(w.at(j, j), w.dense_ld(), width, row);
    if (found != 0) return j + found;
    update_trailing(w, j, width, needed - j - width);
    store_columns(w, r, j, width);
  }
  return 0;
}

struct SolveForward {
  template <class T, class Quotient>
  ZENT_BAND_INLINE static long run(UpperBand<const T> r, T* x, Quotient quotient) {
    solve_upper_transposed(r.diagonal(0), r.ld, r.n, r.codiagonals, x, quotient);
    return 0;
  }
};
struct SolveBackward {
  template <class T, class Quotient>
  ZENT_BAND_INLINE static long run(UpperBand<const T> r, T* x, Quotient quotient) {
    solve_upper(r.diagonal(0), r.ld, r.n, r.codiagonals, x, quotient);
    return 0;
  }
};

// Both substitutions with R in rows of n, where codiagonal d is row ncoda - d: R(j - d, j) at its column j. Some unknowns at a
// time take what the known ones contribute, a piece of a codiagonal after the other; the few products among them come last.
struct SolveRows {
  static constexpr long group = 16;

  template <class T>
  ZENT_BAND_INLINE static void forward(long n, const T* __restrict fac, long k, T* __restrict x) {
    for (long first = 0; first < n; first += group) {
      const long width = group < n - first ? group : n - first;
      T sums[group] = {};
      for (long d = k < first + width - 1 ? k : first + width - 1; d > 0; --d) {
        const T* row = fac + (k - d) * n + first;
        const T* known = x + first - d;
        const long from = d > first ? d - first : 0;
        if (d >= group && width == group && from == 0) {
          for (long l = 0; l < group; ++l) sums[l] += kernel::conj(row[l]) * known[l];
        } else {
          for (long l = from; l < d && l < width; ++l) sums[l] += kernel::conj(row[l]) * known[l];
        }
      }
      for (long l = 0; l < width; ++l) {
        const long j = first + l;
        x[j] = (x[j] - sums[l]) / kernel::conj(fac[k * n + j]);
        for (long d = 1; d <= k && l + d < width; ++d) sums[l + d] += kernel::conj(fac[(k - d) * n + j + d]) * x[j];
      }
    }
  }

  template <class T>
  ZENT_BAND_INLINE static void backward(long n, const T* __restrict fac, long k, T* __restrict x) {
    for (long last = n; last > 0; last -= group) {
      const long width = group < last ? group : last, first = last - width;
      T sums[group] = {};
      for (long d = k < n - 1 - first ? k : n - 1 - first; d > 0; --d) {
        const T* row = fac + (k - d) * n + first + d;
        const T* known = x + first + d;
        if (d >= group && width == group && last + d <= n) {
          for (long l = 0; l < group; ++l) sums[l] += row[l] * known[l];
        } else {
          const long from = d < width ? width - d : 0, to = last + d <= n ? width : n - d - first;
          for (long l = from; l < to; ++l) sums[l] += row[l] * known[l];
        }
      }
      for (long l = width - 1; l >= 0; --l) {
        const long j = first + l;
        x[j] = (x[j] - sums[l]) / fac[k * n + j];
        for (long d = 1; d <= k && d <= l; ++d) sums[l - d] += fac[(k - d) * n + j] * x[j];
      }
    }
  }

  template <class T>
  ZENT_BAND_INLINE static long run(long n, const T* fac, long k, T* x) {
    forward(n, fac, k, x);
    backward(n, fac, k, x);
    return 0;
  }
};

}  // namespace

template <class T>
void l_lftqs(long n, const T* a, long lda, long ncoda, T* fac, long ldfac) {
  const UpperBand<T> r = {.data = fac, .ld = ldfac, .n = n, .codiagonals = ncoda};
  for (long j = 0; fac != a && j < n; ++j) {
    const long m = std::min(ncoda, j);
    std::fill_n(fac + j * ldfac, ncoda - m, T{});
    std::copy_n(a + j * lda + ncoda - m, m + 1, r.diagonal(j) - m);
  }
  void* const mark = scratch_mark<Math>();
  T* row = scratch<Math, T>(ncoda + block_width);
  if (row == nullptr) {
    raise<Math>(5, MATH_OUT_OF_MEMORY_1, {.i = {ncoda}, .l = {"ncoda"}});
    return;
  }
  Window<T> w{};
  if (ncoda >= 48) w = window<T>(ncoda + block_width - 1, block_width, ncoda + block_width, n);
  const long order = w.storage != nullptr ? factor_blocks(w, r, row) : run_for_processor<FactorRows>(r, row);
  scratch_release<Math>(mark);
  if (order != 0) raise<Math>(4, MATH_NONPOSITIVE_MATRIX, {.i = {order}});
}

// False after an error: a diagonal element, `step` apart, that has no safe reciprocal.
template <class T>
bool diagonal_divides(long n, const T* diagonal, long step) {
  for (long j = 0; j < n; ++j) {
    if (!(abs1(diagonal[j * step]) >= safe_minimum<RealOf<T>>())) {
      raise<Math>(4, MATH_FACTORED_MATRIX_SINGULAR);
      return false;
    }
  }
  return true;
}

template <class T>
void l_lfsqs(long n, const T* fac, long ldfac, long ncoda, const T* b, T* x) {
  const UpperBand<const T> r = {.data = fac, .ld = ldfac, .n = n, .codiagonals = ncoda};
  if (!diagonal_divides(n, r.diagonal(0), ldfac)) return;
  if (x != b) std::copy_n(b, n, x);
  run_for_processor<SolveForward>(r, x, Division<T>{});
  run_for_processor<SolveBackward>(r, x, Division<T>{});
}

template <class T>
RealOf<T> l_condition_higham(long n, const T* fac, long ldfac, long ncoda, RealOf<T> norm) {
  T *x, *reciprocals;
  bool* signs;
  if (!obtain_estimate_work(n, x, signs, reciprocals)) return 0;
  T* const image = scratch<Math, T>(n);  // the estimate does without it where there is no room
  const UpperBand<const T> r = {.data = fac, .ld = ldfac, .n = n, .codiagonals = ncoda};
  for (long j = 0; j < n; ++j) reciprocals[j] = kernel::from_real<T>(1) / *r.diagonal(j);
  const Reciprocals<T> quotient = {reciprocals};
  const auto solve = [=] {
    run_for_processor<SolveForward>(r, x, quotient);
    run_for_processor<SolveBackward>(r, x, quotient);
  };
  return estimate_inverse_norm(n, x, signs, image, norm, solve, solve);
}

template <class T>
void l_lfsqs_rows(long n, const T* fac, long ncoda, const T* b, T* x) {
  if (!diagonal_divides(n, fac + ncoda * n, 1)) return;
  if (x != b) std::copy_n(b, n, x);
  run_for_processor<SolveRows>(n, fac, ncoda, x);
}

#define ZENT_INSTANTIATE(T)                                           \
  template void l_lftqs<T>(long, const T*, long, long, T*, long);     \
  template void l_lfsqs<T>(long, const T*, long, long, const T*, T*); \
  template void l_lfsqs_rows<T>(long, const T*, long, const T*, T*);  \
  template RealOf<T> l_condition_higham<T>(long, const T*, long, long, RealOf<T>);
ZENT_INSTANTIATE(float)
ZENT_INSTANTIATE(double)
ZENT_INSTANTIATE(zent_f_complex)
ZENT_INSTANTIATE(zent_d_complex)
#undef ZENT_INSTANTIATE

}  // namespace zent::band
