// What steers the solvers of many variables: the record, its defaults, its check, and the scaled measures of the stop tests.
#pragma once

#include <algorithm>
#include <cmath>

#include "math/optimize/user.hpp"
#include "runtime/error.hpp"
#include "runtime/machine.hpp"
#include "runtime/scratch.hpp"

namespace zent::optimize {

inline constexpr double not_given = -9999, not_given_too = -999;

template <class Real>
bool given(Real x) {
  return x != Real(not_given) && x != Real(not_given_too);
}

template <class Real>
long default_digits() {
  return static_cast<long>(Real(0.1) - std::log10(Machine<Real>::epsilon));
}

template <class Real>
struct Record {
  using M = Machine<Real>;
  long ndigit = default_digits<Real>(), max_itn = 100, max_fcn = 400;
  long max_grad = 400;  // or Jacobians
  long init_hessian = 0;
  bool intern_scale = false;
  Real fscale = 1;
  Real grad_tol = std::cbrt(M::epsilon);
  Real step_tol = std::pow(M::epsilon, Real(2) / 3);
  Real rel_fcn_tol = std::max(Real(1e-20), std::pow(M::epsilon, Real(2) / 3));
  Real abs_fcn_tol = std::max(Real(1e-10), std::pow(M::epsilon, Real(2) / 3));
  Real false_conv_tol = 100 * M::epsilon;
  Real max_step = not_given, trust = not_given;

  Real rnoise() const {
    return std::max(M::epsilon, std::pow(Real(10), static_cast<Real>(-ndigit)));
  }
};

// Vectors and matrices of one solver out of one block of work memory: their sizes are announced first, then they are taken.
template <class Half, class Real>
class Block {
 public:
  // `count` arrays of rows by columns.
  void need(long count, long rows, long columns = 1) {
    long area = 0;
    fits_ = fits_ && !__builtin_mul_overflow(rows, columns, &area) && !__builtin_mul_overflow(count, area, &area) &&
            !__builtin_add_overflow(total_, area, &total_);
  }
  bool obtain() {
    next_ = fits_ ? scratch<Half, Real>(total_) : nullptr;
    return next_ != nullptr;
  }
  Real* take(long rows, long columns = 1) {
    Real* const array = next_;
    next_ += rows * columns;
    return array;
  }

 private:
  bool fits_ = true;
  long total_ = 0;
  Real* next_ = nullptr;
};

// The longest step allowed, from the start point: 1000 max(|D x|, |D|).
template <class Real>
Real default_max_step(long n, const Real* x, const Real* xscale) {
  Real moved = 0, scale = 0;
  for (long j = 0; j < n; ++j) {
    moved = std::hypot(moved, xscale[j] * x[j]);
    scale = std::hypot(scale, xscale[j]);
  }
  const Real longest = 1000 * std::max(moved, scale);
  return longest <= Machine<Real>::largest ? longest : Machine<Real>::largest;
}

template <class Half, class T>
void repair(bool bad, T& value, T replacement, long number) {
  if (!bad) return;
  if constexpr (std::is_integral_v<T>) {
    raise<Half>(6, number, {.i = {value}});
  } else {
    raise<Half>(6, number, {.r = {static_cast<double>(value)}});
  }
  value = replacement;
}

// n > 0 is the caller's to have checked. A tolerance that is not a number is replaced like a negative one.
template <class Half, class Real>
void repair_record(long n, Real* xscale, Record<Real>& r) {
  const Record<Real> fresh;
  const auto negative = [](Real x) { return !(x >= 0); };
  for (long j = 0; j < n; ++j) {
    if (xscale[j] > 0) continue;
    raise<Half>(6, MATH_NEED_POSITIVE_XSCALE_ELEM, {.i = {j}, .r = {static_cast<double>(xscale[j])}});
    xscale[j] = 1;
  }
  repair<Half>(!(r.fscale > 0), r.fscale, fresh.fscale, MATH_NEED_POSITIVE_FSCALE_ELEM);
  repair<Half>(r.ndigit <= 0, r.ndigit, fresh.ndigit, MATH_NEED_POSITIVE_NDIGIT);
  repair<Half>(r.max_itn <= 0, r.max_itn, fresh.max_itn, MATH_NEED_POSITIVE_MXITER);
  repair<Half>(r.max_fcn <= 0, r.max_fcn, fresh.max_fcn, MATH_NEED_POSITIVE_MAXFCN);
  repair<Half>(r.max_grad <= 0, r.max_grad, fresh.max_grad, MATH_NEED_POSITIVE_MAXJAC);
  repair<Half>(negative(r.grad_tol), r.grad_tol, fresh.grad_tol, MATH_NEED_POSITIVE_GRADTL);
  repair<Half>(negative(r.step_tol), r.step_tol, fresh.step_tol, MATH_NEGATIVE_STEP_TOL);
  repair<Half>(negative(r.rel_fcn_tol), r.rel_fcn_tol, fresh.rel_fcn_tol, MATH_NEGATIVE_REL_FCN_TOL);
  repair<Half>(negative(r.false_conv_tol), r.false_conv_tol, fresh.false_conv_tol, MATH_NEGATIVE_FALSE_CONV_TOL);
  repair<Half>(negative(r.abs_fcn_tol), r.abs_fcn_tol, fresh.abs_fcn_tol, MATH_NEGATIVE_ABS_FCN_TOL);
  repair<Half>(given(r.max_step) && !(r.max_step > 0), r.max_step, fresh.max_step, MATH_NEED_NONNEGATIVE_STEPMX);
  repair<Half>(given(r.trust) && !(r.trust > 0), r.trust, fresh.trust, MATH_NEED_NONNEGATIVE_DELTA);
}

// max |g_j| max(|x_j|, 1 / xscale_j) / max(|f|, fscale)
template <class Real>
Real scaled_gradient(long n, const Real* g, const Real* x, const Real* xscale, Real f, Real fscale) {
  Real largest = 0;
  for (long j = 0; j < n; ++j) largest = std::max(largest, std::abs(g[j]) * size_of(x[j], xscale[j]));
  return largest / std::max(std::abs(f), fscale);
}

template <class Real>
Real relative_step(long n, const Real* x, const Real* x_new, const Real* xscale) {
  Real largest = 0;
  for (long j = 0; j < n; ++j) largest = std::max(largest, std::abs(x_new[j] - x[j]) / size_of(x_new[j], xscale[j]));
  return largest;
}

template <class Real>
Real scaled_length(long n, const Real* p, const Real* scale) {
  Real sum = 0;
  for (long j = 0; j < n; ++j) sum += scale[j] * p[j] * (scale[j] * p[j]);
  if (sum > Machine<Real>::smallest / Machine<Real>::epsilon && sum <= Machine<Real>::largest) return std::sqrt(sum);
  Real length = 0;  // near the ends of the number range
  for (long j = 0; j < n; ++j) length = std::hypot(length, scale[j] * p[j]);
  return length;
}

}  // namespace zent::optimize
