// The passes compiled for one instruction set; CMakeLists.txt gives this unit its flags.
#include "math/transform/engines.hpp"
#include "math/transform/plan.hpp"
#define ZENT_LEVEL base
#define ZENT_WIDE 16
#include "math/transform/engine.inc"

namespace zent::transform {
const Engine<float>* engine_base_single() {
  return &base::engine_of<float>;
}
const Engine<double>* engine_base_double() {
  return &base::engine_of<double>;
}
}  // namespace zent::transform
