// The gamma function, its logarithm, and the correction of Stirling's formula, for both halves.
//
// Methods: the Chebyshev series of gamma(1 + y) and the recurrence up to 10, Stirling's formula with a series for its correction
// beyond, the reflection formula for negative arguments below -10.
#pragma once

#include <cmath>

#include "math/functions/leaf.hpp"
#include "math/functions/series.hpp"

namespace zent::functions {

#include "math/functions/tables/lv_algm3cs.inc"
#include "math/functions/tables/lv_algmcs.inc"
#include "math/functions/tables/lv_alnrcs.inc"
#include "math/functions/tables/lv_gamcs.inc"
#include "math/functions/tables/lv_lgamcs.inc"

// Where the ranges end, from the machine constants.
template <class Real>
struct GammaLimits {
  Real xmin, xmax;              // gamma underflows below and overflows above
  bool found_xmin, found_xmax;  // Newton's iterations for them have settled
  Real xsml;                    // 1/x overflows below it
  Real dxrel;                   // nearer than this to a pole half of the digits are lost
  Real log_xmax;                // log gamma overflows above
  Real lgmc_big, lgmc_max;      // the correction is 1/(12x) above the first, and underflows above the second
};

template <class Real>
constexpr void l_r9gaml(GammaLimits<Real>& limits) {
  const Real half = static_cast<Real>(0.5), settled = static_cast<Real>(0.005), margin = static_cast<Real>(0.01);
  const Real log_tiny = std::log(Machine<Real>::smallest), log_huge = std::log(Machine<Real>::largest);
  limits.found_xmin = limits.found_xmax = false;
  Real x = -log_tiny;
  for (int i = 0; i < 10 && !limits.found_xmin; ++i) {
    const Real old = x, logarithm = std::log(x);
    x -= x * ((x + half) * logarithm - x - static_cast<Real>(0.2258) + log_tiny) / (x * logarithm + half);
    limits.found_xmin = std::abs(x - old) < settled;
  }
  limits.xmin = margin - x;
  x = log_huge;
  for (int i = 0; i < 10 && !limits.found_xmax; ++i) {
    const Real old = x, logarithm = std::log(x);
    x -= x * ((x - half) * logarithm - x + static_cast<Real>(0.9189) - log_huge) / (x * logarithm - half);
    limits.found_xmax = std::abs(x - old) < settled;
  }
  limits.xmax = x - margin;
  if (limits.xmin < 1 - limits.xmax) limits.xmin = 1 - limits.xmax;
}
template <class Real>
constexpr GammaLimits<Real> find_gamma_limits() {
  using M = Machine<Real>;
  GammaLimits<Real> limits = {};
  l_r9gaml(limits);
  const Real log_tiny = std::log(M::smallest), log_huge = std::log(M::largest);
  limits.xsml = std::exp((log_tiny > -log_huge ? log_tiny : -log_huge) + static_cast<Real>(0.01));
  limits.dxrel = std::sqrt(M::epsilon);
  limits.log_xmax = M::largest / log_huge;
  limits.lgmc_big = 1 / std::sqrt(M::spacing);
  const Real from_huge = std::log(M::largest / 12), from_tiny = -std::log(12 * M::smallest);
  limits.lgmc_max = std::exp(from_huge < from_tiny ? from_huge : from_tiny);
  return limits;
}
template <class Real>
inline const GammaLimits<Real> gamma_limits = find_gamma_limits<Real>();

inline constexpr double log_root_two_pi = 0.9189385332046728;

// The correction of Stirling's formula for x >= 10.
template <class Real>
inline Real stirling_correction(Real x) {
  if (x >= gamma_limits<Real>.lgmc_big) return 1 / (12 * x);
  const Real r = 10 / x;
  return series::evaluate_in_pairs<lv_algmcs>(2 * r * r - 1) / x;
}

// The product y (y + 1) ... of n factors, in two chains.
template <class Real>
inline Real rising(Real y, long n) {
  Real even = 1, odd = 1;
  long i = 0;
  for (; i + 1 < n; i += 2) {
    even *= y + static_cast<Real>(i);
    odd *= y + static_cast<Real>(i + 1);
  }
  if (i < n) even *= y + static_cast<Real>(i);
  return even * odd;
}

// gamma(1 + y) for y in 0 to 1.
template <class Real>
inline Real gamma_one_plus(Real y) {
  return static_cast<Real>(0.9375) + series::evaluate_in_pairs<lv_gamcs>(2 * y - 1);
}

// |x| <= 10, not a pole: gamma(1 + y) with x = y + n, and the recurrence.
template <class Real>
inline Real gamma_by_recurrence(Real x) {
  long n = static_cast<long>(x);
  if (x < 0) --n;
  const Real y = x - static_cast<Real>(n);
  const Real g = gamma_one_plus(y);
  if (n == 1) return g;
  return n >= 2 ? g * rising(y + 1, n - 1) : g / rising(x, 1 - n);
}

// x from 10: the power in two halves, since it alone may overflow, and without a logarithm of a large value, whose rounding error
// an exponential would multiply.
template <class Real>
inline Real gamma_by_stirling(Real x) {
  const Real root_two_pi = static_cast<Real>(2.506628274631000502);
  const Real power = std::pow(x, static_cast<Real>(0.5) * x - static_cast<Real>(0.25));
  const Real c = stirling_correction(x);
  // exp(c) for c up to 1/120.
  const Real correction =
      c + c * c *
              (1 / static_cast<Real>(2) +
               c * (1 / static_cast<Real>(6) + c * (1 / static_cast<Real>(24) + c * (1 / static_cast<Real>(120) + c / 720))));
  const Real v = root_two_pi * power * std::exp(-x) * power;
  return v + v * correction;
}

template <class Real>
inline bool is_integer(Real x) {
  return std::abs(x) >= 1 / Machine<Real>::epsilon || x == static_cast<Real>(static_cast<long>(x));
}
// |(x - round(x))/x| for x < 0.
template <class Real>
inline Real pole_distance(Real x) {
  if (x <= -1 / Machine<Real>::epsilon) return 0;
  const Real rounded = static_cast<Real>(static_cast<long>(x - static_cast<Real>(0.5)));
  return std::abs((x - rounded) / x);
}
// |sin(pi y)| for y > 0, exactly 0 at integers.
template <class Real>
inline Real sine_of_pi(Real y) {
  const Real pi = static_cast<Real>(3.14159265358979323846);
  Real r = y - 2 * std::floor(y / 2);
  const bool negative = r > 1;
  if (negative) r -= 1;
  if (r > static_cast<Real>(0.5)) r = 1 - r;
  const Real s = std::sin(pi * r);
  return negative ? -s : s;
}

// True for positive arguments that do not overflow and for those between 0 and -10 away from poles.
template <class Real>
inline bool plain_gamma(Real x, Real& value) {
  const GammaLimits<Real>& limits = gamma_limits<Real>;
  if (x >= limits.xsml && x <= 10) {
    value = gamma_by_recurrence(x);
  } else if (x > 10 && x <= limits.xmax) {
    value = gamma_by_stirling(x);
  } else if (x < 0 && x >= -10) {
    if (is_integer(x) || (x < static_cast<Real>(-0.5) && pole_distance(x) < limits.dxrel)) return false;
    value = gamma_by_recurrence(x);
  } else if (x != x) {
    value = x;
  } else {
    return false;
  }
  return true;
}

// gamma at a negative argument below -10.
template <class Half, class Real>
Real l_reflected(Real x) {
  const GammaLimits<Real>& limits = gamma_limits<Real>;
  const double shown = static_cast<double>(x);
  if (x < limits.xmin) {
    raise<Half>(2, MATH_SMALL_ARG_UNDERFLOW, {.r = {shown, static_cast<double>(limits.xmin)}});
    return 0;
  }
  const Real y = -x, s = sine_of_pi(y);
  if (s == 0) {
    raise<Half>(4, MATH_NEAR_NEG_INT_FATAL, {.r = {shown}});
    return Machine<Real>::not_a_number;
  }
  if (pole_distance(x) < limits.dxrel) raise<Half>(3, MATH_NEAR_NEG_INT_WARN, {.r = {shown}});
  return -static_cast<Real>(3.14159265358979323846) / (y * s) / gamma_by_stirling(y);
}

template <class Half, class Real>
Real l_gamma(Real x) {
  Real value = 0;
  if (plain_gamma(x, value)) return value;
  const GammaLimits<Real>& limits = gamma_limits<Real>;
  const double shown = static_cast<double>(x);
  if (!limits.found_xmin || !limits.found_xmax) {
    raise<Half>(4, limits.found_xmin ? MATH_CANNOT_FIND_XMAX : MATH_CANNOT_FIND_XMIN);
    return Machine<Real>::not_a_number;
  }
  if (x < -10) return l_reflected<Half>(x);
  if (x == 0) {
    raise<Half>(5, MATH_ARG_ZERO);
  } else if (x > 10) {
    raise<Half>(4, MATH_LARGE_ARG_OVERFLOW, {.r = {shown, static_cast<double>(limits.xmax)}});
  } else if (x > 0) {
    raise<Half>(4, MATH_ZERO_ARG_OVERFLOW, {.r = {shown}});
  } else if (is_integer(x)) {
    raise<Half>(5, MATH_NEGATIVE_INTEGER, {.r = {shown}});
  } else {
    raise<Half>(3, MATH_NEAR_NEG_INT_WARN, {.r = {shown}});
    return gamma_by_recurrence(x);
  }
  return Machine<Real>::not_a_number;
}

template <class Half, class Real>
inline Real gamma(Real x) {
  Real value = 0;
  if (plain_gamma(x, value) && leaf<Half>()) [[likely]]
    return value;
  return scalar_call<Half>(ZENT_FRAME("gamma"), [=] { return l_gamma<Half>(x); });
}

// log gamma for 0 < x < 3: gamma's recurrence in logarithms. The series carries the zeros at 1 and 2 as factors, so that it is as
// precise there as elsewhere.
template <class Real>
inline Real log_gamma_by_recurrence(Real x) {
  const long n = static_cast<long>(x);
  const Real y = x - static_cast<Real>(n);
  const Real g = y * (y - 1) * series::evaluate_in_pairs<lv_lgamcs>(2 * y - 1);
  if (n == 1) return g + 0;  // 0, not -0, at 1
  return n == 0 ? g - std::log(x) : g + std::log(x - 1);
}

// The correction of Stirling's formula for 3 <= x <= 10.
template <class Real>
inline Real middle_correction(Real x) {
  const Real r = 1 / x;
  return series::evaluate_in_pairs<lv_algm3cs>((1800 * (r * r) - 109) / 91) * r;
}

template <class Real>
inline Real log_gamma_by_stirling(Real x) {
  const Real correction = x < 10 ? middle_correction(x) : stirling_correction(x);
  return static_cast<Real>(log_root_two_pi) + ((x - static_cast<Real>(0.5)) * std::log(x) - x) + correction;
}

template <class Real>
inline bool plain_log_gamma(Real x, Real& value) {
  const GammaLimits<Real>& limits = gamma_limits<Real>;
  if (x >= limits.xsml && x < 3) {
    value = log_gamma_by_recurrence(x);
  } else if (x >= 3 && x <= limits.log_xmax) {
    value = log_gamma_by_stirling(x);
  } else if (x != x) {
    value = x;
  } else {
    return false;
  }
  return true;
}

template <class Half, class Real>
Real l_log_gamma(Real x) {
  Real value = 0;
  if (plain_log_gamma(x, value)) return value;
  const GammaLimits<Real>& limits = gamma_limits<Real>;
  const double shown = static_cast<double>(x);
  const Real y = std::abs(x);
  if (y <= 10) {
    value = gamma<Half>(x);
    return inner_failed<Half>() ? Machine<Real>::not_a_number : std::log(std::abs(value));
  }
  if (y > limits.log_xmax) {
    raise<Half>(4, MATH_LARGE_ABS_ARG_OVERFLOW, {.r = {shown, static_cast<double>(limits.log_xmax)}});
    return Machine<Real>::not_a_number;
  }
  const Real s = std::abs(sine_of_pi(y));
  if (s == 0) {
    raise<Half>(4, MATH_NEGATIVE_INTEGER, {.r = {shown}});
    return Machine<Real>::not_a_number;
  }
  value = static_cast<Real>(0.22579135264472744) + (x - static_cast<Real>(0.5)) * std::log(y) - x - std::log(s) -
          stirling_correction(y);
  const Real rounded = static_cast<Real>(static_cast<long>(x - static_cast<Real>(0.5)));
  if (std::abs((x - rounded) * value / x) < limits.dxrel) raise<Half>(3, MATH_NEAR_NEG_INT_WARN, {.r = {shown}});
  return value;
}

template <class Half, class Real>
inline Real log_gamma(Real x) {
  Real value = 0;
  if (plain_log_gamma(x, value) && leaf<Half>()) [[likely]]
    return value;
  return scalar_call<Half>(ZENT_FRAME("log_gamma"), [=] { return l_log_gamma<Half>(x); });
}

template <class Half, class Real>
Real l_d9lgmc(Real x) {
  const GammaLimits<Real>& limits = gamma_limits<Real>;
  const double shown = static_cast<double>(x);
  if (x < 10) {
    raise<Half>(4, MATH_SMALL_ARGUMENT, {.r = {shown, 10}});
    return Machine<Real>::not_a_number;
  }
  if (x >= limits.lgmc_max) {
    raise<Half>(2, MATH_LARGE_ARG_UNDERFLOW, {.r = {shown, static_cast<double>(limits.lgmc_max)}});
    return 0;
  }
  return x != x ? x : stirling_correction(x);
}
// The public support function: both precisions show one name.
template <class Half, class Real>
inline Real d9lgmc(Real x) {
  return scalar_call<Half>(Half::is_math ? "zent_r9lgmc" : "zents_r9lgmc", [=] { return l_d9lgmc<Half>(x); });
}
// The same for a caller that takes an underflow as 0.
template <class Real>
inline Real quiet_lgmc(Real x) {
  return x >= gamma_limits<Real>.lgmc_max ? 0 : stirling_correction(x);
}

// log(1 + x).
template <class Real>
inline bool plain_alnrel(Real x, Real& value) {
  if (std::abs(x) <= static_cast<Real>(0.375)) {
    value = x - x * x * series::evaluate_in_pairs<lv_alnrcs>(x / static_cast<Real>(0.375));
    return true;
  }
  value = std::log(1 + x);
  return x >= gamma_limits<Real>.dxrel - 1;
}
template <class Half, class Real>
inline Real l_alnrel(Real x) {
  Real value = 0;
  if (plain_alnrel(x, value) || x != x) return x != x ? x : value;
  const double shown = static_cast<double>(x);
  if (x <= -1) {
    raise<Half>(5, MATH_X_IS_LESS_THAN_MINUS_1, {.r = {shown}});
    return Machine<Real>::not_a_number;
  }
  raise<Half>(3, MATH_X_IS_TOO_CLOSE_TO_NEG_1, {.r = {shown, static_cast<double>(gamma_limits<Real>.dxrel - 1)}});
  return value;
}

}  // namespace zent::functions
