// Elliptic integrals in Carlson's forms, by duplication, and the complete integrals made of them.
// Carlson, Computing elliptic integrals by duplication, Numerische Mathematik 33 (1979).
#include <algorithm>
#include <cmath>

#include "math/functions/series.hpp"
#include "zent/bessel.h"

namespace zent {
namespace {

// The arguments are equal enough for the closing expansion: its first term left out is below the sixth power of this.
template <class Real>
inline constexpr Real closeness = static_cast<Real>(0.001);

template <class Real>
constexpr Real ratio(int a, int b) {
  return static_cast<Real>(a) / static_cast<Real>(b);
}

template <class Real>
Real largest_of(Real a, Real b, Real c) {
  return std::max(std::max(std::abs(a), std::abs(b)), std::abs(c));
}

template <class Real>
Real rf(Real x, Real y, Real z) {
  Real mu, dx, dy, dz;
  for (;;) {
    mu = (x + y + z) / 3;
    const Real bound = closeness<Real> * mu;
    dx = mu - x, dy = mu - y, dz = mu - z;
    if (largest_of(dx, dy, dz) < bound) break;
    const Real rx = std::sqrt(x), ry = std::sqrt(y), rz = std::sqrt(z);
    const Real lambda = rx * ry + (rx + ry) * rz;
    x = (x + lambda) / 4, y = (y + lambda) / 4, z = (z + lambda) / 4;
  }
  const Real inverse = 1 / mu;
  dx *= inverse, dy *= inverse, dz *= inverse;
  const Real e2 = dx * dy - dz * dz, e3 = dx * dy * dz;
  const Real sum = 1 + (e2 / 24 - static_cast<Real>(0.1) - ratio<Real>(3, 44) * e3) * e2 + e3 / 14;
  return sum / std::sqrt(mu);
}

template <class Real>
Real rc(Real x, Real y) {
  Real mu, s;
  for (;;) {
    mu = (x + y + y) / 3;
    if (std::abs(y - mu) < closeness<Real> * mu) break;
    const Real lambda = 2 * std::sqrt(x) * std::sqrt(y) + y;
    x = (x + lambda) / 4, y = (y + lambda) / 4;
  }
  s = (y - mu) / mu;
  const Real tail = ratio<Real>(3, 8) + s * (ratio<Real>(9, 22) + s * ratio<Real>(159, 208));
  return (1 + s * s * (ratio<Real>(3, 10) + s * (ratio<Real>(1, 7) + s * tail))) / std::sqrt(mu);
}

template <class Real>
Real rd(Real x, Real y, Real z) {
  Real mu, dx, dy, dz, sum = 0, power = 1;
  for (;;) {
    mu = (x + y + 3 * z) / 5;
    dx = mu - x, dy = mu - y, dz = mu - z;
    if (largest_of(dx, dy, dz) < closeness<Real> * mu) break;
    const Real rx = std::sqrt(x), ry = std::sqrt(y), rz = std::sqrt(z);
    const Real lambda = rx * ry + (rx + ry) * rz;
    sum += power / (rz * (z + lambda));
    power /= 4;
    x = (x + lambda) / 4, y = (y + lambda) / 4, z = (z + lambda) / 4;
  }
  dx /= mu, dy /= mu, dz /= mu;
  const Real ea = dx * dy, eb = dz * dz, ec = ea - eb, ed = ea - 6 * eb, ef = ed + 2 * ec;
  const Real s1 = ed * (ratio<Real>(9, 88) * ed - ratio<Real>(3, 14) - ratio<Real>(9, 52) * dz * ef);
  const Real s2 = dz * (ef / 6 + dz * (dz * ratio<Real>(3, 26) * ea - ratio<Real>(9, 22) * ec));
  return 3 * sum + power * (1 + (s1 + s2)) / (mu * std::sqrt(mu));
}

template <class Real>
Real rj(Real x, Real y, Real z, Real rho) {
  Real mu, dx, dy, dz, dr, sum = 0, power = 1;
  for (;;) {
    mu = (x + y + z + 2 * rho) / 5;
    dx = mu - x, dy = mu - y, dz = mu - z, dr = mu - rho;
    if (std::max(largest_of(dx, dy, dz), std::abs(dr)) < closeness<Real> * mu) break;
    const Real rx = std::sqrt(x), ry = std::sqrt(y), rz = std::sqrt(z);
    const Real lambda = rx * ry + (rx + ry) * rz, shifted = rho + lambda;
    const Real alpha = rho * (rx + ry + rz) + rx * ry * rz;
    sum += power * rc(alpha * alpha, rho * (shifted * shifted));
    power /= 4;
    x = (x + lambda) / 4, y = (y + lambda) / 4, z = (z + lambda) / 4, rho = shifted / 4;
  }
  dx /= mu, dy /= mu, dz /= mu, dr /= mu;
  const Real ea = dx * (dy + dz) + dy * dz, eb = dx * dy * dz, ec = dr * dr;
  const Real e2 = ea - 3 * ec, e3 = eb + 2 * dr * (ea - ec);
  const Real s1 = e2 * (ratio<Real>(9, 88) * e2 - ratio<Real>(3, 14) - ratio<Real>(9, 52) * e3);
  const Real s2 = eb * (ratio<Real>(1, 6) + dr * (dr * ratio<Real>(3, 26) - ratio<Real>(3, 11)));
  const Real s3 = dr * ea * (ratio<Real>(1, 3) - dr * ratio<Real>(3, 22)) - dr * ec / 3;
  return 3 * sum + power * (1 + (s1 + s2 + s3)) / (mu * std::sqrt(mu));
}

// Ends a refused call: raises the number with all values of its message.
template <class Real, class... Values>
Real refuse(long number, Values... values) {
  raise<Math>(5, number, {.r = {static_cast<double>(values)...}});
  return Machine<Real>::not_a_number;
}

// The first argument that is no number, or 0.
template <class Real, class... Reals>
Real not_a_number_among(Real x, Reals... others) {
  if (x != x) return x;
  if constexpr (sizeof...(others) > 0) {
    return not_a_number_among(others...);
  } else {
    return 0;
  }
}

template <class Real>
Real l_elliptic_integral_RF(Real x, Real y, Real z) {
  const Real low = 5 * Machine<Real>::smallest, high = Machine<Real>::largest / 5;
  const Real least = std::min(std::min(x, y), z), most = std::max(std::max(x, y), z);
  const Real pair = std::min(std::min(x + y, x + z), y + z);
  if (least >= 0 && pair >= low && most <= high) [[likely]]
    return rf(x, y, z);
  if (const Real n = not_a_number_among(x, y, z); n != 0) return n;
  if (least < 0) return refuse<Real>(MATH_ARGUMENT_NEGATIVE_3, x, y, z);
  if (pair < low) return refuse<Real>(MATH_SUM_TOO_SMALL_3, x, y, z, low);
  if (most > high) return refuse<Real>(MATH_ARGUMENTS_TOO_LARGE_2, x, y, z, high);
  return rf(x, y, z);
}

template <class Real>
Real l_elliptic_integral_RC(Real x, Real y) {
  const Real low = 5 * Machine<Real>::smallest, high = Machine<Real>::largest / 5;
  if (const Real n = not_a_number_among(x, y); n != 0) return n;
  if (x < 0) return refuse<Real>(MATH_ARGUMENT_NEGATIVE, x);
  if (y <= 0) return refuse<Real>(MATH_ARGUMENT_NOT_POSITIVE, y);
  if (x + y < low) return refuse<Real>(MATH_SUM_TOO_SMALL, x, y, low);
  if (std::max(x, y) > high) return refuse<Real>(MATH_ARGUMENTS_TOO_LARGE, x, y, high);
  return rc(x, y);
}

template <class Real>
Real l_elliptic_integral_RD(Real x, Real y, Real z) {
  const Real tiny = Machine<Real>::smallest, huge = Machine<Real>::largest, third = ratio<Real>(2, 3);
  const Real low = std::max(3 * std::pow(tiny, third), 3 / std::pow(huge, third));
  const Real high = std::exp(third * (std::log(static_cast<Real>(0.085) * closeness<Real>) - std::log(tiny)));
  if (const Real n = not_a_number_among(x, y, z); n != 0) return n;
  if (std::min(x, y) < 0) return refuse<Real>(MATH_ARGUMENT_NEGATIVE_2, x, y);
  if (z <= 0) return refuse<Real>(MATH_ARGUMENT_NOT_POSITIVE_2, z);
  if (x + y < low) return refuse<Real>(MATH_SUM_TOO_SMALL_2, x, y, low);
  if (std::max(std::max(x, y), z) > high) return refuse<Real>(MATH_ARGUMENTS_TOO_LARGE_2, x, y, z, high);
  return rd(x, y, z);
}

template <class Real>
Real l_elliptic_integral_RJ(Real x, Real y, Real z, Real rho) {
  const Real low = std::cbrt(5 * Machine<Real>::smallest);
  const Real high = static_cast<Real>(0.3) * std::cbrt(Machine<Real>::largest / 5);
  if (const Real n = not_a_number_among(x, y, z, rho); n != 0) return n;
  if (std::min(std::min(x, y), z) < 0) return refuse<Real>(MATH_ARGUMENT_NEGATIVE_3, x, y, z);
  if (rho <= 0) return refuse<Real>(MATH_RHO_IS_NEGATIVE, rho);
  const Real least = std::min(std::min(std::min(x + y, x + z), y + z), rho);
  if (least < low) return refuse<Real>(MATH_SUM_TOO_SMALL_4, least, low);
  const Real most = std::max(std::max(std::max(x, y), z), rho);
  if (most > high) return refuse<Real>(MATH_ARGUMENTS_TOO_LARGE_3, most, high);
  return rj(x, y, z, rho);
}

// Raises for a parameter that is not in [0, 1).
template <class Real>
bool l_parameter_refused(Real x) {
  if (x >= 0 && x < 1) return false;
  raise<Math>(5, MATH_INEQUALITY_VIOLATION_6, {.r = {static_cast<double>(x), 0, 1}, .l = {"x"}});
  return true;
}

template <class Real>
Real l_elliptic_integral_K(Real x) {
  if (x != x) return x;
  if (l_parameter_refused(x)) return Machine<Real>::not_a_number;
  const Real complement = 1 - x;
  if (complement < Machine<Real>::epsilon) return std::log(16 / complement) / 2;
  return rf<Real>(0, complement, 1);
}

template <class Real>
Real l_elliptic_integral_E(Real x) {
  const Real tiny = Machine<Real>::smallest, huge = Machine<Real>::largest;
  if (x != x) return x;
  if (l_parameter_refused(x)) return huge;
  const Real complement = 1 - x;
  if (complement < std::pow(std::max(10 * tiny, 10 / huge), ratio<Real>(2, 3))) return 1;
  return rf<Real>(0, complement, 1) - x * rd<Real>(0, complement, 1) / 3;
}

}  // namespace
}  // namespace zent

#define ZENT_FORM(P, Real, name, parameters, ...)                                                              \
  extern "C" Real zent_##P##_elliptic_integral_##name parameters {                                             \
    return zent::scalar_call<zent::Math>("zent_" #P "_elliptic_integral_" #name,                               \
                                         [=] { return zent::l_elliptic_integral_##name<Real>(__VA_ARGS__); }); \
  }
#define ZENT_FORMS(P, Real)                                 \
  ZENT_FORM(P, Real, K, (Real x), x)                        \
  ZENT_FORM(P, Real, E, (Real x), x)                        \
  ZENT_FORM(P, Real, RF, (Real x, Real y, Real z), x, y, z) \
  ZENT_FORM(P, Real, RC, (Real x, Real y), x, y)            \
  ZENT_FORM(P, Real, RD, (Real x, Real y, Real z), x, y, z) \
  ZENT_FORM(P, Real, RJ, (Real x, Real y, Real z, Real rho), x, y, z, rho)
ZENT_FORMS(f, float)
ZENT_FORMS(d, double)
#undef ZENT_FORMS
#undef ZENT_FORM
