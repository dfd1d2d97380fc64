// Calls of the user's functions from the root finders.
#pragma once

#include <cmath>

#include "runtime/envelope.hpp"
#include "runtime/options.hpp"

namespace zent::roots {

// Runs `call` as part of the calling program. What a library call inside it leaves in this frame is told when that call returns;
// here it is taken back, so that an error which the user's function has dealt with does not end the search as failed.
template <class Call>
inline void user_call(Call call) {
  ErrorState& state = error_state<Math>;
  const Frame own = *state.top;
  user_frame<Math>(true);
  call();
  user_frame<Math>(false);
  state.top->type = own.type;
  state.top->number = own.number;
  state.type_word[0] = own.type;
  state.number_word[0] = own.number;
}

}  // namespace zent::roots
