/* Error, gamma and beta functions of the mathematics half, and the series support of both halves.
 *
 * Every function takes real scalars and returns a real of its precision. An argument that is not a number gives that value back
 * without a message; a failing function returns the not-a-number of the machine table. Methods: Chebyshev series on fixed ranges
 * (Clenshaw 1955; Broucke 1973), asymptotic series, continued fractions. docs/functions.md lists the accuracy reached. */
#ifndef ZENT_FUNCTIONS_H
#define ZENT_FUNCTIONS_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* erf(x) = 2/sqrt(pi) times the integral of exp(-t^2) from 0 to x. No errors. */
ZENT_API float zent_f_erf(float x);
ZENT_API double zent_d_erf(double x);

/* erfc(x) = 1 - erf(x), without cancellation. x above the largest useful argument (26.5 in double): Alert 9015, 0. */
ZENT_API float zent_f_erfc(float x);
ZENT_API double zent_d_erfc(double x);

/* x with erf(x) = y. |y| >= 1: 120 (type 4); |y| so near 1 that half of the digits may be lost: Warning 9025. */
ZENT_API float zent_f_erf_inverse(float y);
ZENT_API double zent_d_erf_inverse(double y);

/* x with erfc(x) = y, 0 < y < 2. Outside: 120 (type 4); y too near 2: Warning 9029; no convergence: 9030 (type 4). */
ZENT_API float zent_f_erfc_inverse(float y);
ZENT_API double zent_d_erfc_inverse(double y);

/* The gamma function. 0: 9024 (type 5); a negative integer: 9006 (type 5), below -10 9021 (type 4); overflow: 9011 near 0, 9009
 * above 171.6 (type 4); underflow below -170.6: Alert 9014, 0; x near a negative integer: Warning 9020. */
ZENT_API float zent_f_gamma(float x);
ZENT_API double zent_d_gamma(double x);

/* log |gamma(x)|. 0: 9024 (type 5); a negative integer: 9006 (type 5, below -10 type 4); overflow: 9011 near 0, 9013 for huge x
 * (type 4); near a negative integer: Warning 9020. */
ZENT_API float zent_f_log_gamma(float x);
ZENT_API double zent_d_log_gamma(double x);

/* beta(a, b) = gamma(a) gamma(b)/gamma(a + b) for a, b > 0, else 9031 (type 5). Underflow: Alert 9018, 0. */
ZENT_API float zent_f_beta(float a, float b);
ZENT_API double zent_d_beta(double a, double b);

/* log beta(a, b) for a, b > 0, else 9038 (type 5). */
ZENT_API float zent_f_log_beta(float a, float b);
ZENT_API double zent_d_log_beta(double a, double b);

/* The integral of t^(a-1) exp(-t) from 0 to x, not divided by gamma(a). a <= 0: 9032, x < 0: 9033 (type 5); overflow: 9010
 * (type 4); no convergence of a fraction or series: 9034, 9035, 9065 (type 4). */
ZENT_API float zent_f_gamma_incomplete(float a, float x);
ZENT_API double zent_d_gamma_incomplete(double a, double x);

/* The incomplete beta function ratio I_x(a, b). x outside 0 to 1: 120; a or b not positive: 9031 (type 5). */
ZENT_API float zent_f_beta_incomplete(float x, float a, float b);
ZENT_API double zent_d_beta_incomplete(double x, double a, double b);

/* The value at x of a Chebyshev series of n terms whose first coefficient counts half. n outside 1 to 1000: 9001, 9002 (type 5);
 * x outside -1.1 to 1.1: Warning 9003, and the value. */
ZENT_API float zent_csevl(const float* series, long n, float x);
ZENT_API double zent_dcsevl(const double* series, long n, double x);

/* How many leading terms of a Chebyshev series leave an error of at most eta. n < 1: 9004; the series too short: 9005 (type 5),
 * 0. */
ZENT_API long zent_inits(const float* series, long n, float eta);
ZENT_API long zent_initds(const double* series, long n, double eta);

/* log gamma(x) less 0.5 log(2 pi) + (x - 0.5) log x - x, for x >= 10; below 60002 (type 4); underflow: Alert 9015, 0. */
ZENT_API float zent_r9lgmc(float x);
ZENT_API double zent_d9lgmc(double x);

/* The statistics half's own copies; their messages are those of its catalogue. erfc_inverse: 30002 and 30003 stand in place of
 * 9029 and 9030. */
ZENT_API float zents_f_erfc(float x);
ZENT_API double zents_d_erfc(double x);
ZENT_API float zents_f_erfc_inverse(float y);
ZENT_API double zents_d_erfc_inverse(double y);
ZENT_API float zents_f_gamma(float x);
ZENT_API double zents_d_gamma(double x);
ZENT_API float zents_f_log_gamma(float x);
ZENT_API double zents_d_log_gamma(double x);
ZENT_API float zents_f_log_beta(float a, float b);
ZENT_API double zents_d_log_beta(double a, double b);
ZENT_API float zents_f_beta_incomplete(float x, float a, float b);
ZENT_API double zents_d_beta_incomplete(double x, double a, double b);
ZENT_API float zents_csevl(const float* series, long n, float x);
ZENT_API double zents_dcsevl(const double* series, long n, double x);
ZENT_API long zents_inits(const float* series, long n, float eta);
ZENT_API long zents_initds(const double* series, long n, double eta);
ZENT_API float zents_r9lgmc(float x);
ZENT_API double zents_d9lgmc(double x);

/* n over m, exact while it is below 2^53 (2^24 in single). Not 0 <= m <= n: 600; overflow: 20402 (type 5). */
ZENT_API float zents_f_binomial_coefficient(long n, long m);
ZENT_API double zents_d_binomial_coefficient(long n, long m);

#ifdef __cplusplus
}
#endif
#endif
