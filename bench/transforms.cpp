// Fourier transforms beside FFTW (plans measured and estimated), one thread, with prepared tables, into prepared arrays of the
// same kind. A public call arms the signal trap, which takes about a microsecond: short lengths are shown with it and without.
#include <benchmark/benchmark.h>

#include <vector>

#include "zent.h"

#ifdef ZENT_HAVE_FFTW
#include <fftw3.h>
#define BENCH_FFTW
#endif

namespace {

enum class Trap { off, on };

template <class Real>
std::vector<Real> data(long n) {
  std::vector<Real> x(static_cast<std::size_t>(2 * n));
  for (std::size_t k = 0; k < x.size(); ++k) x[k] = static_cast<Real>(k % 7) - 3;
  return x;
}

template <class Call>
void repeat(benchmark::State& state, Trap trap, Call call) {
  zent_error_options(ZENT_SIGNAL_TRAPPING, trap == Trap::on ? 1 : 0, 0);
  for (auto _ : state) call();
  zent_error_options(ZENT_SIGNAL_TRAPPING, 1, 0);
}

void zent_complex(benchmark::State& state, Trap trap) {
  const long n = state.range(0);
  std::vector<double> in = data<double>(n), out(in);
  auto* p = reinterpret_cast<zent_d_complex*>(in.data());
  double* table = zent_z_fft_complex_init(n);
  repeat(state, trap, [&] { zent_z_fft_complex(n, p, ZENT_PARAMS, table, ZENT_RETURN_USER, out.data(), 0); });
  zent_free_allocated_memory(table);
}
void zent_complex_new_result(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<double> in = data<double>(n);
  auto* p = reinterpret_cast<zent_d_complex*>(in.data());
  repeat(state, Trap::on, [&] { zent_free_allocated_memory(zent_z_fft_complex(n, p, 0)); });
}
void zent_real(benchmark::State& state, Trap trap) {
  const long n = state.range(0);
  std::vector<double> in = data<double>(n), out(in);
  double* table = zent_d_fft_real_init(n);
  repeat(state, trap, [&] { zent_d_fft_real(n, in.data(), ZENT_PARAMS, table, ZENT_RETURN_USER, out.data(), 0); });
  zent_free_allocated_memory(table);
}
void zent_single(benchmark::State& state, Trap trap) {
  const long n = state.range(0);
  std::vector<float> in = data<float>(n), out(in);
  auto* p = reinterpret_cast<zent_f_complex*>(in.data());
  float* table = zent_c_fft_complex_init(n);
  repeat(state, trap, [&] { zent_c_fft_complex(n, p, ZENT_PARAMS, table, ZENT_RETURN_USER, out.data(), 0); });
  zent_free_allocated_memory(table);
}
void zent_plane(benchmark::State& state) {
  const long n = state.range(0);
  std::vector<double> in = data<double>(n * n), out(in);
  auto* p = reinterpret_cast<zent_d_complex*>(in.data());
  repeat(state, Trap::on, [&] { zent_z_fft_2d_complex(n, n, p, ZENT_RETURN_USER, out.data(), 0); });
}
void zent_table(benchmark::State& state) {
  for (auto _ : state) zent_free_allocated_memory(zent_z_fft_complex_init(state.range(0)));
}

#define SHORT_LENGTHS ->Arg(1000)->Arg(1024)->Unit(benchmark::kMicrosecond)
#define LENGTHS SHORT_LENGTHS->Arg(10007)->Arg(44100)->Arg(65536)->Arg(1048576)
BENCHMARK_CAPTURE(zent_complex, trap, Trap::on) LENGTHS;
BENCHMARK_CAPTURE(zent_complex, no_trap, Trap::off) SHORT_LENGTHS;
BENCHMARK(zent_complex_new_result) LENGTHS;
BENCHMARK_CAPTURE(zent_real, trap, Trap::on) LENGTHS;
BENCHMARK_CAPTURE(zent_real, no_trap, Trap::off) SHORT_LENGTHS;
BENCHMARK_CAPTURE(zent_single, trap, Trap::on) LENGTHS;
BENCHMARK_CAPTURE(zent_single, no_trap, Trap::off) SHORT_LENGTHS;
BENCHMARK(zent_plane)->Arg(512)->Unit(benchmark::kMicrosecond);
BENCHMARK(zent_table) LENGTHS;

#ifdef BENCH_FFTW
// What has been measured before would serve as an estimate too.
template <class Plan>
void run_plan(benchmark::State& state, unsigned effort, long n, Plan plan_for) {
  if (effort == FFTW_ESTIMATE) fftw_forget_wisdom();
  std::vector<double> in = data<double>(n), out(data<double>(n + 1));
  const fftw_plan plan = plan_for(in.data(), reinterpret_cast<fftw_complex*>(out.data()));
  in = data<double>(n);  // measuring writes into it
  for (auto _ : state) fftw_execute(plan);
  fftw_destroy_plan(plan);
}
void fftw_complex_1d(benchmark::State& state, unsigned effort) {
  const int n = static_cast<int>(state.range(0));
  run_plan(state, effort, n, [=](double* a, fftw_complex* b) {
    return fftw_plan_dft_1d(n, reinterpret_cast<fftw_complex*>(a), b, FFTW_FORWARD, effort | FFTW_PRESERVE_INPUT);
  });
}
void fftw_real(benchmark::State& state, unsigned effort) {
  const int n = static_cast<int>(state.range(0));
  run_plan(state, effort, n,
           [=](double* a, fftw_complex* b) { return fftw_plan_dft_r2c_1d(n, a, b, effort | FFTW_PRESERVE_INPUT); });
}
void fftw_plane(benchmark::State& state, unsigned effort) {
  const int n = static_cast<int>(state.range(0));
  run_plan(state, effort, static_cast<long>(n) * n, [=](double* a, fftw_complex* b) {
    return fftw_plan_dft_2d(n, n, reinterpret_cast<fftw_complex*>(a), b, FFTW_FORWARD, effort | FFTW_PRESERVE_INPUT);
  });
}
void fftw_single(benchmark::State& state, unsigned effort) {
  const int n = static_cast<int>(state.range(0));
  std::vector<float> in = data<float>(n), out(in);
  const fftwf_plan plan =
      fftwf_plan_dft_1d(n, reinterpret_cast<fftwf_complex*>(in.data()), reinterpret_cast<fftwf_complex*>(out.data()),
                        FFTW_FORWARD, effort | FFTW_PRESERVE_INPUT);
  in = data<float>(n);
  for (auto _ : state) fftwf_execute(plan);
  fftwf_destroy_plan(plan);
}
BENCHMARK_CAPTURE(fftw_complex_1d, estimate, FFTW_ESTIMATE) LENGTHS;
BENCHMARK_CAPTURE(fftw_complex_1d, measure, FFTW_MEASURE) LENGTHS;
BENCHMARK_CAPTURE(fftw_real, estimate, FFTW_ESTIMATE) LENGTHS;
BENCHMARK_CAPTURE(fftw_real, measure, FFTW_MEASURE) LENGTHS;
BENCHMARK_CAPTURE(fftw_single, measure, FFTW_MEASURE) LENGTHS;
BENCHMARK_CAPTURE(fftw_plane, estimate, FFTW_ESTIMATE)->Arg(512)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(fftw_plane, measure, FFTW_MEASURE)->Arg(512)->Unit(benchmark::kMicrosecond);
#endif

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
