// Functions of the user, plain or with data, and the differences that replace their derivatives.
#pragma once

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "runtime/machine.hpp"
#include "runtime/user_call.hpp"

namespace zent::optimize {

// f(arguments...), or f(arguments..., data). Once a fatal error has come out of one, which is the end of the search, nothing is
// called any more.
template <class Half, class Result, class... Arguments>
struct UserFunction {
  Result (*plain)(Arguments...) = nullptr;
  Result (*with_data)(Arguments..., void*) = nullptr;
  void* data = nullptr;

  bool given() const {
    return plain != nullptr || with_data != nullptr;
  }
  Result operator()(Arguments... x) const {
    if (stands_above<Half>(3)) [[unlikely]] {
      if constexpr (std::is_void_v<Result>) {
        return;
      } else {
        return Machine<Result>::not_a_number;
      }
    }
    return user_call<Half>([&] { return with_data != nullptr ? with_data(x..., data) : plain(x...); });
  }
};

template <class Half, class Real>
using Univariate = UserFunction<Half, Real, Real>;
template <class Half, class Real>
using Objective = UserFunction<Half, Real, long, Real*>;
template <class Half, class Real>
using Gradient = UserFunction<Half, void, long, Real*, Real*>;
template <class Half, class Real>
using Residuals = UserFunction<Half, void, long, long, Real*, Real*>;

// Where a function is undefined it is too large to be wanted.
template <class Real>
Real ordered(Real value) {
  return std::isnan(value) ? Machine<Real>::infinity : value;
}

template <class Real>
bool all_finite(long n, const Real* x) {
  Real sum = 0;  // 0 times a finite number keeps it 0
  for (long i = 0; i < n; ++i) sum += 0 * x[i];
  return sum == 0;
}

// The size that a variable is taken to have. The usual scale needs no division.
template <class Real>
Real size_of(Real x, Real scale) {
  return std::max(std::abs(x), scale == 1 ? Real(1) : 1 / scale);
}

// The increment of a difference as it comes out in x + h.
template <class Real>
Real increment(Real x, Real scale, Real relative) {
  const Real h = std::copysign(relative * size_of(x, scale), x < 0 ? Real(-1) : Real(1));
  const volatile Real moved = x + h;
  return moved - x;
}

// Forward differences; backward where the function has no finite value ahead.
template <class Half, class Real>
void l_fdgrd(const Objective<Half, Real>& f, long n, Real* x, const Real* xscale, Real f0, Real rnoise, Real* g) {
  const Real relative = std::sqrt(std::max(rnoise, Machine<Real>::epsilon));
  for (long j = 0; j < n; ++j) {
    const Real old = x[j];
    Real h = increment(old, xscale[j], relative);
    x[j] = old + h;
    Real value = f(n, x);
    if (!std::isfinite(value)) {
      h = -h;
      x[j] = old + h;
      value = f(n, x);
    }
    x[j] = old;
    g[j] = (value - f0) / h;
  }
}

// Central differences; one-sided where only one side has a finite value.
template <class Half, class Real>
void l_cdgrd(const Objective<Half, Real>& f, long n, Real* x, const Real* xscale, Real f0, Real rnoise, Real* g) {
  const Real relative = std::cbrt(std::max(rnoise, Machine<Real>::epsilon));
  for (long j = 0; j < n; ++j) {
    const Real old = x[j], h = increment(old, xscale[j], relative);
    x[j] = old + h;
    const Real ahead = f(n, x);
    x[j] = old - h;
    const Real behind = f(n, x);
    x[j] = old;
    if (!std::isfinite(ahead)) {
      g[j] = (f0 - behind) / h;
    } else {
      g[j] = std::isfinite(behind) ? (ahead - behind) / (2 * h) : (ahead - f0) / h;
    }
  }
}

// The Jacobian of m residuals by forward differences, column-major; backward where they are not finite ahead.
template <class Half, class Real>
void l_f2jac(const Residuals<Half, Real>& f, long m, long n, Real* x, const Real* xscale, const Real* f0, Real rnoise, Real* fjac,
             long ldfjac) {
  const Real relative = std::sqrt(std::max(rnoise, Machine<Real>::epsilon));
  for (long j = 0; j < n; ++j) {
    Real* const column = fjac + j * ldfjac;
    const Real old = x[j];
    Real h = increment(old, xscale[j], relative);
    x[j] = old + h;
    f(m, n, x, column);
    if (!all_finite(m, column)) {
      h = -h;
      x[j] = old + h;
      f(m, n, x, column);
    }
    x[j] = old;
    for (long i = 0; i < m; ++i) column[i] = (column[i] - f0[i]) / h;
  }
}

}  // namespace zent::optimize
