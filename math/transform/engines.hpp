// The engine of each instruction set.
#pragma once

#include "math/transform/plan.hpp"

namespace zent::transform {

const Engine<float>* engine_base_single();
const Engine<double>* engine_base_double();
const Engine<float>* engine_avx2_single();
const Engine<double>* engine_avx2_double();
const Engine<float>* engine_avx512_single();
const Engine<double>* engine_avx512_double();

}  // namespace zent::transform
