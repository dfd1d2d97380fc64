// Products of short vectors.
#pragma once

#include <cmath>

#include "runtime/kernels/fast.hpp"
#include "runtime/machine.hpp"

namespace zent::optimize {

// Short rows are not worth the way to the machine's loops.
template <class Real>
[[gnu::always_inline]] inline Real row_dot(long n, const Real* x, const Real* y) {
  if (n > 16) return fast::dot(n, x, 1, y, 1);
  Real sum = 0;
  for (long i = 0; i < n; ++i) sum += x[i] * y[i];
  return sum;
}
template <class Real>
[[gnu::always_inline]] inline void row_axpy(long n, Real factor, const Real* x, Real* y) {
  if (n > 16) return fast::axpy(n, factor, x, 1, y, 1);
  for (long i = 0; i < n; ++i) y[i] += factor * x[i];
}
template <class Real>
[[gnu::always_inline]] inline Real row_norm(long n, const Real* x) {
  const Real squares = row_dot(n, x, x);
  constexpr Real enough = Machine<Real>::smallest / (Machine<Real>::epsilon * Machine<Real>::epsilon);
  return squares >= enough && squares <= Machine<Real>::largest ? std::sqrt(squares) : kernel::nrm2(n, x, 1);
}

}  // namespace zent::optimize
