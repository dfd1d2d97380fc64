// The beta and F distributions.
//
// Methods: the continued fraction of the incomplete beta function, with both x and 1 - x at hand so that neither end loses
// digits; the inverse by Halley's iteration on the logarithm of the smaller tail as a function of log(x/(1 - x)), which is
// concave.
#pragma once

#include "math/functions/incomplete_beta.hpp"
#include "stat/distributions/chi_squared.hpp"

namespace zent::distributions {

// I_x(a, b) for z = 1 - x, a, b > 0. False for parameters that need the limits.
template <class Real>
inline bool beta_ratio(Real x, Real z, Real a, Real b, Real& value) {
  const Real least = functions::gamma_limits<Real>.xsml, most = functions::beta_most<Real>;
  if (!(a >= least && b >= least && a <= most && b <= most)) return false;
  if (!(x > 0) || !(z > 0)) {
    value = x > 0 ? 1 : 0;
    return true;
  }
  Real log_beta_ab = 0;
  if (!functions::plain_log_beta(a, b, log_beta_ab)) return false;
  const Real large = functions::beta_uniform_from<Real>;
  if (a >= large && b >= large) {
    value = functions::beta_uniform(x, a, b);
    return true;
  }
  // The fraction is slow close to 1, where a small b may put the lower tail, and likewise a small a the upper one; not for an a
  // that takes x to below 1/e there. With a alone below 1 its first terms begin to cancel before x reaches (a + 1)/(a + b + 2).
  const Real near = static_cast<Real>(1e-5);
  const bool upper =
      a < 1 && b >= 1 ? 2 * x * (a + b + 2) > a + 1 : (x * b > z * a && !(a < 1 && x < near)) || (b < 1 && z < near && z * a < 1);
  value = upper ? 1 - functions::beta_fraction(z, x, b, a, log_beta_ab) : functions::beta_fraction(x, z, a, b, log_beta_ab);
  if (value >= 0 && value <= 1) return true;
  if (x <= z) return functions::plain_beta_incomplete(x, a, b, value);
  if (!functions::plain_beta_incomplete(z, b, a, value)) return false;
  value = 1 - value;
  return true;
}

template <class Real>
inline bool plain_beta_cdf(Real x, Real pin, Real qin, Real& value) {
  if (x != x || pin != pin || qin != qin) {
    value = pin != pin ? pin : qin != qin ? qin : x;
    return true;
  }
  if (pin > Machine<Real>::largest && qin > Machine<Real>::largest && x > 0 && x < 1) {  // all the mass at a half
    value = x < static_cast<Real>(0.5) ? 0 : x > static_cast<Real>(0.5) ? 1 : static_cast<Real>(0.5);
    return true;
  }
  return pin > 0 && qin > 0 && x > 0 && x < 1 && beta_ratio(x, 1 - x, pin, qin, value);
}
template <class Real>
Real l_beta_cdf(Real x, Real pin, Real qin) {
  Real value = 0;
  if (plain_beta_cdf(x, pin, qin, value)) return value;
  if (pin <= 0) return refuse(5, STAT_NEED_POSITIVE_PIN_VALUE, pin);
  if (qin <= 0) return refuse(5, STAT_NEED_POSITIVE_QIN_VALUE, qin);
  if (x <= 0) {
    refuse(1, STAT_ZERO_AT_X, x);
    return 0;
  }
  if (x >= 1) {
    refuse(1, STAT_ONE_AT_X, x);
    return 1;
  }
  return functions::beta_incomplete<Half>(x, pin, qin);
}

// x and 1 - x, each with all its digits.
template <class Real>
struct Share {
  Real x, z;
  bool settled;
};

// A start for the inverse as log(x/(1 - x)): the normal approximation (Abramowitz and Stegun 26.5.22), or the leading powers
// where a parameter is small.
template <class Real>
Real beta_start(Real p, Real a, Real b) {
  if (a > 1 && b > 1) {
    const Real normal = -quiet_normal_inverse(p);
    const Real u = 1 / (2 * a - 1), v = 1 / (2 * b - 1);
    const Real lambda = (normal * normal - 3) / 6, h = 2 / (u + v);
    const Real root = lambda + h > 0 ? std::sqrt(lambda + h) : 0;
    const Real w = normal * root / h - (v - u) * (lambda + static_cast<Real>(5.0 / 6) - 2 / (3 * h));
    return std::log(a / b) - 2 * w;
  }
  const Real low = std::exp(a * std::log(a / (a + b))) / a, high = std::exp(b * std::log(b / (a + b))) / b, whole = low + high;
  if (p < low / whole) {
    const Real logarithm = std::log(a * whole * p) / a;
    return logarithm < -1 ? logarithm
                          : -std::log(std::expm1(-logarithm > static_cast<Real>(1e-3) ? -logarithm : static_cast<Real>(1e-3)));
  }
  const Real logarithm = std::log(b * whole * (1 - p)) / b;
  return logarithm < -1 ? -logarithm
                        : std::log(std::expm1(-logarithm > static_cast<Real>(1e-3) ? -logarithm : static_cast<Real>(1e-3)));
}

// What is left of a distribution with extreme parameters: its mass at 0 and 1, or all of it at a/(a + b).
template <class Real>
inline Share<Real> beta_degenerate(Real p, Real a, Real b) {
  const Real largest = Machine<Real>::largest, scale = a > b ? a : b;
  if (a > largest && b > largest) return {static_cast<Real>(0.5), static_cast<Real>(0.5), false};
  const Real u = scale > largest ? (a > b ? 1 : 0) : a / scale, v = scale > largest ? (a > b ? 0 : 1) : b / scale;
  if (scale > 1) return {u / (u + v), v / (u + v), false};
  const bool zero = p <= v / (u + v);
  return {static_cast<Real>(zero ? 0 : 1), static_cast<Real>(zero ? 1 : 0), false};
}

// p <= 0.5: the smaller tail. `w` moves to the root from the left after at most one step from the right.
template <class Real>
Share<Real> beta_lower_quantile(Real p, Real a, Real b) {
  const Real reach = -std::log(Machine<Real>::smallest), most_step = 15;
  const Real noise = std::sqrt(Machine<Real>::epsilon);  // a step that short that does not fit the ones before is rounding
  Real log_beta_ab = 0;
  const Real least = functions::gamma_limits<Real>.xsml, most = functions::beta_most<Real>;
  if (a < least || b < least || a > most || b > most || !functions::plain_log_beta(a, b, log_beta_ab))
    return beta_degenerate(p, a, b);
  Real w = beta_start(p, a, b), x = 0, z = 1, last = Machine<Real>::infinity;
  Real low = -Machine<Real>::infinity, high = Machine<Real>::infinity;  // around the root, for areas that underflow or only round
  for (int i = 0, grown = 0; i < 200; ++i) {
    if (!(w > -reach)) {  // the leading power alone
      x = std::exp((std::log(p) + std::log(a) + log_beta_ab) / a);
      if (!(x > 4 * Machine<Real>::smallest)) return {x, 1, true};
      w = -reach * static_cast<Real>(0.99);
    }
    if (w > reach) w = reach;
    x = w < 0 ? std::exp(w) / (1 + std::exp(w)) : 1 / (1 + std::exp(-w));
    z = w < 0 ? 1 / (1 + std::exp(w)) : std::exp(-w) / (1 + std::exp(-w));
    Real value = 0;
    if (!beta_ratio(x, z, a, b, value)) return {x, z, false};
    (value < p ? low : high) = w;
    Real next = value > 0 ? w - 1 : w + 1;
    if (value > 0 && value < 1) {
      const Real slope = functions::beta_power(x, z, a, b, log_beta_ab) / value;
      const Real newton = std::log(p / value) / slope;
      const Real bend = newton * (a * z - b * x - slope) / 2;
      const Real step = bend > static_cast<Real>(-0.7) && bend < static_cast<Real>(0.99) ? newton / (1 + bend) : newton;
      const Real size = std::abs(step);
      next = w + (size > most_step ? std::copysign(most_step, step) : step);
      // In x the change is z step: relative to the smaller of x and z that is at most the step itself.
      if (size <= 4 * Machine<Real>::epsilon || (size < noise && (size >= last || !(next > low && next < high))) ||
          std::abs(value - p) <= Machine<Real>::epsilon / 2 * p) {
        return {x + x * z * step, z - z * x * step, true};
      }
      if (size >= last) ++grown;
      last = size;
    }
    if (grown > 5 || !(next > low && next < high)) {
      const Real middle = low + (high - low) / 2;
      if (middle <= low || middle >= high) return {x, z, true};
      if (std::abs(middle) <= reach) next = middle;
    }
    w = next;
  }
  return {x, z, false};
}

// p in (0, 1), a, b > 0, finite.
template <class Real>
Share<Real> beta_quantile(Real p, Real a, Real b) {
  if (p <= static_cast<Real>(0.5)) return beta_lower_quantile(p, a, b);
  const Share<Real> other = beta_lower_quantile(1 - p, b, a);
  return {other.z, other.x, other.settled};
}

template <class Real>
inline bool plain_beta_inverse_cdf(Real p, Real pin, Real qin, Real& value) {
  if (p != p || pin != pin || qin != qin) {
    value = pin != pin ? pin : qin != qin ? qin : p;
    return true;
  }
  if (!(pin > 0 && qin > 0) || !is_open_probability(p)) return false;
  const Share<Real> share = beta_quantile(p, pin, qin);
  value = share.x;
  return share.settled;
}
template <class Real>
Real l_beta_inverse_cdf(Real p, Real pin, Real qin) {
  if (pin <= 0) return refuse(5, STAT_PIN_MUST_BE_POSITIVE, pin);
  if (qin <= 0) return refuse(5, STAT_QIN_MUST_BE_POSITIVE, qin);
  if (p <= 0 || p >= 1) return refuse(5, STAT_P_OUTSIDE_EXCLUSIVE_INT, p);
  Real value = 0;
  if (!plain_beta_inverse_cdf(p, pin, qin, value)) refuse(3, STAT_BEST_BETIN_APPROXIMATION, p);
  return value;
}

// F for dfn or dfd so large that its chi-squared variable is a constant.
template <class Real>
inline Real F_limit(Real F, Real dfn, Real dfd) {
  const Real vast = static_cast<Real>(1e17);
  if (dfn > vast && dfd > vast) return F < 1 ? 0 : F > 1 ? 1 : static_cast<Real>(0.5);
  if (dfd > vast) return gamma_ratio(dfn / 2 * F, dfn / 2);
  if (dfn > vast) return gamma_rest(dfd / 2 / F, dfd / 2);
  return Machine<Real>::not_a_number;
}
template <class Real>
inline bool plain_F_cdf(Real F, Real dfn, Real dfd, Real& value) {
  if (F != F || dfn != dfn || dfd != dfd) {
    value = dfn != dfn ? dfn : dfd != dfd ? dfd : F;
    return true;
  }
  if (!(dfn > 0 && dfd > 0 && F > 0)) return false;
  const Real product = F * dfn, sum = product + dfd;
  if (!(sum <= Machine<Real>::largest)) {
    value = F > Machine<Real>::largest ? 1 : F_limit(F, dfn, dfd);
    if (value == value) return true;
    const Real ratio = dfd / dfn / F;  // one of the three is vast, the degrees of freedom are not
    return beta_ratio(1 - ratio, ratio, dfn / 2, dfd / 2, value);
  }
  if (beta_ratio(product / sum, dfd / sum, dfn / 2, dfd / 2, value)) return true;
  value = F_limit(F, dfn, dfd);
  return value == value;
}
template <class Real>
Real l_F_cdf(Real F, Real dfn, Real dfd) {
  Real value = 0;
  if (plain_F_cdf(F, dfn, dfd, value)) return value;
  if (dfn <= 0 || dfd <= 0) {
    raise<Half>(5, STAT_DFN_OR_DFD_IS_NEGATIVE, {.r = {shown(dfn), shown(dfd)}});
    return Machine<Real>::not_a_number;
  }
  if (F <= 0) {
    refuse(1, STAT_DIST_FCN_SET_TO_ZERO, F);
    return 0;
  }
  return 1 - functions::beta_incomplete<Half>(dfd / (F * dfn + dfd), dfd / 2, dfn / 2);
}

// The quantile; infinite where the share that belongs to it is 1 to the precision, or its complement 0.
template <class Real>
inline Real F_quantile(Real p, Real dfn, Real dfd, bool& settled) {
  const Real vast = static_cast<Real>(1e16);  // as good as infinite
  dfn = dfn < vast ? dfn : vast;
  dfd = dfd < vast ? dfd : vast;
  const Share<Real> share = beta_quantile(p, dfn / 2, dfd / 2);
  settled = share.settled;
  const bool overflow = p <= static_cast<Real>(0.5) ? share.z <= Machine<Real>::epsilon : share.z == 0;
  return overflow ? Machine<Real>::infinity : share.x == 0 ? 0 : share.x / share.z * (dfd / dfn);
}
template <class Real>
inline bool plain_F_inverse_cdf(Real p, Real dfn, Real dfd, Real& value) {
  if (p != p || dfn != dfn || dfd != dfd) {
    value = p != p ? p : dfn != dfn ? dfn : dfd;
    return true;
  }
  if (!is_open_probability(p) || !(dfn > 0 && dfd > 0)) return false;
  bool settled = false;
  value = F_quantile(p, dfn, dfd, settled);
  return settled && value <= Machine<Real>::largest;
}
template <class Real>
Real l_F_inverse_cdf(Real p, Real dfn, Real dfd) {
  Real value = 0;
  if (plain_F_inverse_cdf(p, dfn, dfd, value)) return value;
  if (!is_open_probability(p)) return refuse(5, STAT_P_OUTSIDE_OPEN_INTERVAL, p);
  if (dfn <= 0 || dfd <= 0) {
    raise<Half>(5, STAT_DFN_OR_DFD_IS_NEGATIVE, {.r = {shown(dfn), shown(dfd)}});
    return Machine<Real>::not_a_number;
  }
  bool settled = false;
  value = F_quantile(p, dfn, dfd, settled);
  if (!settled) refuse(3, STAT_BEST_BETIN_APPROXIMATION, p);
  if (value <= Machine<Real>::largest || value != value) return value;
  refuse(4, STAT_F_INVERSE_OVERFLOW, p);
  return Machine<Real>::infinity;
}

}  // namespace zent::distributions
