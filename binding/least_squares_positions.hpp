// What the wrappers of least squares and singular values share: arrays must hold what the call reads and writes.
#pragma once

#include <cstdio>

#include "binding/routines.hpp"
#include "zent.h"

namespace zent::binding {

// Refuses a given array of fewer than rows times columns elements; sizes below 1 are left to the library.
inline bool holds(const Arguments& arguments, int k, long rows, long columns = 1) {
  long needed = 0;
  if (!arguments.present[k] || rows < 1 || columns < 1) return true;
  if (!__builtin_mul_overflow(rows, columns, &needed) && arguments.count[k] >= needed) return true;
  static char text[160];
  std::snprintf(text, sizeof text, "%s: argument %s has fewer elements than the sizes given ask for", arguments.routine->label,
                arguments.routine->positions[k].name);
  return refuse(text);
}

// The default of a tolerance that a call takes by address, in both precisions.
struct DefaultTolerance {
  double twice;
  float single;

  const void* address(const Arguments& arguments, int k) const {  // of the argument where it is given
    if (arguments.present[k]) return arguments.data[k];
    return arguments.real_type() == ORV_TYP_DOUBLE ? static_cast<const void*>(&twice) : &single;
  }
};

}  // namespace zent::binding
