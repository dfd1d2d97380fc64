/* Norms of vectors and matrices, and products of matrices. */
#ifndef ZENT_NORMS_H
#define ZENT_NORMS_H

#include "zent/base.h"
#include "zent/option_codes.h"
#include "zent/records.h"

#define ZENT_A_MATRIX 10330
#define ZENT_B_MATRIX 10331
#define ZENT_X_VECTOR 10332
#define ZENT_SECOND_VECTOR 10333
#define ZENT_RETURN_CODIAGONALS 10334
#define ZENT_RETURN_COUNT 10335

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Norms ------------------------------------------------------------------------------------------------------------
 *
 * Safe against overflow and underflow wherever the norm itself can be represented; not-a-number when an element is. Options of
 * all of them: ZENT_ONE_NORM (vector: sum of magnitudes; matrix: largest column sum), ZENT_INF_NORM (largest magnitude; largest
 * row sum); the last one given counts. Without either: the Euclidean (Frobenius) norm. Failure value: not-a-number. Errors, all
 * type 5: 103 unknown option, 104 null argument of an option, 150 null array, and those named below. */

/* Norm of n elements, or of the difference of two vectors: ZENT_SECOND_VECTOR real *. Here ZENT_INF_NORM takes a long *, which
 * receives the 0-based index of the first largest magnitude (null when it is not wanted). 603 for n below 1. */
ZENT_API float zent_f_vector_norm(long n, float* x, ...);
ZENT_API double zent_d_vector_norm(long n, double* x, ...);

/* Norm of an m by n matrix, row after row; ZENT_A_COL_DIM int, n by default. 1119 for m, 1115 for n below 1, 1014. */
ZENT_API float zent_f_matrix_norm(long m, long n, float* a, ...);
ZENT_API double zent_d_matrix_norm(long m, long n, double* a, ...);

/* Norm of a band matrix of order n in the storage of zent/band.h; its corners are not read. ZENT_SYMMETRIC: the upper half alone
 * is stored, nuca + 1 rows, and nlca is not looked at. 1115 for n below 1, 609, 610. */
ZENT_API float zent_f_matrix_norm_band(long n, float* a, long nlca, long nuca, ...);
ZENT_API double zent_d_matrix_norm_band(long n, double* a, long nlca, long nuca, ...);

/* Norm of an m by n matrix of nz elements in coordinate form, each position given once. ZENT_SYMMETRIC: of each pair of mirror
 * images one is given (m = n). 1119, 1115, 1120 or 1121 for nz, 602 for an index outside the matrix, 201. */
ZENT_API float zent_f_matrix_norm_coordinate(long m, long n, long nz, Zent_f_sparse_elem* a, ...);
ZENT_API double zent_d_matrix_norm_coordinate(long m, long n, long nz, Zent_d_sparse_elem* a, ...);

/* ---- Products ---------------------------------------------------------------------------------------------------------
 *
 * The operation is a text: "A*x", "A*B", where each matrix may stand in trans(), or ctrans() for the conjugate transpose, and
 * either may be A or B ("trans(A)*A"). Case and blanks do not matter. The options name the operands:
 *   ZENT_A_MATRIX, ZENT_B_MATRIX  int nrow, int ncol, [see below], the elements
 *   ZENT_X_VECTOR                 int nx, T *
 *   ZENT_RETURN_USER              T *, the caller's storage for the result, apart from the operands
 * Result: the product, the caller's to free; null after an error. Errors, all type 5: 103, 104 null operand, 150 null operation,
 * 1078 another operation, 1079 sizes that do not fit, 1090 an operand that was not given, 1119 and 1115 sizes below 1, 201 and
 * those named below. */

/* Matrices row after row. ZENT_A_COL_DIM, ZENT_B_COL_DIM, ZENT_RETURN_COL_DIM int: column dimensions (further columns of a result
 * that the library makes are 0); 1014 and 1095 for one that is too small. */
ZENT_API float* zent_f_mat_mul_rect(const char* operation, ...);
ZENT_API double* zent_d_mat_mul_rect(const char* operation, ...);
ZENT_API zent_f_complex* zent_c_mat_mul_rect(const char* operation, ...);
ZENT_API zent_d_complex* zent_z_mat_mul_rect(const char* operation, ...);

/* Band matrices, nrow by ncol, behind whose sizes int nlca, int nuca stand: nlca + nuca + 1 rows of ncol elements, A(i, j) in row
 * nuca + i - j, column j; corners are not read. A product of two matrices is a band matrix too, with as many codiagonals as both
 * have together, but at most one less than it has rows (columns); ZENT_RETURN_CODIAGONALS long *, long * receives the lower and
 * the upper count. 609, 610. */
ZENT_API float* zent_f_mat_mul_rect_band(const char* operation, ...);
ZENT_API double* zent_d_mat_mul_rect_band(const char* operation, ...);
ZENT_API zent_f_complex* zent_c_mat_mul_rect_band(const char* operation, ...);
ZENT_API zent_d_complex* zent_z_mat_mul_rect_band(const char* operation, ...);

/* Matrices in coordinate form, behind whose sizes int nz stands; elements of the same position are added. ZENT_SYMMETRIC: of each
 * pair of mirror images in A one is given; A may then not be transposed (1118). A product of two matrices is an array of elements
 * (Zent_d_sparse_elem * and so on) in the order of its rows; ZENT_RETURN_COUNT long * receives their number, and the storage of
 * ZENT_RETURN_USER must hold as many. 1120, 602 for an index outside the matrix. */
ZENT_API void* zent_f_mat_mul_rect_coordinate(const char* operation, ...);
ZENT_API void* zent_d_mat_mul_rect_coordinate(const char* operation, ...);
ZENT_API void* zent_c_mat_mul_rect_coordinate(const char* operation, ...);
ZENT_API void* zent_z_mat_mul_rect_coordinate(const char* operation, ...);

#ifdef __cplusplus
}
#endif
#endif
