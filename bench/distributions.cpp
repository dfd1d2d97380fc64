// Distribution functions called one by one and through the element loops of the host routines, beside R's mathematical library,
// GSL and Boost. Time is for one value.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "stat/distributions/arrays.hpp"
#include "zents.h"

#ifdef ZENT_HAVE_BOOST
#include <boost/math/distributions.hpp>
#else
#endif
#ifdef ZENT_HAVE_GSL
#include <gsl/gsl_cdf.h>
#endif
#ifdef ZENT_HAVE_RMATH
extern "C" {
double pnorm5(double, double, double, int, int);
double qnorm5(double, double, double, int, int);
double pt(double, double, int, int);
double qt(double, double, int, int);
double pf(double, double, double, int, int);
double qf(double, double, double, int, int);
double pchisq(double, double, int, int);
double qchisq(double, double, int, int);
double pnchisq(double, double, double, int, int);
double pnt(double, double, double, int, int);
double pgamma(double, double, double, int, int);
double pbeta(double, double, double, int, int);
double qbeta(double, double, double, int, int);
double pbinom(double, double, double, int, int);
double ppois(double, double, int, int);
double phyper(double, double, double, double, int, int);
}
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
// Degrees of freedom and counts are whole.
std::vector<double> whole(std::vector<double> x) {
  for (double& value : x) value = std::floor(value);
  return x;
}

void count(benchmark::State& state) {
  state.counters["value"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * n, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

template <class Function>
void calls(benchmark::State& state, Function function, Range a, Range b, Range c) {
  const std::vector<double> x = draw(a, 1), y = whole(draw(b, 2)), z = draw(c, 3);
  std::vector<double> out(n);
  for (auto _ : state) {
    for (long i = 0; i < n; ++i) out[i] = function(x[i], y[i], z[i]);
    benchmark::DoNotOptimize(out.data());
  }
  count(state);
}
void loop(benchmark::State& state, void* function, Range a, Range b, Range c) {
  const std::vector<double> x = draw(a, 1), y = whole(draw(b, 2)), z = draw(c, 3);
  std::vector<double> out(n);
  for (auto _ : state) {
    zent::distributions::apply(function, n, x.data(), y.data(), z.data(), out.data());
    benchmark::DoNotOptimize(out.data());
  }
  count(state);
}

#define LIST(...) __VA_ARGS__
#define CASE(name, ranges, library, expression)                                                                               \
  void name##_##library(benchmark::State& state) {                                                                            \
    calls(                                                                                                                    \
        state,                                                                                                                \
        []([[maybe_unused]] double x, [[maybe_unused]] double y, [[maybe_unused]] double z) -> double { return expression; }, \
        ranges);                                                                                                              \
  }                                                                                                                           \
  BENCHMARK(name##_##library)->Name(#name "/" #library)
#define LOOP(name, ranges, function)                        \
  void name##_loop(benchmark::State& state) {               \
    loop(state, reinterpret_cast<void*>(function), ranges); \
  }                                                         \
  BENCHMARK(name##_loop)->Name(#name "/loop")
#ifdef ZENT_HAVE_RMATH
#define R_CASE(name, ranges, expression) CASE(name, LIST(ranges), rmath, expression)
#else
#define R_CASE(name, ranges, expression) static_assert(true)
#endif
#ifdef ZENT_HAVE_GSL
#define G_CASE(name, ranges, expression) CASE(name, LIST(ranges), gsl, expression)
#else
#define G_CASE(name, ranges, expression) static_assert(true)
#endif
#ifdef ZENT_HAVE_BOOST
#define B_CASE(name, ranges, expression) CASE(name, LIST(ranges), boost, expression)
#else
#define B_CASE(name, ranges, expression) static_assert(true)
#endif

#define NORMAL                       \
  Range{-5, 5}, Range{0, 1}, Range { \
    0, 1                             \
  }
CASE(normal_cdf, LIST(NORMAL), zent, zents_d_normal_cdf(x));
LOOP(normal_cdf, LIST(NORMAL), zents_d_normal_cdf);
R_CASE(normal_cdf, LIST(NORMAL), pnorm5(x, 0, 1, 1, 0));
G_CASE(normal_cdf, LIST(NORMAL), gsl_cdf_ugaussian_P(x));
B_CASE(normal_cdf, LIST(NORMAL), cdf(boost::math::normal(), x));
#define P                                   \
  Range{0.001, 0.999}, Range{0, 1}, Range { \
    0, 1                                    \
  }
CASE(normal_inverse, LIST(P), zent, zents_d_normal_inverse_cdf(x));
LOOP(normal_inverse, LIST(P), zents_d_normal_inverse_cdf);
R_CASE(normal_inverse, LIST(P), qnorm5(x, 0, 1, 1, 0));
G_CASE(normal_inverse, LIST(P), gsl_cdf_ugaussian_Pinv(x));
B_CASE(normal_inverse, LIST(P), quantile(boost::math::normal(), x));

#define T                             \
  Range{-5, 5}, Range{1, 40}, Range { \
    0, 1                              \
  }
CASE(t_cdf, LIST(T), zent, zents_d_t_cdf(x, y));
LOOP(t_cdf, LIST(T), zents_d_t_cdf);
R_CASE(t_cdf, LIST(T), pt(x, y, 1, 0));
G_CASE(t_cdf, LIST(T), gsl_cdf_tdist_P(x, y));
B_CASE(t_cdf, LIST(T), cdf(boost::math::students_t(y), x));
#define PT                                   \
  Range{0.001, 0.999}, Range{1, 40}, Range { \
    0, 1                                     \
  }
CASE(t_inverse, LIST(PT), zent, zents_d_t_inverse(x, y));
LOOP(t_inverse, LIST(PT), zents_d_t_inverse);
R_CASE(t_inverse, LIST(PT), qt(x, y, 1, 0));
G_CASE(t_inverse, LIST(PT), gsl_cdf_tdist_Pinv(x, y));
B_CASE(t_inverse, LIST(PT), quantile(boost::math::students_t(y), x));

#define CHI                             \
  Range{0.1, 80}, Range{1, 65}, Range { \
    0, 1                                \
  }
CASE(chi_squared_cdf, LIST(CHI), zent, zents_d_chi_squared_cdf(x, y));
LOOP(chi_squared_cdf, LIST(CHI), zents_d_chi_squared_cdf);
R_CASE(chi_squared_cdf, LIST(CHI), pchisq(x, y, 1, 0));
G_CASE(chi_squared_cdf, LIST(CHI), gsl_cdf_chisq_P(x, y));
B_CASE(chi_squared_cdf, LIST(CHI), cdf(boost::math::chi_squared(y), x));
#define PCHI                                 \
  Range{0.001, 0.999}, Range{1, 65}, Range { \
    0, 1                                     \
  }
CASE(chi_squared_inverse, LIST(PCHI), zent, zents_d_chi_squared_inverse_cdf(x, y));
LOOP(chi_squared_inverse, LIST(PCHI), zents_d_chi_squared_inverse_cdf);
R_CASE(chi_squared_inverse, LIST(PCHI), qchisq(x, y, 1, 0));
G_CASE(chi_squared_inverse, LIST(PCHI), gsl_cdf_chisq_Pinv(x, y));
B_CASE(chi_squared_inverse, LIST(PCHI), quantile(boost::math::chi_squared(y), x));

#define GAM                             \
  Range{0.1, 40}, Range{1, 40}, Range { \
    0, 1                                \
  }
CASE(gamma_cdf, LIST(GAM), zent, zents_d_gamma_cdf(x, y));
LOOP(gamma_cdf, LIST(GAM), zents_d_gamma_cdf);
R_CASE(gamma_cdf, LIST(GAM), pgamma(x, y, 1, 1, 0));
G_CASE(gamma_cdf, LIST(GAM), gsl_cdf_gamma_P(x, y, 1));
B_CASE(gamma_cdf, LIST(GAM), cdf(boost::math::gamma_distribution<>(y), x));

#define FR                             \
  Range{0.1, 4}, Range{1, 40}, Range { \
    1, 40                              \
  }
CASE(F_cdf, LIST(FR), zent, zents_d_F_cdf(x, y, z));
LOOP(F_cdf, LIST(FR), zents_d_F_cdf);
R_CASE(F_cdf, LIST(FR), pf(x, y, z, 1, 0));
G_CASE(F_cdf, LIST(FR), gsl_cdf_fdist_P(x, y, z));
B_CASE(F_cdf, LIST(FR), cdf(boost::math::fisher_f(y, z), x));
#define PF                                   \
  Range{0.001, 0.999}, Range{1, 40}, Range { \
    1, 40                                    \
  }
CASE(F_inverse, LIST(PF), zent, zents_d_F_inverse_cdf(x, y, z));
LOOP(F_inverse, LIST(PF), zents_d_F_inverse_cdf);
R_CASE(F_inverse, LIST(PF), qf(x, y, z, 1, 0));
G_CASE(F_inverse, LIST(PF), gsl_cdf_fdist_Pinv(x, y, z));
B_CASE(F_inverse, LIST(PF), quantile(boost::math::fisher_f(y, z), x));
CASE(beta_inverse, LIST(PF), zent, zents_d_beta_inverse_cdf(x, y, z));
LOOP(beta_inverse, LIST(PF), zents_d_beta_inverse_cdf);
R_CASE(beta_inverse, LIST(PF), qbeta(x, y, z, 1, 0));
B_CASE(beta_inverse, LIST(PF), quantile(boost::math::beta_distribution<>(y, z), x));

#define BINOMIAL                       \
  Range{0, 30}, Range{30, 60}, Range { \
    0.1, 0.9                           \
  }
CASE(binomial_cdf, LIST(BINOMIAL), zent, zents_d_binomial_cdf(static_cast<long>(x), static_cast<long>(y), z));
R_CASE(binomial_cdf, LIST(BINOMIAL), pbinom(std::floor(x), y, z, 1, 0));
B_CASE(binomial_cdf, LIST(BINOMIAL), cdf(boost::math::binomial(y, z), std::floor(x)));
#define POISSON                       \
  Range{1, 40}, Range{0, 40}, Range { \
    0, 1                              \
  }
CASE(poisson_cdf, LIST(POISSON), zent, zents_d_poisson_cdf(static_cast<long>(y), x));
R_CASE(poisson_cdf, LIST(POISSON), ppois(y, x, 1, 0));
B_CASE(poisson_cdf, LIST(POISSON), cdf(boost::math::poisson(x), y));
#define HYPER                          \
  Range{0, 10}, Range{10, 40}, Range { \
    0, 1                               \
  }
CASE(hyper_cdf, LIST(HYPER), zent, zents_d_hyper_cdf(static_cast<long>(x), static_cast<long>(y), 30, 100));
R_CASE(hyper_cdf, LIST(HYPER), phyper(std::floor(x), 30, 70, y, 1, 0));

#define NCHI                          \
  Range{1, 60}, Range{1, 30}, Range { \
    0.1, 30                           \
  }
CASE(non_central_chi_squared, LIST(NCHI), zent, zents_d_non_central_chi_sq(x, y, z));
R_CASE(non_central_chi_squared, LIST(NCHI), pnchisq(x, y, z, 1, 0));
B_CASE(non_central_chi_squared, LIST(NCHI), cdf(boost::math::non_central_chi_squared(y, z), x));
#define NT                            \
  Range{-2, 8}, Range{1, 40}, Range { \
    -1, 4                             \
  }
CASE(non_central_t, LIST(NT), zent, zents_d_non_central_t_cdf(x, static_cast<long>(y), z));
R_CASE(non_central_t, LIST(NT), pnt(x, y, z, 1, 0));
B_CASE(non_central_t, LIST(NT), cdf(boost::math::non_central_t(y, z), x));
#define BI                            \
  Range{-2, 2}, Range{-2, 2}, Range { \
    -0.9, 0.9                         \
  }
CASE(bivariate_normal, LIST(BI), zent, zents_d_bivariate_normal_cdf(x, y, z));

}  // namespace

BENCHMARK_MAIN();
