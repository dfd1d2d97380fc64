// Distribution functions called one by one and through the element loops of the host routines, beside R's mathematical library,
// GSL and Boost. Time is for one value.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "stat/distributions/arrays.hpp"
#include "zents.h"

#ifdef ZENT_HAVE_BOOST
#include <boost/math/distributions.hpp>
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
struct Ranges {
  Range x, y, z;  // y holds degrees of freedom and counts, and is whole
};

std::vector<double> draw(Range range, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::uniform_real_distribution<double> uniform(range.low, range.high);
  std::vector<double> x(n);
  for (double& value : x) value = uniform(engine);
  return x;
}

// `run` goes once through the arrays x, y, z, out.
template <class Run>
void measure(const std::string& name, Ranges ranges, Run run) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    const std::vector<double> x = draw(ranges.x, 1), z = draw(ranges.z, 3);
    std::vector<double> y = draw(ranges.y, 2), out(n);
    for (double& value : y) value = std::floor(value);
    for (auto _ : state) {
      run(x.data(), y.data(), z.data(), out.data());
      benchmark::DoNotOptimize(out.data());
    }
    state.counters["value"] = benchmark::Counter(static_cast<double>(state.iterations()) * n,
                                                 benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  });
}

template <class Function>
void calls(const std::string& name, Ranges ranges, Function function) {
  if constexpr (!std::is_same_v<Function, std::nullptr_t>) {
    measure(name, ranges, [=](const double* x, const double* y, const double* z, double* out) {
      for (long i = 0; i < n; ++i) out[i] = function(x[i], y[i], z[i]);
    });
  }
}

// One function: called one by one, through the loop that knows it by its address, and its peers; null for what does not exist.
template <class Ours, class R, class Gsl, class Boost>
void row(const std::string& name, Ranges ranges, void* function, Ours ours, R rmath, Gsl gsl, Boost boost) {
  calls(name + "/zent", ranges, ours);
  if (function != nullptr) {
    measure(name + "/loop", ranges, [=](const double* x, const double* y, const double* z, double* out) {
      zent::distributions::apply(function, n, x, y, z, out);
    });
  }
  calls(name + "/rmath", ranges, rmath);
  calls(name + "/gsl", ranges, gsl);
  calls(name + "/boost", ranges, boost);
}

#define CALL(...) \
  []([[maybe_unused]] double x, [[maybe_unused]] double y, [[maybe_unused]] double z) -> double { return __VA_ARGS__; }
#define LOOP(function) reinterpret_cast<void*>(function)
#ifdef ZENT_HAVE_RMATH
#define R(...) CALL(__VA_ARGS__)
#else
#define R(...) nullptr
#endif
#ifdef ZENT_HAVE_GSL
#define GSL(...) CALL(__VA_ARGS__)
#else
#define GSL(...) nullptr
#endif
#ifdef ZENT_HAVE_BOOST
#define BOOST(...) CALL(__VA_ARGS__)
using namespace boost::math;
#else
#define BOOST(...) nullptr
#endif

void continuous() {
  const Range none = {0, 1}, p = {0.001, 0.999}, df = {1, 40};
  row("normal_cdf", {{-5, 5}, none, none}, LOOP(zents_d_normal_cdf), CALL(zents_d_normal_cdf(x)), R(pnorm5(x, 0, 1, 1, 0)),
      GSL(gsl_cdf_ugaussian_P(x)), BOOST(cdf(normal(), x)));
  row("normal_inverse", {p, none, none}, LOOP(zents_d_normal_inverse_cdf), CALL(zents_d_normal_inverse_cdf(x)),
      R(qnorm5(x, 0, 1, 1, 0)), GSL(gsl_cdf_ugaussian_Pinv(x)), BOOST(quantile(normal(), x)));
  row("t_cdf", {{-5, 5}, df, none}, LOOP(zents_d_t_cdf), CALL(zents_d_t_cdf(x, y)), R(pt(x, y, 1, 0)), GSL(gsl_cdf_tdist_P(x, y)),
      BOOST(cdf(students_t(y), x)));
  row("t_inverse", {p, df, none}, LOOP(zents_d_t_inverse), CALL(zents_d_t_inverse(x, y)), R(qt(x, y, 1, 0)),
      GSL(gsl_cdf_tdist_Pinv(x, y)), BOOST(quantile(students_t(y), x)));
  row("chi_squared_cdf", {{0.1, 80}, {1, 65}, none}, LOOP(zents_d_chi_squared_cdf), CALL(zents_d_chi_squared_cdf(x, y)),
      R(pchisq(x, y, 1, 0)), GSL(gsl_cdf_chisq_P(x, y)), BOOST(cdf(chi_squared(y), x)));
  row("chi_squared_inverse", {p, {1, 65}, none}, LOOP(zents_d_chi_squared_inverse_cdf),
      CALL(zents_d_chi_squared_inverse_cdf(x, y)), R(qchisq(x, y, 1, 0)), GSL(gsl_cdf_chisq_Pinv(x, y)),
      BOOST(quantile(chi_squared(y), x)));
  row("gamma_cdf", {{0.1, 40}, df, none}, LOOP(zents_d_gamma_cdf), CALL(zents_d_gamma_cdf(x, y)), R(pgamma(x, y, 1, 1, 0)),
      GSL(gsl_cdf_gamma_P(x, y, 1)), BOOST(cdf(gamma_distribution<>(y), x)));
  row("F_cdf", {{0.1, 4}, df, df}, LOOP(zents_d_F_cdf), CALL(zents_d_F_cdf(x, y, z)), R(pf(x, y, z, 1, 0)),
      GSL(gsl_cdf_fdist_P(x, y, z)), BOOST(cdf(fisher_f(y, z), x)));
  row("F_inverse", {p, df, df}, LOOP(zents_d_F_inverse_cdf), CALL(zents_d_F_inverse_cdf(x, y, z)), R(qf(x, y, z, 1, 0)),
      GSL(gsl_cdf_fdist_Pinv(x, y, z)), BOOST(quantile(fisher_f(y, z), x)));
  row("beta_inverse", {p, df, df}, LOOP(zents_d_beta_inverse_cdf), CALL(zents_d_beta_inverse_cdf(x, y, z)),
      R(qbeta(x, y, z, 1, 0)), nullptr, BOOST(quantile(beta_distribution<>(y, z), x)));
  row("non_central_chi_squared", {{1, 60}, {1, 30}, {0.1, 30}}, LOOP(zents_d_non_central_chi_sq),
      CALL(zents_d_non_central_chi_sq(x, y, z)), R(pnchisq(x, y, z, 1, 0)), nullptr,
      BOOST(cdf(boost::math::non_central_chi_squared(y, z), x)));
  // R's own prints a warning for each value in whose tail it loses the digits.
  row("non_central_t", {{-2, 8}, df, {-1, 4}}, nullptr, CALL(zents_d_non_central_t_cdf(x, static_cast<long>(y), z)),
      R(pnt(x, y, z, 1, 0)), nullptr, BOOST(cdf(boost::math::non_central_t(y, z), x)));
  row("bivariate_normal", {{-2, 2}, {-2, 2}, {-0.9, 0.9}}, LOOP(zents_d_bivariate_normal_cdf),
      CALL(zents_d_bivariate_normal_cdf(x, y, z)), nullptr, nullptr, nullptr);
}

void discrete() {
  row("binomial_cdf", {{0, 30}, {30, 60}, {0.1, 0.9}}, nullptr,
      CALL(zents_d_binomial_cdf(static_cast<long>(x), static_cast<long>(y), z)), R(pbinom(std::floor(x), y, z, 1, 0)),
      GSL(gsl_cdf_binomial_P(static_cast<unsigned>(x), z, static_cast<unsigned>(y))), BOOST(cdf(binomial(y, z), std::floor(x))));
  row("binomial_cdf_many", {{0, 2000}, {2000, 4000}, {0.1, 0.9}}, nullptr,
      CALL(zents_d_binomial_cdf(static_cast<long>(x), static_cast<long>(y), z)), R(pbinom(std::floor(x), y, z, 1, 0)),
      GSL(gsl_cdf_binomial_P(static_cast<unsigned>(x), z, static_cast<unsigned>(y))), nullptr);
  row("poisson_cdf", {{1, 40}, {0, 40}, {0, 1}}, nullptr, CALL(zents_d_poisson_cdf(static_cast<long>(y), x)),
      R(ppois(y, x, 1, 0)), GSL(gsl_cdf_poisson_P(static_cast<unsigned>(y), x)), BOOST(cdf(poisson(x), y)));
  row("poisson_cdf_many", {{900, 1100}, {900, 1100}, {0, 1}}, nullptr, CALL(zents_d_poisson_cdf(static_cast<long>(y), x)),
      R(ppois(y, x, 1, 0)), GSL(gsl_cdf_poisson_P(static_cast<unsigned>(y), x)), nullptr);
  row("hyper_cdf", {{0, 10}, {10, 40}, {0, 1}}, nullptr,
      CALL(zents_d_hyper_cdf(static_cast<long>(x), static_cast<long>(y), 30, 100)), R(phyper(std::floor(x), 30, 70, y, 1, 0)),
      GSL(gsl_cdf_hypergeometric_P(static_cast<unsigned>(x), 30, 70, static_cast<unsigned>(y))), nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  continuous();
  discrete();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
