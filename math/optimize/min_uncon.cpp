// Minimization of functions of one variable: options, checks and reports.
#include "math/optimize/univariate.hpp"
#include "runtime/envelope.hpp"
#include "runtime/options.hpp"
#include "zent/optimize.h"
#include "zent/option_codes.h"

namespace zent::optimize {

namespace {

template <class Real>
struct UnivariateOptions {
  Univariate<Math, Real> fcn, grad;
  Real a, b, xguess;
  Real err_abs = Real(1e-4), step = 0, grad_tol = Real(1e-4), err_rel = std::sqrt(Machine<Real>::epsilon);
  long max_fcn = 1000;
  Real* fvalue = nullptr;
  Real* gvalue = nullptr;
};

template <class Real, class Function>
void with_data(Options& options, Function& function) {
  function.with_data = options.function<Real (*)(Real, void*)>();
  function.data = options.pointer<void>();
}

template <class Real>
void parse(UnivariateOptions<Real>& p, bool derivative, Options& options) {
  while (const int code = options.code()) {
    if (code == ZENT_XGUESS) {
      p.xguess = options.real<Real>();
    } else if (code == ZENT_XGUESS_ADR) {
      p.xguess = *options.pointer<Real>();
    } else if (code == ZENT_MAX_FUNCTION_CALLS || code == ZENT_MAX_FCN) {
      p.max_fcn = options.integer();
    } else if (code == ZENT_FVALUE) {
      p.fvalue = options.pointer<Real>();
    } else if (code == ZENT_FCN_W_DATA) {
      with_data<Real>(options, p.fcn);
    } else if (!derivative && code == ZENT_ERR_ABS) {
      p.err_abs = options.real<Real>();
    } else if (!derivative && code == ZENT_ERR_ABS_ADR) {
      p.err_abs = *options.pointer<Real>();
    } else if (!derivative && code == ZENT_STEP) {
      p.step = options.real<Real>();
    } else if (!derivative && code == ZENT_STEP_ADR) {
      p.step = *options.pointer<Real>();
    } else if (derivative && code == ZENT_GRAD_TOL) {
      p.grad_tol = options.real<Real>();
    } else if (derivative && code == ZENT_GRAD_TOL_ADR) {
      p.grad_tol = *options.pointer<Real>();
    } else if (derivative && code == ZENT_ERR_REL) {
      p.err_rel = options.real<Real>();
    } else if (derivative && code == ZENT_ERR_REL_ADR) {
      p.err_rel = *options.pointer<Real>();
    } else if (derivative && code == ZENT_GVALUE) {
      p.gvalue = options.pointer<Real>();
    } else if (derivative && code == ZENT_GRAD_W_DATA) {
      with_data<Real>(options, p.grad);
    } else if (!options.unknown<Math>(code)) {
      return;
    }
  }
}

// All checks run. The interval is looked at only where the start lies in it.
template <class Real>
bool acceptable(const UnivariateOptions<Real>& p, bool derivative, Real accuracy) {
  if (!p.fcn.given()) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"fcn"}});
  if (derivative && !p.grad.given()) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"grad"}});
  const double x = p.xguess, a = p.a, b = p.b;
  if (!(a <= x && x <= b && std::isfinite(x))) {
    raise<Math>(5, derivative ? MATH_NEED_A_LE_XGUESS_LE_B : MATH_INIT_GUESS_OUT_BOUNDS, {.r = {x, a, b}});
  } else if (std::max(p.xguess - p.a, p.b - p.xguess) <= accuracy) {
    raise<Math>(5, MATH_INTERVAL_TOO_SMALL, {.r = {a, b, static_cast<double>(accuracy)}});
  }
  return !failed<Math>();
}

template <class Real>
Real l_min_uncon(UnivariateOptions<Real> p, Options& options) {
  parse(p, false, options);
  const Real xacc = p.err_abs > 0 ? p.err_abs : Real(0);
  if (!acceptable(p, false, xacc)) return Machine<Real>::not_a_number;
  ValueSearch<Math, Real> search = {.f = p.fcn, .a = p.a, .b = p.b, .xacc = xacc, .max_fcn = p.max_fcn};
  const End end = search.run(p.xguess, std::isfinite(p.step) ? p.step : Real(0));
  if (stands_above<Math>(3)) return Machine<Real>::not_a_number;
  if (end == End::at_bound) raise<Math>(3, MATH_MIN_AT_BOUND, {.r = {static_cast<double>(search.mid.x)}});
  if (end == End::no_progress) raise<Math>(3, MATH_NO_MORE_PROGRESS);
  if (end == End::limit) raise<Math>(3, MATH_TOO_MANY_FCN_EVAL, {.i = {p.max_fcn}});
  if (p.fvalue != nullptr) *p.fvalue = search.mid.f;
  return search.mid.x;
}

template <class Real>
Real l_min_uncon_deriv(UnivariateOptions<Real> p, Options& options) {
  parse(p, true, options);
  if (!acceptable(p, true, Real(0))) return Machine<Real>::not_a_number;
  SlopeSearch<Math, Real> search = {.f = p.fcn,
                                    .slope = p.grad,
                                    .a = p.a,
                                    .b = p.b,
                                    .grad_tol = p.grad_tol,
                                    .err_rel = std::max(p.err_rel, Real(0)),
                                    .max_fcn = p.max_fcn};
  const End end = search.run(p.xguess);
  if (stands_above<Math>(3)) return Machine<Real>::not_a_number;
  const Point<Real>& best = search.best;
  if (end == End::at_bound) {
    raise<Math>(3, best.x == p.a ? MATH_MIN_AT_LOWERBOUND : MATH_MIN_AT_UPPERBOUND, {.r = {static_cast<double>(best.x)}});
  }
  if (end == End::no_progress) raise<Math>(3, MATH_NO_MORE_PROGRESS);
  if (end == End::limit) raise<Math>(3, MATH_TOO_MANY_FCN_EVAL, {.i = {p.max_fcn}});
  if (p.fvalue != nullptr) *p.fvalue = best.f;
  if (p.gvalue != nullptr) *p.gvalue = best.g;
  return best.x;
}

}  // namespace

}  // namespace zent::optimize

#define ZENT_FORM(P, Real)                                                                                                   \
  extern "C" Real zent_##P##_min_uncon(Real (*fcn)(Real), Real a, Real b, ...) {                                             \
    ZENT_OPTIONS(options, b, 3);                                                                                             \
    const Real x = zent::public_call<zent::Math>("zent_" #P "_min_uncon", [&] {                                              \
      return zent::optimize::l_min_uncon<Real>({.fcn = {.plain = fcn}, .grad = {}, .a = a, .b = b, .xguess = a / 2 + b / 2}, \
                                               options);                                                                     \
    });                                                                                                                      \
    ZENT_OPTIONS_END(options);                                                                                               \
    return x;                                                                                                                \
  }                                                                                                                          \
  extern "C" Real zent_##P##_min_uncon_deriv(Real (*fcn)(Real), Real (*grad)(Real), Real a, Real b, ...) {                   \
    ZENT_OPTIONS(options, b, 4);                                                                                             \
    const Real x = zent::public_call<zent::Math>("zent_" #P "_min_uncon_deriv", [&] {                                        \
      return zent::optimize::l_min_uncon_deriv<Real>(                                                                        \
          {.fcn = {.plain = fcn}, .grad = {.plain = grad}, .a = a, .b = b, .xguess = a / 2 + b / 2}, options);               \
    });                                                                                                                      \
    ZENT_OPTIONS_END(options);                                                                                               \
    return x;                                                                                                                \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
