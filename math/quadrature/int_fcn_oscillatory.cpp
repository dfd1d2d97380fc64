// Integrators with the weights cos(omega x) and sin(omega x).
#include "math/quadrature/entry.hpp"
#include "math/quadrature/oscillatory.hpp"
#include "zent/quadrature.h"

namespace zent::quadrature {

namespace {

constexpr unsigned has_trig = has_usual | has_moments, has_fourier = has_limit | has_moments | has_cycles;

// The lists, the levels of the intervals and the table of moments.
template <class Real>
struct TrigWork {
  Subintervals<Real> s;
  long* nnlog;
  MomentTable<Real> moments;
};

template <class Real>
bool make_work(TrigWork<Real>& w, const IntOptions<Real>& o) {
  const long room = o.max_subinter, rows = o.max_moments < 1 ? 1 : o.max_moments;  // both of 32 bits
  const long levels = room * static_cast<long>(sizeof(long)), moments = rows * moment_row * static_cast<long>(sizeof(Real));
  if (!allocate<Math>(w.s, room, room, levels + moments)) return false;
  w.nnlog = reinterpret_cast<long*>(w.s.elist + room);
  w.moments = {reinterpret_cast<Real*>(w.nnlog + room), rows, 0};
  return true;
}

inline long trig_weight(long weight) {
  if (weight == ZENT_COS) return cosine_weight;
  return weight == ZENT_SIN ? long{sine_weight} : 0;
}

template <class Real>
void check_moments(const IntOptions<Real>& o) {
  if (o.max_moments < 1) raise<Math>(5, MATH_MAX_MOMENTS_REACHED, {.i = {o.max_moments}});
}
inline void check_weight(long weight) {
  if (trig_weight(weight) == 0) raise<Math>(5, MATH_WEIGHT_CHOICE, {.i = {weight}});
}

template <class Real>
Real l_q2awo(const Integrand<Math, Real>& f, Real a, Real b, long weight, Real omega, const IntOptions<Real>& o,
             TrigWork<Real>& w) {
  check_moments(o);
  check_weight(weight);
  check_tolerances<Math>(o);
  check_relative<Math>(o);
  if (failed<Math>()) return Machine<Real>::not_a_number;
  return finish<Math>(l_q3awo(f, a, b, omega, trig_weight(weight), o.err_abs, o.err_rel, w.moments, w.nnlog, w.s), o, w.s);
}

template <class Real>
Real l_int_fcn_trig(Real (*fcn)(Real), Real a, Real b, long weight, Real omega, const IntOptions<Real>& o) {
  TrigWork<Real> w;
  check_entry<Math>(fcn, o);
  if (failed<Math>()) return Machine<Real>::not_a_number;
  if (!make_work(w, o)) {
    raise_out_of_memory<Math>({o.max_subinter}, {"max_subinter"});
    return Machine<Real>::not_a_number;
  }
  return l_q2awo(integrand_of<Math>(fcn, o), a, b, weight, omega, o, w);
}

template <class Real>
Real l_q2awf(const Integrand<Math, Real>& f, Real a, long weight, Real omega, const IntOptions<Real>& o, TrigWork<Real>& w) {
  check_moments(o);
  if (o.max_cycles < 3) raise<Math>(5, MATH_MAX_CYCLES_REACHED, {.i = {o.max_cycles}});
  check_weight(weight);
  if (!(o.err_abs > 0)) raise<Math>(5, MATH_ERR_ABS_SMALL, {.r = {as_double(o.err_abs)}});
  if (failed<Math>()) return Machine<Real>::not_a_number;
  if (omega == 0) {  // no cycles: the half line from 0, whatever a is
    if (o.n_cycles != nullptr) *o.n_cycles = 1;
    IntOptions<Real> absolute = o;
    absolute.err_rel = 0;
    return finish<Math>(l_q3agi(f, Real(0), 1, absolute.err_abs, absolute.err_rel, w.s), absolute, w.s);
  }
  const Outcome<Real> outcome = l_q3awf(f, a, omega, trig_weight(weight), o.err_abs, o.max_cycles, w.moments, w.nnlog, w.s);
  if (o.err_est != nullptr) *o.err_est = outcome.abserr;
  if (o.n_evals != nullptr) *o.n_evals = outcome.neval;
  if (o.n_cycles != nullptr) *o.n_cycles = outcome.last;
  if (!fatal_stands<Math>()) {
    if (outcome.ier == bad_cycle) raise<Math>(3, MATH_BAD_INTEGRAND_BEHAVIOR);
    if (outcome.ier == too_many_cycles) raise<Math>(4, MATH_MAX_CYCLES_ACHIEVED, {.i = {o.max_cycles}});
    if (outcome.ier == slow_extrapolation) raise<Math>(3, MATH_EXTRAPOLATION_PROBLEMS, {.r = {as_double(o.err_abs)}});
  }
  return conclude<Math>(outcome.result);
}

template <class Real>
Real l_int_fcn_fourier(Real (*fcn)(Real), Real a, long weight, Real omega, const IntOptions<Real>& o) {
  TrigWork<Real> w;
  check_entry<Math>(fcn, o);
  if (failed<Math>()) return Machine<Real>::not_a_number;
  if (!make_work(w, o)) {
    raise_out_of_memory<Math>({o.max_subinter, o.max_cycles}, {"max_subinter", "max_cycles"});
    return Machine<Real>::not_a_number;
  }
  return l_q2awf(integrand_of<Math>(fcn, o), a, weight, omega, o, w);
}

}  // namespace

}  // namespace zent::quadrature

#define ZENT_FORM(P, Real)                                                                                                   \
  ZENT_INTEGRATOR(P, Real, int_fcn_trig, 5, omega, has_trig, l_int_fcn_trig(fcn, a, b, weight, omega, o), Real (*fcn)(Real), \
                  Real a, Real b, long weight, Real omega)                                                                   \
  ZENT_INTEGRATOR(P, Real, int_fcn_fourier, 4, omega, has_fourier, l_int_fcn_fourier(fcn, a, weight, omega, o),              \
                  Real (*fcn)(Real), Real a, long weight, Real omega)
ZENT_FORM(f, float)
ZENT_FORM(d, double)
