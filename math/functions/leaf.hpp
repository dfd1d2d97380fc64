// The short way through the envelope. A function of scalars that raises nothing leaves the error state as a push and a pop would:
// the values of the common arguments are computed first, without a frame, and only the others go through scalar_call.
#pragma once

#include <type_traits>

#include "runtime/envelope.hpp"

namespace zent::functions {

// What a call without an error leaves behind; false (and nothing done) when the frames need the full way.
template <class Half>
[[gnu::always_inline]] inline bool leaf() {
  ErrorState& state = error_state<Half>;
  Frame* const top = state.top;
  if (state.signal_jump != 0 || top == state.frame + (frame_count - 1)) [[unlikely]]
    return false;
  if (top == state.frame) {
    state.message[0] = '\0';
    top->type = 0;
  }
  if (top->type == 0) top->number = 0;
  state.type_word[1] = 0;
  state.number_word[1] = 0;
  state.type_word[0] = top->type;
  state.number_word[0] = top->number;
  return true;
}

// The name that error frames show for one half and precision.
template <class Half, class Real>
constexpr const char* pick(const char* math_f, const char* math_d, const char* stat_f, const char* stat_d) {
  if constexpr (Half::is_math) {
    return std::is_same_v<Real, float> ? math_f : math_d;
  } else {
    return std::is_same_v<Real, float> ? stat_f : stat_d;
  }
}
#define ZENT_FRAME(name) zent::functions::pick<Half, Real>("zent_f_" name, "zent_d_" name, "zents_f_" name, "zents_d_" name)

}  // namespace zent::functions
