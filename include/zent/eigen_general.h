/* Eigenvalues and eigenvectors of general matrices and of general pencils.
 *
 * Matrices are row-major, n by n. Eigenvectors are the columns of an n by n row-major array: column j belongs to value j, has
 * 2-norm 1, and its component of largest magnitude (the first of equal ones) is real and positive.
 *
 * Options of all functions (code, what follows it):
 *   ZENT_A_COL_DIM       int     column dimension of a; default n
 *   ZENT_B_COL_DIM       int     column dimension of b (geneig); default n
 *   ZENT_VECTORS         T**     receives the eigenvectors, allocated by the library, freed with zent_free_allocated_memory
 *   ZENT_VECTORS_USER    T*      storage of the caller for the eigenvectors, n rows of the column dimension
 *   ZENT_EVECU_COL_DIM   int     column dimension of the caller's eigenvectors; default n
 *   ZENT_RETURN_USER     T*      storage of the caller for the n eigenvalues (eig_gen)
 *   ZENT_GENEIG_OPTION   void*   accepted and not used (geneig)
 * T is the complex type of the form. Neither a nor b is changed.
 *
 * Errors, the first one found: 103 unknown option; 6002 a, b, alpha or beta null; 104 null behind ZENT_VECTORS or
 * ZENT_VECTORS_USER; 1010 n below 1; 1014 n above a column dimension; 201 no memory. 2009 slow convergence: for values alone a
 * warning, where the values of the block that did not converge are the diagonal it had reached; with vectors, and for pencils, a
 * fatal error. A matrix with an element that is not finite has not-a-numbers for all values and vectors. */
#ifndef ZENT_EIGEN_GENERAL_H
#define ZENT_EIGEN_GENERAL_H

#include "zent/base.h"
#include "zent/option_codes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The n eigenvalues of a general matrix by decreasing magnitude; of a conjugate pair the one with the positive imaginary part
 * stands first. Returns them in library storage (or the caller's, ZENT_RETURN_USER); null after an error.
 * Method: balancing with base 16; values alone by stabilized elementary reduction to Hessenberg form and double-shift steps that
 * mix Householder reflections and eliminations; with vectors by Householder reduction and the QR algorithm (Francis 1961;
 * Peters and Wilkinson 1970, Numerische Mathematik 16). Complex matrices by the single-shift QR algorithm. */
ZENT_API zent_f_complex* zent_f_eig_gen(long n, float* a, ...);
ZENT_API zent_d_complex* zent_d_eig_gen(long n, double* a, ...);
ZENT_API zent_f_complex* zent_c_eig_gen(long n, zent_f_complex* a, ...);
ZENT_API zent_d_complex* zent_z_eig_gen(long n, zent_d_complex* a, ...);

/* The eigenvalues alpha[k] / beta[k] of A x = lambda B x, unsorted. alpha and beta have n entries; beta is real and not negative.
 * beta[k] = 0 marks an infinite eigenvalue; alpha[k] = beta[k] = 0 a singular pencil, in which the other values mean nothing.
 * A vector of an infinite eigenvalue solves B x = 0.
 * Method: QZ (Moler and Stewart 1973, SIAM J. Numer. Anal. 10), double shifts for real pencils, single ones for complex. */
ZENT_API void zent_f_geneig(long n, float* a, float* b, zent_f_complex* alpha, float* beta, ...);
ZENT_API void zent_d_geneig(long n, double* a, double* b, zent_d_complex* alpha, double* beta, ...);
ZENT_API void zent_c_geneig(long n, zent_f_complex* a, zent_f_complex* b, zent_f_complex* alpha, float* beta, ...);
ZENT_API void zent_z_geneig(long n, zent_d_complex* a, zent_d_complex* b, zent_d_complex* alpha, double* beta, ...);

#ifdef __cplusplus
}
#endif
#endif
