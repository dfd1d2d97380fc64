// Integration over a plane region between two curves: adaptive in x, nested rules in y.
#include "math/quadrature/adaptive.hpp"
#include "math/quadrature/smooth.hpp"
#include "runtime/envelope.hpp"
#include "runtime/options.hpp"
#include "zent.h"

namespace zent::quadrature {

namespace {

template <class Real>
struct Plane {
  Real (*fcn)(Real, Real);
  Real (*with_data)(Real, Real, void*) = nullptr;
  void* data = nullptr;
  Real (*g)(Real);
  Real (*h)(Real);
  Real err_abs, err_rel;
  long rule = 2, max_subinter = 500;
  Real *err_est = nullptr, *err_list = nullptr;
  long *n_subinter = nullptr, *n_evals = nullptr, *err_order = nullptr;
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

  Real operator()(Real y) const {
    ++plane->calls;
    return plane->with_data != nullptr ? plane->with_data(x, y, plane->data) : plane->fcn(x, y);
  }
  void begin() const {
    user_frame<Math>(true);
  }
  void end() const {
    user_frame<Math>(false);
  }
  bool given_up() const {
    return error_state<Math>.type_word[0] > 3;
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
    return error_state<Math>.type_word[0] > 3;
  }
  Real operator()(Real x) const {
    if (given_up()) return 0;
    user_frame<Math>(true);
    const Real low = plane->g(x), high = plane->h(x);
    user_frame<Math>(false);
    if (given_up()) return 0;
    const Inner<Real> inner = {plane, x};
    const SmoothOutcome<Real> o = l_q3ng(inner, low, high, plane->err_abs, plane->err_rel);
    if (!o.reached && !given_up()) raise<Math>(4, MATH_MAX_STEPS_ALLOWED);
    return o.result;
  }
};

template <class Real>
void read_options(Options& options, Plane<Real>& p) {
  while (const int code = options.code()) {
    switch (code) {
      case ZENT_ERR_ABS:
        p.err_abs = options.real<Real>();
        break;
      case ZENT_ERR_ABS_ADR:
        p.err_abs = *options.pointer<Real>();
        break;
      case ZENT_ERR_REL:
        p.err_rel = options.real<Real>();
        break;
      case ZENT_ERR_REL_ADR:
        p.err_rel = *options.pointer<Real>();
        break;
      case ZENT_RULE:
        p.rule = options.integer();
        break;
      case ZENT_ERR_EST:
        p.err_est = options.pointer<Real>();
        break;
      case ZENT_MAX_SUBINTER:
        p.max_subinter = options.integer();
        break;
      case ZENT_N_SUBINTER:
        p.n_subinter = options.pointer<long>();
        break;
      case ZENT_N_EVALS:
        p.n_evals = options.pointer<long>();
        break;
      case ZENT_ERR_LIST:
        p.err_list = options.pointer<Real>();
        break;
      case ZENT_ERR_ORDER:
        p.err_order = options.pointer<long>();
        break;
      case ZENT_FCN_W_DATA:
        p.with_data = options.function<Real (*)(Real, Real, void*)>();
        p.data = options.pointer<void>();
        break;
      default:
        if (!options.unknown<Math>(code)) return;
    }
  }
}

template <class Real>
void check(const Plane<Real>& p) {
  const double err_abs = static_cast<double>(p.err_abs), err_rel = static_cast<double>(p.err_rel);
  if (p.max_subinter < 1) raise<Math>(5, MATH_MAX_SUBINTER_SMALL, {.i = {p.max_subinter}});
  if (p.fcn == nullptr && p.with_data == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"fcn"}});
  if (p.g == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"g"}});
  if (p.h == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"h"}});
  if (p.rule < 1 || p.rule > 6) raise<Math>(5, MATH_RULE_SMALL, {.i = {p.rule}});
  if (!(err_abs >= 0)) raise<Math>(5, MATH_ERR_ABS_SMALL, {.r = {err_abs}});
  if (!(err_rel >= 0)) raise<Math>(5, MATH_ERR_REL_SMALL, {.r = {err_rel}});
  if (err_abs == 0 && err_rel == 0) raise<Math>(5, MATH_ERR_TOL_ZERO);
  if (err_rel >= 1) raise<Math>(5, MATH_ERR_REL_BIG, {.r = {err_rel}});
}

template <class Real>
void report(const Plane<Real>& p, const Outcome<Real>& o, Subintervals<Real>& s) {
  const auto number = [](Real x) { return static_cast<double>(x); };
  switch (o.ier) {
    case too_many_intervals:
      raise<Math>(5, MATH_MAX_SUBINTERVALS, {.i = {p.max_subinter}});
      break;
    case roundoff:
      raise<Math>(3, MATH_ROUNDOFF_CONTAMINATION, {.r = {number(p.err_abs), number(p.err_rel)}});
      break;
    case bad_point:
      raise<Math>(3, MATH_PRECISION_DEGRADATION, {.r = {number(s.left(o.last)), number(s.right(o.last))}});
      break;
    default:
      break;
  }
}

template <class Real>
Real l_int_fcn_2d(Real (*fcn)(Real, Real), Real (*g)(Real), Real (*h)(Real), Real a, Real b, Options& options) {
  const Real usual = std::sqrt(Machine<Real>::epsilon);
  Plane<Real> p = {.fcn = fcn, .g = g, .h = h, .err_abs = usual, .err_rel = usual};
  read_options(options, p);
  check(p);
  if (failed<Math>()) return Machine<Real>::not_a_number;
  Subintervals<Real> s;
  if (!allocate<Math>(s, p.max_subinter, p.max_subinter)) {
    raise_out_of_memory<Math>({p.max_subinter}, {"max_subinter"});
    return Machine<Real>::not_a_number;
  }
  if (p.err_list != nullptr) s.elist = p.err_list;
  if (p.err_order != nullptr) s.iord = p.err_order;
  const Outer<Real> outer = {&p};
  const Outcome<Real> o = l_q3ag(outer, a, b, p.err_abs, p.err_rel, p.rule, s);
  if (p.err_est != nullptr) *p.err_est = o.abserr;
  if (p.n_subinter != nullptr) *p.n_subinter = o.last;
  if (p.n_evals != nullptr) *p.n_evals = p.calls;
  if (!outer.given_up()) report(p, o, s);
  return outer.given_up() ? Machine<Real>::not_a_number : o.result;
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
