// f(x) cos(omega x) and f(x) sin(omega x): Chebyshev moments of the oscillation (Piessens and Branders 1975), the adaptive loop
// over a finite range, and the sum over cycles of a half line.
#pragma once

#include "math/quadrature/adaptive_extrapolated.hpp"

namespace zent::quadrature {

enum TrigWeight : long { cosine_weight = 1, sine_weight = 2 };

inline constexpr long moment_row = 25;  // moments of T_0 to T_24: cosine at even places, sine at odd ones

// One recurrence serves both kinds: with M_n the integral of T_n(x) times cos or sin of p x over [-1, 1],
//   p^2 (n - 1)(n - 2) M_{n+2} - 2 (n^2 - 4)(p^2 - 2 n^2 + 2) M_n + p^2 (n + 1)(n + 2) M_{n-2} = right side at n.
// Both are taken along in one loop, since each step of either waits for the one before it.
template <class Real>
struct MomentRecurrence {
  Real p, p2, s, c;  // the parameter, its square, its sine and cosine

  Real lower(Real n) const {
    return (n + 1) * (n + 2) * p2;
  }
  Real middle(Real n) const {
    return -2 * (n * n - 4) * (p2 + 2 - 2 * n * n);
  }
  Real upper(Real n) const {
    return (n - 1) * (n - 2) * p2;
  }
  Real right(Real n, bool cosine) const {
    return cosine ? 24 * p * s - (n * n - 4) * 8 * c : -24 * p * c - (n * n - 4) * 8 * s;
  }
  // M_n for n large against p, from the derivatives at the ends: four terms in 1 / n^2.
  Real far(Real n, bool cosine) const {
    const Real n2 = n * n;
    if (cosine) {
      const Real ps = p * s;
      return 2 * (((((210 * p2 - 1) * c - (105 * p2 - 63) * ps) / n2 - (1 - 15 * p2) * c + 15 * ps) / n2 - c + 3 * ps) / n2 - c) /
             n2;
    }
    const Real pc = p * c;
    return 2 * (((((105 * p2 - 63) * pc + (210 * p2 - 1) * s) / n2 + (15 * p2 - 1) * s - 15 * pc) / n2 - 3 * pc - s) / n2 - s) /
           n2;
  }
};

// Known are the moments of degrees up to 4; goes upwards in steps of 2, which is stable while the degree is below the parameter.
template <class Real>
void extend_forward(const MomentRecurrence<Real>& r, Real* m) {
  for (int n = 4; n <= 22; n += 2) {
    for (int k : {n, n - 1}) {
      const Real x = static_cast<Real>(k), inverse = 1 / r.upper(x);
      m[k + 2] = (r.right(x, k == n) - r.lower(x) * m[k - 2] - r.middle(x) * m[k]) * inverse;
    }
  }
}

// Tridiagonal equations for 25 moments from degree `first` on in steps of 2. Pivoting moves fill into a second upper diagonal.
template <class Real>
struct MomentEquations {
  static constexpr int equations = 25, end = equations - 1;
  Real diagonal[equations], upper[equations], second[equations], lower[equations], x[equations];

  // The moment before the first is known, the one behind the last is taken from afar.
  void set(const MomentRecurrence<Real>& r, int first, bool cosine, Real before) {
    for (int k = 0; k < equations; ++k) {
      const Real n = static_cast<Real>(first + 2 * k);
      lower[k] = r.lower(n);
      diagonal[k] = r.middle(n);
      upper[k] = r.upper(n);
      second[k] = 0;
      x[k] = r.right(n, cosine);
    }
    x[0] -= lower[0] * before;
    x[end] -= upper[end] * r.far(static_cast<Real>(first + 2 * equations), cosine);
    upper[end] = 0;
  }
  // Leaves row k divided by its pivot.
  void eliminate(int k) {
    if (std::fabs(lower[k + 1]) > std::fabs(diagonal[k])) {
      const Real d = diagonal[k], u = upper[k], y = x[k];
      diagonal[k] = lower[k + 1];
      upper[k] = diagonal[k + 1];
      second[k] = upper[k + 1];
      x[k] = x[k + 1];
      lower[k + 1] = d;
      diagonal[k + 1] = u;
      upper[k + 1] = 0;
      x[k + 1] = y;
    }
    const Real inverse = 1 / diagonal[k];
    upper[k] *= inverse;
    second[k] *= inverse;
    x[k] *= inverse;
    diagonal[k + 1] -= lower[k + 1] * upper[k];
    upper[k + 1] -= lower[k + 1] * second[k];
    x[k + 1] -= lower[k + 1] * x[k];
  }
  void substitute(int k) {
    if (k < end - 1) x[k] -= second[k] * x[k + 2];
    x[k] -= upper[k] * x[k + 1];
  }
};

// The same as boundary value problems.
template <class Real>
void extend_between(const MomentRecurrence<Real>& r, Real* m) {
  using E = MomentEquations<Real>;
  E cosines, sines;
  cosines.set(r, 6, true, m[4]);
  sines.set(r, 5, false, m[3]);
  for (int k = 0; k < E::end; ++k) {
    cosines.eliminate(k);
    sines.eliminate(k);
  }
  cosines.x[E::end] /= cosines.diagonal[E::end];
  sines.x[E::end] /= sines.diagonal[E::end];
  for (int k = E::end - 1; k >= 0; --k) {
    cosines.substitute(k);
    sines.substitute(k);
  }
  for (int k = 0; k < 10; ++k) {
    m[5 + 2 * k] = sines.x[k];
    m[6 + 2 * k] = cosines.x[k];
  }
}

// All 25 moments for |p| > 2.
template <class Real>
void oscillatory_moments(Real p, Real* m) {
  const MomentRecurrence<Real> r{p, p * p, std::sin(p), std::cos(p)};
  const Real p2 = r.p2, ps = r.s / p;
  m[0] = 2 * ps;
  m[1] = 2 * (r.s - p * r.c) / p2;
  m[2] = (8 * r.c + (2 * p2 - 8) * ps) / p2;
  m[3] = (18 - 48 / p2) * r.s / p2 + (48 / p2 - 2) * r.c / p;
  m[4] = (32 * (p2 - 12) * r.c + 2 * ((p2 - 80) * p2 + 192) * ps) / (p2 * p2);
  if (std::fabs(p) > 24) {
    extend_forward(r, m);
  } else {
    extend_between(r, m);
  }
}

// Moments by level of bisection: `stored` levels are kept, the last row is for all deeper ones.
template <class Real>
struct MomentTable {
  Real* chebmo;
  long rows, stored;
  long last_level = -1;  // of the row behind the stored ones

  const Real* row(Real p, long level, bool again) {
    if (level < stored) return chebmo + level * moment_row;
    Real* const m = chebmo + stored * moment_row;
    if (again && level == last_level) return m;  // rounding may have made the first half just too short for moments
    oscillatory_moments(p, m);
    if (stored < rows - 1) {
      ++stored;
    } else {
      last_level = level;
    }
    return m;
  }
};

template <class Real>
Real l_q6awo(Real x, Real omega, long weight) {
  return weight == cosine_weight ? std::cos(omega * x) : std::sin(omega * x);
}

// One interval at bisection level `level`; `again`: the other half of the bisection has just been done.
template <class F, class Real = typename F::real>
Estimate<Real> l_q5awo(const F& f, Real a, Real b, Real omega, long weight, long level, bool again, MomentTable<Real>& moments,
                       long& neval) {
  const Real centre = Real(0.5) * (a + b), h = Real(0.5) * (b - a), p = omega * h;
  if (std::fabs(p) <= 2) {
    neval += 15;
    return l_q8awo(
        f, [=](Real x) { return l_q6awo(x, omega, weight); }, a, b);
  }
  neval += 25;
  Real values[25], cheb12[13], cheb24[25];
  chebyshev_values(f, a, b, values, [&f](Real x) { return f(x); });
  l_q7awo(values, cheb12, cheb24);
  const Real* const m = moments.row(p, level, again);
  Real long_cos = 0, long_sin = 0, short_cos = 0, short_sin = 0, absolute = 0;
  for (int k = 0; k < 25; ++k) absolute += std::fabs(cheb24[k]);
  for (int k = 24; k >= 0; k -= 2) long_cos += cheb24[k] * m[k];
  for (int k = 23; k >= 0; k -= 2) long_sin += cheb24[k] * m[k];
  for (int k = 12; k >= 0; k -= 2) short_cos += cheb12[k] * m[k];
  for (int k = 11; k >= 0; k -= 2) short_sin += cheb12[k] * m[k];
  const Real along = h * std::cos(centre * omega), across = h * std::sin(centre * omega);
  const Real cos_error = long_cos - short_cos, sin_error = long_sin - short_sin;
  Estimate<Real> e{0, 0, std::fabs(h) * absolute, Machine<Real>::largest};
  if (weight == cosine_weight) {
    e.result = along * long_cos - across * long_sin;
    e.abserr = std::fabs(along * cos_error) + std::fabs(across * sin_error);
  } else {
    e.result = along * long_sin + across * long_cos;
    e.abserr = std::fabs(along * sin_error) + std::fabs(across * cos_error);
  }
  return settled(e);
}

// Extrapolation waits until the intervals are short against the oscillation.
template <class F, class Real = typename F::real>
struct OscillatingPolicy : ByWidth<Real> {
  const F& f;
  Real omega;
  long weight;
  MomentTable<Real>& moments;
  long* nnlog;
  bool short_enough = false;
  long level = 0;

  OscillatingPolicy(const F& function, Real width, Real frequency, long kind, MomentTable<Real>& table, long* levels)
      : ByWidth<Real>{width}, f(function), omega(frequency), weight(kind), moments(table), nnlog(levels) {}
  bool slow(Real width) const {
    return Real(0.25) * width * omega <= 2;
  }
  bool apply(Subintervals<Real>&, Halves<Real>& h, Outcome<Real>& o) {
    level = nnlog[h.parent - 1] + 1;
    h.left = l_q5awo(f, h.a1, h.b1, omega, weight, level, false, moments, o.neval);
    h.right = l_q5awo(f, h.b1, h.b2, omega, weight, level, true, moments, o.neval);
    return true;
  }
  void assign(Subintervals<Real>& s, const Halves<Real>& h) {
    nnlog[h.parent - 1] = nnlog[s.last - 1] = level;
  }
  bool prepare(Extrapolation<Real>& x, Subintervals<Real>& s, Real bound) {
    if (short_enough) {
      if (s.last > 2) return false;
      this->small /= 2;
      x.table[x.count++] = s.area;
    } else {
      const Real width = s.width(s.maxerr);
      if (width > this->small) return true;
      this->small /= 2;
      if (!slow(width)) return true;
      short_enough = true;
    }
    x.wanted = bound;
    x.large_error = s.errsum;
    return true;
  }
};

// f cos or f sin on [a, b]. Moments are kept in `moments` from call to call.
template <class F, class Real = typename F::real>
Outcome<Real> l_q3awo(const F& f, Real a, Real b, Real omega, long weight, Real err_abs, Real err_rel, MomentTable<Real>& moments,
                      long* nnlog, Subintervals<Real>& s) {
  Outcome<Real> o;
  const Real frequency = std::fabs(omega), length = std::fabs(b - a);
  const Estimate<Real> whole = l_q5awo(f, a, b, frequency, weight, 0, false, moments, o.neval);
  nnlog[0] = 0;
  if (!first_estimate(whole, s, a, b, err_abs, err_rel, o) && !f.given_up()) {
    OscillatingPolicy<F> policy(f, Real(0.75) * length, frequency, weight, moments, nnlog);
    const bool slow = Real(0.5) * length * frequency <= 2;
    policy.short_enough = slow || policy.slow(length);
    Extrapolation<Real> x(whole, slow ? 1 : 0);
    extrapolating_loop(f, policy, s, x, whole.resabs, err_abs, err_rel, o);
  }
  if (weight == sine_weight && omega < 0) o.result = -o.result;
  return o;
}

// The integral over [a, infinity) as the sum of its cycles, extrapolated. neval and the last cycle's list come back in `o` and
// `s`; o.last counts cycles.
template <class F, class Real = typename F::real>
Outcome<Real> l_q3awf(const F& f, Real a, Real omega, long weight, Real err_abs, long max_cycles, MomentTable<Real>& moments,
                      long* nnlog, Subintervals<Real>& s) {
  using M = Machine<Real>;
  Outcome<Real> o;
  const Real frequency = std::fabs(omega);
  const Real cycle = (2 * std::trunc(frequency) + 1) * Real(3.141592653589793) / frequency;
  constexpr Real p = Real(0.9), p1 = 1 - p;
  const Real base = err_abs > M::smallest / p1 ? err_abs * p1 : err_abs;
  Real eps = base, factor = 1, correction = 0, errsum = 0, drl = 0;
  Real psum[epsilon_table], last_three[3];
  long count = 0, before = 0, calls = 0;
  int since_better = 0;
  bool plain = false;
  Real c1 = a, c2 = a + cycle;
  for (long k = 1; k <= max_cycles; ++k, c1 = c2, c2 += cycle) {
    if (k == 1) moments.stored = 0;
    const Outcome<Real> part = l_q3awo(f, c1, c2, omega, weight, eps * factor, Real(0), moments, nnlog, s);
    o.last = k;
    o.neval += part.neval;
    factor *= p;
    errsum += part.abserr;
    drl = 50 * std::fabs(part.result);
    if (f.given_up()) return o;
    if ((plain = errsum + drl <= err_abs && k >= 6)) break;
    correction = std::fmax(correction, part.abserr);
    if (part.ier != 0) {
      eps = std::fmax(base, correction * p1);
      o.ier = bad_cycle;
    }
    if ((plain = o.ier == bad_cycle && errsum + drl <= 10 * correction && k >= 6)) break;
    psum[count] = k == 1 ? part.result : psum[before - 1] + part.result;
    ++count;
    if (k > 2) {
      if (k == max_cycles) o.ier = too_many_cycles;
      Real value, error;
      l_q4awo(&count, psum, &value, &error, last_three, &calls);
      ++since_better;
      if (since_better >= 15 && o.abserr <= Real(1e-3) * (errsum + drl)) o.ier = slow_extrapolation;
      if (error <= o.abserr || k == 3) {
        o.abserr = error;
        o.result = value;
        since_better = 0;
        if (o.abserr + 10 * correction <= err_abs || (o.abserr <= err_abs && 10 * correction >= err_abs)) break;
      }
      if (o.ier != 0 && o.ier != bad_cycle) break;
    }
    before = count;
  }
  const Real sum = psum[count - 1];
  if (!plain) {
    o.abserr += 10 * correction;
    if (o.ier == 0) return o;
    if (o.result != 0 && sum != 0) {
      plain = o.abserr / std::fabs(o.result) > (errsum + drl) / std::fabs(sum);
    } else {
      plain = o.abserr > errsum;
      if (!plain && sum == 0) return o;
    }
    if (!plain && o.ier != bad_cycle) o.abserr += drl;
  }
  if (plain) {
    o.result = sum;
    o.abserr = errsum + drl;
  }
  return o;
}

}  // namespace zent::quadrature
