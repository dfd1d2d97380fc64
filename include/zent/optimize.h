/* Minimization and nonlinear least squares: functions of one and of many variables, sums of squares. Option codes stand in
 * option_codes.h. Each function has a form in each precision (f, d); the float form takes float for double everywhere but in
 * plain real options, which are passed as double.
 *
 * User functions run as calling programs: errors of library calls that they make are delivered to them, and climb into the
 * search, which a fatal one ends without a result. A value that is not a number counts as +infinity, so a search steps back from
 * where the function is undefined; the start must have a finite value. Each function may be called again from inside its own user
 * function. */
#ifndef ZENT_OPTIMIZE_H
#define ZENT_OPTIMIZE_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* min_uncon: minimum of f on [a, b] from values alone, by safeguarded parabolas in a bracket. Returns x, or not-a-number.
 *   ZENT_ERR_ABS, real           accuracy of x; default 1e-4. 0: as far as rounding allows
 *   ZENT_XGUESS, real            start; default (a + b) / 2
 *   ZENT_STEP, real              first step, its sign the direction; default (0) 0.01 of the longer side
 *   ZENT_MAX_FUNCTION_CALLS, int default 1000
 *   ZENT_FVALUE, Real*           receives f(x)
 *   ZENT_FCN_W_DATA, Real (*)(Real, void*), void*
 * ERR_ABS, XGUESS and STEP by address: ZENT_ERR_ABS_ADR, ZENT_XGUESS_ADR, ZENT_STEP_ADR. 10078 serves as 10103 does.
 * Errors: 3062 start outside, 3061 interval within the accuracy, 6002 no function (5); 8001 minimum at an end, 8009 rounding
 * prevents progress, 8029 limit of calls (3): x is then the best point. */
ZENT_API float zent_f_min_uncon(float (*fcn)(float), float a, float b, ...);
ZENT_API double zent_d_min_uncon(double (*fcn)(double), double a, double b, ...);

/* min_uncon_deriv: the same with a derivative, by a safeguarded secant method on it.
 *   ZENT_GRAD_TOL, real          stop when |f'| is at most this; default 1e-4
 *   ZENT_ERR_REL, real           or when the bracket is within this times max(|x|, 1); default sqrt(precision)
 *   ZENT_XGUESS, ZENT_MAX_FUNCTION_CALLS, ZENT_FVALUE, ZENT_FCN_W_DATA as above
 *   ZENT_GVALUE, Real*           receives f'(x)
 *   ZENT_GRAD_W_DATA, Real (*)(Real, void*), void*
 * By address: ZENT_GRAD_TOL_ADR, ZENT_ERR_REL_ADR, ZENT_XGUESS_ADR.
 * Errors: 8003 start outside, 3061 empty interval, 6002 (5); 8004 and 8005 minimum at the lower or upper end, 8009, 8029 (3). */
ZENT_API float zent_f_min_uncon_deriv(float (*fcn)(float), float (*grad)(float), float a, float b, ...);
ZENT_API double zent_d_min_uncon_deriv(double (*fcn)(double), double (*grad)(double), double a, double b, ...);

/* min_uncon_multivar: minimum of f(x), x of n elements, by the BFGS method on a Cholesky factor of the Hessian with a line search
 * (Dennis and Schnabel 1983). Without a gradient it takes differences: forward ones at first, central ones from the first scaled
 * gradient of at most 0.1 or the first failed line search on. Returns x, of the caller to free (zent_free_allocated_memory), or
 * null.
 *   ZENT_XGUESS, Real*                start; default 0
 *   ZENT_GRAD, void (*)(long n, Real* x, Real* g)
 *   ZENT_XSCALE, Real*                n inverse sizes of the variables; default 1
 *   ZENT_FSCALE, real                 size of f; default 1
 *   ZENT_GRAD_TOL, real               of max |g_j| max(|x_j|, 1 / xscale_j) / max(|f|, fscale); default precision^(1/3)
 *   ZENT_STEP_TOL, real               relative step; default precision^(2/3)
 *   ZENT_REL_FCN_TOL, real            default max(1e-20, precision^(2/3))
 *   ZENT_MAX_STEP, real               longest scaled step; default (-9999) 1000 max(|xscale x|, |xscale|)
 *   ZENT_GOOD_DIGIT, int              good digits of f; default those of the precision
 *   ZENT_MAX_ITN, int                 default 100
 *   ZENT_MAX_FUNCTION_CALLS, int      values asked for by the line search; default 400. Calls for differences are not in it
 *   ZENT_MAX_GRAD, int                gradients, by the user or by differences; default 400
 *   ZENT_INIT_HESSIAN, int            first factor: 0 identity, 1 diagonal sqrt(max(|f|, fscale)) xscale_j
 *   ZENT_FVALUE, Real*                receives f(x)
 *   ZENT_RETURN_USER, Real*           storage for x
 *   ZENT_FCN_W_DATA, Real (*)(long, Real*, void*), void*
 *   ZENT_GRAD_W_DATA, void (*)(long, Real*, Real*, void*), void*
 * FSCALE, GRAD_TOL, STEP_TOL, REL_FCN_TOL, MAX_STEP also by address (11025 to 11029).
 * Errors: 8020 n < 1, 6002, 104 null for an array (5); 8051 false convergence, 11124 no finite value of f or its gradient at the
 * start (4); 8006 step within its tolerance (1); 8049 no further progress, 8050 little change of f, 8017, 8029, 8030 limits, 8032
 * unbounded (3): x is then the last point accepted. 8058, 8059, 8062, 8066 to 8072 (6): an argument that made no sense was
 * replaced. */
ZENT_API float* zent_f_min_uncon_multivar(float (*fcn)(long, float*), long n, ...);
ZENT_API double* zent_d_min_uncon_multivar(double (*fcn)(long, double*), long n, ...);

/* nonlin_least_squares: minimum of half the sum of squares of m residuals of n variables, m >= n, by a trust region method in the
 * manner of Levenberg and Marquardt (More 1978; Dennis and Schnabel 1983). fcn(m, n, x, f) gives the residuals. Returns x, of the
 * caller to free, or null. All tolerances are taken on f^T f / 2.
 *   ZENT_XGUESS, ZENT_XSCALE, ZENT_FSCALE, ZENT_GRAD_TOL, ZENT_STEP_TOL, ZENT_REL_FCN_TOL, ZENT_MAX_STEP, ZENT_GOOD_DIGIT,
 *   ZENT_MAX_ITN, ZENT_MAX_FUNCTION_CALLS, ZENT_RETURN_USER as above
 *   ZENT_JACOBIAN, void (*)(long m, long n, Real* x, Real* fjac)   fjac[i * n + j] = d f_i / d x_j; default forward differences
 *   ZENT_ABS_FCN_TOL, real       quiet end below it; default max(1e-10, precision^(2/3))
 *   ZENT_TRUST_REGION, real      first radius; default (-9999) the step to the minimum along the gradient
 *   ZENT_TOLERANCE, real         for the rank: columns count while |r_kk| > tolerance |r_11|; default sqrt(precision)
 *   ZENT_MAX_JACOBIAN, int       default 400
 *   ZENT_INTERN_SCALE            the trust region scales the variables by the norms of the columns of the Jacobian
 *   ZENT_FCN_W_DATA, void (*)(long, long, Real*, Real*, void*), void*
 *   ZENT_JACOBIAN_W_DATA, the same form
 *   ZENT_FVEC, Real** / ZENT_FVEC_USER, Real*               m residuals at x
 *   ZENT_FJAC, Real** / ZENT_FJAC_USER, Real*               Jacobian at x, m rows of ZENT_FJAC_COL_DIM (int, default n)
 *   ZENT_JACOBIAN_RANK, long*
 *   ZENT_COVARIANCE, Real** / ZENT_COVARIANCE_USER, Real*   n rows of ZENT_COVARIANCE_COL_DIM: on the independent columns
 *                                                           (J^T J)^-1 f^T f / max(m - rank, 1), 0 elsewhere
 *   ZENT_R_FACTOR, Real** / ZENT_R_FACTOR_USER, Real*       n rows of ZENT_R_FACTOR_COL_DIM: upper R with R^T R = J^T J
 * Library storage is the caller's to free; columns beyond n are 0 there. By address: 11025 to 11029, 11033 (ABS_FCN_TOL), 11034
 * (TRUST_REGION), 11003 (TOLERANCE).
 * Errors: 8054 m < 1, 8020 n < 1, 8057 m < n, 6002, 104, 1062 column dimension below n (5); 8051, 11124, 12115 no length of the
 * step found (4); 8006 (1); 8064 little change, 8017, 8029, 8065 limits, 8032 unbounded (3); 8058, 8059, 8061 to 8063, 8066 to
 * 8072 (6), arguments replaced. */
ZENT_API float* zent_f_nonlin_least_squares(void (*fcn)(long, long, float*, float*), long m, long n, ...);
ZENT_API double* zent_d_nonlin_least_squares(void (*fcn)(long, long, double*, double*), long m, long n, ...);

/* rcovb: covb := s2 (R^T R)^-1 for an upper triangular R, both column-major. Rows of R with a zero on the diagonal are passed
 * over: their rows and columns of covb are 0. covb may be r. */
ZENT_API void zent_rcovb(long ncoef, const float* r, long ldr, float s2, float* covb, long ldcovb);
ZENT_API void zent_drcovb(long ncoef, const double* r, long ldr, double s2, double* covb, long ldcovb);
ZENT_API void zents_rcovb(long ncoef, const float* r, long ldr, float s2, float* covb, long ldcovb);
ZENT_API void zents_drcovb(long ncoef, const double* r, long ldr, double s2, double* covb, long ldcovb);

/* The steps of nonlinear least squares for the families of the statistics half.
 * iparam: good digits, most iterations, function values and Jacobians, internal scaling. rparam: gradient, step, relative,
 * absolute and false convergence tolerance, longest step, first radius.
 * du4lsf: rparam[5] from x and xscale where it stands at -9999 or -999.
 * du5lsf: checks in the order and with the errors of nonlin_least_squares; what made no sense is replaced.
 * du7lsf: the step p that minimizes |fvec + J p|, |xscale p| within 0.75 to 1.5 of *delta; J is column-major. *alpha is the
 *         parameter of the last step on entry (0 at first) and of this one on return, 0 for the full step, which shortens *delta
 *         to its length. 12115 (4) when no length is found.
 * du8lsf: minimizes |R x - qtb|^2 + |diag x|^2, R upper triangular, column-major. */
ZENT_API void zents_du4lsf(long m, long n, const double* x, const double* xscale, double* rparam);
ZENT_API void zents_du5lsf(long m, long n, double* xscale, double* fscale, long* iparam, double* rparam);
ZENT_API void zents_du7lsf(long m, long n, const double* fvec, const double* fjac, long ldfjac, const double* xscale,
                           double* delta, double* alpha, double* step);
ZENT_API void zents_du8lsf(long n, const double* r, long ldr, const double* qtb, const double* diag, double* x);

#ifdef __cplusplus
}
#endif
#endif
