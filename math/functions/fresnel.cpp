// Fresnel integrals.
#include <cmath>

#include "math/functions/series.hpp"
#include "zent/bessel.h"

namespace zent {
namespace {

#include "math/functions/tables/fresnel.inc"

// The auxiliary functions f and g at y >= 2, by which both integrals approach 1/2.
template <class Real>
struct Auxiliary {
  Real f, g;
};
template <class Real>
Auxiliary<Real> l_df3esc(Real y) {
  const Real inverse = 1 / (static_cast<Real>(3.14159265358979323846) * y), half = 2 / y, square = half * half;
  const Real t = 2 * (square * square) - 1;
  return {inverse * series::evaluate<lv_fresf>(t), inverse * (inverse / y) * series::evaluate<lv_fresg>(t)};
}

// pi y^2 / 2 less a multiple of 2 pi. With y = 2n + r, y^2/4 is n^2 + n r + r^2/4, so the great part goes without rounding.
template <class Real>
Real reduced_phase(Real y) {
  const Real n = std::nearbyint(y / 2), r = y - 2 * n;
  const Real u = n * r, v = r * r / 4;
  return static_cast<Real>(6.28318530717958647693) * ((u - std::nearbyint(u + v)) + v);
}

template <bool sine, class Real>
Real l_fresnel(Real x) {
  const Real y = std::abs(x);
  if (y <= std::sqrt(std::sqrt(static_cast<Real>(0.1) * Machine<Real>::spacing))) {
    return sine ? x * (y * y) * static_cast<Real>(0.52359877559829887308) : x;  // pi/6
  }
  if (y <= 2) {
    const Real half = y / 2, square = half * half, t = 2 * (square * square) - 1;
    return sine ? x * (y * y) * series::evaluate<lv_fress>(t) : x * series::evaluate<lv_fresc>(t);
  }
  if (y != y) return x;
  if (y >= 1 / Machine<Real>::epsilon) return std::copysign(static_cast<Real>(0.5), x);
  const Auxiliary<Real> a = l_df3esc(y);
  const Real phase = reduced_phase(y), s = std::sin(phase), c = std::cos(phase);
  const Real value = sine ? static_cast<Real>(0.5) - a.f * c - a.g * s : static_cast<Real>(0.5) + a.f * s - a.g * c;
  return std::copysign(value, x);
}

}  // namespace
}  // namespace zent

#define ZENT_FORM(P, Real, name, sine)                                                                                     \
  extern "C" Real zent_##P##_fresnel_integral_##name(Real x) {                                                             \
    return zent::scalar_call<zent::Math>("zent_" #P "_fresnel_integral_" #name, [=] { return zent::l_fresnel<sine>(x); }); \
  }
ZENT_FORM(f, float, C, false)
ZENT_FORM(d, double, C, false)
ZENT_FORM(f, float, S, true)
ZENT_FORM(d, double, S, true)
#undef ZENT_FORM
