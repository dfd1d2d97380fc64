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

// The values of f on either side of the centre, kept from rule to rule, and the weights of the rule in use.
template <class Real>
struct NestedValues {
  Real centre, left[43], right[43], sum[43], weight[43];
  int count;
  Real rule;  // the last one, without the half length

  template <class F>
  void extend(const F& f, Real middle, Real h, const Real* nodes, int n) {
    f.begin();
    for (int j = count; j < count + n; ++j) {
      left[j] = f(middle - h * nodes[j - count]);
      right[j] = f(middle + h * nodes[j - count]);
    }
    f.end();
    for (int j = count; j < count + n; ++j) sum[j] = left[j] + right[j];
    count += n;
  }

  Real weigh(Real centre_weight) const {
    return centre_weight * centre + strand_sum<Real>(count, [this](int j) { return weight[j] * sum[j]; });
  }

  // The rule with `known` weights for the older nodes and `fresh` ones for the newer nodes and the centre, its error being the
  // distance from the rule before it.
  Estimate<Real> apply(const Real* known, int n_known, const Real* fresh, Real h) {
    for (int j = 0; j < n_known; ++j) weight[j] = known[j];
    for (int j = n_known; j < count; ++j) weight[j] = fresh[j - n_known];
    const Real middle = fresh[count - n_known], before = rule;
    rule = weigh(middle);
    const Real absolute = middle * std::fabs(centre) + strand_sum<Real>(count, [this](int j) {
                            return weight[j] * (std::fabs(left[j]) + std::fabs(right[j]));
                          });
    const Real mean = rule / 2;
    const Real variation = middle * std::fabs(centre - mean) + strand_sum<Real>(count, [this, mean](int j) {
                             return weight[j] * (std::fabs(left[j] - mean) + std::fabs(right[j] - mean));
                           });
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
  v.rule = strand_sum<Real, 5>([&](int j) { return T::w10[j] * v.sum[j]; });
  v.extend(f, centre, h, T::x2, 5);
  e = v.apply(T::w21a, 5, T::w21b, h);
  if (reached()) return {e.result, e.abserr, 21, true};
  if (f.given_up()) return {e.result, e.abserr, 21, false};

  v.extend(f, centre, h, T::x3, 11);
  e = v.apply(T::w43a, 10, T::w43b, h);
  if (reached()) return {e.result, e.abserr, 43, true};
  if (f.given_up()) return {e.result, e.abserr, 43, false};

  v.extend(f, centre, h, T::x4, 22);
  e = v.apply(T::w87a, 21, T::w87b, h);
  return {e.result, e.abserr, 87, reached()};
}

}  // namespace zent::quadrature
