// The adaptive integrators with a weight function and without extrapolation: algebraic and logarithmic end-point factors, and
// principal values. Weights are folded into moments of Chebyshev polynomials.
#pragma once

#include "math/quadrature/adaptive.hpp"

namespace zent::quadrature {

enum AlgLogWeight : long { algebraic = 1, left_log = 2, right_log = 3, both_logs = 4 };

// Integrals of (1 + x)^alpha T_k and (1 - x)^beta T_k over [-1, 1], k = 0 to 24, and the same with the logarithm of half the
// factor. Those of an end without a factor are left without meaning.
template <class Real>
struct AlgLogMoments {
  Real ri[25], rj[25], rg[25], rh[25];
};

// The moments by their recurrence, and from them those with the logarithm. Each step waits for the one before it, so divisions
// are kept out of that and both ends are taken along as a pair.
template <class Real>
void l_q5aws(Real alpha, Real beta, long weight, AlgLogMoments<Real>& m) {
  typedef Real pair __attribute__((vector_size(2 * sizeof(Real))));
  const bool left = weight == left_log || weight == both_logs || alpha != 0;
  const bool right = weight == right_log || weight == both_logs || beta != 0;
  const pair exponent{alpha, beta}, p1 = exponent + 1, p2 = exponent + 2;
  const auto top_of = [](bool asked, Real power) { return asked ? std::pow(Real(2), power) : 0; };
  const pair top{top_of(left, p1[0]), top_of(right, p1[1])};
  const auto store = [&m](int k, pair r, pair g) {
    const Real turn = k % 2 != 0 ? Real(-1) : Real(1);
    m.ri[k] = r[0];
    m.rj[k] = turn * r[1];
    m.rg[k] = g[0];
    m.rh[k] = turn * g[1];
  };
  pair r = top / p1, g = -r / p1;
  store(0, r, g);
  r = r * exponent / p2;
  g = -(top + top) / (p2 * p2) - g;
  store(1, r, g);
  for (int k = 2; k < 25; ++k) {
    const Real n = static_cast<Real>(k);
    const pair c = n * (n - p2), inverse = 1 / ((n - 1) * (n + p1)), next = -(top + c * r) * inverse;
    g = -(c * g - (n * r - (n - 1) * next)) * inverse;
    r = next;
    store(k, r, g);
  }
}

// Most integrands have no power at one of their ends.
template <class Real>
inline Real power(Real distance, Real exponent) {
  return exponent == 0 ? Real(1) : std::pow(distance, exponent);
}

// The whole weight: p1 to p4 are a, b, alpha and beta.
template <class Real>
Real l_q6aws(Real x, Real a, Real b, Real alpha, Real beta, long weight) {
  const Real left = x - a, right = b - x;
  Real w = power(left, alpha) * power(right, beta);
  if (weight == left_log || weight == both_logs) w *= std::log(left);
  if (weight == right_log || weight == both_logs) w *= std::log(right);
  return w;
}

template <class Real>
struct WeightedEstimate {
  Estimate<Real> e;
  long nev;
};

// A series of degree 24 and 12 against moments.
template <class Real>
struct SeriesSums {
  Real long_sum, short_sum;
  SeriesSums(const Real* cheb12, const Real* cheb24, const Real* moments)
      : long_sum(lane_sum<Real, 25>([=](auto at) { return at(cheb24) * at(moments); })),
        short_sum(lane_sum<Real, 13>([=](auto at) { return at(cheb12) * at(moments); })) {}
};

// A piece [bl, br] that touches the end at which the factor belongs to the moments; `value` is f times the factor of the other
// end.
template <class F, class Value, class Real = typename F::real>
Estimate<Real> end_piece(const F& f, Real bl, Real br, Real exponent, const Real* powers, const Real* logs, Value value) {
  Real values[25], cheb12[13], cheb24[25];
  chebyshev_values(f, bl, br, values, value);
  l_q7awo(values, cheb12, cheb24);
  const SeriesSums<Real> plain(cheb12, cheb24, powers);
  const Real factor = std::pow(Real(0.5) * (br - bl), exponent + 1);
  Estimate<Real> e{plain.long_sum, std::fabs(plain.long_sum - plain.short_sum), 0, Machine<Real>::largest};
  if (logs != nullptr) {  // log of the distance = log of the width + log of its part of the width
    const SeriesSums<Real> parts(cheb12, cheb24, logs);
    const Real width = std::log(br - bl);
    e.result = plain.long_sum * width + parts.long_sum;
    e.abserr = std::fabs((plain.long_sum - plain.short_sum) * width) + std::fabs(parts.long_sum - parts.short_sum);
  }
  e.result *= factor;
  e.abserr *= factor;
  return settled(e);
}

// The weight that an end of the interval gives at that distance.
template <class Real>
inline Real end_weight(Real distance, Real exponent, bool logarithm) {
  const Real factor = power(distance, exponent);
  return logarithm ? factor * std::log(distance) : factor;
}

template <class F, class Real = typename F::real>
WeightedEstimate<Real> l_q4aws(const F& f, Real a, Real b, Real bl, Real br, Real alpha, Real beta, long weight,
                               const AlgLogMoments<Real>& m) {
  const bool log_left = weight == left_log || weight == both_logs, log_right = weight == right_log || weight == both_logs;
  if (bl == a && (alpha != 0 || log_left)) {
    return {end_piece(f, bl, br, alpha, m.ri, log_left ? m.rg : nullptr,
                      [&](Real x) { return end_weight(b - x, beta, log_right) * f(x); }),
            25};
  }
  if (br == b && (beta != 0 || log_right)) {
    return {end_piece(f, bl, br, beta, m.rj, log_right ? m.rh : nullptr,
                      [&](Real x) { return end_weight(x - a, alpha, log_left) * f(x); }),
            25};
  }
  return {l_q8awo(
              f, [=](Real x) { return l_q6aws(x, a, b, alpha, beta, weight); }, bl, br),
          15};
}

// Algebraic and logarithmic factors at the ends. The first step always halves.
template <class F, class Real = typename F::real>
Outcome<Real> l_q3aws(const F& f, Real a, Real b, Real alpha, Real beta, long weight, Real err_abs, Real err_rel,
                      Subintervals<Real>& s) {
  Outcome<Real> o;
  if (s.limit < 2) {
    o.ier = too_many_intervals;
    return o;
  }
  AlgLogMoments<Real> m;
  l_q5aws(alpha, beta, weight, m);
  const auto apply = [&](Real bl, Real br) {
    const auto w = l_q4aws(f, a, b, bl, br, alpha, beta, weight, m);
    o.neval += w.nev;
    return w.e;
  };
  Halves<Real> h{};
  h.parent = 1;
  h.a1 = a;
  h.b1 = Real(0.5) * (a + b);
  h.b2 = b;
  h.left = apply(h.a1, h.b1);
  h.right = apply(h.b1, h.b2);
  h.add_up();
  s.last = 2;
  s.maxerr = s.nrmax = 1;
  s.area = h.area;
  s.errsum = h.error;
  s.store(h);
  Real bound = tolerance(err_abs, err_rel, s.area);
  if (s.limit == 2) o.ier = too_many_intervals;
  int stagnant = 0, growing = 0;
  bool enough = s.errsum <= bound;
  while (!enough && o.ier == 0 && !f.given_up()) {
    h = s.halve();
    ++s.last;
    h.left = apply(h.a1, h.b1);
    h.right = apply(h.b1, h.b2);
    h.add_up();
    s.update_sums(h);
    if (h.a1 != a && h.b2 != b && h.estimated()) {
      stagnant += s.stagnates(h, false);
      growing += s.grows(h);
    }
    bound = tolerance(err_abs, err_rel, s.area);
    enough = s.errsum <= bound;
    if (!enough) {
      if (stagnant >= 6 || growing >= 20) o.ier = roundoff;
      if (s.last == s.limit) o.ier = too_many_intervals;
      if (s.too_short(h)) o.ier = bad_point;
    }
    s.store(h);
  }
  o.result = s.last > 2 ? s.sum() : s.area;
  o.abserr = s.errsum;
  o.last = s.last;
  return o;
}

// What the recurrence of the moments of 1 / (x - c) takes away: -2 times the integral of T_{k-1}.
template <class Real>
struct PoleTerms {
  Real at[25];
  constexpr PoleTerms() : at() {
    for (int k = 3; k < 25; k += 2) at[k] = Real(4) / static_cast<Real>((k - 1) * (k - 1) - 1);
  }
};
template <class Real>
inline constexpr PoleTerms<Real> pole_terms;

template <class Real>
struct PoleWeight {  // l_q5awc
  Real c;
  Real operator()(Real x) const {
    return 1 / (x - c);
  }
};

// f(x) / (x - c) on [a, b]: near c by the moments of 1 / (x - c), else by 15 points. krul counts down with each use of the
// latter.
template <class F, class Real = typename F::real>
WeightedEstimate<Real> l_q4awc(const F& f, Real a, Real b, Real c, long& krul) {
  const Real cc = (2 * c - b - a) / (b - a);
  if (!(std::fabs(cc) < Real(1.1))) {
    --krul;
    const Estimate<Real> e = l_q8awo(f, PoleWeight<Real>{c}, a, b);
    if (e.resasc == e.abserr) ++krul;
    return {e, 15};
  }
  Real values[25], cheb12[13], cheb24[25], moments[25];
  chebyshev_values(f, a, b, values, [&f](Real x) { return f(x); });
  l_q7awo(values, cheb12, cheb24);
  moments[0] = std::log(std::fabs((1 - cc) / (1 + cc)));
  moments[1] = 2 + cc * moments[0];
  const Real twice = 2 * cc;
  for (int k = 2; k < 25; ++k) moments[k] = twice * moments[k - 1] - (moments[k - 2] + pole_terms<Real>.at[k]);
  const SeriesSums<Real> sums(cheb12, cheb24, moments);
  return {settled(Estimate<Real>{sums.long_sum, std::fabs(sums.long_sum - sums.short_sum), 0, Machine<Real>::largest}), 25};
}

// The principal value. An interval is halved away from c.
template <class F, class Real = typename F::real>
Outcome<Real> l_q3awc(const F& f, Real a, Real b, Real c, Real err_abs, Real err_rel, Subintervals<Real>& s) {
  Outcome<Real> o;
  const Real low = a > b ? b : a, high = a > b ? a : b, sign = a > b ? Real(-1) : Real(1);
  long krul = 1;
  const auto apply = [&](Real left, Real right) {
    const auto w = l_q4awc(f, left, right, c, krul);
    o.neval += w.nev;
    return w.e;
  };
  const Estimate<Real> whole = apply(low, high);
  s.start(low, high, whole);
  Real bound = tolerance(err_abs, err_rel, whole.result);
  o.result = sign * whole.result;
  o.abserr = whole.abserr;
  o.last = 1;
  if (s.limit == 1) o.ier = too_many_intervals;
  const bool enough_at_once = (low == high && o.abserr == 0) || o.abserr < std::fmin(Real(0.01) * std::fabs(whole.result), bound);
  if (enough_at_once || o.ier != 0 || f.given_up()) return o;
  int stagnant = 0, growing = 0;
  for (bool enough = false; !enough && o.ier == 0 && !f.given_up();) {
    Halves<Real> h = s.halve();
    ++s.last;
    if (h.a1 < c && c <= h.b1) {
      h.b1 = Real(0.5) * (c + h.b2);
    } else if (h.b1 < c && c < h.b2) {
      h.b1 = Real(0.5) * (h.a1 + c);
    }
    krul = 2;
    h.left = apply(h.a1, h.b1);
    h.right = apply(h.b1, h.b2);
    h.add_up();
    s.update_sums(h);
    if (krul == 0) {
      stagnant += s.stagnates(h, false);
      growing += s.grows(h);
    }
    bound = tolerance(err_abs, err_rel, s.area);
    enough = s.errsum <= bound;
    if (!enough) {
      if (stagnant >= 6 && growing > 20) o.ier = roundoff;
      if (s.last == s.limit) o.ier = too_many_intervals;
      if (s.too_short(h)) o.ier = bad_point;
    }
    s.store(h);
  }
  o.result = sign * s.sum();
  o.abserr = s.errsum;
  o.last = s.last;
  return o;
}

}  // namespace zent::quadrature
