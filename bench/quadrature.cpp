// The adaptive integrators beside GSL's QAG family: the same integrands and tolerances. `evals` counts calls of the integrand;
// the empty integrand shows what an evaluation costs beside the integrand itself.
#include <benchmark/benchmark.h>

#include <cmath>

#include "zent.h"

#if __has_include(<gsl/gsl_integration.h>)
#include <gsl/gsl_errno.h>
#include <gsl/gsl_integration.h>
#define ZENT_HAVE_GSL 1
#endif

namespace {

long calls;
constexpr double tolerance = 1e-9;

double constant(double x, void*) {
  ++calls;
  return x;
}
double logarithm(double x, void*) {
  ++calls;
  return std::log(x);
}
double runge(double x, void*) {
  ++calls;
  return 1 / (1 + 25 * x * x);
}
double peak(double x, void*) {
  ++calls;
  return 1e-4 / (1e-8 + (x - 0.3) * (x - 0.3));
}
double waves(double x, void*) {
  ++calls;
  return std::cos(100 * std::sin(x));
}
double gauss(double x, void*) {
  ++calls;
  return std::exp(-x * x);
}
double inner_root(double x, void*) {
  ++calls;
  return 1 / std::sqrt(std::fabs(x - 1));
}
double cusp(double x, void*) {  // never accurate enough: 499 bisections
  ++calls;
  return x < 0.31 ? 1.0 : -1.0;
}
double exponential(double x, void*) {
  ++calls;
  return std::exp(x);
}
double rational(double x, void*) {
  ++calls;
  return 1 / (5 * x * x * x + 6);
}
double decay(double x, void*) {
  ++calls;
  return std::exp(-x);
}

template <class Body>
void measure(benchmark::State& state, bool trap, Body body) {
  for (int type = 1; type <= 7; ++type) zent_error_options(ZENT_SET_PRINT, type, 0, ZENT_SET_STOP, type, 0, 0);
  zent_error_options(ZENT_SIGNAL_TRAPPING, static_cast<int>(trap), 0);
  calls = 0;
  long runs = 0;
  double value = 0;
  for (auto _ : state) {
    value = body();
    benchmark::DoNotOptimize(value);
    ++runs;
  }
  state.counters["evals"] = static_cast<double>(calls / runs);
  state.counters["per_eval"] =
      benchmark::Counter(static_cast<double>(calls), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

double (*const none)(double) = nullptr;
#define USUAL(f) ZENT_FCN_W_DATA, f, nullptr, ZENT_ERR_ABS, 0.0, ZENT_ERR_REL, tolerance, 0
// As it is used, and with the signal trap off: the trap is four system calls for each integral.
#define OURS(name, call)                           \
  void name(benchmark::State& state) {             \
    measure(state, true, [] { return call; });     \
  }                                                \
  BENCHMARK(name);                                 \
  void name##_untrapped(benchmark::State& state) { \
    measure(state, false, [] { return call; });    \
  }                                                \
  BENCHMARK(name##_untrapped);

#if ZENT_HAVE_GSL
gsl_integration_workspace* space() {
  static gsl_integration_workspace* const w = (gsl_set_error_handler_off(), gsl_integration_workspace_alloc(500));
  return w;
}
#define PEER(name, integrand, call)                 \
  void name##_gsl(benchmark::State& state) {        \
    measure(state, false, [] {                      \
      gsl_function f = {integrand, nullptr};        \
      gsl_integration_workspace* const w = space(); \
      double result = 0, error = 0;                 \
      (void)w;                                      \
      call;                                         \
      return result;                                \
    });                                             \
  }                                                 \
  BENCHMARK(name##_gsl);
gsl_integration_qawo_table* new_table() {
  return gsl_integration_qawo_table_alloc(100, 1, GSL_INTEG_COSINE, 21);
}
gsl_integration_qawo_table* table() {
  static gsl_integration_qawo_table* const t = new_table();
  return t;
}
gsl_integration_qawo_table* new_cycle_table() {
  return gsl_integration_qawo_table_alloc(2, 1, GSL_INTEG_SINE, 21);
}
gsl_integration_qawo_table* cycle_table() {
  static gsl_integration_qawo_table* const t = new_cycle_table();
  return t;
}
gsl_integration_workspace* cycle_space() {
  static gsl_integration_workspace* const w = gsl_integration_workspace_alloc(500);
  return w;
}
gsl_integration_qaws_table* new_powers() {
  return gsl_integration_qaws_table_alloc(-0.5, -0.25, 1, 0);
}
gsl_integration_qaws_table* powers() {
  static gsl_integration_qaws_table* const t = new_powers();
  return t;
}
double break_points[3] = {0, 1, 3};
#else
#define PEER(name, integrand, call)
#endif

OURS(rule_21_once, zent_d_int_fcn(none, 0, 1, USUAL(constant)))
PEER(rule_21_once, constant, gsl_integration_qag(&f, 0, 1, 0, tolerance, 500, 2, w, &result, &error))
PEER(rule_21_once_and_workspace, constant, gsl_integration_workspace* own = gsl_integration_workspace_alloc(500);
     gsl_integration_qag(&f, 0, 1, 0, tolerance, 500, 2, own, &result, &error); gsl_integration_workspace_free(own))
OURS(rule_21_step, zent_d_int_fcn(none, 0, 1, ZENT_FCN_W_DATA, cusp, nullptr, ZENT_ERR_ABS, 0.0, ZENT_ERR_REL, 1e-13, 0))
PEER(rule_21_step, cusp, gsl_integration_qag(&f, 0, 1, 0, 1e-13, 500, 2, w, &result, &error))
OURS(rule_21_peak, zent_d_int_fcn(none, 0, 1, USUAL(peak)))
PEER(rule_21_peak, peak, gsl_integration_qag(&f, 0, 1, 0, tolerance, 500, 2, w, &result, &error))
OURS(rule_61_waves, zent_d_int_fcn(none, 0, M_PI, ZENT_RULE, 6, USUAL(waves)))
PEER(rule_61_waves, waves, gsl_integration_qag(&f, 0, M_PI, 0, tolerance, 500, 6, w, &result, &error))
OURS(smooth_runge, zent_d_int_fcn_smooth(none, -0.5, 0.5, USUAL(runge)))
PEER(smooth_runge, runge, size_t n = 0; gsl_integration_qng(&f, -0.5, 0.5, 0, tolerance, &result, &error, &n))
OURS(ends_logarithm, zent_d_int_fcn_sing(none, 0, 1, USUAL(logarithm)))
PEER(ends_logarithm, logarithm, gsl_integration_qags(&f, 0, 1, 0, tolerance, 500, w, &result, &error))
double points[1] = {1};
OURS(points_root, zent_d_int_fcn_sing_pts(none, 0, 3, 1, points, USUAL(inner_root)))
PEER(points_root, inner_root, gsl_integration_qagp(&f, break_points, 3, 0, tolerance, 500, w, &result, &error))
OURS(infinite_gauss, zent_d_int_fcn_inf(none, 0, ZENT_INF_INF, USUAL(gauss)))
PEER(infinite_gauss, gauss, gsl_integration_qagi(&f, 0, tolerance, 500, w, &result, &error))
OURS(cos_exp, zent_d_int_fcn_trig(none, 0, 1, ZENT_COS, 100, USUAL(exponential)))
// Of the peer both ways: with work space and moments made beforehand, and made for the one integral as here.
PEER(cos_exp, exponential, gsl_integration_qawo(&f, 0, 0, tolerance, 500, w, table(), &result, &error))
PEER(cos_exp_and_table, exponential, gsl_integration_qawo_table* t = new_table();
     gsl_integration_qawo(&f, 0, 0, tolerance, 500, w, t, &result, &error); gsl_integration_qawo_table_free(t))
OURS(fourier_decay, zent_d_int_fcn_fourier(none, 0, ZENT_SIN, 2, ZENT_FCN_W_DATA, decay, nullptr, ZENT_ERR_ABS, tolerance, 0))
PEER(fourier_decay, decay, gsl_integration_qawf(&f, 0, tolerance, 500, w, cycle_space(), cycle_table(), &result, &error))
PEER(fourier_decay_and_table, decay, gsl_integration_qawo_table* t = new_cycle_table();
     gsl_integration_qawf(&f, 0, tolerance, 500, w, cycle_space(), t, &result, &error); gsl_integration_qawo_table_free(t))
OURS(powers_exp, zent_d_int_fcn_alg_log(none, 0, 1, ZENT_ALG_LEFT_LOG, -0.5, -0.25, USUAL(exponential)))
PEER(powers_exp, exponential, gsl_integration_qaws(&f, 0, 1, powers(), 0, tolerance, 500, w, &result, &error))
PEER(powers_exp_and_table, exponential, gsl_integration_qaws_table* t = new_powers();
     gsl_integration_qaws(&f, 0, 1, t, 0, tolerance, 500, w, &result, &error); gsl_integration_qaws_table_free(t))
OURS(pole_rational, zent_d_int_fcn_cauchy(none, -1, 5, 0, USUAL(rational)))
PEER(pole_rational, rational, gsl_integration_qawc(&f, -1, 5, 0, 0, tolerance, 500, w, &result, &error))

}  // namespace

BENCHMARK_MAIN();
