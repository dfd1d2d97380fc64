// Wynn's epsilon algorithm (1956) over the sequence of areas, and the adaptive loop that feeds it: intervals that are still large
// are halved first, so that each area belongs to one more level around a singularity.
#pragma once

#include "math/quadrature/adaptive.hpp"

namespace zent::quadrature {

inline constexpr long epsilon_limit = 50;
inline constexpr long epsilon_table = epsilon_limit + 2;

// Takes the n entries of the table, the last of which is new, to the next diagonal. n may fall: the part of the table that has
// become irregular, or is too long, is dropped. res3la holds the last three results of nres calls.
template <class Real>
void l_q4awo(long* n, Real* epstab, Real* result, Real* abserr, Real* res3la, long* nres) {
  using M = Machine<Real>;
  const auto entry = [epstab](long k) -> Real& { return epstab[k - 1]; };
  const long count = *n;
  ++*nres;
  *abserr = M::largest;
  *result = entry(count);
  const auto finish = [&] {
    if (*nres < 4) res3la[*nres - 1] = *result;  // whichever way they came, later errors are distances from them
    *abserr = std::fmax(*abserr, 5 * M::epsilon * std::fabs(*result));
  };
  if (count < 3) return finish();
  const Real newest = entry(count + 2) = entry(count);
  entry(count) = M::largest;
  const long elements = (count - 1) / 2;
  long k = count;
  for (long i = 1; i <= elements; ++i, k -= 2) {
    const Real e0 = entry(k - 2), e1 = entry(k - 1), e2 = entry(k + 2), e3 = entry(k);
    const auto near = [](Real x, Real y, Real distance) {
      return distance <= std::fmax(std::fabs(x), std::fabs(y)) * M::epsilon;
    };
    const Real delta2 = std::fabs(e2 - e1), delta3 = std::fabs(e1 - e0);
    const bool near2 = near(e2, e1, delta2), near3 = near(e1, e0, delta3);
    if (near2 && near3) {  // e0, e1 and e2 agree: converged
      *result = e2;
      *abserr = delta2 + delta3;
      entry(count) = newest;  // what follows adds to it
      if (count >= epsilon_limit) {
        for (long j = 3; j <= count; ++j) entry(j - 2) = entry(j);
        *n = count - 2;
      }
      return finish();
    }
    entry(k) = e1;
    if (near(e1, e3, std::fabs(e1 - e3)) || near2 || near3) {
      *n = 2 * i - 1;
      break;
    }
    const Real ss = 1 / (e1 - e3) + 1 / (e2 - e1) - 1 / (e1 - e0);
    if (std::fabs(ss * e1) <= Real(1e-4)) {
      *n = 2 * i - 1;
      break;
    }
    const Real res = e1 + 1 / ss;
    entry(k) = res;
    const Real error = std::fabs(res - e2) + delta2 + delta3;
    if (error <= *abserr) {
      *abserr = error;
      *result = res;
    }
  }
  if (*n == epsilon_limit) *n = 2 * (epsilon_limit / 2) - 1;
  for (long i = count % 2 != 0 ? 1 : 2, moved = 0; moved <= elements; ++moved, i += 2) entry(i) = entry(i + 2);
  if (*n != count) {
    for (long i = 1; i <= *n; ++i) entry(i) = entry(count - *n + i);
  }
  if (*nres < 4) {
    *abserr = M::largest;
  } else {
    *abserr = std::fabs(*result - res3la[2]) + std::fabs(*result - res3la[1]) + std::fabs(*result - res3la[0]);
    res3la[0] = res3la[1];
    res3la[1] = res3la[2];
    res3la[2] = *result;
  }
  finish();
}

// The state of the loop beyond the list of intervals.
template <class Real>
struct Extrapolation {
  Real table[epsilon_table], last_three[3];
  long count, calls = 0;  // entries of the table; runs of the algorithm
  Real result, abserr = Machine<Real>::largest;
  Real large_error = 0, wanted = 0;  // error over the large intervals, and the tolerance it must fall below
  Real correction = 0;
  int since_better = 0;
  int before = 0, during = 0, growing = 0;  // signs of rounding before and while extrapolating
  bool active = false, given_up = false, unreliable = false;
  bool one_signed;

  Extrapolation(const Estimate<Real>& whole, long entries) : count(entries), result(whole.result) {
    table[0] = whole.result;
    one_signed = !(std::fabs(whole.result) < (1 - 50 * Machine<Real>::epsilon) * whole.resabs);
  }

  void watch(const Halves<Real>& h, Subintervals<Real>& s) {
    if (!h.estimated()) return;
    if (s.stagnates(h, true)) ++(active ? during : before);
    growing += s.grows(h);
  }
  long ending(const Subintervals<Real>& s) {
    long ier = reached;
    if (before + during >= 10 || growing >= 20) ier = roundoff;
    if (during >= 5) unreliable = true;
    if (s.last == s.limit) ier = too_many_intervals;
    return ier;
  }

  // One more area. True when the result stands, or when the table stays as it is although it looks good.
  bool extrapolate(const Subintervals<Real>& s, Real err_abs, Real err_rel, long& ier) {
    table[count++] = s.area;
    if (count < 3) return false;
    Real value, error;
    l_q4awo(&count, table, &value, &error, last_three, &calls);
    ++since_better;
    if (since_better > 5 && abserr < Real(1e-3) * s.errsum && s.errsum <= Machine<Real>::largest) ier = extrapolation_roundoff;
    if (error < abserr) {
      since_better = 0;
      abserr = error;
      result = value;
      correction = large_error;
      wanted = tolerance(err_abs, err_rel, result);
      if (abserr <= wanted) return true;
    }
    if (count == 1) given_up = true;
    return ier != reached;
  }

  // Extrapolated value or plain sum, and whether the integral looks divergent.
  void decide(Outcome<Real>& o, const Subintervals<Real>& s, Real resabs) {
    const auto plain = [&] {
      o.result = s.sum();
      o.abserr = s.errsum;
    };
    if (abserr == Machine<Real>::largest) return plain();
    o.result = result;
    if (o.ier != 0 || unreliable) {
      if (unreliable) abserr += correction;
      if (o.ier == 0) o.ier = roundoff;
      if (result != 0 && s.area != 0) {
        if (abserr / std::fabs(result) > s.errsum / std::fabs(s.area)) return plain();
      } else if (abserr > s.errsum) {
        return plain();
      } else if (s.area == 0) {
        o.abserr = abserr;
        return;
      }
    }
    o.abserr = abserr;
    if (!one_signed && std::fmax(std::fabs(result), std::fabs(s.area)) <= resabs * Real(0.01)) return;
    const Real ratio = result / s.area;
    if (ratio < Real(0.01) || ratio > 100 || s.errsum > std::fabs(s.area)) o.ier = divergent;
  }
};

// The loop from its first halving on. The policy says what a large interval is and how the rules are applied:
//   bool apply(s, h, o)              both rules; false when the interval is too short to try
//   void assign(s, h)                before the halves are stored
//   bool prepare(x, s, bound)        true while extrapolation has not begun
//   bool large(s, k), half_large(h)  an interval, the halves just made
//   void restart()                   the next level
//   interval_test                    whether the test for a short interval follows the rules
template <class F, class Policy, class Real = typename F::real>
void extrapolating_loop(const F& f, Policy& policy, Subintervals<Real>& s, Extrapolation<Real>& x, Real resabs, Real err_abs,
                        Real err_rel, Outcome<Real>& o) {
  bool plain = false;
  for (;;) {
    Halves<Real> h = s.halve();
    ++s.last;
    if (!policy.apply(s, h, o)) {
      o.ier = bad_point;
      --s.last;
      break;
    }
    const Real error_before = s.errmax;
    h.add_up();
    s.update_sums(h);
    x.watch(h, s);
    const Real bound = tolerance(err_abs, err_rel, s.area);
    o.ier = x.ending(s);
    if (Policy::interval_test && s.too_short(h)) o.ier = bad_point;
    policy.assign(s, h);
    s.store(h);
    plain = s.errsum <= bound;
    if (plain || o.ier != 0 || f.given_up()) break;
    if (policy.prepare(x, s, bound) || x.given_up) continue;
    x.large_error -= error_before;
    if (policy.half_large(h)) x.large_error += h.error;
    if (!x.active) {
      if (policy.large(s, s.maxerr)) continue;
      x.active = true;
      s.nrmax = 2;
    }
    if (!x.unreliable && x.large_error > x.wanted) {
      bool found = false;
      for (const long bottom = s.bottom(); s.nrmax <= bottom; ++s.nrmax) {
        s.maxerr = s.iord[s.nrmax - 1];
        s.errmax = s.error(s.maxerr);
        if ((found = policy.large(s, s.maxerr))) break;
      }
      if (found) continue;
    }
    if (x.extrapolate(s, err_abs, err_rel, o.ier)) break;
    s.restart();
    x.active = false;
    x.large_error = s.errsum;
    policy.restart();
  }
  o.last = s.last;
  if (plain) {
    o.result = s.sum();
    o.abserr = s.errsum;
  } else {
    x.decide(o, s, resabs);
  }
}

// The first application of an extrapolating integrator over the whole interval. True when it ends there.
template <class Real>
bool first_estimate(const Estimate<Real>& whole, Subintervals<Real>& s, Real a, Real b, Real err_abs, Real err_rel,
                    Outcome<Real>& o) {
  s.start(a, b, whole);
  o.result = whole.result;
  o.abserr = whole.abserr;
  o.last = 1;
  const Real bound = tolerance(err_abs, err_rel, o.result);
  if (o.abserr <= 100 * Machine<Real>::epsilon * whole.resabs && o.abserr > bound) o.ier = roundoff;
  if (s.limit == 1) o.ier = too_many_intervals;
  return o.ier != 0 || (o.abserr <= bound && o.abserr != whole.resasc) || o.abserr == 0;
}

// Intervals are large while they are wider than `small`.
template <class Real>
struct ByWidth {
  static constexpr bool interval_test = true;
  Real small;

  void assign(Subintervals<Real>&, const Halves<Real>&) {}
  bool large(const Subintervals<Real>& s, long k) const {
    return s.width(k) > small;
  }
  bool half_large(const Halves<Real>& h) const {
    return std::fabs(h.b1 - h.a1) > small;
  }
  void restart() {
    small /= 2;
  }
  bool prepare(Extrapolation<Real>& x, Subintervals<Real>& s, Real bound) {
    if (s.last > 2) return false;
    x.large_error = s.errsum;
    x.wanted = bound;
    x.table[1] = s.area;
    return true;
  }
};

}  // namespace zent::quadrature
