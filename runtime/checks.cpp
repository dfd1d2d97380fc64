#include "runtime/checks.hpp"

#include "runtime/error.hpp"

namespace zent {

namespace {

void step(long* counter, long values) {
  if (counter != nullptr) *counter += values;
}

template <class Half>
void at_least(long value, const char* name, long low) {
  if (value < low) raise<Half>(5, MATH_INEQUALITY_VIOLATION_3, {.i = {value, low}, .l = {name}});
}

template <class Half>
void ordered(long a, const char* name_a, long b, const char* name_b) {
  if (a > b) raise<Half>(5, MATH_INEQUALITY_VIOLATION, {.i = {a, b}, .l = {name_a, name_b}});
}

}  // namespace

template <class Half>
void c1iarg(long value, const char* name, long low, long high, long* counter) {
  step(counter, 1);
  if (low > high) {
    at_least<Half>(value, name, low);
  } else if (value < low || value > high) {
    raise<Half>(5, MATH_INEQUALITY_VIOLATION_2, {.i = {value, low, high}, .l = {name}});
  }
}

template <class Half>
void c12ile(long a, const char* name_a, long b, const char* name_b, long* counter) {
  step(counter, 2);
  ordered<Half>(a, name_a, b, name_b);
}

template <class Half>
void c1ind(long low, long a, const char* name_a, long high, const char* name_high, long* counter) {
  c1iarg<Half>(a, name_a, low, -1, counter);
  if (high >= 1) ordered<Half>(a, name_a, high, name_high);
}

template <class Half>
void c1dim(long low, long a, const char* name_a, long b, const char* name_b, long* counter) {
  step(counter, 2);
  const bool starred = name_a != nullptr && name_a[0] == '*';
  if (!starred) at_least<Half>(a, name_a, low);
  at_least<Half>(b, name_b, 1);
  ordered<Half>(a, name_a + (starred ? 1 : 0), b, name_b);
}

template <class Half>
void c1ge0(const char* name, long* counter, double x) {
  step(counter, 1);
  if (!(x >= 0)) raise<Half>(5, MATH_NEED_RARG_GE_ZERO, {.r = {x}, .l = {name}});
}

#define ZENT_INSTANTIATE(Half)                                                  \
  template void c1iarg<Half>(long, const char*, long, long, long*);             \
  template void c12ile<Half>(long, const char*, long, const char*, long*);      \
  template void c1ind<Half>(long, long, const char*, long, const char*, long*); \
  template void c1dim<Half>(long, long, const char*, long, const char*, long*); \
  template void c1ge0<Half>(const char*, long*, double);
ZENT_INSTANTIATE(Math)
ZENT_INSTANTIATE(Stat)
#undef ZENT_INSTANTIATE

}  // namespace zent
