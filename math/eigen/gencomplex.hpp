// The single-shift QR algorithm for complex Hessenberg matrices, and the eigenvectors of a complex triangle.
#pragma once

#include <cmath>

#include "runtime/error.hpp"
#include "runtime/kernels/fast.hpp"
#include "runtime/machine.hpp"

namespace zent::eigen {

template <class T>
kernel::RealOf<T> modulus(T a) {
  if constexpr (kernel::ComplexRecord<T>) {
    return std::hypot(a.re, a.im);
  } else {
    return std::abs(a);
  }
}

// The principal square root, without a square of a part.
template <class C>
C square_root(C a) {
  const auto size = modulus(a);
  if (size == 0) return {};
  if (a.re >= 0) {
    const auto re = std::sqrt((size + a.re) / 2);
    return {re, a.im / (2 * re)};
  }
  const auto im = std::sqrt((size - a.re) / 2);
  return a.im < 0 ? C{-a.im / (2 * im), -im} : C{a.im / (2 * im), im};
}

// A quotient by a real that may be too small for a reciprocal.
template <class C>
C over(C a, kernel::RealOf<C> divisor) {
  if constexpr (kernel::ComplexRecord<C>) {
    return {a.re / divisor, a.im / divisor};
  } else {
    return a / divisor;
  }
}

// A plane rotation: (c, s; -conj(s), c) takes (f, g) to (r, 0).
template <class C>
struct Rotation {
  kernel::RealOf<C> c;
  C s;
};
template <class C>
Rotation<C> rotation(C f, C g, C& r) {
  using Real = kernel::RealOf<C>;
  const Real size_f = modulus(f), size_g = modulus(g);
  if (size_g == 0) {
    r = f;
    return {1, {}};
  }
  if (size_f == 0) {
    r = kernel::from_real<C>(size_g);
    return {0, kernel::conj(over(g, size_g))};
  }
  const Real length = std::hypot(size_f, size_g);
  const C phase = over(f, size_f);
  r = length * phase;
  return {size_f / length, phase * kernel::conj(over(g, length))};
}

// Rows k and k + 1 of n columns, or columns k and k + 1 of m rows (times the conjugate transpose).
template <class C>
void rotate_rows(long n, C* row, long ld, Rotation<C> g) {
  for (long j = 0; j < n; ++j, row += ld) {
    const C upper = row[0], lower = row[1];
    row[0] = g.c * upper + g.s * lower;
    row[1] = g.c * lower - kernel::conj(g.s) * upper;
  }
}
template <class C>
void rotate_columns(long m, C* left, C* right, Rotation<C> g) {
  const C t = kernel::conj(g.s);
  for (long i = 0; i < m; ++i) {
    const C x = left[i], y = right[i];
    left[i] = g.c * x + t * y;
    right[i] = g.c * y - g.s * x;
  }
}

// The value of the trailing 2 by 2 block that is closer to its last element.
template <class C>
C corner_shift(C a, C b, C c, C d) {
  using Real = kernel::RealOf<C>;
  const C bc = b * c;
  if (bc == C{}) return d;
  const C half = Real(0.5) * (a - d);
  const Real scale = std::fmax(kernel::abs1(half), std::sqrt(kernel::abs1(b)) * std::sqrt(kernel::abs1(c)));
  const C p = (1 / scale) * half;
  const C root = square_root(p * p + ((1 / scale) * b) * ((1 / scale) * c));
  const C sum = p.re * root.re + p.im * root.im < 0 ? p - root : p + root;
  return d - ((1 / scale) * b) * (c / sum);
}

// Triangular form of the Hessenberg matrix within [low, high]; with z the whole triangle and z times the transformation, without
// it the values alone. `w` receives the diagonal. Without vectors the limit is 100 n steps in all and a warning, with them 50 for
// each value and an error.
template <class Half, class C>
bool l_e3cch(long n, long low, long high, C* h, long ld, C* w, C* z, long ldz) {
  using Real = kernel::RealOf<C>;
  constexpr Real eps = Machine<Real>::epsilon, small = Machine<Real>::smallest;
  const bool vectors = z != nullptr;
  Real norm = 0;
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < n && i <= j + 1; ++i) norm += kernel::abs1(h[i + j * ld]);
  }
  long remaining = 100 * n, budget = 50, its = 0;
  bool converged = true;
  for (long end = high; end >= low;) {
    long top = end;
    for (; top > low; --top) {
      const Real sum = kernel::abs1(h[top - 1 + (top - 1) * ld]) + kernel::abs1(h[top + top * ld]);
      const Real limit = eps * (vectors && budget == 0 ? norm : sum);
      if (kernel::abs1(h[top + (top - 1) * ld]) <= std::fmax(limit, small)) break;
    }
    if (top > low) h[top + (top - 1) * ld] = C{};
    if (top == end) {
      --end;
      its = 0;
      budget = 50;
      continue;
    }
    if (vectors ? budget == 0 : remaining == 0) {
      raise<Half>(vectors ? 4 : 3, MATH_SLOW_CONVERGENCE_GEN, {.i = {vectors ? 50 : end}});
      converged = false;
      break;
    }
    --budget;
    --remaining;
    ++its;
    C shift{};
    if (its % 10 == 0) {
      shift.re = kernel::abs1(h[end + (end - 1) * ld]);
      if (end - 1 > top) shift.re += kernel::abs1(h[end - 1 + (end - 2) * ld]);
      shift = shift + h[end + end * ld];
    } else {
      const C* corner = h + end - 1 + (end - 1) * ld;
      shift = corner_shift(corner[0], corner[ld], corner[1], corner[ld + 1]);
    }
    const long last = vectors ? n - 1 : end, first = vectors ? 0 : top;
    C f = h[top + top * ld] - shift, g = h[top + 1 + top * ld];
    for (long k = top; k < end; ++k) {
      C r;
      if (k > top) {
        f = h[k + (k - 1) * ld];
        g = h[k + 1 + (k - 1) * ld];
      }
      const Rotation<C> turn = rotation(f, g, r);
      if (k > top) {
        h[k + (k - 1) * ld] = r;
        h[k + 1 + (k - 1) * ld] = C{};
      }
      rotate_rows(last - k + 1, h + k + k * ld, ld, turn);
      const long bottom = k + 2 < end ? k + 2 : end;
      rotate_columns(bottom - first + 1, h + first + k * ld, h + first + (k + 1) * ld, turn);
      if (vectors) rotate_columns(n, z + k * ldz, z + (k + 1) * ldz, turn);
    }
  }
  for (long i = 0; i < n; ++i) w[i] = h[i + i * ld];
  return converged;
}

// z := z times the eigenvectors of the triangle h; y is work, n by n.
template <class C>
void l_e3lcg(long n, C* h, long ld, const C* w, C* z, long ldz, C* y) {
  using Real = kernel::RealOf<C>;
  Real norm = 0;
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i <= j; ++i) norm += kernel::abs1(h[i + j * ld]);
  }
  if (norm == 0) return;
  for (long i = 0; i < n * n; ++i) y[i] = C{};
  for (long end = n - 1; end >= 0; --end) {
    C* x = y + end * n;
    x[end] = {1, 0};
    for (long i = 0; i < end; ++i) x[i] = -h[i + end * ld];
    for (long i = end - 1; i >= 0; --i) {
      C divisor = h[i + i * ld] - w[end];
      if (divisor == C{}) divisor.re = Machine<Real>::epsilon * norm;
      const Real size = kernel::abs1(divisor);
      while (size < 1 && kernel::abs1(x[i]) > Machine<Real>::largest / 16 * size) fast::scal(end + 1, Real(0.01), x, 1);
      x[i] = x[i] / divisor;
      const Real large = kernel::abs1(x[i]);
      if (large > 1 && Machine<Real>::epsilon * large * large > 1) fast::scal(end + 1, 1 / large, x, 1);
      fast::axpy(i, -x[i], h + i * ld, 1, x, 1);
    }
  }
  fast::gemm('N', 'N', n, n, n, C{1, 0}, z, ldz, y, n, C{}, h, ld);
  for (long i = 0; i < n * n; ++i) z[i] = h[i];
}

}  // namespace zent::eigen
