/* Integrals over plane regions and boxes, Gauss rules and derivatives.
 *
 * A user function is called with the caller's frame on top of the error stack, so what it raises shows as its own; it may call
 * every function here again. An integral that ends with an error of type 4 or 5 is not-a-number. ZENT_FCN_W_DATA (13101;
 * function, void *) replaces fcn by a function that takes the pointer as one more argument, last.
 *
 * Errors common to all: 103 unknown option; 6002 (type 5; "fcn", "a", "points", ...) null argument; 201 no memory; the integrals:
 * 4003, 4004 (type 5; the value) a tolerance below 0. */
#ifndef ZENT_QUADRATURE2_H
#define ZENT_QUADRATURE2_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The integral of fcn(x, y) over y from g(x) to h(x), then over x from a to b: the adaptive rule of int_fcn outside, the nested
 * rules of int_fcn_smooth inside, both to the same tolerances. Either pair of limits may be turned around.
 * Options: those of int_fcn, which apply to the outer integral; ZENT_N_EVALS counts calls of fcn. ZENT_FCN_W_DATA is for fcn
 * only.
 * Errors: those of int_fcn; 4026 (type 4) an inner integral beyond the largest rule: no further call is made. */
ZENT_API float zent_f_int_fcn_2d(float (*fcn)(float, float), float (*g)(float), float (*h)(float), float a, float b, ...);
ZENT_API double zent_d_int_fcn_2d(double (*fcn)(double, double), double (*g)(double), double (*h)(double), double a, double b,
                                   ...);

/* The integral of fcn(ndim, x) over the box a[i] <= x[i] <= b[i], ndim from 1 to 20, by products of the Gauss-Legendre rules of
 * 2, 4, ..., 256 points until two in a row agree. What fcn writes into x is not looked at.
 * Options: ZENT_ERR_ABS, ZENT_ERR_REL (real; sqrt(eps) each) and their _ADR forms; ZENT_ERR_EST (real *), the difference of the
 * last two products, the largest number when there are less than two, stored also before 4031; ZENT_MAX_EVALS (int, 1000000),
 * also as 10113: a rule is not begun that would go beyond it; ZENT_FCN_W_DATA.
 * Errors: 4028 (ndim) dimension; 4029 (max_evals) below 1, both type 5; 4030 (max_evals, ndim; type 3) a limit above what 256
 * points a side can use; 4031 (max_evals; type 4) no agreement, or a product that is not finite. */
ZENT_API float zent_f_int_fcn_hyper_rect(float (*fcn)(long ndim, float *x), long ndim, float *a, float *b, ...);
ZENT_API double zent_d_int_fcn_hyper_rect(double (*fcn)(long ndim, double *x), long ndim, double *a, double *b, ...);

/* The same by the mean over a Faure sequence. From point 1001 on a line is fitted to the estimates against 1/n; every 1000
 * points its slope over their count, relative to the intercept, is held against the tolerances; by itself while that is above
 * 1/100, as it stays for an integral of 0. Sums are kept in double precision in both forms.
 * Options: ZENT_ERR_ABS, ZENT_ERR_REL (real; 1e-4 each) and their _ADR forms; ZENT_ERR_EST (real *), stored also before 4031;
 * ZENT_MAX_EVALS (int, 2147483647), also as 10113, counts from point 1001 on; ZENT_BASE, ZENT_SKIP (int; -999 or left out: as
 * faure_sequence_init chooses); ZENT_FCN_W_DATA.
 * Errors: 15200, 15201, 15202 as faure_sequence_init; 4029 (type 5) max_evals below 1; 4031 (max_evals; type 4) the limit, or an
 * estimate that is not finite. */
ZENT_API float zent_f_int_fcn_qmc(float (*fcn)(long ndim, float *x), long ndim, float *a, float *b, ...);
ZENT_API double zent_d_int_fcn_qmc(double (*fcn)(long ndim, double *x), long ndim, double *a, double *b, ...);

/* Points, ascending, and weights of the n-point Gauss rule: the sum of weights[i] p(points[i]) is the integral of w p for every
 * polynomial p of degree 2n - 1; each fixed point takes one degree away.
 * Options, the last weight given stands:
 *   none                            w = 1                            on (-1, 1)
 *   ZENT_CHEBYSHEV_FIRST            (1 - x^2)^(-1/2)                 on (-1, 1)
 *   ZENT_CHEBYSHEV_SECOND           (1 - x^2)^(1/2)                  on (-1, 1)
 *   ZENT_JACOBI_WEIGHT              (1 - x)^alpha (1 + x)^beta       on (-1, 1); real alpha, real beta (10243)
 *   ZENT_JACOBI_ADR                 the same; real * to the two
 *   ZENT_HERMITE                    exp(-x^2)                        on the line
 *   ZENT_GEN_LAGUERRE(_ADR)         x^alpha exp(-x)                  on (0, inf); real (real *) alpha
 *   ZENT_COSH                       1/cosh(x)                        on the line; a real that is not used
 *   ZENT_FIXED_POINT(_ADR)          real (real *): a point that the rule must have, not inside the interval (Radau)
 *   ZENT_TWO_FIXED_POINTS(_ADR)     two reals (two real *), one on each side of the interval (Lobatto)
 * Errors, all type 5 unless told: 4027 (n) n below 1; 4034 (value; name) alpha or beta not above -1, or not finite; 4036 (n,
 * number) more fixed points than points; 4042 fixed points on the line; 4040 two of them on the half line; 4041 one that is not
 * finite or so far away that the rule cannot be represented; 4038 (point) a single one inside the interval; 4043, 4044 (point)
 * the first or second of two inside; 4045 (both) on the same side; 4039 (type 4) no convergence. points and weights are written
 * only on success; weights beyond the largest number, as those of x^alpha exp(-x) from alpha = 171 on, are infinite.
 * Method: Golub and Welsch 1969, Golub 1973 for the fixed points. The eigenvalues are corrected, and the weights summed from the
 * orthonormal polynomials, in the next wider precision: weights far below the unit roundoff are accurate in all their digits. */
ZENT_API void zent_f_gauss_quad_rule(long n, float *points, float *weights, ...);
ZENT_API void zent_d_gauss_quad_rule(long n, double *points, double *weights, ...);

/* The same without an option list and a frame of its own. iweight: 1 Legendre, 2 Chebyshev second, 3 Chebyshev first, 4 Jacobi,
 * 5 Hermite, 6 1/cosh, 7 generalized Laguerre; qxfix holds nfix points. Also raise 4033 and 4035 (type 5) for other values of
 * iweight and nfix. */
ZENT_API void zent_g2rul(long n, int iweight, float alpha, float beta, long nfix, float *qxfix, float *qx, float *qw);
ZENT_API void zent_dg2rul(long n, int iweight, double alpha, double beta, long nfix, double *qxfix, double *qx, double *qw);

/* A derivative of fcn at x: central differences at steps h, h/2, h/4, ..., extrapolated to step 0 (Richardson). Where fcn has no
 * value at a step, or a smaller one does better, the step is halved; where rounding errors hide the derivative it is enlarged.
 * Options: ZENT_ORDER (int, 1) 1, 2 or 3; ZENT_INITIAL_STEP (real; the greater of eps^(1/(order + 3)), so eps^(1/4) for order 1,
 * and sqrt(eps) |x|; one below 32 eps |x| or the smallest normal number counts as that) and ZENT_INITIAL_STEP_ADR;
 * ZENT_RELATIVE_ERROR (real; eps^(1/4)) and ZENT_RELATIVE_ERROR_ADR: the smallest error estimate is taken when it is below this
 * part of the result, so a smaller limit costs more calls, and 0 asks for the best that can be had; ZENT_FCN_W_DATA.
 * The result is the best estimate found, whether or not it came below the limit; not-a-number when fcn had no finite values near
 * x, or when rounding errors of fcn divided by the step to the power of the order are beyond the largest number.
 * Errors, type 5: 602 (order, 1, 3; "order"); 120 ("initial_step"; 0, largest, step) the step is not between them; 11061 (error;
 * "relative_error") below 0. */
ZENT_API float zent_f_fcn_derivative(float (*fcn)(float), float x, ...);
ZENT_API double zent_d_fcn_derivative(double (*fcn)(double), double x, ...);

#ifdef __cplusplus
}
#endif
#endif
