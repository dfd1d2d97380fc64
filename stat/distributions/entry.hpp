// The shape of the distribution functions. The value for good arguments comes from a plain form, which needs no frame; the worker
// serves the other arguments, raises, and names what it raised.
#pragma once

#include <cmath>

#include "math/functions/leaf.hpp"
#include "runtime/machine.hpp"

namespace zent::distributions {

using Half = Stat;

// `plain` fills the value and returns true, or returns false and has raised nothing.
template <class Real, class Plain, class Worker>
[[gnu::always_inline]] inline Real entry(const char* name, Plain plain, Worker worker) {
  Real value = 0;
  if (plain(value) && functions::leaf<Half>()) [[likely]]
    return value;
  return scalar_call<Half>(name, worker);
}

template <class Real>
inline double shown(Real x) {
  return static_cast<double>(x);
}

// Raises an error with one real value and gives what a failing function returns.
template <class Real>
Real refuse(long type, long number, Real value) {
  raise<Half>(type, number, {.r = {shown(value)}});
  return Machine<Real>::not_a_number;
}

// Whether p is a probability that has an inverse; false for not-a-number too.
template <class Real>
inline bool is_open_probability(Real p) {
  return p > 0 && p < 1;
}

}  // namespace zent::distributions

// One form of a function of reals: ZENT_ONE(d, double, normal_cdf) defines zents_d_normal_cdf by plain_normal_cdf and
// l_normal_cdf.
#define ZENT_ONE(P, Real, name)                                                                          \
  extern "C" Real zents_##P##_##name(Real a) {                                                           \
    return zent::distributions::entry<Real>(                                                             \
        "zents_" #P "_" #name, [=](Real& value) { return zent::distributions::plain_##name(a, value); }, \
        [=] { return zent::distributions::l_##name(a); });                                               \
  }
#define ZENT_TWO(P, Real, name, A, B)                                                                       \
  extern "C" Real zents_##P##_##name(A a, B b) {                                                            \
    return zent::distributions::entry<Real>(                                                                \
        "zents_" #P "_" #name, [=](Real& value) { return zent::distributions::plain_##name(a, b, value); }, \
        [=] { return zent::distributions::l_##name(a, b); });                                               \
  }
#define ZENT_THREE(P, Real, name, A, B, C)                                                                     \
  extern "C" Real zents_##P##_##name(A a, B b, C c) {                                                          \
    return zent::distributions::entry<Real>(                                                                   \
        "zents_" #P "_" #name, [=](Real& value) { return zent::distributions::plain_##name(a, b, c, value); }, \
        [=] { return zent::distributions::l_##name(a, b, c); });                                               \
  }
