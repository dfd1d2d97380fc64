// Argument checks of public functions. Each steps the position counter by the values it tests, raises a type 5 error when one is
// out of range, and lets the caller go on, so that several bad arguments are reported before the body tests failed().
#pragma once

#include "runtime/half.hpp"

namespace zent {

// low <= value <= high; with low > high there is no upper bound.
template <class Half>
void c1iarg(long value, const char* name, long low, long high, long* counter);

// a <= b.
template <class Half>
void c12ile(long a, const char* name_a, long b, const char* name_b, long* counter);

// a >= low, and a <= high if high is at least 1. low must be 0 or more.
template <class Half>
void c1ind(long low, long a, const char* name_a, long high, const char* name_high, long* counter);

// a >= low, b >= 1, a <= b; a name_a that starts with "*" drops the first.
template <class Half>
void c1dim(long low, long a, const char* name_a, long b, const char* name_b, long* counter);

// x >= 0.
template <class Half>
void c1ge0(const char* name, long* counter, double x);

}  // namespace zent
