// Integration over a plane region between two curves: adaptive in x, nested rules in y.
#include "math/quadrature/int_fcn.hpp"
#include "math/quadrature/smooth.hpp"
#include "runtime/envelope.hpp"
#include "runtime/user_call.hpp"
#include "zent.h"

namespace zent::quadrature {

namespace {

// The options apply to the outer integral; a function with data has another type here.
template <class Real>
struct Plane {
  Real (*fcn)(Real, Real);
  Real (*with_data)(Real, Real, void*) = nullptr;
  void* data = nullptr;
  Real (*g)(Real);
  Real (*h)(Real);
  IntOptions<Real> o = default_options<Real>();
  long calls = 0;
};

// The user's function along the line at x. All of it lives in the frames of this call, so a user function may integrate in its
// turn, and a jump out of it leaves nothing behind.
template <class Real>
struct Inner {
  using half = Math;
  using real = Real;
  Plane<Real>* plane;
  Real x;
  mutable Frame* frame = nullptr;  // of the integrator, while the user's function runs

  Real operator()(Real y) const {
    ++plane->calls;
    const Real value = plane->with_data != nullptr ? plane->with_data(x, y, plane->data) : plane->fcn(x, y);
    back_to<Math>(frame);
    return value;
  }
  void begin() const {
    frame = enter_user<Math>();
  }
  void end() const {
    leave_user<Math>(frame);
  }
  bool given_up() const {
    return fatal_stands<Math>();
  }
};

// The integral over y as a function of x. After a failure nothing more is called.
template <class Real>
struct Outer {
  using half = Math;
  using real = Real;
  Plane<Real>* plane;

  void begin() const {}
  void end() const {}
  bool given_up() const {
    return fatal_stands<Math>();
  }
  Real operator()(Real x) const {
    if (given_up()) return 0;
    Frame* const frame = enter_user<Math>();
    const Real low = plane->g(x), high = plane->h(x);
    leave_user<Math>(frame);
    if (given_up()) return 0;
    const Inner<Real> inner = {plane, x};
    const SmoothOutcome<Real> o = l_q3ng(inner, low, high, plane->o.err_abs, plane->o.err_rel);
    if (!o.reached && !given_up()) raise<Math>(4, MATH_MAX_STEPS_ALLOWED);
    return o.result;
  }
};

template <class Real>
void read_options(Options& options, Plane<Real>& p) {
  while (const int code = options.code()) {
    if (code == ZENT_FCN_W_DATA) {
      p.with_data = options.function<Real (*)(Real, Real, void*)>();
      p.data = options.pointer<void>();
    } else if (option_known(code, has_usual | has_rule | has_lists)) {
      read_option(options, code, p.o);
    } else if (!options.unknown<Math>(code)) {
      return;
    }
  }
}

template <class Real>
void check(const Plane<Real>& p) {
  if (p.o.max_subinter < 1) raise<Math>(5, MATH_MAX_SUBINTER_SMALL, {.i = {p.o.max_subinter}});
  if (p.fcn == nullptr && p.with_data == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"fcn"}});
  if (p.g == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"g"}});
  if (p.h == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"h"}});
  if (p.o.rule < 1 || p.o.rule > 6) raise<Math>(5, MATH_RULE_SMALL, {.i = {p.o.rule}});
  check_tolerances<Math>(p.o);
  check_relative<Math>(p.o);
}

template <class Real>
Real l_int_fcn_2d(Real (*fcn)(Real, Real), Real (*g)(Real), Real (*h)(Real), Real a, Real b, Options& options) {
  Plane<Real> p = {.fcn = fcn, .g = g, .h = h};
  read_options(options, p);
  check(p);
  Subintervals<Real> s;
  if (failed<Math>() || !make_lists<Math>(s, p.o)) return Machine<Real>::not_a_number;
  Outcome<Real> outcome = l_q3ag(Outer<Real>{&p}, a, b, p.o.err_abs, p.o.err_rel, p.o.rule, s);
  outcome.neval = p.calls;
  return finish<Math>(outcome, p.o, s);
}

}  // namespace

}  // namespace zent::quadrature

#define ZENT_FORM(P, Real)                                                                                                      \
  extern "C" Real zent_##P##_int_fcn_2d(Real (*fcn)(Real, Real), Real (*g)(Real), Real (*h)(Real), Real a, Real b, ...) {       \
    ZENT_OPTIONS(options, b, 5);                                                                                                \
    Real value = zent::public_call<zent::Math>("zent_" #P "_int_fcn_2d",                                                        \
                                               [&] { return zent::quadrature::l_int_fcn_2d<Real>(fcn, g, h, a, b, options); }); \
    ZENT_OPTIONS_END(options);                                                                                                  \
    return value;                                                                                                               \
  }
ZENT_FORM(d, double)
// A float as the last fixed argument: va_start is defined for it in this calling convention, where it travels in a register.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wvarargs"
ZENT_FORM(f, float)
#pragma GCC diagnostic pop
