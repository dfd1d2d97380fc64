// Symmetric tridiagonal matrices: eigenvalues by the root-free QL iteration, vectors by implicit QL with known values as shifts.
#pragma once

#include <algorithm>
#include <cmath>

#include "runtime/error.hpp"
#include "runtime/kernels/fast.hpp"
#include "runtime/kernels/support.hpp"
#include "runtime/machine.hpp"
#include "runtime/scratch.hpp"

namespace zent::eigen {

// The smallest number that can be inverted safely, in IEEE arithmetic the smallest normal one.
template <class Real>
inline constexpr Real safe_small = Machine<Real>::smallest;

inline constexpr long steps_per_value = 100;

// The statistics half knows no warning here: for its callers a value without convergence is an error.
template <class Half>
void report_slow(long index) {
  if constexpr (Half::is_math) {
    raise<Half>(3, MATH_SLOW_CONVERGENCE_SYM, {.i = {index}});
  } else {
    raise<Half>(4, STAT_FAILED_TO_CONVERGE, {.i = {index}});
  }
}

// One root-free sweep over rows top to m with the shift sigma. The recurrence c2 = p / t, s2 = e2 / t, u' = (d - sigma) c2 - s2
// u, p' = u'^2 / c2 is rearranged so that a step waits for one division, not for two: with w = t u', p' = w^2 / (p t).
template <class Real>
void root_free_sweep(long top, long m, Real sigma, Real* d, Real* e2) {
  constexpr Real safe = safe_small<Real> / Machine<Real>::epsilon;
  const Real gamma = d[top] - sigma;
  Real r = 1 / (gamma * gamma + e2[top + 1]);
  Real c2 = gamma * gamma * r, s2 = e2[top + 1] * r;
  Real u = (d[top + 1] - sigma) * c2 - s2 * gamma;
  d[top] = d[top + 1] - u + gamma;
  Real p = c2 != 0 ? u * u / c2 : e2[top + 1];
  for (long i = top + 1; i < m; ++i) {
    const Real next = e2[i + 1], t = p + next, c2_old = c2, u_old = u;
    const Real w = (d[i + 1] - sigma) * p - next * u_old, divisor = p * t;
    r = 1 / t;
    e2[i] = s2 * t;
    c2 = p * r;
    s2 = next * r;
    u = w * r;
    d[i] = d[i + 1] - u + u_old;
    if (divisor > safe && w * w > safe) [[likely]] {
      p = w * w / divisor;
    } else {
      u = (d[i + 1] - sigma) * c2 - s2 * u_old;
      d[i] = d[i + 1] - u + u_old;
      p = c2 != 0 ? u * u / c2 : c2_old * next;
    }
  }
  e2[m] = s2 * p;
  d[m] = u + sigma;
}

// Eigenvalue of the 2 by 2 matrix (a, e; e, b) that is the nearer one to b; e2 is the square of e. A difference of 0 counts as
// positive.
template <class Real>
Real nearer_value(Real a, Real e2, Real b) {
  const Real g = (a - b) / 2;
  const Real root = std::sqrt(g * g + e2) + std::abs(g);
  return b - e2 / (g < 0 ? -root : root);
}

// Pal, Walker, Kahan: eigenvalues of the matrix with diagonal d and squared subdiagonal e2 (e2[i] couples i - 1 and i, e2[0] is
// not used), unsorted over d; e2 is destroyed. `stack` has room for n indices: the tops of the blocks that wait above. A value
// that needs more than 100 sweeps is reported and accepted as it stands. The matrix must be finite.
template <class Half, class Real>
void l_e5lsf(long n, Real* d, Real* e2, long* stack) {
  constexpr Real eps2 = Machine<Real>::epsilon * Machine<Real>::epsilon;
  Real thresh = safe_small<Real>;
  long depth = 0, steps = 0;
  stack[0] = 0;
  for (long m = n - 1; m >= 0;) {
    while (stack[depth] > m) --depth;
    const long top = stack[depth];
    if (m > top) thresh = std::max(thresh, eps2 * (e2[m] / 2 + d[m] * d[m]));
    if (m == top || e2[m] <= thresh || steps == steps_per_value) {
      if (m > top && !(e2[m] <= thresh)) report_slow<Half>(m);
      --m;
      steps = 0;
      continue;
    }
    long split = m - 1;
    while (split > top && !(e2[split] <= thresh)) --split;
    if (split > top) stack[++depth] = split;
    ++steps;
    root_free_sweep(split, m, nearer_value(d[m - 1], e2[m], d[m]), d, e2);
  }
}

// All eigenvalues in ascending order over d; e[i] couples i and i + 1, n - 1 of them, and is left alone. False without memory.
template <class Half, class Real>
bool tridiagonal_values(long n, Real* d, const Real* e) {
  void* mark = scratch_mark<Half>();
  Real* e2 = scratch<Half, Real>(n);
  long* stack = scratch<Half, long>(n);
  const bool enough = e2 != nullptr && stack != nullptr;
  if (enough) {
    e2[0] = 0;
    for (long i = 1; i < n; ++i) e2[i] = e[i - 1] * e[i - 1];
    l_e5lsf<Half>(n, d, e2, stack);
    kernel::sort_values<Half, Real>(n, d, d);
  }
  scratch_release<Half>(mark);
  return enough;
}

// The largest eigenvalue; not-a-number without memory.
template <class Half, class Real>
Real l_e3asb(long n, const Real* d, const Real* e) {
  void* mark = scratch_mark<Half>();
  Real* values = scratch<Half, Real>(n);
  Real largest = Machine<Real>::not_a_number;
  if (values != nullptr) {
    kernel::copy(n, d, 1, values, 1);
    if (tridiagonal_values<Half>(n, values, e)) largest = values[n - 1];
  }
  scratch_release<Half>(mark);
  return largest;
}

// Rotations of neighbouring columns of V that wait until there are enough of them to be applied in one pass. All sweeps of a
// batch have the columns first to last; a shorter one is filled up with identities.
template <class Real>
struct Rotations {
  static constexpr long capacity = 48;

  long rows, ldv;
  Real* v;
  Real *c, *s;  // capacity * (n - 1) each
  long first, last, count;

  void open(long from, long to) {
    if (count > 0 && to == last && from >= first && count < capacity && 4 * (from - first) <= last - first) return;
    flush();
    first = from;
    last = to;
  }
  void flush() {
    if (count > 0 && rows > 0) fast::rot_columns(true, count, rows, last - first + 1, c, s, v + first * ldv, ldv);
    count = 0;
  }
  // The coefficients of the next sweep, from that of the columns from and from + 1 on.
  void next(long from, Real** cosine, Real** sine) {
    Real *own_c = c + count * (last - first), *own_s = s + count * (last - first);
    ++count;
    std::fill_n(own_c, from - first, Real(1));
    std::fill_n(own_s, from - first, Real(0));
    *cosine = own_c + (from - first);
    *sine = own_s + (from - first);
  }
};

// One implicit QL sweep from row m up to row l.
template <class Real>
void ql_sweep(long l, long m, Real shift, Real* d, Real* e, Real* cosine, Real* sine) {
  Real g = d[m] - shift, s = 1, c = 1, p = 0;
  for (long i = m - 1; i >= l; --i) {
    const Real f = s * e[i], b = c * e[i];
    Real r = f * f + g * g;
    if (r > safe_small<Real> / Machine<Real>::epsilon) [[likely]] {
      const Real square = r;
      r = std::sqrt(square);
      const Real inverse = r * (1 / square);  // root and quotient side by side: the loop waits for these two
      s = f * inverse;
      c = g * inverse;
    } else {
      r = std::hypot(f, g);
      s = r == 0 ? 0 : f / r;
      c = r == 0 ? 1 : g / r;
    }
    if (i != m - 1) e[i + 1] = r;
    g = d[i + 1] - p;
    const Real t = (d[i] - g) * s + 2 * c * b;
    p = s * t;
    d[i + 1] = g + p;
    g = c * t - b;
    cosine[i - l] = c;
    sine[i - l] = -s;
  }
  d[l] -= p;
  e[l] = g;
}

// Takes the value nearest to x out of an ascending list, or only tells its index.
template <class Real>
long nearest(long count, const Real* values, Real x) {
  const long above = std::lower_bound(values, values + count, x) - values;
  if (above == 0) return 0;
  if (above == count) return count - 1;
  return x - values[above - 1] <= values[above] - x ? above - 1 : above;
}

template <class Real>
Real largest_row(long first, long last, const Real* d, const Real* e) {
  Real largest = std::abs(d[last]);
  for (long i = first; i < last; ++i) largest = std::max(largest, std::abs(d[i]) + std::abs(e[i]));
  return largest;
}

inline constexpr long patient_steps = 3;  // sweeps for a value before its coupling is measured by the largest row

// Implicit QL on rows lo to hi, whose eigenvalues are known in ascending order (`values` is used up): each serves as the shift
// that should bring itself out in one sweep. Rounding can spoil a sweep, and the matrix can split so that the shift belongs to
// the other part; from the third sweep on the shift comes from the leading 2 by 2 block, which always converges.
template <class Half, class Real>
void l_e7csf(long lo, long hi, Real* d, Real* e, Real* values, Real& thresh, Rotations<Real>& rotations) {
  long left = hi - lo + 1, steps = 0;
  for (long l = lo; l <= hi;) {
    long m = hi;
    if (l < hi) {
      thresh = std::max(thresh, Machine<Real>::epsilon * (std::abs(d[l]) + std::abs(e[l])));
      for (m = l; m < hi && !(std::abs(e[m]) <= thresh); ++m) {
      }
      // A sweep over great rows leaves their rounding errors in small ones, which then cannot converge to their own precision.
      if (steps >= patient_steps && std::abs(e[l]) <= Machine<Real>::epsilon * largest_row(l, m, d, e)) m = l;
    }
    if (m == l || steps == steps_per_value) {
      if (m != l) report_slow<Half>(l);
      const long k = nearest(left, values, d[l]);
      std::copy(values + k + 1, values + left, values + k);
      --left;
      if (l < hi) e[l] = 0;
      ++l;
      steps = 0;
      continue;
    }
    const Real leading = nearer_value(d[l + 1], e[l] * e[l], d[l]);
    const Real shift = steps < 2 ? values[nearest(left, values, leading)] : leading;
    ++steps;
    Real *cosine, *sine;
    rotations.open(l, m);
    rotations.next(l, &cosine, &sine);
    ql_sweep(l, m, shift, d, e, cosine, sine);
  }
}

// Eigenvalues over d, unsorted, and their vectors: V, `rows` by n, becomes V times the vectors of the tridiagonal matrix. e has n
// elements, the last one spare, and is destroyed. False without memory.
template <class Half, class Real>
bool tridiagonal_vectors(long n, Real* d, Real* e, long rows, Real* v, long ldv) {
  void* mark = scratch_mark<Half>();
  Real* values = scratch<Half, Real>(n);
  Real* e2 = scratch<Half, Real>(n);
  long* stack = scratch<Half, long>(n);
  Real* c = scratch<Half, Real>(Rotations<Real>::capacity * n);
  Real* s = scratch<Half, Real>(Rotations<Real>::capacity * n);
  const bool enough = values && e2 && stack && c && s;
  if (enough) {
    Rotations<Real> rotations = {rows, ldv, v, c, s, 0, 0, 0};
    Real thresh = safe_small<Real>;
    e[n - 1] = 0;
    for (long lo = 0, hi = 0; lo < n; lo = hi + 1) {
      thresh = std::max(thresh, Machine<Real>::epsilon * (std::abs(d[lo]) + std::abs(e[lo])));
      for (hi = lo; hi < n - 1 && !(std::abs(e[hi]) <= thresh); ++hi) {
      }
      if (hi == lo) continue;
      const long length = hi - lo + 1;
      kernel::copy(length, d + lo, 1, values, 1);
      for (long i = 1; i < length; ++i) e2[i] = e[lo + i - 1] * e[lo + i - 1];
      l_e5lsf<Half>(length, values, e2, stack);
      kernel::sort_values<Half, Real>(length, values, values);
      l_e7csf<Half>(lo, hi, d, e, values, thresh, rotations);
    }
    rotations.flush();
  }
  scratch_release<Half>(mark);
  return enough;
}

}  // namespace zent::eigen
