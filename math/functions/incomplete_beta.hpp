// The incomplete beta function ratio for both halves.
//
// Methods: near the mean Bosten and Battiste (1974), an infinite sum for the fractional part of q and a finite sum for the whole
// part, in blocks so that its terms neither underflow nor overflow; in the tails the continued fraction (DLMF 8.17.22).
#pragma once

#include "math/functions/beta.hpp"
#include "math/functions/erf.hpp"

namespace zent::functions {

// log(1 + d) where 1 + d is also known as a product: each serves where it is the more precise.
template <class Real>
inline Real log_near_one(Real d, Real whole) {
  return d < static_cast<Real>(-0.5) ? std::log(whole) : std::log1p(d);
}

// log(x^a z^b/beta(a, b)), z = 1 - x, arranged so that large terms cancel before they are rounded.
template <class Real>
inline Real log_beta_power(Real x, Real z, Real a, Real b, Real log_beta_ab) {
  const Real sum = a + b, half = static_cast<Real>(0.5);
  if (a >= 10 && b >= 10) {
    const Real d = x * b - z * a;
    const Real corrections = stirling_correction(sum) - stirling_correction(a) - stirling_correction(b);
    return a * log_near_one(d / a, x * sum / a) + b * log_near_one(-d / b, z * sum / b) + corrections +
           half * std::log(a / sum * b) - static_cast<Real>(log_root_two_pi);
  }
  const Real p = a < b ? a : b, q = a < b ? b : a;
  Real log_gamma_p = 0;
  if (q < 10 || !plain_log_gamma(p, log_gamma_p)) return a * std::log(x) + b * std::log(z) - log_beta_ab;
  const Real xp = a < b ? x : z, xq = a < b ? z : x;
  const Real c = stirling_correction(q) - stirling_correction(sum);
  return p * (std::log(xp * sum) - 1) - log_gamma_p - c + half * std::log1p(-p / sum) +
         q * log_near_one((p - xp * sum) / q, xq * sum / q);
}

// x^a for z = 1 - x, of which the smaller one is exact.
template <class Real>
inline Real share_power(Real x, Real z, Real a) {
  return z < static_cast<Real>(0.5) ? std::exp(a * std::log1p(-z)) : std::pow(x, a);
}

// x^a z^b/beta(a, b). A small x takes its power alone: in the exponent its logarithm would lose as many digits as it has.
template <class Real>
inline Real beta_power(Real x, Real z, Real a, Real b, Real log_beta_ab) {
  const Real p = a < b ? a : b, q = a < b ? b : a;
  Real whole = 0;  // for a small parameter the beta function is large, and its logarithm too
  if (q < 1 && gamma_ratio(p, q, whole)) return std::pow(x, a) * std::pow(z, b) / whole;
  if (p < static_cast<Real>(0.01) && gamma_ratio(p, q, whole)) return share_power(x, z, a) * share_power(z, x, b) / whole;
  if (x * (a + b) < static_cast<Real>(1e-3)) {
    const Real power = std::pow(x, a);
    if (power >= Machine<Real>::smallest) return power * std::exp(b * std::log1p(-x) - log_beta_ab);
  }
  return std::exp(log_beta_power(x, z, a, b, log_beta_ab));
}

// The infinite sum, with ps in (0, 1]; `lnsml` is the logarithm of the least exponent that counts.
template <class Real>
inline Real beta_infinite_sum(Real y, Real log_y, Real p, Real ps, Real log_beta_ps, Real lnsml) {
  const Real t = p * log_y - log_beta_ps - std::log(p);
  if (t < lnsml) return 0;
  Real value = std::exp(t);
  if (ps == 1) return value;
  Real term = value * p;
  const Real ratio = std::log(Machine<Real>::spacing) / log_y;
  const long n = ratio > 4 ? (ratio < static_cast<Real>(1e9) ? static_cast<long>(ratio) : 1000000000L) : 4;
  for (long i = 1; i <= n; ++i) {
    const Real k = static_cast<Real>(i);
    term *= (k - ps) * y / k;
    const Real added = term / (p + k);
    value += added;
    if (added < value * (Machine<Real>::spacing / 64)) break;  // all terms are positive and fall
  }
  return value;
}

// The finite sum for q > 1; terms start in block ib, exp(lnsml) times smaller for each.
template <class Real>
inline Real beta_finite_sum(Real y, Real z, Real p, Real q, Real log_beta_pq, Real lnsml) {
  const Real t = log_beta_power(y, z, p, q, log_beta_pq) - std::log(q);
  long ib = t / lnsml > 0 ? static_cast<long>(t / lnsml) : 0;
  Real term = std::exp(t - static_cast<Real>(ib) * lnsml);
  const Real block = std::exp(lnsml);
  const Real c = 1 / z, pq = p + q;
  const Real p1 = q * c / (pq - 1);
  long n = static_cast<long>(q);
  if (q == static_cast<Real>(n)) --n;
  Real sum = 0;
  for (long i = 1; i <= n; ++i) {
    if (p1 <= 1 && term / Machine<Real>::spacing <= sum) break;
    const Real k = static_cast<Real>(i);
    term *= (q - k + 1) * c / (pq - k);
    if (term > 1) {
      --ib;
      term *= block;
    }
    if (ib == 0) sum += term;
  }
  return sum;
}

// I_x(a, b) for x well below the mean, by the even part of its continued fraction, with full relative precision however small the
// value is. Not a number without convergence.
template <class Real>
inline Real beta_fraction(Real x, Real z, Real a, Real b, Real log_beta_ab) {
  const Real sum = a + b;
  // For x near 1 the terms all but cancel; what is left of them is known in z, which has the digits that x lacks.
  const bool near_one = x > static_cast<Real>(0.5);
  Real odd = -sum * x / (a + 1);  // coefficients 1, 3, 5, ... of the fraction 1/(1 + odd/(1 + even/(1 + ...
  Real d = near_one ? (a + 1) / ((1 - b) + sum * z) : 1 / (1 + odd), change = d, value = d;
  int small = 0;
  for (int k = 1; k <= 200000; ++k) {
    const Real m = static_cast<Real>(k), a2m = a + 2 * m;
    const Real even = m * (b - m) * x / ((a2m - 1) * a2m);
    const Real above = (a + m) * (sum + m), below = a2m * (a2m + 1);
    const Real next = -above * x / below;
    const Real left = near_one ? ((a * (2 * m + 1 - b) + m * (3 * m + 2 - b)) + above * z) / below : 1 + next;
    const Real partial = left + even;
    d = 1 / (partial - odd * even * d);
    change *= partial * d - 1;
    value += change;
    odd = next;
    small = std::abs(change) <= Machine<Real>::spacing * std::abs(value) ? small + 1 : 0;
    if (small == 2) {  // one small change may be a sign change on the way
      return beta_power(x, z, a, b, log_beta_ab) * (value / a);
    }
  }
  return Machine<Real>::not_a_number;
}

// Both parameters very large: Temme's uniform expansion (DLMF 8.18.9) with its first correction; what follows is below the
// rounding.
template <class Real>
inline Real beta_uniform(Real x, Real a, Real b) {
  const Real sum = a + b, half = static_cast<Real>(0.5);
  const Real x0 = a / sum, y0 = b / sum;
  const Real d = (x * b - (1 - x) * a) / sum;  // x - x0
  const Real exponent = x0 * log_near_one(d / x0, x / x0) + y0 * log_near_one(-d / y0, (1 - x) / y0);
  const Real spread = std::sqrt(x0 * y0);
  Real eta, correction;
  if (std::abs(d) < static_cast<Real>(1e-4) * spread * spread) {
    const Real size = std::abs(d) < static_cast<Real>(1e-9) * spread ? d / spread : std::sqrt(exponent < 0 ? -2 * exponent : 0);
    eta = std::copysign(size, d);
    correction = (y0 - x0) / (3 * spread);
  } else {
    eta = std::copysign(std::sqrt(-2 * exponent), d);
    correction = 1 / eta - spread / d;
  }
  Real area = 0;
  if (!plain_erfc(-eta * std::sqrt(sum / 2), area)) area = 0;
  return half * area + std::exp(-half * eta * eta * sum) / std::sqrt(static_cast<Real>(6.283185307179586477) * sum) * correction;
}

// The sums serve near the mean, within this many standard deviations and up to these parameters. Elsewhere the fraction is more
// precise: for parameters to 200 it is off by at most 3e-15 where the sums are off by 4e-14, it keeps the relative precision of
// small values, of which the sums may keep no digit, and beyond 200 the rounding of a long finite part shows. The sums also stand
// in for a fraction that does not converge, as long as they end in useful time.
inline constexpr double beta_middle = 0.1, beta_middle_most = 200, beta_longest_sum = 1e4;
template <class Real>
inline constexpr Real beta_uniform_from = static_cast<Real>(std::is_same_v<Real, float> ? 1e8 : 1e12);

// Whether the fraction is to give the share above x, so that the smaller of both has the full precision. With a below 1 it serves
// beyond the mean too, until its first terms begin to cancel. With both below 1 the mass is at the ends, and the ends are
// compared, but for small x: there the fraction from the other end would be long and its rounding errors add up. Very near to 1
// it would be long too, and x does not tell its distance from 1 well enough to deserve it.
template <class Real>
inline bool beta_upper(Real x, Real a, Real b, Real distance) {
  const Real z = 1 - x, near = static_cast<Real>(1e-5), nearest = static_cast<Real>(1e-10);
  if (b < 1 && z < near && z * a < 1 && (b > z || z < nearest)) return true;
  if (a >= 1) return distance > 0;
  if (b >= 1) return 2 * x > (a + 1) / (a + b + 2);
  if (x < static_cast<Real>(0.1)) return false;
  return std::pow(x, a) * b > std::pow(z, b) * a;
}

// For a and b that are all but zero the mass is at the ends, b/(a + b) of it at 0. The share above x is a/(a + b) exp(w) with a
// small w, made of the power of z = 1 - x, its power series, and log(gamma(1 + a) gamma(1 + b)/gamma(1 + a + b)) in powers of a
// and b.
inline constexpr double beta_all_but_zero = 0.02;
inline constexpr double zeta_over_k[] = {
    0.82246703342411321824,  0.40068563438653142847,  0.27058080842778454788, 0.20738555102867398527, 0.16955717699740818995,
    0.14404989676884611812,  0.12550966952474304242,  0.11133426586956469049, 0.10009945751278180853, 0.090954017145829042233,
    0.083353840546109004025, 0.076932516411352191473, 0.071432946295361336059};
template <class Real>
inline Real end_exponent(Real z, Real a, Real b) {
  const Real sum = a + b, product = a * b;
  Real term = z, series = 0;
  for (int n = 1; n <= 200; ++n) {
    const Real k = static_cast<Real>(n);
    term *= n == 1 ? 1 - a : (k - a) / k * z;
    const Real added = term / (b + k);
    series += added;
    if (added < Machine<Real>::spacing * series) break;
  }
  Real gammas = 0, part = 0, sign = -1;  // part: ((a + b)^k - a^k - b^k)/(a b), from the power sums a^k + b^k
  Real power_sum = 2, next_sum = sum;
  for (double c : zeta_over_k) {
    part = sum * part + power_sum;
    gammas += sign * static_cast<Real>(c) * part;
    sign = -sign;
    const Real after = sum * next_sum - product * power_sum;
    power_sum = next_sum;
    next_sum = after;
  }
  gammas *= product;
  return b * std::log(z) + std::log1p(b * series) - gammas;
}
template <class Real>
inline Real beta_of_ends(Real x, Real a, Real b) {
  if (2 * x < 1) return b / (a + b) * std::exp(end_exponent(x, b, a));
  return (b - a * std::expm1(end_exponent(1 - x, a, b))) / (a + b);
}

// True, with the value, where the fraction or the expansion serves.
template <class Real>
inline bool beta_tail(Real x, Real a, Real b, Real log_beta_ab, Real& value) {
  const Real sum = a + b;
  const Real distance = x * b - (1 - x) * a;  // (x - mean) (a + b)
  const Real longest = static_cast<Real>(beta_longest_sum), large = beta_uniform_from<Real>;
  const Real most = static_cast<Real>(beta_middle_most);
  if (a >= 1 && b >= 1 && a <= most && b <= most &&
      distance * distance * (sum + 1) <= static_cast<Real>(beta_middle * beta_middle) * a * b) {
    return false;
  }
  if (a >= large && b >= large) {
    value = beta_uniform(x, a, b);
    return true;
  }
  const Real tiny = static_cast<Real>(beta_all_but_zero);
  if (a < tiny && b < tiny) {
    value = beta_of_ends(x, a, b);
    return true;
  }
  const bool upper = beta_upper(x, a, b, distance);
  value = upper ? beta_fraction(1 - x, x, b, a, log_beta_ab) : beta_fraction(x, 1 - x, a, b, log_beta_ab);
  const Real rounding = static_cast<Real>(1e-4);  // a value of 1 may come out above it
  if (!(value <= 1 + rounding)) {
    if (a <= longest && b <= longest) return false;
    value = beta_uniform(x, a, b);  // the sums would not end in useful time
    value = value >= 1 ? 1 : value > 0 ? value : 0;
    return true;
  }
  if (value > 1) value = 1;
  if (upper) value = 1 - value;
  return true;
}

// The squares of greater parameters could overflow.
template <class Real>
inline const Real beta_most = std::sqrt(Machine<Real>::largest) / 100;

// The sums, for 0 < x < 1. Their error is absolute: where the result is the complement of a sum a small value keeps few digits.
template <class Real>
inline bool beta_by_sums(Real x, Real a, Real b, Real log_beta_ab, Real& value) {
  const bool swap = (a < b || x >= static_cast<Real>(0.8)) && x >= static_cast<Real>(0.2);
  const Real y = swap ? 1 - x : x, z = swap ? x : 1 - x;
  const Real p = swap ? b : a, q = swap ? a : b;
  const Real tiny = Machine<Real>::smallest;
  const Real lnsml = static_cast<Real>(0.95) * std::log(tiny);
  if ((p + q) * y / (p + 1) < Machine<Real>::spacing) {
    const Real t = p * std::log(y > tiny ? y : tiny) - std::log(p) - log_beta_ab;
    value = t > lnsml && y != 0 ? std::exp(t) : 0;
  } else {
    const Real log_y = std::log(y);
    Real ps = q - std::floor(q);
    if (ps == 0) ps = 1;
    Real log_beta_ps = log_beta_ab;
    if (ps != q && !plain_log_beta(ps, p, log_beta_ps)) return false;
    value = beta_infinite_sum(y, log_y, p, ps, log_beta_ps, lnsml);
    if (q > 1) value += beta_finite_sum(y, z, p, q, log_beta_ab, lnsml);
  }
  if (swap) value = 1 - value;
  value = value < 0 ? 0 : value > 1 ? 1 : value;
  return true;
}

// a, b > 0, finite, and 0 <= x <= 1. False where log beta has something to say.
template <class Real>
inline bool plain_beta_incomplete(Real x, Real a, Real b, Real& value) {
  const Real xsml = gamma_limits<Real>.xsml, most = beta_most<Real>;
  if (!(x >= 0 && x <= 1 && a >= xsml && b >= xsml && a <= most && b <= most)) return false;
  Real log_beta_ab = 0;
  if (!plain_log_beta(a, b, log_beta_ab)) return false;
  if (x == 0 || x == 1) {
    value = x == 0 ? 0 : 1;
    return true;
  }
  return beta_tail(x, a, b, log_beta_ab, value) || beta_by_sums(x, a, b, log_beta_ab, value);
}

// For a parameter that is infinite or greater than beta_most. Beside a single one only its product with x, or 1 - x, counts, so
// both are scaled; otherwise all the mass is at one end, or at a / (a + b).
template <class Real>
inline Real beta_incomplete_limit(Real x, Real a, Real b) {
  if (x == 0 || x == 1) return x;
  const Real infinity = Machine<Real>::infinity, most = beta_most<Real>;
  if (a == infinity && b == infinity) return Machine<Real>::not_a_number;
  if (a == infinity || b == infinity) return a == infinity ? 0 : 1;
  if (a <= most || b <= most) {
    const bool upper = a > most;
    const Real y = (upper ? 1 - x : x) * ((upper ? a : b) / most);
    Real value = 1;
    if (y < 1) plain_beta_incomplete(y, upper ? b : a, most, value);
    return upper ? 1 - value : value;
  }
  const Real mean = a / 2 / (a / 2 + b / 2);
  return x < mean ? 0 : x > mean ? 1 : static_cast<Real>(0.5);
}

template <class Half, class Real>
Real l_beta_incomplete(Real x, Real a, Real b) {
  Real value = 0;
  if (plain_beta_incomplete(x, a, b, value)) return value;
  if (x != x || a != a || b != b) return x != x ? x : a != a ? a : b;
  const double shown_x = static_cast<double>(x), shown_a = static_cast<double>(a), shown_b = static_cast<double>(b);
  const bool outside = x < 0 || x > 1, bad = a <= 0 || b <= 0;
  if (outside) raise<Half>(5, MATH_REAL_OUT_OF_RANGE, {.r = {0, 1, shown_x}, .l = {"x"}});
  if (bad) raise<Half>(5, MATH_BETA_NEG_ARG, {.r = {shown_a, shown_b}});
  if (outside || bad) return Machine<Real>::not_a_number;
  const Real least = a < b ? a : b, greatest = a < b ? b : a;
  if (greatest > Machine<Real>::largest || (greatest > beta_most<Real> && least >= gamma_limits<Real>.xsml)) {
    return beta_incomplete_limit(x, a, b);
  }
  log_beta<Half>(a, b);  // raises what stands in the way
  return Machine<Real>::not_a_number;
}
template <class Half, class Real>
inline Real beta_incomplete(Real x, Real a, Real b) {
  Real value = 0;
  if (plain_beta_incomplete(x, a, b, value) && leaf<Half>()) [[likely]]
    return value;
  return scalar_call<Half>(ZENT_FRAME("beta_incomplete"), [=] { return l_beta_incomplete<Half>(x, a, b); });
}

}  // namespace zent::functions
