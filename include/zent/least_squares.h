/* Linear least squares and the singular value decomposition. Matrices are row-major: element (i, j) of an array with column
 * dimension d stands at i * d + j. */
#ifndef ZENT_LEAST_SQUARES_H
#define ZENT_LEAST_SQUARES_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The vector x (n elements) of least ||b - A x|| with as many nonzero elements as A has independent columns; A is m by n of any
 * shape. Null with ZENT_FACTOR_ONLY or after an error; otherwise the caller's own (zent_free_allocated_memory) unless it is his
 * storage. A and b are not changed.
 *
 * Options, ended by 0 (d stands for the precision of the form):
 *   ZENT_A_COL_DIM, int           column dimension of a; default n
 *   ZENT_FACTOR, d **qraux, d **qr         new arrays for the factor: n and m by fac_col_dim elements, unused columns 0
 *   ZENT_FACTOR_USER, d *qraux, d *qr      the same in storage of the caller; input with ZENT_SOLVE_ONLY. qr may be a itself,
 *                                 which then is not kept and needs the larger of the two column dimensions
 *   ZENT_FAC_COL_DIM, int         column dimension of qr; default n
 *   ZENT_FACTOR_ONLY              no solution; b may be null
 *   ZENT_SOLVE_ONLY               uses the factor of ZENT_FACTOR_USER and the number of columns of ZENT_BASIS; a may be null
 *   ZENT_BASIS, double tol, long *kbasis   a column counts while |r(k,k)| > tol |r(1,1)|; default the square root of the machine
 *                                 precision. kbasis receives the number of columns, and is input with ZENT_SOLVE_ONLY
 *   ZENT_BASIS_ADR, d *tol, long *kbasis   the same by address
 *   ZENT_PIVOT, long *pvt         n elements: > 0 the column comes first, < 0 last, 0 free. Receives the numbers, from 1, of the
 *                                 columns in the order of the factor
 *   ZENT_RESIDUAL, d **res        new array for b - A x, m elements; null after an error in the computation
 *   ZENT_RESIDUAL_USER, d *res    storage of the caller for it
 *   ZENT_Q, d **q                 new array for Q, m by q_col_dim, columns beyond m are 0
 *   ZENT_Q_USER, d *q             storage of the caller for it
 *   ZENT_Q_COL_DIM, int           column dimension of Q; default m
 *   ZENT_RETURN_USER, d *x        storage of the caller for the solution
 *
 * The factor: R on and above the diagonal; below it the reflections I - v v^T / v[0] without the first elements v[0], which stand
 * in qraux, 0 for none.
 *
 * With ZENT_FACTOR_ONLY kbasis is counted along the elements k (n + 1) of the column-major factor, its diagonal only if m = n:
 * for other shapes count the diagonal of qr instead. With ZENT_SOLVE_ONLY and ZENT_PIVOT the elements k of x are exchanged one
 * after the other with element pvt[k], which undoes some permutations only: leave ZENT_PIVOT out and take x[k] as the coefficient
 * of column pvt[k].
 *
 * Errors, type 5: 11001 unknown option; 104, 105 null storage in an option; 150 a or b null; 3089 m or n below 1; 1021, 1022,
 * 1023 column dimension of a, qr, q too small; 1096 factor only and solve only; 1025 factor only without a place for it; 1027,
 * 1028 solve only without factor or kbasis; 3093 its kbasis below 0; 200, 1029 no memory. Type 4: 1009 a zero on the diagonal of
 * R among the columns used, which takes a tolerance below 0 or solve only. Method: Householder reflections with column pivoting
 * (Businger and Golub 1965), in blocks. */
ZENT_API float* zent_f_lin_least_squares_gen(long m, long n, float* a, float* b, ...);
ZENT_API double* zent_d_lin_least_squares_gen(long m, long n, double* a, double* b, ...);

/* The singular values of A (m by n), descending, min(m, n) of them; null after an error. A is not changed. Singular values,
 * tolerance and S are real in the complex forms too.
 *
 * Options, ended by 0 (d stands for the element type of the form, real for that of its singular values):
 *   ZENT_A_COL_DIM, int           column dimension of a; default n
 *   ZENT_RANK, double tol, long *rank      rank: the number of leading singular values above tol, or, with tol < 0, above -tol
 *                                 times the largest row sum of moduli; default 100 times the machine precision (absolute)
 *   ZENT_RANK_ADR, real *tol, long *rank   the same by address
 *   ZENT_U, d **u                 new array for the left vectors, m by u_col_dim, columns from min(m, n) on are 0
 *   ZENT_U_USER, d *u             storage of the caller; only min(m, n) columns are written
 *   ZENT_U_COL_DIM, int           default min(m, n)
 *   ZENT_V, d **v  ZENT_V_USER, d *v  ZENT_V_COL_DIM, int     the right vectors, n by v_col_dim, in the same way: A = U S V^H
 *   ZENT_INVERSE, d **inverse     new array for the generalized inverse V S^-1 U^H of that rank, n by inv_col_dim, the rest 0
 *   ZENT_INVERSE_USER, d *inverse          storage of the caller
 *   ZENT_INV_COL_DIM, int         default m
 *   ZENT_RETURN_USER, real *s     storage of the caller for the singular values
 *
 * Errors, type 5: 11001 unknown option; 104 null storage in an option; 150 a null; 1016 m < 1; 1017 n < 1; 1062 a column
 * dimension too small; 202, 1041 no memory. Type 4: 1045 a singular value did not converge in 30 steps. Method: Householder
 * bidiagonalization and implicitly shifted QR (Golub and Reinsch 1970; Dongarra et al., LINPACK Users' Guide, 1979), in blocks,
 * rotations applied in batches. */
ZENT_API float* zent_f_lin_svd_gen(long m, long n, float* a, ...);
ZENT_API double* zent_d_lin_svd_gen(long m, long n, double* a, ...);
ZENT_API float* zent_c_lin_svd_gen(long m, long n, zent_f_complex* a, ...);
ZENT_API double* zent_z_lin_svd_gen(long m, long n, zent_d_complex* a, ...);

/* Support routines on column-major arrays, without a frame of their own.
 *
 * l2rrr: A P = Q R, A m by n. pivot not 0: pvt as with ZENT_PIVOT above; 0: all columns stay, pvt may be null. A is copied to qr
 * unless they are one array with one leading dimension. qraux, pvt, column_norms: n elements; wk: 2n - 1.
 * Errors, type 5: 3089 m or n below 1, 3090 m > lda, 3092 m > ldqr. */
ZENT_API void zent_l2rrr(long m, long n, float* a, long lda, long pivot, long* pvt, float* qr, long ldqr, float* qraux,
                         float* column_norms, float* wk);
ZENT_API void zent_dl2rrr(long m, long n, double* a, long lda, long pivot, long* pvt, double* qr, long ldqr, double* qraux,
                          double* column_norms, double* wk);

/* lqrsl: products with Q and R from the first kbasis columns of a factor of l2rrr. job in decimal digits abcde: a: qy = Q y;
 * b, c, d or e: qty = Q^T y; c: b solves R b = Q^T y; d: res = y - A b; e: xb = A b. b has kbasis elements, the other vectors m;
 * those that job does not name may be null, qty always. res may be qty or y.
 * Errors: 3091 m < 1, 3092 m > ldqr, 3093 kbasis < 0 (type 5); 1009 a zero on the diagonal of R, with its index from 0 (type 4).
 */
ZENT_API void zent_lqrsl(long m, long kbasis, float* qr, long ldqr, float* qraux, float* y, float* qy, float* qty, float* b,
                         float* res, float* xb, long job);
ZENT_API void zent_dlqrsl(long m, long kbasis, double* qr, long ldqr, double* qraux, double* y, double* qy, double* qty,
                          double* b, double* res, double* xb, long job);

/* l2qrr: least squares solution x (n) and residual res (m) of A x = b. kbasis receives the number of leading diagonal elements of
 * R above tol times the first; with kbasis 0, x is 0 and res is not written. qr: m by n with leading dimension m; qraux, pvt: n;
 * wk: 3n - 1 elements. Errors as of l2rrr. */
ZENT_API void zent_l2qrr(long m, long n, float* a, long lda, float* b, float tol, float* x, float* res, long* kbasis, float* qr,
                         float* qraux, long* pvt, float* wk);
ZENT_API void zent_dl2qrr(long m, long n, double* a, long lda, double* b, double tol, double* x, double* res, long* kbasis,
                          double* qr, double* qraux, long* pvt, double* wk);

#ifdef __cplusplus
}
#endif
#endif
