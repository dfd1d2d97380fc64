// What the integrals over boxes share: the integrand, the options and their checks.
#pragma once

#include <cmath>

#include "runtime/error.hpp"
#include "runtime/machine.hpp"
#include "runtime/options.hpp"
#include "runtime/user_call.hpp"
#include "zent.h"

namespace zent::hyper_rect {

template <class Real>
struct Request {
  Real (*fcn)(long, Real*);
  Real (*with_data)(long, Real*, void*) = nullptr;
  void* data = nullptr;
  Real err_abs, err_rel;
  Real* err_est = nullptr;
  long max_evals;

  // At a point that the function may destroy.
  Real at(long ndim, Real* x) const {
    return user_call<Math>([&] { return with_data != nullptr ? with_data(ndim, x, data) : fcn(ndim, x); });
  }
  // The function raised a fatal error: further calls would only repeat it.
  bool given_up() const {
    return fatal_stands<Math>();
  }
  bool reached(Real abserr, Real value) const {
    return abserr <= std::max(err_abs, err_rel * std::abs(value));
  }
};

// The options of both functions. False for another code, which is then still to be looked at.
template <class Real>
bool take_option(int code, Options& options, Request<Real>& q) {
  switch (code) {
    case ZENT_ERR_ABS:
      q.err_abs = options.real<Real>();
      return true;
    case ZENT_ERR_ABS_ADR:
      q.err_abs = *options.pointer<Real>();
      return true;
    case ZENT_ERR_REL:
      q.err_rel = options.real<Real>();
      return true;
    case ZENT_ERR_REL_ADR:
      q.err_rel = *options.pointer<Real>();
      return true;
    case ZENT_ERR_EST:
      q.err_est = options.pointer<Real>();
      return true;
    case ZENT_MAX_EVALS:
    case ZENT_MAX_ITN:  // the other number of the same name
      q.max_evals = options.integer();
      return true;
    case ZENT_FCN_W_DATA:
      q.with_data = options.function<Real (*)(long, Real*, void*)>();
      q.data = options.pointer<void>();
      return true;
    default:
      return false;
  }
}

template <class Real>
void check_request(const Request<Real>& q, const Real* a, const Real* b) {
  if (q.fcn == nullptr && q.with_data == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"fcn"}});
  if (a == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"a"}});
  if (b == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"b"}});
  if (!(q.err_abs >= 0)) raise<Math>(5, MATH_ERR_ABS_SMALL, {.r = {static_cast<double>(q.err_abs)}});
  if (!(q.err_rel >= 0)) raise<Math>(5, MATH_ERR_REL_SMALL, {.r = {static_cast<double>(q.err_rel)}});
  if (q.max_evals < 1) raise<Math>(5, MATH_MAX_EIGEN_GT_ZERO, {.i = {q.max_evals}});
}

}  // namespace zent::hyper_rect
