// Adaptive integrators without a weight: plain, for singular ends, for break points, for infinite ranges.
#include "math/quadrature/entry.hpp"
#include "zent/quadrature.h"

namespace zent::quadrature {

namespace {

constexpr unsigned has_plain = has_usual | has_rule | has_lists, has_points = has_usual | has_lists;

template <class Half, class Real>
Real l_q2ags(const Integrand<Half, Real>& f, Real a, Real b, const IntOptions<Real>& o, Subintervals<Real>& s) {
  check_tolerances<Half>(o);
  check_relative<Half>(o);
  if (failed<Half>()) return Machine<Real>::not_a_number;
  return finish<Half>(l_q3ags(f, a, b, o.err_abs, o.err_rel, s), o, s);
}

template <class Real>
Real l_int_fcn_sing(Real (*fcn)(Real), Real a, Real b, const IntOptions<Real>& o) {
  Subintervals<Real> s;
  check_entry<Math>(fcn, o);
  if (failed<Math>() || !make_lists<Math>(s, o)) return Machine<Real>::not_a_number;
  return l_q2ags(integrand_of<Math>(fcn, o), a, b, o, s);
}

}  // namespace

}  // namespace zent::quadrature

#define ZENT_FORM(P, Real)                                                                                                   \
  ZENT_INTEGRATOR(P, Real, int_fcn_sing, 3, b, has_usual, l_int_fcn_sing(fcn, a, b, o), Real (*fcn)(Real), Real a, Real b)   \
  ZENT_INTEGRATOR(P, Real, int_fcn, 3, b, has_plain, l_int_fcn<zent::Math>(fcn, a, b, o), Real (*fcn)(Real), Real a, Real b) \
  ZENT_INTEGRATOR(P, Real, int_fcn_sing_pts, 5, points, has_points,                                                          \
                  l_int_fcn_sing_pts<zent::Math>(fcn, a, b, npoints, points, o), Real (*fcn)(Real), Real a, Real b,          \
                  long npoints, Real* points)                                                                                \
  ZENT_INTEGRATOR(P, Real, int_fcn_inf, 3, interval, has_usual, l_int_fcn_inf<zent::Math>(fcn, bound, interval, o),          \
                  Real (*fcn)(Real), Real bound, long interval)
ZENT_FORM(f, float)
ZENT_FORM(d, double)
