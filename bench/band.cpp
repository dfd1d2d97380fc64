// Band systems beside LAPACK: the whole solver (with its condition estimate), factor and solution alone, dgbsv or dpbsv, and
// these with the estimate of dgbcon or dpbcon. That scans all of the vector at each unknown, which is quadratic in n.
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

void lapack_dgbsv_dgbcon(benchmark::State& state) {
  const General m(state);
  const auto n = static_cast<lapack_int>(m.n), kl = static_cast<lapack_int>(m.nlca), ku = static_cast<lapack_int>(m.nuca);
  const lapack_int ld = 2 * kl + ku + 1;
  std::vector<lapack_int> pivots(m.n), work_i(m.n);
  std::vector<double> a(m.columns), x(m.n), work(3 * m.n);
  double rcond = 0;
  for (auto _ : state) {
    a = m.columns;
    x = m.b;
    const double norm = LAPACKE_dlangb_work(LAPACK_COL_MAJOR, '1', n, kl, ku, a.data() + kl, ld, work.data());
    LAPACKE_dgbsv_work(LAPACK_COL_MAJOR, n, kl, ku, 1, a.data(), ld, pivots.data(), x.data(), n);
    LAPACKE_dgbcon_work(LAPACK_COL_MAJOR, '1', n, kl, ku, a.data(), ld, pivots.data(), norm, &rcond, work.data(), work_i.data());
    benchmark::DoNotOptimize(rcond);
  }
}
void lapack_dpbsv_dpbcon(benchmark::State& state) {
  const Posdef m(state);
  const auto n = static_cast<lapack_int>(m.n), k = static_cast<lapack_int>(m.ncoda);
  std::vector<lapack_int> work_i(m.n);
  std::vector<double> a(m.columns), x(m.n), work(3 * m.n);
  double rcond = 0;
  for (auto _ : state) {
    a = m.columns;
    x = m.b;
    LAPACKE_dpbsv_work(LAPACK_COL_MAJOR, 'U', n, k, 1, a.data(), k + 1, x.data(), n);
    const double norm = 2.0 * static_cast<double>(k);  // nearly: there is no function for it here
    LAPACKE_dpbcon_work(LAPACK_COL_MAJOR, 'U', n, k, a.data(), k + 1, norm, &rcond, work.data(), work_i.data());
    benchmark::DoNotOptimize(rcond);
  }
}
#define ZENT_SHAPES_OF_ESTIMATE \
  Args({1000, 1, 1})            \
      ->Args({1000, 20, 20})    \
      ->Args({10000, 1, 1})     \
      ->Args({10000, 20, 20})   \
      ->Args({10000, 100, 100}) \
      ->Unit(benchmark::kMillisecond)
BENCHMARK(gen_band)->ZENT_SHAPES_OF_ESTIMATE;
BENCHMARK(lapack_dgbsv_dgbcon)->ZENT_SHAPES_OF_ESTIMATE->Args({100000, 20, 20});
BENCHMARK(posdef_band)->ZENT_SHAPES_OF_ESTIMATE;
BENCHMARK(lapack_dpbsv_dpbcon)->ZENT_SHAPES_OF_ESTIMATE->Args({100000, 20, 20});
#endif

}  // namespace

BENCHMARK_MAIN();
