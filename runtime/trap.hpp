// The signal trap: a segmentation fault or an illegal instruction inside a public function ends in an error, not in the process.
#pragma once

#include "runtime/error.hpp"
#include "runtime/half.hpp"
#include "runtime/scratch.hpp"
#include "zent/base.h"

namespace zent {

inline constexpr long trap_depth_limit = 15;  // 40 save slots, two signals for each depth: depths 0 to 14 can be armed

template <class Half>
struct TrapStorage {
  static long status, depth;
  static bool installed[trap_depth_limit];
};
extern template long TrapStorage<Math>::status;
extern template long TrapStorage<Stat>::status;
extern template long TrapStorage<Math>::depth;
extern template long TrapStorage<Stat>::depth;
extern template bool TrapStorage<Math>::installed[trap_depth_limit];
extern template bool TrapStorage<Stat>::installed[trap_depth_limit];

// Process-wide switch of the half, 1 at first.
template <class Half>
inline constexpr long& trap_status = TrapStorage<Half>::status;

// How many traps are armed or counted.
template <class Half>
inline constexpr long& trap_depth = TrapStorage<Half>::depth;

// The half (by its id) whose handlers stand now, 0 without one; and at which depths a half installed them. A half armed inside an
// armed call of its own finds its handlers in place; inside one of the other half it must put its own on top.
inline constinit long trap_owner = 0;
template <class Half>
inline constexpr bool (&trap_installed)[trap_depth_limit] = TrapStorage<Half>::installed;

template <class Half>
void trap_install(long depth);
template <class Half>
void trap_restore(long depth);

// Arms (the handlers are installed only where they do not stand already) and counts the depth up; and back.
template <class Half>
inline void trap_on() {
  const long depth = trap_depth<Half> ++;
  error_state<Half>.signal_jump = 0;
  if (depth < trap_depth_limit && (depth == 0 || trap_owner != Half::id)) trap_install<Half>(depth);
}
template <class Half>
inline void trap_off() {
  if (trap_depth<Half> == 0) return;
  const long depth = --trap_depth<Half>;
  if (depth < trap_depth_limit && trap_installed<Half>[depth]) trap_restore<Half>(depth);
}

// After a caught fault: the depth is `depth` again, and the handlers stand for the outer traps.
template <class Half>
void trap_caught(long depth);

// What a call of one half finds, so that it can put it back after a fault.
struct Standing {
  long trap_depth, jump_depth;
  void* scratch;
  Frame* top;
};
template <class Half>
inline Standing standing() {
  return {trap_depth<Half>, error_state<Half>.jump_depth, scratch_newest<Half>, error_state<Half>.top};
}

// The way back of a call whose body was cut short: both halves as the call found them, 102 raised, left frames dropped.
template <class Half>
void trap_return(const Standing& own, const Standing& other);

template <class Half>
void trap_mark(zent_trap_state* state);
template <class Half>
void trap_release(const zent_trap_state* state);

}  // namespace zent
