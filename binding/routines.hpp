// The wrappers and their position tables, one unit a routine.
#pragma once

#include "binding/positions.hpp"

namespace zent::binding {

#define BUILT(number, label, least, most, half)                 \
  long mathstat_##number(int argc, ORV_VARIABLE** argv, char*); \
  extern const Routine routine_##number;
#define PENDING(number, label, least, most, half)
#include "binding/routines.def"
#undef BUILT
#undef PENDING

}  // namespace zent::binding
