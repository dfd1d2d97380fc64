// General eigenproblems beside LAPACK over OpenBLAS and Eigen, one thread each: values alone and with vectors, and pencils.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "zent.h"

#ifdef ZENT_HAVE_LAPACK
#include <lapacke.h>
extern "C" void openblas_set_num_threads(int);
#endif
#ifdef ZENT_HAVE_EIGEN
#include <eigen3/Eigen/Eigenvalues>
#endif

namespace {

std::vector<double> random_matrix(long n, unsigned seed = 1) {
  std::mt19937 g(seed);
  std::normal_distribution<double> d;
  std::vector<double> a(n * n);
  for (double& x : a) x = d(g);
  return a;
}

void sizes(benchmark::internal::Benchmark* b) {
  b->ArgNames({"n", "vectors"})->Unit(benchmark::kMillisecond);
  for (long n : {100, 300, 600})
    for (long vectors : {0, 1}) b->Args({n, vectors});
}

void eig_gen(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<double> a = random_matrix(n);
  std::vector<zent_d_complex> w(n), v(n * n);
  for (auto _ : state) {
    if (state.range(1)) {
      zent_d_eig_gen(n, a.data(), ZENT_RETURN_USER, w.data(), ZENT_VECTORS_USER, v.data(), 0);
    } else {
      zent_d_eig_gen(n, a.data(), ZENT_RETURN_USER, w.data(), 0);
    }
    benchmark::DoNotOptimize(w.data());
  }
}
BENCHMARK(eig_gen)->Apply(sizes);

#ifdef ZENT_HAVE_LAPACK
void lapack_dgeev(benchmark::State& state) {
  openblas_set_num_threads(1);
  const int n = static_cast<int>(state.range(0));
  const std::vector<double> a = random_matrix(n);
  std::vector<double> b(n * n), wr(n), wi(n), v(n * n);
  for (auto _ : state) {
    b = a;
    LAPACKE_dgeev(LAPACK_COL_MAJOR, 'N', state.range(1) ? 'V' : 'N', n, b.data(), n, wr.data(), wi.data(), v.data(), n, v.data(),
                  n);
    benchmark::DoNotOptimize(wr.data());
  }
}
BENCHMARK(lapack_dgeev)->Apply(sizes);
#endif

#ifdef ZENT_HAVE_EIGEN
void eigen_eigensolver(benchmark::State& state) {
  const long n = state.range(0);
  const std::vector<double> a = random_matrix(n);
  const Eigen::MatrixXd m = Eigen::Map<const Eigen::MatrixXd>(a.data(), n, n);
  for (auto _ : state) {
    Eigen::EigenSolver<Eigen::MatrixXd> solver(m, state.range(1) != 0);
    benchmark::DoNotOptimize(solver.eigenvalues().data());
  }
}
BENCHMARK(eigen_eigensolver)->Apply(sizes);
#endif

void geneig(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<double> a = random_matrix(n), b = random_matrix(n, 2), beta(n);
  std::vector<zent_d_complex> alpha(n), v(n * n);
  for (auto _ : state) {
    if (state.range(1)) {
      zent_d_geneig(n, a.data(), b.data(), alpha.data(), beta.data(), ZENT_VECTORS_USER, v.data(), 0);
    } else {
      zent_d_geneig(n, a.data(), b.data(), alpha.data(), beta.data(), 0);
    }
    benchmark::DoNotOptimize(beta.data());
  }
}
BENCHMARK(geneig)->ArgNames({"n", "vectors"})->Args({100, 0})->Args({100, 1})->Unit(benchmark::kMillisecond);

#ifdef ZENT_HAVE_LAPACK
void lapack_dggev(benchmark::State& state) {
  openblas_set_num_threads(1);
  const int n = static_cast<int>(state.range(0));
  const std::vector<double> a = random_matrix(n), b = random_matrix(n, 2);
  std::vector<double> p(n * n), q(n * n), ar(n), ai(n), beta(n), v(n * n);
  for (auto _ : state) {
    p = a;
    q = b;
    LAPACKE_dggev(LAPACK_COL_MAJOR, 'N', state.range(1) ? 'V' : 'N', n, p.data(), n, q.data(), n, ar.data(), ai.data(),
                  beta.data(), v.data(), n, v.data(), n);
    benchmark::DoNotOptimize(ar.data());
  }
}
BENCHMARK(lapack_dggev)->ArgNames({"n", "vectors"})->Args({100, 0})->Args({100, 1})->Unit(benchmark::kMillisecond);
#endif

}  // namespace

BENCHMARK_MAIN();
