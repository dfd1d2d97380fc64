// Band systems beside LAPACK: the whole solver (with its condition estimate), factor and solution alone, and dgbsv or dpbsv.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>
#include <vector>

#include "zent.h"

#ifdef ZENT_HAVE_LAPACK
#include <lapacke.h>
#endif

namespace {

struct General {
  long n, nlca, nuca;
  std::vector<double> rows, columns, b;  // the storage here; column-major with room for fill, as LAPACK wants it

  explicit General(const benchmark::State& state) : n(state.range(0)), nlca(state.range(1)), nuca(state.range(2)) {
    std::mt19937_64 engine(7);
    std::uniform_real_distribution<double> uniform(-1, 1);
    const long m = nlca + nuca + 1, ld = m + nlca;
    rows.resize(m * n);
    columns.resize(ld * n);
    b.assign(n, 1.0);
    for (long j = 0; j < n; ++j) {
      for (long r = 0; r < m; ++r) {
        const long i = j + r - nuca;
        if (i < 0 || i >= n) continue;
        rows[r * n + j] = columns[j * ld + nlca + r] = uniform(engine) + (r == nuca ? 1.5 : 0);
      }
    }
  }
};

void gen_band(benchmark::State& state) {
  General m(state);
  std::vector<double> x(m.n);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        zent_d_lin_sol_gen_band(m.n, m.rows.data(), m.nlca, m.nuca, m.b.data(), ZENT_RETURN_USER, x.data(), 0));
  }
}
void gen_band_without_estimate(benchmark::State& state) {
  General m(state);
  std::vector<double> x(m.n), factor((2 * m.nlca + m.nuca + 1) * m.n);
  std::vector<long> pivots(m.n);
  for (auto _ : state) {
    zent_d_lin_sol_gen_band(m.n, m.rows.data(), m.nlca, m.nuca, nullptr, ZENT_FACTOR_USER, pivots.data(), factor.data(),
                            ZENT_FACTOR_ONLY, 0);
    benchmark::DoNotOptimize(zent_d_lin_sol_gen_band(m.n, nullptr, m.nlca, m.nuca, m.b.data(), ZENT_FACTOR_USER, pivots.data(),
                                                     factor.data(), ZENT_SOLVE_ONLY, ZENT_RETURN_USER, x.data(), 0));
  }
}
#define ZENT_SHAPES              \
  Args({100000, 1, 1})           \
      ->Args({100000, 2, 2})     \
      ->Args({100000, 5, 5})     \
      ->Args({100000, 20, 20})   \
      ->Args({100000, 100, 100}) \
      ->Unit(benchmark::kMillisecond)
BENCHMARK(gen_band)->ZENT_SHAPES;
BENCHMARK(gen_band_without_estimate)->ZENT_SHAPES;

struct Posdef {
  long n, ncoda;
  std::vector<double> rows, columns, b;

  explicit Posdef(const benchmark::State& state) : n(state.range(0)), ncoda(state.range(1)) {
    rows.assign((ncoda + 1) * n, 0.1);
    columns.assign((ncoda + 1) * n, 0.1);
    b.assign(n, 1.0);
    for (long j = 0; j < n; ++j) {
      rows[ncoda * n + j] = columns[j * (ncoda + 1) + ncoda] = static_cast<double>(ncoda) + 1;
      for (long r = 0; r < ncoda - j; ++r) rows[r * n + j] = columns[j * (ncoda + 1) + r] = 0;
    }
  }
};

void posdef_band(benchmark::State& state) {
  Posdef m(state);
  std::vector<double> x(m.n);
  for (auto _ : state) {
    benchmark::DoNotOptimize(zent_d_lin_sol_posdef_band(m.n, m.rows.data(), m.ncoda, m.b.data(), ZENT_RETURN_USER, x.data(), 0));
  }
}
void posdef_band_without_estimate(benchmark::State& state) {
  Posdef m(state);
  std::vector<double> x(m.n), factor((m.ncoda + 1) * m.n);
  for (auto _ : state) {
    zent_d_lin_sol_posdef_band(m.n, m.rows.data(), m.ncoda, nullptr, ZENT_FACTOR_USER, factor.data(), ZENT_FACTOR_ONLY, 0);
    benchmark::DoNotOptimize(zent_d_lin_sol_posdef_band(m.n, nullptr, m.ncoda, m.b.data(), ZENT_FACTOR_USER, factor.data(),
                                                        ZENT_SOLVE_ONLY, ZENT_RETURN_USER, x.data(), 0));
  }
}
BENCHMARK(posdef_band)->ZENT_SHAPES;
BENCHMARK(posdef_band_without_estimate)->ZENT_SHAPES;

#ifdef ZENT_HAVE_LAPACK
// One thread on both sides, and the copy of the matrix that the factorization overwrites.
void lapack_dgbsv(benchmark::State& state) {
  const General m(state);
  const auto n = static_cast<lapack_int>(m.n), kl = static_cast<lapack_int>(m.nlca), ku = static_cast<lapack_int>(m.nuca);
  std::vector<lapack_int> pivots(m.n);
  std::vector<double> a(m.columns), x(m.n);
  for (auto _ : state) {
    a = m.columns;
    x = m.b;
    benchmark::DoNotOptimize(
        LAPACKE_dgbsv_work(LAPACK_COL_MAJOR, n, kl, ku, 1, a.data(), 2 * kl + ku + 1, pivots.data(), x.data(), n));
  }
}
void lapack_dpbsv(benchmark::State& state) {
  const Posdef m(state);
  const auto n = static_cast<lapack_int>(m.n), k = static_cast<lapack_int>(m.ncoda);
  std::vector<double> a(m.columns), x(m.n);
  for (auto _ : state) {
    a = m.columns;
    x = m.b;
    benchmark::DoNotOptimize(LAPACKE_dpbsv_work(LAPACK_COL_MAJOR, 'U', n, k, 1, a.data(), k + 1, x.data(), n));
  }
}
BENCHMARK(lapack_dgbsv)->ZENT_SHAPES;
BENCHMARK(lapack_dpbsv)->ZENT_SHAPES;
#endif

}  // namespace

BENCHMARK_MAIN();
