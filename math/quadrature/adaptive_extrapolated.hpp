// The adaptive integrators with extrapolation: end-point singularities, infinite ranges, known break points.
#pragma once

#include "math/quadrature/extrapolation.hpp"

namespace zent::quadrature {

template <class F, class Real = typename F::real>
struct FinitePolicy : ByWidth<Real> {
  const F& f;
  FinitePolicy(const F& function, Real width) : ByWidth<Real>{width}, f(function) {}
  bool apply(Subintervals<Real>&, Halves<Real>& h, Outcome<Real>&) {
    h.left = l_kronrod<21>(f, h.a1, h.b1);
    h.right = l_kronrod<21>(f, h.b1, h.b2);
    return true;
  }
};

// [a, b] with 21 points.
template <class F, class Real = typename F::real>
Outcome<Real> l_q3ags(const F& f, Real a, Real b, Real err_abs, Real err_rel, Subintervals<Real>& s) {
  Outcome<Real> o;
  const Estimate<Real> whole = l_kronrod<21>(f, a, b);
  if (!first_estimate(whole, s, a, b, err_abs, err_rel, o) && !f.given_up()) {
    FinitePolicy<F> policy(f, Real(0.375) * std::fabs(b - a));
    Extrapolation<Real> x(whole, 2);
    extrapolating_loop(f, policy, s, x, whole.resabs, err_abs, err_rel, o);
  }
  o.neval = 42 * o.last - 21;
  return o;
}

// Its test for short intervals stands before the rules, from the third interval on: t near 0 is far out, where f may fail.
template <class F, class Real = typename F::real>
struct InfinitePolicy : ByWidth<Real> {
  static constexpr bool interval_test = false;
  const F& f;
  Real bound;
  long inf;
  InfinitePolicy(const F& function, Real end, long range) : ByWidth<Real>{Real(0.375)}, f(function), bound(end), inf(range) {}
  bool apply(Subintervals<Real>& s, Halves<Real>& h, Outcome<Real>&) {
    if (s.last > 2 && s.too_short(h)) return false;
    h.left = l_q4agi(f, bound, inf, h.a1, h.b1);
    h.right = l_q4agi(f, bound, inf, h.b1, h.b2);
    return true;
  }
};

// From minus infinity to `bound` (inf -1), from `bound` on (1), or everything (2), with 15 points in t.
template <class F, class Real = typename F::real>
Outcome<Real> l_q3agi(const F& f, Real bound, long inf, Real err_abs, Real err_rel, Subintervals<Real>& s) {
  Outcome<Real> o;
  if (inf == 2) bound = 0;
  const Estimate<Real> whole = l_q4agi(f, bound, inf, Real(0), Real(1));
  if (!first_estimate(whole, s, Real(0), Real(1), err_abs, err_rel, o) && !f.given_up()) {
    InfinitePolicy<F> policy(f, bound, inf);
    Extrapolation<Real> x(whole, 2);
    extrapolating_loop(f, policy, s, x, whole.resabs, err_abs, err_rel, o);
  }
  o.neval = (30 * o.last - 15) * (inf == 2 ? 2 : 1);
  return o;
}

// Intervals are large while they have been halved less often than the level asks.
template <class F, class Real = typename F::real>
struct BreakPolicy {
  static constexpr bool interval_test = true;
  const F& f;
  long* level;
  long current = 0, deepest = 1;

  bool apply(Subintervals<Real>&, Halves<Real>& h, Outcome<Real>& o) {
    current = level[h.parent - 1] + 1;
    h.left = l_kronrod<21>(f, h.a1, h.b1);
    h.right = l_kronrod<21>(f, h.b1, h.b2);
    o.neval += 42;
    return true;
  }
  void assign(Subintervals<Real>& s, const Halves<Real>& h) {
    level[h.parent - 1] = level[s.last - 1] = current;
  }
  bool prepare(Extrapolation<Real>&, Subintervals<Real>&, Real) {
    return false;
  }
  bool large(const Subintervals<Real>&, long k) const {
    return level[k - 1] + 1 <= deepest;
  }
  bool half_large(const Halves<Real>&) const {
    return current + 1 <= deepest;
  }
  void restart() {
    ++deepest;
  }
};

// What l_q3agp needs beyond the list: npoints + 2 points, room for as many levels and flags as the list has intervals.
template <class Real>
struct BreakPoints {
  Real* pts;
  long *level, *ndin;
};

// The ends and the break points in order; false when a point is not between the ends.
template <class Real>
bool sort_points(Real a, Real b, long npoints, const Real* points, Real* pts) {
  const Real low = a < b ? a : b, high = a < b ? b : a;
  pts[0] = low;
  for (long i = 0; i < npoints; ++i) {
    if (!(points[i] >= low && points[i] <= high)) return false;
    pts[i + 1] = points[i];
  }
  pts[npoints + 1] = high;
  for (long i = 0; i <= npoints; ++i) {
    for (long j = i + 1; j < npoints + 2; ++j) {
      if (pts[j] < pts[i]) {
        const Real t = pts[i];
        pts[i] = pts[j];
        pts[j] = t;
      }
    }
  }
  return pts[0] == low && pts[npoints + 1] == high;
}

// One interval for each gap between break points. The sum of the errors as the rules gave them; in the list, an error that is the
// variation itself is replaced by that sum.
template <class F, class Real = typename F::real>
Real first_pass(const F& f, long nint, const BreakPoints<Real>& work, Subintervals<Real>& s, Estimate<Real>& whole) {
  whole = {};
  for (long i = 1; i <= nint; ++i) {
    const Real a1 = work.pts[i - 1], b1 = work.pts[i];
    const Estimate<Real> e = l_kronrod<21>(f, a1, b1);
    whole.abserr += e.abserr;
    whole.result += e.result;
    whole.resabs += e.resabs;
    work.ndin[i - 1] = e.abserr == e.resasc && e.abserr != 0;
    work.level[i - 1] = 0;
    s.left(i) = a1;
    s.right(i) = b1;
    s.value(i) = e.result;
    s.error(i) = e.abserr;
    s.iord[i - 1] = i;
  }
  Real errsum = 0;
  for (long i = 1; i <= nint; ++i) {
    if (work.ndin[i - 1] != 0) s.error(i) = whole.abserr;
    errsum += s.error(i);
  }
  for (long i = 0; i + 1 < nint; ++i) {
    long k = i;
    for (long j = i + 1; j < nint; ++j) {
      if (!(s.error(s.iord[k]) > s.error(s.iord[j]))) k = j;
    }
    const long t = s.iord[k];
    s.iord[k] = s.iord[i];
    s.iord[i] = t;
  }
  return errsum;
}

// [a, b] with break points. An invalid set of points, or more of them than the limit allows, ends with `invalid` and 0.
template <class F, class Real = typename F::real>
Outcome<Real> l_q3agp(const F& f, Real a, Real b, long npoints, const Real* points, Real err_abs, Real err_rel,
                      const BreakPoints<Real>& work, Subintervals<Real>& s) {
  Outcome<Real> o;
  if (npoints < 0 || s.limit < npoints || !sort_points(a, b, npoints, points, work.pts)) {
    o.ier = invalid;
    return o;
  }
  const long nint = npoints + 1;
  Estimate<Real> whole;
  s.errsum = first_pass(f, nint, work, s, whole);
  s.last = o.last = nint;
  o.neval = 21 * nint;
  o.result = whole.result;
  o.abserr = whole.abserr;
  const Real bound = tolerance(err_abs, err_rel, o.result);
  if (o.abserr <= 100 * Machine<Real>::epsilon * whole.resabs && o.abserr > bound) o.ier = roundoff;
  if (s.limit < npoints + 2) o.ier = too_many_intervals;
  if (o.ier == 0 && !(o.abserr <= bound) && !f.given_up()) {
    s.area = o.result;
    s.restart();
    BreakPolicy<F> policy{f, work.level};
    Extrapolation<Real> x(whole, 1);
    x.large_error = s.errsum;
    x.wanted = bound;
    extrapolating_loop(f, policy, s, x, whole.resabs, err_abs, err_rel, o);
  }
  if (a > b) o.result = -o.result;
  return o;
}

}  // namespace zent::quadrature
