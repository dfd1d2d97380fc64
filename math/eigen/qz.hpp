// The QZ algorithm (Moler and Stewart 1973): a pencil A - lambda B becomes quasi-triangular and triangular by unitary
// transformations from both sides, without ever forming A times the inverse of B. Real pencils take double shifts and keep 2 by 2
// blocks for complex pairs; complex ones take single shifts.
#pragma once

#include <cmath>

#include "math/eigen/gencomplex.hpp"
#include "math/eigen/gensweep.hpp"
#include "math/eigen/hessenberg.hpp"

namespace zent::eigen {

// Column-major, n by n each; z accumulates the transformation from the right, or is null.
template <class T>
struct Pencil {
  using Real = kernel::RealOf<T>;
  long n;
  T *a, *b, *z;
  Real eps_a, eps_b;  // what is negligible in A and in B

  // Rows k and k + 1 of both matrices from column `first` on.
  void turn_rows(long k, long first, Rotation<T> g) const {
    rotate_rows(n - first, a + k + first * n, n, g);
    rotate_rows(n - first, b + k + first * n, n, g);
  }
  // Columns k and k + 1: the first rows_a and rows_b rows, and z.
  void turn_columns(long k, long rows_a, long rows_b, Rotation<T> g) const {
    rotate_columns(rows_a, a + k * n, a + (k + 1) * n, g);
    rotate_columns(rows_b, b + k * n, b + (k + 1) * n, g);
    if (z != nullptr) rotate_columns(n, z + k * n, z + (k + 1) * n, g);
  }
};

// The rotation of two columns that makes `left` zero against `right`, elements of one row.
template <class T>
Rotation<T> against(T left, T right) {
  T r;
  Rotation<T> g = rotation(right, left, r);
  g.s = -g.s;
  return g;
}

// B upper triangular by reflections, then A Hessenberg by rotations that keep B triangular.
template <class T>
void l_g3crg(const Pencil<T>& p) {
  const long n = p.n;
  T *const a = p.a, *const b = p.b;
  for (long k = 0; k < n - 1; ++k) {
    T* x = b + k + k * n;
    typename Pencil<T>::Real beta;
    const T tau = kernel::conj(reflection(n - k, x, beta));
    x[0] = kernel::from_real<T>(1);
    for (long j = k + 1; j < n; ++j) {
      fast::axpy(n - k, -(tau * fast::dotc(n - k, x, 1, b + k + j * n, 1)), x, 1, b + k + j * n, 1);
    }
    for (long j = 0; j < n; ++j) {
      fast::axpy(n - k, -(tau * fast::dotc(n - k, x, 1, a + k + j * n, 1)), x, 1, a + k + j * n, 1);
    }
    x[0] = kernel::from_real<T>(beta);
    for (long i = 1; i < n - k; ++i) x[i] = T{};
  }
  for (long j = 0; j < n - 2; ++j) {
    for (long i = n - 1; i > j + 1; --i) {
      T r;
      if (a[i + j * n] == T{}) continue;
      const Rotation<T> g = rotation(a[i - 1 + j * n], a[i + j * n], r);
      p.turn_rows(i - 1, j, g);
      a[i + j * n] = T{};
      p.turn_columns(i - 1, n, i + 1, against(b[i + (i - 1) * n], b[i + i * n]));
      b[i + (i - 1) * n] = T{};
    }
  }
}

// A zero on the diagonal of B at row j moves down to row `end`, where the last element of A's subdiagonal is then made zero: an
// infinite eigenvalue stands alone.
template <class T>
void deflate_infinite(const Pencil<T>& p, long top, long j, long end) {
  const long n = p.n;
  for (long k = j; k < end; ++k) {
    T r;
    const Rotation<T> g = rotation(p.b[k + (k + 1) * n], p.b[k + 1 + (k + 1) * n], r);
    p.turn_rows(k, k > top ? k - 1 : k, g);
    p.b[k + k * n] = p.b[k + 1 + k * n] = p.b[k + 1 + (k + 1) * n] = T{};
    if (k == top) continue;
    p.turn_columns(k - 1, (k + 2 < n ? k + 2 : n), k, against(p.a[k + 1 + (k - 1) * n], p.a[k + 1 + k * n]));
    p.a[k + 1 + (k - 1) * n] = T{};
  }
  if (end > top) {
    p.turn_columns(end - 1, end + 1, end, against(p.a[end + (end - 1) * n], p.a[end + end * n]));
    p.a[end + (end - 1) * n] = T{};
  }
  p.b[end + end * n] = T{};
}

// The trailing 2 by 2 block of A times the inverse of B in the active block [top, end].
template <class T>
struct Corner {
  T m11, m12, m21, m22;
};
template <class T>
Corner<T> corner(const Pencil<T>& p, long top, long end) {
  const long n = p.n, e = end - 1;
  const T* const a = p.a;
  const T* const b = p.b;
  T before{};
  Corner<T> m;
  m.m21 = a[end + e * n] / b[e + e * n];
  m.m22 = (a[end + end * n] - m.m21 * b[e + end * n]) / b[end + end * n];
  m.m11 = a[e + e * n];
  m.m12 = a[e + end * n];
  if (e > top) {
    before = a[e + (e - 1) * n] / b[e - 1 + (e - 1) * n];
    m.m11 = m.m11 - before * b[e - 1 + e * n];
    m.m12 = m.m12 - before * b[e - 1 + end * n];
  }
  m.m11 = m.m11 / b[e + e * n];
  m.m12 = (m.m12 - m.m11 * b[e + end * n]) / b[end + end * n];
  return m;
}

// One single-shift step of a complex pencil.
template <class C>
void qz_step_single(const Pencil<C>& p, long top, long end, long its) {
  const long n = p.n;
  const Corner<C> m = corner(p, top, end);
  C shift = corner_shift(m.m11, m.m12, m.m21, m.m22);
  if (its % 10 == 0) shift = m.m22 + kernel::from_real<C>(kernel::abs1(m.m21));
  C f = p.a[top + top * n] - shift * p.b[top + top * n], g = p.a[top + 1 + top * n];
  for (long k = top; k < end; ++k) {
    C r;
    if (k > top) {
      f = p.a[k + (k - 1) * n];
      g = p.a[k + 1 + (k - 1) * n];
    }
    p.turn_rows(k, k > top ? k - 1 : k, rotation(f, g, r));
    if (k > top) p.a[k + 1 + (k - 1) * n] = C{};
    p.turn_columns(k, (k + 2 < end ? k + 2 : end) + 1, k + 2, against(p.b[k + 1 + k * n], p.b[k + 1 + (k + 1) * n]));
    p.b[k + 1 + k * n] = C{};
  }
}

// Columns c3, c2, c1 of m rows times the reflection whose order of components is the same.
template <class Real>
void reflect_columns(long m, Real* c3, Real* c2, Real* c1, const Step<Real>& s) {
  for (long i = 0; i < m; ++i) {
    const Real sum = c3[i] * s.x + c2[i] * s.y + c1[i] * s.z;
    c3[i] -= sum;
    c2[i] -= sum * s.q;
    c1[i] -= sum * s.r;
  }
}

// One double-shift step of a real pencil; the active block has at least three rows.
template <class Real>
void qz_step_double(const Pencil<Real>& p, long top, long end, long its) {
  const long n = p.n;
  Real *const a = p.a, *const b = p.b;
  const Real* const at = a + top + top * n;
  const Real* const bt = b + top + top * n;
  const Real m11 = at[0] / bt[0], m21 = at[1] / bt[0];
  const Real m12 = (at[n] - m11 * bt[n]) / bt[n + 1], m22 = (at[n + 1] - m21 * bt[n]) / bt[n + 1];
  const Corner<Real> m = corner(p, top, end);
  Real dx = m.m22 - m11, dy = m.m11 - m11, cross = m.m12 * m.m21;
  if (its % 10 == 0) {  // as in the plain problem: the values 0.75 s +- 0.66 i s around the last diagonal element
    const Real s = std::abs(m.m21) + std::abs(a[end - 1 + (end - 2) * n] / b[end - 2 + (end - 2) * n]);
    dx = dy = m.m22 + Real(0.75) * s - m11;
    cross = Real(-0.4375) * s * s;
  }
  Real x = (dx * dy - cross) / m21 + m12, y = m22 - m11 - dx - dy, z = at[2 + n] / bt[n + 1];
  Step<Real> step;
  Real image;
  for (long k = top; k < end; ++k) {
    const bool three = k < end - 1;
    const long first = k > top ? k - 1 : k;
    if (k > top) {
      x = a[k + (k - 1) * n];
      y = a[k + 1 + (k - 1) * n];
      z = three ? a[k + 2 + (k - 1) * n] : 0;
    }
    if (make_step(x, y, z, step, image)) {
      chain_rows(1, !three, &step, n - first, a + k + first * n, n);
      chain_rows(1, !three, &step, n - k, b + k + k * n, n);
    }
    if (k > top) a[k + 1 + (k - 1) * n] = 0;
    if (k > top && three) a[k + 2 + (k - 1) * n] = 0;
    const long rows = (k + 3 < end ? k + 3 : end) + 1;
    if (three) {
      if (make_step(b[k + 2 + (k + 2) * n], b[k + 2 + (k + 1) * n], b[k + 2 + k * n], step, image)) {
        reflect_columns(rows, a + (k + 2) * n, a + (k + 1) * n, a + k * n, step);
        reflect_columns(k + 3, b + (k + 2) * n, b + (k + 1) * n, b + k * n, step);
        if (p.z != nullptr) reflect_columns(n, p.z + (k + 2) * n, p.z + (k + 1) * n, p.z + k * n, step);
      }
      b[k + 2 + k * n] = b[k + 2 + (k + 1) * n] = 0;
    }
    p.turn_columns(k, rows, k + 2, against(b[k + 1 + k * n], b[k + 1 + (k + 1) * n]));
    b[k + 1 + k * n] = 0;
  }
}

// A 2 by 2 block at row k with real values becomes triangular; false when the values are complex.
template <class Real>
bool split_pencil_block(const Pencil<Real>& p, long k) {
  const long n = p.n;
  Real* const a = p.a + k + k * n;
  Real* const b = p.b + k + k * n;
  const Corner<Real> m = corner(p, k, k + 1);
  const Real half = (m.m11 - m.m22) / 2, square = half * half + m.m12 * m.m21;
  if (square < 0) return false;
  const Real root = std::sqrt(square), value = m.m22 + (half < 0 ? half - root : half + root);
  // x spans the null space of A - value B; from the larger row. Scaled so that a large value is no harm.
  const Real wa = std::abs(value) > 1 ? 1 / value : 1, wb = std::abs(value) > 1 ? 1 : value;
  const Real c11 = wa * a[0] - wb * b[0], c12 = wa * a[n] - wb * b[n], c21 = wa * a[1], c22 = wa * a[n + 1] - wb * b[n + 1];
  const bool upper = std::abs(c11) + std::abs(c12) > std::abs(c21) + std::abs(c22);
  Real r;
  // The columns turn so that this row's first element vanishes.
  p.turn_columns(k, k + 2, k + 2, upper ? against(c11, c12) : against(c21, c22));
  // A x and B x are parallel: the rows turn both to the first unit vector, by the one that is larger within its matrix.
  const bool by_b = (std::abs(b[0]) + std::abs(b[1])) * p.eps_a > (std::abs(a[0]) + std::abs(a[1])) * p.eps_b;
  p.turn_rows(k, k, by_b ? rotation(b[0], b[1], r) : rotation(a[0], a[1], r));
  a[1] = b[1] = 0;
  return true;
}

// The iteration; false if a value took more than 50 steps.
template <class T>
bool l_g4crg(Pencil<T>& p) {
  using Real = kernel::RealOf<T>;
  constexpr bool complex = kernel::ComplexRecord<T>;
  const long n = p.n;
  long its = 0;
  for (long end = n - 1; end >= 0;) {
    long top = end;
    for (; top > 0; --top) {
      if (kernel::abs1(p.a[top + (top - 1) * n]) <= p.eps_a) {
        p.a[top + (top - 1) * n] = T{};
        break;
      }
    }
    long zero = end;
    for (; zero >= top; --zero) {
      if (kernel::abs1(p.b[zero + zero * n]) <= p.eps_b) break;
    }
    if (zero >= top) {
      p.b[zero + zero * n] = T{};
      deflate_infinite(p, top, zero, end);
      --end;
      its = 0;
      continue;
    }
    if (top == end) {
      --end;
      its = 0;
      continue;
    }
    if constexpr (!complex) {
      if (top == end - 1) {
        split_pencil_block(p, top);
        end -= 2;
        its = 0;
        continue;
      }
    }
    if (++its > 50) return false;
    if constexpr (complex) {
      qz_step_single(p, top, end, its);
    } else {
      qz_step_double<Real>(p, top, end, its);
    }
  }
  return true;
}

}  // namespace zent::eigen
