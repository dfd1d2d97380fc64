// The check of a storage or data argument that comes with an option.
#pragma once

#include "runtime/error.hpp"
#include "zent.h"

namespace zent {

// Raises 104 for null; the pointer comes back either way.
template <class T>
T* not_null(T* pointer, const char* argument, const char* option) {
  if (pointer == nullptr) raise<Math>(5, MATH_OPTIONAL_ARG_NULL_1, {.l = {argument, option}});
  return pointer;
}

}  // namespace zent
