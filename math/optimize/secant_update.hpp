// The Cholesky factor of a Hessian under BFGS updates: H = R^T R with R upper triangular, its rows contiguous. Source: Goldfarb
// (1976); Dennis and Schnabel (1983), algorithm A9.4.2.
#pragma once

#include <algorithm>
#include <cmath>

#include "math/optimize/rows.hpp"
#include "runtime/machine.hpp"

namespace zent::optimize {

// c and s that take (a, b) to (r, 0); returns r.
template <class Real>
[[gnu::always_inline]] inline Real l_u15nf(Real a, Real b, Real& c, Real& s) {
  const Real squares = a * a + b * b;
  if (squares > Machine<Real>::smallest / Machine<Real>::epsilon && squares <= Machine<Real>::largest) {
    const Real r = std::sqrt(squares), inverse = 1 / r;
    c = a * inverse;
    s = b * inverse;
    return r;
  }
  const Real largest = std::max(std::abs(a), std::abs(b));  // near the ends of the number range
  if (largest == 0) {
    c = 1;
    s = 0;
    return 0;
  }
  const Real u = a / largest, v = b / largest, r = std::sqrt(u * u + v * v);
  c = u / r;
  s = v / r;
  return r * largest;
}

// Rotates rows i and i + 1 of R from column i on.
template <class Real>
[[gnu::always_inline]] inline void l_u14nf(long n, long i, Real c, Real s, Real* r) {
  Real* const upper = r + i * n;
  Real* const lower = upper + n;
  for (long j = i; j < n; ++j) {
    const Real old = upper[j];
    upper[j] = c * old + s * lower[j];
    lower[j] = c * lower[j] - s * old;
  }
}

// R := the triangular factor of R + v u^T; v is destroyed. The elements below the diagonal of R must be 0, as they are again.
template <class Real>
void l_u13nf(long n, Real* v, const Real* u, Real* r) {
  long last = n - 1;
  while (last > 0 && v[last] == 0) --last;
  Real c, s;
  for (long i = last - 1; i >= 0; --i) {
    v[i] = l_u15nf(v[i], v[i + 1], c, s);
    l_u14nf(n, i, c, s, r);
  }
  row_axpy(n, v[0], u, r);
  for (long i = 0; i < last; ++i) {
    l_u15nf(r[i * n + i], r[(i + 1) * n + i], c, s);
    l_u14nf(n, i, c, s, r);
    r[(i + 1) * n + i] = 0;
  }
}

// p := -H^-1 g. inverse: n elements, for the reciprocals of the diagonal, which need not wait for each other.
template <class Real>
void l_u10nf(long n, const Real* r, const Real* g, Real* p, Real* inverse) {
  for (long j = 0; j < n; ++j) {
    inverse[j] = 1 / r[j * n + j];
    p[j] = -g[j];
  }
  for (long i = 0; i < n; ++i) {  // R^T y = -g
    p[i] *= inverse[i];
    row_axpy(n - 1 - i, -p[i], r + i * n + i + 1, p + i + 1);
  }
  for (long i = n - 1; i >= 0; --i) {
    p[i] = (p[i] - row_dot(n - 1 - i, r + i * n + i + 1, p + i + 1)) * inverse[i];
  }
}

// The BFGS update for the step s and the change y of the gradient from g to g_new. Nothing is done where the curvature along the
// step is too small to be known (with lengths in the scales of the variables), or where y is what the factor predicts to within
// the noise of the gradient. t, u: n elements.
template <class Real>
void l_u8inf(long n, const Real* xscale, const Real* s, const Real* y, const Real* g, const Real* g_new, Real rnoise,
             bool analytic, Real* r, Real* t, Real* u) {
  const Real ys = row_dot(n, y, s);
  const Real least = std::sqrt(analytic ? Machine<Real>::epsilon : rnoise);
  for (long i = 0; i < n; ++i) {
    t[i] = xscale[i] * s[i];
    u[i] = y[i] / xscale[i];
  }
  if (!(ys > least * row_norm(n, t) * row_norm(n, u))) return;
  for (long i = 0; i < n; ++i) t[i] = row_dot(n - i, r + i * n + i, s + i);
  const Real weight = 1 / (std::sqrt(ys) * std::sqrt(row_dot(n, t, t))), ratio = ys * weight;
  const Real noise = analytic ? rnoise : std::sqrt(rnoise);
  std::fill(u, u + n, Real(0));
  for (long i = 0; i < n; ++i) row_axpy(n - i, t[i], r + i * n + i, u + i);  // H s
  bool skip = true;
  for (long i = 0; i < n; ++i) {
    if (std::abs(y[i] - u[i]) >= noise * std::max(std::abs(g[i]), std::abs(g_new[i]))) skip = false;
    u[i] = y[i] - ratio * u[i];
  }
  if (skip || !(weight <= Machine<Real>::largest)) return;
  for (long i = 0; i < n; ++i) t[i] *= weight;
  l_u13nf(n, t, u, r);
}

}  // namespace zent::optimize
