// Dense solvers beside LAPACK on OpenBLAS: factorizations, the condition estimate's share, solves, inverse.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "zent.h"

#if defined(ZENT_HAVE_LAPACK) && defined(ZENT_HAVE_OPENBLAS)
#include <lapacke.h>
extern "C" void openblas_set_num_threads(int);
#endif

namespace {

struct System {
  long n;
  std::vector<double> a, b, x, factor;
  std::vector<long> pvt;

  System(long order, bool definite) : n(order), a(n * n), b(n), x(n), factor(n * n), pvt(n) {
    std::mt19937_64 engine(static_cast<unsigned>(n));
    std::uniform_real_distribution<double> uniform(-1, 1);
    for (double& element : a) element = uniform(engine);
    for (double& element : b) element = uniform(engine);
    if (!definite) return;
    for (long i = 0; i < n; ++i) {
      for (long j = 0; j < i; ++j) a[i * n + j] = a[j * n + i];
      a[i * n + i] += static_cast<double>(n);
    }
  }
};

void lu_factor(benchmark::State& state) {
  System s(state.range(0), false);
  for (auto _ : state) {
    zent_d_lin_sol_gen(s.n, s.a.data(), nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, s.pvt.data(), s.factor.data(), 0);
  }
}
void lu_factor_with_estimate(benchmark::State& state) {
  System s(state.range(0), false);
  double condition = 0;
  for (auto _ : state) {
    zent_d_lin_sol_gen(s.n, s.a.data(), nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, s.pvt.data(), s.factor.data(),
                       ZENT_CONDITION, &condition, 0);
  }
}
void lu_system(benchmark::State& state) {
  System s(state.range(0), false);
  for (auto _ : state) zent_d_lin_sol_gen(s.n, s.a.data(), s.b.data(), ZENT_RETURN_USER, s.x.data(), 0);
}
void lu_solve(benchmark::State& state) {
  System s(state.range(0), false);
  zent_d_lin_sol_gen(s.n, s.a.data(), nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, s.pvt.data(), s.factor.data(), 0);
  for (auto _ : state) {
    zent_d_lin_sol_gen(s.n, nullptr, s.b.data(), ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, s.pvt.data(), s.factor.data(),
                       ZENT_RETURN_USER, s.x.data(), 0);
  }
}
// The same without the signal trap, which every outermost call arms and disarms.
void lu_solve_untrapped(benchmark::State& state) {
  zent_error_options(ZENT_SIGNAL_TRAPPING, 0, 0);
  lu_solve(state);
  zent_error_options(ZENT_SIGNAL_TRAPPING, 1, 0);
}
void lu_inverse(benchmark::State& state) {
  System s(state.range(0), false);
  for (auto _ : state) zent_d_lin_sol_gen(s.n, s.a.data(), nullptr, ZENT_INVERSE_ONLY, ZENT_INVERSE_USER, s.factor.data(), 0);
}
void cholesky_factor(benchmark::State& state) {
  System s(state.range(0), true);
  for (auto _ : state) {
    zent_d_lin_sol_posdef(s.n, s.a.data(), nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, s.factor.data(), 0);
  }
}
void cholesky_system(benchmark::State& state) {
  System s(state.range(0), true);
  for (auto _ : state) zent_d_lin_sol_posdef(s.n, s.a.data(), s.b.data(), ZENT_RETURN_USER, s.x.data(), 0);
}
void cholesky_solve(benchmark::State& state) {
  System s(state.range(0), true);
  zent_d_lin_sol_posdef(s.n, s.a.data(), nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, s.factor.data(), 0);
  for (auto _ : state) {
    zent_d_lin_sol_posdef(s.n, nullptr, s.b.data(), ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, s.factor.data(), ZENT_RETURN_USER,
                          s.x.data(), 0);
  }
}
void cholesky_inverse(benchmark::State& state) {
  System s(state.range(0), true);
  for (auto _ : state) zent_d_lin_sol_posdef(s.n, s.a.data(), nullptr, ZENT_INVERSE_ONLY, ZENT_INVERSE_USER, s.factor.data(), 0);
}

#if defined(ZENT_HAVE_LAPACK) && defined(ZENT_HAVE_OPENBLAS)
struct Peer : System {
  std::vector<int> pivots;
  int order, one = 1, info = 0;
  char no = 'N', upper = 'U', norm = '1';
  Peer(long n, bool definite) : System(n, definite), pivots(n), order(static_cast<int>(n)) {
    openblas_set_num_threads(1);
  }
  void load() {
    factor = a;
  }
};

void lapack_getrf(benchmark::State& state) {
  Peer s(state.range(0), false);
  for (auto _ : state) {
    s.load();
    dgetrf_(&s.order, &s.order, s.factor.data(), &s.order, s.pivots.data(), &s.info);
  }
}
void lapack_getrf_gecon(benchmark::State& state) {
  Peer s(state.range(0), false);
  std::vector<double> work(4 * s.n);
  std::vector<int> integers(s.n);
  double condition = 0;
  for (auto _ : state) {
    s.load();
    double norm = LAPACKE_dlange(LAPACK_COL_MAJOR, '1', s.order, s.order, s.a.data(), s.order);
    dgetrf_(&s.order, &s.order, s.factor.data(), &s.order, s.pivots.data(), &s.info);
    LAPACK_dgecon(&s.norm, &s.order, s.factor.data(), &s.order, &norm, &condition, work.data(), integers.data(), &s.info);
  }
}
void lapack_gesv(benchmark::State& state) {
  Peer s(state.range(0), false);
  for (auto _ : state) {
    s.load();
    s.x = s.b;
    dgesv_(&s.order, &s.one, s.factor.data(), &s.order, s.pivots.data(), s.x.data(), &s.order, &s.info);
  }
}
void lapack_getrs(benchmark::State& state) {
  Peer s(state.range(0), false);
  s.load();
  dgetrf_(&s.order, &s.order, s.factor.data(), &s.order, s.pivots.data(), &s.info);
  for (auto _ : state) {
    s.x = s.b;
    LAPACK_dgetrs(&s.no, &s.order, &s.one, s.factor.data(), &s.order, s.pivots.data(), s.x.data(), &s.order, &s.info);
  }
}
void lapack_getri(benchmark::State& state) {
  Peer s(state.range(0), false);
  std::vector<double> work(64 * s.n);
  int size = static_cast<int>(work.size());
  for (auto _ : state) {
    s.load();
    dgetrf_(&s.order, &s.order, s.factor.data(), &s.order, s.pivots.data(), &s.info);
    dgetri_(&s.order, s.factor.data(), &s.order, s.pivots.data(), work.data(), &size, &s.info);
  }
}
void lapack_potrf(benchmark::State& state) {
  Peer s(state.range(0), true);
  for (auto _ : state) {
    s.load();
    LAPACK_dpotrf(&s.upper, &s.order, s.factor.data(), &s.order, &s.info);
  }
}
void lapack_posv(benchmark::State& state) {
  Peer s(state.range(0), true);
  for (auto _ : state) {
    s.load();
    s.x = s.b;
    LAPACK_dposv(&s.upper, &s.order, &s.one, s.factor.data(), &s.order, s.x.data(), &s.order, &s.info);
  }
}
void lapack_potrs(benchmark::State& state) {
  Peer s(state.range(0), true);
  s.load();
  LAPACK_dpotrf(&s.upper, &s.order, s.factor.data(), &s.order, &s.info);
  for (auto _ : state) {
    s.x = s.b;
    LAPACK_dpotrs(&s.upper, &s.order, &s.one, s.factor.data(), &s.order, s.x.data(), &s.order, &s.info);
  }
}
void lapack_potri(benchmark::State& state) {
  Peer s(state.range(0), true);
  for (auto _ : state) {
    s.load();
    LAPACK_dpotrf(&s.upper, &s.order, s.factor.data(), &s.order, &s.info);
    LAPACK_dpotri(&s.upper, &s.order, s.factor.data(), &s.order, &s.info);
  }
}
#define BESIDE(mine, peer)                                                                  \
  BENCHMARK(mine)->Arg(100)->Arg(500)->Arg(1000)->Arg(2000)->Unit(benchmark::kMicrosecond); \
  BENCHMARK(peer)->Arg(100)->Arg(500)->Arg(1000)->Arg(2000)->Unit(benchmark::kMicrosecond)
#else
#define BESIDE(mine, peer) BENCHMARK(mine)->Arg(100)->Arg(500)->Arg(1000)->Arg(2000)->Unit(benchmark::kMicrosecond)
#endif

BESIDE(lu_factor, lapack_getrf);
BESIDE(lu_factor_with_estimate, lapack_getrf_gecon);
BESIDE(lu_system, lapack_gesv);
BESIDE(lu_solve, lapack_getrs);
BENCHMARK(lu_solve_untrapped)->Arg(100)->Arg(500)->Unit(benchmark::kMicrosecond);
BESIDE(lu_inverse, lapack_getri);
BESIDE(cholesky_factor, lapack_potrf);
BESIDE(cholesky_system, lapack_posv);
BESIDE(cholesky_solve, lapack_potrs);
BESIDE(cholesky_inverse, lapack_potri);

}  // namespace

BENCHMARK_MAIN();
