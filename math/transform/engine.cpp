// The choice of the engine.
#include "math/transform/engines.hpp"

namespace zent::transform {

namespace {
Level limit = Level::avx512;
}

Level top_level() {
#if defined(__x86_64__)
  static const Level best = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
                                    __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw")
                                ? Level::avx512
                            : __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") ? Level::avx2
                                                                                              : Level::base;
  return best < limit ? best : limit;
#else
  return Level::base;
#endif
}

void limit_level(Level level) {
  limit = level;
}

template <>
const Engine<float>& engine<float>() {
  const Level level = top_level();
  if (level == Level::avx512) return *engine_avx512_single();
  return level == Level::avx2 ? *engine_avx2_single() : *engine_base_single();
}
template <>
const Engine<double>& engine<double>() {
  const Level level = top_level();
  if (level == Level::avx512) return *engine_avx512_double();
  return level == Level::avx2 ? *engine_avx2_double() : *engine_base_double();
}

}  // namespace zent::transform
