// Root finders beside GSL. Before the timings, function evaluations and outcome on the collection of test systems are listed.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>

#include "tests/roots/systems.hpp"
#include "tests/support/quiet.hpp"

#ifdef ZENT_HAVE_GSL
#include <gsl/gsl_errno.h>
#include <gsl/gsl_multiroots.h>
#include <gsl/gsl_poly.h>
#endif

namespace {

using Problem = systems::Problem<double>;

const std::vector<Problem>& problems() {
  static const std::vector<Problem> all = systems::collection<double>();
  return all;
}

struct Counted {
  const Problem* problem;
  long calls;
};

void counted(long n, double* x, double* f, void* data) {
  auto* c = static_cast<Counted*>(data);
  ++c->calls;
  c->problem->f(n, x, f);
}

double residual(const Problem& p, const std::vector<double>& x) {
  std::vector<double> f(p.n), copy = x;
  p.f(p.n, copy.data(), f.data());
  double sum = 0;
  for (double v : f) sum += v * v;
  return std::sqrt(sum);
}

long solve(const Problem& p, double scale, std::vector<double>& x, long* code = nullptr) {
  Counted c = {&p, 0};
  std::vector<double> start = p.start;
  for (double& s : start) s *= scale;
  zent_d_zeros_sys_eqn(nullptr, p.n, ZENT_FCN_W_DATA, counted, &c, ZENT_XGUESS, start.data(), ZENT_RETURN_USER, x.data(), 0);
  if (code != nullptr) *code = zent_error_code();
  return c.calls;
}

#ifdef ZENT_HAVE_GSL
int gsl_function(const gsl_vector* x, void* data, gsl_vector* f) {
  auto* c = static_cast<Counted*>(data);
  ++c->calls;
  c->problem->f(c->problem->n, const_cast<double*>(x->data), f->data);
  return GSL_SUCCESS;
}

// As its manual has it, until the step is of the size at which the other stops, or it reports no progress.
long gsl_solve(const Problem& p, double scale, std::vector<double>& x) {
  Counted c = {&p, 0};
  const std::size_t n = static_cast<std::size_t>(p.n);
  gsl_multiroot_function f = {gsl_function, n, &c};
  gsl_vector* start = gsl_vector_alloc(n);
  for (std::size_t j = 0; j < n; ++j) gsl_vector_set(start, j, scale * p.start[j]);
  gsl_multiroot_fsolver* s = gsl_multiroot_fsolver_alloc(gsl_multiroot_fsolver_hybrids, n);
  int status = gsl_multiroot_fsolver_set(s, &f, start);
  while (status == GSL_SUCCESS && c.calls < 200 * (p.n + 1)) {
    status = gsl_multiroot_fsolver_iterate(s);
    if (status != GSL_SUCCESS || gsl_multiroot_test_delta(s->dx, s->x, 0, 1.5e-8) == GSL_SUCCESS ||
        gsl_multiroot_test_residual(s->f, 1e-300) == GSL_SUCCESS) {
      break;
    }
  }
  for (std::size_t j = 0; j < n; ++j) x[j] = gsl_vector_get(s->x, j);
  gsl_multiroot_fsolver_free(s);
  gsl_vector_free(start);
  return c.calls;
}
#endif

void list_evaluations() {
  long sum[2] = {}, both[2] = {}, solved[2] = {};
  for (const Problem& p : problems()) {
    for (double scale : {1.0, 10.0, 100.0}) {
      std::vector<double> x(p.n), y(p.n);
      long code = 0;
      const long ours = solve(p, scale, x, &code);
      const double rest = residual(p, x);
      long theirs = 0;
      double their_rest = 0;
#ifdef ZENT_HAVE_GSL
      theirs = gsl_solve(p, scale, y);
      their_rest = residual(p, y);
#endif
      std::printf("%-21s n %2ld  start x %3.0f  zent %5ld calls, |f| %.1e, code %4ld   gsl %5ld calls, |f| %.1e\n",
                  p.name.c_str(), p.n, scale, ours, rest, code, theirs, their_rest);
      sum[0] += ours;
      sum[1] += theirs;
      solved[0] += rest < 1e-7;
      solved[1] += their_rest < 1e-7;
      if (rest < 1e-7 && their_rest < 1e-7) {
        both[0] += ours;
        both[1] += theirs;
      }
    }
  }
  std::printf("all: zent %ld calls, %ld solved; gsl %ld calls, %ld solved; where both solve: %ld and %ld calls\n", sum[0],
              solved[0], sum[1], solved[1], both[0], both[1]);
}

// Time for each call of the function; the functions themselves are short.
void systems_zent(benchmark::State& state) {
  long calls = 0;
  for (auto _ : state) {
    for (const Problem& p : problems()) {
      std::vector<double> x(p.n);
      calls += solve(p, 1, x);
    }
  }
  state.counters["per_call"] = benchmark::Counter(double(calls), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(systems_zent)->Unit(benchmark::kMicrosecond);

#ifdef ZENT_HAVE_GSL
void systems_gsl(benchmark::State& state) {
  long calls = 0;
  for (auto _ : state) {
    for (const Problem& p : problems()) {
      std::vector<double> x(p.n);
      calls += gsl_solve(p, 1, x);
    }
  }
  state.counters["per_call"] = benchmark::Counter(double(calls), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(systems_gsl)->Unit(benchmark::kMicrosecond);
#endif

std::vector<double> random_polynomial(long n) {
  std::mt19937 g(7);
  std::normal_distribution<double> d;
  std::vector<double> c(n + 1);
  for (double& v : c) v = d(g);
  return c;
}

// With the signal trap that each outermost call sets (trap:1), which counts at low degrees, and without it.
template <class... Route>
void polynomial(benchmark::State& state, Route... route) {
  const long n = state.range(0);
  std::vector<double> c = random_polynomial(n);
  std::vector<zent_d_complex> z(n);
  zent_error_options(ZENT_SIGNAL_TRAPPING, static_cast<int>(state.range(1)), 0);
  for (auto _ : state) benchmark::DoNotOptimize(zent_d_zeros_poly(n, c.data(), ZENT_RETURN_USER, z.data(), route..., 0));
  zent_error_options(ZENT_SIGNAL_TRAPPING, 1, 0);
}
void polynomial_zent(benchmark::State& state) {
  polynomial(state);
}
BENCHMARK(polynomial_zent)->ArgNames({"", "trap"})->ArgsProduct({{5, 20, 50, 100}, {1, 0}});
void polynomial_zent_companion(benchmark::State& state) {
  polynomial(state, ZENT_COMPANION);
}
BENCHMARK(polynomial_zent_companion)->ArgNames({"", "trap"})->ArgsProduct({{5, 20, 50, 100}, {1}});

#ifdef ZENT_HAVE_GSL
void polynomial_gsl(benchmark::State& state) {
  const std::size_t n = static_cast<std::size_t>(state.range(0));
  const std::vector<double> c = random_polynomial(state.range(0));
  std::vector<double> z(2 * n);
  gsl_poly_complex_workspace* w = gsl_poly_complex_workspace_alloc(n + 1);
  for (auto _ : state) benchmark::DoNotOptimize(gsl_poly_complex_solve(c.data(), n + 1, w, z.data()));
  gsl_poly_complex_workspace_free(w);
}
BENCHMARK(polynomial_gsl)->Arg(5)->Arg(20)->Arg(50)->Arg(100);
#endif

}  // namespace

int main(int argc, char** argv) {
  be_quiet();
#ifdef ZENT_HAVE_GSL
  gsl_set_error_handler_off();
#endif
  list_evaluations();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
