// QR factorization with column pivoting by Householder reflections, column-major, and what is done with its factors. Shared by
// the least squares solver and by the nonlinear and constrained solvers; templates over the half whose error state they report
// to.
//
// A reflection is H = I - v v^T / v[0] with v[0] in [1, 2]: the diagonal and what is above it hold R, the elements of v behind
// its first stand below the diagonal, and qraux keeps v[0], or 0 where no reflection was needed.
#pragma once

#include "runtime/half.hpp"
#include "runtime/machine.hpp"

namespace zent::linalg {

// The smallest number that can be inverted safely.
template <class Real>
constexpr Real safe_inverse() {
  using M = Machine<Real>;
  return M::smallest * M::largest < 1 ? 1 / M::largest : M::smallest;
}

// A P = Q R with A m by n. With `pivot`, pvt[j] on entry: > 0 initial, < 0 final, 0 free column; without, all columns stay where
// they are and pvt may be null. On return pvt[k] is the 1-based number that the column at position k had. A is copied to qr
// unless they are the same array with the same leading dimension. qraux, column_norms (norms of the columns of A after the
// initial and final ones were moved) and pvt have n elements, wk 2n - 1. Errors, type 5: 3089 m or n below 1, 3090 m > lda, 3092
// m > ldqr. Method: Businger and Golub (1965), norms downdated as in LINPACK; in panels with a delayed update of the columns to
// the right (Quintana-Orti, Sun, Bischof 1998), each panel ending where a norm must be computed anew.
template <class Half, class Real>
void l2rrr(long m, long n, const Real* a, long lda, bool pivot, long* pvt, Real* qr, long ldqr, Real* qraux, Real* column_norms,
           Real* wk);

// The same step by step, each column to the right updated at once: the plain form.
template <class Half, class Real>
void l2rrr_plain(long m, long n, const Real* a, long lda, bool pivot, long* pvt, Real* qr, long ldqr, Real* qraux,
                 Real* column_norms, Real* wk);

// Products with Q from the first kbasis columns of a factor. The decimal digits abcde of job: a: qy = Q y; b, c, d or e:
// qty = Q^T y; c: b (kbasis elements) solves R b = Q^T y; d: res = y - A b; e: xb = A b. Vectors have m elements otherwise; those
// not asked for may be null, and so may qty. res may share storage with qty or y. Errors: 3091 m < 1, 3092 m > ldqr, 3093
// kbasis < 0 (type 5); 1009 (type 4) for an exact zero on the diagonal of R.
template <class Half, class Real>
void lqrsl(long m, long kbasis, const Real* qr, long ldqr, const Real* qraux, const Real* y, Real* qy, Real* qty, Real* b,
           Real* res, Real* xb, long job);

// Least squares solution of A x = b: factors, counts in kbasis the leading diagonal elements above tol times the first, solves on
// these columns, and puts x back into the order of the columns of A. qr has leading dimension m, wk 3n - 1 elements. With kbasis
// 0 x is 0 and res is not written. Errors: those of l2rrr.
template <class Half, class Real>
void l2qrr(long m, long n, const Real* a, long lda, const Real* b, Real tol, Real* x, Real* res, long* kbasis, Real* qr,
           Real* qraux, long* pvt, Real* wk);

// The m by m matrix Q of a factor with n columns. Errors: 1031 (type 5) m > ldq. False without memory for the blocks.
template <class Half, class Real>
bool l_l2err(long m, long n, const Real* qr, long ldqr, const Real* qraux, Real* q, long ldq);

// ipath 1: xpermu[i] = x[pvt[i] - 1]; ipath 2: xpermu[pvt[i] - 1] = x[i]. x and xpermu may be one array; pvt is as before
// afterwards. Errors, type 5: 3096 n < 1, 3097 ipath, 3098 an entry outside 1..n.
template <class Half, class Real>
void l_permu(long n, const Real* x, long* pvt, long ipath, Real* xpermu);

}  // namespace zent::linalg
