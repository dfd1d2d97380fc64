// Calls of the user's functions from the root finders.
#pragma once

#include <cmath>

#include "runtime/envelope.hpp"
#include "runtime/options.hpp"

namespace zent::roots {

// Runs `call` as part of the calling program. What a library call inside it leaves in this frame is told when that call returns;
// here it is taken back, so that an error which the user's function has dealt with does not end the search as failed. Frames
// above this one are those of calls that an error of the host cut off and the user's function caught.
template <class Call>
inline void user_call(Call call) {
  ErrorState& state = error_state<Math>;
  Frame* const top = state.top;
  const Frame own = *top;
  user_frame<Math>(true);
  call();
  state.top = top;
  user_frame<Math>(false);
  top->type = own.type;
  top->number = own.number;
  state.type_word[0] = own.type;
  state.number_word[0] = own.number;
}

}  // namespace zent::roots
