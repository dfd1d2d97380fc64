// Bessel, Kelvin and Airy functions beside Boost.Math and GSL, on the same points.
#include <benchmark/benchmark.h>

#include <cmath>
#include <complex>
#include <vector>

#include "math/functions/bessel_arrays.hpp"
#include "zent.h"

#ifdef ZENT_HAVE_GSL
#include <gsl/gsl_sf_airy.h>
#include <gsl/gsl_sf_bessel.h>
#endif
#ifdef ZENT_HAVE_BOOST
#include <boost/math/special_functions/airy.hpp>
#include <boost/math/special_functions/bessel.hpp>
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

#ifdef ZENT_HAVE_BOOST
using Double = boost::math::policies::policy<boost::math::policies::promote_double<false>>;
#endif

#define RUN(name, low, high, expression) \
  BENCHMARK_CAPTURE(over, name, low, high, [](double x) { return static_cast<double>(expression); })

RUN(I0e_zent, -20, 20, zent_d_bessel_exp_I0(x));
RUN(I0e_zent_float, -20, 20, zent_f_bessel_exp_I0(static_cast<float>(x)));
#ifdef ZENT_HAVE_BOOST
RUN(I0e_boost, -20, 20, std::exp(-std::abs(x)) * boost::math::cyl_bessel_i(0, std::abs(x), Double()));
RUN(I0_boost, -20, 20, boost::math::cyl_bessel_i(0, std::abs(x), Double()));
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
RUN(K0_boost, 0.01, 20, boost::math::cyl_bessel_k(0, x, Double()));
RUN(K1_boost, 0.01, 20, boost::math::cyl_bessel_k(1, x, Double()));
#endif

RUN(Ai_zent, -10, 10, zent_d_airy_Ai(x));
RUN(Bi_zent, -10, 10, zent_d_airy_Bi(x));
#ifdef ZENT_HAVE_GSL
RUN(Ai_gsl, -10, 10, gsl_sf_airy_Ai(x, GSL_PREC_DOUBLE));
RUN(Bi_gsl, -10, 10, gsl_sf_airy_Bi(x, GSL_PREC_DOUBLE));
#endif
#ifdef ZENT_HAVE_BOOST
RUN(Ai_boost, -10, 10, boost::math::airy_ai(x, Double()));
#endif

RUN(ber_zent, 0, 40, zent_d_kelvin_ber0(x));
RUN(ker_zent, 0.01, 40, zent_d_kelvin_ker0(x));

// One value and ten orders of J for complex and for real arguments.
double sequence(double x, double y, long n) {
  const zent_d_complex z = {x, y};
  const double order = 0.25;
  zent_d_complex out[10];
  zent_z_bessel_Jx_adr(&order, &z, n, ZENT_RETURN_USER, out, 0);
  return out[0].re;
}
// By value, without storage of the caller, a call arms no trap.
template <class Function>
double by_value(Function function, double x) {
  zent_d_complex* const out = function(0.25, {x, 0}, 1, 0);
  const double value = out->re;
  zent_free_allocated_memory(out);
  return value;
}
RUN(J_complex_zent, 0.1, 30, sequence(x, 1, 1));
RUN(J_real_zent, 0.1, 30, sequence(x, 0, 1));
RUN(J_by_value_zent, 0.1, 30, by_value(zent_z_bessel_Jx, x));
RUN(Y_by_value_zent, 0.1, 30, by_value(zent_z_bessel_Yx, x));
RUN(I_by_value_zent, 0.1, 30, by_value(zent_z_bessel_Ix, x));
RUN(K_by_value_zent, 0.1, 30, by_value(zent_z_bessel_Kx, x));
RUN(J_ten_orders_zent, 0.1, 30, sequence(x, 1, 10));

// The element loop of the host, which needs no trap.
void host_loop(benchmark::State& state, zent::functions::SequenceInDouble function, long n) {
  std::vector<zent_d_complex> z, out(4096 * 10);
  for (double v : points(0.1, 30)) z.push_back({v, 0});
  for (auto _ : state) {
    zent::functions::apply(function, 0.25, z.data(), 4096, n, out.data());
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * 4096);
}
BENCHMARK_CAPTURE(host_loop, J_real_zent, zent_z_bessel_Jx_adr, 1);
BENCHMARK_CAPTURE(host_loop, Y_real_zent, zent_z_bessel_Yx_adr, 1);
BENCHMARK_CAPTURE(host_loop, I_real_zent, zent_z_bessel_Ix_adr, 1);
BENCHMARK_CAPTURE(host_loop, K_real_zent, zent_z_bessel_Kx_adr, 1);
BENCHMARK_CAPTURE(host_loop, J_real_ten_orders_zent, zent_z_bessel_Jx_adr, 10);
#ifdef ZENT_HAVE_GSL
RUN(J_real_gsl, 0.1, 30, gsl_sf_bessel_Jnu(0.25, x));
RUN(Y_real_gsl, 0.1, 30, gsl_sf_bessel_Ynu(0.25, x));
RUN(I_real_gsl, 0.1, 30, gsl_sf_bessel_Inu(0.25, x));
RUN(K_real_gsl, 0.1, 30, gsl_sf_bessel_Knu(0.25, x));
#endif
#ifdef ZENT_HAVE_BOOST
RUN(J_real_boost, 0.1, 30, boost::math::cyl_bessel_j(0.25, x, Double()));
#endif

}  // namespace

BENCHMARK_MAIN();
