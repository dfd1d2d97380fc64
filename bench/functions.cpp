// Error, gamma, beta, Fresnel and elliptic functions, through the element loop of the host routine and called one by one, beside
// the C library and, where they are installed, Boost, GSL and R's mathematical library. Time is for one value.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "math/functions/arrays.hpp"
#include "zent.h"
#include "zents.h"

#ifdef ZENT_HAVE_BOOST
#include <boost/math/special_functions.hpp>
#endif
#ifdef ZENT_HAVE_GSL
#include <gsl/gsl_sf.h>
#endif
#ifdef ZENT_HAVE_RMATH
extern "C" double pbeta(double, double, double, int, int);
extern "C" double lbeta(double, double);
extern "C" double gammafn(double);
extern "C" double lgammafn(double);
#endif

namespace {

constexpr long n = 4096;

struct Range {
  double low, high;
};

std::vector<double> draw(Range range, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::uniform_real_distribution<double> uniform(range.low, range.high);
  std::vector<double> x(n);
  for (double& value : x) value = uniform(engine);
  return x;
}

void count(benchmark::State& state) {
  state.counters["value"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * n, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void loop(benchmark::State& state, void* function, int arguments, Range a, Range b, Range c) {
  const std::vector<double> x = draw(a, 1), y = draw(b, 2), z = draw(c, 3);
  std::vector<double> out(n);
  for (auto _ : state) {
    zent::functions::apply(function, arguments, n, x.data(), y.data(), z.data(), out.data());
    benchmark::DoNotOptimize(out.data());
  }
  count(state);
}

template <class Function>
void calls(benchmark::State& state, Function function, Range a, Range b, Range c) {
  const std::vector<double> x = draw(a, 1), y = draw(b, 2), z = draw(c, 3);
  std::vector<double> out(n);
  for (auto _ : state) {
    for (long i = 0; i < n; ++i) out[i] = function(x[i], y[i], z[i]);
    benchmark::DoNotOptimize(out.data());
  }
  count(state);
}

#define RANGE(low, high) \
  Range {                \
    low, high            \
  }
#define CALL(name, expression, a, b, c)                                                                                    \
  BENCHMARK_CAPTURE(                                                                                                       \
      calls, name, [](double x, double y, double z) { return (void)y, (void)z, (expression); }, RANGE a, RANGE b, RANGE c) \
      ->MinTime(0.05)
#define OURS(name, arguments, expression, a, b, c)                                                                            \
  BENCHMARK_CAPTURE(loop, name, reinterpret_cast<void*>(zent_d_##name), arguments, RANGE a, RANGE b, RANGE c)->MinTime(0.05); \
  CALL(name, expression, a, b, c)

#ifdef ZENT_HAVE_BOOST
using Double = boost::math::policies::policy<boost::math::policies::promote_double<false>>;
#endif

OURS(erf, 1, zent_d_erf(x), (-3, 3), (0, 1), (0, 1));
CALL(erf_libc, std::erf(x), (-3, 3), (0, 1), (0, 1));
OURS(erfc, 1, zent_d_erfc(x), (0, 10), (0, 1), (0, 1));
CALL(erfc_libc, std::erfc(x), (0, 10), (0, 1), (0, 1));
OURS(erf_inverse, 1, zent_d_erf_inverse(x), (-0.999, 0.999), (0, 1), (0, 1));
OURS(erfc_inverse, 1, zent_d_erfc_inverse(x), (0.001, 1.999), (0, 1), (0, 1));
OURS(gamma, 1, zent_d_gamma(x), (0.1, 30), (0, 1), (0, 1));
CALL(gamma_libc, std::tgamma(x), (0.1, 30), (0, 1), (0, 1));
OURS(log_gamma, 1, zent_d_log_gamma(x), (0.1, 30), (0, 1), (0, 1));
CALL(log_gamma_libc, std::lgamma(x), (0.1, 30), (0, 1), (0, 1));
OURS(beta, 2, zent_d_beta(x, y), (0.1, 30), (0.1, 30), (0, 1));
OURS(log_beta, 2, zent_d_log_beta(x, y), (0.1, 30), (0.1, 30), (0, 1));
OURS(gamma_incomplete, 2, zent_d_gamma_incomplete(x, y), (0.1, 30), (0.1, 30), (0, 1));
OURS(beta_incomplete, 3, zent_d_beta_incomplete(x, y, z), (0.01, 0.99), (0.3, 30), (0.3, 30));
OURS(elliptic_integral_K, 1, zent_d_elliptic_integral_K(x), (0, 1), (0, 1), (0, 1));
OURS(elliptic_integral_E, 1, zent_d_elliptic_integral_E(x), (0, 1), (0, 1), (0, 1));
OURS(elliptic_integral_RF, 3, zent_d_elliptic_integral_RF(x, y, z), (0, 5), (0.1, 5), (0.1, 5));
OURS(elliptic_integral_RC, 2, zent_d_elliptic_integral_RC(x, y), (0, 5), (0.1, 5), (0, 1));
OURS(elliptic_integral_RD, 3, zent_d_elliptic_integral_RD(x, y, z), (0, 5), (0.1, 5), (0.1, 5));
CALL(elliptic_integral_RJ, zent_d_elliptic_integral_RJ(x, y, z, 2), (0, 5), (0.1, 5), (0.1, 5));
OURS(fresnel_integral_C, 1, zent_d_fresnel_integral_C(x), (-10, 10), (0, 1), (0, 1));
OURS(fresnel_integral_S, 1, zent_d_fresnel_integral_S(x), (-10, 10), (0, 1), (0, 1));

#ifdef ZENT_HAVE_BOOST
CALL(erf_inverse_boost, boost::math::erf_inv(x, Double()), (-0.999, 0.999), (0, 1), (0, 1));
CALL(erfc_inverse_boost, boost::math::erfc_inv(x, Double()), (0.001, 1.999), (0, 1), (0, 1));
CALL(gamma_boost, boost::math::tgamma(x, Double()), (0.1, 30), (0, 1), (0, 1));
CALL(log_gamma_boost, boost::math::lgamma(x, Double()), (0.1, 30), (0, 1), (0, 1));
CALL(beta_boost, boost::math::beta(x, y, Double()), (0.1, 30), (0.1, 30), (0, 1));
CALL(gamma_incomplete_boost, boost::math::tgamma_lower(x, y, Double()), (0.1, 30), (0.1, 30), (0, 1));
CALL(beta_incomplete_boost, boost::math::ibeta(y, z, x, Double()), (0.01, 0.99), (0.3, 30), (0.3, 30));
CALL(erf_boost, boost::math::erf(x, Double()), (-3, 3), (0, 1), (0, 1));
CALL(erfc_boost, boost::math::erfc(x, Double()), (0, 10), (0, 1), (0, 1));
CALL(elliptic_integral_K_boost, boost::math::ellint_1(std::sqrt(x), Double()), (0, 1), (0, 1), (0, 1));
CALL(elliptic_integral_E_boost, boost::math::ellint_2(std::sqrt(x), Double()), (0, 1), (0, 1), (0, 1));
CALL(elliptic_integral_RF_boost, boost::math::ellint_rf(x, y, z, Double()), (0, 5), (0.1, 5), (0.1, 5));
CALL(elliptic_integral_RC_boost, boost::math::ellint_rc(x, y, Double()), (0, 5), (0.1, 5), (0, 1));
CALL(elliptic_integral_RD_boost, boost::math::ellint_rd(x, y, z, Double()), (0, 5), (0.1, 5), (0.1, 5));
CALL(elliptic_integral_RJ_boost, boost::math::ellint_rj(x, y, z, 2.0, Double()), (0, 5), (0.1, 5), (0.1, 5));
#endif
#ifdef ZENT_HAVE_GSL
CALL(erf_gsl, gsl_sf_erf(x), (-3, 3), (0, 1), (0, 1));
CALL(erfc_gsl, gsl_sf_erfc(x), (0, 10), (0, 1), (0, 1));
CALL(gamma_gsl, gsl_sf_gamma(x), (0.1, 30), (0, 1), (0, 1));
CALL(log_gamma_gsl, gsl_sf_lngamma(x), (0.1, 30), (0, 1), (0, 1));
CALL(log_beta_gsl, gsl_sf_lnbeta(x, y), (0.1, 30), (0.1, 30), (0, 1));
CALL(gamma_incomplete_gsl, gsl_sf_gamma_inc_P(x, y), (0.1, 30), (0.1, 30), (0, 1));
CALL(beta_incomplete_gsl, gsl_sf_beta_inc(y, z, x), (0.01, 0.99), (0.3, 30), (0.3, 30));
CALL(elliptic_integral_K_gsl, gsl_sf_ellint_Kcomp(std::sqrt(x), GSL_PREC_DOUBLE), (0, 1), (0, 1), (0, 1));
CALL(elliptic_integral_E_gsl, gsl_sf_ellint_Ecomp(std::sqrt(x), GSL_PREC_DOUBLE), (0, 1), (0, 1), (0, 1));
CALL(elliptic_integral_RF_gsl, gsl_sf_ellint_RF(x, y, z, GSL_PREC_DOUBLE), (0, 5), (0.1, 5), (0.1, 5));
CALL(elliptic_integral_RC_gsl, gsl_sf_ellint_RC(x, y, GSL_PREC_DOUBLE), (0, 5), (0.1, 5), (0, 1));
CALL(elliptic_integral_RD_gsl, gsl_sf_ellint_RD(x, y, z, GSL_PREC_DOUBLE), (0, 5), (0.1, 5), (0.1, 5));
CALL(elliptic_integral_RJ_gsl, gsl_sf_ellint_RJ(x, y, z, 2, GSL_PREC_DOUBLE), (0, 5), (0.1, 5), (0.1, 5));
#endif
#ifdef ZENT_HAVE_RMATH
CALL(gamma_rmath, gammafn(x), (0.1, 30), (0, 1), (0, 1));
CALL(log_gamma_rmath, lgammafn(x), (0.1, 30), (0, 1), (0, 1));
CALL(log_beta_rmath, lbeta(x, y), (0.1, 30), (0.1, 30), (0, 1));
CALL(beta_incomplete_rmath, pbeta(x, y, z, 1, 0), (0.01, 0.99), (0.3, 30), (0.3, 30));
#endif

}  // namespace

BENCHMARK_MAIN();
