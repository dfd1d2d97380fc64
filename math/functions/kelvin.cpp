// Kelvin functions of order 0 and their derivatives.
#include <cmath>

#include "math/functions/bessel_parts.hpp"
#include "zent/bessel.h"

namespace zent {
namespace {

#include "math/functions/tables/kelvin_far.inc"
#include "math/functions/tables/kelvin_middle.inc"
#include "math/functions/tables/kelvin_near.inc"

using functions::Angle;
using functions::Two;
using series::evaluate;

template <class Real>
struct Pair {
  Real re, im;
};

// x / sqrt(2) in two parts: exponent and phase of everything below.
template <class Real>
Two<Real> diagonal(Real x) {
  return functions::times({x, 0}, functions::root_half<Real>);
}

// exp(sign h) times modulus at the angle h + shift + phase, with the sign of the angle apart.
template <class Real>
Pair<Real> at_angle(Real modulus, Real phase, Two<Real> h, Real shift_sign, Real direction) {
  const Two<Real> shift = functions::eighth_pi<Real>;
  const Two<Real> sum = functions::two_sum(h.high, shift_sign * shift.high);
  const Angle<Real> a = functions::cosine_sine<Real>({sum.high, sum.low + (h.low + shift_sign * shift.low)}, direction * phase);
  return {modulus * a.cosine, direction * (modulus * a.sine)};
}

// ker x + i kei x for x > 2, or its derivative. (x h: exponent and phase; h counts negative in both.)
template <bool derivative, class Real>
Pair<Real> recessive(Real x) {
  using M = std::conditional_t<derivative, lv_kedm, lv_kem>;
  using P = std::conditional_t<derivative, lv_kedp, lv_kep>;
  using M2 = std::conditional_t<derivative, lv_kedm2, lv_kem2>;
  using P2 = std::conditional_t<derivative, lv_kedp2, lv_kep2>;
  const bool far = x > 10;
  const Real t = far ? 20 / x - 1 : 5 / x - static_cast<Real>(1.5);
  const Real modulus = far ? evaluate<M>(t) : evaluate<M2>(t), phase = far ? evaluate<P>(t) : evaluate<P2>(t);
  const Two<Real> h = diagonal(x);
  const Real scale =
      functions::scaled_exp<Real>(modulus * std::sqrt(static_cast<Real>(1.57079632679489661923) / x), {-h.high, -h.low});
  const Pair<Real> value = at_angle(scale, phase, h, derivative ? Real(-1) : Real(1), Real(-1));
  return derivative ? Pair<Real>{-value.re, -value.im} : value;
}

// ber x + i bei x for x > 10, or its derivative: the growing part, and i/pi times the part above.
template <bool derivative, class Real>
Pair<Real> beyond_ten(Real x) {
  const Real t = 20 / x - 1, pi = static_cast<Real>(3.14159265358979323846);
  const Real modulus = derivative ? evaluate<lv_bedm>(t) : evaluate<lv_bem>(t);
  const Real phase = derivative ? evaluate<lv_bedp>(t) : evaluate<lv_bep>(t);
  const Two<Real> h = diagonal(x);
  const Real scale = functions::scaled_exp(modulus / std::sqrt(2 * pi * x), h);
  const Pair<Real> d = at_angle(scale, phase, h, derivative ? Real(1) : Real(-1), Real(1));
  const Pair<Real> k = recessive<derivative>(x);
  return {d.re - k.im / pi, d.im + k.re / pi};
}

// (x/10)^4, and a power series in it.
template <class Real>
Real fourth_power(Real x) {
  const Real u = x / 10, v = u * u;
  return v * v;
}
template <class Table, class Real>
Real powers(Real x) {
  constexpr bool single = std::is_same_v<Real, float>;
  constexpr long n = static_cast<long>(single ? sizeof Table::single / sizeof(float) : sizeof Table::real / sizeof(double));
  if constexpr (single) {
    return series::polynomial<n>(Table::single, fourth_power(x));
  } else {
    return series::polynomial<n>(Table::real, fourth_power(x));
  }
}
template <class Table, class Real>
Real middle(Real x) {  // up to 10
  return functions::scaled_exp(evaluate<Table>(2 * (x / 5) - 3), diagonal(x));
}

template <class Real>
Real ber(Real x) {
  if (x <= 5) return powers<lv_bern>(x);
  return x <= 10 ? middle<lv_berm>(x) : beyond_ten<false>(x).re;
}
template <class Real>
Real bei(Real x) {
  if (x <= 5) return x * x * powers<lv_bein>(x);
  return x <= 10 ? middle<lv_beim>(x) : beyond_ten<false>(x).im;
}
template <class Real>
Real ber_derivative(Real x) {
  if (x <= 5) return x * x * x * powers<lv_berdn>(x);
  return x <= 10 ? middle<lv_berdm>(x) : beyond_ten<true>(x).re;
}
template <class Real>
Real bei_derivative(Real x) {
  if (x <= 5) return x * powers<lv_beidn>(x);
  return x <= 10 ? middle<lv_beidm>(x) : beyond_ten<true>(x).im;
}

// ker and kei for x <= 2: logarithm, quarter of pi, and what is left.
template <class Real>
inline constexpr Real pi_4 = functions::quarter_pi<Real>.high;

template <class Real>
Real ker(Real x) {
  if (x > 2) return recessive<false>(x).re;
  return -functions::log_of_half(x) * ber(x) + (pi_4<Real> * bei(x) + powers<lv_kern>(x));
}
template <class Real>
Real kei(Real x) {
  if (x > 2) return recessive<false>(x).im;
  if (x == 0) return -pi_4<Real>;
  return (x * x * powers<lv_kein>(x) - functions::log_of_half(x) * bei(x)) - pi_4<Real> * ber(x);
}
template <class Real>
Real ker_derivative(Real x) {
  if (x > 2) return recessive<true>(x).re;
  const Real small = x * x * x * powers<lv_kerdn>(x) - functions::log_of_half(x) * ber_derivative(x);
  return (small + pi_4<Real> * bei_derivative(x)) - 1 / x;
}
template <class Real>
Real kei_derivative(Real x) {
  if (x > 2) return recessive<true>(x).im;
  if (x == 0) return 0;
  return (x * powers<lv_keidn>(x) - functions::log_of_half(x) * bei_derivative(x)) - pi_4<Real> * ber_derivative(x);
}

// The entire functions: even, with odd derivatives.
template <bool odd, class Real>
Real l_entire(Real x, Real (*f)(Real)) {
  const Real y = std::abs(x), limit = 119;
  if (y <= limit) return odd && std::signbit(x) ? -f(y) : f(y);
  if (x != x) return x;
  raise<Math>(5, MATH_INEQUALITY_VIOLATION_5, {.r = {static_cast<double>(x), static_cast<double>(limit)}, .l = {"x"}});
  return Machine<Real>::not_a_number;
}

template <bool infinite_at_zero, class Real>
Real l_decaying(Real x, Real (*f)(Real)) {
  if (x > 0) {
    // Beyond this everything has underflowed, and the phase means nothing any more.
    return x > 2 * -std::log(Machine<Real>::smallest) ? 0 : f(x);
  }
  if (x != x) return x;
  if (x < 0 || infinite_at_zero) {
    raise<Math>(5, MATH_INEQUALITY_VIOLATION_4, {.r = {static_cast<double>(x), 0}, .l = {"x"}});
    return Machine<Real>::not_a_number;
  }
  return f(0);
}

}  // namespace
}  // namespace zent

#define ZENT_FORM(P, Real, name, suffix, shape, flag)                                                     \
  extern "C" Real zent_##P##_kelvin_##name##0##suffix(Real x) {                                           \
    return zent::scalar_call<zent::Math>("zent_" #P "_kelvin_" #name "0" #suffix,                         \
                                         [=] { return zent::shape<flag>(x, zent::name##suffix<Real>); }); \
  }
#define ZENT_FORMS(name, suffix, shape, flag)    \
  ZENT_FORM(f, float, name, suffix, shape, flag) \
  ZENT_FORM(d, double, name, suffix, shape, flag)
ZENT_FORMS(ber, , l_entire, false)
ZENT_FORMS(bei, , l_entire, false)
ZENT_FORMS(ber, _derivative, l_entire, true)
ZENT_FORMS(bei, _derivative, l_entire, true)
ZENT_FORMS(ker, , l_decaying, true)
ZENT_FORMS(kei, , l_decaying, false)
ZENT_FORMS(ker, _derivative, l_decaying, true)
ZENT_FORMS(kei, _derivative, l_decaying, false)
#undef ZENT_FORMS
#undef ZENT_FORM
