// Arithmetic in two parts, for phases and exponents whose rounding would otherwise be multiplied by their size.
#pragma once

#include <cmath>

#include "math/functions/series.hpp"

namespace zent::functions {

// A number as the sum of a rounded value and what the rounding lost.
template <class Real>
struct Two {
  Real high, low;
};

template <class Real>
inline Two<Real> two_sum(Real a, Real b) {
  const Real s = a + b, t = s - a;
  return {s, (a - (s - t)) + (b - t)};
}

template <class Real>
inline Two<Real> times(Two<Real> a, Two<Real> b) {
  const Real p = a.high * b.high;
  return {p, std::fma(a.high, b.high, -p) + (a.high * b.low + a.low * b.high)};
}

// A constant of 106 bits, cut to the precision of the form.
template <class Real>
constexpr Two<Real> constant(double high, double low) {
  const Real top = static_cast<Real>(high);
  return {top, static_cast<Real>((high - static_cast<double>(top)) + low)};
}

template <class Real>
inline constexpr Two<Real> quarter_pi = constant<Real>(0x1.921fb54442d18p-1, 0x1.1a62633145c07p-55);
template <class Real>
inline constexpr Two<Real> eighth_pi = constant<Real>(0x1.921fb54442d18p-2, 0x1.1a62633145c07p-56);
template <class Real>
inline constexpr Two<Real> root_half = constant<Real>(0x1.6a09e667f3bcdp-1, -0x1.bdd3413b26456p-55);
template <class Real>
inline constexpr Two<Real> two_thirds = constant<Real>(0x1.5555555555555p-1, 0x1.5555555555555p-55);

// 2/3 x^(3/2) for x > 0, from a square root that one Newton step completes.
template <class Real>
inline Two<Real> zeta_of(Real x) {
  const Real r = std::sqrt(x);
  const Two<Real> root = {r, std::fma(-r, r, x) / (2 * r)};
  return times(times(root, {x, 0}), two_thirds<Real>);
}

// scale exp(a), also where exp(a) alone leaves the range: then a part of it stands aside.
template <class Real>
inline Real scaled_exp(Real scale, Two<Real> a) {
  const Real aside = 40;
  const Real limit = std::log(Machine<Real>::largest) - aside;
  const Real factor = 1 + a.low;
  if (std::abs(a.high) < limit) return scale * factor * std::exp(a.high);
  const Real step = a.high < 0 ? -aside : aside;
  return scale * factor * std::exp(a.high - step) * std::exp(step);
}

// log(x / 2) for x > 0, also where the half of x would be rounded away.
template <class Real>
inline Real log_of_half(Real x) {
  return x > 4 * Machine<Real>::smallest ? std::log(x / 2) : std::log(x) - static_cast<Real>(0.693147180559945309417);
}

template <class Real>
struct Angle {
  Real cosine, sine;
};

// Cosine and sine of a + b, where b is small against 1 or against a.
template <class Real>
inline Angle<Real> cosine_sine(Two<Real> a, Real b) {
  const Two<Real> sum = two_sum(a.high, b);
  const Real c = std::cos(sum.high), s = std::sin(sum.high), r = sum.low + a.low;
  Real dc = -r * r / 2, ds = r * (1 + dc / 3);   // cos r - 1 and sin r
  if (r * r * r * r > Machine<Real>::spacing) {  // so far out that even the lost part is an angle of its own
    dc = std::cos(r) - 1;
    ds = std::sin(r);
  }
  return {c + (c * dc - s * ds), s + (s * dc + c * ds)};
}

}  // namespace zent::functions
