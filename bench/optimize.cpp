// Minimization and nonlinear least squares beside GSL on the classic test problems from their standard starts: time for the whole
// collection, with counts of calls (a gradient or Jacobian given by the user counts as one), of problems solved, and time a call.
#include <benchmark/benchmark.h>

#include "tests/optimize/problems.hpp"
#include "zent.h"

#ifdef ZENT_HAVE_GSL
#define WITH_GSL 1
#include <gsl/gsl_blas.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_multifit_nlinear.h>
#include <gsl/gsl_multimin.h>
#endif

namespace {

using Problem = problems::Problem<double>;

const std::vector<Problem>& collection() {
  static const std::vector<Problem> all = problems::all<double>();
  return all;
}

const Problem* current;
long calls;
std::vector<double> values;

void quiet() {
  for (int type = 1; type <= 7; ++type) zent_error_options(ZENT_SET_PRINT, type, 0, ZENT_SET_STOP, type, 0, 0);
}

double sum_of(const double* x) {
  values.resize(current->m);
  current->residuals(current->m, current->n, x, values.data());
  double sum = 0;
  for (double v : values) sum += v * v;
  return sum;
}
void residuals(long m, long n, double* x, double* f) {
  ++calls;
  current->residuals(m, n, x, f);
}
double objective(long, double* x) {
  ++calls;
  return sum_of(x);
}
void slopes(const double* at, double* g) {  // central differences stand in for the user's own gradient
  std::vector<double> x(at, at + current->n);
  for (long j = 0; j < current->n; ++j) {
    const double old = x[j], h = 6e-6 * std::max(std::abs(old), 1.0);
    x[j] = old + h;
    const double ahead = sum_of(x.data());
    x[j] = old - h;
    g[j] = (ahead - sum_of(x.data())) / (2 * h);
    x[j] = old;
  }
}
void gradient(long, double* x, double* g) {
  ++calls;
  slopes(x, g);
}

bool solved(double f) {
  for (double minimum : current->minima) {
    if (std::abs(f - minimum) <= 1e-4 * minimum + 1e-7) return true;
  }
  return false;
}

template <class Solve>
void whole_collection(benchmark::State& state, Solve solve) {
  quiet();
  long count = 0, good = 0;
  for (auto _ : state) {
    count = good = 0;
    for (const Problem& p : collection()) {
      current = &p;
      calls = 0;
      const double f = solve(p);
      good += solved(f);
      count += calls;
    }
  }
  state.counters["calls"] = static_cast<double>(count);
  state.counters["solved"] = static_cast<double>(good);
  state.counters["per_call"] = benchmark::Counter(static_cast<double>(count) * static_cast<double>(state.iterations()),
                                                  benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void least_squares(benchmark::State& state) {
  whole_collection(state, [](const Problem& p) {
    std::vector<double> x(p.start), f(p.m);
    zent_d_nonlin_least_squares(residuals, p.m, p.n, ZENT_XGUESS, p.start.data(), ZENT_RETURN_USER, x.data(), ZENT_FVEC_USER,
                                f.data(), 0);
    double sum = 0;
    for (double v : f) sum += v * v;
    return sum;
  });
}
BENCHMARK(least_squares);

void quasi_newton(benchmark::State& state) {
  whole_collection(state, [](const Problem& p) {
    std::vector<double> x(p.start);
    double f = 1e300;
    zent_d_min_uncon_multivar(objective, p.n, ZENT_XGUESS, p.start.data(), ZENT_GRAD, gradient, ZENT_RETURN_USER, x.data(),
                              ZENT_FVALUE, &f, 0);
    return f;
  });
}
BENCHMARK(quasi_newton);

// A function that costs nothing: what is left is the solver, with the signal trap that each outermost call sets (trap:1) and
// without it.
void set_trap(bool on) {
  zent_error_options(ZENT_SIGNAL_TRAPPING, static_cast<int>(on), 0);
}
void cheap_residuals(long, long, double* x, double* f) {
  ++calls;
  f[0] = 10 * (x[1] - x[0] * x[0]);
  f[1] = 1 - x[0];
}
double cheap_objective(long, double* x) {
  ++calls;
  return 100 * (x[1] - x[0] * x[0]) * (x[1] - x[0] * x[0]) + (1 - x[0]) * (1 - x[0]);
}
void cheap_gradient(long, double* x, double* g) {
  ++calls;
  g[0] = -400 * x[0] * (x[1] - x[0] * x[0]) - 2 * (1 - x[0]);
  g[1] = 200 * (x[1] - x[0] * x[0]);
}
void set_per_call(benchmark::State& state) {
  state.counters["calls"] = static_cast<double>(calls) / static_cast<double>(state.iterations());
  state.counters["per_call"] =
      benchmark::Counter(static_cast<double>(calls), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
void least_squares_overhead(benchmark::State& state) {
  quiet();
  set_trap(state.range(0) != 0);
  double start[] = {-1.2, 1}, x[2];
  calls = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(zent_d_nonlin_least_squares(cheap_residuals, 2, 2, ZENT_XGUESS, start, ZENT_RETURN_USER, x, 0));
  set_trap(true);
  set_per_call(state);
}
BENCHMARK(least_squares_overhead)->ArgName("trap")->Arg(1)->Arg(0);
void quasi_newton_overhead(benchmark::State& state) {
  quiet();
  set_trap(state.range(0) != 0);
  double start[] = {-1.2, 1}, x[2];
  calls = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(
        zent_d_min_uncon_multivar(cheap_objective, 2, ZENT_XGUESS, start, ZENT_GRAD, cheap_gradient, ZENT_RETURN_USER, x, 0));
  set_trap(true);
  set_per_call(state);
}
BENCHMARK(quasi_newton_overhead)->ArgName("trap")->Arg(1)->Arg(0);

#ifdef WITH_GSL

using Residuals = void (*)(long, long, double*, double*);

double gsl_fit(long m, long n, const double* start, Residuals fcn) {
  gsl_set_error_handler_off();
  gsl_multifit_nlinear_parameters parameters = gsl_multifit_nlinear_default_parameters();
  gsl_multifit_nlinear_fdf fdf = {};
  fdf.f = [](const gsl_vector* x, void* function, gsl_vector* f) {
    const auto call = reinterpret_cast<Residuals>(function);
    const long rows = static_cast<long>(f->size), columns = static_cast<long>(x->size);
    if (f->stride == 1) {
      call(rows, columns, x->data, f->data);
    } else {  // a column of its Jacobian
      static std::vector<double> column;
      column.resize(rows);
      call(rows, columns, x->data, column.data());
      for (long i = 0; i < rows; ++i) gsl_vector_set(f, i, column[i]);
    }
    return static_cast<int>(GSL_SUCCESS);
  };
  fdf.n = m;
  fdf.p = n;
  fdf.params = reinterpret_cast<void*>(fcn);
  gsl_multifit_nlinear_workspace* w = gsl_multifit_nlinear_alloc(gsl_multifit_nlinear_trust, &parameters, m, n);
  const gsl_vector_const_view x = gsl_vector_const_view_array(start, n);
  int info = 0;
  gsl_multifit_nlinear_init(&x.vector, &fdf, w);
  gsl_multifit_nlinear_driver(100, 3.7e-11, 6e-6, 0, nullptr, nullptr, &info, w);
  double sum = 0;
  gsl_blas_ddot(w->f, w->f, &sum);
  gsl_multifit_nlinear_free(w);
  return sum;
}

void gsl_least_squares(benchmark::State& state) {
  whole_collection(state, [](const Problem& p) { return gsl_fit(p.m, p.n, p.start.data(), residuals); });
}
BENCHMARK(gsl_least_squares);
void gsl_least_squares_overhead(benchmark::State& state) {
  const double start[] = {-1.2, 1};
  calls = 0;
  for (auto _ : state) benchmark::DoNotOptimize(gsl_fit(2, 2, start, cheap_residuals));
  set_per_call(state);
}
BENCHMARK(gsl_least_squares_overhead);

struct Functions {
  double (*f)(long, double*);
  void (*g)(long, double*, double*);
};
double gsl_minimum(long n, const double* start, const Functions& functions) {
  gsl_set_error_handler_off();
  gsl_multimin_function_fdf fdf;
  fdf.n = n;
  fdf.params = const_cast<Functions*>(&functions);
  fdf.f = [](const gsl_vector* x, void* p) { return static_cast<Functions*>(p)->f(static_cast<long>(x->size), x->data); };
  fdf.df = [](const gsl_vector* x, void* p, gsl_vector* g) {
    static_cast<Functions*>(p)->g(static_cast<long>(x->size), x->data, g->data);
  };
  fdf.fdf = [](const gsl_vector* x, void* p, double* f, gsl_vector* g) {
    *f = static_cast<Functions*>(p)->f(static_cast<long>(x->size), x->data);
    static_cast<Functions*>(p)->g(static_cast<long>(x->size), x->data, g->data);
  };
  const gsl_vector_const_view x = gsl_vector_const_view_array(start, n);
  gsl_multimin_fdfminimizer* s = gsl_multimin_fdfminimizer_alloc(gsl_multimin_fdfminimizer_vector_bfgs2, n);
  gsl_multimin_fdfminimizer_set(s, &fdf, &x.vector, 0.1, 0.1);
  for (int k = 0; k < 100; ++k) {
    if (gsl_multimin_fdfminimizer_iterate(s) != GSL_SUCCESS) break;
    double largest = 0;  // the same test on both sides
    for (long j = 0; j < n; ++j) {
      largest = std::max(largest, std::abs(gsl_vector_get(s->gradient, j)) * std::max(std::abs(gsl_vector_get(s->x, j)), 1.0));
    }
    if (largest <= 6e-6 * std::max(std::abs(s->f), 1.0)) break;
  }
  const double f = s->f;
  gsl_multimin_fdfminimizer_free(s);
  return f;
}

void gsl_quasi_newton(benchmark::State& state) {
  const Functions functions = {objective, gradient};
  whole_collection(state, [&](const Problem& p) { return gsl_minimum(p.n, p.start.data(), functions); });
}
BENCHMARK(gsl_quasi_newton);
void gsl_quasi_newton_overhead(benchmark::State& state) {
  const Functions functions = {cheap_objective, cheap_gradient};
  const double start[] = {-1.2, 1};
  calls = 0;
  for (auto _ : state) benchmark::DoNotOptimize(gsl_minimum(2, start, functions));
  set_per_call(state);
}
BENCHMARK(gsl_quasi_newton_overhead);

#endif

}  // namespace

BENCHMARK_MAIN();
