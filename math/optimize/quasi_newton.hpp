// Minimization of functions of many variables: BFGS on a Cholesky factor, with a line search that backtracks by parabolas and
// cubics and asks for enough change of the slope (Dennis and Schnabel 1983, algorithms A6.3.1mod, A7.2.1, A9.4.2).
#pragma once

#include <algorithm>
#include <cmath>
#include <utility>

#include "math/optimize/record.hpp"
#include "math/optimize/secant_update.hpp"
#include "math/optimize/user.hpp"
#include "runtime/kernels/fast.hpp"
#include "runtime/scratch.hpp"

namespace zent::optimize {

// What the line search tells.
enum class Search { success, stuck, little_change, false_convergence, out_of_calls };

template <class Half, class Real>
struct QuasiNewton {
  Objective<Half, Real> objective;
  Gradient<Half, Real> gradient;
  const Record<Real>* record;
  long n;
  const Real* xscale;
  Real *x = nullptr, *g = nullptr;                    // the point and its gradient
  Real *x_new = nullptr, *g_new = nullptr;            // a trial and its gradient
  Real *p = nullptr, *r = nullptr;                    // step, factor of the Hessian
  Real *t = nullptr, *u = nullptr, *g_low = nullptr;  // work
  Real f = 0, f_new = 0, rnoise = 0;
  Real slope = 0, length = 0;  // of f along p; scaled, of p
  bool central = false, long_step = false;
  long nfcn = 0, ngrad = 0, iter = 0;

  bool obtain() {
    Block<Half, Real> block;
    block.need(1, n, n);
    block.need(8, n);
    if (!block.obtain()) return false;
    r = block.take(n, n);
    for (Real** array : {&x, &g, &x_new, &g_new, &p, &t, &u, &g_low}) *array = block.take(n);
    return true;
  }
  bool analytic() const {
    return gradient.given();
  }

  Real value(Real* at) {
    ++nfcn;
    return ordered(objective(n, at));
  }
  // False when the gradient is not finite.
  bool slopes(Real* at, Real f_at, Real* out) {
    ++ngrad;
    if (analytic()) {
      gradient(n, at, out);
    } else if (central) {
      l_cdgrd(objective, n, at, xscale, f_at, rnoise, out);
    } else {
      l_fdgrd(objective, n, at, xscale, f_at, rnoise, out);
    }
    return all_finite(n, out);
  }
  Real steepness(const Real* at, Real f_at, const Real* g_at) const {
    return scaled_gradient(n, g_at, at, xscale, f_at, record->fscale);
  }

  void l_u9inf() {
    const Real size = std::sqrt(std::max(std::abs(f), record->fscale));
    std::fill(r, r + n * n, Real(0));
    for (long j = 0; j < n; ++j) r[j * n + j] = record->init_hessian == 1 ? size * xscale[j] : Real(1);
  }

  // The step p, cut to the longest one, and the slope along it, which might overflow for the whole step. Rounding may leave a
  // factor with which it does not point downhill: then the Hessian starts anew.
  bool direction() {
    for (int tries = 0; tries < 2; ++tries) {
      l_u10nf(n, r, g, p, t);
      length = scaled_length(n, p, xscale);
      if (length > record->max_step && std::isfinite(length)) {
        fast::scal(n, record->max_step / length, p, 1);
        length = record->max_step;
      }
      slope = row_dot(n, g, p);
      if (slope < 0 && std::isfinite(slope) && std::isfinite(length)) return true;
      l_u9inf();
    }
    return false;
  }

  void go(Real lambda) {
    for (long j = 0; j < n; ++j) x_new[j] = x[j] + lambda * p[j];
    f_new = value(x_new);
  }
  bool falls(Real lambda) const {
    return f_new <= f + Real(1e-4) * lambda * slope;
  }
  // A point low enough that also has a gradient; one without is as good as undefined.
  bool low_enough(Real lambda) {
    if (!falls(lambda)) return false;
    if (f_new == -Machine<Real>::infinity || slopes(x_new, f_new, g_new)) return true;
    f_new = Machine<Real>::infinity;
    return false;
  }
  Real slope_new() const {
    return row_dot(n, g_new, p);
  }

  // A shorter step from the last trials: the parabola through f, the slope and one trial, then the cubic through two.
  Real shorten(bool first, Real lambda, Real before, Real f_before) const {
    Real next;
    if (first) {
      next = -slope / (2 * (f_new - f - slope));
    } else {
      const Real e = f_new - f - lambda * slope, e0 = f_before - f - before * slope, gap = lambda - before;
      const Real a = (e / (lambda * lambda) - e0 / (before * before)) / gap;
      const Real b = (-before * e / (lambda * lambda) + lambda * e0 / (before * before)) / gap;
      const Real root = b * b - 3 * a * slope;
      next = a == 0 ? -slope / (2 * b) : (-b + std::sqrt(std::max(root, Real(0)))) / (3 * a);
    }
    if (!(next <= lambda / 2)) next = std::isnan(next) ? lambda / 10 : lambda / 2;
    return std::max(next, lambda / 10);
  }

  // l_u17nf: from x along p. On success the trial holds a point that is low enough and, where one was found, not too steep.
  Search line_search() {
    Real reach = 0;
    for (long j = 0; j < n; ++j) reach = std::max(reach, std::abs(p[j]) / size_of(x[j], xscale[j]));
    const Real least = record->step_tol / reach;
    Real lambda = 1, before = 0, f_before = 0;
    long_step = false;
    for (bool first = true;; first = false) {
      go(lambda);
      if (low_enough(lambda)) break;
      if (lambda < least) return Search::stuck;
      if (lambda * reach < record->false_conv_tol) return Search::false_convergence;
      if (nfcn >= record->max_fcn) return Search::out_of_calls;
      const Real next = shorten(first, lambda, before, f_before);
      before = lambda;
      f_before = f_new;
      lambda = next;
    }
    if (f_new != -Machine<Real>::infinity && slope_new() < Real(0.9) * slope)
      lambda = seek_slope(lambda, before, f_before, least);
    long_step = lambda * length > Real(0.99) * record->max_step;
    const Real little = record->rel_fcn_tol * std::abs(f);
    const bool unchanged = lambda == 1 && std::abs(f - f_new) <= little && -lambda * slope <= 2 * little;
    return unchanged ? Search::little_change : Search::success;
  }

  // The trial is low enough but the slope still almost that of the start: further steps, doubled, then points between the last
  // two. Returns where the trial ends up.
  Real seek_slope(Real lambda, Real before, Real f_before, Real least) {
    const Real wanted = Real(0.9) * slope;
    Real low = lambda, f_low = f_new, slope_low = slope_new(), high = before, f_high = f_before;
    std::copy(g_new, g_new + n, g_low);
    if (lambda == 1) {
      const Real longest = record->max_step / length;
      while (true) {
        if (low >= longest || nfcn >= record->max_fcn) return settle(low, f_low);
        lambda = std::min(2 * low, longest);
        go(lambda);
        if (!low_enough(lambda)) break;
        if (f_new == -Machine<Real>::infinity || slope_new() >= wanted) return lambda;
        low = lambda;
        f_low = f_new;
        slope_low = slope_new();
        std::copy(g_new, g_new + n, g_low);
      }
      high = lambda;
      f_high = f_new;
    }
    Real gap = high - low;
    while (gap >= least && nfcn < record->max_fcn) {
      Real part = -slope_low * gap * gap / (2 * (f_high - (f_low + slope_low * gap)));
      if (!(part >= gap / 5)) part = gap / 5;
      lambda = low + std::min(part, gap * Real(0.8));
      if (lambda == low) break;
      part = lambda - low;
      go(lambda);
      if (!low_enough(lambda)) {
        gap = part;
        f_high = f_new;
        continue;
      }
      if (f_new == -Machine<Real>::infinity || slope_new() >= wanted) return lambda;
      low = lambda;
      gap -= part;
      f_low = f_new;
      slope_low = slope_new();
      std::copy(g_new, g_new + n, g_low);
    }
    return settle(low, f_low);
  }
  Real settle(Real low, Real f_low) {
    for (long j = 0; j < n; ++j) x_new[j] = x[j] + low * p[j];
    f_new = f_low;
    std::copy(g_low, g_low + n, g_new);
    return low;
  }

  void accept() {
    std::swap(x, x_new);
    std::swap(g, g_new);
    f = f_new;
  }

  // l_u6inf behind the first point, without the test of the gradient: the number of the condition that ends the search, or 0.
  long limit(Search search, long long_steps) const {
    switch (search) {
      case Search::stuck:
        return MATH_NO_FURTHER_PROGRESS;
      case Search::out_of_calls:
        return MATH_TOO_MANY_FCN_EVAL;
      case Search::false_convergence:
        return MATH_FALSE_CONVERGENCE;
      default:
        break;
    }
    if (relative_step(n, x, x_new, xscale) <= record->step_tol) return MATH_STEP_TOLERANCE;
    if (search == Search::little_change) return MATH_REL_FCN_TOLERANCE;
    if (iter >= record->max_itn) return MATH_TOO_MANY_ITN;
    if (nfcn >= record->max_fcn) return MATH_TOO_MANY_FCN_EVAL;
    if (ngrad >= record->max_grad) return MATH_TOO_MANY_GRAD_EVAL;
    return long_steps >= 5 || f_new == -Machine<Real>::infinity ? MATH_UNBOUNDED : 0;
  }

  // l_u3inf: from x on. Returns the number of the condition that ended the search, 0 for a gradient within its tolerance.
  long minimize() {
    rnoise = record->rnoise();
    f = value(x);
    if (!std::isfinite(f) || !slopes(x, f, g)) return f == -Machine<Real>::infinity ? MATH_UNBOUNDED : MATH_NAN_NOT_ALLOWED;
    if (steepness(x, f, g) <= record->grad_tol) return 0;
    l_u9inf();
    long long_steps = 0;
    while (true) {
      ++iter;
      const Search search = direction() ? line_search() : Search::stuck;
      if (search == Search::stuck && !analytic() && !central) {
        central = true;
        --iter;  // which tries again
        if (!slopes(x, f, g)) return MATH_NO_FURTHER_PROGRESS;
        if (steepness(x, f, g) <= record->grad_tol) return 0;
        continue;
      }
      if (search == Search::stuck || search == Search::false_convergence || search == Search::out_of_calls) {
        std::copy(x, x + n, x_new);
        f_new = f;
        return limit(search, 0);
      }
      const bool sees = f_new != -Machine<Real>::infinity;
      if (sees && !analytic() && !central && steepness(x_new, f_new, g_new) <= Real(0.1)) {
        central = true;
        if (!slopes(x_new, f_new, g_new)) return MATH_NO_FURTHER_PROGRESS;
      }
      long_steps = long_step ? long_steps + 1 : 0;
      const bool done = sees && steepness(x_new, f_new, g_new) <= record->grad_tol;
      const long ended = done ? 0 : limit(search, long_steps);
      if (!done && ended == 0) update();
      accept();
      if (done || ended != 0) return ended;
    }
  }

  void update() {
    for (long j = 0; j < n; ++j) {
      p[j] = x_new[j] - x[j];
      g_low[j] = g_new[j] - g[j];
    }
    l_u8inf(n, xscale, p, g_low, g, g_new, rnoise, analytic(), r, t, u);
  }
};

}  // namespace zent::optimize
