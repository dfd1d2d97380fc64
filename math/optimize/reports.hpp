// What the solvers of many variables say at their end.
#pragma once

#include "math/optimize/record.hpp"

namespace zent::optimize {

// Raises the condition that ended a search; limits and tolerances are its values. False when there is no result.
template <class Half, class Real>
bool l_u18nf(long number, const Record<Real>& record) {
  const auto real = [number](long type, Real value) { raise<Half>(type, number, {.r = {static_cast<double>(value)}}); };
  const auto integer = [number](long value) { raise<Half>(3, number, {.i = {value}}); };
  switch (number) {
    case 0:
      return true;
    case MATH_STEP_TOLERANCE:
      real(1, record.step_tol);
      return true;
    case MATH_NO_FURTHER_PROGRESS:
      real(3, record.step_tol);
      return true;
    case MATH_REL_FCN_TOLERANCE:
    case MATH_LITTLE_FCN_CHANGE:
      real(3, record.rel_fcn_tol);
      return true;
    case MATH_TOO_MANY_ITN:
      integer(record.max_itn);
      return true;
    case MATH_TOO_MANY_FCN_EVAL:
      integer(record.max_fcn);
      return true;
    case MATH_TOO_MANY_GRAD_EVAL:
    case MATH_TOO_MANY_JACOBIAN_EVAL:
      integer(record.max_grad);
      return true;
    case MATH_UNBOUNDED:
      raise<Half>(3, number);
      return true;
    case MATH_FALSE_CONVERGENCE:
    case MATH_NAN_NOT_ALLOWED:
      raise<Half>(4, number);
      return false;
    default:  // raised where it happened
      return false;
  }
}

}  // namespace zent::optimize
