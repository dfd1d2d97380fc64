// Symmetric eigenvalue problems beside LAPACK and Eigen, where they are installed: values only and with vectors.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "zent.h"

#ifdef ZENT_HAVE_EIGEN
#include <eigen3/Eigen/Eigenvalues>
#endif

#ifdef ZENT_HAVE_LAPACK
extern "C" {
void dsyev_(const char* job, const char* uplo, const int* n, double* a, const int* lda, double* w, double* work, const int* lwork,
            int* info);
void dsyevd_(const char* job, const char* uplo, const int* n, double* a, const int* lda, double* w, double* work,
             const int* lwork, int* iwork, const int* liwork, int* info);
}
#endif

namespace {

std::vector<double> matrix(long n) {
  std::mt19937 generator(7);
  std::normal_distribution<double> normal;
  std::vector<double> a(n * n);
  for (long i = 0; i < n; ++i) {
    for (long j = 0; j <= i; ++j) a[i * n + j] = a[j * n + i] = normal(generator);
  }
  return a;
}

void zent_values(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<double> a = matrix(n), w(n);
  for (auto _ : state) zent_d_eig_sym(n, a.data(), ZENT_RETURN_USER, w.data(), 0);
}

void zent_vectors(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<double> a = matrix(n), w(n), v(n * n);
  for (auto _ : state) zent_d_eig_sym(n, a.data(), ZENT_RETURN_USER, w.data(), ZENT_VECTORS_USER, v.data(), 0);
}

void zent_range(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<double> a = matrix(n), w(n);
  for (auto _ : state) {
    double* v = nullptr;
    zent_d_eig_sym(n, a.data(), ZENT_RETURN_USER, w.data(), ZENT_RANGE, -2.0, 2.0, ZENT_VECTORS, &v, 0);
    zent_free_allocated_memory(v);
  }
}

#ifdef ZENT_HAVE_LAPACK

void lapack(benchmark::State& state, bool divide, const char* job) {
  const int n = static_cast<int>(state.range(0)), liwork = 10 * n + 10, lwork = 2 * n * n + 40 * n + 10;
  const std::vector<double> a = matrix(n);
  std::vector<double> work_a(a.size()), w(n), work(lwork);
  std::vector<int> iwork(liwork);
  int info = 0;
  for (auto _ : state) {
    std::copy(a.begin(), a.end(), work_a.begin());
    if (divide) {
      dsyevd_(job, "L", &n, work_a.data(), &n, w.data(), work.data(), &lwork, iwork.data(), &liwork, &info);
    } else {
      dsyev_(job, "L", &n, work_a.data(), &n, w.data(), work.data(), &lwork, &info);
    }
  }
}
#endif

#ifdef ZENT_HAVE_EIGEN
void eigen(benchmark::State& state, int options) {
  const long n = state.range(0);
  std::vector<double> a = matrix(n);
  const Eigen::Map<Eigen::MatrixXd> m(a.data(), n, n);
  Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(n);
  for (auto _ : state) solver.compute(m, options);
}
#endif

void sizes(benchmark::internal::Benchmark* b) {
  b->Arg(100)->Arg(300)->Arg(600)->Unit(benchmark::kMillisecond);
}
BENCHMARK(zent_values)->Apply(sizes);
#ifdef ZENT_HAVE_LAPACK
BENCHMARK_CAPTURE(lapack, dsyev_values, false, "N")->Apply(sizes);
BENCHMARK_CAPTURE(lapack, dsyevd_values, true, "N")->Apply(sizes);
#endif
#ifdef ZENT_HAVE_EIGEN
BENCHMARK_CAPTURE(eigen, values, Eigen::EigenvaluesOnly)->Apply(sizes);
#endif
BENCHMARK(zent_vectors)->Apply(sizes);
#ifdef ZENT_HAVE_LAPACK
BENCHMARK_CAPTURE(lapack, dsyev_vectors, false, "V")->Apply(sizes);
BENCHMARK_CAPTURE(lapack, dsyevd_vectors, true, "V")->Apply(sizes);
#endif
#ifdef ZENT_HAVE_EIGEN
BENCHMARK_CAPTURE(eigen, vectors, Eigen::ComputeEigenvectors)->Apply(sizes);
#endif
BENCHMARK(zent_range)->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
