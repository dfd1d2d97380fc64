// Airy functions and their derivatives.
#include <cmath>

#include "math/functions/bessel_parts.hpp"
#include "zent/bessel.h"

namespace zent {
namespace {

#include "math/functions/tables/airy_near.inc"
#include "math/functions/tables/airy_negative.inc"
#include "math/functions/tables/airy_positive.inc"

using functions::Angle;
using functions::Two;
using series::evaluate;

// Modulus and phase for x = -y < -1: Ai = modulus cos(phase), Bi = -modulus sin(phase), and for the derivatives
// Bi' = modulus cos(phase), Ai' = modulus sin(phase). The phase is zeta - pi/4 + correction / y^(3/2).
template <class Real>
struct Polar {
  Real modulus;
  Angle<Real> phase;
};

template <class M1, class M2, class M3, class P1, class P2, class P3, class Real>
void l_polar_series(Real y, Real& modulus, Real& correction) {
  if (y <= 2) {
    modulus = evaluate<M1>(2 * y - 3);
    correction = evaluate<P1>(2 * y - 3);
  } else if (y <= 4) {
    modulus = evaluate<M2>(y - 3);
    correction = evaluate<P2>(y - 3);
  } else {
    const Real t = 128 / y / (y * y) - 1;
    modulus = evaluate<M3>(t);
    correction = evaluate<P3>(t);
  }
}

template <class Real>
Polar<Real> l_polar(Real y, Real modulus, Real correction, Real quartic) {
  const Two<Real> zeta = functions::zeta_of(y);
  const Two<Real> sum = functions::two_sum(zeta.high, -functions::quarter_pi<Real>.high);
  const Two<Real> phase = {sum.high, sum.low + (zeta.low - functions::quarter_pi<Real>.low)};
  return {modulus * quartic, functions::cosine_sine(phase, correction / (y * std::sqrt(y)))};
}

// x > -1 raises 13501, which no caller here does.
template <class Real>
Polar<Real> l_d9aimp(Real x) {
  if (x > -1) raise<Math>(5, MATH_INEQUALITY_VIOLATION_5, {.r = {static_cast<double>(x), -1}, .l = {"x"}});
  Real modulus, correction;
  l_polar_series<lv_am1, lv_am2, lv_am3, lv_ap1, lv_ap2, lv_ap3>(-x, modulus, correction);
  return l_polar(-x, modulus, correction, 1 / std::sqrt(std::sqrt(-x)));
}
template <class Real>
Polar<Real> l_d9admp(Real x) {
  Real modulus, correction;
  l_polar_series<lv_amd1, lv_amd2, lv_amd3, lv_apd1, lv_apd2, lv_apd3>(-x, modulus, correction);
  return l_polar(-x, modulus, correction, std::sqrt(std::sqrt(-x)));
}

// Where the phase itself leaves the range: the functions have died away, the derivatives have no value.
template <class Real>
bool beyond_phases(Real x) {
  return -x * std::sqrt(-x) > Machine<Real>::largest / 4;
}

// x^3, or 0 where it does not count.
template <class Real>
Real cube(Real x) {
  const Real least = std::pow(Machine<Real>::spacing, static_cast<Real>(0.3334));
  return std::abs(x) > least ? x * x * x : 0;
}

// Scaled functions for x > 1: exp(zeta) Ai, -exp(zeta) Ai', exp(-zeta) Bi, exp(-zeta) Bi' (Bi from 2 on).
template <class Middle, class Far, class Real>
Real l_scaled_ai(Real x, Real s) {
  return x <= 4 ? evaluate<Middle>((16 / s - 9) / 7) : evaluate<Far>(16 / s - 1);
}
template <class Middle, class Far, class Real>
Real l_scaled_bi(Real x, Real s) {  // 1/s runs from 1/8 to 1/sqrt(8) on 2 to 4
  if (x > 4) return evaluate<Far>(16 / s - 1);
  const Real high = 1 / std::sqrt(static_cast<Real>(8)), low = static_cast<Real>(0.125);
  return evaluate<Middle>((2 / s - (high + low)) / (high - low));
}
template <class Real>
Real l_daie(Real x, Real root) {
  return l_scaled_ai<lv_aim, lv_aip>(x, x * root) / std::sqrt(root);
}
template <class Real>
Real l_daide(Real x, Real root) {
  return -l_scaled_ai<lv_aidm, lv_aidp>(x, x * root) * std::sqrt(root);
}
template <class Real>
Real l_dbie(Real x, Real root) {
  return l_scaled_bi<lv_bim, lv_bip>(x, x * root) / std::sqrt(root);
}
template <class Real>
Real l_dbide(Real x, Real root) {
  return l_scaled_bi<lv_bidm, lv_bidp>(x, x * root) * std::sqrt(root);
}

// The x at which exp(-zeta), or exp(zeta), with the power of x beside it reaches the limit whose logarithm is given: the root of
// the leading exponent and one Newton step. sign: +1 when the power makes the limit come earlier.
template <class Real>
Real limit_of(Real logarithm, Real sign) {
  const Real z = std::pow(static_cast<Real>(1.5) * logarithm, static_cast<Real>(0.6667));
  return z - sign * (z * std::log(z)) / (4 * z * std::sqrt(z) + 1) - static_cast<Real>(0.01);
}

template <class Real>
Real alert_underflow(Real x, Real limit) {
  raise<Math>(2, MATH_LARGE_ARG_UNDERFLOW, {.r = {static_cast<double>(x), static_cast<double>(limit)}});
  return 0;
}
template <class Real>
Real refuse_large(Real x, Real limit) {
  raise<Math>(5, MATH_LARGE_ARG_OVERFLOW, {.r = {static_cast<double>(x), static_cast<double>(limit)}});
  return Machine<Real>::not_a_number;
}

template <class Real>
Real falling(Real scale, Real x) {
  const Two<Real> zeta = functions::zeta_of(x);
  return functions::scaled_exp<Real>(scale, {-zeta.high, -zeta.low});
}
template <class Real>
Real rising(Real scale, Real x) {
  return functions::scaled_exp(scale, functions::zeta_of(x));
}

template <class Real>
Real l_airy_Ai(Real x) {
  if (x < -1) {
    if (beyond_phases(x)) return 0;
    const Polar<Real> p = l_d9aimp(x);
    return p.modulus * p.phase.cosine;
  }
  if (x <= 1) {
    const Real w = cube(x);
    return static_cast<Real>(0.375) + (evaluate<lv_aif>(w) - x * (static_cast<Real>(0.25) + evaluate<lv_aig>(w)));
  }
  if (x != x) return x;
  const Real limit = limit_of<Real>(-std::log(Machine<Real>::smallest), 1);
  if (x > limit) return alert_underflow(x, limit);
  return falling(l_daie(x, std::sqrt(x)), x);
}

template <class Real>
Real l_airy_Ai_derivative(Real x) {
  if (x < -1) {
    if (beyond_phases(x)) return Machine<Real>::not_a_number;
    const Polar<Real> p = l_d9admp(x);
    return p.modulus * p.phase.sine;
  }
  if (x <= 1) {
    const Real w = cube(x);
    return (x * x * (static_cast<Real>(0.125) + evaluate<lv_aidf>(w)) - evaluate<lv_aidg>(w)) - static_cast<Real>(0.25);
  }
  if (x != x) return x;
  const Real limit = limit_of<Real>(-std::log(Machine<Real>::smallest), -1);
  if (x > limit) return alert_underflow(x, limit);
  return falling(l_daide(x, std::sqrt(x)), x);
}

template <class Real>
Real l_airy_Bi(Real x) {
  if (x < -1) {
    if (beyond_phases(x)) return 0;
    const Polar<Real> p = l_d9aimp(x);
    return -p.modulus * p.phase.sine;
  }
  if (x <= 1) {
    const Real w = cube(x);
    return static_cast<Real>(0.625) + (evaluate<lv_bif>(w) + x * (static_cast<Real>(0.4375) + evaluate<lv_big>(w)));
  }
  if (x <= 2) return evaluate<lv_bin>(2 * x - 3);
  if (x != x) return x;
  const Real limit = limit_of<Real>(std::log(Machine<Real>::largest), -1);
  if (x > limit) return refuse_large(x, limit);
  return rising(l_dbie(x, std::sqrt(x)), x);
}

template <class Real>
Real l_airy_Bi_derivative(Real x) {
  if (x < -1) {
    if (beyond_phases(x)) return Machine<Real>::not_a_number;
    const Polar<Real> p = l_d9admp(x);
    return p.modulus * p.phase.cosine;
  }
  if (x <= 1) {
    const Real w = cube(x);
    return x * x * (static_cast<Real>(0.25) + evaluate<lv_bidf>(w)) + (evaluate<lv_bidg>(w) + static_cast<Real>(0.5));
  }
  if (x <= 2) return evaluate<lv_bidn>(2 * x - 3);
  if (x != x) return x;
  const Real limit = limit_of<Real>(std::log(Machine<Real>::largest), 1);
  if (x > limit) return refuse_large(x, limit);
  return rising(l_dbide(x, std::sqrt(x)), x);
}

}  // namespace
}  // namespace zent

#define ZENT_FORM(P, Real, name)                                                                                   \
  extern "C" Real zent_##P##_airy_##name(Real x) {                                                                 \
    return zent::scalar_call<zent::Math>("zent_" #P "_airy_" #name, [=] { return zent::l_airy_##name<Real>(x); }); \
  }
#define ZENT_FORMS(name)    \
  ZENT_FORM(f, float, name) \
  ZENT_FORM(d, double, name)
ZENT_FORMS(Ai)
ZENT_FORMS(Ai_derivative)
ZENT_FORMS(Bi)
ZENT_FORMS(Bi_derivative)
#undef ZENT_FORMS
#undef ZENT_FORM
