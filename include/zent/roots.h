/* Zeros of one function, of a system of equations and of a polynomial.
 *
 * A plain real option has an _ADR form that takes the address of the value. Integers behind pointers are long. Results are the
 * caller's, freed with zent_free_allocated_memory, unless ZENT_RETURN_USER gave the storage. An error of a library call inside a
 * user function is delivered there and climbs into the search: a fatal one (zeros_fcn: a terminal one) ends it without a result.
 */
#ifndef ZENT_ROOTS_H
#define ZENT_ROOTS_H

#include "zent/base.h"
#include "zent/option_codes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Real zeros of a real function of one variable, one after the other: Muller's method with implicit deflation (Muller 1956,
 * Mathematical Tables and Aids to Computation 10). Returns ZENT_NUM_ROOTS zeros; null only after an error of type 5.
 *
 *   ZENT_ERR_ABS      Real     a zero is where |f| and the deflated |f| are below this; default sqrt(epsilon)
 *   ZENT_ERR_REL      Real     or where a step is at most this times |x|; default sqrt(epsilon)
 *   ZENT_EPS          Real     a point this close to an earlier zero is moved away; default sqrt(epsilon)
 *   ZENT_ETA          Real     by this much; default 0.01
 *   ZENT_NUM_ROOTS    int      default 1
 *   ZENT_XGUESS       Real*    a first guess for each zero; default 0
 *   ZENT_MAX_EVALS    int      limit of evaluations for each zero (10277 or 10113); default 100
 *   ZENT_INFO_USER    long*    storage for the evaluations of each zero; the limit + 1 where it was reached
 *   ZENT_INFO_USER_PTR long**  receives the same in library storage
 *   ZENT_FCN_W_DATA   Real (*)(Real, void*), void*   a function with data, in place of fcn, which may be null then
 *   ZENT_RETURN_USER  Real*    storage for the zeros
 *
 * Errors: 6002 no function; 603 num_roots or max_evals below 1; 103 unknown option; 201 no memory. 7001 (type 3): a zero was
 * not found within the limit, and the last point stands in its place. The method has no test that f is small where its steps have
 * become small: a function without a zero can end at a point that is none. Where f is not finite, the step is halved. */
ZENT_API float* zent_f_zeros_fcn(float (*fcn)(float), ...);
ZENT_API double* zent_d_zeros_fcn(double (*fcn)(double), ...);

/* A solution of n equations in n unknowns, f(x) = 0, by Powell's hybrid method (Powell 1970, in Rabinowitz, Numerical Methods for
 * Nonlinear Algebraic Equations; More, Garbow and Hillstrom 1980). fcn(n, x, f) writes the n values at x. Returns x, null after
 * an error of type 4 or 5.
 *
 *   ZENT_ERR_REL      Real     done when the trust region is this small beside x; default sqrt(epsilon)
 *   ZENT_XGUESS       Real*    start; default 0
 *   ZENT_MAX_EVALS    int      limit of calls of fcn (10277 or 10113), times n + 1 without a Jacobian; default 200
 *   ZENT_JACOBIAN     void (*)(long n, Real* x, Real* fjac)   fjac[i * n + j] = d f_i / d x_j; default forward differences
 *   ZENT_FNORM        Real*    receives the sum of squares of f at the result
 *   ZENT_FCN_W_DATA   void (*)(long, Real*, Real*, void*), void*   a function with data, in place of fcn
 *   ZENT_JACOBIAN_W_DATA void (*)(long, Real*, Real*, void*), void*   likewise
 *   ZENT_RETURN_USER  Real*    storage for x
 *
 * Errors: 6002 no function; 7008 n below 1; 7009 err_rel negative or not a number; 7010 max_evals below 1; 103; 201. Of type 3,
 * with the best point found: 7011 limit of calls reached; 7012 err_rel too small; 7013 no progress, also where f or its
 * derivatives are not finite at the start. A trial point where f is not finite is refused and the trust region halved. */
ZENT_API float* zent_f_zeros_sys_eqn(void (*fcn)(long n, float* x, float* f), long n, ...);
ZENT_API double* zent_d_zeros_sys_eqn(void (*fcn)(long n, double* x, double* f), long n, ...);

/* All zeros of the polynomial with the coefficients coef[0] + coef[1] x + ... + coef[ndeg] x^ndeg, about in the order of their
 * magnitudes. Zero leading coefficients give entries (infinity, 0) at the front and the warning 7004; trailing ones give zeros at
 * the origin. Returns ndeg zeros, null after an error of type 5.
 * Method: the three-stage algorithm of Jenkins and Traub (1970, SIAM Journal on Numerical Analysis 7; 1970, Numerische Mathematik
 * 14), real pairs by quadratic factors; each zero is sought in the variable that brings it near 1. A last pass iterates together
 * the zeros whose residuals are not of the size of rounding yet (Ehrlich 1967; Aberth 1973, Mathematics of Computation 27).
 *
 *   ZENT_COMPANION    (none)   the eigenvalues of the companion matrix instead, by decreasing magnitude; any degree.
 *                              coef[ndeg] = 0 gives not-a-numbers
 *   ZENT_RETURN_USER  complex* storage for the zeros
 *
 * Errors: 7002 (7006 for complex coefficients) degree below 1, or above 100 (50) without ZENT_COMPANION; 6002 coef null; 103;
 * 201. 7005 (type 3): zeros are missing; their places are not-a-numbers, or as they were in storage of the caller. */
ZENT_API zent_f_complex* zent_f_zeros_poly(long ndeg, float* coef, ...);
ZENT_API zent_d_complex* zent_d_zeros_poly(long ndeg, double* coef, ...);
ZENT_API zent_f_complex* zent_c_zeros_poly(long ndeg, zent_f_complex* coef, ...);
ZENT_API zent_d_complex* zent_z_zeros_poly(long ndeg, zent_d_complex* coef, ...);

#ifdef __cplusplus
}
#endif
#endif
