// The beta function and its logarithm, for both halves, through gamma for small arguments and Stirling's formula for large ones.
#pragma once

#include "math/functions/gamma.hpp"

namespace zent::functions {

// log(1 + x) for -1/2 <= x <= 0; the series is faster where it reaches.
template <class Real>
inline Real log_of_share(Real x) {
  Real value = 0;
  return x >= static_cast<Real>(-0.375) && plain_alnrel(x, value) ? value : std::log1p(x);
}

// gamma(p) gamma(q)/gamma(p + q) for q >= 10, p <= q, by Stirling's formula, in which the large factors cancel.
template <class Real>
inline bool gamma_ratio_by_stirling(Real p, Real q, Real& value) {
  const Real half = static_cast<Real>(0.5), sum = p + q;
  if (p >= 10) {
    const Real c = stirling_correction(p) + stirling_correction(q) - stirling_correction(sum);
    const Real root_two_pi = static_cast<Real>(2.506628274631000502);
    value = root_two_pi * std::pow(p / sum, p - half) * std::exp(q * log_of_share(-p / sum) + c) / std::sqrt(q);
    return true;
  }
  Real gp = 0;
  if (!plain_gamma(p, gp)) return false;
  const Real c = stirling_correction(q) - stirling_correction(sum);
  value = gp * std::pow(sum, -p) * std::exp(p + (q - half) * log_of_share(-p / sum) + c);
  return true;
}

// gamma(p) gamma(q)/gamma(p + q) for p + q below gamma's largest argument, arranged so that no part of it overflows where the
// value does not. The rounding error of p + q, which gamma would multiply, is put back through gamma'/gamma, roughly log.
template <class Real>
inline bool gamma_ratio(Real p, Real q, Real& value) {
  Real gp = 0, gq = 0, gpq = 0;
  const Real sum = p + q;
  if (q >= 10) return gamma_ratio_by_stirling(p, q, value);
  if (!plain_gamma(p, gp) || !plain_gamma(q, gq) || !plain_gamma(sum, gpq)) return false;
  value = gp * (gq / gpq);
  const Real added = sum - q;
  const Real lost = (p - added) + (q - (sum - added));
  if (lost != 0 && sum > 2) {
    const Real psi = static_cast<Real>(std::log(static_cast<float>(sum))) - static_cast<Real>(0.5) / sum;
    value -= value * (lost * psi);
  }
  return true;
}

// Both arguments positive, p <= q, none of them too near zero for gamma; the value alone.
template <class Real>
inline bool plain_log_beta(Real a, Real b, Real& value) {
  const GammaLimits<Real>& limits = gamma_limits<Real>;
  const Real p = a < b ? a : b, q = a < b ? b : a;
  if (!(p >= limits.xsml) || !(q <= Machine<Real>::largest / 2)) return false;
  const Real half = static_cast<Real>(0.5);
  if (q < 10) {
    if (!gamma_ratio(p, q, value)) return false;
    value = std::log(value);
    return true;
  }
  const Real sum = p + q, r = -p / sum;
  Real logarithm = 0;
  if (!plain_alnrel(r, logarithm)) return false;
  if (p >= 10) {
    const Real c = quiet_lgmc(p) + quiet_lgmc(q) - quiet_lgmc(sum);
    value = -half * std::log(q) + static_cast<Real>(log_root_two_pi) + c + (p - half) * std::log(p / sum) + q * logarithm;
    return true;
  }
  const Real c = quiet_lgmc(q) - quiet_lgmc(sum);
  Real log_gamma_p = 0;
  if (!plain_log_gamma(p, log_gamma_p)) return false;
  value = log_gamma_p + c + p - p * std::log(sum) + (q - half) * logarithm;
  return true;
}

template <class Half, class Real>
Real l_log_beta(Real a, Real b) {
  Real value = 0;
  if (plain_log_beta(a, b, value)) return value;
  if (a != a || b != b) return a != a ? a : b;
  const Real p = a < b ? a : b, q = a < b ? b : a;
  const GammaLimits<Real>& limits = gamma_limits<Real>;
  if (p <= 0) {
    raise<Half>(5, MATH_BOTH_ARGS_ARE_LT_ZERO, {.r = {static_cast<double>(a), static_cast<double>(b)}});
    return Machine<Real>::not_a_number;
  }
  if (q > Machine<Real>::largest) return -Machine<Real>::infinity;
  if (p < limits.xsml) {  // gamma raises the error and shows in the message
    gamma<Half>(p);
    return Machine<Real>::not_a_number;
  }
  if (q > Machine<Real>::largest / 2) {  // the sum may overflow: beta is gamma(p) q^-p there
    if (p >= 10) return -Machine<Real>::largest;
    return log_gamma<Half>(p) - p * std::log(q);
  }
  // What is left is p so near to p + q that log(1 - p/(p + q)) has lost digits: it raises its warning.
  const Real sum = p + q;
  return log_gamma<Half>(p) + quiet_lgmc(q) - quiet_lgmc(sum) + p - p * std::log(sum) +
         (q - static_cast<Real>(0.5)) * l_alnrel<Half>(-p / sum);
}

template <class Half, class Real>
inline Real log_beta(Real a, Real b) {
  Real value = 0;
  if (plain_log_beta(a, b, value) && leaf<Half>()) [[likely]]
    return value;
  return scalar_call<Half>(ZENT_FRAME("log_beta"), [=] { return l_log_beta<Half>(a, b); });
}

template <class Real>
inline bool plain_beta(Real a, Real b, Real& value) {
  const Real p = a < b ? a : b, q = a < b ? b : a;
  if (!(p >= gamma_limits<Real>.xsml) || !(q <= Machine<Real>::largest / 2)) return false;
  if (a + b < gamma_limits<Real>.xmax) return gamma_ratio(p, q, value);
  // For a small p the value may be large, and so its logarithm, whose rounding error the exponential would multiply.
  if (p < 1 && gamma_ratio_by_stirling(p, q, value) && value >= Machine<Real>::smallest) return true;
  if (!plain_log_beta(a, b, value)) return false;
  if (value < std::log(Machine<Real>::smallest)) return false;
  value = std::exp(value);
  return true;
}
template <class Half, class Real>
Real l_beta(Real a, Real b) {
  Real value = 0;
  if (plain_beta(a, b, value)) return value;
  if (a != a || b != b) return a != a ? a : b;
  const double shown_a = static_cast<double>(a), shown_b = static_cast<double>(b);
  if (a <= 0 || b <= 0) {
    raise<Half>(5, MATH_BETA_NEG_ARG, {.r = {shown_a, shown_b}});
    return Machine<Real>::not_a_number;
  }
  if (a + b < gamma_limits<Real>.xmax) {  // one of them so near zero that gamma overflows and raises
    gamma<Half>(a < b ? a : b);
    return Machine<Real>::not_a_number;
  }
  value = log_beta<Half>(a, b);
  if (inner_failed<Half>()) return Machine<Real>::not_a_number;
  if (value >= std::log(Machine<Real>::smallest)) return std::exp(value);
  raise<Half>(2, MATH_BETA_UNDERFLOW, {.r = {shown_a, shown_b}});
  return 0;
}
template <class Half, class Real>
inline Real beta(Real a, Real b) {
  Real value = 0;
  if (plain_beta(a, b, value) && leaf<Half>()) [[likely]]
    return value;
  return scalar_call<Half>(ZENT_FRAME("beta"), [=] { return l_beta<Half>(a, b); });
}

}  // namespace zent::functions
