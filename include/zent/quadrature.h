/* Integrals of a function of one variable.
 *
 * Every integrator takes the function fcn, the range, what its weight needs, then options and 0. It returns the integral, or
 * not-a-number after an error of type 4 or 5, one raised by fcn included; after a warning (type 3) the best value found. It calls fcn
 * inside the range only, never at an end of it, where rounding leaves that much room: limits more than some hundred of their rounding
 * units apart (for rules of 31 points a thousand, of more points some ten thousand), the bound of an infinite range below 1e13
 * (float: 2e4), but below 1 where fcn is singular or steep at it.
 *
 * Options of all integrators:
 *   ZENT_ERR_ABS, ZENT_ERR_REL    double: the error may be the larger of ERR_ABS and ERR_REL times the integral; default for both the
 *                                 square root of the machine epsilon. With _ADR the address of the value, a float in the f forms.
 *                                 int_fcn_fourier has ZENT_ERR_ABS only.
 *   ZENT_ERR_EST                  address of a real: estimate of the absolute error; written also when the limit was reached
 *   ZENT_FCN_W_DATA               a function f(x, data) and data, in place of fcn
 * and of all but int_fcn_smooth:
 *   ZENT_MAX_SUBINTER             int, default 500
 *   ZENT_N_EVALS                  long *: calls of fcn
 *   ZENT_N_SUBINTER               long *: subintervals made (not int_fcn_fourier)
 *
 * Errors of all (type 5 unless told): 103 an unknown option, 6002 no function, 4003 and 4004 a negative ERR_ABS or ERR_REL, 4005 both
 * of them 0, 4006 ERR_REL from 1 on; of all but int_fcn_smooth: 4001 ZENT_MAX_SUBINTER below 1, 201 no memory, 4007 the limit of
 * subintervals reached (type 4 in int_fcn; with a limit of 1 also when the result is good), and the warnings 4008 rounding prevents
 * the tolerance, 4009 the integrand is bad at some point. The integrators that extrapolate, which are int_fcn_sing, int_fcn_sing_pts,
 * int_fcn_inf, int_fcn_trig and int_fcn_fourier, also give the warning 4010, rounding in the extrapolation, and 4011 (type 4), the
 * integral looks divergent.
 *
 * Methods: Piessens, de Doncker-Kapenga, Ueberhuber and Kahaner, A Subroutine Package for Automatic Integration (1983). */
#ifndef ZENT_QUADRATURE_H
#define ZENT_QUADRATURE_H

#include "zent/base.h"

/* Weights (x - a)^alpha (b - x)^beta times 1, log(x - a), log(b - x), or both logarithms. */
#define ZENT_ALG 1
#define ZENT_ALG_LEFT_LOG 2
#define ZENT_ALG_RIGHT_LOG 3
#define ZENT_ALG_LOG 4
/* Infinite ranges: to the bound, from the bound on, everything. */
#define ZENT_INF_BOUND 5
#define ZENT_BOUND_INF 6
#define ZENT_INF_INF 7
/* Weights cos(omega x) and sin(omega x). */
#define ZENT_COS 8
#define ZENT_SIN 9

#pragma push_macro("ZENT_HALF")
#undef ZENT_HALF
#define ZENT_HALF(name) zent_##name
#include "zent/quadrature_support.inc"
#undef ZENT_HALF
#pragma pop_macro("ZENT_HALF")

#ifdef __cplusplus
extern "C" {
#endif

/* From a to b, with extrapolation: the one to try first, and the one for singularities at the ends. */
ZENT_API float zent_f_int_fcn_sing(float (*fcn)(float), float a, float b, ...);
ZENT_API double zent_d_int_fcn_sing(double (*fcn)(double), double a, double b, ...);

/* From a to b without extrapolation, by the pair of ZENT_RULE (int, default 2): 1 to 6 for 15, 21, 31, 41, 51, 61 points, the larger
 * ones for oscillating functions. ZENT_ERR_LIST and ZENT_ERR_ORDER take arrays of ZENT_MAX_SUBINTER reals and longs of the caller: the
 * errors of the subintervals, and the numbers of these, from 1 on, by falling error; entries behind the last one stay as they were.
 *   raises also 4002 the rule (type 5) */
ZENT_API float zent_f_int_fcn(float (*fcn)(float), float a, float b, ...);
ZENT_API double zent_d_int_fcn(double (*fcn)(double), double a, double b, ...);

/* From a to b with break points between them, in any order: points at which fcn or a derivative of it jumps or is infinite. The result
 * is 0, without an error, when a point lies outside or when there are more of them than ZENT_MAX_SUBINTER. Options ZENT_ERR_LIST and
 * ZENT_ERR_ORDER as above.
 *   raises also 4013 npoints below 0, 6002 no points (type 5) */
ZENT_API float zent_f_int_fcn_sing_pts(float (*fcn)(float), float a, float b, long npoints, float *points, ...);
ZENT_API double zent_d_int_fcn_sing_pts(double (*fcn)(double), double a, double b, long npoints, double *points, ...);

/* fcn(x) w(x) from a to b above a, with w(x) = (x - a)^alpha (b - x)^beta times what `weight` says: ZENT_ALG and its kin. The moments
 * of the powers overflow for exponents above 1000 (float: 120), and for two great ones earlier where b - a is above 1: the result is
 * then not-a-number, with 4007 or 4009.
 *   raises also 4020 the weight, 4021 and 4022 alpha or beta not above -1, 4023 a not below b (type 5) */
ZENT_API float zent_f_int_fcn_alg_log(float (*fcn)(float), float a, float b, long weight, float alpha, float beta, ...);
ZENT_API double zent_d_int_fcn_alg_log(double (*fcn)(double), double a, double b, long weight, double alpha, double beta, ...);

/* An infinite range: ZENT_INF_BOUND, ZENT_BOUND_INF, ZENT_INF_INF (which does not use bound).
 *   raises also 4012 the interval (type 5) */
ZENT_API float zent_f_int_fcn_inf(float (*fcn)(float), float bound, long interval, ...);
ZENT_API double zent_d_int_fcn_inf(double (*fcn)(double), double bound, long interval, ...);

/* fcn(x) cos(omega x) or fcn(x) sin(omega x) from a to b; weight ZENT_COS or ZENT_SIN. ZENT_MAX_MOMENTS (int, default 21): levels of
 * bisection whose moments are kept.
 *   raises also 4014 ZENT_MAX_MOMENTS below 1, 4015 the weight (type 5) */
ZENT_API float zent_f_int_fcn_trig(float (*fcn)(float), float a, float b, long weight, float omega, ...);
ZENT_API double zent_d_int_fcn_trig(double (*fcn)(double), double a, double b, long weight, double omega, ...);

/* The same from a to infinity, cycle by cycle; fcn must go to 0. With omega = 0 it is the integral of fcn from 0, whatever a is.
 * Options ZENT_ERR_ABS, ZENT_MAX_MOMENTS, ZENT_MAX_CYCLES (int, default 50) and ZENT_N_CYCLES (long *).
 *   raises also 4014, 4015, 4016 ZENT_MAX_CYCLES below 3, 202 no memory (type 5), 4018 the limit of cycles reached (type 4), and the
 *           warnings 4017 trouble within cycles, 4019 in the extrapolation over cycles */
ZENT_API float zent_f_int_fcn_fourier(float (*fcn)(float), float a, long weight, float omega, ...);
ZENT_API double zent_d_int_fcn_fourier(double (*fcn)(double), double a, long weight, double omega, ...);

/* The principal value of fcn(x) / (x - c) from a to b. Options ZENT_ERR_LIST and ZENT_ERR_ORDER as above; ZENT_RULE is read and not
 * used.
 *   raises also 4024 and 4025 c at an end (type 5) */
ZENT_API float zent_f_int_fcn_cauchy(float (*fcn)(float), float a, float b, float c, ...);
ZENT_API double zent_d_int_fcn_cauchy(double (*fcn)(double), double a, double b, double c, ...);

/* From a to b by rules of 21, 43 and 87 points: the fewest calls for a smooth function.
 *   raises also 4026 the largest rule does not reach the tolerance (type 4) */
ZENT_API float zent_f_int_fcn_smooth(float (*fcn)(float), float a, float b, ...);
ZENT_API double zent_d_int_fcn_smooth(double (*fcn)(double), double a, double b, ...);

/* The loop of int_fcn_trig. weight: 1 cosine, 2 sine. icall above 1 goes on with the moments of the call before: momcom levels in
 * chebmo, maxp1 rows of 25. nnlog: levels of the intervals. ier as for the loop over infinite ranges. */
ZENT_API void zent_q3awo(float (*f)(float, void *), void *ctx, float a, float b, float omega, long weight, float errabs, float errrel,
                         long limit, long icall, long maxp1, float *result, float *abserr, long *neval, long *ier, long *last,
                         float *alist, float *blist, float *rlist, float *elist, long *iord, long *nnlog, long *momcom,
                         float *chebmo);
ZENT_API void zent_dq3awo(double (*f)(double, void *), void *ctx, double a, double b, double omega, long weight, double errabs,
                          double errrel, long limit, long icall, long maxp1, double *result, double *abserr, long *neval, long *ier,
                          long *last, double *alist, double *blist, double *rlist, double *elist, long *iord, long *nnlog,
                          long *momcom, double *chebmo);

/* Chebyshev coefficients of degree 12 and 24 from the values at cos(k pi / 24), k = 0 to 24, the first and last of them halved. x holds
 * these points for k = 1 to 11; it is not read. */
ZENT_API void zent_q7awo(float *x, float *fval, float *cheb12, float *cheb24);
ZENT_API void zent_dq7awo(double *x, double *fval, double *cheb12, double *cheb24);

/* The pair of 15 and 7 points for w(x) f(x), with w(x, p1, p2, p3, p4, kp). */
ZENT_API void zent_q8awo(float (*f)(float, void *), void *ctx, float (*w)(float, float, float, float, float, long), float p1, float p2,
                         float p3, float p4, long kp, float a, float b, float *result, float *abserr, float *resabs, float *resasc);
ZENT_API void zent_dq8awo(double (*f)(double, void *), void *ctx, double (*w)(double, double, double, double, double, long), double p1,
                          double p2, double p3, double p4, long kp, double a, double b, double *result, double *abserr,
                          double *resabs, double *resasc);

#ifdef __cplusplus
}
#endif
#endif
