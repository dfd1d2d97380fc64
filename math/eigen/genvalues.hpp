// Eigenvalues of an upper Hessenberg matrix without its vectors: double-shift steps that mix reflections and eliminations.
#pragma once

#include "math/eigen/gensweep.hpp"
#include "runtime/error.hpp"

namespace zent::eigen {

// The roots of a 2 by 2 block [[a, b], [c, d]]: of real ones the smaller as a ratio, of complex ones the positive imaginary part
// first.
template <class Real>
void block_roots(Real a, Real b, Real c, Real d, Real* wr, Real* wi) {
  const Real p = (a - d) / 2, bc = b * c;
  const Real square = p * p + bc;
  const Real root = std::sqrt(std::abs(square));
  if (square >= 0) {
    const Real z = p < 0 ? p - root : p + root;
    wr[0] = wr[1] = d + z;
    if (z != 0) wr[1] = d - bc / z;
    wi[0] = wi[1] = 0;
  } else {
    wr[0] = wr[1] = d + p;
    wi[0] = root;
    wi[1] = -root;
  }
}

// Values of the n by n Hessenberg matrix h, which is destroyed. After 100 n steps in all a warning, and the diagonal stands in
// for the values that are missing.
template <class Half, class Real>
void l_e5lrg(long ld, long n, Real* h, Real* wr, Real* wi) {
  Real norm = 0;
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < n && i <= j + 1; ++i) norm += std::abs(h[i + j * ld]);
  }
  long remaining = 100 * n, its = 0;
  for (long end = n - 1; end >= 0;) {
    long top = end;
    for (; top > 0; --top) {
      Real s = std::abs(h[top - 1 + (top - 1) * ld]) + std::abs(h[top + top * ld]);
      if (s == 0) s = norm;
      Real& below = h[top + (top - 1) * ld];
      const Real sum = s + below;
      if (sum == s) {
        below = 0;
        break;
      }
    }
    const Real x = h[end + end * ld];
    if (top == end) {
      wr[end] = x;
      wi[end] = 0;
      --end;
      its = 0;
      continue;
    }
    const Real y = h[end - 1 + (end - 1) * ld], sub = h[end + (end - 1) * ld];
    if (top == end - 1) {
      block_roots(y, h[end - 1 + end * ld], sub, x, wr + end - 1, wi + end - 1);
      end -= 2;
      its = 0;
      continue;
    }
    if (remaining-- == 0) {
      for (long i = 0; i <= end; ++i) {
        wr[i] = h[i + i * ld];
        wi[i] = 0;
      }
      raise<Half>(3, MATH_SLOW_CONVERGENCE_GEN, {.i = {end}});
      return;
    }
    Shift<Real> shift{x, y, sub * h[end - 1 + end * ld], false, 0, 0};
    if (its > 0 && its % 10 == 0) {
      const Real s = Real(1.5) * (std::abs(sub) + std::abs(h[end - 1 + (end - 2) * ld]));
      shift = {x, y, 0, true, s, s * s};
    }
    ++its;
    Real p, q, r;
    long start = its > 6 ? end - 2 : top;
    for (;; --start) {
      first_vector(h, ld, start, shift, p, q, r);
      if (start == top || may_start(h, ld, start, p, q, r)) break;
    }
    sweep<Real>({h, ld, top, end, true, nullptr}, start, p, q, r);
  }
}

}  // namespace zent::eigen
