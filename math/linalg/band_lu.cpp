// LU factorization of a general band matrix with partial pivoting, and the solution with it.
#include <algorithm>

#include "math/linalg/band.hpp"
#include "math/linalg/band_window.hpp"

namespace zent::band {

namespace {

// Where the parts of a factor stand: U(i, j) and the multipliers at diagonal(j) + i - j.
template <class T>
struct Factor {
  T* data;
  long ld, n, lower, upper;  // upper: codiagonals of U, nlca + nuca

  T* diagonal(long j) const {
    return data + j * ld + upper;
  }
};

// Row of the largest element of a column of m + 1, the first one of a tie.
template <class T>
ZENT_BAND_INLINE long largest(long m, const T* column) {
  if (m >= 32) return fast::iamax(m + 1, column, 1) - 1;
  long best = 0;
  RealOf<T> size = abs1(column[0]);
  for (long i = 1; i <= m; ++i) {
    if (abs1(column[i]) > size) {
      size = abs1(column[i]);
      best = i;
    }
  }
  return best;
}

// In the factor's own storage, a column at a time. The result is the last column (1-based) without a usable pivot, or 0.
struct FactorColumns {
  template <class T>
  ZENT_BAND_INLINE static long run(Factor<T> f, long nuca, long* pvt) {
    constexpr RealOf<T> small = safe_minimum<RealOf<T>>();
    long singular = 0, reach = 0;  // the last column that a row exchange has filled
    for (long j = 0; j < f.n; ++j) {
      const long m = std::min(f.lower, f.n - 1 - j);
      T* column = f.diagonal(j);
      const long p = largest(m, column);
      pvt[j] = j + p + 1;
      if (!(abs1(column[p]) >= small)) {
        singular = j + 1;
        continue;
      }
      reach = std::max(reach, std::min(j + p + nuca, f.n - 1));
      std::swap(column[0], column[p]);
      const T factor = kernel::from_real<T>(-1) / column[0];
      for (long i = 1; i <= m; ++i) column[i] = factor * column[i];
      long k = 1;
      for (; k + 3 <= reach - j; k += 4) {
        T* other = column + k * (f.ld - 1);
        T values[4];
        for (int c = 0; c < 4; ++c, other += f.ld - 1) {
          values[c] = other[p];
          other[p] = other[0];
          other[0] = values[c];
        }
        add_multiples_4(m, values, column + 1, column + k * (f.ld - 1) + 1, f.ld - 1);
      }
      for (; k <= reach - j; ++k) {
        T* other = column + k * (f.ld - 1);
        const T value = other[p];
        other[p] = other[0];
        other[0] = value;
        if (!(value == T{})) add_multiple(m, value, column + 1, other + 1);
      }
    }
    return singular;
  }
};

// One panel of a window: columns j to j + width - 1, positive multipliers, rows of the panel exchanged as a whole. `reach` is
// the last column of the matrix that the exchanges have filled.
struct FactorPanel {
  template <class T>
  ZENT_BAND_INLINE static long run(Window<T> w, Factor<T> f, long nuca, long j, long width, long* pvt, long* reach) {
    constexpr RealOf<T> small = safe_minimum<RealOf<T>>();
    const long ld = w.dense_ld();
    long singular = 0;
    for (long k = 0; k < width; ++k) {
      const long m = std::min(f.lower, f.n - 1 - j - k);
      T* column = w.at(j + k, j + k);
      const long p = largest(m, column);
      pvt[j + k] = j + k + p + 1;
      if (!(abs1(column[p]) >= small)) {
        singular = j + k + 1;
        continue;
      }
      *reach = std::max(*reach, std::min(j + k + p + nuca, f.n - 1));
      if (p != 0) {
        T* row = w.at(j + k, j);
        for (long other = 0; other < width; ++other) std::swap(row[other * ld], row[other * ld + p]);
      }
      const T factor = kernel::from_real<T>(1) / column[0];
      for (long i = 1; i <= m; ++i) column[i] = factor * column[i];
      long c = 1;
      for (; c + 3 < width - k; c += 4) {
        T* other = column + c * ld;
        const T values[4] = {-other[0], -other[ld], -other[2 * ld], -other[3 * ld]};
        add_multiples_4(m, values, column + 1, other + 1, ld);
      }
      for (; c < width - k; ++c) {
        T* other = column + c * ld;
        if (!(other[0] == T{})) add_multiple(m, -other[0], column + 1, other + 1);
      }
    }
    return singular;
  }
};

// Brings columns up to `last` into the window.
template <class T>
void load_columns(Window<T>& w, const Factor<T>& f, long nuca, long last) {
  for (long j = w.last; j < last; ++j) {
    T* column = w.storage + (j - w.first) * w.rows;
    std::fill_n(column, w.rows, T{});
    const long from = std::max(0L, j - nuca), to = std::min(f.n - 1, j + f.lower);
    std::copy(f.diagonal(j) + (from - j), f.diagonal(j) + (to - j + 1), w.at(from, j));
  }
  w.last = std::max(w.last, last);
}

// Finished columns back into the factor, the multipliers negated and at the rows that they had when they were formed.
template <class T>
void store_panel(const Window<T>& w, const Factor<T>& f, long j, long width, const long* pvt) {
  const long ld = w.dense_ld();
  for (long k = width - 1; k > 0; --k) {
    const long p = pvt[j + k] - 1 - (j + k);
    if (p == 0) continue;
    T* row = w.at(j + k, j);
    for (long c = 0; c < k; ++c) std::swap(row[c * ld], row[c * ld + p]);
  }
  for (long c = j; c < j + width; ++c) {
    const long from = std::max(0L, c - f.upper), m = std::min(f.lower, f.n - 1 - c);
    const T* column = w.at(c, c);
    T* target = f.diagonal(c);
    std::copy(column - (c - from), column + 1, target - (c - from));
    for (long i = 1; i <= m; ++i) target[i] = -column[i];
  }
}

// Exchanges of the panel's rows in the columns to its right, then the block row of U and the update behind it.
template <class T>
void update_trailing(const Window<T>& w, const Factor<T>& f, long j, long width, long reach, const long* pvt) {
  const long columns = reach - (j + width) + 1;
  if (columns < 1) return;
  const long ld = w.dense_ld(), rows = std::min(f.lower, f.n - j - width);
  T* right = w.at(j, j + width);
  for (long c = 0; c < columns; ++c) {
    T* column = right + c * ld;
    for (long k = 0; k < width; ++k) std::swap(column[k], column[pvt[j + k] - 1 - j]);
  }
  fast::trsm('L', 'L', 'N', 'U', width, columns, kernel::from_real<T>(1), w.at(j, j), ld, right, ld);
  fast::gemm('N', 'N', rows, columns, width, kernel::from_real<T>(-1), w.at(j + width, j), ld, right, ld, kernel::from_real<T>(1),
             right + width, ld);
}

template <class T>
long factor_blocks(Window<T> w, const Factor<T>& f, long nuca, long* pvt, long block) {
  long singular = 0, reach = 0;
  for (long j = 0; j < f.n; j += block) {
    const long width = std::min(block, f.n - j);
    const long needed = std::min(f.n, j + width + f.upper);
    if (needed - w.first > w.capacity) w.drop_before(j);
    load_columns(w, f, nuca, needed);
    const long found = run_for_processor<FactorPanel>(w, f, nuca, j, width, pvt, &reach);
    if (found != 0) singular = found;
    update_trailing(w, f, j, width, reach, pvt);
    store_panel(w, f, j, width, pvt);
  }
  return singular;
}

// Blocks pay where the update behind a panel outweighs moving the band through the window.
long chosen_block(long nlca) {
  return nlca < 48 ? 1 : 16;
}

// Columns first to last - 1. Elements in rows of n go by whole tiles where no corner of the storage is near.
template <class T>
void copy_columns(long n, long first, long last, const T* a, long row_step, long column_step, long nlca, long nuca, T* fac,
                  long ldfac) {
  const long m = nlca + nuca + 1;
  if (column_step == 1 && m >= least_for_squares && first >= nuca && last <= n - nlca) {
    for (long j = first; j < last; ++j) std::fill_n(fac + j * ldfac, nlca, T{});
    fast::kernels<T>().transpose(false, last - first, m, a + first, row_step, fac + first * ldfac + nlca, ldfac);
    return;
  }
  std::fill_n(fac + first * ldfac, (last - first) * ldfac, T{});
  for (long r = 0; r < m; ++r) {
    const long from = std::max(first, nuca - r), to = std::min(last, n + nuca - r);  // 0 <= j + r - nuca < n
    for (long j = from; j < to; ++j) fac[j * ldfac + nlca + r] = a[r * row_step + j * column_step];
  }
}
template <class T>
void copy_band(long n, const T* a, long row_step, long column_step, long nlca, long nuca, T* fac, long ldfac) {
  for (long first = 0; first < n; first += transposed_tile) {
    copy_columns(n, first, std::min(n, first + transposed_tile), a, row_step, column_step, nlca, nuca, fac, ldfac);
  }
}

struct SolvePlain {
  template <class T, class Quotient>
  ZENT_BAND_INLINE static long run(Factor<const T> f, const long* pvt, T* x, Quotient quotient) {
    if (f.lower > 0) {
      for (long k = 0; k + 1 < f.n; ++k) {
        const long p = pvt[k] - 1;
        const T value = Quotient::drops ? without_underflow(x[p]) : x[p];
        if (p != k) x[p] = x[k];
        if (p != k || Quotient::drops) x[k] = value;
        if (!(value == T{})) add_multiple(std::min(f.lower, f.n - 1 - k), value, f.diagonal(k) + 1, x + k + 1);
      }
    }
    solve_upper(f.diagonal(0), f.ld, f.n, f.upper, x, quotient);
    return 0;
  }
};

struct SolveTransposed {
  template <class T, class Quotient>
  ZENT_BAND_INLINE static long run(Factor<const T> f, const long* pvt, T* x, Quotient quotient) {
    solve_upper_transposed(f.diagonal(0), f.ld, f.n, f.upper, x, quotient);
    if (f.lower == 0) return 0;
    for (long k = f.n - 2; k >= 0; --k) {
      x[k] += inner_product<true>(std::min(f.lower, f.n - 1 - k), f.diagonal(k) + 1, x + k + 1);
      const long p = pvt[k] - 1;
      if (p != k) std::swap(x[k], x[p]);
    }
    return 0;
  }
};

}  // namespace

template <class T>
void l_l2trb(long n, const T* a, long row_step, long column_step, long nlca, long nuca, T* fac, long ldfac, long* pvt,
             long block) {
  const long m = nlca + nuca + 1;
  if (n < 1) {
    raise<Math>(5, MATH_NEGATIVE_ORDER, {.i = {n}});
  } else if (nlca < 0 || nlca >= n) {
    raise<Math>(5, MATH_BAD_NLCA_VALUE_SPECIFIED, {.i = {nlca, n}});
  } else if (nuca < 0 || nuca >= n) {
    raise<Math>(5, MATH_BAD_NUCA_VALUE_SPECIFIED, {.i = {nuca, n}});
  } else if (row_step == 1 && n > 1 && column_step < m) {
    raise<Math>(5, MATH_TOO_MANY_ROWS_IN_MATRIX_A, {.i = {column_step, m}});
  } else if (ldfac < m + nlca) {
    raise<Math>(5, MATH_TOO_MANY_ROWS_IN_FAC, {.i = {ldfac, m + nlca}});
  } else {
    copy_band(n, a, row_step, column_step, nlca, nuca, fac, ldfac);
    const Factor<T> f = {.data = fac, .ld = ldfac, .n = n, .lower = nlca, .upper = nlca + nuca};
    block = std::clamp(block == 0 ? chosen_block(nlca) : block, 1L, 32L);
    void* const mark = scratch_mark<Math>();
    Window<T> w{};
    if (block > 1) w = window<T>(f.upper + block - 1, nlca + block - 1, f.upper + block, n);
    const long singular =
        w.storage != nullptr ? factor_blocks(w, f, nuca, pvt, block) : run_for_processor<FactorColumns>(f, nuca, pvt);
    scratch_release<Math>(mark);
    if (singular != 0) raise<Math>(4, MATH_SINGULAR_MATRIX);
  }
}

template <class T>
void l_lfsrb(long n, const T* fac, long ldfac, long nlca, long nuca, const long* pvt, const T* b, long ipath, T* x) {
  if (ipath != 1 && ipath != 2) {
    raise<Math>(5, MATH_IPATH_RANGE, {.i = {1, 2, ipath}});
    return;
  }
  const Factor<const T> f = {.data = fac, .ld = ldfac, .n = n, .lower = nlca, .upper = nlca + nuca};
  for (long j = 0; j < n; ++j) {
    if (*f.diagonal(j) == T{}) {
      raise<Math>(4, MATH_SINGULAR_MATRIX);
      return;
    }
  }
  if (x != b) std::copy_n(b, n, x);
  if (ipath == 1) {
    run_for_processor<SolvePlain>(f, pvt, x, Division<T>{});
  } else {
    run_for_processor<SolveTransposed>(f, pvt, x, Division<T>{});
  }
}

template <class T>
RealOf<T> l_condition_higham(long n, const T* fac, long ldfac, long nlca, long nuca, const long* pvt, RealOf<T> norm) {
  T *x, *reciprocals;
  bool* signs;
  if (!obtain_estimate_work(n, x, signs, reciprocals)) return 0;
  const Factor<const T> f = {.data = fac, .ld = ldfac, .n = n, .lower = nlca, .upper = nlca + nuca};
  for (long j = 0; j < n; ++j) reciprocals[j] = kernel::from_real<T>(1) / *f.diagonal(j);
  const Reciprocals<T> quotient = {reciprocals};
  return estimate_inverse_norm(
      n, x, signs, static_cast<T*>(nullptr), norm, [=] { run_for_processor<SolvePlain>(f, pvt, x, quotient); },
      [=] { run_for_processor<SolveTransposed>(f, pvt, x, quotient); });
}

#define ZENT_INSTANTIATE(T)                                                                    \
  template void l_l2trb<T>(long, const T*, long, long, long, long, T*, long, long*, long);     \
  template void l_lfsrb<T>(long, const T*, long, long, long, const long*, const T*, long, T*); \
  template RealOf<T> l_condition_higham<T>(long, const T*, long, long, long, const long*, RealOf<T>);
ZENT_INSTANTIATE(float)
ZENT_INSTANTIATE(double)
ZENT_INSTANTIATE(zent_f_complex)
ZENT_INSTANTIATE(zent_d_complex)
#undef ZENT_INSTANTIATE

}  // namespace zent::band
