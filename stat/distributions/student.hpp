// Student's t distribution.
//
// Methods: finite sums and a series for integer degrees of freedom below 20, the incomplete beta function far out, the expansion
// for large degrees of freedom elsewhere (Hill 1970); the inverse from Hill's second expansion by Halley's iteration.
#pragma once

#include "stat/distributions/beta.hpp"

namespace zent::distributions {

// I_x(df/2, 1/2) for x = df/(df + t^2) with t^2 >= df: the area of both tails.
template <class Real>
inline Real t_area_far(Real t, Real y, Real df) {
  const Real half = static_cast<Real>(0.5), a = df / 2;
  Real area = 0;
  if (y > static_cast<Real>(1e30) * df) {  // the leading power; x itself may underflow
    Real log_beta_ab = 0;
    if (!functions::plain_log_beta(a, half, log_beta_ab)) return 0;
    return std::pow(std::sqrt(df) / std::abs(t), df) * std::exp(-log_beta_ab) / a;
  }
  return beta_ratio(df / (df + y), y / (df + y), a, half, area) ? area : 0;
}

// df < 20 whole, t^2 < 4.
template <class Real>
inline Real t_area_by_sum(Real r, long df) {
  const Real z = 1 + r, a = std::sqrt(r);
  Real sum = df == 1 ? 0 : a;
  for (long n = df - 2; n > 1; n -= 2) sum = a + sum * static_cast<Real>(n - 1) / (z * static_cast<Real>(n));
  if (df % 2 == 0) return 1 - sum / std::sqrt(z);
  return 1 - 2 / pi<Real> * (sum / z + std::atan(a));
}

// df < 20 whole, 4 <= t^2 < df.
template <class Real>
inline Real t_area_by_series(Real r, long df) {
  const Real z = 1 + r, whole = static_cast<Real>(df), w = 1 / z;
  Real sum = 1, last = 0, term = whole;
  for (Real m = 2; sum != last; m += 2) {
    term *= w * ((m - 1) / m);
    last = sum;
    sum += term / (whole + m);
  }
  long n = df;
  for (; n > 1 && sum >= static_cast<Real>(1e-30); n -= 2) sum *= static_cast<Real>(n - 1) / (z * static_cast<Real>(n));
  return df % 2 == 0 ? sum : sum * (2 / pi<Real>)*std::sqrt(w);
}

template <class Real>
inline Real t_area_by_expansion(Real r, Real y, Real df) {
  const Real b = df - static_cast<Real>(0.5);
  const Real u = df > 1 / Machine<Real>::smallest || b * r > Machine<Real>::largest ? y : b * std::log1p(r);
  const Real d = 48 * b * b;
  const Real q = (((static_cast<Real>(-0.4) * u - static_cast<Real>(3.3)) * u - 24) * u - static_cast<Real>(85.5)) /
                 (static_cast<Real>(0.8) * u * u + 100 + d);
  const Real w = d > Machine<Real>::largest ? 1 : 1 + (q + u + 3) / d;
  const Real v = w * std::sqrt(u);
  return v < static_cast<Real>(18.8125) ? 2 * normal_area(-v) : 0;
}

// The area of both tails beyond |t|, finite; df >= 1.
template <class Real>
inline Real t_area(Real t, Real df) {
  const Real y = t * t;
  if (y >= df && df <= Machine<Real>::largest) return t_area_far(t, y, df);
  const Real r = y / df;
  const long whole = df < 20 ? static_cast<long>(df) : 0;
  if (whole == 0 || static_cast<Real>(whole) != df) return t_area_by_expansion(r, y, df);
  return y < 4 ? t_area_by_sum(r, whole) : t_area_by_series(r, whole);
}

template <class Real>
inline bool plain_t_cdf(Real t, Real df, Real& value) {
  if (t != t) {
    value = t;
    return true;
  }
  if (std::abs(t) > Machine<Real>::largest) {
    value = t > 0 ? 1 : 0;
    return true;
  }
  if (!(df >= 1)) {
    value = df;
    return df != df;
  }
  const Real area = t_area(t, df) / 2;
  value = t > 0 ? 1 - area : area;
  return true;
}
template <class Real>
Real l_t_cdf(Real t, Real df) {
  Real value = 0;
  return plain_t_cdf(t, df, value) ? value : refuse(5, STAT_DF_MUST_BE_AT_LEAST_ONE, df);
}

// t > 0 with the area q of both tails, to a few digits.
template <class Real>
Real hill_start(Real q, Real df) {
  const auto c = [](double literal) { return static_cast<Real>(literal); };
  const Real a = 1 / (df - c(0.5)), b = 48 / (a * a);
  Real d = ((c(20700) * a / b - 98) * a - 16) * a + c(96.36);
  const Real e = ((c(94.5) / (b + d) - 3) / b + 1) * std::sqrt(a * pi<Real> / 2) * df;
  Real x = e * q, y = std::pow(x, 2 / df);
  if (y > c(0.05) + a) {
    x = quiet_normal_inverse(q / 2);
    y = x * x;
    if (df < 5) d += c(0.3) * (df - c(4.5)) * (x + c(0.6));
    d = (((c(0.05) * e * x - 5) * x - 7) * x - 2) * x + b + d;
    y = (((((c(0.4) * y + c(6.3)) * y + 36) * y + c(94.5)) / d - y - 3) / b + 1) * x;
    y = std::expm1(a * y * y);
  } else {
    y = ((1 / (((df + 6) / (df * y) - c(0.089) * e - c(0.822)) * (df + 2) * 3) + c(0.5) / (df + 4)) * y - 1) * (df + 1) /
            (df + 2) +
        1 / y;
  }
  return std::sqrt(df * y);
}

// The root of t_area(t) = q in t > 0. The distribution function jumps at t^2 = df unless df is whole, so the bracket decides when
// the iteration does not.
template <class Real>
Real t_quantile(Real q, Real df) {
  const Real tolerance = 10 * Machine<Real>::epsilon;
  Real log_beta_ab = 0;
  functions::plain_log_beta(df / 2, static_cast<Real>(0.5), log_beta_ab);
  const Real peak = df < static_cast<Real>(1e15) ? 2 * std::exp(-log_beta_ab) / std::sqrt(df) : std::sqrt(2 / pi<Real>);
  Real t = hill_start(q, df), low = 0, high = Machine<Real>::infinity;
  if (!(t > 0) || t > Machine<Real>::largest) t = std::sqrt(df) * std::exp(-(log_beta_ab + std::log(df / 2 * q)) / df);
  for (int i = 0; i < 200; ++i) {
    const Real area = t_area(t, df);
    if (std::abs(area - q) <= Machine<Real>::epsilon / 2 * q) return t;
    (area > q ? low : high) = t;
    const Real r = t / df * t;
    // t times the density of |t| over the area: minus the logarithmic derivative of the area, in the end that of a power.
    const Real slope = r > 1 / (Machine<Real>::epsilon * Machine<Real>::epsilon)
                           ? df
                           : t * peak * (r < 1 ? std::exp(-(df + 1) / 2 * std::log1p(r)) : std::pow(1 + r, -(df + 1) / 2)) / area;
    const Real newton = std::log(area / q) / slope;
    const Real bend = newton * (1 - (df + 1) * (r / (1 + r)) + slope) / 2;
    const Real step = bend > static_cast<Real>(-0.5) && bend < 2 ? newton / (1 + bend) : newton;
    if (std::abs(step) <= tolerance) return t + t * step;
    Real next = std::abs(step) < static_cast<Real>(0.01) ? t * (1 + step * (1 + step / 2)) : t * std::exp(step);
    if (high <= Machine<Real>::largest && high - low <= tolerance * high) return t;
    if (!(next > low && next < high)) next = high > Machine<Real>::largest ? 2 * t : low + (high - low) / 2;
    if (next <= low || next >= high) return t;
    t = next;
  }
  return t;
}

template <class Real>
inline bool plain_t_inverse(Real p, Real df, Real& value) {
  if (p != p || df != df) {
    value = df != df ? df : p;
    return true;
  }
  if (!(df >= 1) || !is_open_probability(p)) return false;
  const Real half = static_cast<Real>(0.5), epsilon = Machine<Real>::epsilon;
  if (std::abs(p - half) <= epsilon) {
    value = 0;
    return true;
  }
  const Real q = 2 * (p < half ? p : 1 - p);
  if (std::abs(df - 2) <= epsilon) {
    value = (1 - q) * std::sqrt(2 / (2 - q)) / std::sqrt(q);
  } else if (df == 1) {
    value = std::sin((1 - q) * (pi<Real> / 2)) / std::sin(q * (pi<Real> / 2));
  } else if (df > 1 / (epsilon * epsilon)) {
    value = std::abs(quiet_normal_inverse(p));
  } else {
    value = t_quantile(q, df);
  }
  if (p < half) value = -value;
  return true;
}
template <class Real>
Real l_t_inverse(Real p, Real df) {
  Real value = 0;
  if (plain_t_inverse(p, df, value)) return value;
  if (df < 1) return refuse(5, STAT_DF_MUST_BE_AT_LEAST_ONE, df);
  return refuse(5, STAT_P_OUTSIDE_OPEN_INTERVAL, p);
}

}  // namespace zent::distributions
