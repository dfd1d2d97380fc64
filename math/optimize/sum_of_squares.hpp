// Nonlinear least squares by steps inside a trust region, whose radius follows how well the model foretells the sum of squares
// (Dennis and Schnabel 1983, algorithm A6.4.5). f2 is half the sum of squares throughout.
#pragma once

#include <algorithm>
#include <cmath>
#include <utility>

#include "math/optimize/record.hpp"
#include "math/optimize/trust_step.hpp"
#include "math/optimize/user.hpp"

namespace zent::optimize {

enum class Trial { accepted, stuck, little_change, false_convergence, out_of_calls, failed };

template <class Half, class Real>
struct SumOfSquares {
  Residuals<Half, Real> residuals, jacobian;
  const Record<Real>* record;
  long m, n;
  const Real* xscale;
  Real *x = nullptr, *fvec = nullptr, *g = nullptr;          // the point
  Real *x_new = nullptr, *fvec_new = nullptr, *p = nullptr;  // a trial
  Real *x_before = nullptr, *fvec_before = nullptr;          // the trial before it, while the radius is being doubled
  Real *fjac = nullptr, *rows = nullptr, *norm = nullptr;  // Jacobian, column-major; by rows, from the user; norms of its columns
  TrustStep<Half, Real> step = {.m = 0, .n = 0};
  Real f2 = 0, f2_new = 0, delta = 0, alpha = 0, max_step = 0;
  bool long_step = false;
  long nfcn = 0, njac = 0, iter = 0;

  bool obtain() {
    Block<Half, Real> block;
    step = {.m = m, .n = n};
    step.need(block);
    block.need(jacobian.given() ? 2 : 1, m, n);
    block.need(3, m);
    block.need(6, n);
    if (!block.obtain() || !step.take(block)) return false;
    fjac = block.take(m, n);
    if (jacobian.given()) rows = block.take(m, n);
    for (Real** array : {&fvec, &fvec_new, &fvec_before}) *array = block.take(m);
    for (Real** array : {&x, &g, &x_new, &p, &x_before, &norm}) *array = block.take(n);
    return true;
  }

  // Half the sum of squares; +infinity where residuals are not finite.
  Real value(Real* at, Real* out) {
    ++nfcn;
    residuals(m, n, at, out);
    const Real sum = row_dot(m, out, out) / 2;
    return std::isfinite(sum) ? sum : Machine<Real>::infinity;
  }
  // Jacobian and gradient at x; false when they are not finite.
  bool differentiate() {
    ++njac;
    if (jacobian.given()) {
      jacobian(m, n, x, rows);
      for (long j = 0; j < n; ++j) {
        for (long i = 0; i < m; ++i) fjac[i + j * m] = rows[i * n + j];
      }
    } else {
      l_f2jac(residuals, m, n, x, xscale, fvec, record->rnoise(), fjac, m);
    }
    for (long j = 0; j < n; ++j) g[j] = row_dot(m, fjac + j * m, fvec);
    return !stands_above<Half>(3) && all_finite(n, g) && all_finite(m * n, fjac);
  }
  Real steepness() const {
    return scaled_gradient(n, g, x, xscale, f2, record->fscale);
  }
  const Real* scale() const {
    return record->intern_scale ? norm : xscale;
  }

  // The model at x, and the scales that follow the Jacobian where that is asked for: they never fall.
  void model() {
    step.factor(fjac, m);
    for (long j = 0; record->intern_scale && j < n; ++j) {
      const Real length = fast::nrm2(m, fjac + j * m, 1);
      if (iter == 0) norm[j] = length > 0 ? length : Real(1);
      norm[j] = std::max(norm[j], length);
    }
    step.set(fvec, g, scale());
  }

  // l_u4lsf: limits of the step at the start.
  void start() {
    max_step = given(record->max_step) ? record->max_step : default_max_step(n, x, scale());
    if (given(record->trust)) {
      delta = std::min(record->trust, max_step);
      return;
    }
    delta = gradient_step_length(step, g, p);
    if (!(delta > 0) || !(delta <= max_step)) delta = max_step;
  }

  // l_u9lsf: tries steps until one is taken or refused for good. The trial is in x_new, fvec_new, f2_new.
  Trial search() {
    bool doubled = false;
    Real f2_before = 0, delta_before = 0;
    while (true) {
      if (!step.find(delta, alpha, p)) return Trial::failed;
      const bool full = alpha == 0;
      for (long j = 0; j < n; ++j) x_new[j] = x[j] + p[j];
      f2_new = value(x_new, fvec_new);
      if (stands_above<Half>(3)) return Trial::failed;
      const Real length = scaled_length(n, p, scale()), gp = row_dot(n, g, p);
      const Real actual = f2_new - f2;
      if (doubled && (f2_new >= f2_before || actual > Real(1e-4) * gp)) {  // the one before was better
        std::swap(x_new, x_before);
        std::swap(fvec_new, fvec_before);
        f2_new = f2_before;
        delta = delta_before;
        long_step = false;
        return Trial::accepted;
      }
      if (!(actual <= Real(1e-4) * gp)) {
        const Real moved = relative_step(n, x, x_new, xscale);
        if (moved < record->step_tol) return Trial::stuck;
        if (moved < record->false_conv_tol) return Trial::false_convergence;
        if (nfcn >= record->max_fcn) return Trial::out_of_calls;
        const Real wanted = -gp * length / (2 * (actual - gp));  // 0 where f2 is infinite
        delta = wanted > delta / 10 ? std::min(wanted, delta / 2) : delta / 10;
        continue;
      }
      const Real predicted = step.predicted(gp);
      const bool agrees = std::abs(predicted - actual) <= Real(0.1) * std::abs(actual) || actual <= Real(0.75) * predicted;
      if (!full && agrees && delta <= Real(0.99) * max_step && nfcn < record->max_fcn) {
        doubled = true;
        std::swap(x_new, x_before);
        std::swap(fvec_new, fvec_before);
        f2_before = f2_new;
        delta_before = delta;
        delta = std::min(2 * delta, max_step);
        continue;
      }
      long_step = length > Real(0.99) * max_step;
      if (actual >= Real(0.1) * predicted) {
        delta /= 2;
      } else if (actual <= Real(0.75) * predicted) {
        delta = std::min(2 * delta, max_step);
      }
      const Real little = record->rel_fcn_tol * f2;
      return full && std::abs(actual) <= little && std::abs(predicted) <= little ? Trial::little_change : Trial::accepted;
    }
  }

  // l_u6lsf behind the test of the gradient: the number of the condition that ends the search, or 0; `quiet` for an end without.
  long ended(Trial trial, Real moved, long long_steps, bool& quiet) const {
    if (trial == Trial::out_of_calls) return MATH_TOO_MANY_FCN_EVAL;
    if (moved <= record->step_tol) return MATH_STEP_TOLERANCE;
    quiet = f2 < record->abs_fcn_tol;
    if (quiet) return 0;
    if (trial == Trial::little_change) return MATH_LITTLE_FCN_CHANGE;
    if (trial == Trial::false_convergence) return MATH_FALSE_CONVERGENCE;
    if (iter >= record->max_itn) return MATH_TOO_MANY_ITN;
    if (nfcn >= record->max_fcn) return MATH_TOO_MANY_FCN_EVAL;
    if (njac >= record->max_grad) return MATH_TOO_MANY_JACOBIAN_EVAL;
    return long_steps >= 5 ? MATH_UNBOUNDED : 0;
  }

  // l_u3lsf: from x on. 0 for a gradient or a sum of squares within its tolerance, -1 when the step raised an error.
  long minimize() {
    f2 = value(x, fvec);
    if (!std::isfinite(f2) || !differentiate()) return MATH_NAN_NOT_ALLOWED;
    if (steepness() <= record->grad_tol || f2 < record->abs_fcn_tol) return 0;
    model();
    start();
    long long_steps = 0;
    while (true) {
      ++iter;
      const Trial trial = search();
      if (trial == Trial::failed) return -1;
      bool quiet = false;
      if (trial != Trial::accepted && trial != Trial::little_change)
        return ended(trial, Real(trial == Trial::stuck ? 0 : 1), 0, quiet);
      const Real moved = relative_step(n, x, x_new, xscale);
      std::swap(x, x_new);
      std::swap(fvec, fvec_new);
      f2 = f2_new;
      if (!differentiate()) return MATH_FALSE_CONVERGENCE;  // no way on from here
      long_steps = long_step ? long_steps + 1 : 0;
      if (steepness() <= record->grad_tol) return 0;
      const long number = ended(trial, moved, long_steps, quiet);
      if (number != 0 || quiet) return number;
      model();
    }
  }
};

}  // namespace zent::optimize
