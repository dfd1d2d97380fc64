// What the public integrators share: options, checks, the way from a loop's ending to an error; and the three that exist in both
// halves.
#pragma once

#include "math/quadrature/adaptive_extrapolated.hpp"
#include "runtime/options.hpp"
#include "zent/option_codes.h"

namespace zent::quadrature {

// Options that not all members have.
enum Has : unsigned {
  has_rel = 1,
  has_limit = 2,  // with the count of evaluations
  has_n_subinter = 4,
  has_rule = 8,
  has_lists = 16,
  has_moments = 32,
  has_cycles = 64,
};
inline constexpr unsigned has_usual = has_rel | has_limit | has_n_subinter;

template <class Real>
struct IntOptions {
  Real err_abs, err_rel;
  long rule = 2, max_subinter = 500, max_moments = 21, max_cycles = 50;
  Real *err_est = nullptr, *err_list = nullptr;
  long *n_subinter = nullptr, *n_evals = nullptr, *n_cycles = nullptr, *err_order = nullptr;
  Real (*with_data)(Real, void*) = nullptr;
  void* data = nullptr;
};

template <class Real>
IntOptions<Real> default_options() {
  constexpr bool single = sizeof(Real) == sizeof(float);
  constexpr Real root = single ? Real(0x1.6a09e667f3bcdp-12) : Real(0x1p-26);  // square root of the machine epsilon
  return {.err_abs = root, .err_rel = root};
}

// Whether the code is an option of a member with the options `has`.
inline bool option_known(int code, unsigned has) {
  switch (code) {
    case ZENT_ERR_ABS:
    case ZENT_ERR_ABS_ADR:
    case ZENT_ERR_EST:
    case ZENT_FCN_W_DATA:
      return true;
    case ZENT_ERR_REL:
    case ZENT_ERR_REL_ADR:
      return (has & has_rel) != 0;
    case ZENT_MAX_SUBINTER:
    case ZENT_N_EVALS:
      return (has & has_limit) != 0;
    case ZENT_N_SUBINTER:
      return (has & has_n_subinter) != 0;
    case ZENT_RULE:
      return (has & has_rule) != 0;
    case ZENT_ERR_LIST:
    case ZENT_ERR_ORDER:
      return (has & has_lists) != 0;
    case ZENT_MAX_MOMENTS:
      return (has & has_moments) != 0;
    case ZENT_MAX_CYCLES:
    case ZENT_N_CYCLES:
      return (has & has_cycles) != 0;
    default:
      return false;
  }
}

template <class Real>
void read_option(Options& options, int code, IntOptions<Real>& o) {
  switch (code) {
    case ZENT_ERR_ABS:
      o.err_abs = options.real<Real>();
      break;
    case ZENT_ERR_ABS_ADR:
      o.err_abs = *options.pointer<Real>();
      break;
    case ZENT_ERR_REL:
      o.err_rel = options.real<Real>();
      break;
    case ZENT_ERR_REL_ADR:
      o.err_rel = *options.pointer<Real>();
      break;
    case ZENT_RULE:
      o.rule = options.integer();
      break;
    case ZENT_ERR_EST:
      o.err_est = options.pointer<Real>();
      break;
    case ZENT_MAX_SUBINTER:
      o.max_subinter = options.integer();
      break;
    case ZENT_N_SUBINTER:
      o.n_subinter = options.pointer<long>();
      break;
    case ZENT_N_EVALS:
      o.n_evals = options.pointer<long>();
      break;
    case ZENT_ERR_LIST:
      o.err_list = options.pointer<Real>();
      break;
    case ZENT_ERR_ORDER:
      o.err_order = options.pointer<long>();
      break;
    case ZENT_MAX_MOMENTS:
      o.max_moments = options.integer();
      break;
    case ZENT_MAX_CYCLES:
      o.max_cycles = options.integer();
      break;
    case ZENT_N_CYCLES:
      o.n_cycles = options.pointer<long>();
      break;
    default:
      o.with_data = options.function<Real (*)(Real, void*)>();
      o.data = options.pointer<void>();
      break;
  }
}

template <class Half, class Real>
IntOptions<Real> read_options(Options& options, unsigned has) {
  IntOptions<Real> o = default_options<Real>();
  while (const int code = options.code()) {
    if (option_known(code, has)) {
      read_option(options, code, o);
    } else if (!options.unknown<Half>(code)) {
      break;
    }
  }
  return o;
}

template <class Real>
constexpr double as_double(Real x) {
  return static_cast<double>(x);
}

// The checks before memory is asked for. Checks go on after a failed one; the last error stands.
template <class Half, class Real>
void check_entry(Real (*fcn)(Real), const IntOptions<Real>& o, bool limit = true) {
  if (limit && o.max_subinter < 1) raise<Half>(5, MATH_MAX_SUBINTER_SMALL, {.i = {o.max_subinter}});
  if (fcn == nullptr && o.with_data == nullptr) raise<Half>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"fcn"}});
}

// Tolerances that are not numbers are refused like negative ones.
template <class Half, class Real>
void check_tolerances(const IntOptions<Real>& o) {
  if (!(o.err_abs >= 0)) raise<Half>(5, MATH_ERR_ABS_SMALL, {.r = {as_double(o.err_abs)}});
  if (!(o.err_rel >= 0)) raise<Half>(5, MATH_ERR_REL_SMALL, {.r = {as_double(o.err_rel)}});
  if (o.err_abs == 0 && o.err_rel == 0) raise<Half>(5, MATH_ERR_TOL_ZERO);
}
template <class Half, class Real>
void check_relative(const IntOptions<Real>& o) {
  if (o.err_rel >= 1) raise<Half>(5, MATH_ERR_REL_BIG, {.r = {as_double(o.err_rel)}});
}

template <class Half, class Real>
Integrand<Half, Real> integrand_of(Real (*fcn)(Real), const IntOptions<Real>& o) {
  return user_integrand<Half>(fcn, o.with_data, o.data);
}

// The lists of the call, with room for at least `least` intervals.
template <class Half, class Real>
bool make_lists(Subintervals<Real>& s, const IntOptions<Real>& o, long least = 1) {
  if (allocate<Half>(s, o.max_subinter, o.max_subinter < least ? least : o.max_subinter)) return true;
  raise_out_of_memory<Half>({o.max_subinter}, {"max_subinter"});
  return false;
}

template <class Half, class Real>
void raise_bad_point(Real left, Real right) {
  raise<Half>(3, MATH_PRECISION_DEGRADATION, {.r = {as_double(left), as_double(right)}});
}

// The ending as an error. An error of the user's function goes before.
template <class Half, class Real>
void report_ending(const Outcome<Real>& outcome, const IntOptions<Real>& o, const Subintervals<Real>& s, long limit_type) {
  if (fatal_stands<Half>()) return;
  switch (outcome.ier) {
    case too_many_intervals:
      raise<Half>(limit_type, MATH_MAX_SUBINTERVALS, {.i = {o.max_subinter}});
      break;
    case roundoff:
      raise<Half>(3, MATH_ROUNDOFF_CONTAMINATION, {.r = {as_double(o.err_abs), as_double(o.err_rel)}});
      break;
    case bad_point:
      raise_bad_point<Half>(s.alist[s.last - 1], s.blist[s.last - 1]);
      break;
    case extrapolation_roundoff:
      raise<Half>(3, MATH_EXTRAPOLATION_ROUNDOFF, {.r = {as_double(o.err_abs), as_double(o.err_rel)}});
      break;
    case divergent:
      raise<Half>(4, MATH_DIVERGENT);
      break;
    default:
      break;
  }
}

// Orders what the loop no longer could reach: iord then lists all intervals by falling error. Uses rlist. Past the half of the
// limit as many places are right as bisections were left, and one more.
template <class Real>
void complete_order(Subintervals<Real>& s) {
  if (s.last <= s.limit / 2 + 2) return;
  long kept = s.limit + 1 - s.last;
  for (long k = 0; k < s.last; ++k) s.rlist[k] = 0;
  for (long k = 0; k < kept; ++k) s.rlist[s.iord[k] - 1] = 1;
  const long first = kept;
  for (long k = 1; k <= s.last; ++k) {
    if (s.rlist[k - 1] == 0) s.iord[kept++] = k;
  }
  for (long gap = (s.last - first) / 2; gap > 0; gap /= 2) {
    for (long i = first + gap; i < s.last; ++i) {
      const long moved = s.iord[i];
      long j = i;
      for (; j >= first + gap && s.error(s.iord[j - gap]) < s.error(moved); j -= gap) s.iord[j] = s.iord[j - gap];
      s.iord[j] = moved;
    }
  }
}

template <class Real>
void write_outputs(const Outcome<Real>& outcome, const IntOptions<Real>& o, Subintervals<Real>& s) {
  if (o.err_est != nullptr) *o.err_est = outcome.abserr;
  if (o.n_evals != nullptr) *o.n_evals = outcome.neval;
  if (o.n_subinter != nullptr) *o.n_subinter = outcome.last;
  const long n = outcome.last < o.max_subinter ? outcome.last : o.max_subinter;
  if (o.err_list != nullptr) {
    for (long k = 0; k < n; ++k) o.err_list[k] = s.elist[k];
  }
  if (o.err_order != nullptr && n > 0) {
    complete_order(s);
    for (long k = 0; k < n; ++k) o.err_order[k] = s.iord[k];
  }
}

template <class Half, class Real>
Real conclude(Real result) {
  return fatal_stands<Half>() ? Machine<Real>::not_a_number : result;
}

// The end of a worker whose endings follow the common table.
template <class Half, class Real>
Real finish(const Outcome<Real>& outcome, const IntOptions<Real>& o, Subintervals<Real>& s, long limit_type = 5) {
  write_outputs(outcome, o, s);
  report_ending<Half>(outcome, o, s, limit_type);
  return conclude<Half>(outcome.result);
}

// The adaptive integrator without extrapolation.
template <class Half, class Real>
Real l_q2ag(const Integrand<Half, Real>& f, Real a, Real b, const IntOptions<Real>& o, Subintervals<Real>& s) {
  if (o.rule < 1 || o.rule > 6) raise<Half>(5, MATH_RULE_SMALL, {.i = {o.rule}});
  check_tolerances<Half>(o);
  check_relative<Half>(o);
  if (failed<Half>()) return Machine<Real>::not_a_number;
  return finish<Half>(l_q3ag(f, a, b, o.err_abs, o.err_rel, o.rule, s), o, s, 4);
}

template <class Half, class Real>
Real l_int_fcn(Real (*fcn)(Real), Real a, Real b, const IntOptions<Real>& o) {
  Subintervals<Real> s;
  check_entry<Half>(fcn, o);
  if (failed<Half>() || !make_lists<Half>(s, o)) return Machine<Real>::not_a_number;
  return l_q2ag(integrand_of<Half>(fcn, o), a, b, o, s);
}

// Infinite ranges. inf: -1, 1 or 2; anything else is an interval code that was not known.
template <class Half, class Real>
Real l_q2agi(const Integrand<Half, Real>& f, Real bound, long inf, long interval, const IntOptions<Real>& o,
             Subintervals<Real>& s) {
  if (inf != -1 && inf != 1 && inf != 2) raise<Half>(5, MATH_INTERVAL_BOUNDS, {.i = {interval}});
  check_tolerances<Half>(o);
  check_relative<Half>(o);
  if (failed<Half>()) return Machine<Real>::not_a_number;
  const Outcome<Real> outcome = l_q3agi(f, bound, inf, o.err_abs, o.err_rel, s);
  write_outputs(outcome, o, s);
  if (outcome.ier != bad_point) {
    report_ending<Half>(outcome, o, s, 5);
  } else if (!fatal_stands<Half>()) {  // the subinterval in x, and its mirror image
    const Real origin = inf == 2 ? Real(0) : bound, direction = inf < 0 ? Real(-1) : Real(1);
    const double p = as_double(origin + direction * ((1 - s.left(s.last)) / s.left(s.last)));
    const double q = as_double(origin + direction * ((1 - s.right(s.last)) / s.right(s.last)));
    const double low = p < q ? p : q, high = p < q ? q : p;
    if (inf == 2) {
      raise<Half>(3, MATH_PRECISION_DEGRADATION, {.r = {low, high, -high, -low}});
    } else {
      raise<Half>(3, MATH_PRECISION_DEGRADATION, {.r = {low, high}});
    }
  }
  return conclude<Half>(outcome.result);
}

template <class Half, class Real>
Real l_int_fcn_inf(Real (*fcn)(Real), Real bound, long interval, const IntOptions<Real>& o) {
  Subintervals<Real> s;
  check_entry<Half>(fcn, o);
  if (failed<Half>() || !make_lists<Half>(s, o)) return Machine<Real>::not_a_number;
  const long inf = interval == 5 ? -1 : interval == 6 ? 1 : interval == 7 ? 2 : 0;
  return l_q2agi(integrand_of<Half>(fcn, o), bound, inf, interval, o, s);
}

// Break points.
template <class Half, class Real>
Real l_q2agp(const Integrand<Half, Real>& f, Real a, Real b, long npoints, const Real* points, const IntOptions<Real>& o,
             const BreakPoints<Real>& work, Subintervals<Real>& s) {
  if (npoints < 0) raise<Half>(5, MATH_NUM_BREAK_POINTS, {.i = {npoints}, .l = {"npts"}});
  check_tolerances<Half>(o);
  check_relative<Half>(o);
  if (failed<Half>()) return Machine<Real>::not_a_number;
  return finish<Half>(l_q3agp(f, a, b, npoints, points, o.err_abs, o.err_rel, work, s), o, s);
}

template <class Half, class Real>
Real l_int_fcn_sing_pts(Real (*fcn)(Real), Real a, Real b, long npoints, const Real* points, const IntOptions<Real>& o) {
  check_entry<Half>(fcn, o);
  if (points == nullptr) raise<Half>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"points"}});
  if (npoints < 0) raise<Half>(5, MATH_NUM_BREAK_POINTS, {.i = {npoints}, .l = {"npoints"}});
  if (failed<Half>()) return Machine<Real>::not_a_number;
  Subintervals<Real> s;
  if (npoints > o.max_subinter) {  // no list could hold them: the loop would refuse, so nothing is made for it
    BreakPoints<Real> none{};
    s = {};
    s.limit = o.max_subinter;
    return l_q2agp(integrand_of<Half>(fcn, o), a, b, npoints, points, o, none, s);
  }
  const long room = o.max_subinter > npoints ? o.max_subinter : npoints + 1;
  if (!make_lists<Half>(s, o, room)) return Machine<Real>::not_a_number;
  const BreakPoints<Real> work{scratch<Half, Real>(npoints + 2), scratch<Half, long>(room), scratch<Half, long>(npoints + 1)};
  if (work.pts == nullptr || work.level == nullptr || work.ndin == nullptr) {
    raise_out_of_memory<Half>({o.max_subinter}, {"max_subinter"});
    return Machine<Real>::not_a_number;
  }
  return l_q2agp(integrand_of<Half>(fcn, o), a, b, npoints, points, o, work, s);
}

}  // namespace zent::quadrature
