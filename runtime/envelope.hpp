// The shape of every public function: frame, trap, worker, release of work memory, pop.
#pragma once

#include <csetjmp>
#include <type_traits>

#include "runtime/error.hpp"
#include "runtime/machine.hpp"
#include "runtime/scratch.hpp"
#include "runtime/trap.hpp"

namespace zent {

namespace envelope {

struct Nothing {};  // result of a worker that returns none

template <class Body>
auto run(Body& body) {
  if constexpr (std::is_void_v<decltype(body())>) {
    body();
    return Nothing{};
  } else {
    return body();
  }
}

// Out of line: the frame with the jump point then holds nothing that the body could have kept in a register across the jump.
template <class Half, class Result, class Body>
[[gnu::noinline]] void run_armed(Result& result, Body& body) {
  trap_on<Half>();
  Result value = run(body);
  --error_state<Half>.jump_depth;
  trap_off<Half>();
  result = value;
}

// The one place that knows about jumps. A jump arrives with the frames of the body abandoned, so nothing that stands in them, and
// nothing here, may need a destructor. `result` stays what a failing call returns unless the body ran to its end.
template <class Half, class Result, class Body>
[[gnu::noinline]] void run_trapped(Result& result, Body& body) {
  ErrorState& state = error_state<Half>;
  if (trap_depth<Half> >= trap_depth_limit || state.jump_depth >= jump_buffer_count) {
    ++trap_depth<Half>;  // counted, not armed: a fault here goes to the innermost armed call
    result = run(body);
    --trap_depth<Half>;
    return;
  }
  const Standing own = standing<Half>();
  const Standing other = standing<typename Half::Other>();
  if (setjmp(state.jump[state.jump_depth++].buffer) == 0) {
    run_armed<Half>(result, body);
  } else {
    trap_return<Half>(own, other);
  }
}

template <class Half, bool trapping, class Body>
auto call(const char* name, Body& body) {
  static_assert(std::is_trivially_destructible_v<Body>);
  using Result = decltype(run(body));
  Result result = failure_value<Result>();
  void* const mark = scratch_mark<Half>();
  push<Half>(name);
  if (!failed<Half>()) {
    if (trapping && trap_status<Half> != 0) {
      run_trapped<Half>(result, body);
    } else {
      result = run(body);
    }
  }
  if (scratch_mark<Half>() != mark) scratch_release<Half>(mark);
  pop<Half>(name);
  return result;
}

}  // namespace envelope

// A public function whose worker touches memory or functions of the caller.
template <class Half, class Body>
auto public_call(const char* name, Body body) {
  auto result = envelope::call<Half, true>(name, body);
  if constexpr (!std::is_same_v<decltype(result), envelope::Nothing>) return result;
}

// A public function of scalars alone: there is nothing to trap.
template <class Half, class Body>
auto scalar_call(const char* name, Body body) {
  auto result = envelope::call<Half, false>(name, body);
  if constexpr (!std::is_same_v<decltype(result), envelope::Nothing>) return result;
}

}  // namespace zent
