// f(x) cos(omega x) and f(x) sin(omega x): Chebyshev moments of the oscillation (Piessens and Branders 1975), the adaptive loop
// over a finite range, and the sum over cycles of a half line.
#pragma once

#include "math/quadrature/adaptive_extrapolated.hpp"

namespace zent::quadrature {

enum TrigWeight : long { cosine_weight = 1, sine_weight = 2 };

inline constexpr long moment_row = 25;  // moments of T_0 to T_24: cosine at even places, sine at odd ones

// One recurrence serves both kinds: with M_n the integral of T_n(x) times cos or sin of p x over [-1, 1],
//   p^2 (n - 1)(n - 2) M_{n+2} - 2 (n^2 - 4)(p^2 - 2 n^2 + 2) M_n + p^2 (n + 1)(n + 2) M_{n-2} = right side at n.
// Here are its factors without p for the degrees from 3 on.
template <class Real>
struct MomentFactors {
  static constexpr int first = 3, last = 54, degrees = last - first + 1;
  Real upper[degrees], middle[degrees], square[degrees], lower[degrees], right[degrees];
  constexpr MomentFactors() : upper(), middle(), square(), lower(), right() {
    for (int at = 0; at < degrees; ++at) {
      const int n = first + at;
      upper[at] = static_cast<Real>((n - 1) * (n - 2));
      middle[at] = static_cast<Real>(-2 * (n * n - 4));
      square[at] = static_cast<Real>(2 * n * n);
      lower[at] = static_cast<Real>((n + 1) * (n + 2));
      right[at] = static_cast<Real>(8 * (n * n - 4));
    }
  }
};
template <class Real>
inline constexpr MomentFactors<Real> moment_factors;

// Both kinds are taken along together, since each step of either waits for the one before it: a pair belongs to an odd degree,
// where the sine has its moments, and to the even one above it, where the cosine has them.
template <class Real>
struct MomentRecurrence {
  typedef Real pair __attribute__((vector_size(2 * sizeof(Real))));
  struct Terms {
    pair upper, middle, lower, right;
  };
  Real p, p2, s, c;    // the parameter, its square, its sine and cosine
  pair fixed, rising;  // parts of the right side

  MomentRecurrence(Real parameter, Real sine, Real cosine)
      : p(parameter), p2(p * p), s(sine), c(cosine), fixed{-24 * p * c, 24 * p * s}, rising{s, c} {}

  static pair load(const Real* from) {
    pair v;
    std::memcpy(&v, from, sizeof v);
    return v;
  }
  // At the degrees n, odd, and n + 1.
  Terms at(int n) const {
    constexpr auto& f = moment_factors<Real>;
    const int k = n - f.first;
    return {load(f.upper + k) * p2, load(f.middle + k) * (p2 + 2 - load(f.square + k)), load(f.lower + k) * p2,
            fixed - load(f.right + k) * rising};
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
  using pair = typename MomentRecurrence<Real>::pair;
  pair before = r.load(m + 1), now = r.load(m + 3);
  for (int n = 3; n <= 21; n += 2) {
    const auto t = r.at(n);
    const pair next = (t.right - t.lower * before - t.middle * now) * (1 / t.upper);
    std::memcpy(m + n + 2, &next, sizeof next);
    before = now;
    now = next;
  }
}

// Tridiagonal equations for 25 moments of one kind, eliminated row by row as they come. Pivoting moves fill into a second upper
// diagonal.
template <class Real>
struct MomentEquations {
  static constexpr int equations = 25, end = equations - 1;
  struct Row {
    Real diagonal, upper, value;
  };
  Row row;                   // the next to be eliminated
  Real next = 0, after = 0;  // the two moments found last
  Real upper[equations], second[equations], x[equations];

  // Row k from the one below it, whose lower element is given.
  void eliminate(int k, Real lower, Row below) {
    Row top = row;
    Real fill = 0;
    if (std::fabs(lower) > std::fabs(row.diagonal)) {
      top = {lower, below.diagonal, below.value};
      fill = below.upper;
      below = {row.upper, 0, row.value};
      lower = row.diagonal;
    }
    const Real inverse = 1 / top.diagonal;
    upper[k] = top.upper * inverse;
    second[k] = fill * inverse;
    x[k] = top.value * inverse;
    row = {below.diagonal - lower * upper[k], below.upper - lower * second[k], below.value - lower * x[k]};
  }
  void finish() {
    x[end] = next = row.value / row.diagonal;
  }
  void substitute(int k) {
    x[k] = x[k] - second[k] * after - upper[k] * next;
    after = next;
    next = x[k];
  }
};

// The same as boundary value problems: the moments before the first are known, those behind the last are taken from afar.
template <class Real>
void extend_between(const MomentRecurrence<Real>& r, Real* m) {
  using E = MomentEquations<Real>;
  using pair = typename MomentRecurrence<Real>::pair;
  constexpr int first = 5, last = first + 2 * E::end;
  const pair behind{r.far(last + 2, false), r.far(last + 3, true)};
  auto t = r.at(first);
  t.right -= t.lower * r.load(m + first - 2);
  E sines, cosines;
  sines.row = {t.middle[0], t.upper[0], t.right[0]};
  cosines.row = {t.middle[1], t.upper[1], t.right[1]};
  for (int k = 0; k < E::end; ++k) {
    t = r.at(first + 2 * k + 2);
    if (k + 1 == E::end) {
      t.right -= t.upper * behind;
      t.upper = pair{};
    }
    sines.eliminate(k, t.lower[0], {t.middle[0], t.upper[0], t.right[0]});
    cosines.eliminate(k, t.lower[1], {t.middle[1], t.upper[1], t.right[1]});
  }
  sines.finish();
  cosines.finish();
  for (int k = E::end - 1; k >= 0; --k) {
    sines.substitute(k);
    cosines.substitute(k);
  }
  for (int k = 0; k < 10; ++k) {
    m[first + 2 * k] = sines.x[k];
    m[first + 2 * k + 1] = cosines.x[k];
  }
}

// All 25 moments for |p| > 2.
template <class Real>
void oscillatory_moments(Real p, Real* m) {
  const MomentRecurrence<Real> r(p, std::sin(p), std::cos(p));
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
  // What does not need f comes first, so that its long chains of operations run beside the first calls of f.
  const Real* const m = moments.row(p, level, again);
  const Real along = h * std::cos(centre * omega), across = h * std::sin(centre * omega);
  Real values[25], cheb12[13], cheb24[25];
  chebyshev_values(f, a, b, values, [&f](Real x) { return f(x); });
  l_q7awo(values, cheb12, cheb24);
  Real long_cos = 0, long_sin = 0, short_cos = 0, short_sin = 0;
  for (int k = 24; k >= 0; k -= 2) long_cos += cheb24[k] * m[k];
  for (int k = 23; k >= 0; k -= 2) long_sin += cheb24[k] * m[k];
  for (int k = 12; k >= 0; k -= 2) short_cos += cheb12[k] * m[k];
  for (int k = 11; k >= 0; k -= 2) short_sin += cheb12[k] * m[k];
  const Real cos_error = long_cos - short_cos, sin_error = long_sin - short_sin;
  const Real absolute = lane_sum<Real, 25>([&](auto at) { return at.absolute(at(cheb24)); });
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
