/* Probability distributions of the statistics half: distribution functions, their inverses, probabilities.
 *
 * Every function takes scalars and returns a real of its precision (zents_f_..., zents_d_...). An argument that is not a number
 * gives that value back without a message. An argument at or beyond the end of the support is no error: a Note (type 1) and the
 * limit value. A parameter out of range is a Terminal error (type 5) and the result is not-a-number, unless said otherwise.
 * docs/distributions.md gives formulas, methods and the accuracy reached. */
#ifndef ZENT_DISTRIBUTIONS_H
#define ZENT_DISTRIBUTIONS_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* P(Z <= x) for a standard normal Z. No errors: an underflow is 0 without a message. Method: erfc. */
ZENT_API float zents_f_normal_cdf(float x);
ZENT_API double zents_d_normal_cdf(double x);

/* x with normal_cdf(x) = p. p outside (0, 1): 9041; p nearer than 1e-10 to 1 (4e-6 in single precision), where neighbouring p
 * are far apart: Warning 30002. */
ZENT_API float zents_f_normal_inverse_cdf(float p);
ZENT_API double zents_d_normal_inverse_cdf(double p);

/* P(X <= x, Y <= y) for standard normal X, Y with correlation rho. |rho| > 1: 20030. Method: Owen (1956). */
ZENT_API float zents_f_bivariate_normal_cdf(float x, float y, float rho);
ZENT_API double zents_d_bivariate_normal_cdf(double x, double y, double rho);

/* The chi-squared distribution with df degrees of freedom. chi_squared < 0: Note 9055, 0 (also with a bad df); df < 0.5: 9051.
 * Up to 1e-12 the value is 0. Beyond df = 65 it is the Wilson-Hilferty approximation, with an error of up to 1.7e-4, which
 * raises Alert 9019 where it underflows; gamma_cdf(x/2, df/2) is the same function without that error. */
ZENT_API float zents_f_chi_squared_cdf(float chi_squared, float df);
ZENT_API double zents_d_chi_squared_cdf(double chi_squared, double df);

/* The inverse of chi_squared_cdf as that is computed. p outside (0, 1): 9043; df < 0.5: 9051. Where chi_squared_cdf jumps over p:
 * Warning 9052; no convergence: Warning 9053; both with the best value. */
ZENT_API float zents_f_chi_squared_inverse_cdf(float p, float df);
ZENT_API double zents_d_chi_squared_inverse_cdf(double p, double df);

/* The non-central chi-squared distribution. df outside 0.5 to 200000: 30066; lambda < 0: 30067; df + lambda > 200000: 30068;
 * chi_squared <= 0: Note 30069, 0; more than 1000 terms to one side (lambda beyond about 39000, in single precision 170000): Warning 30070. Method: Poisson
 * mixture of central distributions. */
ZENT_API float zents_f_non_central_chi_sq(float chi_squared, float df, float lambda);
ZENT_API double zents_d_non_central_chi_sq(double chi_squared, double df, double lambda);

/* Its inverse. Parameters as above; p outside (0, 1): 9043; p out of reach: 9052 (type 5, not-a-number); the search ended early:
 * 11105 (type 4), the best value. */
ZENT_API float zents_f_non_central_chi_sq_inv(float p, float df, float lambda);
ZENT_API double zents_d_non_central_chi_sq_inv(double p, double df, double lambda);

/* The gamma distribution with shape a and scale 1. x < 0: Note 9055, 0; x = 0: 0; then a <= 0: 9056. */
ZENT_API float zents_f_gamma_cdf(float x, float a);
ZENT_API double zents_d_gamma_cdf(double x, double a);

/* Student's t distribution. An infinite t: 0 or 1 whatever df is; df < 1: 9042. For df that is no integer, or 20 and above, and
 * t^2 < df an approximation for large df is used, whose error is 1e-11 from df = 20 on but up to 1e-2 near df = 1; then
 * beta_incomplete(df/(df + t^2), df/2, 0.5)/2 is the upper tail without that error. */
ZENT_API float zents_f_t_cdf(float t, float df);
ZENT_API double zents_d_t_cdf(double t, double df);

/* The inverse of t_cdf as that is computed. df < 1: 9042; p outside (0, 1): 9043. Method: Hill (1970) and Newton steps. */
ZENT_API float zents_f_t_inverse(float p, float df);
ZENT_API double zents_d_t_inverse(double p, double df);

/* The non-central t distribution of (Z + delta)/sqrt(X/df). df < 1: 11021. Method: Owen (1968); quadrature for large df and in
 * the lower tail. */
ZENT_API float zents_f_non_central_t_cdf(float t, long df, float delta);
ZENT_API double zents_d_non_central_t_cdf(double t, long df, double delta);

/* Its inverse. df < 1: 11021; p outside (0, 1): 9043; no convergence: 9053 (type 4), the best value. */
ZENT_API float zents_f_non_central_t_inv_cdf(float p, long df, float delta);
ZENT_API double zents_d_non_central_t_inv_cdf(double p, long df, double delta);

/* The F distribution with dfn and dfd degrees of freedom. dfn or dfd not positive: 9048; F <= 0: Note 9050, 0. */
ZENT_API float zents_f_F_cdf(float F, float dfn, float dfd);
ZENT_API double zents_d_F_cdf(double F, double dfn, double dfd);

/* Its inverse. p outside (0, 1): 9043; dfn or dfd not positive: 9048; overflow: 9008 (type 4), infinity. */
ZENT_API float zents_f_F_inverse_cdf(float p, float dfn, float dfd);
ZENT_API double zents_d_F_inverse_cdf(double p, double dfn, double dfd);

/* The beta distribution with shapes pin and qin. pin <= 0: 11033; qin <= 0: 11034; x <= 0: Note 20415, 0; x >= 1: Note 20416, 1.
 */
ZENT_API float zents_f_beta_cdf(float x, float pin, float qin);
ZENT_API double zents_d_beta_cdf(double x, double pin, double qin);

/* Its inverse. pin <= 0: 9044; qin <= 0: 9045; p outside (0, 1): 9046; no convergence: Warning 9047, the best value. */
ZENT_API float zents_f_beta_inverse_cdf(float p, float pin, float qin);
ZENT_API double zents_d_beta_inverse_cdf(double p, double pin, double qin);
ZENT_API float zents_betin(float p, float pin, float qin);
ZENT_API double zents_dbetin(double p, double pin, double qin);

/* P(K <= k) and P(K = k) for K successes in n trials of probability p. n < 1: 9058; p outside 0 to 1: 9059; k < 0: Note 9054, 0;
 * k > n: Note 9060, 1 or 0. */
ZENT_API float zents_f_binomial_cdf(long k, long n, float p);
ZENT_API double zents_d_binomial_cdf(long k, long n, double p);
ZENT_API float zents_f_binomial_pdf(long k, long n, float p);
ZENT_API double zents_d_binomial_pdf(long k, long n, double p);

/* P(K <= k) and P(K = k) for a Poisson variable of mean theta. theta <= 0: 9064; k < 0: Note 9054, 0. */
ZENT_API float zents_f_poisson_cdf(long k, float theta);
ZENT_API double zents_d_poisson_cdf(long k, double theta);
ZENT_API float zents_f_poisson_pdf(long k, float theta);
ZENT_API double zents_d_poisson_pdf(long k, double theta);

/* P(K <= k) and P(K = k) for K defective items in a sample of n from a lot of l items, m of them defective. n < 1 or m < 1: 9061;
 * l < n or l < m: 9062 (type 4); k < 0: Note 9054, 0; k > n: Note 9063, 1 or 0. */
ZENT_API float zents_f_hyper_cdf(long k, long n, long m, long l);
ZENT_API double zents_d_hyper_cdf(long k, long n, long m, long l);
ZENT_API float zents_f_hypergeometric_pdf(long k, long n, long m, long l);
ZENT_API double zents_d_hypergeometric_pdf(long k, long n, long m, long l);

/* The support function behind binomial_coefficient, with the same errors. */
ZENT_API float zents_binom(long n, long m);
ZENT_API double zents_dbinom(long n, long m);

#ifdef __cplusplus
}
#endif
#endif
