// The passes compiled for one instruction set; CMakeLists.txt gives this unit its flags.
#if defined(__x86_64__)
#include "math/transform/engines.hpp"
#include "math/transform/plan.hpp"
#define ZENT_LEVEL avx512
#define ZENT_WIDE 64
#include "math/transform/engine.inc"

namespace zent::transform {
const Engine<float>* engine_avx512_single() {
  return &avx512::engine_of<float>;
}
const Engine<double>* engine_avx512_double() {
  return &avx512::engine_of<double>;
}
}  // namespace zent::transform
#endif
