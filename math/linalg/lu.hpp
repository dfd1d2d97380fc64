// Dense LU factorization with scaled partial pivoting, its solves, condition estimate and inverse. Matrices are column-major.
//
// The factor holds U on and above the diagonal and the negated multipliers below it, each where its step left it: later
// interchanges do not move them, so a solve interleaves interchange and elimination. Entry k of the pivots is the row (from 1)
// chosen at step k.
#pragma once

#include "math/linalg/dense.hpp"

namespace zent::linalg {

inline constexpr long estimate_rows = 16;  // rows of U that the estimate gathers at a time
inline constexpr long lu_leaf = 8;
inline constexpr long inverse_block = 128;  // fewer columns would not pay for bringing the other ones in again and again

template <class T>
[[gnu::always_inline]] inline void scaled_sizes_body(long n, const T* column, const RealOf<T>* scale, RealOf<T>* product) {
  for (long i = 0; i < n; ++i) product[i] = scale[i] * abs1(column[i]);
}
ZENT_BY_LEVEL(scaled_sizes, (long n, const T* column, const RealOf<T>* scale, RealOf<T>* product), (n, column, scale, product))

// The row with the largest scale[i] |column[i]|, from 0; the first of equals.
template <class T>
long l_l4trg(long m, const T* column, const RealOf<T>* scale) {
  constexpr long chunk = 400;
  RealOf<T> product[chunk];
  RealOf<T> largest = 0;
  long p = 0;
  for (long start = 0; start < m; start += chunk) {
    const long count = std::min(chunk, m - start);
    scaled_sizes<T>(count, column + start, scale + start, product);
    const long at = fast::iamax(count, product, 1) - 1;
    if (start == 0 || product[at] > largest) {
      largest = product[at];
      p = start + at;
    }
  }
  return p;
}

// Turns scale[i], the largest modulus of row i, into the row's factor.
template <class Real>
void finish_row_scales(long n, Real* scale) {
  for (long i = 0; i < n; ++i) scale[i] = scale[i] < safe_small<Real>() ? Real{1} : 1 / scale[i];
}

// One column: its moduli into the largest ones of the rows; their sum.
template <class T>
[[gnu::always_inline]] inline void measure_body(long n, const T* column, RealOf<T>* largest, RealOf<T>* total) {
  constexpr long lanes = 16;
  using Real = RealOf<T>;
  Real sums[lanes] = {};
  long i = 0;
  for (; i + lanes <= n; i += lanes) {
    for (long l = 0; l < lanes; ++l) {
      const Real size = abs1(column[i + l]);
      sums[l] += size;
      largest[i + l] = size > largest[i + l] ? size : largest[i + l];
    }
  }
  for (long l = 0; i < n; ++i, ++l) {
    const Real size = abs1(column[i]);
    sums[l] += size;
    if (size > largest[i]) largest[i] = size;
  }
  for (long l = 0; l < lanes; ++l) *total += sums[l];
}

ZENT_BY_LEVEL(measure, (long n, const T* column, RealOf<T>* largest, RealOf<T>* total), (n, column, largest, total))

// Largest modulus of each row into scale; the largest column sum of moduli.
template <class T>
RealOf<T> measure_columns(long n, const T* a, long lda, RealOf<T>* scale) {
  using Real = RealOf<T>;
  for (long i = 0; i < n; ++i) scale[i] = 0;
  Real norm = 0;
  for (long j = 0; j < n; ++j) {
    Real sum = 0;
    measure<T>(n, a + j * lda, scale, &sum);
    if (sum > norm || sum != sum) norm = sum;
  }
  return norm;
}

// A factorization in progress. Within it the multipliers are positive and move with the interchanges; each block of columns gives
// them their final place and sign when it is done.
template <class T>
struct LuInProgress {
  using Real = RealOf<T>;
  long n;
  T* fac;
  long ld;
  long* pvt;
  Real* scale;
  long singular;  // last column without a pivot, -1: none

  T* at(long i, long j) {
    return fac + i + j * ld;
  }

  void interchange(long first_pivot, long last_pivot, long first_column, long last_column) {
    for (long j = first_column; j < last_column; ++j) {
      T* column = fac + j * ld;
      for (long k = first_pivot; k < last_pivot; ++k) std::swap(column[k], column[pvt[k] - 1]);
    }
  }

  // Rows c0 to c1 - 1 of columns c1 to c2 - 1 become rows of U; the rows below are updated.
  void eliminate(long c0, long c1, long c2) {
    interchange(c0, c1, c1, c2);
    fast::trsm('L', 'L', 'N', 'U', c1 - c0, c2 - c1, from_real<T>(1), at(c0, c0), ld, at(c0, c1), ld);
    fast::gemm('N', 'N', n - c1, c2 - c1, c1 - c0, from_real<T>(-1), at(c1, c0), ld, at(c0, c1), ld, from_real<T>(1), at(c1, c1),
               ld);
  }

  void pivot(long k, long c0) {
    T* column = fac + k * ld;
    const long p = k + l_l4trg(n - k, column + k, scale + k);
    pvt[k] = p + 1;
    if (abs1(column[p]) >= safe_small<Real>()) {
      std::swap(scale[k], scale[p]);
      for (long j = c0; j <= k; ++j) std::swap(fac[k + j * ld], fac[p + j * ld]);
      fast::scal(n - k - 1, from_real<T>(1) / column[k], column + k + 1, 1);
    } else {
      singular = k;
      fast::scal(n - k - 1, from_real<T>(-1), column + k + 1, 1);  // comes out as it was
    }
  }

  void leaf(long c0, long c1) {
    for (long k = c0; k < c1; ++k) {
      const long width = k - c0;
      if (width > 0) {
        interchange(c0, k, k, k + 1);
        for (long j = c0; j < k; ++j) {
          const T u = *at(j, k);
          for (long i = j + 1; i < k; ++i) *at(i, k) += -u * *at(i, j);
        }
        fast::gemv('N', n - k, width, from_real<T>(-1), at(k, c0), ld, at(c0, k), 1, from_real<T>(1), at(k, k), 1);
      }
      if (k == n - 1) {
        pvt[k] = n;
        if (safe_small<Real>() > abs1(*at(k, k))) singular = k;
      } else {
        pivot(k, c0);
      }
    }
  }

  void panel(long c0, long c1) {
    if (c1 - c0 <= lu_leaf) return leaf(c0, c1);
    const long middle = c0 + (c1 - c0 + lu_leaf) / (2 * lu_leaf) * lu_leaf;
    panel(c0, middle);
    eliminate(c0, middle, c1);
    panel(middle, c1);
    interchange(middle, c1, c0, middle);
  }

  void settle(long c0, long c1) {
    for (long j = c0; j < c1; ++j) {
      T* column = fac + j * ld;
      for (long k = c1 - 1; k > j; --k) std::swap(column[k], column[pvt[k] - 1]);
      fast::scal(n - j - 1, from_real<T>(-1), column + j + 1, 1);
    }
  }

  long block() const {
    return n < 128 ? 32 : n < 512 ? 64 : 128;
  }

  void run() {
    const long width = block();
    for (long c0 = 0; c0 < n; c0 += width) {
      const long c1 = std::min(n, c0 + width);
      panel(c0, c1);
      if (c1 < n) eliminate(c0, c1, n);
      settle(c0, c1);
    }
  }
};

// Factors the matrix in fac, whose row scales are given. False after the error for a pivot that is too small.
template <class Half, class T>
bool factor_lu(long n, T* fac, long ldfac, long* pvt, RealOf<T>* scale) {
  LuInProgress<T> lu = {n, fac, ldfac, pvt, scale, -1};
  lu.run();
  if (lu.singular >= 0) raise<Half>(4, MATH_SINGULAR_MATRIX);
  return lu.singular < 0;
}

// The multipliers of a factor, column-major as the kernels make it or row-major as callers hold it, used a block of steps at a
// time. Interchanges couple few rows to the order of the steps: those of the block and the ones that its pivots name. They go
// step by step; all others are one product of a matrix and a vector.
template <class T, bool row_major>
struct Multipliers {
  using Real = RealOf<T>;
  // Coupled rows are strided in a column-major factor, so narrow blocks, with fewer of them, pay there.
  static constexpr long block = row_major ? 32 : 16;
  long n;
  const T* fac;
  long ld;
  const long* pvt;
  T* x;
  bool bounded;  // scale x down by each element that exceeds 1
  Real scaled_all = 1;

  long first, last;  // steps of the block
  long coupled[block];
  long coupled_count;
  T held[block];
  Real scaled;

  T at(long i, long k) const {
    return row_major ? fac[i * ld + k] : fac[i + k * ld];
  }
  const T* below() const {  // the block's multipliers from row `last` on
    return row_major ? fac + last * ld + first : fac + last + first * ld;
  }

  void open(long from) {
    first = from;
    last = std::min(from + block, n - 1);
    scaled = 1;
    coupled_count = 0;
    for (long k = first; k < last; ++k) {
      const long p = pvt[k] - 1;
      if (p < last) continue;
      bool known = false;
      for (long c = 0; c < coupled_count; ++c) known = known || coupled[c] == p;
      if (!known) coupled[coupled_count++] = p;
    }
  }
  void bound(long k) {
    if (!bounded || !(abs1(x[k]) > 1)) return;
    const Real factor = 1 / abs1(x[k]);
    scale_by(last - first, factor, x + first);
    for (long c = 0; c < coupled_count; ++c) x[coupled[c]] = factor * x[coupled[c]];
    scaled *= factor;
  }
  void hold() {
    for (long c = 0; c < coupled_count; ++c) held[c] = x[coupled[c]];
  }
  void release() {
    for (long c = 0; c < coupled_count; ++c) x[coupled[c]] = held[c];
  }
  void close() {
    scale_others(n, first, last, scaled, x);
    scaled_all *= scaled;
  }

  // x := M_n-1 P_n-1 ... M_1 P_1 x. Of a row-major factor lu_rows.hpp knows a better way.
  void forward() {
    static_assert(!row_major);
    for (long from = 0; from < n - 1; from += block) {
      open(from);
      for (long k = first; k < last; ++k) {
        std::swap(x[k], x[pvt[k] - 1]);
        const T t = x[k];
        for (long i = k + 1; i < last; ++i) x[i] += t * at(i, k);
        for (long c = 0; c < coupled_count; ++c) x[coupled[c]] += t * at(coupled[c], k);
        bound(k);
      }
      hold();
      close();
      fast::gemv('N', n - last, last - first, from_real<T>(1), below(), ld, x + first, 1, from_real<T>(1), x + last, 1);
      release();
    }
  }

  // x := P_1 M_1^H ... P_n-1 M_n-1^H x.
  void backward() {
    for (long from = (n - 2) / block * block; n > 1 && from >= 0; from -= block) {
      open(from);
      T sums[block];
      products(sums);
      for (long k = last - 1; k >= first; --k) {
        T sum = scaled * sums[k - first];
        for (long i = k + 1; i < last; ++i) sum += conj(at(i, k)) * x[i];
        for (long c = 0; c < coupled_count; ++c) sum += conj(at(coupled[c], k)) * x[coupled[c]];
        x[k] += sum;
        bound(k);
        std::swap(x[k], x[pvt[k] - 1]);
      }
      hold();
      close();
      release();
    }
  }

  // What the rows that no interchange of the block touches contribute.
  void products(T* sums) {
    const long rows = n - last, width = last - first;
    hold();
    for (long c = 0; c < coupled_count; ++c) x[coupled[c]] = T{};
    if constexpr (row_major) {
      if constexpr (kernel::ComplexRecord<T>) {
        for (long i = last; i < n; ++i) x[i] = conj(x[i]);
      }
      fast::gemv('N', width, rows, from_real<T>(1), below(), ld, x + last, 1, T{}, sums, 1);
      if constexpr (kernel::ComplexRecord<T>) {
        for (long i = last; i < n; ++i) x[i] = conj(x[i]);
        for (long k = 0; k < width; ++k) sums[k] = conj(sums[k]);
      }
    } else {
      fast::gemv('C', rows, width, from_real<T>(1), below(), ld, x + last, 1, T{}, sums, 1);
    }
    release();
  }
};

template <bool row_major, class T>
Multipliers<T, row_major> multipliers(long n, const T* fac, long ld, const long* pvt, T* x, bool bounded = false) {
  Multipliers<T, row_major> m;
  m.n = n, m.fac = fac, m.ld = ld, m.pvt = pvt, m.x = x, m.bounded = bounded;
  return m;
}

// The reciprocal condition number of the factored matrix, whose 1-norm is given. w: n elements of work.
template <class Half, class T>
RealOf<T> estimate_lu(long n, const T* fac, long ldfac, const long* pvt, RealOf<T> anorm, T* w) {
  using Real = RealOf<T>;
  // U is needed by rows: some at a time are gathered, so that the inner loops run along memory. Without memory, one at a time.
  void* mark = scratch_mark<Half>();
  T* rows = scratch<Half, T>(area(n, estimate_rows));
  long held = estimate_rows;
  if (rows == nullptr) {
    held = 1;
    rows = scratch<Half, T>(n);
    if (rows == nullptr) {
      raise_out_of_memory<Half>({n}, {"n"});
      return 0;
    }
  }
  growth_vector(n, w, [&](long j) {
    if (j % held == 0) {
      constexpr long tile = 8;
      const long last = std::min(n, j + held);
      for (long k0 = j; k0 < n; k0 += tile) {
        const long k1 = std::min(n, k0 + tile);
        for (long i = j; i < last; ++i) {
          for (long k = k0; k < k1; ++k) rows[(i - j) * n + k] = conj(fac[i + k * ldfac]);
        }
      }
    }
    return rows + (j % held) * n + j;
  });
  scratch_release<Half>(mark);
  normalise(n, w);
  Real ynorm = 1;
  multipliers<false>(n, fac, ldfac, pvt, w, true).backward();
  normalise(n, w);
  auto forward = multipliers<false>(n, fac, ldfac, pvt, w, true);
  forward.forward();
  ynorm *= forward.scaled_all;
  if (abs1(w[n - 1]) > 1) {  // the last row has no step of its own, but is bounded like the others
    ynorm /= abs1(w[n - 1]);
    scale_by(n, 1 / abs1(w[n - 1]), w);
  }
  ynorm *= normalise(n, w);
  bounded_solve_upper(n, fac, ldfac, w, ynorm);
  ynorm *= normalise(n, w);
  return anorm != 0 ? ynorm / anorm : 0;
}

// Factors what fac holds, with the estimate when rcond is not null; wk: n elements of work. The calls below stand in frames of
// their own, so that a caller can ask for the error of the last one.
template <class Half, class T>
bool factor_loaded(long n, T* fac, long ldfac, long* pvt, RealOf<T>* rcond, T* wk) {
  const char* name = rcond == nullptr ? frame_name<T>("zent_l2trg", "zent_dl2trg", "l_l2tcg")
                                      : frame_name<T>("zent_l2crg", "zent_dl2crg", "l_l2ccg");
  push<Half>(name);
  auto* scale = reinterpret_cast<RealOf<T>*>(wk);
  const RealOf<T> anorm = measure_columns(n, fac, ldfac, scale);
  finish_row_scales(n, scale);
  const bool done = factor_lu<Half>(n, fac, ldfac, pvt, scale);
  if (rcond != nullptr) {
    *rcond = done ? estimate_lu<Half>(n, fac, ldfac, pvt, anorm, wk) : 0;
    if (done) warn_ill_conditioned<Half>(*rcond);
  }
  pop<Half>(name);
  return done && !inner_failed<Half>();
}

template <class Half, class T>
bool l2trg(long n, const T* a, long lda, T* fac, long ldfac, long* pvt, RealOf<T>* scale) {
  const char* name = frame_name<T>("zent_l2trg", "zent_dl2trg", "l_l2tcg");
  push<Half>(name);
  bool done = check_factor_sizes<Half>(n, lda, ldfac);
  if (done) {
    copy_columns(n, a, lda, fac, ldfac);
    measure_columns(n, fac, ldfac, scale);
    finish_row_scales(n, scale);
    done = factor_lu<Half>(n, fac, ldfac, pvt, scale);
  }
  pop<Half>(name);
  return done;
}

template <class Half, class T>
bool l2crg(long n, const T* a, long lda, T* fac, long ldfac, long* pvt, RealOf<T>* rcond, T* wk) {
  const char* name = frame_name<T>("zent_l2crg", "zent_dl2crg", "l_l2ccg");
  push<Half>(name);
  *rcond = 0;
  // The norm looks at the sizes before the factorization does.
  if (n < 1) {
    raise<Half>(5, MATH_NEED_NUM_ROWS_GT_ZERO, {.i = {n}});
    raise<Half>(5, MATH_NEED_NUM_COLS_GT_ZERO, {.i = {n}});
  } else if (n > lda) {
    raise<Half>(5, MATH_NEED_NUM_ROWS_LT_LEAD, {.i = {n, lda}});
  }
  bool done = check_factor_sizes<Half>(n, lda, ldfac);
  if (done) {
    copy_columns(n, a, lda, fac, ldfac);
    done = factor_loaded<Half>(n, fac, ldfac, pvt, rcond, wk);
  }
  pop<Half>(name);
  return done;
}

// False, with 1004, for an exact zero on the diagonal of U.
template <class Half, class T>
bool check_divisors(long n, const T* fac, long ldfac) {
  for (long k = 0; k < n; ++k) {
    if (!(fac[k + k * ldfac] == T{})) continue;
    raise<Half>(4, MATH_SINGULAR_MATRIX);
    return false;
  }
  return true;
}

// x := solution of A x = b (ipath 1) or A^H x = b (2), with the diagonal tested for exact zeros first.
template <class Half, class T>
bool lfsrg(long n, const T* fac, long ldfac, const long* pvt, const T* b, long ipath, T* x) {
  const char* name = frame_name<T>("zent_lfsrg", "zent_dlfsrg", "l_lfscg");
  push<Half>(name);
  if (x != b) std::memmove(x, b, sizeof(T) * n);
  bool done = ipath == 1 || ipath == 2;
  if (!done) raise<Half>(5, MATH_IPATH_RANGE, {.i = {1, 2, ipath}});
  done = done && check_divisors<Half>(n, fac, ldfac);
  if (done && ipath == 1) {
    multipliers<false>(n, fac, ldfac, pvt, x).forward();
    fast::trsv('U', 'N', 'N', n, fac, ldfac, x, 1);
  } else if (done) {
    fast::trsv('U', 'C', 'N', n, fac, ldfac, x, 1);
    multipliers<false>(n, fac, ldfac, pvt, x).backward();
  }
  pop<Half>(name);
  return done;
}

// Turns the factor in inva into the inverse: U^-1 first, then the multipliers are undone a block of columns at a time, then the
// interchanges. work: n by the smaller of n and inverse_block elements.
template <class Half, class T>
bool invert_lu(long n, T* inva, long ldinva, const long* pvt, T* work) {
  for (long j = 0; j < n; ++j) {
    T* column = inva + j * ldinva;
    if (!(abs1(column[j]) > safe_small<RealOf<T>>())) {
      raise<Half>(4, MATH_SINGULAR_MATRIX);
      return false;
    }
    for (long k = j + 1; k < n - 1; ++k) std::swap(column[k], column[pvt[k] - 1]);  // to the rows of the final order
  }
  invert_triangle(true, n, inva, ldinva);
  for (long c0 = (n - 1) / inverse_block * inverse_block; c0 >= 0; c0 -= inverse_block) {
    const long width = std::min(inverse_block, n - c0), right = c0 + width;
    for (long j = 0; j < width; ++j) {
      T* column = inva + (c0 + j) * ldinva;
      for (long i = c0 + j + 1; i < n; ++i) {
        work[i + j * n] = -column[i];
        column[i] = T{};
      }
    }
    T* block = inva + c0 * ldinva;
    fast::gemm('N', 'N', n, width, n - right, from_real<T>(-1), inva + right * ldinva, ldinva, work + right, n, from_real<T>(1),
               block, ldinva);
    fast::trsm('R', 'L', 'N', 'U', n, width, from_real<T>(1), work + c0, n, block, ldinva);
  }
  for (long k = n - 2; k >= 0; --k) {
    if (pvt[k] - 1 != k) fast::swap(n, inva + k * ldinva, 1, inva + (pvt[k] - 1) * ldinva, 1);
  }
  return true;
}

// The inverse of what inva holds, in its place, with the condition estimate. A badly conditioned matrix is warned of twice.
template <class Half, class T>
bool l_l2nrg(long n, T* inva, long ldinva, long* pvt, RealOf<T>* rcond, T* work) {
  const char* name = frame_name<T>("l_l2nrg", "l_l2nrg", "l_l2ncg");
  push<Half>(name);
  bool done = factor_loaded<Half>(n, inva, ldinva, pvt, rcond, work) && invert_lu<Half>(n, inva, ldinva, pvt, work);
  if (done) warn_ill_conditioned<Half>(*rcond);
  pop<Half>(name);
  return done;
}

}  // namespace zent::linalg
