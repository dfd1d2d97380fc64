// Derivatives of a user function by central differences and Richardson extrapolation.
#include <algorithm>
#include <cmath>

#include "runtime/envelope.hpp"
#include "runtime/options.hpp"
#include "runtime/user_call.hpp"
#include "zent.h"

namespace zent::derivative {

namespace {

inline constexpr long most_columns = 7;  // of the table
inline constexpr int ratio = 4;          // of the errors of two differences whose steps are 2 to 1
inline constexpr int caution = 10;       // the error that is feared, in units of what one halving should leave of a difference
inline constexpr int noise_units = 100;  // roundoff units of the result below which nothing can be told from rounding errors
inline constexpr long enlargements = 8;
inline constexpr int step_bits = 6;

template <class Real>
struct Request {
  Real (*fcn)(Real);
  Real (*with_data)(Real, void*) = nullptr;
  void* data = nullptr;
  long order = 1;
  Real step = 0;
  bool step_given = false;
  Real limit;
};

// Function values near x and the size of those in the last difference.
template <class Real>
struct Probe {
  const Request<Real>& q;
  Real x, size, middle, near_left, near_right;

  Real at(Real place) {
    return seen(user_call<Math>([&] { return q.with_data != nullptr ? q.with_data(place, q.data) : q.fcn(place); }));
  }
  Real seen(Real value) {
    if (std::isfinite(value)) size = std::max(size, std::abs(value));
    return value;
  }
  bool given_up() const {
    return fatal_stands<Math>();
  }
};

template <class Real>
struct Best {
  Real value = Machine<Real>::not_a_number, error = Machine<Real>::infinity;
  bool sufficient = false;
};

// The central difference at step h. `halved`: the step before was 2 h, so the outer points of order 3 are known.
template <class Real>
Real l_d4riv(Probe<Real>& p, Real h, bool halved) {
  const Real outer_left = p.near_left, outer_right = p.near_right;
  p.size = p.q.order == 2 && std::isfinite(p.middle) ? std::abs(p.middle) : 0;
  p.near_left = p.at(p.x - h);
  p.near_right = p.at(p.x + h);
  if (p.q.order == 1) return (p.near_right - p.near_left) / h / 2;
  if (p.q.order == 2) return ((p.near_right - p.middle) - (p.middle - p.near_left)) / h / h;
  const Real left = halved ? p.seen(outer_left) : p.at(p.x - 2 * h), right = halved ? p.seen(outer_right) : p.at(p.x + 2 * h);
  return ((right - left) - 2 * (p.near_right - p.near_left)) / h / h / h / 2;
}

// What the rounding errors of the function values may amount to in the difference at step h.
template <class Real>
Real noise(const Probe<Real>& p, Real h) {
  Real amount = p.size * Machine<Real>::epsilon;
  for (long k = 0; k < p.q.order; ++k) amount /= h;
  return p.q.order == 1 ? amount : 3 * amount;
}

// Steps h, h/2, h/4, ... until the estimate suffices, rounding errors exceed the best error, or the step vanishes beside x. A
// step where the function has no value starts the table anew at its half.
template <class Real>
void l_d3riv(Probe<Real>& p, Real h, Real smallest, Best<Real>& best) {
  constexpr Real eps = Machine<Real>::epsilon;
  Real table[most_columns] = {};
  Real attained = Machine<Real>::infinity;  // in this run
  bool halved = false;
  for (long row = 0; h > 0 && h >= smallest; h /= 2) {
    const Real difference = l_d4riv(p, h, halved);
    if (p.given_up()) return;
    halved = true;
    if (!std::isfinite(difference)) {
      row = 0;
      continue;
    }
    const Real floor = noise(p, h);
    Real value = difference, power = 1;
    for (long j = 0; j <= std::min(row, most_columns - 1); ++j) {
      const Real before = table[j];
      table[j] = value;
      if (j == std::min(row, most_columns - 1)) break;
      power *= ratio;
      const Real correction = (value - before) / (power - 1);
      value += correction;
      const Real resolution = noise_units * eps * std::abs(value);
      // The ratio of the first column even in the later ones: steps far too long must not pass by the chance of a small quotient.
      const Real error = std::max({caution / Real(ratio - 1) * std::abs(value - before), floor, resolution});
      attained = std::min(attained, error);
      if (error >= best.error) continue;
      best.value = value;
      best.error = error;
      best.sufficient = error <= p.q.limit * std::abs(value) || error <= resolution;
    }
    if (best.sufficient || floor >= attained) return;
    ++row;
  }
}

// The given step shortened to a few bits: x + h and x - h then have no rounding error, nor have those of its halves.
template <class Real>
Real few_bits(Real h) {
  int exponent;
  const Real fraction = std::frexp(h, &exponent);
  return std::ldexp(std::floor(std::ldexp(fraction, step_bits)), exponent - step_bits);
}

template <class Real>
Real l_deriv(const Request<Real>& q, Real x) {
  constexpr Real eps = Machine<Real>::epsilon;
  const Real scale = std::max(Real(1), std::abs(x));
  const Real usual = std::max(std::pow(eps, 1 / static_cast<Real>(q.order + 3)), std::sqrt(eps) * std::abs(x));
  const Real start = q.step_given ? q.step : usual;
  const Real least = 8 * eps * std::abs(x);  // shorter steps are lost beside x; a first estimate takes two
  Real h = few_bits(std::max({start, 4 * least, Machine<Real>::smallest}));
  const Real smallest = x != 0 ? least : h * eps;
  Probe<Real> p = {q, x, 0, 0, 0, 0};
  if (q.order == 2) p.middle = p.at(x);
  Best<Real> best;
  for (long k = 0; k <= enlargements && h > 0 && std::isfinite(h); ++k) {
    const Real before = best.error;
    l_d3riv(p, h, smallest, best);
    if (p.given_up()) return Machine<Real>::not_a_number;
    // A longer start helps against rounding errors only, and beyond the scale of x there is nothing to be expected from it.
    if (best.sufficient || !(best.error < before) || h > scale) break;
    h *= 8;
  }
  return best.value;
}

template <class Real>
void read_options(Options& options, Request<Real>& q) {
  while (const int code = options.code()) {
    switch (code) {
      case ZENT_ORDER:
        q.order = options.integer();
        break;
      case ZENT_INITIAL_STEP:
        q.step = options.real<Real>();
        q.step_given = true;
        break;
      case ZENT_INITIAL_STEP_ADR:
        q.step = *options.pointer<Real>();
        q.step_given = true;
        break;
      case ZENT_RELATIVE_ERROR:
        q.limit = options.real<Real>();
        break;
      case ZENT_RELATIVE_ERROR_ADR:
        q.limit = *options.pointer<Real>();
        break;
      case ZENT_FCN_W_DATA:
        q.with_data = options.function<Real (*)(Real, void*)>();
        q.data = options.pointer<void>();
        break;
      default:
        if (!options.unknown<Math>(code)) return;
    }
  }
}

template <class Real>
Real l_fcn_derivative(Real (*fcn)(Real), Real x, Options& options) {
  Request<Real> q = {.fcn = fcn, .limit = std::sqrt(std::sqrt(Machine<Real>::epsilon))};
  read_options(options, q);
  if (q.fcn == nullptr && q.with_data == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"fcn"}});
  if (q.order < 1 || q.order > 3) raise<Math>(5, MATH_INEQUALITY_VIOLATION_2, {.i = {q.order, 1, 3}, .l = {"order"}});
  if (q.step_given && !(q.step > 0 && q.step <= Machine<Real>::largest)) {
    raise<Math>(5, MATH_REAL_OUT_OF_RANGE,
                {.r = {0, static_cast<double>(Machine<Real>::largest), static_cast<double>(q.step)}, .l = {"initial_step"}});
  }
  if (!(q.limit >= 0)) {
    raise<Math>(5, MATH_NEED_RARG_GE_ZERO, {.r = {static_cast<double>(q.limit)}, .l = {"relative_error"}});
  }
  if (failed<Math>()) return Machine<Real>::not_a_number;
  return l_deriv(q, x);
}

}  // namespace

}  // namespace zent::derivative

#define ZENT_FORM(P, Real)                                                                                                 \
  extern "C" Real zent_##P##_fcn_derivative(Real (*fcn)(Real), Real x, ...) {                                              \
    ZENT_OPTIONS(options, x, 2);                                                                                           \
    Real value = zent::public_call<zent::Math>("zent_" #P "_fcn_derivative",                                               \
                                               [&] { return zent::derivative::l_fcn_derivative<Real>(fcn, x, options); }); \
    ZENT_OPTIONS_END(options);                                                                                             \
    return value;                                                                                                          \
  }
ZENT_FORM(d, double)
// A float as the last fixed argument: va_start is defined for it in this calling convention, where it travels in a register.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wvarargs"
ZENT_FORM(f, float)
#pragma GCC diagnostic pop
