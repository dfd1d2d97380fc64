// The incomplete gamma function, not divided by gamma(a).
//
// Methods: Gautschi (1979). Taylor series for x <= 1; Legendre's continued fraction, summed forward, for x > 1, in its lower form
// for x <= a and in its upper form beyond. The sums are kept free of the factor x^a exp(-x), which joins them once at the end.
#pragma once

#include "math/functions/gamma.hpp"

namespace zent::functions {

// A sum and what stopped it: 0, or the number of an error.
template <class Real>
struct Sum {
  Real value = 0;
  long number;
};

// a x^-a times the lower integral, for 0 < x <= 1.
template <class Real>
inline Sum<Real> l_r9gmit(Real a, Real x) {
  Real term = 1, sum = 1;
  for (int k = 1; k <= 200; ++k) {
    const Real f = static_cast<Real>(k);
    term *= -x / f;
    const Real added = term * (a / (a + f));
    sum += added;
    if (std::abs(added) < Machine<Real>::spacing / 2 * std::abs(sum)) return {sum, 0};
  }
  return {sum, MATH_NO_CONV_200_TS_TERMS};
}

// h with lower integral = x^a exp(-x)/(a h), for 0 < x <= a.
template <class Real>
inline Sum<Real> l_r9lgit(Real a, Real x) {
  const Real ax = a + x, a1x = ax + 1;
  Real r = 0, p = 1, s = 1;
  for (int k = 1; k <= 200; ++k) {
    const Real f = static_cast<Real>(k);
    const Real t = (a + f) * x * (1 + r);
    r = t / ((ax + f) * (a1x + f) - t);
    p *= r;
    s += p;
    if (std::abs(p) < Machine<Real>::spacing / 2 * s) return {1 - x * s / a1x, 0};
  }
  return {0, MATH_NO_CONV_200_CF_TERMS};
}

// The lower integral for x up to about a as x^a exp(-x)/a times a sum of positive terms. Its divisions do not wait for each
// other, so that it is the faster form while it is short.
template <class Real>
inline Real lower_sum(Real a, Real x) {
  Real term = 1, sum = 1;
  for (int k = 1; k <= 1000; ++k) {
    term *= x / (a + static_cast<Real>(k));
    sum += term;
    if (term < Machine<Real>::spacing / 2 * sum) break;
  }
  return sum;
}

// s/(x + 1 - a) with upper integral = x^a exp(-x) times that, for x > a.
template <class Real>
inline Sum<Real> l_r9lgic(Real a, Real x) {
  const Real xpa = x + 1 - a, xma = x - 1 - a;
  Real r = 0, p = 1, s = 1;
  for (int k = 1; k <= 300; ++k) {
    const Real f = static_cast<Real>(k);
    const Real t = f * (a - f) * (1 + r);
    r = -t / ((xma + 2 * f) * (xpa + 2 * f) + t);
    p *= r;
    s += p;
    if (std::abs(p) < Machine<Real>::spacing / 2 * s) return {s / xpa, 0};
  }
  return {0, MATH_NO_CONV_300_CF_TERMS};
}

// x^a exp(-x) without a rounding error that grows with the exponent; infinite or 0 where the exponential would be.
template <class Real>
inline Real power_times_exponential(Real a, Real x) {
  const Real half = std::pow(x, a / 2);
  const Real damping = std::exp(-x);
  if (half <= Machine<Real>::largest && damping >= Machine<Real>::smallest) return half * damping * half;
  return std::exp(a * std::log(x) - x);
}

// x^a exp(-x) factor, for a factor > 0, in logarithms where the power alone overflows.
template <class Real>
inline Real power_times(Real a, Real x, Real factor) {
  const Real power = power_times_exponential(a, x);
  if (power <= Machine<Real>::largest) [[likely]]
    return power * factor;
  return std::exp(a * std::log(x) - x + std::log(factor));
}

// The Tricomi form: the lower integral for a, x > 0 as x^a gamma(a) times it. `number` tells what stopped a sum; an infinite
// value is an overflow.
template <class Real>
inline Sum<Real> l_gamit(Real a, Real x) {
  const Real infinity = Machine<Real>::infinity;
  if (x <= 1) {
    const Sum<Real> sum = l_r9gmit(a, x);
    return {std::pow(x, a) / a * sum.value, sum.number};
  }
  if (a <= 170 && x <= a + 3) return {power_times(a, x, lower_sum(a, x) / a), 0};
  if (a >= x) {
    const Sum<Real> h = l_r9lgit(a, x);
    if (h.number != 0) return h;
    return {power_times(a, x, 1 / (a * h.value)), h.value < std::sqrt(Machine<Real>::epsilon) ? long{MATH_LT_HALF_ACCURATE} : 0L};
  }
  const GammaLimits<Real>& limits = gamma_limits<Real>;
  if (a < limits.xsml) return {1 / a, 0};  // gamma(a), and what is left above x does not count beside it
  Real whole = 0;
  if (x > Machine<Real>::largest) return {plain_gamma(a, whole) ? whole : infinity, 0};
  const Sum<Real> tail = l_r9lgic(a, x);
  if (tail.number != 0) return tail;
  if (plain_gamma(a, whole)) return {whole - power_times(a, x, tail.value), 0};
  // gamma(a) overflows; its product with the lower share may not.
  const Real log_whole = log_gamma_by_stirling(a);
  const Real share = 1 - std::exp(a * std::log(x) - x - log_whole) * tail.value;
  const Real exponent = log_whole + std::log(share);
  return {share > 0 && exponent <= std::log(Machine<Real>::largest) ? std::exp(exponent) : infinity, 0};
}

template <class Real>
inline bool plain_gamma_incomplete(Real a, Real x, Real& value) {
  if (!(a > 0) || !(x > 0)) {
    value = 0;
    return a > 0 && x == 0;
  }
  const Sum<Real> sum = l_gamit(a, x);
  value = sum.value;
  return sum.number == 0 && value <= Machine<Real>::largest;
}

template <class Half, class Real>
Real l_gamma_incomplete(Real a, Real x) {
  if (a != a || x != x) return a != a ? a : x;
  const double shown_a = static_cast<double>(a), shown_x = static_cast<double>(x);
  if (a <= 0) raise<Half>(5, MATH_FIRST_ARG_LT_ZERO, {.r = {shown_a}});
  if (x < 0) raise<Half>(5, MATH_SECOND_ARG_LT_ZERO, {.r = {shown_x}});
  if (a <= 0 || x < 0) return Machine<Real>::not_a_number;
  if (x == 0) return 0;
  const Sum<Real> sum = l_gamit(a, x);
  if (sum.number == MATH_LT_HALF_ACCURATE) {
    raise<Half>(3, sum.number);
  } else if (sum.number != 0) {
    raise<Half>(4, sum.number);
    return Machine<Real>::not_a_number;
  }
  if (sum.value <= Machine<Real>::largest) return sum.value;
  raise<Half>(4, MATH_X_AND_A_ARE_TOO_LARGE, {.r = {shown_x, shown_a}});
  return Machine<Real>::not_a_number;
}
template <class Half, class Real>
inline Real gamma_incomplete(Real a, Real x) {
  Real value = 0;
  if (plain_gamma_incomplete(a, x, value) && leaf<Half>()) [[likely]]
    return value;
  return scalar_call<Half>(ZENT_FRAME("gamma_incomplete"), [=] { return l_gamma_incomplete<Half>(a, x); });
}

}  // namespace zent::functions
