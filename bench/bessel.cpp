// Bessel, Airy, Fresnel and elliptic functions beside Boost.Math and GSL, on the same points.
#include <benchmark/benchmark.h>

#include <cmath>
#include <complex>
#include <vector>

#include "zent.h"

#ifdef ZENT_HAVE_GSL
#include <gsl/gsl_sf_airy.h>
#include <gsl/gsl_sf_bessel.h>
#include <gsl/gsl_sf_ellint.h>
#endif
#ifdef ZENT_HAVE_BOOST
#include <boost/math/special_functions/airy.hpp>
#include <boost/math/special_functions/bessel.hpp>
#include <boost/math/special_functions/ellint_1.hpp>
#include <boost/math/special_functions/ellint_2.hpp>
#include <boost/math/special_functions/ellint_rd.hpp>
#include <boost/math/special_functions/ellint_rf.hpp>
#include <boost/math/special_functions/ellint_rj.hpp>
#endif

namespace {

// Points spread evenly, in an order that a branch predictor cannot learn.
std::vector<double> points(double low, double high) {
  std::vector<double> x(4096);
  unsigned long s = 12345;
  for (double& v : x) {
    s = s * 6364136223846793005UL + 1442695040888963407UL;
    v = low + (high - low) * (static_cast<double>(s >> 11) * 0x1p-53);
  }
  return x;
}

template <class F>
void over(benchmark::State& state, double low, double high, F f) {
  const std::vector<double> x = points(low, high);
  for (auto _ : state) {
    double sum = 0;
    for (double v : x) sum += f(v);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long>(x.size()));
}

#define RUN(name, low, high, expression) \
  BENCHMARK_CAPTURE(over, name, low, high, [](double x) { return static_cast<double>(expression); })

RUN(I0e_zent, -20, 20, zent_d_bessel_exp_I0(x));
RUN(I0e_zent_float, -20, 20, zent_f_bessel_exp_I0(static_cast<float>(x)));
#ifdef ZENT_HAVE_BOOST
RUN(I0e_boost, -20, 20, std::exp(-std::abs(x)) * boost::math::cyl_bessel_i(0, std::abs(x)));
RUN(I0_boost, -20, 20, boost::math::cyl_bessel_i(0, std::abs(x)));
#endif
RUN(I0_zent, -20, 20, zent_d_bessel_I0(x));
#ifdef ZENT_HAVE_GSL
RUN(I0e_gsl, -20, 20, gsl_sf_bessel_I0_scaled(x));
RUN(K0e_gsl, 0.01, 20, gsl_sf_bessel_K0_scaled(x));
RUN(K1e_gsl, 0.01, 20, gsl_sf_bessel_K1_scaled(x));
#endif
RUN(K0e_zent, 0.01, 20, zent_d_bessel_exp_K0(x));
RUN(K1e_zent, 0.01, 20, zent_d_bessel_exp_K1(x));
RUN(K0e_zent_far, 9, 100, zent_d_bessel_exp_K0(x));
#ifdef ZENT_HAVE_BOOST
RUN(K0_boost, 0.01, 20, boost::math::cyl_bessel_k(0, x));
RUN(K1_boost, 0.01, 20, boost::math::cyl_bessel_k(1, x));
#endif

RUN(Ai_zent, -10, 10, zent_d_airy_Ai(x));
RUN(Bi_zent, -10, 10, zent_d_airy_Bi(x));
#ifdef ZENT_HAVE_GSL
RUN(Ai_gsl, -10, 10, gsl_sf_airy_Ai(x, GSL_PREC_DOUBLE));
RUN(Bi_gsl, -10, 10, gsl_sf_airy_Bi(x, GSL_PREC_DOUBLE));
#endif
#ifdef ZENT_HAVE_BOOST
RUN(Ai_boost, -10, 10, boost::math::airy_ai(x));
#endif

RUN(ber_zent, 0, 40, zent_d_kelvin_ber0(x));
RUN(ker_zent, 0.01, 40, zent_d_kelvin_ker0(x));
RUN(FresnelC_zent, -10, 10, zent_d_fresnel_integral_C(x));

RUN(RF_zent, 0.1, 5, zent_d_elliptic_integral_RF(x, 1 + x, 2));
RUN(RC_zent, 0.1, 5, zent_d_elliptic_integral_RC(x, 2));
RUN(RD_zent, 0.1, 5, zent_d_elliptic_integral_RD(x, 1 + x, 2));
RUN(RJ_zent, 0.1, 5, zent_d_elliptic_integral_RJ(x, 1 + x, 2, 3));
RUN(K_zent, 0.01, 0.99, zent_d_elliptic_integral_K(x));
RUN(E_zent, 0.01, 0.99, zent_d_elliptic_integral_E(x));
#ifdef ZENT_HAVE_BOOST
RUN(RF_boost, 0.1, 5, boost::math::ellint_rf(x, 1 + x, 2.0));
RUN(RC_boost, 0.1, 5, boost::math::ellint_rc(x, 2.0));
RUN(RD_boost, 0.1, 5, boost::math::ellint_rd(x, 1 + x, 2.0));
RUN(RJ_boost, 0.1, 5, boost::math::ellint_rj(x, 1 + x, 2.0, 3.0));
RUN(K_boost, 0.01, 0.99, boost::math::ellint_1(std::sqrt(x)));
#endif
#ifdef ZENT_HAVE_GSL
RUN(RF_gsl, 0.1, 5, gsl_sf_ellint_RF(x, 1 + x, 2, GSL_PREC_DOUBLE));
RUN(RD_gsl, 0.1, 5, gsl_sf_ellint_RD(x, 1 + x, 2, GSL_PREC_DOUBLE));
#endif

// One value and ten orders of J for complex and for real arguments.
double sequence(double x, double y, long n) {
  const zent_d_complex z = {x, y};
  const double order = 0.25;
  zent_d_complex out[10];
  zent_z_bessel_Jx_adr(&order, &z, n, ZENT_RETURN_USER, out, 0);
  return out[0].re;
}
RUN(J_complex_zent, 0.1, 30, sequence(x, 1, 1));
RUN(J_real_zent, 0.1, 30, sequence(x, 0, 1));
RUN(J_ten_orders_zent, 0.1, 30, sequence(x, 1, 10));
#ifdef ZENT_HAVE_BOOST
RUN(J_real_boost, 0.1, 30, boost::math::cyl_bessel_j(0.25, x));
#endif

}  // namespace

BENCHMARK_MAIN();
