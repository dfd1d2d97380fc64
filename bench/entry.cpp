// What a public function costs that has nothing to do.
#include <benchmark/benchmark.h>

#include "runtime/envelope.hpp"
#include "zent.h"

namespace {

using zent::Math;

void scalar_entry(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(zent::scalar_call<Math>("bench", [] { return 1.0; }));
}
BENCHMARK(scalar_entry);

void public_entry_untrapped(benchmark::State& state) {
  zent_error_options(ZENT_SIGNAL_TRAPPING, 0, 0);
  for (auto _ : state) benchmark::DoNotOptimize(zent::public_call<Math>("bench", [] { return 1.0; }));
  zent_error_options(ZENT_SIGNAL_TRAPPING, 1, 0);
}
BENCHMARK(public_entry_untrapped);

void public_entry_nested(benchmark::State& state) {
  zent::public_call<Math>("outer", [&] {
    for (auto _ : state) benchmark::DoNotOptimize(zent::public_call<Math>("bench", [] { return 1.0; }));
  });
}
BENCHMARK(public_entry_nested);

void public_entry_arming(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(zent::public_call<Math>("bench", [] { return 1.0; }));
}
BENCHMARK(public_entry_arming);

// The shape of the binding's element loops: the trap is armed once around them.
void element_loop(benchmark::State& state) {
  constexpr long count = 1000;
  static double x[count];
  for (auto _ : state) {
    zent::public_call<Math>("loop", [&] {
      for (long i = 0; i < count; ++i) x[i] = zent_d_machine(1 + i % 8);
    });
    benchmark::DoNotOptimize(x);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(element_loop);

}  // namespace

BENCHMARK_MAIN();
