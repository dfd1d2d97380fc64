// Nested rules of 10, 21, 43 and 87 points (Patterson 1968) for smooth functions.
#pragma once

#include "math/quadrature/rules.hpp"

namespace zent::quadrature {

template <class Real>
struct SmoothOutcome {
  Real result, abserr;
  long neval;
  bool reached;  // the tolerance
};

// The values of f at the centre of an interval of half length h and on either side of it, kept from rule to rule.
template <class Real>
struct NestedValues {
  Real middle, h, centre, left[43], right[43];
  int count;
  Real rule;  // the last one, without the half length

  template <class F>
  void extend(const F& f, const Real* nodes, int n) {
    f.begin();
    for (int j = 0; j < n; ++j) {
      left[count + j] = f(middle - h * nodes[j]);
      right[count + j] = f(middle + h * nodes[j]);
    }
    f.end();
    count += n;
  }

  // The sum over n pairs of values from place `first` on, each as term(at, left, right) makes it.
  template <int n, class Term>
  Real sum(const Real* weight, int first, Term term) const {
    const Real *l = left + first, *r = right + first;
    return lane_sum<Real, n>([=](auto at) { return at(weight) * term(at, at(l), at(r)); });
  }

  // The next rule: `known` weights for the older nodes and `fresh` ones for its own nodes and the centre, its error being the
  // distance from the rule before it. What the older values alone give is summed first, so that it is done beside the calls of f.
  template <int n_known, int n_fresh, class F>
  [[gnu::always_inline]] Estimate<Real> next(const F& f, const Real* nodes, const Real* known, const Real* fresh) {
    const auto plain = [](auto, auto l, auto r) { return l + r; };
    const auto size = [](auto at, auto l, auto r) { return at.absolute(l) + at.absolute(r); };
    const Real known_rule = sum<n_known>(known, 0, plain), known_absolute = sum<n_known>(known, 0, size);
    extend(f, nodes, n_fresh);
    const Real before = rule;
    rule = fresh[n_fresh] * centre + (known_rule + sum<n_fresh>(fresh, n_known, plain));
    const Real absolute = fresh[n_fresh] * std::fabs(centre) + (known_absolute + sum<n_fresh>(fresh, n_known, size));
    const Real mean = rule / 2;
    const auto distance = [mean](auto at, auto l, auto r) { return at.absolute(l - mean) + at.absolute(r - mean); };
    const Real variation =
        fresh[n_fresh] * std::fabs(centre - mean) + (sum<n_known>(known, 0, distance) + sum<n_fresh>(fresh, n_known, distance));
    const Real width = std::fabs(h);
    Estimate<Real> e{rule * h, std::fabs((rule - before) * h), absolute * width, variation * width};
    e.abserr = scaled_error(e.abserr, e.resabs, e.resasc);
    return e;
  }
};

template <class F, class Real = typename F::real>
[[gnu::noinline]] SmoothOutcome<Real> l_q3ng(const F& f, Real a, Real b, Real err_abs, Real err_rel) {
  using T = Patterson<Real>;
  NestedValues<Real> v;
  v.middle = Real(0.5) * (a + b);
  v.h = Real(0.5) * (b - a);
  v.count = 0;
  f.begin();
  v.centre = f(v.middle);
  f.end();
  Estimate<Real> e{};
  const auto reached = [&] { return e.abserr <= tolerance(err_abs, err_rel, e.result); };

  v.extend(f, T::x1, 5);
  v.rule = v.template sum<5>(T::w10, 0, [](auto, auto l, auto r) { return l + r; });
  e = v.template next<5, 5>(f, T::x2, T::w21a, T::w21b);
  if (reached()) return {e.result, e.abserr, 21, true};
  if (f.given_up()) return {e.result, e.abserr, 21, false};

  e = v.template next<10, 11>(f, T::x3, T::w43a, T::w43b);
  if (reached()) return {e.result, e.abserr, 43, true};
  if (f.given_up()) return {e.result, e.abserr, 43, false};

  e = v.template next<21, 22>(f, T::x4, T::w87a, T::w87b);
  return {e.result, e.abserr, 87, reached()};
}

}  // namespace zent::quadrature
