/* Bessel, Kelvin and Airy functions, Fresnel integrals, elliptic integrals. */
#ifndef ZENT_BESSEL_H
#define ZENT_BESSEL_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Real functions of real arguments, in single (f) and double (d) precision. Common to all of them:
 *   result  the value; the not-a-number of the machine table after an error, unless told otherwise
 *   x       a not-a-number comes back as it is, without a message; an infinity gives the limit, or the error of its range
 * Alerts and warnings leave a usable result. docs/bessel.md gives formulas and the accuracy reached. */

/* Modified Bessel functions of the orders 0 and 1, exponentially scaled: exp(-|x|) I(x) and exp(x) K(x).
 * Chebyshev series (Clenshaw 1962) on ranges of x.
 *   raises  13500 K0, K1: x <= 0; 9012 K1: x so small that the result overflows; 9014 I1: 0 < |x| <= 2 tiny, the result is then 0
 *           (all type 5) */
ZENT_API float zent_f_bessel_exp_I0(float x);
ZENT_API double zent_d_bessel_exp_I0(double x);
ZENT_API float zent_f_bessel_exp_I1(float x);
ZENT_API double zent_d_bessel_exp_I1(double x);
ZENT_API float zent_f_bessel_exp_K0(float x);
ZENT_API double zent_d_bessel_exp_K0(double x);
ZENT_API float zent_f_bessel_exp_K1(float x);
ZENT_API double zent_d_bessel_exp_K1(double x);

/* Modified Bessel functions I of the orders 0 and 1.
 *   raises  9026 |x| > log(largest number) (type 4); 9017 I1: 0 < |x| <= 2 tiny, an Alert, the result is 0 */
ZENT_API float zent_f_bessel_I0(float x);
ZENT_API double zent_d_bessel_I0(double x);
ZENT_API float zent_f_bessel_I1(float x);
ZENT_API double zent_d_bessel_I1(double x);

/* Airy functions Ai, Bi and their derivatives. Power series about 0 in Chebyshev form, scaled series for positive x, modulus and
 * phase for negative x; the phase is carried in twice the precision, so that no accuracy is lost far out.
 *   raises  9015 Ai and derivative: x so great that the result underflows, an Alert, the result is 0;
 *           9009 Bi and derivative: x so great that the result overflows (type 5) */
ZENT_API float zent_f_airy_Ai(float x);
ZENT_API double zent_d_airy_Ai(double x);
ZENT_API float zent_f_airy_Ai_derivative(float x);
ZENT_API double zent_d_airy_Ai_derivative(double x);
ZENT_API float zent_f_airy_Bi(float x);
ZENT_API double zent_d_airy_Bi(double x);
ZENT_API float zent_f_airy_Bi_derivative(float x);
ZENT_API double zent_d_airy_Bi_derivative(double x);

/* Kelvin functions of order 0 and their derivatives: ber x + i bei x = I0(x sqrt(i)), ker x + i kei x = K0(x sqrt(i)).
 * Power series up to 5 (ker, kei up to 2), scaled Chebyshev series, modulus and phase beyond.
 *   result  of ker's derivative -infinity where -1/x overflows
 *   raises  13501 ber, bei and derivatives: |x| > 119 (type 5); 13500 ker, kei and derivatives: x < 0, and x = 0 for ker and its
 *           derivative, which are infinite there (type 5) */
ZENT_API float zent_f_kelvin_ber0(float x);
ZENT_API double zent_d_kelvin_ber0(double x);
ZENT_API float zent_f_kelvin_bei0(float x);
ZENT_API double zent_d_kelvin_bei0(double x);
ZENT_API float zent_f_kelvin_ker0(float x);
ZENT_API double zent_d_kelvin_ker0(double x);
ZENT_API float zent_f_kelvin_kei0(float x);
ZENT_API double zent_d_kelvin_kei0(double x);
ZENT_API float zent_f_kelvin_ber0_derivative(float x);
ZENT_API double zent_d_kelvin_ber0_derivative(double x);
ZENT_API float zent_f_kelvin_bei0_derivative(float x);
ZENT_API double zent_d_kelvin_bei0_derivative(double x);
ZENT_API float zent_f_kelvin_ker0_derivative(float x);
ZENT_API double zent_d_kelvin_ker0_derivative(double x);
ZENT_API float zent_f_kelvin_kei0_derivative(float x);
ZENT_API double zent_d_kelvin_kei0_derivative(double x);

/* Fresnel integrals: C(x) of cos(pi t^2 / 2), S(x) of sin(pi t^2 / 2), for t from 0 to x. Any x; nothing is raised. */
ZENT_API float zent_f_fresnel_integral_C(float x);
ZENT_API double zent_d_fresnel_integral_C(double x);
ZENT_API float zent_f_fresnel_integral_S(float x);
ZENT_API double zent_d_fresnel_integral_S(double x);

/* Complete elliptic integrals of the parameter x = k^2, 0 <= x < 1: K of the first, E of the second kind.
 *   raises  13502 x < 0 or x >= 1 (type 5); E then returns the largest number */
ZENT_API float zent_f_elliptic_integral_K(float x);
ZENT_API double zent_d_elliptic_integral_K(double x);
ZENT_API float zent_f_elliptic_integral_E(float x);
ZENT_API double zent_d_elliptic_integral_E(double x);

/* Carlson's integrals (1979), by duplication:
 *   RF(x, y, z)       1/2 integral of ((t+x)(t+y)(t+z))^(-1/2)           for t from 0 to infinity
 *   RC(x, y)          1/2 integral of (t+x)^(-1/2) (t+y)^(-1)
 *   RD(x, y, z)       3/2 integral of ((t+x)(t+y))^(-1/2) (t+z)^(-3/2)
 *   RJ(x, y, z, rho)  3/2 integral of ((t+x)(t+y)(t+z))^(-1/2) (t+rho)^(-1)
 *   raises  all of type 5, in this order:
 *           RF  13511 an argument below 0, 13512 a sum of two below 5 tiny, 13510 one above huge/5
 *           RC  13503 x < 0, 13504 y <= 0, 13505 x + y below 5 tiny, 13506 one above huge/5
 *           RD  13507 x or y below 0, 13508 z <= 0, 13509 x + y too small, 13510 one too large
 *           RJ  13511 x, y or z below 0, 13513 rho <= 0, 13514 a sum of two or rho too small, 13515 one too large */
ZENT_API float zent_f_elliptic_integral_RF(float x, float y, float z);
ZENT_API double zent_d_elliptic_integral_RF(double x, double y, double z);
ZENT_API float zent_f_elliptic_integral_RC(float x, float y);
ZENT_API double zent_d_elliptic_integral_RC(double x, double y);
ZENT_API float zent_f_elliptic_integral_RD(float x, float y, float z);
ZENT_API double zent_d_elliptic_integral_RD(double x, double y, double z);
ZENT_API float zent_f_elliptic_integral_RJ(float x, float y, float z, float rho);
ZENT_API double zent_d_elliptic_integral_RJ(double x, double y, double z, double rho);

/* Sequences of Bessel functions of a complex argument z, of the n real orders xnu, xnu + 1, ..., xnu + n - 1: I, J, K, Y on their
 * principal branches, cut along the negative axis (the sign of a zero imaginary part tells the side). The ..._adr forms take xnu
 * and z by address. K by Temme's series (1975) and Steed's continued fraction or Hankel's expansion, then forward recurrence; I from
 * its backward recurrence and the Wronskian with K; J and Y by rotation, or for a positive argument in real arithmetic.
 *   xnu     -1/2 < xnu, and xnu + n - 1 at most 1e7
 *   z       |z| at most 1/eps, where its spacing reaches 1
 *   n       at least 1; the I and K forms do nothing for less and return null, or the caller's storage
 * Option:
 *   ZENT_RETURN_USER  T *values   storage for the n values
 *   result  the n values: allocated here, freed by the caller with zent_free_allocated_memory; null after an error
 *   raises  11001 another option; 14000 J, Y: n < 1; 14001 xnu out of range; 14002 |z| too great; 607 a value that is infinite
 *           because z is 0; 201 memory (all type 5); 14004 only the first values are representable, the others overflow or
 *           underflow (type 4; storage of the caller holds the first ones) */
ZENT_API zent_f_complex *zent_c_bessel_Ix(float xnu, zent_f_complex z, long n, ...);
ZENT_API zent_d_complex *zent_z_bessel_Ix(double xnu, zent_d_complex z, long n, ...);
ZENT_API zent_f_complex *zent_c_bessel_Jx(float xnu, zent_f_complex z, long n, ...);
ZENT_API zent_d_complex *zent_z_bessel_Jx(double xnu, zent_d_complex z, long n, ...);
ZENT_API zent_f_complex *zent_c_bessel_Kx(float xnu, zent_f_complex z, long n, ...);
ZENT_API zent_d_complex *zent_z_bessel_Kx(double xnu, zent_d_complex z, long n, ...);
ZENT_API zent_f_complex *zent_c_bessel_Yx(float xnu, zent_f_complex z, long n, ...);
ZENT_API zent_d_complex *zent_z_bessel_Yx(double xnu, zent_d_complex z, long n, ...);
ZENT_API zent_f_complex *zent_c_bessel_Ix_adr(const float *xnu, const zent_f_complex *z, long n, ...);
ZENT_API zent_d_complex *zent_z_bessel_Ix_adr(const double *xnu, const zent_d_complex *z, long n, ...);
ZENT_API zent_f_complex *zent_c_bessel_Jx_adr(const float *xnu, const zent_f_complex *z, long n, ...);
ZENT_API zent_d_complex *zent_z_bessel_Jx_adr(const double *xnu, const zent_d_complex *z, long n, ...);
ZENT_API zent_f_complex *zent_c_bessel_Kx_adr(const float *xnu, const zent_f_complex *z, long n, ...);
ZENT_API zent_d_complex *zent_z_bessel_Kx_adr(const double *xnu, const zent_d_complex *z, long n, ...);
ZENT_API zent_f_complex *zent_c_bessel_Yx_adr(const float *xnu, const zent_f_complex *z, long n, ...);
ZENT_API zent_d_complex *zent_z_bessel_Yx_adr(const double *xnu, const zent_d_complex *z, long n, ...);

#ifdef __cplusplus
}
#endif
#endif
