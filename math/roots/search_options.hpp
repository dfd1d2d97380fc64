// Options that the searches for zeros share.
#pragma once

#include <cmath>

#include "runtime/machine.hpp"
#include "runtime/options.hpp"
#include "zent/option_codes.h"

namespace zent::roots {

template <class Real>
struct SearchOptions {
  long max_evals;
  Real err_rel = std::sqrt(Machine<Real>::epsilon);
  const Real* guess = nullptr;
  Real* user = nullptr;

  // True when the code was one of these.
  bool take(int code, Options& list) {
    switch (code) {
      case ZENT_ERR_REL:
        err_rel = list.real<Real>();
        return true;
      case ZENT_ERR_REL_ADR:
        err_rel = *list.pointer<Real>();
        return true;
      case ZENT_MAX_EVALS:
      case ZENT_MAX_ITN:
        max_evals = list.integer();
        return true;
      case ZENT_XGUESS:
        guess = list.pointer<Real>();
        return true;
      case ZENT_RETURN_USER:
        user = list.pointer<Real>();
        return true;
      default:
        return false;
    }
  }
};

}  // namespace zent::roots
