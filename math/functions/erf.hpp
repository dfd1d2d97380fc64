// The error function, its complement, and their inverses. Both halves have erfc and erfc_inverse, with numbers of their own.
//
// Methods: Chebyshev series in 2x^2 - 1, in (8/x^2 - 5)/3 and in 8/x^2 - 1; the inverses have series of their own in the middle
// and in the tails; Newton's
// iteration on exp(x^2) erfc(x) checks the latter and serves arguments that have lost digits.
#pragma once

#include <algorithm>
#include <cmath>

#include "math/functions/leaf.hpp"
#include "math/functions/series.hpp"

namespace zent::functions {

#include "math/functions/tables/lv_erc2cs.inc"
#include "math/functions/tables/lv_erfccs.inc"
#include "math/functions/tables/lv_erfcs.inc"
#include "math/functions/tables/lv_erfi2cs.inc"
#include "math/functions/tables/lv_erfics.inc"
#include "math/functions/tables/lv_erfit1cs.inc"
#include "math/functions/tables/lv_erfit2cs.inc"
#include "math/functions/tables/lv_erfit3cs.inc"

template <class Real>
inline constexpr Real root_pi = static_cast<Real>(1.772453850905516);

// Where the ranges end, from the machine constants.
template <class Real>
struct ErfLimits {
  Real sqeps;  // below it erf is a straight line
  Real xbig;   // beyond it erf is 1, and below -xbig erfc is 2
  Real xmax;   // beyond it erfc underflows
  Real t1;     // 1 - t1 and 2 - t1: beyond them the inverses have lost half of the digits
};
template <class Real>
constexpr ErfLimits<Real> find_erf_limits() {
  using M = Machine<Real>;
  ErfLimits<Real> limits = {};
  limits.sqeps = std::sqrt(2 * M::spacing);
  limits.xbig = std::sqrt(-std::log(M::spacing * root_pi<Real>));
  const Real txmax = std::sqrt(-std::log(M::smallest * root_pi<Real>));
  limits.xmax = txmax - static_cast<Real>(0.5) * std::log(txmax) / txmax - static_cast<Real>(0.01);
  const Real s = std::sqrt(M::epsilon / (4 * static_cast<Real>(3.1415)));
  const Real k = static_cast<Real>(1.77);
  const Real t0 = -s / std::log(k * s);
  const Real logarithm = std::log(k * t0);
  limits.t1 = t0 - (t0 * logarithm + s) / (logarithm + 1);
  return limits;
}
template <class Real>
inline const ErfLimits<Real> erf_limits = find_erf_limits<Real>();

// exp(-x^2) with the rounding error of the square put back; it would grow with x^2.
template <class Real>
inline Real exp_minus_square(Real x) {
  const Real split = x * (std::is_same_v<Real, float> ? static_cast<Real>(4097) : static_cast<Real>(134217729));
  const Real high = split - (split - x), low = x - high;
  const Real y = x * x;
  const Real error = ((high * high - y) + 2 * high * low) + low * low;
  const Real e = std::exp(-y);
  return e - e * error;
}

// The two series of x exp(x^2) erfc(x) - 1/2, y = x^2 up to 4 and beyond, in one array: choosing by index spares a branch that no
// processor could foresee. In (8/y - shift) scale; the shorter one is filled with zeros.
template <class Real>
struct TailSeries {
  static constexpr long terms = std::max(series::Series<lv_erc2cs, Real>::terms, series::Series<lv_erfccs, Real>::terms);
  Real shift, scale;
  Real c[terms];
};
template <class Table, class Real>
constexpr TailSeries<Real> make_tail_series(Real shift, Real scale) {
  TailSeries<Real> t = {shift, scale, {}};
  for (long i = 0; i < series::Series<Table, Real>::terms; ++i) t.c[i] = series::Series<Table, Real>::power.c[i];
  return t;
}
template <class Real>
inline constexpr TailSeries<Real> tail_series_of_erfc[2] = {make_tail_series<lv_erc2cs, Real>(5, 1 / static_cast<Real>(3)),
                                                            make_tail_series<lv_erfccs, Real>(1, 1)};

// x exp(x^2) erfc(x) for x > 1, from 1/x.
template <class Real>
inline Real scaled_tail(Real inverse) {
  const TailSeries<Real>& s = tail_series_of_erfc<Real>[2 * inverse < 1 ? 1 : 0];
  return static_cast<Real>(0.5) +
         series::paired_polynomial<TailSeries<Real>::terms>(s.c, (8 * (inverse * inverse) - s.shift) * s.scale);
}

// erfc for 1 < x <= xmax.
template <class Real>
inline Real tail(Real x) {
  const Real inverse = 1 / x;
  return exp_minus_square(x) * (inverse * scaled_tail(inverse));
}

template <class Real>
inline bool plain_erf(Real x, Real& value) {
  const ErfLimits<Real>& limits = erf_limits<Real>;
  const Real ax = std::abs(x);
  if (ax <= 1) {
    value = ax <= limits.sqeps ? 2 * x / root_pi<Real> : x + x * series::evaluate_in_pairs<lv_erfcs>(2 * x * x - 1);
  } else if (ax <= limits.xbig) {
    const Real inverse = 1 / ax;  // beside 1 the rounding error of the square does not count
    value = std::copysign(1 - std::exp(-(x * x)) * (inverse * scaled_tail(inverse)), x);
  } else {
    value = x != x ? x : std::copysign(static_cast<Real>(1), x);
  }
  return true;
}
template <class Half, class Real>
inline Real l_erf(Real x) {
  Real value = 0;
  plain_erf(x, value);
  return value;
}

// False beyond xmax alone.
template <class Real>
inline bool plain_erfc(Real x, Real& value) {
  const ErfLimits<Real>& limits = erf_limits<Real>;
  const Real ax = std::abs(x);
  if (ax <= 1) {
    // (1 - x) first: it is exact where erfc becomes small.
    value = ax <= limits.sqeps ? 1 - 2 * x / root_pi<Real> : (1 - x) - x * series::evaluate_in_pairs<lv_erfcs>(2 * x * x - 1);
  } else if (x > limits.xmax) {
    return false;
  } else if (x <= -limits.xbig) {
    value = 2;
  } else {
    value = x != x ? x : x < 0 ? 2 - tail(ax) : tail(ax);
  }
  return true;
}
template <class Half, class Real>
Real l_erfc(Real x) {
  Real value = 0;
  if (plain_erfc(x, value)) return value;
  raise<Half>(2, MATH_LARGE_ARG_UNDERFLOW, {.r = {static_cast<double>(x), static_cast<double>(erf_limits<Real>.xmax)}});
  return 0;
}

// exp(x^2) erfc(x) for x >= 0.
template <class Real>
inline Real l_erfce(Real x) {
  if (x > 1) return scaled_tail(1 / x) / x;
  Real value = 0;
  plain_erfc(x, value);
  return std::exp(x * x) * value;
}

// The tail: x with erfc(x) = p for 0 < p <= 0.25; false when the iteration does not settle. erfc_inverse_by_series is its fast
// twin.
template <class Real>
inline bool erfc_inverse_tail(Real p, Real& value) {
  const Real w = -std::log(root_pi<Real> * p);
  const Real logarithm = std::log(w);
  const Real half = static_cast<Real>(0.5), quarter = static_cast<Real>(0.25);
  Real x = std::sqrt(w - half * logarithm + (quarter * logarithm - half) / w);
  const Real log_p = std::log(p);
  for (int i = 0; i < 100; ++i) {
    const Real step = (l_erfce(x) - std::exp(x * x + log_p)) * (root_pi<Real> / 2);
    x += step;
    if (std::abs(step) < 10 * Machine<Real>::epsilon * x) {
      value = x;
      return true;
    }
  }
  value = x;
  return false;
}

// The series of x/s - 1 in 1/s, for s = sqrt(-log p) from `low` to `high`.
template <class Table, class Real>
inline Real tail_series(Real s, double low, double high) {
  const double scale = 2 / (1 / low - 1 / high);  // divided once, at compile time
  return s + s * series::evaluate_in_pairs<Table>(static_cast<Real>(scale) / s - static_cast<Real>(scale / high + 1));
}
template <class Real>
inline Real erfc_inverse_by_series(Real p) {
  const Real s = std::sqrt(-std::log(p));
  if (s <= 3) return tail_series<lv_erfit1cs>(s, 1.17, 3);
  return s <= 8 ? tail_series<lv_erfit2cs>(s, 3, 8) : tail_series<lv_erfit3cs>(s, 8, 27.4);
}

// False outside 0 < x <= 2 - t1.
template <class Real>
inline bool plain_erfc_inverse(Real x, Real& value) {
  const Real y = 1 - x;
  if (std::abs(y) < static_cast<Real>(0.75)) {
    value = y + y * series::evaluate_in_pairs<lv_erfics>(y * y * static_cast<Real>(32.0 / 9) - 1);
    return true;
  }
  if (x != x) {
    value = x;
    return true;
  }
  if (x <= 0 || x > 2 - erf_limits<Real>.t1) return false;
  value = x < 1 ? erfc_inverse_by_series(x) : -erfc_inverse_by_series(2 - x);
  return true;
}
// The statistics half has no rows for the numbers of the other.
template <class Half>
inline constexpr long late_number = Half::is_math ? long{MATH_LARGE_ARG_WARN} : long{STAT_LARGE_ARG_WARN};
template <class Half>
inline constexpr long stalled_number = Half::is_math ? long{MATH_ERF_ALGORITHM} : long{STAT_ERF_ALGORITHM};

template <class Half, class Real>
Real l_erfc_inverse(Real x) {
  const double shown = static_cast<double>(x);
  if (x <= 0 || x >= 2) {
    raise<Half>(4, MATH_REAL_OUT_OF_RANGE, {.r = {0, 2, shown}, .l = {"x"}});
    return Machine<Real>::not_a_number;
  }
  Real value = 0;
  if (plain_erfc_inverse(x, value)) return value;
  const Real bound = 2 - erf_limits<Real>.t1;
  if (x > bound) {
    raise<Half>(3, late_number<Half>, {.r = {shown, static_cast<double>(bound)}});
  }
  if (!erfc_inverse_tail(x < 1 ? x : 2 - x, value)) {
    raise<Half>(4, stalled_number<Half>, {.r = {shown}});
    return Machine<Real>::not_a_number;
  }
  return x < 1 ? value : -value;
}

// False for |x| > 1 - t1.
template <class Real>
inline bool plain_erf_inverse(Real x, Real& value) {
  const Real ax = std::abs(x);
  if (ax <= static_cast<Real>(0.75)) {
    const Real y = ax <= std::sqrt(Machine<Real>::spacing) ? 0 : x * x;
    value = std::copysign(x + x * series::evaluate_in_pairs<lv_erfics>(32 * y / 9 - 1), x);  // keeps -0
  } else if (ax <= static_cast<Real>(0.9375)) {
    value = x + x * series::evaluate_in_pairs<lv_erfi2cs>((512 * x * x - 369) / 81);
  } else if (x != x) {
    value = x;
  } else {
    if (ax > 1 - erf_limits<Real>.t1) return false;
    value = std::copysign(erfc_inverse_by_series(1 - ax), x);
  }
  return true;
}
template <class Half, class Real>
Real l_erf_inverse(Real x) {
  const double shown = static_cast<double>(x);
  const Real ax = std::abs(x);
  if (ax >= 1) {
    raise<Half>(4, MATH_REAL_OUT_OF_RANGE, {.r = {-1, 1, shown}, .l = {"x"}});
    return Machine<Real>::not_a_number;
  }
  Real value = 0;
  if (plain_erf_inverse(x, value)) return value;
  const Real bound = 1 - erf_limits<Real>.t1;
  if (ax > bound) raise<Half>(3, MATH_LARGE_ABS_ARG_WARN, {.r = {shown, static_cast<double>(bound)}});
  if (!erfc_inverse_tail(1 - ax, value)) {
    raise<Half>(4, MATH_ERF_ALGORITHM, {.r = {shown}});
    return Machine<Real>::not_a_number;
  }
  return std::copysign(value, x);
}

template <class Half, class Real>
inline Real erf(Real x) {
  Real value = 0;
  if (plain_erf(x, value) && leaf<Half>()) [[likely]]
    return value;
  return scalar_call<Half>(ZENT_FRAME("erf"), [=] { return l_erf<Half>(x); });
}
template <class Half, class Real>
inline Real erfc(Real x) {
  Real value = 0;
  if (plain_erfc(x, value) && leaf<Half>()) [[likely]]
    return value;
  return scalar_call<Half>(ZENT_FRAME("erfc"), [=] { return l_erfc<Half>(x); });
}
template <class Half, class Real>
inline Real erf_inverse(Real x) {
  Real value = 0;
  if (plain_erf_inverse(x, value) && leaf<Half>()) [[likely]]
    return value;
  return scalar_call<Half>(ZENT_FRAME("erf_inverse"), [=] { return l_erf_inverse<Half>(x); });
}
template <class Half, class Real>
inline Real erfc_inverse(Real x) {
  Real value = 0;
  if (plain_erfc_inverse(x, value) && leaf<Half>()) [[likely]]
    return value;
  return scalar_call<Half>(ZENT_FRAME("erfc_inverse"), [=] { return l_erfc_inverse<Half>(x); });
}

}  // namespace zent::functions
