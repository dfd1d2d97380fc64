// The one way into a function of the user and back.
#pragma once

#include <type_traits>

#include "runtime/error.hpp"

namespace zent {

// Marks the current frame as a calling program and remembers it. Errors of library calls are delivered there, and their severity
// climbs into this frame, so that nobody takes a result for sound that a failed inner call had a part in.
template <class Half>
inline Frame* enter_user() {
  user_frame<Half>(true);
  return error_state<Half>.top;
}

// To that frame, and to what stands in it. Frames above it are those of calls inside the user's function that an error of the
// host cut off and the user caught: nobody else takes them away.
template <class Half>
inline void back_to(Frame* own) {
  ErrorState& state = error_state<Half>;
  if (state.top == own) [[likely]]
    return;
  state.top = own;
  state.type_word[0] = own->type;
  state.number_word[0] = own->number;
}
template <class Half>
inline void leave_user(Frame* own) {
  back_to<Half>(own);
  user_frame<Half>(false);
}

// Type 6, a repaired argument, in the own frame would hide the fatal errors that climb later: they stand lower. While a function
// of the user runs it is set aside, and put back where nothing worse has come. The number, 0 for none.
template <class Half>
inline long set_repair_aside() {
  ErrorState& state = error_state<Half>;
  if (state.top->type != 6) [[likely]]
    return 0;
  const long number = state.top->number;
  state.top->type = 0;
  state.top->number = state.type_word[0] = state.number_word[0] = 0;
  return number;
}
template <class Half>
inline void put_repair_back(long number) {
  ErrorState& state = error_state<Half>;
  if (number == 0 || state.top->type > 3) [[likely]]
    return;
  state.top->type = 6;
  state.type_word[0] = 6;
  state.top->number = state.number_word[0] = number;
}

// Both around one call.
template <class Half, class Call>
inline auto user_call(const Call& call) {
  const long repair = set_repair_aside<Half>();
  Frame* const own = enter_user<Half>();
  if constexpr (std::is_void_v<decltype(call())>) {
    call();
    leave_user<Half>(own);
    put_repair_back<Half>(repair);
  } else {
    const auto value = call();
    leave_user<Half>(own);
    put_repair_back<Half>(repair);
    return value;
  }
}

// An error above `level` stands in the current frame: one of the user's function that climbed. Type 6, a repaired argument, is
// none.
template <class Half>
inline bool stands_above(long level) {
  const long type = error_state<Half>.type_word[0];
  return type > level && type != 6;
}

}  // namespace zent
