// Pivoted QR, least squares and singular values beside LAPACK over OpenBLAS and Eigen where they are installed.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "zent.h"

#ifdef ZENT_HAVE_LAPACK
#include <lapacke.h>
#define WITH_LAPACK 1
extern "C" void openblas_set_num_threads(int) __attribute__((weak));
#endif
#ifdef ZENT_HAVE_EIGEN
#include <eigen3/Eigen/Dense>
#define WITH_EIGEN 1
#endif

namespace {

std::vector<double> random_matrix(long m, long n) {
  std::mt19937_64 engine(7);
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<double> a(m * n);
  for (double& x : a) x = u(engine);
  return a;
}

void quiet() {
  for (int type = 1; type <= 7; ++type) zent_error_options(ZENT_SET_PRINT, type, 0, ZENT_SET_STOP, type, 0, 0);
#ifdef WITH_LAPACK
  if (openblas_set_num_threads != nullptr) openblas_set_num_threads(1);
#endif
}

void least_squares(benchmark::State& state) {
  quiet();
  const long m = state.range(0), n = state.range(1);
  std::vector<double> a = random_matrix(m, n), b = random_matrix(m, 1), x(n);
  for (auto _ : state)
    benchmark::DoNotOptimize(zent_d_lin_least_squares_gen(m, n, a.data(), b.data(), ZENT_RETURN_USER, x.data(), 0));
}

void factor_only(benchmark::State& state) {  // the column-major kernel alone
  quiet();
  const long m = state.range(0), n = state.range(1);
  std::vector<double> a = random_matrix(m, n), qr(m * n), qraux(n), norms(n), wk(2 * n);
  std::vector<long> pvt(n);
  for (auto _ : state) {
    std::fill(pvt.begin(), pvt.end(), 0);
    zent_dl2rrr(m, n, a.data(), m, 1, pvt.data(), qr.data(), m, qraux.data(), norms.data(), wk.data());
  }
}

void singular_values(benchmark::State& state) {
  quiet();
  const long n = state.range(0);
  std::vector<double> a = random_matrix(n, n), u(n * n), v(n * n), s(n);
  for (auto _ : state)
    benchmark::DoNotOptimize(
        zent_d_lin_svd_gen(n, n, a.data(), ZENT_RETURN_USER, s.data(), ZENT_U_USER, u.data(), ZENT_V_USER, v.data(), 0));
}

void values_only(benchmark::State& state) {
  quiet();
  const long n = state.range(0);
  std::vector<double> a = random_matrix(n, n), s(n);
  for (auto _ : state) benchmark::DoNotOptimize(zent_d_lin_svd_gen(n, n, a.data(), ZENT_RETURN_USER, s.data(), 0));
}

void shapes(benchmark::internal::Benchmark* b) {
  for (long n : {100, 500, 1000}) b->Args({n, n});
  b->Args({1000, 300})->Unit(benchmark::kMicrosecond);
}
void orders(benchmark::internal::Benchmark* b) {
  b->Arg(100)->Arg(300)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(least_squares)->Apply(shapes);
BENCHMARK(factor_only)->Apply(shapes);

#ifdef WITH_LAPACK
// From a row-major matrix, as the library's user has it, and from a column-major one.
template <int layout>
void dgelsy(benchmark::State& state) {
  quiet();
  const int m = static_cast<int>(state.range(0)), n = static_cast<int>(state.range(1));
  const std::vector<double> a = random_matrix(m, n), b = random_matrix(m, 1);
  std::vector<int> pvt(n);
  for (auto _ : state) {
    std::vector<double> qr = a, x = b;
    std::fill(pvt.begin(), pvt.end(), 0);
    int rank = 0;
    LAPACKE_dgelsy(layout, m, n, 1, qr.data(), layout == LAPACK_ROW_MAJOR ? n : m, x.data(), layout == LAPACK_ROW_MAJOR ? 1 : m,
                   pvt.data(), 1e-8, &rank);
  }
}
BENCHMARK(dgelsy<LAPACK_ROW_MAJOR>)->Name("dgelsy_row_major")->Apply(shapes);
BENCHMARK(dgelsy<LAPACK_COL_MAJOR>)->Name("dgelsy_column_major")->Apply(shapes);

void dgeqp3(benchmark::State& state) {
  quiet();
  const int m = static_cast<int>(state.range(0)), n = static_cast<int>(state.range(1));
  const std::vector<double> a = random_matrix(m, n);
  std::vector<int> pvt(n);
  std::vector<double> tau(n);
  for (auto _ : state) {
    std::vector<double> qr = a;
    std::fill(pvt.begin(), pvt.end(), 0);
    LAPACKE_dgeqp3(LAPACK_COL_MAJOR, m, n, qr.data(), m, pvt.data(), tau.data());
  }
}
BENCHMARK(dgeqp3)->Apply(shapes);
#endif

BENCHMARK(singular_values)->Apply(orders);
BENCHMARK(values_only)->Apply(orders);

#ifdef WITH_LAPACK
void lapack_svd(benchmark::State& state, bool divide, char job) {
  quiet();
  const int n = static_cast<int>(state.range(0));
  const std::vector<double> a = random_matrix(n, n);
  std::vector<double> u(n * n), v(n * n), s(n), e(n);
  for (auto _ : state) {
    std::vector<double> work = a;
    if (divide) {
      LAPACKE_dgesdd(LAPACK_COL_MAJOR, job, n, n, work.data(), n, s.data(), u.data(), n, v.data(), n);
    } else {
      LAPACKE_dgesvd(LAPACK_COL_MAJOR, job, job, n, n, work.data(), n, s.data(), u.data(), n, v.data(), n, e.data());
    }
  }
}
BENCHMARK_CAPTURE(lapack_svd, dgesdd, true, 'S')->Apply(orders);
BENCHMARK_CAPTURE(lapack_svd, dgesvd, false, 'S')->Apply(orders);
BENCHMARK_CAPTURE(lapack_svd, dgesdd_values, true, 'N')->Apply(orders);
#endif

#ifdef WITH_EIGEN
void eigen_svd(benchmark::State& state) {
  const long n = state.range(0);
  const std::vector<double> a = random_matrix(n, n);
  const Eigen::Map<const Eigen::MatrixXd> matrix(a.data(), n, n);
  for (auto _ : state) {
    Eigen::BDCSVD<Eigen::MatrixXd> svd(matrix, Eigen::ComputeThinU | Eigen::ComputeThinV);
    benchmark::DoNotOptimize(svd.singularValues().data());
  }
}
BENCHMARK(eigen_svd)->Apply(orders);
void eigen_qr(benchmark::State& state) {
  const long m = state.range(0), n = state.range(1);
  const std::vector<double> a = random_matrix(m, n), b = random_matrix(m, 1);
  const Eigen::Map<const Eigen::MatrixXd> matrix(a.data(), m, n);
  const Eigen::Map<const Eigen::VectorXd> right(b.data(), m);
  for (auto _ : state) {
    const Eigen::VectorXd x = matrix.colPivHouseholderQr().solve(right);
    benchmark::DoNotOptimize(x.data());
  }
}
BENCHMARK(eigen_qr)->Apply(shapes);
#endif

}  // namespace

BENCHMARK_MAIN();
