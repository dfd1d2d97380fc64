// Minimization of functions of many variables: options, checks and reports.
#include "math/optimize/common_options.hpp"
#include "math/optimize/quasi_newton.hpp"
#include "math/optimize/reports.hpp"
#include "runtime/envelope.hpp"
#include "zent/optimize.h"

namespace zent::optimize {

namespace {

template <class Real>
struct MultivariateOptions {
  Common<Real> common;
  Objective<Math, Real> fcn;
  Gradient<Math, Real> grad;
  Real* fvalue = nullptr;
};

template <class Real>
void parse(MultivariateOptions<Real>& p, Options& options) {
  while (const int code = options.code()) {
    if (p.common.take(code, options)) continue;
    switch (code) {
      case ZENT_GRAD:
        p.grad.plain = options.function<void (*)(long, Real*, Real*)>();
        break;
      case ZENT_MAX_GRAD:
        p.common.record.max_grad = options.integer();
        break;
      case ZENT_INIT_HESSIAN:
        p.common.record.init_hessian = options.integer();
        break;
      case ZENT_FVALUE:
        p.fvalue = options.pointer<Real>();
        break;
      case ZENT_FCN_W_DATA:
        p.fcn.with_data = options.function<Real (*)(long, Real*, void*)>();
        p.fcn.data = options.pointer<void>();
        break;
      case ZENT_GRAD_W_DATA:
        p.grad.with_data = options.function<void (*)(long, Real*, Real*, void*)>();
        p.grad.data = options.pointer<void>();
        break;
      default:
        if (!options.unknown<Math>(code)) return;
    }
  }
}

template <class Real>
Real* l_min_uncon_multivar(MultivariateOptions<Real> p, long n, Options& options) {
  parse(p, options);
  Record<Real>& record = p.common.record;
  if (!p.fcn.given()) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"fcn"}});
  if (n < 1) raise<Math>(5, MATH_N_MUST_BE_POSITIVE, {.i = {n}});
  if (failed<Math>()) return nullptr;
  Real* const xscale = p.common.scales(n);
  Real* const x = xscale == nullptr ? nullptr : p.common.result_storage(n);
  QuasiNewton<Math, Real> solver = {.objective = p.fcn, .gradient = p.grad, .record = &record, .n = n, .xscale = xscale};
  if (x == nullptr || !solver.obtain()) {
    raise_out_of_memory<Math>({n}, {"n"});
    return nullptr;
  }
  repair_record<Math>(n, xscale, record);
  p.common.start(n, solver.x);
  if (!given(record.max_step)) record.max_step = default_max_step(n, solver.x, xscale);
  const long ended = solver.minimize();
  if (stands_above<Math>(3) || !l_u18nf<Math>(ended, record)) return nullptr;
  std::copy(solver.x, solver.x + n, x);
  if (p.fvalue != nullptr) *p.fvalue = solver.f;
  keep<Math>(x);
  return x;
}

}  // namespace

}  // namespace zent::optimize

#define ZENT_FORM(P, Real)                                                                                              \
  extern "C" Real* zent_##P##_min_uncon_multivar(Real (*fcn)(long, Real*), long n, ...) {                               \
    ZENT_OPTIONS(options, n, 2);                                                                                        \
    Real* x = zent::public_call<zent::Math>("zent_" #P "_min_uncon_multivar", [&] {                                     \
      return zent::optimize::l_min_uncon_multivar<Real>({.common = {}, .fcn = {.plain = fcn}, .grad = {}}, n, options); \
    });                                                                                                                 \
    ZENT_OPTIONS_END(options);                                                                                          \
    return x;                                                                                                           \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
