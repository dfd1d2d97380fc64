// Elliptic integrals of the mathematics half: the checks and the entries.
#include "math/functions/elliptic.hpp"

#include "zent/bessel.h"

namespace zent {
namespace {

using namespace functions;

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

// What is wrong with arguments that the plain forms leave alone.
template <class Real>
Real l_elliptic_integral_RF(Real x, Real y, Real z) {
  const Real low = carlson_limits<Real>.low, high = carlson_limits<Real>.high;
  if (const Real n = not_a_number_among(x, y, z); n != 0) return n;
  if (std::min(std::min(x, y), z) < 0) return refuse<Real>(MATH_ARGUMENT_NEGATIVE_3, x, y, z);
  if (std::min(std::min(x + y, x + z), y + z) < low) return refuse<Real>(MATH_SUM_TOO_SMALL_3, x, y, z, low);
  return refuse<Real>(MATH_ARGUMENTS_TOO_LARGE_2, x, y, z, high);
}

template <class Real>
Real l_elliptic_integral_RC(Real x, Real y) {
  const Real low = carlson_limits<Real>.low, high = carlson_limits<Real>.high;
  if (const Real n = not_a_number_among(x, y); n != 0) return n;
  if (x < 0) return refuse<Real>(MATH_ARGUMENT_NEGATIVE, x);
  if (y <= 0) return refuse<Real>(MATH_ARGUMENT_NOT_POSITIVE, y);
  if (x + y < low) return refuse<Real>(MATH_SUM_TOO_SMALL, x, y, low);
  return refuse<Real>(MATH_ARGUMENTS_TOO_LARGE, x, y, high);
}

template <class Real>
Real l_elliptic_integral_RD(Real x, Real y, Real z) {
  const Real low = carlson_limits<Real>.rd_low, high = carlson_limits<Real>.rd_high;
  if (const Real n = not_a_number_among(x, y, z); n != 0) return n;
  if (std::min(x, y) < 0) return refuse<Real>(MATH_ARGUMENT_NEGATIVE_2, x, y);
  if (z <= 0) return refuse<Real>(MATH_ARGUMENT_NOT_POSITIVE_2, z);
  if (x + y < low) return refuse<Real>(MATH_SUM_TOO_SMALL_2, x, y, low);
  return refuse<Real>(MATH_ARGUMENTS_TOO_LARGE_2, x, y, z, high);
}

template <class Real>
Real l_elliptic_integral_RJ(Real x, Real y, Real z, Real rho) {
  const Real low = carlson_limits<Real>.rj_low, high = carlson_limits<Real>.rj_high;
  if (const Real n = not_a_number_among(x, y, z, rho); n != 0) return n;
  if (std::min(std::min(x, y), z) < 0) return refuse<Real>(MATH_ARGUMENT_NEGATIVE_3, x, y, z);
  if (rho <= 0) return refuse<Real>(MATH_RHO_IS_NEGATIVE, rho);
  const Real least = std::min(std::min(std::min(x + y, x + z), y + z), rho);
  if (least < low) return refuse<Real>(MATH_SUM_TOO_SMALL_4, least, low);
  return refuse<Real>(MATH_ARGUMENTS_TOO_LARGE_3, std::max(std::max(std::max(x, y), z), rho), high);
}

template <class Real>
Real l_elliptic_integral_K(Real x) {
  if (x != x) return x;
  raise<Math>(5, MATH_INEQUALITY_VIOLATION_6, {.r = {static_cast<double>(x), 0, 1}, .l = {"x"}});
  return Machine<Real>::not_a_number;
}
// A failure of E is shown by the largest number.
template <class Real>
Real l_elliptic_integral_E(Real x) {
  if (x != x) return x;
  l_elliptic_integral_K(x);
  return Machine<Real>::largest;
}

}  // namespace
}  // namespace zent

#define ZENT_FORM(P, Real, name, parameters, ...)                                                                              \
  extern "C" Real zent_##P##_elliptic_integral_##name parameters {                                                             \
    Real value = 0;                                                                                                            \
    if (zent::functions::plain_elliptic_integral_##name(__VA_ARGS__, value) && zent::functions::leaf<zent::Math>()) [[likely]] \
      return value;                                                                                                            \
    return zent::scalar_call<zent::Math>("zent_" #P "_elliptic_integral_" #name, [=] {                                         \
      Real result = 0;                                                                                                         \
      return zent::functions::plain_elliptic_integral_##name(__VA_ARGS__, result)                                              \
                 ? result                                                                                                      \
                 : zent::l_elliptic_integral_##name<Real>(__VA_ARGS__);                                                        \
    });                                                                                                                        \
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
