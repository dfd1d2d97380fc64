// A user function written in the shell's language, called as a library calls it.
#include <benchmark/benchmark.h>

#include "host/lang/interpreter.hpp"

namespace {

void call(benchmark::State& state, const char* definition) {
  orv::Interpreter interpreter;
  interpreter.run(definition, "bench");
  ORV_VARIABLE x = {};
  x.type = ORV_TYP_DOUBLE;
  x.value.d = 1.5;
  ORV_VARIABLE* argv[] = {&x};
  ORV_CALLREC rec = {};
  rec.kind = 1;
  rec.argc = 1;
  rec.ident = ORV_IdentHash("F", 0, 1, 2, 0);
  rec.argv = argv;
  double sum = 0;
  for (auto _ : state) {
    ORV_InterpCallFromSysproc(&rec);
    sum += ORV_DoubleScalar(rec.result);
    ORV_Deltmp(rec.result);
  }
  benchmark::DoNotOptimize(sum);
}

void square_less_two(benchmark::State& state) {
  call(state, "function f(x) = x^2 - 2");
}
BENCHMARK(square_less_two);

void block_with_locals(benchmark::State& state) {
  call(state, "function f(x)\n y = x * x\n if y > 2\n return y - 2\n else\n return 2 - y\n end\nend");
}
BENCHMARK(block_with_locals);

void call_of_a_second_function(benchmark::State& state) {
  call(state, "function g(x) = x * x\nfunction f(x) = g(x) - sin(x)");
}
BENCHMARK(call_of_a_second_function);

}  // namespace

BENCHMARK_MAIN();
