// The list of subintervals that all adaptive integrators keep, and the plain adaptive loop: always the interval with the largest
// error is halved. After Piessens, de Doncker-Kapenga, Ueberhuber and Kahaner (1983).
#pragma once

#include <cmath>

#include "math/quadrature/rules.hpp"
#include "runtime/scratch.hpp"

namespace zent::quadrature {

// How a loop ended, before it is turned into an error.
enum Ending : long {
  reached = 0,
  too_many_intervals = 1,
  roundoff = 2,
  bad_point = 3,
  extrapolation_roundoff = 4,
  divergent = 5,
  invalid = 6,
  bad_cycle = 7,
  too_many_cycles = 8,
  slow_extrapolation = 9,
};

template <class Real>
struct Outcome {
  Real result = 0, abserr = 0;
  long neval = 0, ier = 0, last = 0;
};

// Keeps `iord` so that the errors elist[iord[k]] fall, over the part of the list from which intervals can still be halved, and
// moves the place `nrmax` with the interval `maxerr`. Numbers are from 1 on. Position `last` holds the smaller half of the
// interval that was at maxerr, whose place now holds the larger one.
template <class Real>
void l_q10g(long limit, long last, long* maxerr, Real* errmax, const Real* elist, long* iord, long* nrmax) {
  const auto error = [elist](long k) { return elist[k - 1]; };
  const auto place = [iord](long k) -> long& { return iord[k - 1]; };
  if (last < 3) {
    place(1) = 1;
    if (limit > 1) place(2) = 2;
  } else {
    const Real large = error(*maxerr), small = error(last);
    for (; *nrmax > 1 && large > error(place(*nrmax - 1)); --*nrmax) place(*nrmax) = place(*nrmax - 1);
    const long bottom = last > limit / 2 + 2 ? limit + 3 - last : last;
    long k = *nrmax + 1;
    for (; k < bottom && large < error(place(k)); ++k) place(k - 1) = place(k);
    place(k - 1) = *maxerr;
    long j = bottom;  // from below, up to the interval just placed
    for (; j > k && small > error(place(j - 1)); --j) place(j) = place(j - 1);
    place(j) = last;
  }
  *maxerr = place(*nrmax);
  *errmax = error(*maxerr);
}

// The two halves of an interval, and what the rule gave on them.
template <class Real>
struct Halves {
  long parent;
  Real a1, b1, b2;
  Estimate<Real> left, right;
  Real area, error;

  void add_up() {
    area = left.result + right.result;
    error = left.abserr + right.abserr;
  }
  // Whether the estimates rest on a difference of two rules; where the error is the variation itself they say nothing.
  bool estimated() const {
    return left.resasc != left.abserr && right.resasc != right.abserr;
  }
};

template <class Real>
struct Subintervals {
  Real *alist, *blist, *rlist, *elist;
  long* iord;
  long limit;
  long last, maxerr, nrmax;
  Real errmax;
  Real area, errsum;                  // over all intervals
  Real largest_value, largest_error;  // that went from them since they were added up

  Real& left(long k) {
    return alist[k - 1];
  }
  Real& right(long k) {
    return blist[k - 1];
  }
  Real& value(long k) {
    return rlist[k - 1];
  }
  Real& error(long k) {
    return elist[k - 1];
  }
  Real width(long k) const {
    return std::fabs(blist[k - 1] - alist[k - 1]);
  }

  void start(Real a, Real b, const Estimate<Real>& whole) {
    left(1) = a;
    right(1) = b;
    value(1) = area = whole.result;
    error(1) = errsum = errmax = whole.abserr;
    largest_value = largest_error = 0;
    iord[0] = 1;
    last = maxerr = nrmax = 1;
  }

  Halves<Real> halve() {
    Halves<Real> h{};
    h.parent = maxerr;
    h.a1 = left(maxerr);
    h.b2 = right(maxerr);
    h.b1 = Real(0.5) * (h.a1 + h.b2);
    return h;
  }
  // The halves in place of their parent. Where a parent much larger than what is left went, now or since the sums were made, or
  // one that was not finite, they carry its rounding, so they are made anew.
  void update_sums(const Halves<Real>& h) {
    const Real before = std::fabs(value(h.parent));
    errsum += h.error - errmax;
    area += h.area - value(h.parent);
    if (before > largest_value) largest_value = before;
    if (errmax > largest_error) largest_error = errmax;
    constexpr Real small = sizeof(Real) == sizeof(float) ? Real(0x1p-12) : Real(0x1p-26);
    if (largest_error * small < errsum && largest_value * small < std::fabs(area) && std::fabs(area) <= Machine<Real>::largest) {
      return;
    }
    errsum = h.error;
    area = h.area;
    for (long k = 1; k < last; ++k) {
      if (k == h.parent) continue;
      errsum += error(k);
      area += value(k);
    }
    largest_error = largest_value = 0;
  }
  // The signs of rounding: the halves give the same area without a smaller error; the errors grow.
  bool stagnates(const Halves<Real>& h, bool equal_counts) {
    const Real change = std::fabs(value(h.parent) - h.area), bound = Real(1e-5) * std::fabs(h.area);
    return (equal_counts ? change <= bound : change < bound) && h.error >= Real(0.99) * errmax;
  }
  bool grows(const Halves<Real>& h) const {
    return last > 10 && h.error > errmax;
  }
  // The interval is as short as numbers around its midpoint allow.
  static bool too_short(const Halves<Real>& h, Real spacings = 1000, Real normals = 1000) {
    using M = Machine<Real>;
    return std::fmax(std::fabs(h.a1), std::fabs(h.b2)) <= (1 + spacings * M::epsilon) * (std::fabs(h.b1) + normals * M::smallest);
  }
  // The half with the larger error takes the place of its parent, the other goes to `last`; then the list is put in order.
  void store(const Halves<Real>& h) {
    const bool swap = h.right.abserr > h.left.abserr;
    const long l = swap ? last : h.parent, r = swap ? h.parent : last;
    left(l) = h.a1;
    right(l) = left(r) = h.b1;
    right(r) = h.b2;
    value(l) = h.left.result;
    value(r) = h.right.result;
    error(l) = h.left.abserr;
    error(r) = h.right.abserr;
    order();
  }
  void order() {
    l_q10g(limit, last, &maxerr, &errmax, elist, iord, &nrmax);
  }
  void restart() {
    maxerr = iord[0];
    errmax = error(maxerr);
    nrmax = 1;
  }
  // The last place of the list that is kept in order.
  long bottom() const {
    return last > limit / 2 + 2 ? limit + 3 - last : last;
  }
  Real sum() const {
    Real s = 0;
    for (long k = 0; k < last; ++k) s += rlist[k];
    return s;
  }
};

// One block for the five lists, and `extra` bytes behind elist. Null arrays when there is no memory.
template <class Half, class Real>
bool allocate(Subintervals<Real>& s, long limit, long room, long extra = 0) {
  static_assert(sizeof(long) % sizeof(Real) == 0);
  long bytes = 0;
  s = {};
  if (__builtin_mul_overflow(room, static_cast<long>(4 * sizeof(Real) + sizeof(long)), &bytes)) return false;
  if (__builtin_add_overflow(bytes, extra, &bytes)) return false;
  char* const block = scratch<Half, char>(bytes);
  if (block == nullptr) return false;
  s.iord = reinterpret_cast<long*>(block);
  s.alist = reinterpret_cast<Real*>(s.iord + room);
  s.blist = s.alist + room;
  s.rlist = s.blist + room;
  s.elist = s.rlist + room;
  s.limit = limit;
  return true;
}

// The plain loop with rule 1 to 6. Its test for a short interval is wider than that of the other loops, growing with the rule.
template <class F, class Real = typename F::real>
Outcome<Real> l_q3ag(const F& f, Real a, Real b, Real err_abs, Real err_rel, long rule, Subintervals<Real>& s) {
  using M = Machine<Real>;
  Outcome<Real> o;
  rule = rule < 1 ? 1 : rule > 6 ? 6 : rule;
  const auto evaluations = [rule](long n) { return rule == 1 ? 30 * n + 15 : (10 * rule + 1) * (2 * n + 1); };
  const Estimate<Real> whole = l_rule(f, a, b, rule);
  s.start(a, b, whole);
  o = {whole.result, whole.abserr, evaluations(0), reached, 1};
  Real bound = tolerance(err_abs, err_rel, o.result);
  if (o.abserr <= 50 * M::epsilon * whole.resabs && o.abserr > bound) o.ier = roundoff;
  if (s.limit == 1) o.ier = too_many_intervals;
  if (o.ier != 0 || (o.abserr <= bound && o.abserr != whole.resasc) || o.abserr == 0 || f.given_up()) return o;
  int stagnant = 0, growing = 0;
  while (o.ier == 0) {
    Halves<Real> h = s.halve();
    ++s.last;
    h.left = l_rule(f, h.a1, h.b1, rule);
    h.right = l_rule(f, h.b1, h.b2, rule);
    h.add_up();
    s.update_sums(h);
    if (h.estimated()) {
      stagnant += s.stagnates(h, true);
      growing += s.grows(h);
    }
    bound = tolerance(err_abs, err_rel, s.area);
    const bool enough = s.errsum <= bound;
    if (!enough) {
      if (stagnant >= 6 || growing >= 20) o.ier = roundoff;
      if (s.last == s.limit) o.ier = too_many_intervals;
      if (s.too_short(h, static_cast<Real>(1000 * rule), 10000)) o.ier = bad_point;
    }
    s.store(h);
    if (enough || f.given_up()) break;
  }
  o.result = s.sum();
  o.abserr = s.errsum;
  o.last = s.last;
  o.neval = evaluations(s.last - 1);
  return o;
}

}  // namespace zent::quadrature
