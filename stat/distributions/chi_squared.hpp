// The gamma and chi-squared distributions.
//
// Methods: power series below and continued fraction above for the gamma distribution; power series, asymptotic series of the
// upper tail and the transform of Wilson and Hilferty (1931) for chi-squared; Newton's iteration on the logarithm of the smaller
// tail for the inverse.
#pragma once

#include "math/functions/gamma.hpp"
#include "stat/distributions/gamma_expansion.hpp"

namespace zent::distributions {

// log(x^a exp(-x)/gamma(a)), arranged for large a so that the large terms cancel before they are rounded.
template <class Real>
inline Real log_gamma_factor(Real a, Real x) {
  if (a < 10) {
    Real log_gamma_a = 0;
    if (!functions::plain_log_gamma(a, log_gamma_a)) log_gamma_a = -std::log(a);
    return a * std::log(x) - x - log_gamma_a;
  }
  const Real half = static_cast<Real>(0.5), d = (x - a) / a;
  const Real logarithm = d < -half ? std::log(x / a) : std::log1p(d);
  return a * (logarithm - d) + half * std::log(a / (2 * pi<Real>)) - functions::stirling_correction(a);
}

// x^a exp(-x)/gamma(a); for moderate arguments as powers, since a large exponent would lose digits.
template <class Real>
inline Real gamma_factor(Real a, Real x) {
  Real g = 0;
  if (a < 10 && x < -std::log(Machine<Real>::smallest) && functions::plain_gamma(a, g)) {
    const Real power = std::pow(x, a);
    if (power >= Machine<Real>::smallest) return power * std::exp(-x) / g;
  }
  if (a >= 10 && x < a / 2) {
    const Real share = x / a, power = std::pow(share * std::exp(1 - share), a);
    const Real factor = power * std::sqrt(a / (2 * pi<Real>)) * std::exp(-functions::stirling_correction(a));
    if (power >= Machine<Real>::smallest) return factor > Machine<Real>::smallest ? factor : 0;
  }
  const Real exponent = log_gamma_factor(a, x);
  return exponent > std::log(Machine<Real>::smallest) + Machine<Real>::epsilon ? std::exp(exponent) : 0;
}

// Beyond this shape the series would be long: Temme's uniform expansion (DLMF 8.12.3) with its first term is then precise enough.
template <class Real>
inline constexpr Real gamma_uniform_from = sizeof(Real) == sizeof(float) ? static_cast<Real>(1e5) : static_cast<Real>(1e8);
template <class Real>
inline Real gamma_uniform(Real a, Real x) {
  const Real half = static_cast<Real>(0.5), d = (x - a) / a;
  if (d == Machine<Real>::infinity) return 1;
  const Real decline = d < -half ? d - std::log(x / a) : d - std::log1p(d);
  const Real eta = std::copysign(std::sqrt(2 * decline), d);
  const Real correction = std::abs(d) < static_cast<Real>(1e-3) ? static_cast<Real>(-1.0 / 3) + d / 12 : 1 / d - 1 / eta;
  const Real area = normal_area(eta * std::sqrt(a));
  const Real value = area - std::exp(-a * decline) / std::sqrt(2 * pi<Real> * a) * correction;
  return value < 0 ? 0 : value > 1 ? 1 : value;
}

// The sum of x^i/((a + 1) ... (a + i)).
template <class Real>
inline Real gamma_lower_sum(Real a, Real x) {
  Real term = 1, sum = 1, n = a;
  do {
    n += 1;
    term *= x / n;
    sum += term;
  } while (term > Machine<Real>::epsilon * sum);
  return sum;
}

// The continued fraction of the upper integral over x^a exp(-x).
template <class Real>
inline Real gamma_upper_fraction(Real a, Real x) {
  Real k = 1 - a, b = k + x + 1, count = 0;
  Real p1 = 1, p2 = x, p3 = x + 1, p4 = x * b;
  Real fraction = p3 / p4;
  const Real large = static_cast<Real>(1e30);
  for (;;) {
    k += 1;
    b += 2;
    count += 1;
    const Real c = k * count;
    const Real p5 = b * p3 - c * p1, p6 = b * p4 - c * p2;
    if (p6 != 0) {
      const Real next = p5 / p6, change = std::abs(fraction - next);
      fraction = next;
      if (!(change > 10 * Machine<Real>::epsilon * next)) return fraction;
    }
    p1 = p3;
    p2 = p4;
    p3 = p5;
    p4 = p6;
    if (std::abs(p5) >= large || std::abs(p6) >= large) {
      p1 /= large;
      p2 /= large;
      p3 /= large;
      p4 /= large;
    }
  }
}

// x > 0, a > 0.
template <class Real>
inline Real gamma_ratio(Real x, Real a) {
  if (std::log(x) >= std::log(Machine<Real>::largest) / 3) return 1;
  if (a > Machine<Real>::largest) return 0;
  if (a >= gamma_uniform_from<Real>) return gamma_uniform(a, x);
  const Real factor = gamma_factor(a, x);
  if (x < a + 2) {  // above a the fraction, too, would serve, but it is slow for small x
    const Real value = a < 1 ? factor / a * gamma_lower_sum(a, x) : factor * gamma_lower_sum(a, x) / a;
    return value < 1 ? value : 1;
  }
  return factor == 0 ? 1 : 1 - factor * gamma_upper_fraction(a, x);
}

// 1 - gamma_ratio, with the digits of a small one.
template <class Real>
inline Real gamma_rest(Real x, Real a) {
  if (a < gamma_uniform_from<Real> && is_near_mean(x, a)) return gamma_rest_near_mean(x, a);
  if (!(x > 1 && x > a) || a >= gamma_uniform_from<Real> || x > Machine<Real>::largest) return 1 - gamma_ratio(x, a);
  const Real factor = gamma_factor(a, x);
  return factor == 0 ? 0 : factor * gamma_upper_fraction(a, x);
}

template <class Real>
inline bool plain_gamma_cdf(Real x, Real a, Real& value) {
  if (x != x || a != a) {
    value = x != x ? x : a;
    return true;
  }
  if (!(x >= 0)) return false;
  if (x == 0) {
    value = 0;
    return true;
  }
  if (!(a > 0)) return false;
  value = gamma_ratio(x, a);
  return true;
}
template <class Real>
Real l_gamma_cdf(Real x, Real a) {
  Real value = 0;
  if (plain_gamma_cdf(x, a, value)) return value;
  if (x < 0) {
    raise<Half>(1, STAT_ARG_LESS_THAN_ZERO, {.r = {shown(x)}, .l = {"x"}});
    return 0;
  }
  return refuse(5, STAT_SHAPE_PARAMETER_NEGATIVE, a);
}

// The transform that makes a cube root of chi-squared/df nearly normal, with its two constants for df.
template <class Real>
struct WilsonHilferty {
  static constexpr Real ratio = static_cast<Real>(2.0 / 9);
  Real mean, deviation;
  explicit WilsonHilferty(Real df) : mean(1 - ratio / df), deviation(std::sqrt(ratio / df)) {}
  Real normal(Real x, Real df) const {
    return (std::cbrt(x / df) - mean) / deviation;
  }
  Real point(Real z, Real df) const {
    const Real root = mean + z * deviation;
    return df * (root * root * root);
  }
};
inline constexpr double hilferty_from = 65, hilferty_one = 5, hilferty_zero = -18.8055, least_chi_squared = 1e-12;
inline constexpr double most_chi_squared = 200;

// The asymptotic series of the upper tail. Its terms alternate once u is negative, and from then on may grow again.
template <class Real>
inline Real chi_upper_sum(Real a, Real z) {
  const Real r = 1 / z;
  Real u = a - 1, term = r * u, sum = 1 + term;
  for (int i = 0; i < 49; ++i) {
    u -= 1;
    const Real next = term * u * r;
    const Real size = std::abs(next);
    if (Machine<Real>::epsilon * sum >= size || (u < 0 && size > std::abs(term))) break;
    term = next;
    sum += term;
  }
  return sum;
}
template <class Real>
inline Real chi_lower_sum(Real a, Real z, Real first) {
  Real term = first, sum = first;
  for (int i = 1; i <= 50; ++i) {
    term *= z / (a + static_cast<Real>(i));
    if (Machine<Real>::epsilon * sum >= term) break;
    sum += term;
  }
  return sum;
}

// df from 0.5 to 65, x from 1e-12 to 200; g = gamma(a), a = df/2. `density` receives x times the density.
template <class Real>
inline Real chi_by_series(Real x, Real a, Real g, Real& density) {
  const Real z = x / 2;
  // z^a exp(-z) as powers: a large exponent would lose digits. Halves, where the whole would overflow single precision.
  const bool halves = sizeof(Real) == sizeof(float);
  const Real root = halves ? std::pow(z, a / 2) * std::exp(-z / 2) : 0;
  const Real power = halves ? root * root : std::pow(z, a) * std::exp(-z);
  density = power / g;
  const Real middle = a / 2 > 13 ? a / 2 : 13;
  if (z >= middle) return 1 - power * chi_upper_sum(a, z) / z / g;
  if (a > static_cast<Real>(12.5) && x < 2) return 0;
  const Real value = power * chi_lower_sum(a, z, 1 / (g * a));
  return value < 1 ? value : 1;
}

// False where something is to be raised.
template <class Real>
inline bool plain_chi_squared_cdf(Real x, Real df, Real& value) {
  if (x != x || df != df) {
    value = x != x ? x : df;
    return true;
  }
  if (!(x >= 0) || !(df >= static_cast<Real>(0.5))) return false;
  if (x <= static_cast<Real>(least_chi_squared)) {
    value = 0;
  } else if (x > Machine<Real>::largest) {
    value = 1;
  } else if (df > static_cast<Real>(hilferty_from)) {
    value = 0;
    if (x < 2) return true;
    const Real z = WilsonHilferty<Real>(df).normal(x, df);
    if (z < static_cast<Real>(hilferty_zero)) return false;
    value = z > static_cast<Real>(hilferty_one) ? 1 : normal_area(z);
  } else if (x > static_cast<Real>(most_chi_squared)) {
    value = 1;
  } else {
    Real g = 0, density;
    functions::plain_gamma(df / 2, g);
    value = chi_by_series(x, df / 2, g, density);
  }
  return true;
}
template <class Real>
Real l_chi_squared_cdf(Real x, Real df) {
  Real value = 0;
  if (plain_chi_squared_cdf(x, df, value)) return value;
  if (x < 0) {
    raise<Half>(1, STAT_ARG_LESS_THAN_ZERO, {.r = {shown(x)}, .l = {"chi_squared"}});
    return 0;
  }
  if (df < static_cast<Real>(0.5)) return refuse(5, STAT_DF_MUST_BE_GE_POINT_5, df);
  raise<Half>(2, STAT_NORMAL_UNDERFLOW);
  return 0;
}

// What ended a search, and the point where it ended.
enum class Search { found, no_bracket, stalled };
template <class Real>
struct Point {
  Real x;
  Search search;
};

// Relative step towards the root of F(x) = p for a positive variable, from Newton's iteration in log x on the logarithm of the
// smaller tail; both tails are concave there, so that the iteration converges from everywhere. `slope` is x times the density.
template <class Real>
inline Real tail_step(Real value, Real slope, Real p) {
  if (p <= static_cast<Real>(0.5)) return std::log(p / value) * value / slope;
  return std::log((1 - value) / (1 - p)) * (1 - value) / slope;
}

// The root of f(x) = p between low and high, where f lies below and above p, from the start x. f also gives the slope. Steps that
// leave the bracket, or that a flat or broken f spoils, halve it (in logarithms).
template <class Real, class Function>
Point<Real> refine(Function f, Real p, Real x, Real low, Real high) {
  const Real tolerance = 10 * Machine<Real>::epsilon;
  for (int i = 0; i < 200; ++i) {
    Real slope = 0;
    const Real value = f(x, slope);
    if (std::abs(value - p) <= Machine<Real>::epsilon / 2 * p) return {x, Search::found};
    if (value < p) {
      low = x;
    } else {
      high = x;
    }
    const Real step = tail_step(value, slope, p);
    if (std::abs(step) <= tolerance) return {x * (1 + step), Search::found};
    if (high - low <= tolerance * high) return {low + (high - low) / 2, Search::found};
    // exp(step) to the second order is enough for short steps.
    Real next = std::abs(step) < static_cast<Real>(0.01) ? x * (1 + step * (1 + step / 2)) : x * std::exp(step);
    if (!(next > low && next < high))
      next = low > 0 && high > 4 * low ? std::sqrt(low) * std::sqrt(high) : low + (high - low) / 2;
    if (next <= low || next >= high) return {x, Search::found};
    x = next;
  }
  return {x, Search::stalled};
}

// df > 65: the transform is its own inverse, where its value is not cut off.
template <class Real>
inline Point<Real> chi_inverse_by_transform(Real p, Real df) {
  const Real z = quiet_normal_inverse(p);
  Real x = WilsonHilferty<Real>(df).point(z, df);
  if (!(x > 0)) x = 0;
  const bool cut = x < 2 || z > static_cast<Real>(hilferty_one) || z < static_cast<Real>(hilferty_zero);
  return {x, cut ? Search::no_bracket : Search::found};
}

// df up to 65, between the ends at which the distribution function jumps to 0 and to 1.
template <class Real>
Point<Real> chi_inverse_by_series(Real p, Real df) {
  const Real a = df / 2;
  Real g = 0;
  functions::plain_gamma(a, g);
  const auto f = [=](Real x, Real& slope) { return chi_by_series(x, a, g, slope); };
  // A start from the first term of the series where the transform is poor.
  Real x = WilsonHilferty<Real>(df).point(quiet_normal_inverse(p), df);
  const Real step = static_cast<Real>(1.05);
  if (df < static_cast<Real>(-1.24) * std::log(p) || !(x > static_cast<Real>(0.01))) x = 2 * std::pow(p * g * a, 1 / a);
  const Real least = df > 25 ? 2 : static_cast<Real>(least_chi_squared) * (1 + Machine<Real>::epsilon);
  const Real most = static_cast<Real>(most_chi_squared);
  // p beyond the values next to the jumps; nothing else can be out of reach.
  Real slope = 0;
  if (p < static_cast<Real>(1e-3) && f(least, slope) >= p) return {least, Search::no_bracket};
  if (p > static_cast<Real>(1 - 1e-14) && f(most, slope) <= p) return {most, Search::no_bracket};
  if (!(x > least)) x = least * step;
  if (x > most) x = most / step;
  return refine(f, p, x, least, most);
}

template <class Real>
inline Point<Real> chi_inverse(Real p, Real df) {
  return df > static_cast<Real>(hilferty_from) ? chi_inverse_by_transform(p, df) : chi_inverse_by_series(p, df);
}

template <class Real>
inline bool plain_chi_squared_inverse_cdf(Real p, Real df, Real& value) {
  if (p != p || df != df) {
    value = p != p ? p : df;
    return true;
  }
  if (!is_open_probability(p) || !(df >= static_cast<Real>(0.5))) return false;
  const Point<Real> point = chi_inverse(p, df);
  value = point.x;
  return point.search == Search::found;
}
template <class Real>
Real l_chi_squared_inverse_cdf(Real p, Real df) {
  if (p != p || df != df) return p != p ? p : df;
  if (!is_open_probability(p)) return refuse(5, STAT_P_OUTSIDE_OPEN_INTERVAL, p);
  if (df < static_cast<Real>(0.5)) return refuse(5, STAT_DF_MUST_BE_GE_POINT_5, df);
  const Point<Real> point = chi_inverse(p, df);
  if (point.search == Search::no_bracket) refuse(3, STAT_UNABLE_TO_BRACKET_VALUE, p);
  if (point.search == Search::stalled) refuse(3, STAT_CHI_2_INV_CDF_CONVERGENCE, p);
  return point.x;
}

}  // namespace zent::distributions
