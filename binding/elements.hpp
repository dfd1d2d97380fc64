// Wrappers that go through arrays element by element.
#pragma once

#include <initializer_list>
#include <type_traits>

#include "binding/routines.hpp"

namespace zent::binding {

// The form of a function for one precision.
template <class Real>
constexpr auto form_of(auto real, auto single) {
  if constexpr (std::is_same_v<Real, double>) {
    return real;
  } else {
    return single;
  }
}

// The number of elements is the value of position `count_from` where that is an integer count, else the count of that array; all
// of `arrays` must hold as many. `run` is called with the number and a value of the precision.
enum class Count : bool { of_array, value };

template <class Run>
long each_element(const Routine& routine, int argc, ORV_VARIABLE** argv, bool is_math, Count kind, int count_from,
                  std::initializer_list<int> arrays, const char* refusal, Run run) {
  const long failed = cmast_init(routine.label);
  if (failed != 0) return failed;
  Arguments a;
  if (!read_arguments(routine, argc, argv, a)) return 0;
  const long count = kind == Count::value ? a.integer(count_from) : a.count[count_from];
  for (int position : arrays) {
    if (a.data[position] != nullptr && a.count[position] >= count) continue;
    refuse(refusal);
    return 0;
  }
  if (a.is_double()) {
    run(a, count, double{});
  } else {
    run(a, count, float{});
  }
  long code;
  cmast_opi_clear_errors(is_math ? 1 : 0, &code, a.status, 1);
  return 0;
}

}  // namespace zent::binding
