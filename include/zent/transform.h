/* Fourier transforms of any length (mixed radix, Cooley and Tukey 1965, in the self-sorting form of Stockham; a large prime factor
 * by convolution, Bluestein 1970). Nothing is normalised.
 *
 * Every transform gives a new array that the caller owns, or the array given with ZENT_RETURN_USER, which may be the input; null
 * after an error. ZENT_PARAMS takes a table made by the init function of the same kind and length; it is never changed. The sine
 * and cosine transforms read their weights from it. Otherwise roots and weights of the lengths in use are kept between calls, so a
 * call without a table is as fast.
 *
 * Errors: 103 unknown option; 104 (type 5; "result" or "params", option) null option argument; 6002 null p; 6001 n < 1; 6003,
 * 6004 ncol or nrow < 1; 1024 a column dimension below ncol; 201 no memory. */
#ifndef ZENT_TRANSFORM_H
#define ZENT_TRANSFORM_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* q[m] = sum over k of p[k] exp(-2 pi i k m / n); with ZENT_BACKWARD exp(+...). Forward then backward multiplies by n.
 * Options: ZENT_BACKWARD, ZENT_PARAMS (table), ZENT_RETURN_USER (n complex). */
ZENT_API zent_f_complex *zent_c_fft_complex(long n, zent_f_complex *p, ...);
ZENT_API zent_d_complex *zent_z_fft_complex(long n, zent_d_complex *p, ...);

/* The same sums of n real numbers, packed: q[0], Re q[1], Im q[1], Re q[2], ..., and for even n the real q[n/2] last.
 * ZENT_BACKWARD takes that form and gives n times the input of the forward transform. Options as above. */
ZENT_API float *zent_f_fft_real(long n, float *p, ...);
ZENT_API double *zent_d_fft_real(long n, double *p, ...);

/* Sine: q[m] = 2 sum p[k] sin((k+1)(m+1) pi/(n+1)); its own inverse up to the factor 2(n+1).
 * Cosine: q[m] = p[0] + (-1)^m p[n-1] + 2 sum over k = 1..n-2 of p[k] cos(k m pi/(n-1)); its own inverse up to the factor 2(n-1).
 * Without a table n must be at least 2. Options: ZENT_PARAMS, ZENT_RETURN_USER. */
ZENT_API float *zent_f_fft_sine(long n, float *p, ...);
ZENT_API double *zent_d_fft_sine(long n, double *p, ...);
ZENT_API float *zent_f_fft_cosine(long n, float *p, ...);
ZENT_API double *zent_d_fft_cosine(long n, double *p, ...);

/* The complex transform along both dimensions of an nrow by ncol array, row-major. Forward then backward multiplies by nrow ncol.
 * Options: ZENT_BACKWARD; ZENT_PARAMS_2D (table of ncol, table of nrow); ZENT_P_COL_DIM or ZENT_A_COL_DIM (column dimension of p),
 * ZENT_RETURN_COL_DIM (of the result), both ncol unless given; ZENT_RETURN_USER. */
ZENT_API zent_f_complex *zent_c_fft_2d_complex(long nrow, long ncol, zent_f_complex *p, ...);
ZENT_API zent_d_complex *zent_z_fft_2d_complex(long nrow, long ncol, zent_d_complex *p, ...);

/* Tables, to be freed with zent_free_allocated_memory. Reals in each: complex 4 n + 15: work 2 n, twiddles 2 n, n, the number of
 * factors, the factors. Real 2 n + 15: work n, twiddles n, and the same. Sine trunc(2.5 n + 15): n / 2 weights and the real table
 * of n + 1; cosine 3 n + 15: n weights and the real table of n - 1; both as far as they fit. At most the factors that fit are kept.
 * Null without an error for n = 1 (real, complex). Errors: 6001 for n < 1, for sine and cosine n < 2; 201. */
ZENT_API float *zent_c_fft_complex_init(long n);
ZENT_API double *zent_z_fft_complex_init(long n);
ZENT_API float *zent_f_fft_real_init(long n);
ZENT_API double *zent_d_fft_real_init(long n);
ZENT_API float *zent_f_fft_sine_init(long n);
ZENT_API double *zent_d_fft_sine_init(long n);
ZENT_API float *zent_f_fft_cosine_init(long n);
ZENT_API double *zent_d_fft_cosine_init(long n);

/* The transforms in place, for callers that have done the checks: c holds n complex numbers as pairs, r and x n reals; `params` is
 * the table, of which the sine and cosine transforms read the weights (none are needed for n below 4). They raise 201. */
ZENT_API void zent_f3tcf(long n, float *c, float *params);
ZENT_API void zent_df3tcf(long n, double *c, double *params);
ZENT_API void zent_f3tcb(long n, float *c, float *params);
ZENT_API void zent_df3tcb(long n, double *c, double *params);
ZENT_API void zent_f3trf(long n, float *r, float *params);
ZENT_API void zent_df3trf(long n, double *r, double *params);
ZENT_API void zent_f3trb(long n, float *r, float *params);
ZENT_API void zent_df3trb(long n, double *r, double *params);
ZENT_API void zent_f2int(long n, float *x, float *params);
ZENT_API void zent_df2int(long n, double *x, double *params);
ZENT_API void zent_f2ost(long n, float *x, float *params);
ZENT_API void zent_df2ost(long n, double *x, double *params);

/* One plain pass of radix 3, 4, 5 or ip: from cc, element i of part j of block k at complex place i + ido (j + ip k), into ch, place
 * i + ido (k + l1 j). wa is a row of twiddles for each part from 1 on, as a complex table holds them; sign -1 is forward. *na is
 * set to 1: the result is in ch. */
ZENT_API void zent_f5tcf(long ido, long l1, float *cc, float *ch, float *wa, int sign);
ZENT_API void zent_df5tcf(long ido, long l1, double *cc, double *ch, double *wa, int sign);
ZENT_API void zent_f6tcf(long ido, long l1, float *cc, float *ch, float *wa, int sign);
ZENT_API void zent_df6tcf(long ido, long l1, double *cc, double *ch, double *wa, int sign);
ZENT_API void zent_f7tcf(long ido, long l1, float *cc, float *ch, float *wa, int sign);
ZENT_API void zent_df7tcf(long ido, long l1, double *cc, double *ch, double *wa, int sign);
ZENT_API void zent_f8tcf(long ido, long ip, long l1, float *cc, float *ch, float *wa, int sign, int *na);
ZENT_API void zent_df8tcf(long ido, long ip, long l1, double *cc, double *ch, double *wa, int sign, int *na);

#ifdef __cplusplus
}
#endif
#endif
