// The way into a function of the user and back.
#pragma once

#include "runtime/error.hpp"

namespace zent {

// Marks the current frame as a calling program and remembers it.
template <class Half>
inline Frame* enter_user() {
  user_frame<Half>(true);
  return error_state<Half>.top;
}

// Back in that frame. Frames above it are those of calls inside the user's function that an error of the host cut off and the user
// caught: nobody else takes them away.
template <class Half>
inline void leave_user(Frame* own) {
  error_state<Half>.top = own;
  user_frame<Half>(false);
}

}  // namespace zent
