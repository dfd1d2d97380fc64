// The bulge of a QR step leaves a chain of small similarity steps behind it, one for each row that it passed. These kernels apply
// a chain to the parts of a matrix that the next steps do not look at.
#pragma once

#include "zent/base.h"

namespace zent::eigen {

// I - (x, y, z)^T (1, q, r): a reflection of three neighbouring rows or columns, or an elimination.
template <class Real>
struct Step {
  Real x, y, z, q, r;
};

// A chain of this many steps of three touches 16 rows, for which the row kernel is fastest.
inline constexpr long full_run = 14;

// Columns k, k + 1, k + 2 of the m-row matrix become those times step k, for k = 0 .. count - 1. The last step touches two
// columns only when `pair` is set, so count + 2 columns change, or count + 1.
template <class Real>
void chain_columns(long count, bool pair, const Step<Real>* steps, long m, Real* a, long lda);
// Rows k, k + 1, k + 2 of the n-column matrix become step k, transposed, times those.
template <class Real>
void chain_rows(long count, bool pair, const Step<Real>* steps, long n, Real* a, long lda);

// One step of the iteration: `count` small steps from row `start` on, the last one of two rows. `top` and `end` bound the block
// that it belonged to; what lies above and to the right of the block waits for all the runs of a batch.
template <class Real>
struct Run {
  long start, count, top, end;
  const Step<Real>* steps;
};
// Applies runs, one after the other, to the rows of an array of `columns` columns, whose rows 0 .. rows - 1 they stay in. The
// buffer has room for rows times buffer_width values.
inline constexpr long buffer_width = 32;
template <class Real>
void runs_rows(long runs, const Run<Real>* run, long rows, long columns, Real* a, long lda, Real* buffer);

// The plain versions, one step after the other: the fast ones' test.
template <class Real>
void chain_columns_plain(long count, bool pair, const Step<Real>* steps, long m, Real* a, long lda) {
  for (long k = 0; k < count; ++k) {
    const Step<Real> s = steps[k];
    Real* p = a + k * lda;
    const bool two = pair && k == count - 1;
    for (long i = 0; i < m; ++i) {
      const Real third = two ? 0 : p[i + 2 * lda];
      const Real sum = s.x * p[i] + s.y * p[i + lda] + s.z * third;
      p[i] -= sum;
      p[i + lda] -= sum * s.q;
      if (!two) p[i + 2 * lda] = third - sum * s.r;
    }
  }
}
template <class Real>
void chain_rows_plain(long count, bool pair, const Step<Real>* steps, long n, Real* a, long lda) {
  for (long j = 0; j < n; ++j) {
    for (long k = 0; k < count; ++k) {
      const Step<Real> s = steps[k];
      Real* p = a + k + j * lda;
      const bool two = pair && k == count - 1;
      const Real third = two ? 0 : p[2];
      const Real sum = p[0] + s.q * p[1] + s.r * third;
      p[0] -= sum * s.x;
      p[1] -= sum * s.y;
      if (!two) p[2] = third - sum * s.z;
    }
  }
}

}  // namespace zent::eigen
