// Uniform deviates and Faure points beside the standard library's generators; GSL's too where it is installed.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "zents.h"

#ifdef ZENT_HAVE_GSL
#include <gsl/gsl_rng.h>
#endif

namespace {

constexpr long block = 10000;

void uniform_double(benchmark::State& state) {
  zents_random_option(state.range(0));
  zents_random_seed_set(123457);
  std::vector<double> r(block);
  for (auto _ : state) {
    zents_drnun(block, r.data());
    benchmark::DoNotOptimize(r.data());
  }
  state.SetItemsProcessed(state.iterations() * block);
  zents_random_option(1);
}
BENCHMARK(uniform_double)->ArgName("generator")->DenseRange(1, 7);

void uniform_single(benchmark::State& state) {
  zents_random_option(state.range(0));
  zents_random_seed_set(123457);
  std::vector<float> r(block);
  for (auto _ : state) {
    zents_rnun(block, r.data());
    benchmark::DoNotOptimize(r.data());
  }
  state.SetItemsProcessed(state.iterations() * block);
  zents_random_option(1);
}
BENCHMARK(uniform_single)->ArgName("generator")->DenseRange(1, 7, 6);

template <class Engine>
void standard(benchmark::State& state) {
  Engine engine;
  std::vector<double> r(block);
  for (auto _ : state) {
    for (double& x : r) x = static_cast<double>(engine() - Engine::min()) / static_cast<double>(Engine::max());
    benchmark::DoNotOptimize(r.data());
  }
  state.SetItemsProcessed(state.iterations() * block);
}
BENCHMARK(standard<std::minstd_rand>)->Name("std_minstd_rand");
BENCHMARK(standard<std::mt19937_64>)->Name("std_mt19937_64");

#ifdef ZENT_HAVE_GSL
void gsl(benchmark::State& state, const gsl_rng_type* type) {
  gsl_rng* rng = gsl_rng_alloc(type);
  std::vector<double> r(block);
  for (auto _ : state) {
    for (double& x : r) x = gsl_rng_uniform(rng);
    benchmark::DoNotOptimize(r.data());
  }
  state.SetItemsProcessed(state.iterations() * block);
  gsl_rng_free(rng);
}
BENCHMARK_CAPTURE(gsl, minstd, gsl_rng_minstd);
BENCHMARK_CAPTURE(gsl, taus, gsl_rng_taus);
BENCHMARK_CAPTURE(gsl, mt19937, gsl_rng_mt19937);
#endif

// One point a call; with trapping on the call also sets and restores the two signal handlers.
void faure_point(benchmark::State& state) {
  zents_error_options(ZENTS_SIGNAL_TRAPPING, static_cast<int>(state.range(1)), 0);
  zents_faure* sequence = zents_faure_sequence_init(state.range(0), 0);
  std::vector<double> point(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(zents_d_faure_next_point(sequence, ZENTS_RETURN_USER, point.data(), 0));
  zents_faure_sequence_free(sequence);
  zents_error_options(ZENTS_SIGNAL_TRAPPING, 1, 0);
}
BENCHMARK(faure_point)->ArgNames({"dimension", "trap"})->Args({10, 0})->Args({10, 1})->Args({40, 0});

}  // namespace

BENCHMARK_MAIN();
