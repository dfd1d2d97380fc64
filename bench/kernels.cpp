// The kernel layer beside OpenBLAS and Eigen, one thread. Every figure is the best processor time of the repetitions of one
// benchmark, so that other work on the machine shows little; GFLOP/s count a complex multiplication as 4 and an addition as 2.
// The first line is the peak that independent vector operations reach.
#include <benchmark/benchmark.h>
#include <time.h>

#include <complex>
#include <random>
#include <string>
#include <vector>

#include "runtime/kernels/fast.hpp"
#include "zent.h"

#ifdef ZENT_HAVE_OPENBLAS
#include <cblas.h>
extern "C" void openblas_set_num_threads(int) __attribute__((weak));
#endif

// Eigen is chosen when it is compiled, so it gets the best that this bench may assume, and runs only where the processor has it.
#ifdef ZENT_HAVE_EIGEN
#include <immintrin.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstring>
#include <functional>
#include <iostream>
#include <limits>
#include <sstream>
#pragma GCC push_options
#pragma GCC target("avx512f,avx512dq,avx512vl,avx512bw,avx2,fma")
#include <eigen3/Eigen/Dense>
namespace {
template <class E>
using EigenMap = Eigen::Map<Eigen::Matrix<E, Eigen::Dynamic, Eigen::Dynamic>>;
template <class E>
void eigen_gemm(long n, const void* a, const void* b, void* c) {
  const EigenMap<E> left(static_cast<E*>(const_cast<void*>(a)), n, n), right(static_cast<E*>(const_cast<void*>(b)), n, n);
  EigenMap<E> result(static_cast<E*>(c), n, n);
  result.noalias() = left * right;
}
}  // namespace
#pragma GCC pop_options
#endif

namespace {

namespace fast = zent::fast;
using zent::kernel::RealOf;

double seconds() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

template <class T>
constexpr double flops = zent::kernel::ComplexRecord<T> ? 8 : 2;

template <class T>
std::vector<T> random_array(long n) {
  static std::mt19937 engine(5);
  std::uniform_real_distribution<RealOf<T>> uniform(-1, 1);
  std::vector<T> a(static_cast<std::size_t>(n));
  auto* reals = reinterpret_cast<RealOf<T>*>(a.data());
  for (long i = 0; i < n * static_cast<long>(sizeof(T) / sizeof(RealOf<T>)); ++i) reals[i] = uniform(engine);
  return a;
}

// Times `work`, in batches when it is short.
template <class Work>
void best_of(benchmark::State& state, double operations, Work work) {
  const int batch = operations < 1e3 ? 1000 : operations < 1e6 ? 100 : 1;
  double best = 1e30;
  for (auto _ : state) {
    const double start = seconds();
    for (int i = 0; i < batch; ++i) work();
    best = std::min(best, (seconds() - start) / batch);
    benchmark::ClobberMemory();
  }
  state.counters["GFLOP/s"] = operations / best * 1e-9;
  state.counters["best_us"] = best * 1e6;
}

void add(const std::string& name, void (*run)(benchmark::State&, long), long n) {
  benchmark::RegisterBenchmark((name + "/" + std::to_string(n)).c_str(), [=](benchmark::State& state) {
    run(state, n);
  })->MinTime(0.15);
}

template <class T>
struct Square {
  std::vector<T> a, b, c;
  explicit Square(long n) : a(random_array<T>(n * n)), b(random_array<T>(n * n)), c(random_array<T>(n * n)) {}
  // Near the unit matrix, so that repeated solves stay in range.
  void dominate(long n) {
    for (T& x : a) x = x / static_cast<T>(1000 * n);
    for (long i = 0; i < n; ++i) a[static_cast<std::size_t>(i * n + i)] = 1;
  }
};

double cube(long n) {
  return static_cast<double>(n) * static_cast<double>(n) * static_cast<double>(n);
}
double square(long n) {
  return static_cast<double>(n) * static_cast<double>(n);
}

template <class T>
void gemm(benchmark::State& state, long n) {
  Square<T> s(n);
  const T one = zent::kernel::from_real<T>(1);
  best_of(state, flops<T> * cube(n),
          [&] { fast::gemm('N', 'N', n, n, n, one, s.a.data(), n, s.b.data(), n, T{}, s.c.data(), n); });
}

template <char side, char op>
void trsm(benchmark::State& state, long n) {
  Square<double> s(n);
  s.dominate(n);
  best_of(state, cube(n), [&] { fast::trsm(side, 'L', op, 'N', n, n, 1, s.a.data(), n, s.b.data(), n); });
}
void syrk(benchmark::State& state, long n) {
  Square<double> s(n);
  best_of(state, cube(n), [&] { fast::syrk('L', 'N', n, n, -1, s.a.data(), n, 0, s.c.data(), n); });
}
template <char op>
void gemv(benchmark::State& state, long n) {
  Square<double> s(n);
  best_of(state, 2 * square(n), [&] { fast::gemv(op, n, n, 1, s.a.data(), n, s.b.data(), 1, 0, s.c.data(), 1); });
}
void symv(benchmark::State& state, long n) {
  Square<double> s(n);
  best_of(state, 2 * square(n), [&] { fast::symv('L', n, 1, s.a.data(), n, s.b.data(), 1, 0, s.c.data(), 1); });
}
void ger(benchmark::State& state, long n) {
  Square<double> s(n);
  best_of(state, 2 * square(n), [&] { fast::ger(n, n, 1e-9, s.b.data(), 1, s.c.data(), 1, s.a.data(), n); });
}
template <char op>
void trsv(benchmark::State& state, long n) {
  Square<double> s(n);
  s.dominate(n);
  best_of(state, square(n), [&] { fast::trsv('L', op, 'N', n, s.a.data(), n, s.b.data(), 1); });
}
void dot(benchmark::State& state, long n) {
  const auto x = random_array<double>(n), y = random_array<double>(n);
  best_of(state, 2 * static_cast<double>(n), [&] { benchmark::DoNotOptimize(fast::dot(n, x.data(), 1, y.data(), 1)); });
}
void axpy(benchmark::State& state, long n) {
  const auto x = random_array<double>(n);
  auto y = random_array<double>(n);
  best_of(state, 2 * static_cast<double>(n), [&] { fast::axpy(n, 1e-9, x.data(), 1, y.data(), 1); });
}
void nrm2(benchmark::State& state, long n) {
  const auto x = random_array<double>(n);
  best_of(state, 2 * static_cast<double>(n), [&] { benchmark::DoNotOptimize(fast::nrm2(n, x.data(), 1)); });
}
void iamax(benchmark::State& state, long n) {
  const auto x = random_array<double>(n);
  best_of(state, static_cast<double>(n), [&] { benchmark::DoNotOptimize(fast::iamax(n, x.data(), 1)); });
}
// 16 sequences at a time over an n by n matrix, as a back-accumulation does it.
template <bool plain>
void rotations(benchmark::State& state, long n) {
  constexpr long sweeps = 16;
  Square<double> s(n);
  std::vector<double> c(static_cast<std::size_t>(sweeps * n), 0.8), sine(c.size(), 0.6);
  best_of(state, 6 * static_cast<double>(sweeps) * square(n), [&] {
    if (plain) {
      zent::kernel::rot_columns(false, sweeps, n, n, c.data(), sine.data(), s.a.data(), n);
    } else {
      fast::rot_columns(false, sweeps, n, n, c.data(), sine.data(), s.a.data(), n);
    }
  });
}
template <class T>
void transposition(benchmark::State& state, long n) {
  Square<T> s(n);
  best_of(state, square(n), [&] { fast::transpose_square(n, s.a.data()); });
}

#ifdef ZENT_HAVE_OPENBLAS
template <class T>
void openblas_gemm(benchmark::State& state, long n) {
  Square<T> s(n);
  const int k = static_cast<int>(n);
  const T one = zent::kernel::from_real<T>(1), zero{};
  best_of(state, flops<T> * cube(n), [&] {
    if constexpr (std::same_as<T, float>) {
      cblas_sgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, k, k, k, 1, s.a.data(), k, s.b.data(), k, 0, s.c.data(), k);
    } else if constexpr (std::same_as<T, double>) {
      cblas_dgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, k, k, k, 1, s.a.data(), k, s.b.data(), k, 0, s.c.data(), k);
    } else if constexpr (std::same_as<T, zent_f_complex>) {
      cblas_cgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, k, k, k, &one, s.a.data(), k, s.b.data(), k, &zero, s.c.data(), k);
    } else {
      cblas_zgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, k, k, k, &one, s.a.data(), k, s.b.data(), k, &zero, s.c.data(), k);
    }
  });
}
void openblas_trsm(benchmark::State& state, long n) {
  Square<double> s(n);
  s.dominate(n);
  const int k = static_cast<int>(n);
  best_of(state, cube(n), [&] {
    cblas_dtrsm(CblasColMajor, CblasLeft, CblasLower, CblasNoTrans, CblasNonUnit, k, k, 1, s.a.data(), k, s.b.data(), k);
  });
}
void openblas_syrk(benchmark::State& state, long n) {
  Square<double> s(n);
  const int k = static_cast<int>(n);
  best_of(state, cube(n),
          [&] { cblas_dsyrk(CblasColMajor, CblasLower, CblasNoTrans, k, k, -1, s.a.data(), k, 0, s.c.data(), k); });
}
template <CBLAS_TRANSPOSE op>
void openblas_gemv(benchmark::State& state, long n) {
  Square<double> s(n);
  const int k = static_cast<int>(n);
  best_of(state, 2 * square(n), [&] { cblas_dgemv(CblasColMajor, op, k, k, 1, s.a.data(), k, s.b.data(), 1, 0, s.c.data(), 1); });
}
void openblas_symv(benchmark::State& state, long n) {
  Square<double> s(n);
  const int k = static_cast<int>(n);
  best_of(state, 2 * square(n),
          [&] { cblas_dsymv(CblasColMajor, CblasLower, k, 1, s.a.data(), k, s.b.data(), 1, 0, s.c.data(), 1); });
}
void openblas_ger(benchmark::State& state, long n) {
  Square<double> s(n);
  const int k = static_cast<int>(n);
  best_of(state, 2 * square(n), [&] { cblas_dger(CblasColMajor, k, k, 1e-9, s.b.data(), 1, s.c.data(), 1, s.a.data(), k); });
}
template <CBLAS_TRANSPOSE op>
void openblas_trsv(benchmark::State& state, long n) {
  Square<double> s(n);
  s.dominate(n);
  const int k = static_cast<int>(n);
  best_of(state, square(n), [&] { cblas_dtrsv(CblasColMajor, CblasLower, op, CblasNonUnit, k, s.a.data(), k, s.b.data(), 1); });
}
void openblas_iamax(benchmark::State& state, long n) {
  const auto x = random_array<double>(n);
  best_of(state, static_cast<double>(n), [&] { benchmark::DoNotOptimize(cblas_idamax(static_cast<int>(n), x.data(), 1)); });
}
void openblas_dot(benchmark::State& state, long n) {
  const auto x = random_array<double>(n), y = random_array<double>(n);
  best_of(state, 2 * static_cast<double>(n),
          [&] { benchmark::DoNotOptimize(cblas_ddot(static_cast<int>(n), x.data(), 1, y.data(), 1)); });
}
void openblas_axpy(benchmark::State& state, long n) {
  const auto x = random_array<double>(n);
  auto y = random_array<double>(n);
  best_of(state, 2 * static_cast<double>(n), [&] { cblas_daxpy(static_cast<int>(n), 1e-9, x.data(), 1, y.data(), 1); });
}
void openblas_nrm2(benchmark::State& state, long n) {
  const auto x = random_array<double>(n);
  best_of(state, 2 * static_cast<double>(n), [&] { benchmark::DoNotOptimize(cblas_dnrm2(static_cast<int>(n), x.data(), 1)); });
}
#endif

#ifdef ZENT_HAVE_EIGEN
template <class T, class E>
void eigen_product(benchmark::State& state, long n) {
  Square<T> s(n);
  best_of(state, flops<T> * cube(n), [&] { eigen_gemm<E>(n, s.a.data(), s.b.data(), s.c.data()); });
}
#endif

void peak(benchmark::State& state, long n) {
  // One strip of B and one tile of A in the first cache: as near to the units as a kernel can come.
  const auto a = random_array<double>(24 * n), b = random_array<double>(8 * n);
  std::vector<double> c(24 * 8);
  best_of(state, 2.0 * 24 * 8 * static_cast<double>(n),
          [&] { fast::gemm('N', 'T', 24, 8, n, 1, a.data(), 24, b.data(), 8, 0, c.data(), 24); });
}

template <class T>
void add_products(const std::string& letter, [[maybe_unused]] void (*eigen)(benchmark::State&, long)) {
  for (long n : {4L, 5L, 8L, 16L, 24L, 32L, 48L, 64L, 100L, 256L, 512L, 1000L, 1024L, 2048L}) {
    if (letter != "d" && (n == 5 || n == 24 || n == 48 || n == 100 || n == 1000 || n == 2048)) continue;
    add(letter + "gemm", gemm<T>, n);
#ifdef ZENT_HAVE_OPENBLAS
    add(letter + "gemm/openblas", openblas_gemm<T>, n);
#endif
    if (eigen != nullptr) add(letter + "gemm/eigen", eigen, n);
  }
}

#ifdef ZENT_HAVE_OPENBLAS
#define ZENT_PAIR(name, ours, peer, ...)           \
  for (long n : {__VA_ARGS__}) {                   \
    add(name, ours, n);                            \
    add(std::string(name) + "/openblas", peer, n); \
  }
#else
#define ZENT_PAIR(name, ours, peer, ...) \
  for (long n : {__VA_ARGS__}) add(name, ours, n);
#endif

void add_all() {
  add("peak", peak, 64);
  void (*eigen[4])(benchmark::State&, long) = {};
#ifdef ZENT_HAVE_EIGEN
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl")) {
    eigen[0] = eigen_product<float, float>;
    eigen[1] = eigen_product<double, double>;
    eigen[2] = eigen_product<zent_f_complex, std::complex<float>>;
    eigen[3] = eigen_product<zent_d_complex, std::complex<double>>;
  }
#endif
  add_products<double>("d", eigen[1]);
  add_products<float>("s", eigen[0]);
  add_products<zent_f_complex>("c", eigen[2]);
  add_products<zent_d_complex>("z", eigen[3]);
  ZENT_PAIR("trsm_left", (trsm<'L', 'N'>), openblas_trsm, 32L, 100L, 500L, 1000L)
  ZENT_PAIR("syrk", syrk, openblas_syrk, 32L, 100L, 500L, 1000L)
  ZENT_PAIR("gemv_n", gemv<'N'>, openblas_gemv<CblasNoTrans>, 16L, 100L, 1000L)
  ZENT_PAIR("gemv_t", gemv<'T'>, openblas_gemv<CblasTrans>, 16L, 100L, 1000L)
  ZENT_PAIR("symv", symv, openblas_symv, 16L, 100L, 300L, 1000L)
  ZENT_PAIR("ger", ger, openblas_ger, 16L, 100L, 1000L)
  ZENT_PAIR("trsv_n", trsv<'N'>, openblas_trsv<CblasNoTrans>, 16L, 100L, 1000L)
  ZENT_PAIR("trsv_t", trsv<'T'>, openblas_trsv<CblasTrans>, 16L, 100L, 1000L)
  ZENT_PAIR("dot", dot, openblas_dot, 8L, 100L, 1000L)
  ZENT_PAIR("axpy", axpy, openblas_axpy, 8L, 100L, 1000L)
  ZENT_PAIR("iamax", iamax, openblas_iamax, 8L, 100L, 1000L)
  ZENT_PAIR("nrm2", nrm2, openblas_nrm2, 8L, 100L, 1000L)
  add("trsm_right", trsm<'R', 'T'>, 500);
  for (long n : {100L, 300L, 1000L}) {
    add("rotations", rotations<false>, n);
    add("rotations/plain", rotations<true>, n);
  }
  for (long n : {256L, 1000L, 1024L, 2000L}) add("transpose_square/d", transposition<double>, n);
  add("transpose_square/s", transposition<float>, 1000);
  add("transpose_square/z", transposition<zent_d_complex>, 1000);
}

}  // namespace

int main(int argc, char** argv) {
#ifdef ZENT_HAVE_OPENBLAS
  if (openblas_set_num_threads != nullptr) openblas_set_num_threads(1);
#endif
  benchmark::Initialize(&argc, argv);
  add_all();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
