// The signal trap: a segmentation fault or an illegal instruction inside a public function ends in an error, not in the process.
#pragma once

#include "runtime/half.hpp"
#include "zent/base.h"

namespace zent {

inline constexpr long trap_depth_limit = 15;  // 40 save slots, two signals for each depth: depths 0 to 14 can be armed

// Process-wide switch of the half, 1 at first.
template <class Half>
extern long trap_status;

// How many traps are armed or counted.
template <class Half>
extern long trap_depth;

// Installs the handlers (at depth 0 only; inside an armed call they stand already) and counts the depth up; and back.
template <class Half>
void trap_on();
template <class Half>
void trap_off();

// After a caught fault: the depth is `depth` again, and the handlers stand for the outer traps.
template <class Half>
void trap_caught(long depth);

template <class Half>
void trap_mark(zent_trap_state* state);
template <class Half>
void trap_release(const zent_trap_state* state);

}  // namespace zent
