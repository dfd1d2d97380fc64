// The shape of the public integrators: options into a structure, then the worker, within the frame.
#pragma once

#include "math/quadrature/int_fcn.hpp"
#include "runtime/envelope.hpp"

namespace zent::quadrature {

template <class Real, class Worker>
Real integrate(const char* name, Options& options, unsigned has, Worker worker) {
  return public_call<Math>(name, [&options, has, worker] {
    const IntOptions<Real> o = read_options<Math, Real>(options, has);
    return failed<Math>() ? Machine<Real>::not_a_number : worker(o);
  });
}

}  // namespace zent::quadrature

// ZENT_INTEGRATOR(P, Real, name, fixed, last, has, call, head...): `call` uses the options o.
#define ZENT_INTEGRATOR(P, Real, name, fixed, last, has, call, ...)                                            \
  extern "C" Real zent_##P##_##name(__VA_ARGS__, ...) {                                                        \
    ZENT_OPTIONS(options, last, fixed);                                                                        \
    const Real value = zent::quadrature::integrate<Real>("zent_" #P "_" #name, options, zent::quadrature::has, \
                                                         [&](const zent::quadrature::IntOptions<Real>& o) {    \
                                                           using namespace zent::quadrature;                   \
                                                           return call;                                        \
                                                         });                                                   \
    ZENT_OPTIONS_END(options);                                                                                 \
    return value;                                                                                              \
  }

// A float as the last fixed argument: va_start is defined for it in this calling convention, where it travels in a register.
#pragma GCC diagnostic ignored "-Wvarargs"
