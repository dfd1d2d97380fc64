// Elliptic integrals in Carlson's forms, by duplication, and the complete integrals made of them.
//
// Methods: Carlson, Computing elliptic integrals by duplication, Numerische Mathematik 33 (1979), in the plain forms; the fast
// ones stop earlier and close with the terms to the seventh order (Carlson, Numerical Algorithms 10 (1995); DLMF 19.36). The
// complete integrals are series in the parameter up to 1/2 and in its complement, with the logarithm, beyond (DLMF 19.12).
#pragma once

#include <algorithm>
#include <cmath>

#include "math/functions/leaf.hpp"
#include "math/functions/series.hpp"

namespace zent::functions {

#include "math/functions/tables/lv_atancs.inc"
#include "math/functions/tables/lv_ellel.inc"
#include "math/functions/tables/lv_elles.inc"
#include "math/functions/tables/lv_ellkl.inc"
#include "math/functions/tables/lv_ellks.inc"

// The plain forms stop when the arguments agree to this: the first term left out of the closing expansion is its sixth power.
template <class Real>
inline constexpr Real closeness = static_cast<Real>(0.001);
// The same for the fast forms, whose expansions leave out the eighth power.
template <class Real>
inline constexpr Real fast_closeness = static_cast<Real>(std::is_same_v<Real, float> ? 0.08 : 0.008);

template <class Real>
constexpr Real ratio(int a, int b) {
  return static_cast<Real>(a) / static_cast<Real>(b);
}

template <class Real>
inline Real largest_of(Real a, Real b, Real c) {
  return std::max(std::max(std::abs(a), std::abs(b)), std::abs(c));
}

template <class Real>
Real plain_rf(Real x, Real y, Real z) {
  Real mu, dx, dy, dz;
  for (;;) {
    mu = (x + y + z) / 3;
    dx = (mu - x) / mu, dy = (mu - y) / mu, dz = (mu - z) / mu;
    if (largest_of(dx, dy, dz) < closeness<Real>) break;
    const Real rx = std::sqrt(x), ry = std::sqrt(y), rz = std::sqrt(z);
    const Real lambda = rx * ry + rx * rz + ry * rz;
    x = (x + lambda) / 4, y = (y + lambda) / 4, z = (z + lambda) / 4;
  }
  const Real e2 = dx * dy - dz * dz, e3 = dx * dy * dz;
  return (1 + (e2 / 24 - static_cast<Real>(0.1) - ratio<Real>(3, 44) * e3) * e2 + e3 / 14) / std::sqrt(mu);
}

// A duplication divides the distances from the mean by 4 exactly, so those at the end come from those at the start, which have
// lost nothing to cancellation.
template <class Real>
inline Real rf(Real x, Real y, Real z) {
  Real mu = (x + y + z) / 3;
  Real dx = mu - x, dy = mu - y;
  Real most = largest_of(dx, dy, mu - z);
  while (most >= fast_closeness<Real> * mu) {
    const Real rx = std::sqrt(x), ry = std::sqrt(y), rz = std::sqrt(z);
    const Real lambda = rx * ry + (rx + ry) * rz, quarter = static_cast<Real>(0.25);
    x = (x + lambda) * quarter, y = (y + lambda) * quarter, z = (z + lambda) * quarter;
    mu = (mu + lambda) * quarter;
    dx *= quarter, dy *= quarter, most *= quarter;
  }
  const Real inverse = 1 / mu;
  dx *= inverse, dy *= inverse;
  const Real dz = -(dx + dy);
  const Real e2 = dx * dy - dz * dz, e3 = dx * dy * dz;
  const Real second = ratio<Real>(-1, 10) + e2 * (ratio<Real>(1, 24) - ratio<Real>(5, 208) * e2);
  const Real third = ratio<Real>(1, 14) + e2 * (ratio<Real>(-3, 44) + e2 * ratio<Real>(1, 16)) + ratio<Real>(3, 104) * e3;
  return (1 + (e2 * second + e3 * third)) * std::sqrt(inverse);
}

template <class Real>
Real duplicated_rc(Real x, Real y) {
  Real mu, s;
  for (;;) {
    mu = (x + y + y) / 3;
    s = (y - mu) / mu;
    if (std::abs(s) < closeness<Real>) break;
    const Real lambda = 2 * std::sqrt(x) * std::sqrt(y) + y;
    x = (x + lambda) / 4, y = (y + lambda) / 4;
  }
  const Real tail = ratio<Real>(3, 8) + s * (ratio<Real>(9, 22) + s * ratio<Real>(159, 208));
  return (1 + s * s * (ratio<Real>(3, 10) + s * (ratio<Real>(1, 7) + s * tail))) / std::sqrt(mu);
}

// RC is an elementary function: arctan(sqrt(u))/sqrt(u x) with u = (y - x)/x, or its continuation to u < 0.
template <class Real>
inline Real rc(Real x, Real y) {
  const Real d = y - x, half = static_cast<Real>(0.5);
  if (std::abs(d) <= half * x) return (1 + series::evaluate_in_pairs<lv_atancs>(2 * (d / x))) / std::sqrt(x);
  if (d > 0) {
    const Real root = std::sqrt(d);
    return std::atan(root / std::sqrt(x + 0)) / root;  // + 0: not -infinity for x = -0
  }
  const Real root = std::sqrt(-d);
  const Real sum = std::sqrt(x) + root, divisor = std::sqrt(y);
  if (divisor < 1 && sum > divisor * Machine<Real>::largest) return (std::log(sum) - std::log(divisor)) / root;
  return std::log(sum / divisor) / root;
}

template <class Real>
Real plain_rd(Real x, Real y, Real z) {
  Real mu, dx, dy, dz, sum = 0, power = 1;
  for (;;) {
    mu = (x + y + 3 * z) / 5;
    dx = (mu - x) / mu, dy = (mu - y) / mu, dz = (mu - z) / mu;
    if (largest_of(dx, dy, dz) < closeness<Real>) break;
    const Real rx = std::sqrt(x), ry = std::sqrt(y), rz = std::sqrt(z);
    const Real lambda = rx * ry + rx * rz + ry * rz;
    sum += power / (rz * (z + lambda));
    power /= 4;
    x = (x + lambda) / 4, y = (y + lambda) / 4, z = (z + lambda) / 4;
  }
  const Real ea = dx * dy, eb = dz * dz, ec = ea - eb, ed = ea - 6 * eb, ef = ed + 2 * ec;
  const Real s1 = ed * (ratio<Real>(9, 88) * ed - ratio<Real>(3, 14) - ratio<Real>(9, 52) * dz * ef);
  const Real s2 = dz * (ef / 6 + dz * (dz * ratio<Real>(3, 26) * ea - ratio<Real>(9, 22) * ec));
  return 3 * sum + power * (1 + (s1 + s2)) / (mu * std::sqrt(mu));
}

// The closing expansion of RD and RJ less 1, from the elementary symmetric functions of the five distances.
template <class Real>
inline Real third_kind_expansion(Real e2, Real e3, Real e4, Real e5) {
  const Real low = ratio<Real>(-3, 14) * e2 + ratio<Real>(1, 6) * e3 + ratio<Real>(-3, 22) * e4 + ratio<Real>(3, 26) * e5;
  const Real square = e2 * (ratio<Real>(9, 88) + e2 * ratio<Real>(-1, 16) + e3 * ratio<Real>(45, 272)) +
                      e3 * ratio<Real>(-9, 52) + e4 * ratio<Real>(3, 20) + e5 * ratio<Real>(-9, 68);
  return low + (e2 * square + e3 * (ratio<Real>(3, 40) * e3 + ratio<Real>(-9, 68) * e4));
}

template <class Real>
inline Real rd(Real x, Real y, Real z) {
  Real mu = (x + y + 3 * z) * ratio<Real>(1, 5);
  Real dx = mu - x, dy = mu - y, sum = 0, power = 1;
  Real most = largest_of(dx, dy, mu - z);
  while (most >= fast_closeness<Real> * mu) {
    const Real rx = std::sqrt(x), ry = std::sqrt(y), rz = std::sqrt(z);
    const Real lambda = rx * ry + (rx + ry) * rz, quarter = static_cast<Real>(0.25);
    sum += power / (rz * (z + lambda));
    x = (x + lambda) * quarter, y = (y + lambda) * quarter, z = (z + lambda) * quarter;
    mu = (mu + lambda) * quarter;
    dx *= quarter, dy *= quarter, most *= quarter, power *= quarter;
  }
  const Real inverse = 1 / mu;
  dx *= inverse, dy *= inverse;
  const Real dz = (dx + dy) * ratio<Real>(-1, 3), xy = dx * dy, zz = dz * dz;
  const Real closing = third_kind_expansion(xy - 6 * zz, (3 * xy - 8 * zz) * dz, 3 * (xy - zz) * zz, xy * zz * dz);
  return 3 * sum + power * (1 + closing) / (mu * std::sqrt(mu));
}

template <class Real>
Real plain_rj(Real x, Real y, Real z, Real rho) {
  Real mu, dx, dy, dz, dr, sum = 0, power = 1;
  for (;;) {
    mu = (x + y + z + 2 * rho) / 5;
    dx = (mu - x) / mu, dy = (mu - y) / mu, dz = (mu - z) / mu, dr = (mu - rho) / mu;
    if (std::max(largest_of(dx, dy, dz), std::abs(dr)) < closeness<Real>) break;
    const Real rx = std::sqrt(x), ry = std::sqrt(y), rz = std::sqrt(z);
    const Real lambda = rx * ry + rx * rz + ry * rz, shifted = rho + lambda;
    const Real alpha = rho * (rx + ry + rz) + rx * ry * rz;
    sum += power * duplicated_rc(alpha * alpha, rho * (shifted * shifted));
    power /= 4;
    x = (x + lambda) / 4, y = (y + lambda) / 4, z = (z + lambda) / 4, rho = shifted / 4;
  }
  const Real ea = dx * (dy + dz) + dy * dz, eb = dx * dy * dz, ec = dr * dr;
  const Real e2 = ea - 3 * ec, e3 = eb + 2 * dr * (ea - ec);
  const Real s1 = e2 * (ratio<Real>(9, 88) * e2 - ratio<Real>(3, 14) - ratio<Real>(9, 52) * e3);
  const Real s2 = eb * (ratio<Real>(1, 6) + dr * (dr * ratio<Real>(3, 26) - ratio<Real>(3, 11)));
  const Real s3 = dr * ea * (ratio<Real>(1, 3) - dr * ratio<Real>(3, 22)) - dr * ec / 3;
  return 3 * sum + power * (1 + (s1 + s2 + s3)) / (mu * std::sqrt(mu));
}

template <class Real>
inline Real rj(Real x, Real y, Real z, Real rho) {
  Real mu = (x + y + z + 2 * rho) * ratio<Real>(1, 5);
  Real dx = mu - x, dy = mu - y, dz = mu - z, sum = 0, power = 1;
  Real most = std::max(largest_of(dx, dy, dz), std::abs(mu - rho));
  while (most >= fast_closeness<Real> * mu) {
    const Real rx = std::sqrt(x), ry = std::sqrt(y), rz = std::sqrt(z);
    const Real lambda = rx * ry + (rx + ry) * rz, shifted = rho + lambda, quarter = static_cast<Real>(0.25);
    const Real alpha = rho * (rx + ry + rz) + rx * ry * rz;
    sum += power * rc(alpha * alpha, rho * (shifted * shifted));
    x = (x + lambda) * quarter, y = (y + lambda) * quarter, z = (z + lambda) * quarter, rho = shifted * quarter;
    mu = (mu + lambda) * quarter;
    dx *= quarter, dy *= quarter, dz *= quarter, most *= quarter, power *= quarter;
  }
  const Real inverse = 1 / mu, half = static_cast<Real>(-0.5);
  dx *= inverse, dy *= inverse, dz *= inverse;
  const Real p = half * (dx + dy + dz), xyz = dx * dy * dz, pp = p * p;
  const Real e2 = dx * (dy + dz) + dy * dz - 3 * pp, e2p = e2 * p, p3 = pp * p;
  const Real closing = third_kind_expansion(e2, xyz + 2 * e2p + 4 * p3, (2 * xyz + e2p + 3 * p3) * p, xyz * pp);
  return 3 * sum + power * (1 + closing) / (mu * std::sqrt(mu));
}

// The complete integrals for 0 <= x < 1.
template <class Real>
inline Real complete_k(Real x) {
  const Real half_pi = static_cast<Real>(1.57079632679489661923), half = static_cast<Real>(0.5);
  if (x <= half) return half_pi + x * series::evaluate_in_pairs<lv_ellks>(4 * x - 1);
  const Real y = 1 - x, logarithm = std::log(y), t = 4 * y - 1;
  const Real log_16 = static_cast<Real>(2.77258872223978123767), inverse_pi = static_cast<Real>(0.31830988618379067154);
  return half * (log_16 - logarithm) +
         y * (series::evaluate_in_pairs<lv_ellkl>(t) - series::evaluate_in_pairs<lv_ellks>(t) * (inverse_pi * logarithm));
}
template <class Real>
inline Real complete_e(Real x) {
  const Real half_pi = static_cast<Real>(1.57079632679489661923), half = static_cast<Real>(0.5);
  if (x <= half) return half_pi - x * series::evaluate_in_pairs<lv_elles>(4 * x - 1);
  const Real y = 1 - x, t = 4 * y - 1, inverse_pi = static_cast<Real>(0.31830988618379067154);
  const Real slope = series::evaluate_in_pairs<lv_ellks>(t) + series::evaluate_in_pairs<lv_elles>(t);
  return 1 + y * (series::evaluate_in_pairs<lv_ellel>(t) - slope * (inverse_pi * std::log(y)));
}

// The bounds that the arguments have to keep.
template <class Real>
struct CarlsonLimits {
  Real low, high;        // of RF and RC
  Real rd_low, rd_high;  // of RD
  Real rj_low, rj_high;  // of RJ
  Real e_one;            // E is 1 where the complement of its parameter is smaller
};
template <class Real>
constexpr CarlsonLimits<Real> find_carlson_limits() {
  const Real tiny = Machine<Real>::smallest, huge = Machine<Real>::largest, two_thirds = ratio<Real>(2, 3);
  CarlsonLimits<Real> limits = {};
  limits.low = 5 * tiny, limits.high = huge / 5;
  limits.rd_low = std::max(3 * std::pow(tiny, two_thirds), 3 / std::pow(huge, two_thirds));
  limits.rd_high = std::exp(two_thirds * (std::log(static_cast<Real>(0.085) * closeness<Real>) - std::log(tiny)));
  limits.rj_low = std::cbrt(5 * tiny), limits.rj_high = static_cast<Real>(0.3) * std::cbrt(huge / 5);
  limits.e_one = std::pow(std::max(10 * tiny, 10 / huge), two_thirds);
  return limits;
}
template <class Real>
inline const CarlsonLimits<Real> carlson_limits = find_carlson_limits<Real>();

// The forms without errors: false, and nothing done, where there is something to say.
template <class Real>
inline bool plain_elliptic_integral_RF(Real x, Real y, Real z, Real& value) {
  const CarlsonLimits<Real>& limits = carlson_limits<Real>;
  const Real least = std::min(std::min(x, y), z), most = std::max(std::max(x, y), z);
  if (!(least >= 0 && std::min(std::min(x + y, x + z), y + z) >= limits.low && most <= limits.high)) return false;
  value = rf(x, y, z);
  return true;
}
template <class Real>
inline bool plain_elliptic_integral_RC(Real x, Real y, Real& value) {
  const CarlsonLimits<Real>& limits = carlson_limits<Real>;
  if (!(x >= 0 && y > 0 && x + y >= limits.low && x <= limits.high && y <= limits.high)) return false;
  value = rc(x, y);
  return true;
}
template <class Real>
inline bool plain_elliptic_integral_RD(Real x, Real y, Real z, Real& value) {
  const CarlsonLimits<Real>& limits = carlson_limits<Real>;
  const Real most = std::max(std::max(x, y), z);
  if (!(x >= 0 && y >= 0 && z > 0 && x + y >= limits.rd_low && most <= limits.rd_high)) return false;
  value = rd(x, y, z);
  return true;
}
template <class Real>
inline bool plain_elliptic_integral_RJ(Real x, Real y, Real z, Real rho, Real& value) {
  const CarlsonLimits<Real>& limits = carlson_limits<Real>;
  const Real pair = std::min(std::min(x + y, x + z), y + z), most = std::max(std::max(x, y), std::max(z, rho));
  if (!(x >= 0 && y >= 0 && z >= 0 && rho > 0 && std::min(pair, rho) >= limits.rj_low && most <= limits.rj_high)) return false;
  value = rj(x, y, z, rho);
  return true;
}
template <class Real>
inline bool plain_elliptic_integral_K(Real x, Real& value) {
  if (!(x >= 0 && x < 1)) return false;
  value = complete_k(x);
  return true;
}
template <class Real>
inline bool plain_elliptic_integral_E(Real x, Real& value) {
  if (!(x >= 0 && x < 1)) return false;
  value = 1 - x < carlson_limits<Real>.e_one ? 1 : complete_e(x);
  return true;
}

}  // namespace zent::functions
