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

// The values of f at the centre and on either side of it, kept from rule to rule.
template <class Real>
struct NestedValues {
  Real centre, left[43], right[43];
  int count;
  Real rule;  // the last one, without the half length

  template <class F>
  void extend(const F& f, Real middle, Real h, const Real* nodes, int n) {
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

  // The rule with `known` weights for the older nodes and `fresh` ones for the newer nodes and the centre, its error being the
  // distance from the rule before it.
  template <int n_known, int n_fresh>
  Estimate<Real> apply(const Real* known, const Real* fresh, Real h) {
    const auto over = [&](Real at_centre, auto term) {
      return fresh[n_fresh] * at_centre + (sum<n_known>(known, 0, term) + sum<n_fresh>(fresh, n_known, term));
    };
    const Real before = rule;
    rule = over(centre, [](auto, auto l, auto r) { return l + r; });
    const Real absolute = over(std::fabs(centre), [](auto at, auto l, auto r) { return at.absolute(l) + at.absolute(r); });
    const Real mean = rule / 2;
    const Real variation =
        over(std::fabs(centre - mean), [mean](auto at, auto l, auto r) { return at.absolute(l - mean) + at.absolute(r - mean); });
    const Real width = std::fabs(h);
    Estimate<Real> e{rule * h, std::fabs((rule - before) * h), absolute * width, variation * width};
    e.abserr = scaled_error(e.abserr, e.resabs, e.resasc);
    return e;
  }
};

template <class F, class Real = typename F::real>
[[gnu::noinline]] SmoothOutcome<Real> l_q3ng(const F& f, Real a, Real b, Real err_abs, Real err_rel) {
  using T = Patterson<Real>;
  const Real centre = Real(0.5) * (a + b), h = Real(0.5) * (b - a);
  NestedValues<Real> v;
  v.count = 0;
  f.begin();
  v.centre = f(centre);
  f.end();
  Estimate<Real> e{};
  const auto reached = [&] { return e.abserr <= tolerance(err_abs, err_rel, e.result); };

  v.extend(f, centre, h, T::x1, 5);
  v.rule = v.template sum<5>(T::w10, 0, [](auto, auto l, auto r) { return l + r; });
  v.extend(f, centre, h, T::x2, 5);
  e = v.template apply<5, 5>(T::w21a, T::w21b, h);
  if (reached()) return {e.result, e.abserr, 21, true};
  if (f.given_up()) return {e.result, e.abserr, 21, false};

  v.extend(f, centre, h, T::x3, 11);
  e = v.template apply<10, 11>(T::w43a, T::w43b, h);
  if (reached()) return {e.result, e.abserr, 43, true};
  if (f.given_up()) return {e.result, e.abserr, 43, false};

  v.extend(f, centre, h, T::x4, 22);
  e = v.template apply<21, 22>(T::w87a, T::w87b, h);
  return {e.result, e.abserr, 87, reached()};
}

}  // namespace zent::quadrature
