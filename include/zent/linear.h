/* Dense systems of linear equations.
 *
 * Matrices of the public functions are row-major: element (i, j) of an n by n matrix with column dimension d stands at i * d + j.
 * Support routines (short names) see them column-major with a leading dimension. The c and z forms take and give complex
 * elements; tolerances and condition numbers are real of the same precision. */
#ifndef ZENT_LINEAR_H
#define ZENT_LINEAR_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Solves A x = b for a general n by n matrix by Gaussian elimination with scaled partial pivoting. A solution is always
 * accompanied by an estimate of the condition number (LINPACK's), which warns of a matrix too close to a singular one.
 *
 * a      n by n, only read (but a factor or an inverse may take its place); may be null with ZENT_SOLVE_ONLY without an inverse
 * b      n right-hand sides; may be null with ZENT_FACTOR_ONLY and ZENT_INVERSE_ONLY
 *
 * ZENT_TRANSPOSE                       A' x = b, conjugated in the complex forms
 * ZENT_A_COL_DIM, ZENT_FAC_COL_DIM, ZENT_INV_COL_DIM, int   column dimensions; default n
 * ZENT_FACTOR, long **pvt, T **factor  receive pivots (n) and factor (n by fac_col_dim), the caller's then
 * ZENT_FACTOR_USER, long *pvt, T *factor   the caller's storage for them, or with ZENT_SOLVE_ONLY the factor of an earlier call.
 *     The factor may be `a` itself, which it then replaces, in rows of the larger of both column dimensions.
 * ZENT_FACTOR_ONLY, ZENT_SOLVE_ONLY, ZENT_INVERSE_ONLY   one part of the work only
 * ZENT_INVERSE, T **inva; ZENT_INVERSE_USER, T *inva     the inverse, n by inv_col_dim; may be `a` itself
 * ZENT_CONDITION, real *cond           the estimate of the 1-norm condition number; infinity beyond the range of the precision
 * ZENT_RETURN_USER, T *x               the caller's storage for the solution (n)
 *
 * The factor holds U on and above the diagonal and below it the negated multipliers where their step left them; pvt[k] is the
 * row, from 1, chosen at step k.
 *
 * Returns x, the caller's; null without a solution (factor or inverse only) and after an error. Type 5: 103, 104, 105 options;
 * 150 a or b null; 1010, 1014 order and column dimensions; 1091, 1027, 1038, 1039, 1040 options that do not go together; 201
 * memory. Type 4: 1004 singular. Type 3: 1003 badly conditioned, with the estimate; the solution is given. */
ZENT_API float* zent_f_lin_sol_gen(long n, float* a, float* b, ...);
ZENT_API double* zent_d_lin_sol_gen(long n, double* a, double* b, ...);
ZENT_API zent_f_complex* zent_c_lin_sol_gen(long n, zent_f_complex* a, zent_f_complex* b, ...);
ZENT_API zent_d_complex* zent_z_lin_sol_gen(long n, zent_d_complex* a, zent_d_complex* b, ...);

/* Solves A x = b for a symmetric (c, z: Hermitian) positive definite n by n matrix by Cholesky factorization. Only the lower
 * triangle of `a` is read. Options and result are those of lin_sol_gen without ZENT_TRANSPOSE, and the factor options carry no
 * pivots:
 *
 * ZENT_FACTOR, T **factor; ZENT_FACTOR_USER, T *factor   n by fac_col_dim: L of A = L L' on and below the diagonal, its
 * (conjugate) transpose above it
 *
 * Errors as in lin_sol_gen, but 6002 for a or b null, 1035 and 1036 for memory, neither 1039 nor 1040 (the call computes what
 * nobody receives), and type 4: 1018 with the order of the first leading submatrix that is not positive definite, 2010 for a
 * diagonal element with an imaginary part, 1009 for a zero on the diagonal of a factor given with ZENT_SOLVE_ONLY. */
ZENT_API float* zent_f_lin_sol_posdef(long n, float* a, float* b, ...);
ZENT_API double* zent_d_lin_sol_posdef(long n, double* a, double* b, ...);
ZENT_API zent_f_complex* zent_c_lin_sol_posdef(long n, zent_f_complex* a, zent_f_complex* b, ...);
ZENT_API zent_d_complex* zent_z_lin_sol_posdef(long n, zent_d_complex* a, zent_d_complex* b, ...);

/* Solves A x = b for a symmetric nonnegative definite n by n matrix, which may be singular: a column that depends on the ones
 * before it, within the tolerance, gets a zero row in the Cholesky factor and a zero in x. Only the lower triangle of `a` is
 * read.
 *
 * Options as in lin_sol_posdef without ZENT_CONDITION, and
 * ZENT_TOLERANCE, real; ZENT_TOLERANCE_ADR, real *   0 to 1; a pivot below it, relative to its diagonal element, counts as zero;
 *     default 100 times the machine's epsilon
 * The inverse is a symmetric generalized one, A G A = A. Without a factor option ZENT_FAC_COL_DIM defaults to ZENT_INV_COL_DIM.
 *
 * Type 5: 11001 option (ends the call at once), 150, 1010, 601 (a_col_dim), 1062 (other column dimensions), 1091 to 1094, 1027,
 * 1039, 1040, 1048 tolerance, 1047 memory. Type 3, with a result: 1049 not nonnegative definite, 1050 and 1051 inconsistent
 * equations, of which those with zero rows in the factor are given up. */
ZENT_API float* zent_f_lin_sol_nonnegdef(long n, float* a, float* b, ...);
ZENT_API double* zent_d_lin_sol_nonnegdef(long n, double* a, double* b, ...);

/* Support routines, column-major. Each stands in an error frame of its own: zent_n1rty(1) tells how it went.
 *
 * l2trg   fac := LU factor of a. scale: n elements of work. Type 5: 1010, 1011, 1012; type 4: 1004.
 * l2crg   the same with rcond, the reciprocal condition number. wk: n of work. Also type 5: 1015 to 1017; type 3: 1003.
 * lfsrg   x := solution of A x = b (ipath 1) or A' x = b (2) with that factor; b and x may be the same. Type 4: 1004;
 *         type 5: 1033.
 * lftds   fac := Cholesky factor of the upper triangle of a, in full: R above, R' below. Type 5: 1010, 1011, 1012;
 *         type 4: 1018.
 * lslrt   x := solution of a triangular system, ipath 1 lower, 2 upper, 3 lower transposed, 4 upper transposed; b and x may
 *         be the same. Type 5: 1001, 1011, 1034; type 4: 1009.
 * chfac   r := factor of the upper triangle of a nonnegative definite a, the triangle below 0; irank: its rank.
 *         Type 5: 601 sizes, 1048 tolerance; type 3: 1049.
 * girts   x := solutions of R x = b (ipath 1, 3) or R' x = b (2, 4) for nb right-hand sides, R possibly singular; 3 and 4 also
 *         give its generalized inverse in rinv. Type 5: 601, 602 sizes and ipath, 1052 R not upper triangular; type 3: 1050,
 *         1051.
 *
 * The statistics half's chfac and girts raise type 3, number 1, without a text for these warnings, and 50098 for the tolerance.
 */
#define ZENT_DENSE_SUPPORT(p, Real)                                                                                        \
  ZENT_API void zent_##p##l2trg(long n, const Real* a, long lda, Real* fac, long ldfac, long* pvt, Real* scale);           \
  ZENT_API void zent_##p##l2crg(long n, const Real* a, long lda, Real* fac, long ldfac, long* pvt, Real* rcond, Real* wk); \
  ZENT_API void zent_##p##lfsrg(long n, const Real* fac, long ldfac, const long* pvt, const Real* b, long ipath, Real* x); \
  ZENT_API void zent_##p##lftds(long n, const Real* a, long lda, Real* fac, long ldfac);                                   \
  ZENT_API void zent_##p##lslrt(long n, const Real* a, long lda, const Real* b, long ipath, Real* x);
ZENT_DENSE_SUPPORT(, float)
ZENT_DENSE_SUPPORT(d, double)
#undef ZENT_DENSE_SUPPORT
#define ZENT_NONNEG_SUPPORT(H, p, Real)                                                                                    \
  ZENT_API void H##_##p##chfac(long n, const Real* a, long lda, Real tol, long* irank, Real* r, long ldr);                 \
  ZENT_API void H##_##p##girts(long n, const Real* r, long ldr, long nb, const Real* b, long ldb, long ipath, long* irank, \
                               Real* x, long ldx, Real* rinv, long ldrinv);
ZENT_NONNEG_SUPPORT(zent, , float)
ZENT_NONNEG_SUPPORT(zent, d, double)
ZENT_NONNEG_SUPPORT(zents, , float)
ZENT_NONNEG_SUPPORT(zents, d, double)
#undef ZENT_NONNEG_SUPPORT

#ifdef __cplusplus
}
#endif
#endif
