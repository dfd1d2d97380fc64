// A zero of a system of nonlinear equations.
#include "math/roots/hybrid.hpp"
#include "math/roots/search_options.hpp"
#include "runtime/envelope.hpp"
#include "zent.h"

namespace zent::roots {

namespace {

template <class Real>
struct SystemOptions : SearchOptions<Real> {
  Real* fnorm = nullptr;
};

template <class Real>
void parse(Options& list, System<Real>& system, SystemOptions<Real>& o) {
  using WithData = typename System<Real>::WithData;
  while (const int code = list.code()) {
    if (o.take(code, list)) continue;
    switch (code) {
      case ZENT_JACOBIAN:
        system.jacobian = list.function<typename System<Real>::Plain>();
        break;
      case ZENT_JACOBIAN_W_DATA:
        system.jacobian_with_data = list.function<WithData>();
        system.jacobian_data = list.pointer<void>();
        break;
      case ZENT_FNORM:
        o.fnorm = list.pointer<Real>();
        break;
      case ZENT_FCN_W_DATA:
        system.with_data = list.function<WithData>();
        system.data = list.pointer<void>();
        break;
      default:
        if (!list.unknown<Math>(code)) return;
    }
  }
}

template <class Real>
void check(const System<Real>& system, long n, const SystemOptions<Real>& o) {
  if (system.plain == nullptr && system.with_data == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"fcn"}});
  if (n < 1) raise<Math>(5, MATH_NUMBER_EQUN_UNKN_LT_1, {.i = {n}});
  if (!(o.err_rel >= 0)) raise<Math>(5, MATH_ERRREL_LESS_THAN_ZERO, {.r = {static_cast<double>(o.err_rel)}});
  if (o.max_evals < 1) raise<Math>(5, MATH_ITMAX_LESS_THAN_ZERO, {.i = {o.max_evals}});
}

template <class Real>
void report(Ending ending, Real err_rel, long limit) {
  if (ending == Ending::limit) {
    raise<Math>(3, MATH_TOO_MANY_FCN_EVALS, {.i = {limit}});
  } else if (ending == Ending::tolerance) {
    raise<Math>(3, MATH_NO_BETTER_POINT, {.r = {static_cast<double>(err_rel)}});
  } else if (ending == Ending::standstill) {
    raise<Math>(3, MATH_NO_PROGRESS);
  }
}

// The limit of calls. A Jacobian by differences costs n of them.
template <class Real>
long l_limit(const System<Real>& system, long n, long max_evals) {
  long limit = max_evals;
  if (!system.has_jacobian() && __builtin_mul_overflow(n + 1, max_evals, &limit)) limit = 0x7FFFFFFFFFFFFFFF;
  return limit;
}

template <class Real>
Real* l_zeros_sys_eqn(typename System<Real>::Plain fcn, long n, Options& list) {
  System<Real> system;
  system.plain = fcn;
  SystemOptions<Real> o = {{.max_evals = 200}};
  parse(list, system, o);
  check(system, n, o);
  if (failed<Math>()) return nullptr;
  Hybrid<Real> hybrid;
  Real* solution = o.user != nullptr ? o.user : result<Math, Real>(n);
  if (solution == nullptr || !hybrid.allocate(system, n)) {
    raise_out_of_memory<Math>({n}, {"n"});
    return nullptr;
  }
  for (long j = 0; j < n; ++j) hybrid.x[j] = o.guess != nullptr ? o.guess[j] : 0;
  const long limit = l_limit(system, n, o.max_evals);
  const Ending ending = hybrid.run(o.err_rel, limit);
  if (stands_above<Math>(3)) return nullptr;
  report(ending, o.err_rel, limit);
  for (long j = 0; j < n; ++j) solution[j] = hybrid.x[j];
  if (o.fnorm != nullptr) {
    Real sum = 0;
    for (long i = 0; i < n; ++i) sum += hybrid.f[i] * hybrid.f[i];
    *o.fnorm = sum;
  }
  if (o.user == nullptr) keep<Math>(solution);
  return solution;
}

}  // namespace

}  // namespace zent::roots

#define ZENT_FORM(P, Real)                                                                                        \
  extern "C" Real* zent_##P##_zeros_sys_eqn(void (*fcn)(long, Real*, Real*), long n, ...) {                       \
    ZENT_OPTIONS(options, n, 2);                                                                                  \
    Real* x = zent::public_call<zent::Math>("zent_" #P "_zeros_sys_eqn",                                          \
                                            [&] { return zent::roots::l_zeros_sys_eqn<Real>(fcn, n, options); }); \
    ZENT_OPTIONS_END(options);                                                                                    \
    return x;                                                                                                     \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
