// Integrators with algebraic-logarithmic factors, for principal values, and by nested rules.
#include "math/quadrature/adaptive_weighted.hpp"
#include "math/quadrature/entry.hpp"
#include "math/quadrature/smooth.hpp"
#include "zent/quadrature.h"

namespace zent::quadrature {

namespace {

constexpr unsigned has_principal = has_usual | has_rule | has_lists;

template <class Real>
Real l_q2aws(const Integrand<Math, Real>& f, Real a, Real b, long weight, Real alpha, Real beta, const IntOptions<Real>& o,
             Subintervals<Real>& s) {
  if (weight < algebraic || weight > both_logs) raise<Math>(5, MATH_BAD_WEIGHT_CHOICE, {.i = {weight}});
  check_tolerances<Math>(o);
  if (!(alpha > -1)) raise<Math>(5, MATH_ALPHA_ARGUMENT, {.r = {as_double(alpha)}});
  if (!(beta > -1)) raise<Math>(5, MATH_BETA_ARGUMENT, {.r = {as_double(beta)}});
  if (!(a < b)) raise<Math>(5, MATH_INTEGRATION_LIMITS, {.r = {as_double(a), as_double(b)}});
  check_relative<Math>(o);
  if (failed<Math>()) return Machine<Real>::not_a_number;
  return finish<Math>(l_q3aws(f, a, b, alpha, beta, weight, o.err_abs, o.err_rel, s), o, s);
}

template <class Real>
Real l_int_fcn_alg_log(Real (*fcn)(Real), Real a, Real b, long weight, Real alpha, Real beta, const IntOptions<Real>& o) {
  Subintervals<Real> s;
  check_entry<Math>(fcn, o);
  if (failed<Math>() || !make_lists<Math>(s, o)) return Machine<Real>::not_a_number;
  return l_q2aws(integrand_of<Math>(fcn, o), a, b, weight, alpha, beta, o, s);
}

template <class Real>
Real l_q2awc(const Integrand<Math, Real>& f, Real a, Real b, Real c, const IntOptions<Real>& o, Subintervals<Real>& s) {
  if (c == a) {
    raise<Math>(5, MATH_C_AND_A_DIFFERENT, {.r = {as_double(c)}});
  } else if (c == b) {
    raise<Math>(5, MATH_C_AND_B_DIFFERENT, {.r = {as_double(c)}});
  }
  check_tolerances<Math>(o);
  check_relative<Math>(o);
  if (failed<Math>()) return Machine<Real>::not_a_number;
  return finish<Math>(l_q3awc(f, a, b, c, o.err_abs, o.err_rel, s), o, s);
}

template <class Real>
Real l_int_fcn_cauchy(Real (*fcn)(Real), Real a, Real b, Real c, const IntOptions<Real>& o) {
  Subintervals<Real> s;
  check_entry<Math>(fcn, o);
  if (failed<Math>() || !make_lists<Math>(s, o)) return Machine<Real>::not_a_number;
  return l_q2awc(integrand_of<Math>(fcn, o), a, b, c, o, s);
}

template <class Real>
Real l_qdng(const Integrand<Math, Real>& f, Real a, Real b, const IntOptions<Real>& o) {
  check_tolerances<Math>(o);
  check_relative<Math>(o);
  if (failed<Math>()) return Machine<Real>::not_a_number;
  const SmoothOutcome<Real> outcome = l_q3ng(f, a, b, o.err_abs, o.err_rel);
  if (o.err_est != nullptr) *o.err_est = outcome.abserr;
  if (!outcome.reached && !fatal_stands<Math>()) raise<Math>(4, MATH_MAX_STEPS_ALLOWED);
  return conclude<Math>(outcome.result);
}

template <class Real>
Real l_int_fcn_smooth(Real (*fcn)(Real), Real a, Real b, const IntOptions<Real>& o) {
  check_entry<Math>(fcn, o, false);
  if (failed<Math>()) return Machine<Real>::not_a_number;
  return l_qdng(integrand_of<Math>(fcn, o), a, b, o);
}

}  // namespace

}  // namespace zent::quadrature

#define ZENT_FORM(P, Real)                                                                                                    \
  ZENT_INTEGRATOR(P, Real, int_fcn_alg_log, 6, beta, has_usual, l_int_fcn_alg_log(fcn, a, b, weight, alpha, beta, o),         \
                  Real (*fcn)(Real), Real a, Real b, long weight, Real alpha, Real beta)                                      \
  ZENT_INTEGRATOR(P, Real, int_fcn_cauchy, 4, c, has_principal, l_int_fcn_cauchy(fcn, a, b, c, o), Real (*fcn)(Real), Real a, \
                  Real b, Real c)                                                                                             \
  ZENT_INTEGRATOR(P, Real, int_fcn_smooth, 3, b, has_rel, l_int_fcn_smooth(fcn, a, b, o), Real (*fcn)(Real), Real a, Real b)
ZENT_FORM(f, float)
ZENT_FORM(d, double)
