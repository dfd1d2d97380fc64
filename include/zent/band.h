/* Band systems of linear equations.
 *
 * Band storage of a matrix of order n with nlca lower and nuca upper codiagonals: nlca + nuca + 1 rows of n elements, row after
 * row; A(i, j) stands in row nuca + i - j, column j. So row nuca holds the diagonal, the rows above it the superdiagonals, those
 * below it the subdiagonals. The corners of the storage that lie outside the matrix should be 0 (see the condition below).
 * Symmetric (in complex forms Hermitian) band storage is the upper half alone: ncoda + 1 rows, the last one the diagonal; its
 * corners are not read. */
#ifndef ZENT_BAND_H
#define ZENT_BAND_H

#include "zent/base.h"
#include "zent/option_codes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Solves A x = b for a general band matrix by LU factorization with partial pivoting (Golub and Van Loan, Matrix Computations,
 * 4.3; in blocks where the band is wide).
 *
 * n order; a band storage, (nlca + nuca + 1) by n, left as it was unless it is also the factor's storage; b n elements.
 * Options, each followed by its values; 0 ends the list:
 *   ZENT_TRANSPOSE                            solve with the transpose of A (complex: its conjugate transpose)
 *   ZENT_FACTOR          long **, T **        hands over pivots and factor
 *   ZENT_FACTOR_USER     long *, T *          caller's storage: n pivots, (2 nlca + nuca + 1) n elements
 *   ZENT_FACTOR_ONLY                          no solution; b may be null
 *   ZENT_SOLVE_ONLY                           uses the factor in ZENT_FACTOR_USER; a may be null
 *   ZENT_RETURN_USER     T *                  caller's storage for the solution, which may be b
 *   ZENT_CONDITION       real *               the estimated condition number in the 1-norm
 *   ZENT_BLOCKING_FACTOR int                  columns factored together, 1 to 32 (others are clamped); without it the
 *                                             bandwidth decides
 * The factor is column-major with 2 nlca + nuca + 1 rows: U(i, j) in row nlca + nuca + i - j, the negated multipliers below the
 * diagonal at the rows that they had when they were formed; pivot k is the 1-based row exchanged with row k.
 *
 * Every call that factors and solves, and every one with ZENT_CONDITION, estimates the condition number (Higham, ACM TOMS 14,
 * 1988, in five passes) and warns with 1003 when it exceeds 1/epsilon. The norm of A in it sums rows max(0, nlca - j) to
 * min(nlca + nuca, nlca + n - 1 - j) of column j of the storage, which is the column of the matrix where nlca = nuca; otherwise a
 * few corner columns differ, so keep the corners 0.
 *
 * Result: n elements, the caller's to free; null with ZENT_FACTOR_ONLY and after an error. Errors, type 5: 103, 104, 105, 150,
 * 201, 203, 618, 619, 1010, 1027, 1038, 1040; type 4: 1004 singular; type 3: 1003. */
ZENT_API float* zent_f_lin_sol_gen_band(long n, float* a, long nlca, long nuca, float* b, ...);
ZENT_API double* zent_d_lin_sol_gen_band(long n, double* a, long nlca, long nuca, double* b, ...);
ZENT_API zent_f_complex* zent_c_lin_sol_gen_band(long n, zent_f_complex* a, long nlca, long nuca, zent_f_complex* b, ...);
ZENT_API zent_d_complex* zent_z_lin_sol_gen_band(long n, zent_d_complex* a, long nlca, long nuca, zent_d_complex* b, ...);

/* Solves A x = b for a symmetric (Hermitian) positive definite band matrix by Cholesky factorization A = R^T R.
 *
 * n order; a symmetric band storage, (ncoda + 1) by n, left as it was unless it is also the factor's storage; b n elements.
 * Options: ZENT_FACTOR (T **), ZENT_FACTOR_USER (T *), ZENT_FACTOR_ONLY, ZENT_SOLVE_ONLY, ZENT_RETURN_USER, ZENT_CONDITION as
 * above. The factor R has the shape and the storage of a.
 *
 * Errors, type 5: 103, 104, 150, 201, 202, 619, 1010, 1027, 1038, 1040; type 4: 1018 not positive definite (with the order of the
 * leading part that is not), 2010 complex diagonal, 13013 singular factor in a solve-only call; type 3: 1003. */
ZENT_API float* zent_f_lin_sol_posdef_band(long n, float* a, long ncoda, float* b, ...);
ZENT_API double* zent_d_lin_sol_posdef_band(long n, double* a, long ncoda, double* b, ...);
ZENT_API zent_f_complex* zent_c_lin_sol_posdef_band(long n, zent_f_complex* a, long ncoda, zent_f_complex* b, ...);
ZENT_API zent_d_complex* zent_z_lin_sol_posdef_band(long n, zent_d_complex* a, long ncoda, zent_d_complex* b, ...);

/* Support routines on column-major band storage; they raise into the caller's frame.
 *
 * lftqs: Cholesky factor of a symmetric band matrix, its upper half in ncoda + 1 rows of leading dimension lda, the diagonal in
 * row ncoda; fac may be a. 1018 (type 4). lfsqs: solution with that factor, x may be b; 13013 (type 4) for a diagonal element
 * below the smallest number with a reciprocal. */
ZENT_API void zent_lftqs(long n, float* a, long lda, long ncoda, float* fac, long ldfac);
ZENT_API void zent_dlftqs(long n, double* a, long lda, long ncoda, double* fac, long ldfac);
ZENT_API void zent_lfsqs(long n, float* fac, long ldfac, long ncoda, float* b, float* x);
ZENT_API void zent_dlfsqs(long n, double* fac, long ldfac, long ncoda, double* b, double* x);

/* Solution with the factor of lin_sol_gen_band: ipath 1 A x = b, 2 the transposed system; x may be b. 1004 (type 4) for a zero on
 * the diagonal, 1033 (type 5) for another ipath. */
ZENT_API void zent_lfsrb(long n, float* fac, long ldfac, long nlca, long nuca, long* pvt, float* b, long ipath, float* x);
ZENT_API void zent_dlfsrb(long n, double* fac, long ldfac, long nlca, long nuca, long* pvt, double* b, long ipath, double* x);

/* Copies the complex band matrix a (nlca + nuca + 1 rows) into wider band storage b (nlcb + nucb + 1 rows), where everything
 * else becomes 0. Errors, type 5: 1010, 608, 609, 610, 611, 612, 613. */
ZENT_API void zent_ccbcb(long n, zent_f_complex* a, long lda, long nlca, long nuca, zent_f_complex* b, long ldb, long nlcb,
                         long nucb);
ZENT_API void zent_dccbcb(long n, zent_d_complex* a, long lda, long nlca, long nuca, zent_d_complex* b, long ldb, long nlcb,
                          long nucb);

#ifdef __cplusplus
}
#endif
#endif
