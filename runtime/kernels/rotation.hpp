// Plane rotations: Givens and the modified form without square roots (Lawson, Hanson, Kincaid and Krogh, ACM TOMS 5, 1979).
#pragma once

#include <algorithm>

#include "runtime/kernels/level1.hpp"

namespace zent::kernel {

// (x, y) := (c x + s y, c y - s x); for complex vectors too, with real c and s.
template <class T>
void rot(long n, T* x, long incx, T* y, long incy, RealOf<T> c, RealOf<T> s) {
  const Strided u(n, x, incx);
  const Strided v(n, y, incy);
  for (long i = 0; i < n; ++i) {
    const T old = u[i];
    u[i] = c * old + s * v[i];
    v[i] = c * v[i] - s * old;
  }
}

// The rotation that takes (a, b) to (r, 0). On return a = r and b = z, the one number from which c and s can be rebuilt:
// z = s if |z| < 1, z = 1 / c if |z| > 1, and z = 1 stands for c = 0, s = 1.
template <class Real>
void rotg(Real* a, Real* b, Real* c, Real* s) {
  const Real size_a = std::abs(*a), size_b = std::abs(*b);
  if (size_b == 0) {
    *c = 1;
    *s = 0;
    *b = 0;
    return;
  }
  if (size_a == 0) {
    *c = 0;
    *s = 1;
    *a = *b;
    *b = 1;
    return;
  }
  // The scale stays off the subnormal range, where the quotients would lose digits.
  const Real scale = std::clamp(std::max(size_a, size_b), std::numeric_limits<Real>::min(), 1 / std::numeric_limits<Real>::min());
  const Real scaled_a = *a / scale, scaled_b = *b / scale;
  const Real sign = std::copysign(Real(1), size_a > size_b ? *a : *b);
  const Real scaled_r = sign * std::sqrt(scaled_a * scaled_a + scaled_b * scaled_b);
  *c = scaled_a / scaled_r;
  *s = scaled_b / scaled_r;
  *a = scale * scaled_r;
  if (size_a > size_b) {
    *b = *s;
  } else {
    *b = *c != 0 ? 1 / *c : 1;
  }
}

// The matrix H of the modified rotation. flag -2: identity; 0: unit diagonal; 1: h12 = 1, h21 = -1; -1: all four stored.
template <class Real>
struct ModifiedRotation {
  Real flag = 0, h11 = 0, h21 = 0, h12 = 0, h22 = 0;

  // Writes out the elements that the flag implies, since a scaled H has none of them left.
  void expand() {
    if (flag == 0) {
      h11 = 1;
      h22 = 1;
    } else if (flag > 0) {
      h21 = -1;
      h12 = 1;
    }
    flag = -1;
  }
};

// Brings one of the two scale factors d into [2^-24, 2^24] and its row of H along. One step is a factor 4096^2 in d. Returns the
// factor by which the row was multiplied.
template <class Real>
Real rescale_row(Real* d, Real* row1, Real* row2, ModifiedRotation<Real>* h) {
  constexpr Real gamma = 4096, gamma_squared = gamma * gamma;
  Real factor = 1;
  while (*d != 0 && std::isfinite(*d)) {
    const bool small = std::abs(*d) <= 1 / gamma_squared;
    if (!small && std::abs(*d) < gamma_squared) break;
    h->expand();
    const Real step = small ? 1 / gamma : gamma;
    *d = small ? *d * gamma_squared : *d / gamma_squared;
    *row1 *= step;
    *row2 *= step;
    factor *= step;
  }
  return factor;
}

// Builds H so that the second component of H (sqrt(d1) x1, sqrt(d2) y1) vanishes; d1, d2 and x1 are updated.
// param = flag, h11, h21, h12, h22; elements that the flag implies are not written.
template <class Real>
void rotmg(Real* d1, Real* d2, Real* x1, Real y1, Real* param) {
  ModifiedRotation<Real> h;
  const Real p2 = *d2 * y1;
  if (!(*d1 < 0) && p2 == 0) {
    param[0] = -2;
    return;
  }
  const Real p1 = *d1 * *x1;
  const Real q1 = p1 * *x1, q2 = p2 * y1;
  bool possible = !(*d1 < 0);
  if (possible && std::abs(q1) > std::abs(q2)) {
    h.h21 = -y1 / *x1;
    h.h12 = p2 / p1;
    const Real u = 1 - h.h12 * h.h21;
    possible = u > 0;
    *d1 /= u;
    *d2 /= u;
    *x1 *= u;
  } else if (possible && q2 < 0) {
    possible = false;
  } else if (possible) {
    h.flag = 1;
    h.h11 = p1 / p2;
    h.h22 = *x1 / y1;
    const Real u = 1 + h.h11 * h.h22;
    const Real new_d1 = *d2 / u;
    *d2 = *d1 / u;
    *d1 = new_d1;
    *x1 = y1 * u;
  }
  if (possible) {
    *x1 *= rescale_row(d1, &h.h11, &h.h12, &h);
    rescale_row(d2, &h.h21, &h.h22, &h);
  } else {
    *d1 = *d2 = *x1 = 0;
    h = {.flag = -1};
  }
  param[0] = h.flag;
  if (h.flag <= 0) {
    param[2] = h.h21;
    param[3] = h.h12;
  }
  if (h.flag != 0) {
    param[1] = h.h11;
    param[4] = h.h22;
  }
}

// Applies the H of rotmg: x := h11 x + h12 y, y := h21 x + h22 y.
template <class Real>
void rotm(long n, Real* x, long incx, Real* y, long incy, const Real* param) {
  if (param[0] == -2) return;
  ModifiedRotation<Real> h{.flag = param[0]};
  if (h.flag != 0) {
    h.h11 = param[1];
    h.h22 = param[4];
  }
  if (h.flag <= 0) {
    h.h21 = param[2];
    h.h12 = param[3];
  }
  if (h.flag >= 0) h.expand();
  const Strided u(n, x, incx);
  const Strided v(n, y, incy);
  for (long i = 0; i < n; ++i) {
    const Real old = u[i];
    u[i] = h.h11 * old + h.h12 * v[i];
    v[i] = h.h21 * old + h.h22 * v[i];
  }
}

}  // namespace zent::kernel
