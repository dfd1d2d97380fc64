/* Eigenvalues and eigenvectors of symmetric and Hermitian matrices and of symmetric definite pencils. */
#ifndef ZENT_EIGEN_H
#define ZENT_EIGEN_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Common to all functions of this header.
 *
 * Matrices are n by n, row-major. Of a symmetric or Hermitian one only the lower triangle (column <= row) is read; no argument is
 * written to. Results that the library allocates are the caller's: zent_free_allocated_memory. Without vectors the eigenvalues
 * stand in decreasing order, with vectors in decreasing order of magnitude (of two that are equal but for the sign the positive
 * one first). Column j of the vectors belongs to eigenvalue j, has 2-norm 1, and its component of largest magnitude (the first
 * such) is positive, in complex vectors real and positive.
 *
 * Options, each a code with its values, ended by 0:
 *   ZENT_A_COL_DIM      int           column dimension of a, at least n (default n)
 *   ZENT_B_COL_DIM      int           column dimension of b (eig_symgen)
 *   ZENT_VECTORS        T **          receives the address of the vectors, n by n (with a range n by the number found)
 *   ZENT_VECTORS_USER   T *           the caller's storage for the vectors, n rows of the column dimension
 *   ZENT_EVECU_COL_DIM  int           column dimension of the caller's vectors, at least n (default n)
 *   ZENT_RANGE          two doubles   only the eigenvalues in [elow, ehigh] (eig_sym, eig_herm)
 *   ZENT_RANGE_ADR      two addresses the same, by address of reals of the precision
 *   ZENT_RETURN_NUMBER  long *        receives how many eigenvalues there are: n, or the number in the range (eig_sym, eig_herm)
 *   ZENT_RETURN_USER    real *        the caller's storage for the eigenvalues, n of them, also with a range
 *
 * Result: the eigenvalues, n elements allocated (with a range the first ones are filled), or null after an error above type 3,
 * and null behind ZENT_VECTORS too.
 *
 * Errors, the first one found, type 5: 103 unknown option; 6002 null a or b; 104 null behind ZENT_VECTORS or ZENT_VECTORS_USER;
 * 1010 n < 1; 1014 column dimension below n; 2044 a range together with ZENT_VECTORS_USER, since the number of columns is not
 * known beforehand; 2004 elow not below ehigh; 201 no memory. Type 4: 2010 a diagonal element that is not real (eig_herm); 2028 b
 * not positive definite. Type 3, results stand: 2008 no convergence within 100 steps, which an element that is not finite brings
 * about as well (all results are then not-a-numbers; with a range there are none); 2042, 2043 vectors of a range that failed the
 * test of their residual or of their orthogonality.
 *
 * Methods: blocked Householder reduction to tridiagonal form (Dongarra, Sorensen, Hammarling 1989); the root-free QL iteration of
 * Pal, Walker and Kahan for values; implicit QL with these values as shifts for the vectors; bisection by Sturm counts (Givens)
 * and inverse iteration with orthogonalisation within groups of close values (Peters, Wilkinson) for the vectors of a range.
 * Inverse iteration draws its start vectors from the library's stream with seed 123457 and puts the stream back: two threads
 * must not do that at the same time. Residuals and loss of orthogonality are of the order of n times the precision, relative to
 * the matrix; so are the errors of the values. */

/* Eigenvalues, and vectors with T the real of the precision, of a real symmetric matrix. */
ZENT_API float* zent_f_eig_sym(long n, float* a, ...);
ZENT_API double* zent_d_eig_sym(long n, double* a, ...);

/* The same of a complex Hermitian matrix; the values are real, T is complex. */
ZENT_API float* zent_c_eig_herm(long n, zent_f_complex* a, ...);
ZENT_API double* zent_z_eig_herm(long n, zent_d_complex* a, ...);

/* Solves A x = lambda B x, A symmetric and B symmetric positive definite, by the Cholesky factor of B. No ranges. The accuracy
 * suffers from the condition of B. */
ZENT_API float* zent_f_eig_symgen(long n, float* a, float* b, ...);
ZENT_API double* zent_d_eig_symgen(long n, double* a, double* b, ...);

/* Support routine of the statistics half: all eigenvalues in decreasing order (by value, not magnitude) and all vectors of the
 * symmetric matrix in the upper triangle of the column-major array a (leading dimension lda >= n). Vector j is column j of the
 * column-major array evec (leading dimension ldevec >= n), with 2-norm 1 and its largest component positive. a and evec may be
 * the same array. Raises 200 (type 5) without memory and 20103 (type 4) when an eigenvalue does not converge. */
ZENT_API void zents_e5csf(long n, const float* a, long lda, float* eval, float* evec, long ldevec);
ZENT_API void zents_de5csf(long n, const double* a, long lda, double* eval, double* evec, long ldevec);

#ifdef __cplusplus
}
#endif
#endif
