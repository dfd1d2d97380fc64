// The non-central chi-squared and t distributions.
//
// Methods: the Poisson mixture of central chi-squared distributions from its largest weight outwards; for t the finite recurrence
// of Owen (1968), and the trapezoidal rule for large degrees of freedom and where the recurrence cancels. The inverses bracket
// the root and refine it.
#pragma once

#include <type_traits>

#include "stat/distributions/discrete.hpp"
#include "stat/distributions/student.hpp"

namespace zent::distributions {

template <class Real>
struct Mixture {
  Real value, slope;  // the distribution function and x times the density
  bool settled;
};

// x^a exp(-x)/gamma(a + 1), the difference of neighbouring central distributions.
template <class Real>
inline Real gamma_step(Real a, Real x) {
  return gamma_factor(a, x) / a;
}

inline constexpr long longest_walk = 1000;

// Whether Chernoff's bound of the distribution function, exp(s x) times the mean of exp(-s X) with v = 1 + 2 s, underflows.
template <class Real>
bool noncentral_underflows(Real x, Real df, Real lambda) {
  const Real best = (df + std::sqrt(df * df + 4 * x * lambda)) / (2 * x), most = static_cast<Real>(1e30);
  const Real v = best < most ? best : most;
  return v > 1 && (v - 1) * (x - lambda / v) - df * std::log(v) < 2 * std::log(Machine<Real>::smallest);
}

// x, lambda > 0. One walk from the largest weight down to index 0, where central values grow by positive steps, and one up, where
// they fall and are computed afresh before the subtractions have cost a digit. A walk cut short is settled when
// its last term is below 100 epsilon of the value.
template <class Real>
Mixture<Real> noncentral_sum(Real x, Real df, Real lambda) {
  const Real z = x / 2, mean = lambda / 2, shape = df / 2, epsilon = Machine<Real>::epsilon;
  const Real small = Machine<Real>::smallest / epsilon, least_weight = static_cast<Real>(1e-20), left_out = 100 * epsilon;
  const long start = mean < 1 ? 1 : static_cast<long>(mean);
  const Real first_weight = gamma_factor(static_cast<Real>(start), mean) / static_cast<Real>(start);
  const Real first_area = gamma_ratio(z, shape + static_cast<Real>(start));
  const Real first_step = gamma_step(shape + static_cast<Real>(start), z);
  Mixture<Real> sum = {first_weight * first_area, first_weight * first_step * (shape + static_cast<Real>(start)), true};
  Real weight = first_weight, area = first_area, step = first_step, last = sum.value;
  long i = start;
  while (i > 0) {
    const Real a = shape + static_cast<Real>(i) - 1;
    weight *= static_cast<Real>(i) / mean;
    step = step > small ? step * (a + 1) / z : gamma_step(a, z);
    area += step;
    --i;
    const Real added = weight * (area < 1 ? area : 1);
    sum.value += added;
    sum.slope += weight * step * a;
    // Nothing in the sum so far: the terms that count, far below, are still to come.
    if (sum.value > 0 && added <= last && added <= epsilon * sum.value && weight < least_weight) break;
    last = added;
    if (start - i == longest_walk && i > 0) {
      sum.settled = sum.value > 0 ? added <= left_out * sum.value : noncentral_underflows(x, df, lambda);
      break;
    }
  }
  weight = first_weight, area = first_area, step = first_step;
  Real anchor = area;
  for (i = start + 1;; ++i) {
    const Real a = shape + static_cast<Real>(i);
    weight *= mean / static_cast<Real>(i);
    area -= step;
    if (!(area > anchor / 2)) anchor = area = gamma_ratio(z, a);
    step = step > small ? step * z / a : gamma_step(a, z);
    const Real added = weight * area;
    sum.value += added;
    sum.slope += weight * step * a;
    if (weight < least_weight * sum.value || added <= epsilon / 4 * sum.value) break;
    if (i - start == longest_walk) {
      sum.settled = sum.settled && added <= left_out * sum.value;
      break;
    }
  }
  if (sum.value > 1) sum.value = 1;
  return sum;
}

// lambda >= 0; the central distribution without the approximations of chi_squared_cdf.
template <class Real>
inline Mixture<Real> noncentral(Real x, Real df, Real lambda) {
  if (x > Machine<Real>::largest) return {1, 0, true};
  if (lambda > 4 * Machine<Real>::smallest) {
    const Mixture<Real> sum = noncentral_sum(x, df, lambda);
    if constexpr (sizeof(Real) == sizeof(float)) {
      if (sum.value < Machine<Real>::smallest / Machine<Real>::epsilon) {  // central values underflowed that count
        const Mixture<double> wide = noncentral_sum(shown(x), shown(df), shown(lambda));
        const bool settled = wide.settled || noncentral_underflows(x, df, lambda);  // 0 in the range of Real, either way
        return {static_cast<Real>(wide.value), static_cast<Real>(wide.slope), settled};
      }
    }
    return sum;
  }
  return {gamma_ratio(x / 2, df / 2), gamma_step(df / 2, x / 2) * (df / 2), true};
}

inline constexpr double most_noncentral = 200000;

// The number of the first parameter error, 0 without one.
template <class Real>
inline long noncentral_refusal(Real df, Real lambda) {
  if (df < static_cast<Real>(0.5) || df > static_cast<Real>(most_noncentral)) return STAT_DF_RANGE;
  if (lambda < 0) return STAT_ALAM_GE_ZERO;
  return df + lambda > static_cast<Real>(most_noncentral) ? long{STAT_DF_ALAM_SUM} : 0;
}
template <class Real>
Real refuse_noncentral(long number, Real df, Real lambda) {
  if (number != STAT_DF_ALAM_SUM) return refuse(5, number, number == STAT_DF_RANGE ? df : lambda);
  raise<Half>(5, number, {.r = {shown(df), shown(lambda)}});
  return Machine<Real>::not_a_number;
}
template <class Real>
inline bool first_not_a_number(Real a, Real b, Real c, Real& value) {
  value = a != a ? a : b != b ? b : c;
  return value != value;
}

template <class Real>
inline bool plain_non_central_chi_sq(Real x, Real df, Real lambda, Real& value) {
  if (first_not_a_number(x, df, lambda, value)) return true;
  if (noncentral_refusal(df, lambda) != 0 || !(x > 0)) return false;
  const Mixture<Real> mixture = noncentral(x, df, lambda);
  value = mixture.value;
  return mixture.settled;
}
template <class Real>
Real l_non_central_chi_sq(Real x, Real df, Real lambda) {
  Real value = 0;
  if (plain_non_central_chi_sq(x, df, lambda, value)) return value;
  const long number = noncentral_refusal(df, lambda);
  if (number != 0) return refuse_noncentral(number, df, lambda);
  if (!(x > 0)) {
    refuse(1, STAT_CHISQ_ZERO, x);
    return 0;
  }
  raise<Half>(3, STAT_CONV_NOT_OBTAINED);
  return value;
}

// The start is the quantile of a central distribution with the same mean and variance, scaled.
template <class Real>
Point<Real> noncentral_quantile(Real p, Real df, Real lambda) {
  const Real scale = (df + 2 * lambda) / (df + lambda), freedom = (df + lambda) / scale;
  const Real far = static_cast<Real>(1.05);
  Real x = scale * WilsonHilferty<Real>(freedom).point(quiet_normal_inverse(p), freedom);
  const auto f = [=](Real at, Real& slope) {
    const Mixture<Real> mixture = noncentral(at, df, lambda);
    slope = mixture.slope;
    return mixture.value;
  };
  // Leading term at 0: exp(-lambda/2) (x/2)^a/gamma(a + 1).
  const Real a = df / 2, log_first = log_gamma_factor(a, static_cast<Real>(1)) + 1 - std::log(a) - lambda / 2;
  const Real near_zero = 2 * std::exp((std::log(p) - log_first) / a);
  if (!(x > 0) || near_zero < x) x = near_zero < df + lambda ? near_zero : (df + lambda) / 1000;
  if (!(x > 4 * Machine<Real>::smallest)) return {x, x > 0 ? Search::found : Search::no_bracket};
  Real high = x * far, length = static_cast<Real>(0.05), slope = 0;
  for (Real value = f(high, slope); value < p; value = f(high, slope)) {
    // Near 1 the distribution function may stop short of p by rounding: then its end is wanted.
    if (p > static_cast<Real>(0.5) && value >= p - 100 * Machine<Real>::epsilon && slope < Machine<Real>::epsilon) {
      p = value;
      break;
    }
    length *= 2;
    high *= 1 + length;
    if (high > static_cast<Real>(1e8)) return {high, Search::no_bracket};
  }
  return refine(f, p, x, static_cast<Real>(0), high);
}

template <class Real>
inline bool plain_non_central_chi_sq_inv(Real p, Real df, Real lambda, Real& value) {
  if (first_not_a_number(p, df, lambda, value)) return true;
  if (noncentral_refusal(df, lambda) != 0 || !is_open_probability(p)) return false;
  const Point<Real> point = noncentral_quantile(p, df, lambda);
  value = point.x;
  return point.search == Search::found;
}
template <class Real>
Real l_non_central_chi_sq_inv(Real p, Real df, Real lambda) {
  if (p != p || df != df || lambda != lambda) return p != p ? p : df != df ? df : lambda;
  const long number = noncentral_refusal(df, lambda);
  if (number != 0) return refuse_noncentral(number, df, lambda);
  if (!is_open_probability(p)) return refuse(5, STAT_P_OUTSIDE_OPEN_INTERVAL, p);
  const Point<Real> point = noncentral_quantile(p, df, lambda);
  if (point.search == Search::no_bracket) return refuse(5, STAT_UNABLE_TO_BRACKET_VALUE, p);
  if (point.search == Search::stalled) raise<Half>(4, STAT_CONVERGENCE_ASSUMED);
  return point.x;
}

// exp(-x^2/2) for an x that carries more digits than the result; where it would underflow, in the range of the wider numbers.
template <class Real, class Wide>
inline Wide bell(Wide x) {
  const Wide y = x * x / 2;
  const Real most = static_cast<Real>(y), e = std::exp(-most);
  if (e < Machine<Real>::smallest) return std::exp(-y);
  return static_cast<Wide>(e) * (1 - (y - static_cast<Wide>(most)));
}

// Where the sums of the recurrence leave less than this of what they are taken from, too many digits have cancelled.
inline constexpr long longest_recurrence = 150;
inline constexpr double least_by_recurrence = 0.02;

// What the recurrence multiplies by, so that its steps need no division: a(2) = 1, a(k) = 1/((k - 2) a(k - 1)), and (k - 1)/k.
template <class Wide>
struct OwenSteps {
  Wide factor[longest_recurrence], share[longest_recurrence];

  constexpr OwenSteps() : factor{}, share{} {
    for (long k = 2; k < longest_recurrence; ++k) {
      const Wide r = static_cast<Wide>(k);
      factor[k] = k == 2 ? 1 : 1 / ((r - 2) * factor[k - 1]);
      share[k] = (r - 1) / r;
    }
  }
};
template <class Wide>
inline constexpr OwenSteps<Wide> owen_steps;

// Owen's recurrence for whole df: M(k) in steps of 1, every second one counts. In wider numbers: M(k) has some k rounding errors,
// and for t < 0 the sums are differences; `from` receives what they are taken from, or the area in M(0), whose rounding error may
// grow to as much as itself in M(k) that truly vanish. It ends where the terms shrink and do not count.
template <class Real>
Real noncentral_t_by_recurrence(Real t, long df, Real delta, Real& from) {
  using Wide = std::conditional_t<sizeof(Real) == sizeof(float), double, long double>;
  const Wide x = static_cast<Wide>(t), d = static_cast<Wide>(delta), n = static_cast<Wide>(df), square = n + x * x;
  const Wide root_n = std::sqrt(n), root = std::sqrt(square), a = x / root_n, b = n / square, slant = d * a,
             shift = d * root_n / root;
  const Wide pi_half = std::asin(static_cast<Wide>(1)), root_two_pi = std::sqrt(4 * pi_half);
  const Wide area = static_cast<Wide>(normal_area(static_cast<Real>(d * x / root)));
  Wide before = x / root * (bell<Real>(shift) / root_two_pi) * area;                  // M(0)
  Wide now = b * (slant * before + a * bell<Real>(d) / (root_two_pi * root_two_pi));  // M(1)
  const auto step = [&](long k) {
    const Wide next = owen_steps<Wide>.share[k] * b * (owen_steps<Wide>.factor[k] * slant * now + before);
    before = now;
    now = next;
  };
  const Wide least = static_cast<Wide>(1e-25), shrinking = static_cast<Wide>(0.99);
  Wide sum = before;  // of M(k), k and df both even or both odd
  long k = 2;
  if (df % 2 != 0) {
    sum = now;
    step(k++);
  }
  for (; k <= df - 2; k += 2) {
    step(k);
    sum += now;
    if (std::abs(now) < least && std::abs(before) < least && b * (1 + owen_steps<Wide>.factor[k] * std::abs(slant)) < shrinking) {
      break;
    }
    step(k + 1);
  }
  const Real h = static_cast<Real>(df % 2 == 0 ? d : shift), least_from = t < 0 ? static_cast<Real>(area) : 0;
  const Real first = normal_area(-h);
  from = first > least_from ? first : least_from;
  if (df % 2 == 0) return first + static_cast<Real>(root_two_pi * sum);
  return first + 2 * l_b1nnt(h, static_cast<Real>(a)) + (df > 1 ? static_cast<Real>(2 * sum) : 0);
}

// The distribution as the integral of normal_area(t e^u - delta) times the density of u = log(chi/sqrt(df)), by the trapezoidal
// rule, which is exact to the precision for a step well below the width of the integrand. All terms are positive: the lower tail
// keeps its digits. Not-a-number when it would take too many terms.
struct TrapezoidTerm {
  double t, df, delta;

  struct Parts {
    double size, exponent;  // e^u, and u - (e^2u - 1)/2 without cancellation, times df
  };
  Parts parts(double u) const {
    double size, more;  // e^u, e^u - 1
    if (std::abs(u) < 1) {
      more = std::expm1(u);
      size = 1 + more;
    } else {
      size = std::exp(u);
      more = size - 1;
    }
    if (std::abs(u) > 0.01) return {size, df * (u - more * (more + 2) / 2)};
    const double sum = 1 + u * (2.0 / 3 + u * (1.0 / 3 + u * (2.0 / 15 + u * (2.0 / 45 + u * (4.0 / 315)))));
    return {size, -df * u * u * sum};
  }
  double logarithm(double u) const {
    const Parts p = parts(u);
    return log_normal_area(t * p.size - delta) + p.exponent;
  }
  double value(double u, double top) const {
    const Parts p = parts(u);
    const double x = t * p.size - delta, area = normal_area(x);
    return area > 1e-290 ? area * std::exp(p.exponent - top) : std::exp(log_normal_area(x) + p.exponent - top);
  }
};
inline double noncentral_t_by_rule(double t, double df, double delta) {
  const TrapezoidTerm f = {t, df, delta};
  // The narrowest feature of the integrand: the hump of the density, or the step of the area.
  const double sharpest = std::sqrt(2 * df) + (t * delta > 0 ? std::abs(delta) : 0) + 2;
  if (sharpest > 1000 * std::sqrt(2 * df)) return Machine<double>::not_a_number;  // too many terms
  // An integrand of exp(-e^2u) needs a step of its own, however wide the hump is.
  const double step = sharpest < 5.4 ? 0.12 : 0.65 / sharpest;
  // The density alone has its peak at 0, the area draws it to larger |t e^u| (t > 0) or smaller: to near -log|t| far out.
  const double width = (t > 0 ? 1 : -1) / std::sqrt(2 * df);
  double reach = width, last = f.logarithm(0), next = f.logarithm(width);
  for (; !(next < last) && std::abs(reach) < 800; next = f.logarithm(reach)) {
    last = next;
    reach *= 2;
  }
  const double low = reach < 0 ? reach : reach / 4, high = reach < 0 ? reach / 4 : reach;
  const double peak =
      reach == width ? 0 : find_peak([=](double u) { return f.logarithm(u); }, low, high, step > width ? step : std::abs(width));
  const double top = f.logarithm(peak);
  double sum = 1;
  for (int side = -1; side <= 1; side += 2) {
    for (int i = 1;; ++i) {
      const double term = f.value(peak + side * i * step, top);
      sum += term;
      if (term < 1e-17 * sum) break;
      if (i == 40000 || sum != sum) return Machine<double>::not_a_number;
    }
  }
  // The density's constant: 2 (df/2)^(df/2) exp(-df/2)/gamma(df/2) at u = 0.
  const double constant = std::log(2.0) + log_gamma_factor(df / 2, df / 2);
  return sum * step * std::exp(top + constant);
}

template <class Real>
inline Real noncentral_t(Real t, long df, Real delta) {
  if (std::abs(t) > Machine<Real>::largest) return t > 0 ? 1 : 0;
  if (std::abs(delta) > Machine<Real>::largest) return delta < 0 ? 1 : 0;
  if (t == 0) return normal_area(-delta);
  if (std::abs(delta) > static_cast<Real>(1e15)) {  // the normal variable does not count beside it
    const Real ratio = delta / t, n = static_cast<Real>(df);
    if (!(ratio > 0)) return delta < 0 ? 1 : 0;
    const Real area = ratio > static_cast<Real>(1e10) ? 1 : gamma_ratio(n / 2 * ratio * ratio, n / 2);
    return delta > 0 ? 1 - area : area;
  }
  Real value = -1, from = 1;
  if (df <= longest_recurrence) value = noncentral_t_by_recurrence(t, df, delta, from);
  if (!(value > 0) || !(value > static_cast<Real>(least_by_recurrence) * from)) {
    const double sign = t > delta ? -1 : 1;  // the smaller tail: a sum near 1 may stop short of it
    const double tail = noncentral_t_by_rule(sign * shown(t), static_cast<double>(df), sign * shown(delta));
    if (tail == tail) {
      value = static_cast<Real>(sign < 0 ? 1 - tail : tail);
    } else if (value == -1) {  // chi is a constant, nearly, beside so large a delta
      const Real n = static_cast<Real>(df);
      value = normal_area((t * (1 - 1 / (4 * n)) - delta) / std::sqrt(1 + t / (2 * n) * t));
    }
  }
  return value < 0 ? 0 : value > 1 ? 1 : value;
}

template <class Real>
inline bool plain_non_central_t_cdf(Real t, long df, Real delta, Real& value) {
  value = t != t ? t : delta;
  if (value != value) return true;
  if (df < 1) return false;
  value = noncentral_t(t, df, delta);
  return true;
}
template <class Real>
Real l_non_central_t_cdf(Real t, long df, Real delta) {
  Real value = 0;
  if (plain_non_central_t_cdf(t, df, delta, value)) return value;
  raise<Half>(5, STAT_WRONG_DFE_VALUE, {.i = {df}});
  return Machine<Real>::not_a_number;
}

// Bracket by growing steps from delta, then the secant with one end halved when it stays (Illinois) and bisection when it creeps.
template <class Real>
Point<Real> noncentral_t_quantile(Real p, long df, Real delta) {
  const auto f = [=](Real t) { return noncentral_t(t, df, delta) - p; };
  const Real tolerance = 10 * Machine<Real>::epsilon;
  const Real tiny = Machine<Real>::epsilon / 8 / (1 + std::abs(delta));  // near t = 0 such a width does not change f
  Real low = delta, low_value = f(low), length = static_cast<Real>(1.05), high = low, high_value = low_value;
  if (low_value == 0) return {low, Search::found};
  const bool upwards = low_value < 0;
  do {
    if (upwards) {
      low = high, low_value = high_value;
      high += length;
      high_value = f(high);
    } else {
      high = low, high_value = low_value;
      low -= length;
      low_value = f(low);
    }
    length *= 2;
    if (length > Machine<Real>::largest / 8) return {upwards ? high : low, Search::stalled};
  } while (upwards ? high_value < 0 : low_value > 0);
  int same = 0;
  for (int i = 0; i < 300; ++i) {
    if (low_value == 0) return {low, Search::found};
    if (high_value == 0) return {high, Search::found};
    const Real width = high - low, size = std::abs(low) > std::abs(high) ? std::abs(low) : std::abs(high);
    Real t = same > 2 ? low + width / 2 : low - low_value * (width / (high_value - low_value));
    if (width <= tolerance * size || width <= tiny) return {low + width / 2, Search::found};
    if (!(t > low && t < high)) t = low + width / 2;
    if (t <= low || t >= high) return {t, Search::found};
    const Real value = f(t);
    if (std::abs(value) <= Machine<Real>::epsilon / 2 * p) return {t, Search::found};
    if (value < 0) {
      if (same < 0) high_value /= 2;
      same = same < 0 ? same - 1 : -1;
      low = t, low_value = value;
    } else {
      if (same > 0) low_value /= 2;
      same = same > 0 ? same + 1 : 1;
      high = t, high_value = value;
    }
    if (same < -2) same = 3;
  }
  return {low + (high - low) / 2, Search::stalled};
}

template <class Real>
inline bool plain_non_central_t_inv_cdf(Real p, long df, Real delta, Real& value) {
  value = p != p ? p : delta;
  if (value != value) return true;
  if (df < 1 || !is_open_probability(p) || std::abs(delta) > Machine<Real>::largest) return false;
  const Point<Real> point = noncentral_t_quantile(p, df, delta);
  value = point.x;
  return point.search == Search::found;
}
template <class Real>
Real l_non_central_t_inv_cdf(Real p, long df, Real delta) {
  Real value = 0;
  if (plain_non_central_t_inv_cdf(p, df, delta, value)) return value;
  if (df < 1) {
    raise<Half>(5, STAT_WRONG_DFE_VALUE, {.i = {df}});
    return Machine<Real>::not_a_number;
  }
  if (!is_open_probability(p)) return refuse(5, STAT_P_OUTSIDE_OPEN_INTERVAL, p);
  if (std::abs(delta) > Machine<Real>::largest) return delta;  // all the mass lies there
  refuse(4, STAT_CHI_2_INV_CDF_CONVERGENCE, p);
  return value;
}

}  // namespace zent::distributions
