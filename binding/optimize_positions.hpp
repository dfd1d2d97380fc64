// What the wrappers of minimization and of root finding share.
#pragma once

#include <cmath>
#include <cstdio>

#include "binding/callback.hpp"
#include "binding/least_squares_positions.hpp"
#include "runtime/machine.hpp"

namespace zent::binding {

// Integer options are read in 32 bits: a greater one must not come out as another number.
inline bool fits_option(const Arguments& arguments, int k) {
  if (!arguments.present[k] || arguments.integer(k) == static_cast<int>(arguments.integer(k))) return true;
  static char text[120];
  std::snprintf(text, sizeof text, "%s: argument %s does not fit in 32 bits", arguments.routine->label,
                arguments.routine->positions[k].name);
  return refuse(text);
}

// Where the host returned from raising a user function's error, the values are none.
template <class Real>
void call_vector_or_none(ORV_IDENT routine, long n, const Real* x, long m, Real* out) {
  if (call_vector<Real>(routine, n, x, m, out)) return;
  for (long i = 0; i < m; ++i) out[i] = Machine<Real>::not_a_number;
}

// A user's routine in its static for the time of a call; a call inside the user's routine puts the outer one back.
struct Slot {
  ORV_IDENT* slot;
  ORV_IDENT outer;

  void put_back() const {
    *slot = outer;
  }
};
inline Slot occupy(ORV_IDENT& slot, const Arguments& arguments, int k) {
  const Slot before = {&slot, slot};
  if (arguments.present[k]) slot = user_routine(arguments.variable[k]);
  return before;
}

}  // namespace zent::binding
