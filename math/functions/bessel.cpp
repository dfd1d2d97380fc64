// Modified Bessel functions of the orders 0 and 1, plain and exponentially scaled.
#include "zent/bessel.h"

#include <algorithm>
#include <cmath>

#include "math/functions/bessel_parts.hpp"

namespace zent {
namespace {

#include "math/functions/tables/bessel_orders.inc"

// Which series serve an order, and what stands beside them.
template <int order>
struct Orders;
template <>
struct Orders<0> {
  using near = lv_bi0cs;
  using middle = lv_ai0cs;
  using far = lv_ai02cs;
  using k_near = bk0cs;
  using k_middle = ak0cs;
  using k_far = ak02cs;
  static constexpr double constant = 2.75;
};
template <>
struct Orders<1> {
  using near = lv_bi1cs;
  using middle = lv_ai1cs;
  using far = lv_ai12cs;
  using k_near = bk1cs;
  using k_middle = ak1cs;
  using k_far = ak12cs;
  static constexpr double constant = 0.875;
};

// I0(x), or I1(x)/x, for |x| <= 3.
template <int order, class Real>
Real near_i(Real x) {
  return static_cast<Real>(Orders<order>::constant) +
         series::evaluate<typename Orders<order>::near>(x * x / static_cast<Real>(4.5) - 1);
}

// exp(-y) I(y) for y > 3.
template <int order, class Real>
Real scaled_i(Real y) {
  const Real sum = y <= 8 ? series::evaluate<typename Orders<order>::middle>((48 / y - 11) / 5)
                          : series::evaluate<typename Orders<order>::far>(16 / y - 1);
  return (static_cast<Real>(0.375) + sum) / std::sqrt(y);
}

// exp(x) K(x) for x > 2.
template <int order, class Real>
Real scaled_k(Real x) {
  const Real sum = x <= 8 ? series::evaluate<typename Orders<order>::k_middle>((16 / x - 5) / 3)
                          : series::evaluate<typename Orders<order>::k_far>(16 / x - 1);
  return (static_cast<Real>(1.25) + sum) / std::sqrt(x);
}

template <class Real>
Real l_bessel_exp_I0(Real x) {
  const Real y = std::abs(x);
  if (y <= std::sqrt(8 * Machine<Real>::spacing)) return 1 - y + 3 * (y * y) / 4;
  if (y <= 3) return std::exp(-y) * near_i<0>(y);
  if (y != y) return x;
  return scaled_i<0>(y);
}

template <class Real>
Real l_bessel_exp_I1(Real x) {
  const Real y = std::abs(x), least = 2 * Machine<Real>::smallest;
  if (y == 0 || y != y) return x;
  if (y <= least) {
    raise<Math>(5, MATH_SMALL_ARG_UNDERFLOW, {.r = {static_cast<double>(x), static_cast<double>(least)}});
    return 0;
  }
  if (y <= std::sqrt(8 * Machine<Real>::spacing)) return std::exp(-y) * x / 2;
  if (y <= 3) return std::exp(-y) * (x * near_i<1>(y));
  return std::copysign(scaled_i<1>(y), x);
}

template <class Real>
Real refuse_not_positive(Real x) {
  raise<Math>(5, MATH_INEQUALITY_VIOLATION_4, {.r = {static_cast<double>(x), 0}, .l = {"x"}});
  return Machine<Real>::not_a_number;
}

// What the rounding of y = x^2 lost. It counts near x = 2, where K0 and K1 are small against the slope of their series.
template <class Real>
Real lost_of_square(Real x, Real y) {
  return y == 0 ? 0 : std::fma(x, x, -y);
}

template <class Real>
Real l_bessel_exp_K0(Real x) {
  if (x > 2) return scaled_k<0>(x);
  if (x != x) return x;
  if (x <= 0) return refuse_not_positive(x);
  const Real y = x > std::sqrt(4 * Machine<Real>::spacing) ? x * x : 0;
  const Real slope = static_cast<Real>(0.1057) + y * (static_cast<Real>(0.02884) + y * static_cast<Real>(0.0016));
  const Real regular = series::evaluate<bk0cs>(y / 2 - 1) - static_cast<Real>(0.25) + slope * lost_of_square(x, y);
  return std::exp(x) * (regular - functions::log_of_half(x) * near_i<0>(x));
}

template <class Real>
Real l_bessel_exp_K1(Real x) {
  if (x > 2) return scaled_k<1>(x);
  if (x != x) return x;
  if (x <= 0) return refuse_not_positive(x);
  const Real least =
      std::exp(std::max(std::log(Machine<Real>::smallest), -std::log(Machine<Real>::largest)) + static_cast<Real>(0.01));
  if (x < least) {
    raise<Math>(5, MATH_SMALL_ARG_OVERFLOW, {.r = {static_cast<double>(x), static_cast<double>(least)}});
    return Machine<Real>::not_a_number;
  }
  const Real y = x > std::sqrt(4 * Machine<Real>::spacing) ? x * x : 0;
  const Real slope = static_cast<Real>(0.0386) - y * (static_cast<Real>(0.0841) + y * static_cast<Real>(0.0097));
  const Real regular = static_cast<Real>(0.75) + series::evaluate<bk1cs>(y / 2 - 1) + slope * lost_of_square(x, y);
  return std::exp(x) * (functions::log_of_half(x) * (x * near_i<1>(x)) + regular / x);
}

template <class Real>
Real refuse_large(Real x, Real limit) {
  raise<Math>(4, MATH_LARGE_ABS_ARG_FATAL, {.r = {static_cast<double>(x), static_cast<double>(limit)}});
  return Machine<Real>::not_a_number;
}

// exp(y) times the scaled form. At the rounded logarithm of the largest number exp(y) alone may already be infinite.
template <int order, class Real>
Real large_i(Real y) {
  return functions::scaled_exp<Real>(scaled_i<order>(y), {y, 0});
}

template <class Real>
Real l_bessel_I0(Real x) {
  const Real y = std::abs(x), limit = std::log(Machine<Real>::largest);
  if (y <= std::sqrt(8 * Machine<Real>::spacing)) return 1;
  if (y <= 3) return near_i<0>(y);
  if (y <= limit) return large_i<0>(y);
  return y != y ? x : refuse_large(x, limit);
}

template <class Real>
Real l_bessel_I1(Real x) {
  const Real y = std::abs(x), least = 2 * Machine<Real>::smallest, limit = std::log(Machine<Real>::largest);
  if (y == 0 || y != y) return x;
  if (y <= least) {
    raise<Math>(2, MATH_SMALL_ABS_ARG_UNDERFLOW, {.r = {static_cast<double>(x), static_cast<double>(least)}});
    return 0;
  }
  if (y <= std::sqrt(8 * Machine<Real>::spacing)) return x / 2;
  if (y <= 3) return x * near_i<1>(y);
  if (y <= limit) return std::copysign(large_i<1>(y), x);
  return refuse_large(x, limit);
}

}  // namespace
}  // namespace zent

#define ZENT_FORM(P, Real, name)                                                                                       \
  extern "C" Real zent_##P##_bessel_##name(Real x) {                                                                   \
    return zent::scalar_call<zent::Math>("zent_" #P "_bessel_" #name, [=] { return zent::l_bessel_##name<Real>(x); }); \
  }
#define ZENT_FORMS(name)    \
  ZENT_FORM(f, float, name) \
  ZENT_FORM(d, double, name)
ZENT_FORMS(exp_I0)
ZENT_FORMS(exp_I1)
ZENT_FORMS(exp_K0)
ZENT_FORMS(exp_K1)
ZENT_FORMS(I0)
ZENT_FORMS(I1)
#undef ZENT_FORMS
#undef ZENT_FORM
