// Option lists: integer codes, each followed by its values, ended by 0.
#pragma once

#include <cstdarg>

#include "runtime/error.hpp"

namespace zent {

// A walk over the variable arguments of a public function. The position counts every code and every value behind the fixed
// arguments. Integers are read in 32 bits, so that plain literals and the binding's 64-bit words both serve.
struct Options {
  va_list list;
  long position;

  int code() {
    ++position;
    return va_arg(list, int);
  }
  long integer() {
    ++position;
    return va_arg(list, int);
  }
  template <class Real>
  Real real() {  // the plain form of an option: varargs carry every real as a double
    ++position;
    return static_cast<Real>(va_arg(list, double));
  }
  template <class T>
  T* pointer() {
    ++position;
    return static_cast<T*>(va_arg(list, void*));
  }
  template <class Function>
  Function function() {
    ++position;
    return reinterpret_cast<Function>(va_arg(list, void*));
  }

  // Raises 103 for a code that no option has. The walk goes on while the result is true: a negative code ends it.
  template <class Half>
  bool unknown(int code) {
    raise<Half>(5, MATH_UNKNOWN_OPTION, {.i = {code, position}});
    return code > 0;
  }
};

}  // namespace zent

// In a variadic entry: ZENT_OPTIONS(options, last, fixed) behind the opening brace, ZENT_OPTIONS_END(options) before the return.
#define ZENT_OPTIONS(options, last, fixed) \
  zent::Options options;                   \
  options.position = fixed;                \
  va_start(options.list, last)
#define ZENT_OPTIONS_END(options) va_end(options.list)
