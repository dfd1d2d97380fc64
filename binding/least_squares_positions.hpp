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

}  // namespace zent::binding
