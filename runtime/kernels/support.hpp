// What stands beside the BLAS and uses the runtime of a half: work memory and errors.
#pragma once

#include "runtime/error.hpp"
#include "runtime/kernels/fast.hpp"
#include "runtime/kernels/sort.hpp"
#include "runtime/scratch.hpp"

namespace zent::kernel {

// Work memory is returned at once: these routines are called in loops inside one public call. Without memory the sort takes its
// slower way to the same result, so there is no error to raise.
template <class Half, class Real>
void sort_with_index(long n, const Real* x, Real* sorted, long* index) {
  if (n < 1) return;
  if (sorted != x) copy(n, x, 1, sorted, 1);
  if (n <= sort_run) return stable_sort<Real>(n, sorted, index, nullptr, nullptr);
  void* mark = scratch_mark<Half>();
  Real* work = scratch<Half, Real>(n);
  long* work_index = index != nullptr ? scratch<Half, long>(n) : nullptr;
  stable_sort(n, sorted, index, work, work_index);
  scratch_release<Half>(mark);
}

template <class Half, class Real>
void sort_values(long n, const Real* x, Real* sorted) {
  sort_with_index<Half, Real>(n, x, sorted, nullptr);
}

template <class Half, class T>
void row_to_column_major(long nrows, long ncols, T* a, T* b) {
  if (nrows < 1) raise<Half>(5, MATH_NOT_ENOUGH_ROWS, {.i = {nrows}});
  if (ncols < 1) raise<Half>(5, MATH_NOT_ENOUGH_COLUMNS, {.i = {ncols}});
  if (nrows < 1 || ncols < 1) return;
  if (a != b) return fast::transpose(nrows, ncols, a, b);
  if (nrows == ncols) return fast::transpose_square(nrows, b);
  void* mark = scratch_mark<Half>();
  T* rows = scratch<Half, T>(nrows * ncols);
  if (rows != nullptr) {
    fast::copy(nrows * ncols, a, 1, rows, 1);
    fast::transpose(nrows, ncols, rows, b);
  } else {
    transpose_in_place(nrows, ncols, b);
  }
  scratch_release<Half>(mark);
}

// B := A' A in full; the mirror makes both triangles equal bit for bit.
template <class Real>
void gram_matrix(long m, long n, const Real* a, long lda, Real* b, long ldb) {
  fast::syrk('U', 'C', n, m, 1, a, lda, 0, b, ldb);
  mirror_upper(n, b, ldb);
}

template <class Half, class Real>
void copy_upper_to_lower(long n, Real* a, long lda) {
  if (n < 1 || lda < 1) {
    raise<Half>(5, MATH_NEED_A_AND_N_GT_ZERO, {.i = {n, lda}});
  } else if (n > lda) {
    raise<Half>(5, MATH_NEED_N_LE_LDA, {.i = {n, lda}});
  } else {
    mirror_upper(n, a, lda);
  }
}

// Both halves know these errors by the same numbers.
static_assert(int{MATH_NOT_ENOUGH_ROWS} == int{STAT_NOT_ENOUGH_ROWS} &&
              int{MATH_NOT_ENOUGH_COLUMNS} == int{STAT_NOT_ENOUGH_COLUMNS});
static_assert(int{MATH_NEED_A_AND_N_GT_ZERO} == int{STAT_NEED_A_AND_N_GT_ZERO} &&
              int{MATH_NEED_N_LE_LDA} == int{STAT_NEED_N_LE_LDA});

}  // namespace zent::kernel
