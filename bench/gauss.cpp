// Gauss rules beside GSL's, and integrals over boxes beside GSL's Monte Carlo methods; calls of the integrand and errors as
// counters.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "zent.h"

#ifdef ZENT_HAVE_GSL
#ifdef ZENT_HAVE_GSL
#include <gsl/gsl_deriv.h>
#include <gsl/gsl_integration.h>
#include <gsl/gsl_monte_plain.h>
#include <gsl/gsl_monte_vegas.h>
#define BENCH_GSL
#endif
#endif

namespace {

long calls;

double decay(long n, double* x) {
  ++calls;
  double s = 0;
  for (long i = 0; i < n; ++i) s += x[i];
  return std::exp(-s);
}
double exact(long n) {
  return std::pow(1 - std::exp(-1.0), static_cast<double>(n));
}
void counters(benchmark::State& state, double value, long n) {
  state.counters["calls"] = static_cast<double>(calls) / static_cast<double>(state.iterations());
  state.counters["error"] = std::abs(value / exact(n) - 1);
}

void zent_rule(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<double> x(static_cast<std::size_t>(n)), w(x);
  for (auto _ : state) {
    if (state.range(1) == 0) {
      zent_d_gauss_quad_rule(n, x.data(), w.data(), 0);
    } else {
      zent_d_gauss_quad_rule(n, x.data(), w.data(), ZENT_GEN_LAGUERRE, 0.0, 0);
    }
    benchmark::DoNotOptimize(w.data());
  }
}

void zent_box(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<double> a(static_cast<std::size_t>(n), 0), b(a.size(), 1);
  double value = 0;
  calls = 0;
  for (auto _ : state)
    value = zent_d_int_fcn_hyper_rect(decay, n, a.data(), b.data(), ZENT_ERR_REL, 1e-6, ZENT_MAX_EVALS, 60000, 0);
  counters(state, value, n);
}
void zent_qmc(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<double> a(static_cast<std::size_t>(n), 0), b(a.size(), 1);
  double value = 0;
  calls = 0;
  for (auto _ : state) value = zent_d_int_fcn_qmc(decay, n, a.data(), b.data(), ZENT_ERR_REL, 1e-5, ZENT_MAX_EVALS, 100000, 0);
  counters(state, value, n);
}
void zent_derivative(benchmark::State& state) {
  double d = 0;
  for (auto _ : state) benchmark::DoNotOptimize(d = zent_d_fcn_derivative([](double x) { return std::sin(x); }, 1.0, 0));
  state.counters["error"] = std::abs(d / std::cos(1.0) - 1);
}

#ifdef BENCH_GSL
void gsl_rule(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const auto* type = state.range(1) == 0 ? gsl_integration_fixed_legendre : gsl_integration_fixed_laguerre;
  for (auto _ : state) {
    auto* rule = gsl_integration_fixed_alloc(type, n, state.range(1) == 0 ? -1 : 0, 1, 0, 0);
    benchmark::DoNotOptimize(gsl_integration_fixed_weights(rule));
    gsl_integration_fixed_free(rule);
  }
}
double gsl_decay(double* x, std::size_t n, void*) {
  return decay(static_cast<long>(n), x);
}
template <bool vegas>
void gsl_box(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  std::vector<double> a(n, 0), b(n, 1);
  gsl_monte_function f = {gsl_decay, n, nullptr};
  gsl_rng* rng = gsl_rng_alloc(gsl_rng_mt19937);
  const std::size_t budget = static_cast<std::size_t>(state.range(1));
  double value = 0, error = 0;
  calls = 0;
  for (auto _ : state) {
    if constexpr (vegas) {
      auto* s = gsl_monte_vegas_alloc(n);
      gsl_monte_vegas_integrate(&f, a.data(), b.data(), n, budget / 5, rng, s, &value, &error);
      gsl_monte_vegas_free(s);
    } else {
      auto* s = gsl_monte_plain_alloc(n);
      gsl_monte_plain_integrate(&f, a.data(), b.data(), n, budget, rng, s, &value, &error);
      gsl_monte_plain_free(s);
    }
  }
  gsl_rng_free(rng);
  counters(state, value, static_cast<long>(n));
}
void gsl_derivative(benchmark::State& state) {
  gsl_function f = {[](double x, void*) { return std::sin(x); }, nullptr};
  double d = 0, error = 0;
  for (auto _ : state) {
    gsl_deriv_central(&f, 1.0, 1e-4, &d, &error);
    benchmark::DoNotOptimize(d);
  }
  state.counters["error"] = std::abs(d / std::cos(1.0) - 1);
}
#endif

void rules(benchmark::internal::Benchmark* b) {
  for (long n : {5, 20, 100, 500}) {
    for (long kind : {0, 1}) b->Args({n, kind});
  }
}

}  // namespace

BENCHMARK(zent_rule)->Apply(rules);
BENCHMARK(zent_box)->Arg(2)->Arg(3)->Arg(4)->Arg(5);
BENCHMARK(zent_qmc)->Arg(3)->Arg(6)->Arg(12);
BENCHMARK(zent_derivative);
#ifdef BENCH_GSL
BENCHMARK(gsl_rule)->Apply(rules);
// With as many calls as the methods above take.
BENCHMARK(gsl_box<false>)->Args({3, 5000})->Args({6, 5000})->Args({12, 40000});
BENCHMARK(gsl_box<true>)->Args({3, 5000})->Args({6, 5000})->Args({12, 40000});
BENCHMARK(gsl_derivative);
#endif
BENCHMARK_MAIN();
