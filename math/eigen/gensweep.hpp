// One double-shift step on an upper Hessenberg matrix, column-major: the bulge moves down in short runs close to the diagonal,
// and each run's chain of steps then meets the columns to the right and the rows above, in vector registers.
#pragma once

#include <cmath>

#include "math/eigen/genchain.hpp"
#include "runtime/machine.hpp"

namespace zent::eigen {

// What a step may touch: the active block of h, and nothing else. Shift and start are the caller's.
template <class Real>
struct Sweep {
  Real* h;
  long ld;
  long top, end;      // active block
  bool eliminate;     // where the bulge is small, eliminate instead of reflecting
  Step<Real>* steps;  // receives the steps, which are reflections then, or null
};

template <class Real>
Real larger(Real a, Real b) {
  return a < b ? b : a;
}

// The step that makes (p, q, r) a multiple of the first unit vector; `image` is that multiple. False for a vector that is zero or
// has no inverse.
template <class Real>
bool make_step(Real p, Real q, Real r, Step<Real>& step, Real& image) {
  const Real scale = larger(std::abs(p), larger(std::abs(q), std::abs(r)));
  if (!(scale >= Machine<Real>::smallest)) {
    step = {};
    return false;
  }
  const Real unit = 1 / scale;
  p *= unit;
  q *= unit;
  r *= unit;
  const Real norm = std::sqrt(p * p + q * q + r * r);
  const Real s = p < 0 ? -norm : norm;
  p += s;
  const Real by_s = 1 / s, by_p = 1 / p;
  step = {p * by_s, q * by_s, r * by_s, q * by_p, r * by_p};
  image = -s * scale;
  return true;
}

// One step on the few rows and columns next to the diagonal: rows k .. k + 2 (or k + 1) of n columns, columns of m rows.
template <bool three, class Real>
void near_rows(const Step<Real> s, long n, Real* a, long ld) {
  for (long j = 0; j < n; ++j, a += ld) {
    const Real p = a[0], q = a[1];
    if constexpr (three) {
      const Real r = a[2], sum = p + s.q * q + s.r * r;
      a[2] = r - sum * s.z;
      a[0] = p - sum * s.x;
      a[1] = q - sum * s.y;
    } else {
      const Real sum = p + s.q * q;
      a[0] = p - sum * s.x;
      a[1] = q - sum * s.y;
    }
  }
}
template <bool three, class Real>
void near_columns(const Step<Real> s, long m, Real* a, Real* b, Real* c) {
  for (long i = 0; i < m; ++i) {
    const Real p = a[i], q = b[i];
    if constexpr (three) {
      const Real r = c[i], sum = s.x * p + s.y * q + s.z * r;
      c[i] = r - sum * s.r;
      a[i] = p - sum;
      b[i] = q - sum * s.q;
    } else {
      const Real sum = s.x * p + s.y * q;
      a[i] = p - sum;
      b[i] = q - sum * s.q;
    }
  }
}

// Runs from row `start` with the first vector (p, q, r).
template <class Real>
void sweep(const Sweep<Real>& w, long start, Real p, Real q, Real r) {
  Real* const h = w.h;
  const long ld = w.ld, end = w.end;
  Step<Real> left[full_run], right[full_run];
  constexpr long run = full_run;
  for (long k0 = start; k0 < end; k0 += run) {
    const long k1 = k0 + run < end ? k0 + run : end;  // steps k0 .. k1 - 1
    const long last = k1 + 1 < end ? k1 + 1 : end;    // last row and column that the run touches
    for (long k = k0; k < k1; ++k) {
      const bool three = k < end - 1;
      Real* before = k > 0 ? h + k + (k - 1) * ld : nullptr;  // entries of column k - 1 from row k on
      Step<Real>& row = left[k - k0];
      Step<Real>& column = right[k - k0];
      if (k > start) {
        p = before[0];
        q = before[1];
        r = three ? before[2] : 0;
      }
      if (w.eliminate && three && k > start && larger(std::abs(q), std::abs(r)) < std::abs(p)) {
        row = {0, q / p, r / p, 0, 0};
        column = {0, -row.y, -row.z, 0, 0};
        before[1] = before[2] = 0;
      } else {
        Real image = 0;
        const bool found = make_step(p, q, r, row, image);
        column = row;
        if (k > start) {
          if (found) before[0] = image;
          before[1] = 0;
          if (three) before[2] = 0;
        } else if (k > w.top && found) {
          before[0] *= 1 - row.x;
        }
        if (!found) continue;
      }
      const long bottom = k + 3 < end ? k + 3 : end;
      Real* const near = h + k0 + k * ld;
      if (three) {
        near_rows<true>(row, last - k + 1, h + k + k * ld, ld);
        near_columns<true>(column, bottom - k0 + 1, near, near + ld, near + 2 * ld);
      } else {
        near_rows<false>(row, last - k + 1, h + k + k * ld, ld);
        near_columns<false>(column, bottom - k0 + 1, near, near + ld, static_cast<Real*>(nullptr));
      }
    }
    const long count = k1 - k0;
    const bool pair = k1 == end;
    chain_rows(count, pair, left, end - last, h + k0 + (last + 1) * ld, ld);
    chain_columns(count, pair, right, k0 - w.top, h + w.top + k0 * ld, ld);
    for (long k = 0; w.steps != nullptr && k < count; ++k) w.steps[k0 - start + k] = left[k];
  }
}

// The first vector of the double-shift step at row m for the shift sums: x, y the diagonal of the corner, cross the product of
// its off-diagonal entries. For an exceptional step trace and determinant are given instead.
template <class Real>
struct Shift {
  Real x, y, cross;
  bool exceptional;
  Real trace, determinant;
};
template <class Real>
void first_vector(const Real* h, long ld, long m, const Shift<Real>& shift, Real& p, Real& q, Real& r) {
  const Real corner = h[m + m * ld], below = h[m + 1 + m * ld], next = h[m + 1 + (m + 1) * ld];
  if (shift.exceptional) {
    p = (corner * (corner - shift.trace) + shift.determinant) / below + h[m + (m + 1) * ld];
    q = corner + next - shift.trace;
  } else {
    const Real a = shift.x - corner, b = shift.y - corner;
    p = (a * b - shift.cross) / below + h[m + (m + 1) * ld];
    q = next - corner - a - b;
  }
  r = h[m + 2 + (m + 1) * ld];
  const Real scale = larger(std::abs(p), larger(std::abs(q), std::abs(r)));
  if (scale > 0) {
    p /= scale;
    q /= scale;
    r /= scale;
  }
}

// The step may start at row m instead of at the top of the block: the subdiagonal in front of it would stay negligible.
template <class Real>
bool may_start(const Real* h, long ld, long m, Real p, Real q, Real r) {
  const Real x = std::abs(h[m + (m - 1) * ld]) * (std::abs(q) + std::abs(r));
  const Real s = std::abs(p) * (std::abs(h[m - 1 + (m - 1) * ld]) + std::abs(h[m + m * ld]) + std::abs(h[m + 1 + (m + 1) * ld]));
  return s + x == s;
}

}  // namespace zent::eigen
