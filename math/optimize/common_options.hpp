// Options that the solvers of many variables share.
#pragma once

#include "math/optimize/record.hpp"
#include "math/optional_argument.hpp"
#include "runtime/options.hpp"
#include "runtime/scratch.hpp"
#include "zent/option_codes.h"

namespace zent::optimize {

template <class T>
T* storage(Options& options, const char* argument, const char* option) {
  return not_null(options.pointer<T>(), argument, option);
}

template <class Real>
struct Common {
  Record<Real> record;
  const Real* xguess = nullptr;
  const Real* xscale = nullptr;
  Real* user = nullptr;

  // True when the code was one of these.
  bool take(int code, Options& options) {
    switch (code) {
      case ZENT_XGUESS:
        xguess = storage<Real>(options, "xguess", "ZENT_XGUESS");
        return true;
      case ZENT_XSCALE:
        xscale = storage<Real>(options, "xscale", "ZENT_XSCALE");
        return true;
      case ZENT_RETURN_USER:
        user = storage<Real>(options, "x", "ZENT_RETURN_USER");
        return true;
      case ZENT_GOOD_DIGIT:
        record.ndigit = options.integer();
        return true;
      case ZENT_MAX_ITN:
        record.max_itn = options.integer();
        return true;
      case ZENT_MAX_FUNCTION_CALLS:
      case ZENT_MAX_FCN:
        record.max_fcn = options.integer();
        return true;
      case ZENT_FSCALE:
        record.fscale = options.real<Real>();
        return true;
      case ZENT_GRAD_TOL:
        record.grad_tol = options.real<Real>();
        return true;
      case ZENT_STEP_TOL:
        record.step_tol = options.real<Real>();
        return true;
      case ZENT_REL_FCN_TOL:
        record.rel_fcn_tol = options.real<Real>();
        return true;
      case ZENT_MAX_STEP:
        record.max_step = options.real<Real>();
        return true;
      case ZENT_FSCALE_ADR:
        record.fscale = *options.pointer<Real>();
        return true;
      case ZENT_GRAD_TOL_ADR:
        record.grad_tol = *options.pointer<Real>();
        return true;
      case ZENT_STEP_TOL_ADR:
        record.step_tol = *options.pointer<Real>();
        return true;
      case ZENT_REL_FCN_TOL_ADR:
        record.rel_fcn_tol = *options.pointer<Real>();
        return true;
      case ZENT_MAX_STEP_ADR:
        record.max_step = *options.pointer<Real>();
        return true;
      default:
        return false;
    }
  }

  // The result, the scales and the start; null when there is no memory.
  Real* scales(long n) const {
    Real* const copy = scratch<Math, Real>(n);
    if (copy == nullptr) return nullptr;
    for (long j = 0; j < n; ++j) copy[j] = xscale != nullptr ? xscale[j] : Real(1);
    return copy;
  }
  Real* result_storage(long n) const {
    return user != nullptr ? user : result<Math, Real>(n);
  }
  void start(long n, Real* x) const {
    for (long j = 0; j < n; ++j) x[j] = xguess != nullptr ? xguess[j] : Real(0);
  }
};

}  // namespace zent::optimize
