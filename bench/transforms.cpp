// Fourier transforms beside FFTW (plans measured and estimated), one thread, with prepared tables.
#include <benchmark/benchmark.h>

#include <vector>

#include "zent.h"

#ifdef ZENT_HAVE_FFTW
#include <fftw3.h>
#define BENCH_FFTW
#endif

namespace {

std::vector<double> data(long n) {
  std::vector<double> x(static_cast<std::size_t>(2 * n));
  for (std::size_t k = 0; k < x.size(); ++k) x[k] = static_cast<double>(k % 7) - 3;
  return x;
}

void zent_complex(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<double> in = data(n), out(in);
  double* table = zent_z_fft_complex_init(n);
  for (auto _ : state) {
    zent_z_fft_complex(n, reinterpret_cast<zent_d_complex*>(in.data()), ZENT_PARAMS, table, ZENT_RETURN_USER, out.data(), 0);
  }
  zent_free_allocated_memory(table);
}
void zent_real(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<double> in = data(n), out(in);
  double* table = zent_d_fft_real_init(n);
  for (auto _ : state) zent_d_fft_real(n, in.data(), ZENT_PARAMS, table, ZENT_RETURN_USER, out.data(), 0);
  zent_free_allocated_memory(table);
}
void zent_single(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<float> in(static_cast<std::size_t>(2 * n), 1), out(in);
  float* table = zent_c_fft_complex_init(n);
  for (auto _ : state) {
    zent_c_fft_complex(n, reinterpret_cast<zent_f_complex*>(in.data()), ZENT_PARAMS, table, ZENT_RETURN_USER, out.data(), 0);
  }
  zent_free_allocated_memory(table);
}
void zent_plane(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<double> in = data(n * n), out(in);
  for (auto _ : state) {
    zent_z_fft_2d_complex(n, n, reinterpret_cast<zent_d_complex*>(in.data()), ZENT_RETURN_USER, out.data(), 0);
  }
}
void zent_table(benchmark::State& state) {
  for (auto _ : state) zent_free_allocated_memory(zent_z_fft_complex_init(state.range(0)));
}

#define LENGTHS ->Arg(1024)->Arg(1000)->Arg(44100)->Arg(65536)->Arg(1048576)->Arg(10007)->Unit(benchmark::kMicrosecond)
BENCHMARK(zent_complex) LENGTHS;
BENCHMARK(zent_real) LENGTHS;
BENCHMARK(zent_single) LENGTHS;
BENCHMARK(zent_plane)->Arg(512)->Unit(benchmark::kMicrosecond);
BENCHMARK(zent_table) LENGTHS;

#ifdef BENCH_FFTW
void run_plan(benchmark::State& state, fftw_plan plan, fftw_complex* a, fftw_complex* b, long n) {
  for (long k = 0; k < n; ++k) a[k][0] = static_cast<double>(k % 7) - 3, a[k][1] = 1;
  for (auto _ : state) fftw_execute(plan);
  fftw_destroy_plan(plan);
  fftw_free(a);
  fftw_free(b);
}
void fftw_complex_1d(benchmark::State& state, unsigned effort) {
  const int n = static_cast<int>(state.range(0));
  fftw_complex *a = fftw_alloc_complex(static_cast<std::size_t>(n)), *b = fftw_alloc_complex(static_cast<std::size_t>(n));
  run_plan(state, fftw_plan_dft_1d(n, a, b, FFTW_FORWARD, effort), a, b, n);
}
void fftw_real(benchmark::State& state, unsigned effort) {
  const int n = static_cast<int>(state.range(0));
  fftw_complex *a = fftw_alloc_complex(static_cast<std::size_t>(n)), *b = fftw_alloc_complex(static_cast<std::size_t>(n));
  run_plan(state, fftw_plan_dft_r2c_1d(n, reinterpret_cast<double*>(a), b, effort), a, b, n / 2);
}
void fftw_plane(benchmark::State& state, unsigned effort) {
  const int n = static_cast<int>(state.range(0));
  const auto count = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  fftw_complex *a = fftw_alloc_complex(count), *b = fftw_alloc_complex(count);
  run_plan(state, fftw_plan_dft_2d(n, n, a, b, FFTW_FORWARD, effort), a, b, static_cast<long>(n) * n);
}
BENCHMARK_CAPTURE(fftw_complex_1d, measure, FFTW_MEASURE) LENGTHS;
BENCHMARK_CAPTURE(fftw_complex_1d, estimate, FFTW_ESTIMATE) LENGTHS;
BENCHMARK_CAPTURE(fftw_real, measure, FFTW_MEASURE) LENGTHS;
BENCHMARK_CAPTURE(fftw_real, estimate, FFTW_ESTIMATE) LENGTHS;
BENCHMARK_CAPTURE(fftw_plane, measure, FFTW_MEASURE)->Arg(512)->Unit(benchmark::kMicrosecond);
#endif

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
